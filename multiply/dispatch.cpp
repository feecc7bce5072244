#include "multiply/dispatch.hpp"

#include "multiply/bkt/window.hpp"
#include "multiply/selection.hpp"

namespace znp {

template <class word>
void sqr(const BasicParameters& bp, word* T, const word* A, upL_t n) {
    select(memory_table<word>(), 2 * n).sqr(bp, T, A, n);
}

template <class word>
void mul(const BasicParameters& bp, word* T, const word* A, upL_t La, const word* B, upL_t Lb) {
    select(memory_table<word>(), La + Lb).mul(bp, T, A, La, B, Lb);
}

// The algorithms get narrowed operands, so that a short window of long operands costs a short product.
template <class word>
void sqr_window(const BasicParameters& bp, word* T, upL_t s, upL_t e, const word* A, upL_t n) {
    const bkt::SqrWindow w = bkt::narrow_sqr(s, e, n);
    select(memory_table<word>(), 2 * w.n).sqr_window(bp, T, w.s, w.e, A + w.A_offset, w.n);
}

template <class word>
void mul_window(const BasicParameters& bp, word* T, upL_t s, upL_t e, const word* A, upL_t La, const word* B,
                upL_t Lb) {
    const bkt::MulWindow w = bkt::narrow_mul(s, e, La, Lb);
    select(memory_table<word>(), w.La + w.Lb)
        .mul_window(bp, T, w.s, w.e, A + w.A_offset, w.La, B + w.B_offset, w.Lb);
}

template <class word>
void mulp(const BasicParameters& bp, word* T, upL_t s, upL_t e, const word* A, upL_t La, const word* B,
          upL_t Lb) {
    const bkt::MulWindow w = bkt::narrow_mul(s, e, La, Lb);
    select(memory_table<word>(), w.La + w.Lb)
        .mulp(bp, T, w.s, w.e, A + w.A_offset, w.La, B + w.B_offset, w.Lb);
}

template <class word>
transform& make_transform(const BasicParameters& bp, TransformSlot& slot, upL_t L) {
    const multiplier<word>& algorithm = select(memory_table<word>(), L);
    slot.reset();
    slot.adopt(algorithm.make_transform(bp, slot.place(), L));
    return *slot;
}

template <class word>
upL_t work_bytes_for(upL_t L, u64_t threads, bool use_mulp) {
    return work_bytes_over(memory_table<word>(), L, threads, use_mulp);
}

#define ZNP_INSTANTIATE(word)                                                                                \
    template void sqr(const BasicParameters&, word*, const word*, upL_t);                                    \
    template void mul(const BasicParameters&, word*, const word*, upL_t, const word*, upL_t);                \
    template void sqr_window(const BasicParameters&, word*, upL_t, upL_t, const word*, upL_t);               \
    template void mul_window(const BasicParameters&, word*, upL_t, upL_t, const word*, upL_t, const word*,   \
                             upL_t);                                                                         \
    template void mulp(const BasicParameters&, word*, upL_t, upL_t, const word*, upL_t, const word*, upL_t); \
    template transform& make_transform<word>(const BasicParameters&, TransformSlot&, upL_t);                 \
    template upL_t work_bytes_for<word>(upL_t, u64_t, bool);
ZNP_INSTANTIATE(c32i)
ZNP_INSTANTIATE(c64i)
#undef ZNP_INSTANTIATE

}  // namespace znp
