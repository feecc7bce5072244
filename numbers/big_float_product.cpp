// BigFloat: products, whole, windowed, and from transformed operands.
#include <algorithm>

#include "foundation/fail.hpp"
#include "foundation/fatal.hpp"
#include "foundation/strings.hpp"
#include "multiply/bkt/basecase.hpp"
#include "multiply/dispatch.hpp"
#include "multiply/hash_by_threads.hpp"
#include "numbers/big_float.hpp"
#include "shell/console.hpp"

namespace znp {

namespace {

// A product of so many words is made on the stack and not compared before it is used.
constexpr upL_t short_words = basecase_clen;

void require_product(bool holds) {
    if (holds) return;
    constexpr const char* failed = "Checksum Mismatch. Multiplication Failed.";
    fail(ArithmeticFailure(error_code::numerical_result, failed));
}

WordSpan<cdi> words_of(const BigFloat& x) {
    return {x.get_T(), x.get_L()};
}

}  // namespace

BigFloat::Transform::Transform(const BigFloat& source, const transform& algorithm_, Image* image_,
                               TransformScratch* scratch, upL_t p)
    : algorithm(&algorithm_), image(image_) {
    const BigFloat top = source.top_words(p);
    exp = top.exp_;
    L = top.L_;
    sign = top.sign_;
    mag = top.get_mag();
    residue = top.residue_;
    if (L * WordTraits<cdi>::bits > algorithm->max_bits) {
        assert_failure(fatal_category::invalid_parameters, L"BigFloat::Transform::Transform()", L"");
    }
    algorithm->forward(image, {top.T_, L}, scratch);
}

// The top `kept` words of a product below short_words, the others' residue taken off.
void BigFloatR::short_product(const BigFloat& a, const BigFloat& b, upL_t kept) {
    cdi T[short_words];
    const upL_t n = a.get_L() + b.get_L();
    if (a.get_T() == b.get_T() && a.get_L() == b.get_L()) {
        bkt::sqrB(T, a.get_T(), a.get_L());
    } else {
        bkt::mulB(T, a.get_T(), a.get_L(), b.get_T(), b.get_L());
    }
    std::copy_n(T + (n - kept), kept, base_);
    const u64_t dropped = kept == n ? 0 : guard::hash_words(T, n - kept);
    residue_ = guard::sub(guard::mul(a.get_residue(), b.get_residue()),
                          guard::shift_words(dropped, a.get_exp() + b.get_exp()));
}

// The frame of the products: the top p + 2 words by checked(R), or on the stack.
template <class Checked>
void BigFloatR::product(const BigFloat& a, const BigFloat& b, upL_t p, const char* location,
                        Checked checked) {
    if (a.is_zero() || b.is_zero()) return set_zero();
    const upL_t n = a.get_L() + b.get_L();
    const upL_t kept = std::min(n, p + extra_precision);
    const s64_t exp = a.get_exp() + b.get_exp();
    const bool positive = a.raw_sign() == b.raw_sign();
    renew(kept, location);
    if (n < short_words) {
        short_product(a, b, kept);
    } else {
        const CheckedResult result = checked(Window{base_, n - kept, n});
        require_product(guard::shift_words(result.whole, exp) ==
                        guard::mul(a.get_residue(), b.get_residue()));
        residue_ = guard::shift_words(result.window, exp + s64(n - kept));
    }
    reset(product_length(base_, kept), s64(n - kept) + exp, positive, residue_);
}

void BigFloatR::set_sqr(const BasicParameters& params, const BigFloat& a, upL_t p) {
    product(a, a, p, "BigFloat::set_sqr()",
            [&](Window<cdi> R) { return checked_mul(params, R, words_of(a), words_of(a)); });
}

void BigFloatR::set_mul(const BasicParameters& params, const BigFloat& a, const BigFloat& b, upL_t p) {
    product(a, b, p, "BigFloat::set_mul()",
            [&](Window<cdi> R) { return checked_mul(params, R, words_of(a), words_of(b)); });
}

void BigFloatR::set_mulp(const BasicParameters& params, const BigFloat& a, const BigFloat& b, upL_t p) {
    product(a, b, p, "BigFloat::set_mulp()",
            [&](Window<cdi> R) { return checked_mulp(params, R, words_of(a), words_of(b)); });
}

// ---- Products of transformed operands

// What is known of a product before it is made, and its texts.
struct BigFloatR::Product {
    upL_t L;
    s64_t exp;
    bool positive;
    u64_t residue;
    bool always_checked;  // whether te must lie in a product that does not wrap, too
    const char *location, *truncated;

    explicit Product(const Transform& A)
        : L(2 * A.L),
          exp(2 * A.exp),
          positive(true),
          residue(guard::mul(A.residue, A.residue)),
          always_checked(true),
          location("BigFloat::set_inverse_fsqr()"),
          truncated("BigFloat::set_inverse_fsqr(): Truncated Range\n\n") {}
    Product(const Transform& A, const Transform& B)
        : L(A.L + B.L),
          exp(A.exp + B.exp),
          positive(A.sign == B.sign),
          residue(guard::mul(A.residue, B.residue)),
          always_checked(false),
          location("BigFloat::set_inverse_fmul()"),
          truncated("BigFloat::set_inverse_fmul(): Truncated Range\n\n") {
        require_matching(A, B, "BigFloat::set_inverse_fmul(): Mismatching Transform Parameters");
    }

    void require_whole(const transform& algorithm, const std::optional<u64_t>& whole) const {
        const bool wraps = L * WordTraits<cdi>::bits > algorithm.max_bits;
        require_product(!whole || wraps || guard::shift_words(*whole, exp) == residue);
    }
};

// The words of a cyclic product of clen words that are true and wanted: inverse(R) makes them, where there
// are any. The top words of a longer product wrap onto the lowest ones.
template <class Inverse>
std::optional<u64_t> BigFloatR::take_product(Transform& A, const Product& whole, s64_t te, upL_t p,
                                             Inverse inverse) {
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
    std::optional<u64_t> checked;
    if (bottom < top) {
        const upL_t L = static_cast<upL_t>(top - bottom);
        const upL_t s = static_cast<upL_t>(bottom - whole.exp);
        renew(L, whole.location);
        const CheckedResult result = inverse(Window{base_, s, s + L});
        checked = result.whole;
        set_words(L, bottom, whole.positive, guard::shift_words(result.window, bottom));
    } else {
        set_zero();
    }
    A.image = nullptr;
    return checked;
}

std::optional<u64_t> BigFloatR::set_checked_fsqr(TransformScratch* scratch, Transform& A, s64_t te, upL_t p) {
    return take_product(A, Product(A), te, p,
                        [&](Window<cdi> R) { return A.algorithm->checked_fsqr(R, A.image, scratch); });
}

std::optional<u64_t> BigFloatR::set_checked_fmul(TransformScratch* scratch, Transform& A, const Transform& B,
                                                 s64_t te, upL_t p) {
    return take_product(A, Product(A, B), te, p, [&](Window<cdi> R) {
        return A.algorithm->checked_fmul(R, A.image, B.image, scratch);
    });
}

void BigFloatR::set_inverse_fsqr(TransformScratch* scratch, Transform& A, s64_t te, upL_t p) {
    const Product product(A);
    product.require_whole(*A.algorithm, set_checked_fsqr(scratch, A, te, p));
}

void BigFloatR::set_inverse_fmul(TransformScratch* scratch, Transform& A, const Transform& B, s64_t te,
                                 upL_t p) {
    const Product product(A, B);
    product.require_whole(*A.algorithm, set_checked_fmul(scratch, A, B, te, p));
}

}  // namespace znp
