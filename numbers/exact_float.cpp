#include "numbers/exact_float.hpp"

#include <algorithm>
#include <utility>

#include "foundation/fail.hpp"
#include "foundation/fatal.hpp"
#include "multiply/bkt/basecase.hpp"
#include "multiply/dispatch.hpp"
#include "multiply/hash_by_threads.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "multiply/kernels/word_multiply.hpp"

namespace znp {

namespace {

// A distance of positions that is known not to be negative.
upL_t distance(s64_t from, s64_t to) {
    return static_cast<upL_t>(to - from);
}

// Two operands laid over the words of their sum or difference, a's magnitude not below b's. Fills the
// positions that only the lower-reaching one has, b's negated in a difference; what is left is b over the low
// words of a.
struct Overlay {
    cdi* T;
    const cdi* A;
    upL_t La;
    const cdi* B;
    upL_t Lb;
    bool borrow = false;

    Overlay(cdi* T_, const ExactFloat& a, const ExactFloat& b, bool difference)
        : T(T_), A(a.get_T()), La(a.get_L()), B(b.get_T()), Lb(b.get_L()) {
        if (b.get_exp() < a.get_exp()) {
            const upL_t below = distance(b.get_exp(), a.get_exp());
            const upL_t taken = std::min(below, Lb);
            if (difference) {
                borrow = negate_words(T, B, taken);
            } else {
                std::copy_n(B, taken, T);
            }
            std::fill_n(T + taken, below - taken, borrow ? ~cdi{0} : cdi{0});
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

}  // namespace

// ---- The view

u64_t ExactFloat::words_hash(u64_t threads) const {
    const u64_t h = residue::hash_words_by_threads(T_, L_, threads);
    return exp_ == 0 ? h : residue::mul(h, residue::word_power64(exp_));
}

u64_t ExactFloat::words_guard(u64_t threads) const {
    return guard::shift_words(guard::hash_words_by_threads(T_, L_, threads), exp_);
}

u64_t ExactFloat::hash_error(u64_t threads) const {
    const u64_t error = residue::sub(hash_, words_hash(threads));
    return error != 0 ? error : guard::sub(guard_, words_guard(threads));
}

ExactFloat::Transform::Transform(const ExactFloat& source, const transform& algorithm_, Image* image_,
                                 TransformScratch* scratch)
    : algorithm(&algorithm_),
      image(image_),
      exp(source.exp_),
      L(source.L_),
      hash(source.hash_),
      guard(source.guard_) {
    algorithm->forward(image, {source.T_, L}, scratch);
}

// ---- Storage

void ExactFloatR::set_base(cdi* buffer, upL_t size) {
    base_ = buffer;
    size_ = size;
    T_ = buffer;
}

void ExactFloatR::set_base(cdi* buffer, upL_t offset, upL_t size) {
    set_base(buffer + offset, size - offset);
}

void ExactFloatR::set_rest_of(upL_t offset, const ExactFloatR& other) {
    set_base(other.writable_T() + offset, other.room() - offset);
}

// ---- Values

void ExactFloatR::set_L(upL_t L, s64_t exp) {
    L_ = L;
    exp_ = exp;
    rehash();
}

void ExactFloatR::set_LN(upL_t L, s64_t exp) {
    set_L(normalised_length(T_, L), exp);
}

void ExactFloatR::set_LN(upL_t L, s64_t exp, u64_t hash) {
    set_LN(L, exp, hash, 0);
    guard_ = words_guard(1);
}

void ExactFloatR::set_LN(upL_t L, s64_t exp, u64_t hash, u64_t guard) {
    L_ = normalised_length(T_, L);
    exp_ = exp;
    hash_ = hash;
    guard_ = guard;
}

void ExactFloatR::set_sum(upL_t L, const ExactFloat& b) {
    L_ = normalised_length(T_, L);
    hash_ = residue::add(hash_, b.get_hash());
    guard_ = guard::add(guard_, b.get_guard());
}

void ExactFloatR::rehash() {
    hash_ = words_hash(1);
    guard_ = words_guard(1);
}

void ExactFloatR::set_uW(cdi x, s64_t exp) {
    renew(1, "ExactFloat::set_uW()");
    base_[0] = x;
    set_L(1, exp);
}

void ExactFloatR::set_u64(u64_t x) {
    renew(1, "ExactFloat::set_u64()");
    base_[0] = x;
    set_LN(1, 0);
}

void ExactFloatR::set_bui(const BasicInt& source) {
    copy_words(source.get_T(), source.get_L(), "ExactFloat::set_bui()");
    set_LN(source.get_L(), 0, source.get_hash());
}

void ExactFloatR::set_efp(const ExactFloat& source) {
    copy_words(source.get_T(), source.get_L(), "ExactFloat::set_efp");
    L_ = source.get_L();
    exp_ = source.get_exp();
    hash_ = source.get_hash();
    guard_ = source.get_guard();
}

void ExactFloatR::mul_pow_word(s64_t n, u64_t factor) {
    exp_ += n;
    hash_ = residue::mul(hash_, factor);
    guard_ = guard::shift_words(guard_, n);
}

void ExactFloatR::mp2(s64_t n) {
    const s64_t words = n >> 6;
    const unsigned shift = static_cast<unsigned>(n) % WordTraits<cdi>::bits;
    if (shift != 0) {
        require(L_ + 1, "ExactFloat::mp2()");
        cdi* T = writable_T();
        T[L_] = MulW(T, L_, cdi{1} << shift);
        if (T[L_] != 0) L_++;
        hash_ = residue::mul(hash_, residue::pow(2, shift));
        guard_ = guard::mul(guard_, guard::reduce(cdi{1} << shift));
    }
    if (words != 0) mul_pow_word(words, residue::word_power64(words));
}

// ---- Products

void ExactFloatR::set_mul(const BasicParameters& params, const ExactFloat& a, const ExactFloat& b) {
    const upL_t n = a.get_L() + b.get_L();
    renew(n, "ExactFloat::set_mul()");
    if (n < basecase_clen) {
        bkt::mulB(base_, a.get_T(), a.get_L(), b.get_T(), b.get_L());
    } else {
        mul(params, base_, {a.get_T(), a.get_L()}, {b.get_T(), b.get_L()});
    }
    L_ = product_length(base_, n);
    exp_ = a.get_exp() + b.get_exp();
    hash_ = residue::mul(a.get_hash(), b.get_hash());
    guard_ = guard::mul(a.get_guard(), b.get_guard());
}

template <class Inverse>
void ExactFloatR::take_product(Transform& A, const Transform& B, upL_t zeros, const InverseTexts& texts,
                               Inverse inverse) {
    const upL_t n = A.L + B.L;
    renew(zeros + n, texts.location);
    if (n * WordTraits<cdi>::bits > A.algorithm->max_bits) transform_misuse(texts.truncated);
    std::fill_n(base_, zeros, cdi{0});
    inverse(Window{base_ + zeros, 0, n});
    A.image = nullptr;
    L_ = zeros + product_length(base_ + zeros, n);
    exp_ = A.exp + B.exp - s64(zeros);
    hash_ = residue::mul(A.hash, B.hash);
    guard_ = guard::mul(A.guard, B.guard);
}

void ExactFloatR::inverse_fmul(TransformScratch* scratch, Transform& A, const Transform& B, s64_t e,
                               const InverseTexts& texts) {
    require_matching(A, B, texts.mismatch);
    const s64_t exp = A.exp + B.exp;
    const upL_t zeros = exp > e ? distance(e, exp) : 0;
    take_product(A, B, zeros, texts,
                 [&](Window<cdi> R) { A.algorithm->inverse_fmul(R, A.image, B.image, scratch); });
}

void ExactFloatR::set_inverse_fmul(TransformScratch* scratch, Transform& A, const Transform& B) {
    inverse_fmul(
        scratch, A, B, A.exp + B.exp,
        {"ExactFloat::set_inverse_fmul()", "ExactFloat::set_inverse_fmul(): Mismatching Transform Parameters",
         "ExactFloat::set_inverse_fmul(): Truncated Range\n\n"});
}

void ExactFloatR::set_inverse_fmul(TransformScratch* scratch, Transform& A, const Transform& B, s64_t e) {
    inverse_fmul(scratch, A, B, e,
                 {"ExactFloat::set_inverse_fmul(exp)",
                  "ExactFloatR::set_inverse_fmul(exp): Mismatching Transform Parameters",
                  "ExactFloatR::set_inverse_fmul(exp): Truncated Range\n\n"});
}

void ExactFloatR::set_inverse_fsqr(TransformScratch* scratch, Transform& A) {
    take_product(
        A, A, 0,
        {"ExactFloat::set_inverse_fsqr()", nullptr, "ExactFloat::set_inverse_fsqr(): Truncated Range\n\n"},
        [&](Window<cdi> R) { A.algorithm->inverse_fsqr(R, A.image, scratch); });
}

// ---- Sums and differences

void ExactFloatR::set_add(const ExactFloat& x, const ExactFloat& y) {
    const bool swapped = x.get_mag() < y.get_mag();
    const ExactFloat& a = swapped ? y : x;
    const ExactFloat& b = swapped ? x : y;
    const s64_t exp = std::min(a.get_exp(), b.get_exp());
    const upL_t L = distance(exp, a.get_mag());
    renew(L + 1, "ExactFloat::set_add()");

    const Overlay over(base_, a, b, false);
    const bool carry = copy_add_carry(over.T + over.Lb, over.A + over.Lb, over.La - over.Lb,
                                      add_words(over.T, over.A, over.B, over.Lb));
    base_[L] = carry ? 1 : 0;

    L_ = L + (carry ? 1 : 0);
    exp_ = exp;
    hash_ = residue::add(a.get_hash(), b.get_hash());
    guard_ = guard::add(a.get_guard(), b.get_guard());
}

void ExactFloatR::set_sub(const ExactFloat& a, const ExactFloat& b) {
    constexpr const char* location = "ExactFloat::set_sub()";
    if (a.get_mag() < b.get_mag()) fail(UnsupportedValueException::negative(location));
    const s64_t exp = std::min(a.get_exp(), b.get_exp());
    const upL_t L = distance(exp, a.get_mag());
    renew(L + 1, b.get_exp() < a.get_exp() ? location : "ExactFloat::set_add()");

    const Overlay over(base_, a, b, true);
    const bool borrow = copy_sub_borrow(over.T + over.Lb, over.A + over.Lb, over.La - over.Lb,
                                        sub_words(over.T, over.A, over.B, over.Lb, over.borrow));
    if (borrow) fail(UnsupportedValueException::negative(location));

    L_ = normalised_length(base_, L);
    if (L_ == 0) fail(UnsupportedValueException::zero(location));
    exp_ = exp;
    hash_ = residue::sub(a.get_hash(), b.get_hash());
    guard_ = guard::sub(a.get_guard(), b.get_guard());
}

ExactFloatR& ExactFloatR::operator+=(const ExactFloat& b) {
    if (exp_ > b.get_exp() || get_mag() < b.get_mag() || L_ + 1 > room()) {
        assert_failure(fatal_category::invalid_parameters, L"ExactFloatR::operator+=()", L"");
    }
    cdi* T = writable_T() + distance(exp_, b.get_exp());
    const bool carry = add_words(T, T, b.get_T(), b.get_L());
    cdi* above = T + b.get_L();
    cdi* top = writable_T() + L_;
    *top = copy_add_carry(above, above, static_cast<upL_t>(top - above), carry) ? 1 : 0;
    if (*top != 0) L_++;
    hash_ = residue::add(hash_, b.get_hash());
    guard_ = guard::add(guard_, b.get_guard());
    return *this;
}

ExactFloatR& ExactFloatR::operator-=(const ExactFloat& b) {
    constexpr const char* location = "ExactFloatR::operator-=()";
    if (get_mag() < b.get_mag()) fail(UnsupportedValueException::negative(location));
    if (exp_ > b.get_exp() || L_ + 1 > room()) {
        assert_failure(fatal_category::invalid_parameters, L"ExactFloatR::operator-=()", L"");
    }
    cdi* T = writable_T() + distance(exp_, b.get_exp());
    cdi* above = T + b.get_L();
    cdi* top = writable_T() + L_;
    *top = 1;  // ends the ripple of a borrow
    copy_sub_borrow(above, above, static_cast<upL_t>(top + 1 - above), sub_words(T, T, b.get_T(), b.get_L()));
    if (*top == 0) fail(UnsupportedValueException::negative(location));
    L_ = normalised_length(T_, L_);
    if (L_ == 0) fail(UnsupportedValueException::zero(location));
    hash_ = residue::sub(hash_, b.get_hash());
    guard_ = guard::sub(guard_, b.get_guard());
    return *this;
}

// ---- The owner

upL_t ExactFloatO::sum_size(const ExactFloat& a, const ExactFloat& b) {
    return distance(std::min(a.get_exp(), b.get_exp()), std::max(a.get_mag(), b.get_mag())) + 2;
}

void ExactFloatO::add(const ExactFloat& a, const ExactFloat& b) {
    ExactFloatO sum(heap_, sum_size(a, b));
    sum.set_add(a, b);
    *this = std::move(sum);
}

void ExactFloatO::sub(const ExactFloat& a, const ExactFloat& b) {
    if (a.get_mag() < b.get_mag()) fail(UnsupportedValueException::negative("ExactFloatO::sub()"));
    ExactFloatO difference(heap_, sum_size(a, b));
    difference.set_sub(a, b);
    *this = std::move(difference);
}

}  // namespace znp
