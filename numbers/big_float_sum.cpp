// BigFloat: sums and differences.
#include <algorithm>

#include "foundation/exceptions.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "numbers/big_float.hpp"

namespace znp {

namespace {

// The first and the end position of a sum or difference to p words.
template <class word>
struct SumRange {
    s64_t bottom;
    upL_t L;

    SumRange(const BigFloat<word>& a, const BigFloat<word>& b, upL_t p) {
        const s64_t top = std::max(a.get_mag(), b.get_mag());
        bottom = std::max(top - static_cast<s64_t>(p) - 1, std::min(a.get_exp(), b.get_exp()));
        L = static_cast<upL_t>(top - bottom);
    }
};

// T[0..L) = the operands' words from position `bottom` on, combined by chain(T, A, B, n, carry); the carry
// out.
template <class word, class Chain>
bool combine(word* T, const BigFloat<word>& a, const BigFloat<word>& b, s64_t bottom, upL_t L, Chain chain) {
    word A[addition_buffer];
    word B[addition_buffer];
    bool carry = false;
    for (upL_t done = 0; done < L; done += addition_buffer) {
        const upL_t n = std::min(addition_buffer, L - done);
        const s64_t position = bottom + static_cast<s64_t>(done);
        a.read_window(A, position, n);
        b.read_window(B, position, n);
        carry = chain(T + done, A, B, n, carry);
    }
    return carry;
}

constexpr auto add_chain = [](auto* T, const auto* A, const auto* B, upL_t n, bool carry) {
    return add_words(T, A, B, n, carry);
};
constexpr auto sub_chain = [](auto* T, const auto* A, const auto* B, upL_t n, bool borrow) {
    return sub_words(T, A, B, n, borrow);
};

}  // namespace

template <class word>
void BigFloatR<word>::set_uadd(const BigFloat<word>& a, const BigFloat<word>& b, upL_t p) {
    if (a.is_zero() || b.is_zero()) {
        set_gfp(a.is_zero() ? b : a, p);
        this->sign_ = true;
        return;
    }
    const SumRange<word> range(a, b, p);
    require(range.L + 1, "BigFloat::set_uadd()");
    const bool carry = combine(base_, a, b, range.bottom, range.L, add_chain);
    base_[range.L] = carry ? 1 : 0;
    reset(range.L + (carry ? 1 : 0), range.bottom, true);
}

template <class word>
void BigFloatR<word>::set_usub(const BigFloat<word>& a, const BigFloat<word>& b, upL_t p) {
    if (a.is_zero() || b.is_zero()) {
        set_gfp(a.is_zero() ? b : a, p);
        this->sign_ = true;
        if (a.is_zero()) this->negate();
        return;
    }
    const SumRange<word> range(a, b, p);
    require(range.L, "BigFloat::set_usub()");
    combine(base_, a, b, range.bottom, range.L, sub_chain);
    set_words(range.L, range.bottom, true);
}

template <class word>
void BigFloatR<word>::signed_sum(const BigFloat<word>& a, const BigFloat<word>& b, bool b_positive, upL_t p) {
    const bool a_positive = a.raw_sign();
    bool positive = a_positive;
    if (a.is_zero() || a_positive == b_positive) {
        set_uadd(a, b, p);
        if (a.is_zero()) positive = b_positive;
    } else {
        const int order = ucmp(a, b);
        if (order == 0) return set_zero();
        if (order > 0) {
            set_usub(a, b, p);
        } else {
            set_usub(b, a, p);
            positive = !positive;
        }
    }
    this->sign_ = positive || this->is_zero();
}

template <class word>
void BigFloatR<word>::set_add(const BigFloat<word>& a, const BigFloat<word>& b, upL_t p) {
    signed_sum(a, b, b.raw_sign(), p);
}

template <class word>
void BigFloatR<word>::set_sub(const BigFloat<word>& a, const BigFloat<word>& b, upL_t p) {
    signed_sum(a, b, !b.raw_sign(), p);
}

template <class word>
void BigFloatR<word>::set_rsub(const BigFloat<word>& a, const BigFloat<word>& b, s64_t mag, upL_t p,
                               bool positive) {
    const upL_t L = p + 1;
    require(L, "BigFloat::set_rsub()");
    const s64_t bottom = mag - static_cast<s64_t>(L);
    combine(base_, a, b, bottom, L, sub_chain);
    set_words(L, bottom, positive);
}

template <class word>
void BigFloatR<word>::add_ip(typename WordTraits<word>::wide x, s64_t position) {
    if (position < this->exp_ || position > this->get_mag()) {
        throw zn_error(zn_exception(error_code::out_of_range, nullptr, {}, {}, action::throw_silently,
                                    "Generic Exception", "BigFloat::add_ip()"),
                       "BigFloat::add_ip(): Magnitude is out of range.");
    }
    const word parts[2] = {static_cast<word>(x), static_cast<word>(x >> WordTraits<word>::bits)};
    const upL_t count = parts[1] != 0 ? 2 : 1;
    const upL_t at = static_cast<upL_t>(position - this->exp_);
    const upL_t L = std::max(this->L_, at + count);
    const upL_t offset = static_cast<upL_t>(this->T_ - base_);
    require(offset + L + 1, "BigFloat::add_ip()");

    word* T = writable_T();
    std::fill(T + this->L_, T + L + 1, word{0});  // the word above the top absorbs the carry
    const bool carry = add_words(T + at, T + at, parts, count);
    copy_add_carry(T + at + count, T + at + count, L + 1 - at - count, carry);
    this->L_ = L + 1;
    this->normalise_top();
}

#define ZNP_INSTANTIATE(word)                                                                           \
    template void BigFloatR<word>::set_uadd(const BigFloat<word>&, const BigFloat<word>&, upL_t);       \
    template void BigFloatR<word>::set_usub(const BigFloat<word>&, const BigFloat<word>&, upL_t);       \
    template void BigFloatR<word>::set_add(const BigFloat<word>&, const BigFloat<word>&, upL_t);        \
    template void BigFloatR<word>::set_sub(const BigFloat<word>&, const BigFloat<word>&, upL_t);        \
    template void BigFloatR<word>::set_rsub(const BigFloat<word>&, const BigFloat<word>&, s64_t, upL_t, \
                                            bool);                                                      \
    template void BigFloatR<word>::add_ip(WordTraits<word>::wide, s64_t);
ZNP_INSTANTIATE(c32i)
ZNP_INSTANTIATE(c64i)
#undef ZNP_INSTANTIATE

}  // namespace znp
