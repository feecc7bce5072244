// BigFloat: views, conversions and products with one word. Sums stand in big_float_sum.cpp, products in
// big_float_product.cpp.
#include "numbers/big_float.hpp"

#include <algorithm>
#include <bit>
#include <cmath>

#include "foundation/exceptions.hpp"
#include "foundation/fatal.hpp"
#include "multiply/hash_by_threads.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "multiply/kernels/word_multiply.hpp"

namespace znp {

namespace {

constexpr cdi all_ones = ~cdi{0};

}  // namespace

// ---- Residues

u64_t BigFloat::words_residue(u64_t threads) const {
    return guard::shift_words(guard::hash_words_by_threads(T_, L_, threads), exp_);
}

u64_t BigFloat::hash_error(u64_t threads) const {
    return guard::sub(residue_, words_residue(threads));
}

u64_t BigFloat::residue_between(s64_t low, s64_t high, u64_t threads) const {
    const s64_t from = std::clamp(low, exp_, get_mag());
    const s64_t to = std::clamp(high, from, get_mag());
    if (from == to) return 0;
    if (from == exp_ && to == get_mag()) return residue_;
    const upL_t words = static_cast<upL_t>(to - from);
    return guard::shift_words(guard::hash_words_by_threads(T_ + (from - exp_), words, threads), from);
}

u64_t BigFloat::residue_below(s64_t position, u64_t threads) const {
    return residue_between(exp_, position, threads);
}

// ---- The view

void BigFloat::read_window(cdi* out, s64_t position, upL_t n) const {
    const s64_t end = position + s64(n);
    const s64_t low = std::clamp(exp_, position, end);
    const s64_t high = std::clamp(get_mag(), low, end);
    out = std::fill_n(out, low - position, cdi{0});
    out = std::copy_n(T_ + (low - exp_), high - low, out);
    std::fill_n(out, end - high, cdi{0});
}

double BigFloat::to_double(s64_t& exp) const {
    exp = L_ == 0 ? 0 : get_mag();
    double value = 0;
    if (L_ > 1) value += static_cast<double>(T_[L_ - 2]) * 0x1p-128;
    if (L_ > 0) value += static_cast<double>(T_[L_ - 1]) * 0x1p-64;
    return sign_ ? value : -value;
}

void BigFloat::check_normalization() const {
    if (L_ != 0 && T_[L_ - 1] == 0) {
        fire(
            zn_exception(error_code::numerical_result, "BigFloat::check_normalization(): Top word is zero."));
    }
}

// Less words; the residue stays.
void BigFloat::set_length(upL_t L) {
    L_ = L;
    if (L_ == 0) {
        exp_ = 0;
        sign_ = true;
    }
}

void BigFloat::normalise_top() {
    set_length(normalised_length(T_, L_));
}

void BigFloat::shift_exp(s64_t n) {
    if (L_ == 0) return;
    exp_ += n;
    residue_ = guard::shift_words(residue_, n);
}

void BigFloat::truncate_top(s64_t position) {
    if (position >= get_mag()) return;
    residue_ = guard::sub(residue_, residue_between(position, get_mag()));
    L_ = position <= exp_ ? 0 : static_cast<upL_t>(position - exp_);
    normalise_top();
}

void BigFloat::strip_l1s() {
    if (L_ == 0 || T_[L_ - 1] < all_ones - 1) return;
    upL_t L = L_;
    do {
        L--;
    } while (L != 0 && T_[L - 1] == all_ones);
    truncate_top(exp_ + s64(L));
}

BigFloat BigFloat::top_words(upL_t p, u64_t threads) const {
    const upL_t dropped = L_ - kept_words(p);
    if (dropped == 0) return *this;
    const s64_t exp = exp_ + s64(dropped);
    return BigFloat(T_ + dropped, L_ - dropped, exp, sign_,
                    guard::sub(residue_, residue_below(exp, threads)));
}

BigFloat BigFloat::unproven_top_words(upL_t p, u64_t threads) const {
    const upL_t dropped = L_ - kept_words(p);
    const s64_t exp = exp_ + s64(dropped);
    return BigFloat(T_ + dropped, L_ - dropped, exp, sign_, residue_between(exp, get_mag(), threads));
}

int ucmp(const BigFloat& a, const BigFloat& b) {
    if (a.is_zero() || b.is_zero()) return (a.is_zero() ? 0 : 1) - (b.is_zero() ? 0 : 1);
    if (a.get_mag() != b.get_mag()) return a.get_mag() > b.get_mag() ? 1 : -1;
    const s64_t low = std::min(a.get_exp(), b.get_exp());
    for (s64_t position = a.get_mag(); position-- > low;) {
        const cdi x = a.word_at(position);
        const cdi y = b.word_at(position);
        if (x != y) return x > y ? 1 : -1;
    }
    return 0;
}

// ---- Storage

void BigFloatR::set_base(cdi* buffer, upL_t size) {
    base_ = buffer;
    size_ = size;
    set_zero();
}

void BigFloatR::reset(upL_t L, s64_t exp, bool positive, u64_t residue) {
    T_ = base_;
    L_ = L;
    exp_ = exp;
    sign_ = positive;
    residue_ = residue;
}

// ---- Values

void BigFloatR::set_zero() {
    reset(0, 0, true, 0);
}

void BigFloatR::set_words(upL_t L, s64_t exp, bool positive, u64_t residue) {
    reset(L, exp, positive, residue);
    normalise_top();
}

void BigFloatR::set_words(upL_t L, s64_t exp, bool positive) {
    reset(L, exp, positive, 0);
    residue_ = words_residue(1);
    normalise_top();
}

void BigFloatR::set_view(const BigFloat& view) {
    static_cast<BigFloat&>(*this) = view;
    normalise_top();
}

void BigFloatR::set_uW(cdi x) {
    renew(1, "BigFloat::set_uW()");
    base_[0] = x;
    set_words(1, 0, true);
}

void BigFloatR::set_u64(u64_t x) {
    renew(1, "BigFloat::set_u64()");
    base_[0] = x;
    set_words(1, 0, true);
}

void BigFloatR::set_double(double x, s64_t exp) {
    constexpr s64_t bits = WordTraits<cdi>::bits;
    constexpr upL_t words = 2;  // 53 bits shifted up by less than a word
    renew(words, "BigFloat::set_double()");
    if (x == 0) return set_zero();

    const u64_t raw = std::bit_cast<u64_t>(x);
    const s64_t field = static_cast<s64_t>(raw >> 52 & 0x7ff);
    if (field == 0x7ff) assert_failure(fatal_category::invalid_parameters, L"BigFloat::set_double()", L"");
    u64_t mantissa = raw & 0xfffffffffffff;
    s64_t exponent = -1074;  // subnormal
    if (field != 0) {
        mantissa |= u64_t{1} << 52;
        exponent = field - 1075;
    }
    const s64_t shift = exponent & (bits - 1);
    const u128_t shifted = static_cast<u128_t>(mantissa) << shift;
    base_[0] = static_cast<cdi>(shifted);
    base_[1] = static_cast<cdi>(shifted >> bits);
    set_words(words, exp + (exponent - shift) / bits, raw >> 63 == 0);
}

void BigFloatR::set_bui(const BasicInt& source) {
    copy_words(source.get_T(), source.get_L(), "BigFloat::set_bui()");
    set_words(source.get_L(), 0, true);
}

void BigFloatR::set_efp(const ExactFloat& source) {
    copy_words(source.get_T(), source.get_L(), "BigFloat::set_efp()");
    set_words(source.get_L(), source.get_exp(), true, source.get_guard());
}

void BigFloatR::set_gfp(const BigFloat& source, upL_t p) {
    const BigFloat top = source.top_words(p);
    copy_words(top.get_T(), top.get_L(), "BigFloat::set_gfp()");
    reset(top.get_L(), top.get_exp(), top.raw_sign(), top.get_residue());
}

void BigFloatR::negate_twos_complement() {
    cdi* T = writable_T();
    if (L_ != 0) residue_ = guard::sub(guard::word_power(get_mag()), residue_);
    negate_words(T, T, L_);
    normalise_top();
}

// ---- Products with a word

void BigFloatR::mul_uW(cdi x) {
    if (x == 0 || L_ == 0) return set_zero();
    const upL_t L = L_;
    require(L + 1, "BigFloat::mul_uW()");
    cdi* T = writable_T();
    T[L] = MulW(T, L, x);
    if (T[L] != 0) L_++;
    residue_ = guard::mul(residue_, guard::reduce(x));
}

void BigFloatR::set_mul_uW(const BigFloat& a, cdi x) {
    if (x == 0 || a.is_zero()) return set_zero();
    renew(a.get_L() + 1, "BigFloat::set_mul_uW()");
    Mul1(base_, a.get_T(), a.get_L(), x);
    set_words(a.get_L() + 1, a.get_exp(), a.raw_sign(), guard::mul(a.get_residue(), guard::reduce(x)));
}

}  // namespace znp
