// BigFloat: sums and differences.
#include <algorithm>

#include "foundation/exceptions.hpp"
#include "multiply/hash_by_threads.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "numbers/big_float.hpp"
#include "numbers/float_sum.hpp"

namespace znp {

namespace {

// T[0..L) = the operands' words from position `bottom` on, through two windows on the stack; the carry out.
template <class Chain>
bool combine_in_memory(cdi* T, const BigFloat& a, const BigFloat& b, s64_t bottom, upL_t L, Chain chain) {
    cdi A[addition_buffer];
    cdi B[addition_buffer];
    return combine(a, b, bottom, L, {A, B, addition_buffer}, chain,
                   [T](upL_t done, upL_t, auto make) { make(T + done); });
}

}  // namespace

void BigFloatR::set_uadd(const BigFloat& a, const BigFloat& b, upL_t p) {
    if (a.is_zero() || b.is_zero()) {
        set_gfp(a.is_zero() ? b : a, p);
        sign_ = true;
        return;
    }
    const SumRange range(a, b, p);
    renew(range.L + 1, "BigFloat::set_uadd()");
    const bool carry = combine_in_memory(base_, a, b, range.bottom, range.L, add_chain);
    base_[range.L] = carry ? 1 : 0;
    reset(range.L + (carry ? 1 : 0), range.bottom, true,
          guard::add(guard::sub(a.get_residue(), a.residue_below(range.bottom)),
                     guard::sub(b.get_residue(), b.residue_below(range.bottom))));
}

void BigFloatR::set_usub(const BigFloat& a, const BigFloat& b, upL_t p) {
    if (a.is_zero() || b.is_zero()) {
        set_gfp(a.is_zero() ? b : a, p);
        sign_ = true;
        if (a.is_zero()) negate();
        return;
    }
    const SumRange range(a, b, p);
    renew(range.L, "BigFloat::set_usub()");
    combine_in_memory(base_, a, b, range.bottom, range.L, sub_chain);
    set_words(range.L, range.bottom, true,
              guard::sub(guard::sub(a.get_residue(), a.residue_below(range.bottom)),
                         guard::sub(b.get_residue(), b.residue_below(range.bottom))));
}

void BigFloatR::signed_sum(const BigFloat& a, const BigFloat& b, bool b_positive, upL_t p) {
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
    sign_ = positive || is_zero();
}

void BigFloatR::set_add(const BigFloat& a, const BigFloat& b, upL_t p) {
    signed_sum(a, b, b.raw_sign(), p);
}

void BigFloatR::set_sub(const BigFloat& a, const BigFloat& b, upL_t p) {
    signed_sum(a, b, !b.raw_sign(), p);
}

void BigFloatR::set_rsub(const BigFloat& a, const BigFloat& b, s64_t mag, upL_t p, bool positive) {
    const upL_t L = p + 1;
    renew(L, "BigFloat::set_rsub()");
    const s64_t bottom = mag - static_cast<s64_t>(L);
    const u64_t borrow = combine_in_memory(base_, a, b, bottom, L, sub_chain) ? guard::word_power(mag) : 0;
    // What lies outside of the window takes its residue with it.
    const auto window = [&](const BigFloat& x) {
        const u64_t outside = guard::add(x.residue_below(bottom), x.residue_between(mag, x.get_mag()));
        return guard::sub(x.get_residue(), outside);
    };
    set_words(L, bottom, positive, guard::add(guard::sub(window(a), window(b)), borrow));
}

void BigFloatR::add_ip(u128_t x, s64_t position) {
    if (position < exp_ || position > get_mag()) {
        throw zn_error(zn_exception(error_code::out_of_range, nullptr, {}, {}, action::throw_silently,
                                    "Generic Exception", "BigFloat::add_ip()"),
                       "BigFloat::add_ip(): Magnitude is out of range.");
    }
    const cdi parts[2] = {static_cast<cdi>(x), static_cast<cdi>(x >> WordTraits<cdi>::bits)};
    const upL_t count = parts[1] != 0 ? 2 : 1;
    const upL_t at = static_cast<upL_t>(position - exp_);
    const upL_t L = std::max(L_, at + count);
    require(L + 1, "BigFloat::add_ip()");

    cdi* T = writable_T();
    std::fill(T + L_, T + L + 1, cdi{0});  // the word above the top absorbs the carry
    const bool carry = add_words(T + at, T + at, parts, count);
    copy_add_carry(T + at + count, T + at + count, L + 1 - at - count, carry);
    const u64_t added =
        guard::add(guard::reduce(parts[0]), guard::mul(guard::reduce(parts[1]), guard::word_base));
    residue_ = guard::add(residue_, guard::shift_words(added, position));
    L_ = L + 1;
    normalise_top();
}

}  // namespace znp
