#include "multiply/unavailable_multiplier.hpp"

#include <string>

#include "foundation/fail.hpp"

namespace znp {

namespace {

template <class word>
[[noreturn]] void unavailable(const multiplier<word>& algorithm, const char* location) {
    fail(zn_exception(
        error_code::unspecified, nullptr,
        std::string(algorithm.name) + " (" + algorithm.long_name + ") is not available in this version yet.",
        {}, action::throw_silently, "Generic Exception", location));
}

}  // namespace

template <class word>
upL_t UnavailableMultiplier<word>::table_bytes(u64_t) const {
    unavailable(*this, "multiplier::table_bytes()");
}

template <class word>
std::byte* UnavailableMultiplier<word>::build_tables(TableHolder&, u64_t, std::byte*) const {
    unavailable(*this, "multiplier::build_tables()");
}

template <class word>
upL_t UnavailableMultiplier<word>::work_bytes(upL_t, u64_t) const {
    unavailable(*this, "multiplier::work_bytes()");
}

// The products, made through a transform, end here too.
template <class word>
transform* UnavailableMultiplier<word>::make_transform(const BasicParameters&, void*, upL_t) const {
    unavailable(*this, "multiplier::make_transform()");
}

template class UnavailableMultiplier<c32i>;
template class UnavailableMultiplier<c64i>;

}  // namespace znp
