// BigFloat: products, whole, windowed, and from transformed operands.
#include <algorithm>

#include "foundation/fatal.hpp"
#include "foundation/strings.hpp"
#include "multiply/bkt/basecase.hpp"
#include "multiply/dispatch.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "numbers/big_float.hpp"
#include "shell/console.hpp"

namespace znp {

BigFloat::Transform::Transform(const BigFloat& source, const transform& algorithm_, Image* image_,
                               TransformScratch* scratch, upL_t p)
    : algorithm(&algorithm_), image(image_) {
    const BigFloat top = source.top_words(p);
    exp = top.exp_;
    L = top.L_;
    sign = top.sign_;
    mag = top.get_mag();
    if (L * WordTraits<cdi>::bits > algorithm->max_bits) {
        assert_failure(fatal_category::invalid_parameters, L"BigFloat::Transform::Transform()", L"");
    }
    algorithm->forward(image, {top.T_, L}, scratch);
}

// The frame of the products: the top p + 2 of n words, by whole() or by part(R).
template <class Whole, class Part>
void BigFloatR::product(upL_t n, s64_t exp, bool positive, upL_t p, const char* location, Whole whole,
                        Part part) {
    const upL_t kept = std::min(n, p + extra_precision);
    renew(kept, location);
    if (kept == n && n < basecase_clen) {
        whole();
    } else {
        part(Window{base_, n - kept, n});
    }
    reset(product_length(base_, kept), s64(n - kept) + exp, positive);
}

void BigFloatR::set_sqr(const BasicParameters& params, const BigFloat& a, upL_t p) {
    if (a.is_zero()) return set_zero();
    const cdi* A = a.get_T();
    const upL_t L = a.get_L();
    product(
        2 * L, 2 * a.get_exp(), true, p, "BigFloat::set_sqr()", [&] { bkt::sqrB(base_, A, L); },
        [&](Window<cdi> R) {
            sqr_window(params, R, {A, L});
        });
}

void BigFloatR::set_mul(const BasicParameters& params, const BigFloat& a, const BigFloat& b, upL_t p) {
    if (a.is_zero() || b.is_zero()) return set_zero();
    const cdi *A = a.get_T(), *B = b.get_T();
    const upL_t La = a.get_L(), Lb = b.get_L();
    product(
        La + Lb, a.get_exp() + b.get_exp(), a.raw_sign() == b.raw_sign(), p, "BigFloat::set_mul()",
        [&] { bkt::mulB(base_, A, La, B, Lb); },
        [&](Window<cdi> R) {
            mul_window(params, R, {A, La}, {B, Lb});
        });
}

// ---- Products of transformed operands

// What is known of a product before it is made, and its texts.
struct BigFloatR::Product {
    upL_t L;
    s64_t exp;
    bool positive;
    bool always_checked;  // whether te must lie in a product that does not wrap, too
    const char *location, *truncated;

    explicit Product(const Transform& A)
        : L(2 * A.L),
          exp(2 * A.exp),
          positive(true),
          always_checked(true),
          location("BigFloat::set_inverse_fsqr()"),
          truncated("BigFloat::set_inverse_fsqr(): Truncated Range\n\n") {}
    Product(const Transform& A, const Transform& B)
        : L(A.L + B.L),
          exp(A.exp + B.exp),
          positive(A.sign == B.sign),
          always_checked(false),
          location("BigFloat::set_inverse_fmul()"),
          truncated("BigFloat::set_inverse_fmul(): Truncated Range\n\n") {
        require_matching(A, B, "BigFloat::set_inverse_fmul(): Mismatching Transform Parameters");
    }
};

// The words of a cyclic product of clen words that are true and wanted: inverse(R) makes them, where there
// are any. The top words of a longer product wrap onto the lowest ones.
template <class Inverse>
void BigFloatR::take_product(Transform& A, const Product& whole, s64_t te, upL_t p, Inverse inverse) {
    const upL_t clen = A.algorithm->max_bits / WordTraits<cdi>::bits;
    const upL_t wrapped = whole.L >= clen ? whole.L - clen : 0;
    const s64_t end = whole.exp + s64(clen);
    if ((whole.always_checked || wrapped > 0) && te > end) {
        Console::print_labelled_line("ie = ", std::to_string(end));
        Console::print_labelled_line("te = ", std::to_string(te));
        transform_misuse(whole.truncated);
    }
    const s64_t lowest = whole.exp + s64(wrapped);
    const s64_t top = std::min({te, end, whole.exp + s64(whole.L)});
    const s64_t bottom = std::max(lowest, te - s64(extra_precision + p));
    if (bottom < top) {
        const upL_t L = static_cast<upL_t>(top - bottom);
        const upL_t s = static_cast<upL_t>(bottom - whole.exp);
        renew(L, whole.location);
        inverse(Window{base_, s, s + L});
        set_words(L, bottom, whole.positive);
    } else {
        set_zero();
    }
    A.image = nullptr;
}

void BigFloatR::set_inverse_fsqr(TransformScratch* scratch, Transform& A, s64_t te, upL_t p) {
    take_product(A, Product(A), te, p,
                 [&](Window<cdi> R) { A.algorithm->inverse_fsqr(R, A.image, scratch); });
}

void BigFloatR::set_inverse_fmul(TransformScratch* scratch, Transform& A, const Transform& B, s64_t te,
                                 upL_t p) {
    take_product(A, Product(A, B), te, p,
                 [&](Window<cdi> R) { A.algorithm->inverse_fmul(R, A.image, B.image, scratch); });
}

std::optional<u64_t> BigFloatR::set_checked_fsqr(TransformScratch* scratch, Transform& A, s64_t te, upL_t p) {
    std::optional<u64_t> whole;
    take_product(A, Product(A), te, p,
                 [&](Window<cdi> R) { whole = A.algorithm->checked_fsqr(R, A.image, scratch); });
    return whole;
}

std::optional<u64_t> BigFloatR::set_checked_fmul(TransformScratch* scratch, Transform& A, const Transform& B,
                                                 s64_t te, upL_t p) {
    std::optional<u64_t> whole;
    take_product(A, Product(A, B), te, p,
                 [&](Window<cdi> R) { whole = A.algorithm->checked_fmul(R, A.image, B.image, scratch); });
    return whole;
}

}  // namespace znp
