#include "multiply/multiplier.hpp"

namespace znp {

template <class word>
void multiplier<word>::sqr(const BasicParameters& bp, word* T, const word* A, upL_t n) const {
    TransformSlot slot;
    slot.adopt(make_transform(bp, slot.place(), 2 * n));
    slot->sqr(bp, T, A, n);
}

template <class word>
void multiplier<word>::mul(const BasicParameters& bp, word* T, const word* A, upL_t La, const word* B,
                           upL_t Lb) const {
    TransformSlot slot;
    slot.adopt(make_transform(bp, slot.place(), La + Lb));
    slot->mul(bp, T, A, La, B, Lb);
}

template <class word>
void multiplier<word>::sqr_window(const BasicParameters& bp, word* T, upL_t s, upL_t e, const word* A,
                                  upL_t n) const {
    TransformSlot slot;
    slot.adopt(make_transform(bp, slot.place(), 2 * n));
    slot->sqr_window(bp, T, s, e, A, n);
}

template <class word>
void multiplier<word>::mul_window(const BasicParameters& bp, word* T, upL_t s, upL_t e, const word* A,
                                  upL_t La, const word* B, upL_t Lb) const {
    TransformSlot slot;
    slot.adopt(make_transform(bp, slot.place(), La + Lb));
    slot->mul_window(bp, T, s, e, A, La, B, Lb);
}

template class multiplier<c32i>;
template class multiplier<c64i>;

}  // namespace znp
