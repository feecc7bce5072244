// BigFloat: views, conversions and products with one word. Sums stand in big_float_sum.cpp, products in
// big_float_product.cpp.
#include "numbers/big_float.hpp"

#include <algorithm>
#include <bit>
#include <cmath>

#include "foundation/exceptions.hpp"
#include "foundation/fatal.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "multiply/kernels/word_multiply.hpp"

namespace znp {

namespace {

template <class word>
constexpr word all_ones = static_cast<word>(~word{0});

constexpr s64_t s64(upL_t n) {
    return static_cast<s64_t>(n);
}

}  // namespace

// ---- The view
// -----------------------------------------------------------------------------------------------

template <class word>
void BigFloat<word>::read_window(word* out, s64_t position, upL_t n) const {
    const s64_t end = position + s64(n);
    const s64_t low = std::clamp(exp_, position, end);
    const s64_t high = std::clamp(get_mag(), low, end);
    out = std::fill_n(out, low - position, word{0});
    out = std::copy_n(T_ + (low - exp_), high - low, out);
    std::fill_n(out, end - high, word{0});
}

template <class word>
double BigFloat<word>::to_double(s64_t& exp) const {
    exp = L_ == 0 ? 0 : get_mag();
    constexpr upL_t words = 128 / WordTraits<word>::bits;
    double value = 0;
    for (upL_t i = std::min(words, L_); i-- != 0;) {  // from the least weight up
        const double weight = std::ldexp(1.0, -static_cast<int>((i + 1) * WordTraits<word>::bits));
        value += static_cast<double>(T_[L_ - 1 - i]) * weight;
    }
    return sign_ ? value : -value;
}

template <class word>
void BigFloat<word>::check_normalization() const {
    if (L_ != 0 && T_[L_ - 1] == 0) {
        fire(
            zn_exception(error_code::numerical_result, "BigFloat::check_normalization(): Top word is zero."));
    }
}

template <class word>
void BigFloat<word>::normalise_top() {
    L_ = normalised_length(T_, L_);
    if (L_ == 0) {
        exp_ = 0;
        sign_ = true;
    }
}

template <class word>
void BigFloat<word>::truncate_top(s64_t position) {
    if (position >= get_mag()) return;
    L_ = position <= exp_ ? 0 : static_cast<upL_t>(position - exp_);
    normalise_top();
}

template <class word>
void BigFloat<word>::strip_l1s() {
    if (L_ == 0 || T_[L_ - 1] < all_ones<word> - 1) return;
    do {
        L_--;
    } while (L_ != 0 && T_[L_ - 1] == all_ones<word>);
    normalise_top();
}

template <class word>
BigFloat<word> BigFloat<word>::top_words(upL_t p) const {
    const upL_t kept = std::min(p + extra_precision, L_);
    const upL_t dropped = L_ - kept;
    return BigFloat(T_ + dropped, kept, exp_ + s64(dropped), sign_);
}

template <class word>
int ucmp(const BigFloat<word>& a, const BigFloat<word>& b) {
    if (a.is_zero() || b.is_zero()) return (a.is_zero() ? 0 : 1) - (b.is_zero() ? 0 : 1);
    if (a.get_mag() != b.get_mag()) return a.get_mag() > b.get_mag() ? 1 : -1;
    const s64_t low = std::min(a.get_exp(), b.get_exp());
    for (s64_t position = a.get_mag(); position-- > low;) {
        const word x = a.word_at(position);
        const word y = b.word_at(position);
        if (x != y) return x > y ? 1 : -1;
    }
    return 0;
}

// ---- Storage
// ------------------------------------------------------------------------------------------------

template <class word>
void BigFloatR<word>::set_base(word* buffer, upL_t size) {
    base_ = buffer;
    size_ = size;
    reset(0, 0, true);
}

template <class word>
void BigFloatR<word>::require(upL_t words, const char* location) const {
    if (words > size_) fire(BufferTooSmallException(location, size_, words));
}

template <class word>
void BigFloatR<word>::reset(upL_t L, s64_t exp, bool positive) {
    this->T_ = base_;
    this->L_ = L;
    this->exp_ = exp;
    this->sign_ = positive;
}

// ---- Values
// -------------------------------------------------------------------------------------------------

template <class word>
void BigFloatR<word>::set_zero() {
    reset(0, 0, true);
}

template <class word>
void BigFloatR<word>::set_words(upL_t L, s64_t exp, bool positive) {
    reset(L, exp, positive);
    this->normalise_top();
}

template <class word>
void BigFloatR<word>::set_view(const word* T, upL_t L, s64_t exp, bool positive) {
    reset(L, exp, positive);
    this->T_ = T;
    this->normalise_top();
}

template <class word>
void BigFloatR<word>::set_uW(word x) {
    require(1, "BigFloat::set_uW()");
    base_[0] = x;
    set_words(1, 0, true);
}

template <class word>
void BigFloatR<word>::set_u64(u64_t x) {
    constexpr upL_t words = sizeof(u64_t) / sizeof(word);
    require(words, "BigFloat::set_u64()");
    for (upL_t i = 0; i < words; i++) base_[i] = static_cast<word>(x >> (i * WordTraits<word>::bits % 64));
    set_words(words, 0, true);
}

template <class word>
void BigFloatR<word>::set_double(double x, s64_t exp) {
    constexpr s64_t bits = WordTraits<word>::bits;
    constexpr upL_t words = 2 + (64 - bits) / bits;  // 53 bits shifted up by less than a word
    require(words, "BigFloat::set_double()");
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
    for (upL_t i = 0; i < words; i++) base_[i] = static_cast<word>(shifted >> (s64(i) * bits));
    set_words(words, exp + (exponent - shift) / bits, raw >> 63 == 0);
}

template <class word>
void BigFloatR<word>::set_bui(const BasicInt<word>& source) {
    require(source.get_L(), "BigFloat::set_bui()");
    std::copy_n(source.get_T(), source.get_L(), base_);
    set_words(source.get_L(), 0, true);
}

template <class word>
void BigFloatR<word>::set_efp(const ExactFloat<word>& source) {
    require(source.get_L(), "BigFloat::set_efp()");
    std::copy_n(source.get_T(), source.get_L(), base_);
    set_words(source.get_L(), source.get_exp(), true);
}

template <class word>
void BigFloatR<word>::set_gfp(const BigFloat<word>& source, upL_t p) {
    const BigFloat<word> top = source.top_words(p);
    require(top.get_L(), "BigFloat::set_gfp()");
    std::copy_n(top.get_T(), top.get_L(), base_);
    reset(top.get_L(), top.get_exp(), top.raw_sign());
}

template <class word>
void BigFloatR<word>::negate_twos_complement() {
    word* T = writable_T();
    negate_words(T, T, this->L_);
    this->normalise_top();
}

// ---- Products with a word
// -----------------------------------------------------------------------------------

template <class word>
void BigFloatR<word>::mul_uW(word x) {
    if (x == 0 || this->L_ == 0) return set_zero();
    const upL_t L = this->L_;
    const upL_t offset = static_cast<upL_t>(this->T_ - base_);
    require(offset + L + 1, "BigFloat::mul_uW()");
    word* T = writable_T();
    T[L] = MulW(T, L, x);
    if (T[L] != 0) this->L_++;
}

template <class word>
void BigFloatR<word>::set_mul_uW(const BigFloat<word>& a, word x) {
    if (x == 0 || a.is_zero()) return set_zero();
    require(a.get_L() + 1, "BigFloat::set_mul_uW()");
    Mul1(base_, a.get_T(), a.get_L(), x);
    set_words(a.get_L() + 1, a.get_exp(), a.raw_sign());
}

template class BigFloat<c32i>;
template class BigFloat<c64i>;
template int ucmp(const BigFloat<c32i>&, const BigFloat<c32i>&);
template int ucmp(const BigFloat<c64i>&, const BigFloat<c64i>&);

// Of BigFloatR, the members above; the other files instantiate theirs.
#define ZNP_INSTANTIATE(word)                                                 \
    template void BigFloatR<word>::set_base(word*, upL_t);                    \
    template void BigFloatR<word>::require(upL_t, const char*) const;         \
    template void BigFloatR<word>::reset(upL_t, s64_t, bool);                 \
    template void BigFloatR<word>::set_zero();                                \
    template void BigFloatR<word>::set_words(upL_t, s64_t, bool);             \
    template void BigFloatR<word>::set_view(const word*, upL_t, s64_t, bool); \
    template void BigFloatR<word>::set_uW(word);                              \
    template void BigFloatR<word>::set_u64(u64_t);                            \
    template void BigFloatR<word>::set_double(double, s64_t);                 \
    template void BigFloatR<word>::set_bui(const BasicInt<word>&);            \
    template void BigFloatR<word>::set_efp(const ExactFloat<word>&);          \
    template void BigFloatR<word>::set_gfp(const BigFloat<word>&, upL_t);     \
    template void BigFloatR<word>::negate_twos_complement();                  \
    template void BigFloatR<word>::mul_uW(word);                              \
    template void BigFloatR<word>::set_mul_uW(const BigFloat<word>&, word);
ZNP_INSTANTIATE(c32i)
ZNP_INSTANTIATE(c64i)
#undef ZNP_INSTANTIATE

}  // namespace znp
