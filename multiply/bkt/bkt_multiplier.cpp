#include "multiply/bkt/bkt_multiplier.hpp"

#include <algorithm>
#include <new>

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
    require_work(bp, bytes, location);
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
void BKTMultiplier<word>::sqr(const BasicParameters& bp, word* T, WordSpan<word> A) const {
    if (A.empty()) return;
    const upL_t bytes = bkt::sqr_bytes<word>(A.size());
    bkt::sqr(A.data(), A.size(), T, scratch<word>(bp, bytes, "BKT::sqr()"));
}

template <class word>
void BKTMultiplier<word>::mul(const BasicParameters& bp, word* T, WordSpan<word> A, WordSpan<word> B) const {
    if (A.empty() || B.empty()) {
        std::fill_n(T, A.size() + B.size(), word{0});
        return;
    }
    const upL_t bytes = bkt::mul_bytes<word>(A.size(), B.size());
    bkt::mul(A.data(), A.size(), B.data(), B.size(), T, scratch<word>(bp, bytes, "BKT::mul()"));
}

template <class word>
void BKTMultiplier<word>::sqr_window(const BasicParameters& bp, Window<word> R, WordSpan<word> A) const {
    if (R.size() == 0) return;
    if (R.size() == 2 * A.size()) return sqr(bp, R.T, A);
    const upL_t bytes = bkt::sqr_window_bytes<word>(R.s, R.e, A.size());
    bkt::sqr_window(R, A, scratch<word>(bp, bytes, "BKT::sqr_window()"));
}

template <class word>
void BKTMultiplier<word>::mul_window(const BasicParameters& bp, Window<word> R, WordSpan<word> A,
                                     WordSpan<word> B) const {
    if (R.size() == 0) return;
    if (R.size() == A.size() + B.size()) return mul(bp, R.T, A, B);
    if (A.empty() || B.empty()) {
        std::fill_n(R.T, R.size(), word{0});
        return;
    }
    const upL_t bytes = bkt::mul_window_bytes<word>(R.s, R.e, A.size(), B.size());
    bkt::mul_window(R, A, B, scratch<word>(bp, bytes, "BKT::mul_window()"));
}

template class BKTMultiplier<c32i>;
template class BKTMultiplier<c64i>;

}  // namespace znp
