#include "multiply/bkt/bkt_multiplier.hpp"

#include <algorithm>
#include <new>

#include "foundation/fail.hpp"
#include "multiply/bkt/bkt_transform.hpp"
#include "multiply/bkt/karatsuba.hpp"
#include "multiply/bkt/window.hpp"

namespace znp {

namespace {

template <class word>
constexpr upL_t words64(upL_t L) {
    constexpr upL_t in_64_bits = 64 / WordTraits<word>::bits;
    return (L + in_64_bits - 1) / in_64_bits;
}

// The work buffer as the scratch of a kernel that asks for so many bytes.
template <class word>
word* scratch(const BasicParameters& bp, upL_t bytes, const char* location) {
    if (bp.ML < bytes) {
        fail(zn_exception(error_code::work_space_too_small, nullptr, {}, {}, action::print_and_throw,
                          "Generic Exception", location));
    }
    return reinterpret_cast<word*>(bp.M);
}

}  // namespace

template <class word>
upL_t BKTMultiplier<word>::table_bytes(u64_t) const {
    return 0;
}

template <class word>
std::byte* BKTMultiplier<word>::build_tables(TableHolder&, u64_t, std::byte* memory) const {
    return memory;
}

template <class word>
upL_t BKTMultiplier<word>::work_bytes(upL_t L, u64_t) const {
    return std::max(bkt::scratch_bytes<word>(L), BKTTransform(words64<word>(L)).product_bytes());
}

template <class word>
transform* BKTMultiplier<word>::make_transform(const BasicParameters&, void* place, upL_t L) const {
    static_assert(sizeof(BKTTransform) <= TransformSlot::bytes);
    return place == nullptr ? nullptr : new (place) BKTTransform(words64<word>(L));
}

template <class word>
void BKTMultiplier<word>::sqr(const BasicParameters& bp, word* T, const word* A, upL_t n) const {
    if (n == 0) return;
    bkt::sqr(A, n, T, scratch<word>(bp, bkt::sqr_bytes<word>(n), "BKT::sqr()"));
}

template <class word>
void BKTMultiplier<word>::mul(const BasicParameters& bp, word* T, const word* A, upL_t La, const word* B,
                              upL_t Lb) const {
    if (La == 0 || Lb == 0) {
        std::fill_n(T, La + Lb, word{0});
        return;
    }
    bkt::mul(A, La, B, Lb, T, scratch<word>(bp, bkt::mul_bytes<word>(La, Lb), "BKT::mul()"));
}

template <class word>
void BKTMultiplier<word>::sqr_window(const BasicParameters& bp, word* T, upL_t s, upL_t e, const word* A,
                                     upL_t n) const {
    if (s == e) return;
    if (e - s == 2 * n) return sqr(bp, T, A, n);
    const upL_t bytes = bkt::sqr_window_bytes<word>(s, e, n);
    bkt::sqr_window(T, s, e, A, n, scratch<word>(bp, bytes, "BKT::sqr_window()"));
}

template <class word>
void BKTMultiplier<word>::mul_window(const BasicParameters& bp, word* T, upL_t s, upL_t e, const word* A,
                                     upL_t La, const word* B, upL_t Lb) const {
    if (s == e) return;
    if (e - s == La + Lb) return mul(bp, T, A, La, B, Lb);
    if (La == 0 || Lb == 0) {
        std::fill_n(T, e - s, word{0});
        return;
    }
    const upL_t bytes = bkt::mul_window_bytes<word>(s, e, La, Lb);
    bkt::mul_window(T, s, e, A, La, B, Lb, scratch<word>(bp, bytes, "BKT::mul_window()"));
}

template class BKTMultiplier<c32i>;
template class BKTMultiplier<c64i>;

}  // namespace znp
