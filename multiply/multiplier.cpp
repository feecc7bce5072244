#include "multiply/multiplier.hpp"

#include "foundation/fail.hpp"

namespace znp {

template <class word>
void multiplier<word>::sqr(const BasicParameters& bp, word* T, WordSpan<word> A) const {
    TransformSlot slot;
    slot.adopt(make_transform(bp, slot.place(), 2 * A.size()));
    slot->sqr(bp, T, A);
}

template <class word>
void multiplier<word>::mul(const BasicParameters& bp, word* T, WordSpan<word> A, WordSpan<word> B) const {
    TransformSlot slot;
    slot.adopt(make_transform(bp, slot.place(), A.size() + B.size()));
    slot->mul(bp, T, A, B);
}

template <class word>
void multiplier<word>::sqr_window(const BasicParameters& bp, Window<word> R, WordSpan<word> A) const {
    TransformSlot slot;
    slot.adopt(make_transform(bp, slot.place(), 2 * A.size()));
    slot->sqr_window(bp, R, A);
}

template <class word>
void multiplier<word>::mul_window(const BasicParameters& bp, Window<word> R, WordSpan<word> A,
                                  WordSpan<word> B) const {
    TransformSlot slot;
    slot.adopt(make_transform(bp, slot.place(), A.size() + B.size()));
    slot->mul_window(bp, R, A, B);
}

template <class word>
CheckedResult multiplier<word>::checked_mul(const BasicParameters& bp, Window<word> R, WordSpan<word> A,
                                            WordSpan<word> B) const {
    if constexpr (sizeof(word) == sizeof(c64i)) {
        TransformSlot slot;
        slot.adopt(make_transform(bp, slot.place(), A.size() + B.size()));
        return slot->checked_mul(bp, R, A, B);
    } else {
        fail(zn_exception(error_code::unspecified, "Products of 32-bit words are not verified.", name));
    }
}

template class multiplier<c32i>;
template class multiplier<c64i>;

}  // namespace znp
