#include "multiply/bkt/window.hpp"

#include <algorithm>
#include <cstring>

#include "multiply/bkt/karatsuba.hpp"

namespace znp::bkt {

NarrowedSqr narrow_sqr(upL_t s, upL_t e, upL_t n) {
    NarrowedSqr w{0, n, s, e};
    if (s > n) {
        w.A_offset = s - n;
        w.n = w.s = 2 * n - s;
        w.e = e - 2 * (s - n);
    }
    w.n = std::min(w.n, w.e);
    return w;
}

NarrowedMul narrow_mul(upL_t s, upL_t e, upL_t La, upL_t Lb) {
    if (La < Lb) {
        const NarrowedMul w = narrow_mul(s, e, Lb, La);
        return {w.B_offset, w.Lb, w.A_offset, w.La, w.s, w.e};
    }
    NarrowedMul w{0, La, 0, Lb, s, e};
    if (s > Lb) w.A_offset = s - Lb;
    if (s > La) w.B_offset = s - La;
    const upL_t dropped = w.A_offset + w.B_offset;
    w.s -= dropped;
    w.e -= dropped;
    w.La = std::min(La - w.A_offset, w.e);
    w.Lb = std::min(Lb - w.B_offset, w.e);
    return w;
}

namespace {

template <class word>
void copy_window(word* T, const word* product, upL_t s, upL_t e) {
    std::memcpy(T, product + s, (e - s) * sizeof(word));
}

}  // namespace

template <class word>
void sqr_window(Window<word> R, WordSpan<word> A, word* S) {
    if (R.size() == 0) return;
    const NarrowedSqr w = narrow_sqr(R.s, R.e, A.size());
    sqr(A.data() + w.A_offset, w.n, S, S + 2 * w.n);
    copy_window(R.T, S, w.s, w.e);
}

template <class word>
void mul_window(Window<word> R, WordSpan<word> A, WordSpan<word> B, word* S) {
    if (R.size() == 0) return;
    const NarrowedMul w = narrow_mul(R.s, R.e, A.size(), B.size());
    mul(A.data() + w.A_offset, w.La, B.data() + w.B_offset, w.Lb, S, S + w.La + w.Lb);
    copy_window(R.T, S, w.s, w.e);
}

template <class word>
upL_t sqr_window_bytes(upL_t s, upL_t e, upL_t n) {
    const upL_t m = narrow_sqr(s, e, n).n;
    return sqr_bytes<word>(m) + sizeof(word) * 2 * m;
}
template <class word>
upL_t elm_window_bytes(upL_t m) {
    return elm_bytes<word>(m) + sizeof(word) * 2 * m;
}
template <class word>
upL_t mul_window_bytes(upL_t s, upL_t e, upL_t La, upL_t Lb) {
    const NarrowedMul w = narrow_mul(s, e, La, Lb);
    return mul_bytes<word>(w.La, w.Lb) + sizeof(word) * (w.La + w.Lb);
}

// For 32-bit words 12 m + 4 + max(16 sum(kar_sqr, m), 16 (sum(kar_mul, m) + 2 m)), where sum is the scratch
// of all levels in words; twice that for 64-bit words. Generous on purpose: it leaves room for the copies of
// the operands beside a product.
template <class word>
upL_t scratch_bytes(upL_t m) {
    const upL_t copies = sizeof(word) * (3 * m + 1);
    return copies + 4 * std::max(sqr_bytes<word>(m), elm_window_bytes<word>(m));
}

#define ZNP_INSTANTIATE(word)                                                      \
    template void sqr_window(Window<word>, WordSpan<word>, word*);                 \
    template void mul_window(Window<word>, WordSpan<word>, WordSpan<word>, word*); \
    template upL_t sqr_window_bytes<word>(upL_t, upL_t, upL_t);                    \
    template upL_t elm_window_bytes<word>(upL_t);                                  \
    template upL_t mul_window_bytes<word>(upL_t, upL_t, upL_t, upL_t);             \
    template upL_t scratch_bytes<word>(upL_t);
ZNP_INSTANTIATE(c32i)
ZNP_INSTANTIATE(c64i)
#undef ZNP_INSTANTIATE

}  // namespace znp::bkt
