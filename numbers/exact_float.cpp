#include "numbers/exact_float.hpp"

#include <algorithm>
#include <utility>

#include "foundation/fail.hpp"
#include "foundation/fatal.hpp"
#include "multiply/bkt/basecase.hpp"
#include "multiply/dispatch.hpp"
#include "multiply/kernels/residue.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "multiply/kernels/word_multiply.hpp"

namespace znp {

namespace {

template <class word>
u64_t word_power(s64_t e) {
    return sizeof(word) == 8 ? residue::word_power64(e) : residue::word_power32(e);
}

// A distance of positions that is known not to be negative.
upL_t distance(s64_t from, s64_t to) {
    return static_cast<upL_t>(to - from);
}

// Two operands laid over the words of their sum or difference, a's magnitude not below b's. Fills the
// positions that only the lower-reaching one has, b's negated in a difference; what is left is b over the low
// words of a.
template <class word>
struct Overlay {
    word* T;
    const word* A;
    upL_t La;
    const word* B;
    upL_t Lb;
    bool borrow = false;

    Overlay(word* T_, const ExactFloat<word>& a, const ExactFloat<word>& b, bool difference)
        : T(T_), A(a.get_T()), La(a.get_L()), B(b.get_T()), Lb(b.get_L()) {
        if (b.get_exp() < a.get_exp()) {
            const upL_t below = distance(b.get_exp(), a.get_exp());
            const upL_t taken = std::min(below, Lb);
            if (difference) {
                borrow = negate_words(T, B, taken);
            } else {
                std::copy_n(B, taken, T);
            }
            std::fill_n(T + taken, below - taken, borrow ? static_cast<word>(~word{0}) : word{0});
            T += below;
            B += taken;
            Lb -= taken;
        } else {
            const upL_t below = distance(a.get_exp(), b.get_exp());
            std::copy_n(A, below, T);
            T += below;
            A += below;
            La -= below;
        }
    }
};

[[noreturn]] void misuse(const char* message) {
    fail(zn_exception(error_code::unspecified, message));
}

}  // namespace

// ---- The view
// -----------------------------------------------------------------------------------------------

template <class word>
u64_t ExactFloat<word>::words_hash() const {
    const u64_t h = residue::hash_words(T_, L_);
    return exp_ == 0 ? h : residue::mul(h, word_power<word>(exp_));
}

template <class word>
u64_t ExactFloat<word>::hash_error() const {
    return residue::sub(hash_, words_hash());
}

template <class word>
ExactFloat<word>::Transform::Transform(const ExactFloat& source, const transform& algorithm_, void* image_,
                                       void* scratch)
    : algorithm(&algorithm_), image(image_), exp(source.exp_), L(source.L_), hash(source.hash_) {
    algorithm->forward(image, source.T_, L, scratch);
}

// ---- Storage
// ------------------------------------------------------------------------------------------------

template <class word>
void ExactFloatR<word>::set_base(word* buffer, upL_t size) {
    base_ = buffer;
    size_ = size;
    this->T_ = buffer;
}

template <class word>
void ExactFloatR<word>::set_base(word* buffer, upL_t offset, upL_t size) {
    set_base(buffer + offset, size - offset);
}

template <class word>
void ExactFloatR<word>::set_rest_of(upL_t offset, const ExactFloatR& other) {
    set_base(other.writable_T() + offset, other.room() - offset);
}

template <class word>
void ExactFloatR<word>::require(upL_t words, const char* location) const {
    if (words > room()) fire(BufferTooSmallException(location, room(), words));
}

// ---- Values
// -------------------------------------------------------------------------------------------------

template <class word>
void ExactFloatR<word>::set_L(upL_t L, s64_t exp) {
    this->L_ = L;
    this->exp_ = exp;
    rehash();
}

template <class word>
void ExactFloatR<word>::set_LN(upL_t L, s64_t exp) {
    set_L(normalised_length(this->T_, L), exp);
}

template <class word>
void ExactFloatR<word>::set_LN(upL_t L, s64_t exp, u64_t hash) {
    this->L_ = normalised_length(this->T_, L);
    this->exp_ = exp;
    this->hash_ = hash;
}

template <class word>
void ExactFloatR<word>::set_uW(word x, s64_t exp) {
    reset_T();
    require(1, "ExactFloat::set_uW()");
    base_[0] = x;
    set_L(1, exp);
}

template <class word>
void ExactFloatR<word>::set_u64(u64_t x) {
    reset_T();
    constexpr upL_t words = sizeof(u64_t) / sizeof(word);
    require(words, "ExactFloat::set_u64()");
    for (upL_t i = 0; i < words; i++) base_[i] = static_cast<word>(x >> (i * WordTraits<word>::bits % 64));
    set_LN(words, 0);
}

template <class word>
void ExactFloatR<word>::set_bui(const BasicInt<word>& source) {
    reset_T();
    require(source.get_L(), "ExactFloat::set_bui()");
    std::copy_n(source.get_T(), source.get_L(), base_);
    this->L_ = source.get_L();
    this->exp_ = 0;
    this->hash_ = source.get_hash();
}

template <class word>
void ExactFloatR<word>::set_efp(const ExactFloat<word>& source) {
    reset_T();
    require(source.get_L(), "ExactFloat::set_efp");
    std::copy_n(source.get_T(), source.get_L(), base_);
    this->L_ = source.get_L();
    this->exp_ = source.get_exp();
    this->hash_ = source.get_hash();
}

template <class word>
void ExactFloatR<word>::strip_low() {
    upL_t zeros = 0;
    while (zeros < this->L_ && this->T_[zeros] == 0) zeros++;
    zeros &= ~upL_t{3};
    this->T_ += zeros;
    this->L_ -= zeros;
    this->exp_ += static_cast<s64_t>(zeros);
}

template <class word>
void ExactFloatR<word>::mul_pow_word(s64_t n, u64_t factor) {
    this->exp_ += n;
    this->hash_ = residue::mul(this->hash_, factor);
}

template <class word>
void ExactFloatR<word>::mp2(s64_t n) {
    constexpr unsigned bits = WordTraits<word>::bits;
    const s64_t words = n >> (bits == 64 ? 6 : 5);
    const unsigned shift = static_cast<unsigned>(n) % bits;
    if (shift != 0) {
        require(this->L_ + 1, "ExactFloat::mp2()");
        word* T = writable_T();
        T[this->L_] = MulW(T, this->L_, word{1} << shift);
        if (T[this->L_] != 0) this->L_++;
        this->hash_ = residue::mul(this->hash_, residue::pow(2, shift));
    }
    if (words != 0) mul_pow_word(words, word_power<word>(words));
}

// ---- Products
// -----------------------------------------------------------------------------------------------

template <class word>
void ExactFloatR<word>::set_mul(const BasicParameters& params, const ExactFloat<word>& a,
                                const ExactFloat<word>& b) {
    reset_T();
    const upL_t n = a.get_L() + b.get_L();
    require(n, "ExactFloat::set_mul()");
    if (n < basecase_clen) {
        bkt::mulB(base_, a.get_T(), a.get_L(), b.get_T(), b.get_L());
    } else {
        mul(params, base_, a.get_T(), a.get_L(), b.get_T(), b.get_L());
    }
    this->L_ = base_[n - 1] != 0 ? n : n - 1;
    this->exp_ = a.get_exp() + b.get_exp();
    this->hash_ = residue::mul(a.get_hash(), b.get_hash());
}

template <class word>
void ExactFloatR<word>::set_inverse_fmul(void* scratch, Transform& A, const Transform& B) {
    if (A.algorithm != B.algorithm && !A.algorithm->equals(*B.algorithm)) {
        misuse("ExactFloat::set_inverse_fmul(): Mismatching Transform Parameters");
    }
    reset_T();
    const upL_t n = A.L + B.L;
    require(n, "ExactFloat::set_inverse_fmul()");
    if (n * WordTraits<word>::bits > A.algorithm->max_bits) {
        misuse("ExactFloat::set_inverse_fmul(): Truncated Range\n\n");
    }
    this->hash_ = residue::mul(A.hash, B.hash);
    A.algorithm->inverse_fmul(base_, 0, n, A.image, B.image, scratch);
    A.image = nullptr;
    this->exp_ = A.exp + B.exp;
    this->L_ = base_[n - 1] != 0 ? n : n - 1;
}

template <class word>
void ExactFloatR<word>::set_inverse_fsqr(void* scratch, Transform& A) {
    reset_T();
    const upL_t n = 2 * A.L;
    require(n, "ExactFloat::set_inverse_fsqr()");
    if (n * WordTraits<word>::bits > A.algorithm->max_bits) {
        misuse("ExactFloat::set_inverse_fsqr(): Truncated Range\n\n");
    }
    this->hash_ = residue::mul(A.hash, A.hash);
    A.algorithm->inverse_fsqr(base_, 0, n, A.image, scratch);
    A.image = nullptr;
    this->exp_ = 2 * A.exp;
    this->L_ = base_[n - 1] != 0 ? n : n - 1;
}

template <class word>
void ExactFloatR<word>::set_inverse_fmul(void* scratch, Transform& A, const Transform& B, s64_t e) {
    if (A.algorithm != B.algorithm && !A.algorithm->equals(*B.algorithm)) {
        misuse("ExactFloatR::set_inverse_fmul(exp): Mismatching Transform Parameters");
    }
    reset_T();
    const s64_t exp = A.exp + B.exp;
    const upL_t zeros = exp > e ? distance(e, exp) : 0;
    const upL_t n = A.L + B.L;
    require(zeros + n, "ExactFloat::set_inverse_fmul(exp)");
    if (n * WordTraits<word>::bits > A.algorithm->max_bits) {
        misuse("ExactFloatR::set_inverse_fmul(exp): Truncated Range\n\n");
    }
    this->hash_ = residue::mul(A.hash, B.hash);
    std::fill_n(base_, zeros, word{0});
    A.algorithm->inverse_fmul(base_ + zeros, 0, n, A.image, B.image, scratch);
    A.image = nullptr;
    this->exp_ = exp - static_cast<s64_t>(zeros);
    this->L_ = zeros + (base_[zeros + n - 1] != 0 ? n : n - 1);
}

// ---- Sums and differences
// -----------------------------------------------------------------------------------

template <class word>
void ExactFloatR<word>::set_add(const ExactFloat<word>& x, const ExactFloat<word>& y) {
    const bool swapped = x.get_mag() < y.get_mag();
    const ExactFloat<word>& a = swapped ? y : x;
    const ExactFloat<word>& b = swapped ? x : y;
    reset_T();
    const s64_t exp = std::min(a.get_exp(), b.get_exp());
    const upL_t L = distance(exp, a.get_mag());
    require(L + 1, "ExactFloat::set_add()");

    const Overlay<word> over(base_, a, b, false);
    const bool carry = copy_add_carry(over.T + over.Lb, over.A + over.Lb, over.La - over.Lb,
                                      add_words(over.T, over.A, over.B, over.Lb));
    base_[L] = carry ? 1 : 0;

    this->L_ = L + (carry ? 1 : 0);
    this->exp_ = exp;
    this->hash_ = residue::add(a.get_hash(), b.get_hash());
}

template <class word>
void ExactFloatR<word>::set_sub(const ExactFloat<word>& a, const ExactFloat<word>& b) {
    constexpr const char* location = "ExactFloat::set_sub()";
    if (a.get_mag() < b.get_mag()) fail(UnsupportedValueException::negative(location));
    reset_T();
    const s64_t exp = std::min(a.get_exp(), b.get_exp());
    const upL_t L = distance(exp, a.get_mag());
    require(L + 1, b.get_exp() < a.get_exp() ? location : "ExactFloat::set_add()");

    const Overlay<word> over(base_, a, b, true);
    const bool borrow = copy_sub_borrow(over.T + over.Lb, over.A + over.Lb, over.La - over.Lb,
                                        sub_words(over.T, over.A, over.B, over.Lb, over.borrow));
    if (borrow) fail(UnsupportedValueException::negative(location));

    this->L_ = normalised_length(base_, L);
    if (this->L_ == 0) fail(UnsupportedValueException::zero(location));
    this->exp_ = exp;
    this->hash_ = residue::sub(a.get_hash(), b.get_hash());
}

template <class word>
ExactFloatR<word>& ExactFloatR<word>::operator+=(const ExactFloat<word>& b) {
    if (this->exp_ > b.get_exp() || this->get_mag() < b.get_mag() || this->L_ + 1 > room()) {
        assert_failure(fatal_category::invalid_parameters, L"ExactFloatR::operator+=()", L"");
    }
    word* T = writable_T() + distance(this->exp_, b.get_exp());
    const bool carry = add_words(T, T, b.get_T(), b.get_L());
    word* above = T + b.get_L();
    word* top = writable_T() + this->L_;
    *top = copy_add_carry(above, above, static_cast<upL_t>(top - above), carry) ? 1 : 0;
    if (*top != 0) this->L_++;
    this->hash_ = residue::add(this->hash_, b.get_hash());
    return *this;
}

template <class word>
ExactFloatR<word>& ExactFloatR<word>::operator-=(const ExactFloat<word>& b) {
    constexpr const char* location = "ExactFloatR::operator-=()";
    if (this->get_mag() < b.get_mag()) fail(UnsupportedValueException::negative(location));
    if (this->exp_ > b.get_exp() || this->L_ + 1 > room()) {
        assert_failure(fatal_category::invalid_parameters, L"ExactFloatR::operator-=()", L"");
    }
    word* T = writable_T() + distance(this->exp_, b.get_exp());
    word* above = T + b.get_L();
    word* top = writable_T() + this->L_;
    *top = 1;  // ends the ripple of a borrow
    copy_sub_borrow(above, above, static_cast<upL_t>(top + 1 - above), sub_words(T, T, b.get_T(), b.get_L()));
    if (*top == 0) fail(UnsupportedValueException::negative(location));
    this->L_ = normalised_length(this->T_, this->L_);
    if (this->L_ == 0) fail(UnsupportedValueException::zero(location));
    this->hash_ = residue::sub(this->hash_, b.get_hash());
    return *this;
}

// ---- The owner
// ----------------------------------------------------------------------------------------------

template <class word>
ExactFloatO<word>::ExactFloatO(BasicHeap* heap, upL_t size)
    : heap_(heap), owned_(make_guarded_array<word>(heap, size)) {
    this->set_base(owned_.get(), size);
}

template <class word>
ExactFloatO<word>::ExactFloatO(ExactFloatO&& other) noexcept
    : ExactFloatR<word>(other), heap_(other.heap_), owned_(std::move(other.owned_)) {
    static_cast<ExactFloatR<word>&>(other) = ExactFloatR<word>();
}

template <class word>
ExactFloatO<word>& ExactFloatO<word>::operator=(ExactFloatO&& other) noexcept {
    if (this != &other) {
        static_cast<ExactFloatR<word>&>(*this) = other;
        static_cast<ExactFloatR<word>&>(other) = ExactFloatR<word>();
        heap_ = other.heap_;
        owned_ = std::move(other.owned_);
    }
    return *this;
}

template <class word>
upL_t ExactFloatO<word>::sum_size(const ExactFloat<word>& a, const ExactFloat<word>& b) const {
    return distance(std::min(a.get_exp(), b.get_exp()), std::max(a.get_mag(), b.get_mag())) + 2;
}

template <class word>
void ExactFloatO<word>::add(const ExactFloat<word>& a, const ExactFloat<word>& b) {
    ExactFloatO sum(heap_, sum_size(a, b));
    sum.set_add(a, b);
    *this = std::move(sum);
}

template <class word>
void ExactFloatO<word>::sub(const ExactFloat<word>& a, const ExactFloat<word>& b) {
    if (a.get_mag() < b.get_mag()) fail(UnsupportedValueException::negative("ExactFloatO::sub()"));
    ExactFloatO difference(heap_, sum_size(a, b));
    difference.set_sub(a, b);
    *this = std::move(difference);
}

template class ExactFloat<c32i>;
template class ExactFloat<c64i>;
template class ExactFloatR<c32i>;
template class ExactFloatR<c64i>;
template class ExactFloatO<c32i>;
template class ExactFloatO<c64i>;

}  // namespace znp
