#include "multiply/bkt/window.hpp"

#include <algorithm>
#include <cstring>

#include "multiply/bkt/karatsuba.hpp"

namespace znp::bkt {

SqrWindow narrow_sqr(upL_t s, upL_t e, upL_t n) {
    SqrWindow w{0, n, s, e};
    if (s > n) {
        w.A_offset = s - n;
        w.n = w.s = 2 * n - s;
        w.e = e - 2 * (s - n);
    }
    w.n = std::min(w.n, w.e);
    return w;
}

MulWindow narrow_mul(upL_t s, upL_t e, upL_t La, upL_t Lb) {
    if (La < Lb) {
        const MulWindow w = narrow_mul(s, e, Lb, La);
        return {w.B_offset, w.Lb, w.A_offset, w.La, w.s, w.e};
    }
    MulWindow w{0, La, 0, Lb, s, e};
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

template <class word>
void sqr_window_any(word* T, upL_t s, upL_t e, const word* A, upL_t n, word* S) {
    if (s == e) return;
    const SqrWindow w = narrow_sqr(s, e, n);
    sqr(A + w.A_offset, w.n, S, S + 2 * w.n);
    copy_window(T, S, w.s, w.e);
}

template <class word>
void mul_window_any(word* T, upL_t s, upL_t e, const word* A, upL_t La, const word* B, upL_t Lb, word* S) {
    if (s == e) return;
    const MulWindow w = narrow_mul(s, e, La, Lb);
    mul(A + w.A_offset, w.La, B + w.B_offset, w.Lb, S, S + w.La + w.Lb);
    copy_window(T, S, w.s, w.e);
}

}  // namespace

void sqr_window(c32i* T, upL_t s, upL_t e, const c32i* A, upL_t n, c32i* S) {
    sqr_window_any(T, s, e, A, n, S);
}
void sqr_window(c64i* T, upL_t s, upL_t e, const c64i* A, upL_t n, c64i* S) {
    sqr_window_any(T, s, e, A, n, S);
}
void mul_window(c32i* T, upL_t s, upL_t e, const c32i* A, upL_t La, const c32i* B, upL_t Lb, c32i* S) {
    mul_window_any(T, s, e, A, La, B, Lb, S);
}
void mul_window(c64i* T, upL_t s, upL_t e, const c64i* A, upL_t La, const c64i* B, upL_t Lb, c64i* S) {
    mul_window_any(T, s, e, A, La, B, Lb, S);
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
    const MulWindow w = narrow_mul(s, e, La, Lb);
    return mul_bytes<word>(w.La, w.Lb) + sizeof(word) * (w.La + w.Lb);
}

// For 32-bit words 12 m + 4 + max(16 sum(kar_sqr, m), 16 (sum(kar_mul, m) + 2 m)), where sum is the scratch
// of all levels in words; twice that for 64-bit words. Generous on purpose: it leaves room for the copies of
// the operands beside a product.
template <class word>
upL_t scratch_bytes(upL_t m) {
    const upL_t copies = sizeof(word) * (3 * m + 1);
    return copies + 4 * std::max(sqr_bytes<word>(m), elm_bytes<word>(m) + sizeof(word) * 2 * m);
}

template upL_t sqr_window_bytes<c32i>(upL_t, upL_t, upL_t);
template upL_t sqr_window_bytes<c64i>(upL_t, upL_t, upL_t);
template upL_t elm_window_bytes<c32i>(upL_t);
template upL_t elm_window_bytes<c64i>(upL_t);
template upL_t mul_window_bytes<c32i>(upL_t, upL_t, upL_t, upL_t);
template upL_t mul_window_bytes<c64i>(upL_t, upL_t, upL_t, upL_t);
template upL_t scratch_bytes<c32i>(upL_t);
template upL_t scratch_bytes<c64i>(upL_t);

}  // namespace znp::bkt
