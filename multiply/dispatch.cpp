#include "multiply/dispatch.hpp"

#include "multiply/bkt/window.hpp"
#include "multiply/selection.hpp"

namespace znp {

template <class word>
void sqr(const BasicParameters& bp, word* T, WordSpan<word> A) {
    select(memory_table<word>(), 2 * A.size()).sqr(bp, T, A);
}

template <class word>
void mul(const BasicParameters& bp, word* T, WordSpan<word> A, WordSpan<word> B) {
    select(memory_table<word>(), A.size() + B.size()).mul(bp, T, A, B);
}

// The algorithms get narrowed operands, so that a short window of long operands costs a short product.
template <class word>
void sqr_window(const BasicParameters& bp, Window<word> R, WordSpan<word> A) {
    const bkt::NarrowedSqr w = bkt::narrow_sqr(R.s, R.e, A.size());
    select(memory_table<word>(), 2 * w.n).sqr_window(bp, {R.T, w.s, w.e}, A.subspan(w.A_offset, w.n));
}

template <class word>
void mul_window(const BasicParameters& bp, Window<word> R, WordSpan<word> A, WordSpan<word> B) {
    const bkt::NarrowedMul w = bkt::narrow_mul(R.s, R.e, A.size(), B.size());
    select(memory_table<word>(), w.La + w.Lb)
        .mul_window(bp, {R.T, w.s, w.e}, A.subspan(w.A_offset, w.La), B.subspan(w.B_offset, w.Lb));
}

template <class word>
void mulp(const BasicParameters& bp, Window<word> R, WordSpan<word> A, WordSpan<word> B) {
    const bkt::NarrowedMul w = bkt::narrow_mul(R.s, R.e, A.size(), B.size());
    select(memory_table<word>(), w.La + w.Lb)
        .mulp(bp, {R.T, w.s, w.e}, A.subspan(w.A_offset, w.La), B.subspan(w.B_offset, w.Lb));
}

CheckedResult checked_mul(const BasicParameters& bp, Window<c64i> R, WordSpan<c64i> A, WordSpan<c64i> B) {
    return select(memory_table<c64i>(), A.size() + B.size()).checked_mul(bp, R, A, B);
}

CheckedResult checked_mulp(const BasicParameters& bp, Window<c64i> R, WordSpan<c64i> A, WordSpan<c64i> B) {
    return select(memory_table<c64i>(), A.size() + B.size()).checked_mulp(bp, R, A, B);
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
    return largest_need(memory_table<word>(), L, [&](const multiplier<word>& algorithm, upL_t length) {
        return use_mulp ? algorithm.mulp_bytes(length, threads) : algorithm.work_bytes(length, threads);
    });
}

#define ZNP_INSTANTIATE(word)                                                                       \
    template void sqr(const BasicParameters&, word*, WordSpan<word>);                               \
    template void mul(const BasicParameters&, word*, WordSpan<word>, WordSpan<word>);               \
    template void sqr_window(const BasicParameters&, Window<word>, WordSpan<word>);                 \
    template void mul_window(const BasicParameters&, Window<word>, WordSpan<word>, WordSpan<word>); \
    template void mulp(const BasicParameters&, Window<word>, WordSpan<word>, WordSpan<word>);       \
    template transform& make_transform<word>(const BasicParameters&, TransformSlot&, upL_t);        \
    template upL_t work_bytes_for<word>(upL_t, u64_t, bool);
ZNP_INSTANTIATE(c32i)
ZNP_INSTANTIATE(c64i)
#undef ZNP_INSTANTIATE

}  // namespace znp
