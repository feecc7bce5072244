#include "numbers/division.hpp"

#include <algorithm>

#include "foundation/fail.hpp"
#include "foundation/strings.hpp"
#include "multiply/dispatch.hpp"
#include "multiply/kernels/residue.hpp"
#include "numbers/reciprocal.hpp"
#include "numbers/transform_helper.hpp"
#include "shell/console.hpp"

namespace znp {

using namespace newton;

namespace {

constexpr upL_t reciprocal_words(upL_t p) {
    return p + 3;
}
constexpr upL_t quotient_words(upL_t h) {
    return h + 2;
}
constexpr upL_t remainder_words(upL_t h) {
    return h + 6;
}
constexpr upL_t correction_words(upL_t h) {
    return h + 3;
}
constexpr upL_t step_words(upL_t h) {
    return quotient_words(h) + remainder_words(h) + correction_words(h);
}
constexpr upL_t transform_words(upL_t p) {
    return p + 9;
}

constexpr const char* failed = "zlp_div_t9_B(): Computation Failed";
constexpr const char* residue_text = "zlp_div_t9_B(): Residue Check Failure";

// Residue of the words of A from a position on.
u64_t residue_from(const Float& A, s64_t position) {
    const s64_t low = std::clamp(position, A.get_exp(), A.get_mag());
    const u64_t words =
        residue::hash_words(A.get_T() + (low - A.get_exp()), static_cast<upL_t>(A.get_mag() - low));
    return residue::mul(words, residue::word_power64(low - position));
}

// d = A - y0 B from the words below te of A, whose sign is given, and of the product. The two agree above but
// for a borrow from below.
void remainder(FloatR& d, const Float& A, const Float& T, bool positive, s64_t te, upL_t h) {
    const cdi topA = T.word_at(te - 1);
    const cdi topB = A.word_at(te - 1);
    if (topB == 0 && topA == ~cdi{0}) {
        d.set_rsub(A, T, te, h + 4, positive);
    } else if (topB == ~cdi{0} && topA == 0) {
        d.set_rsub(T, A, te, h + 4, !positive);
    } else if (topA - topB + 1 <= 2) {
        d.set_sub(A, T, h + 4);
    } else {
        Console::print_error("zlm_div_t9_B(): Convergence Failure");
        Console::print_labelled_line("topA", format_printf(32, "%016lx", topA));
        Console::print_labelled_line("topB", format_printf(32, "%016lx", topB));
        fail(zn_exception(error_code::numerical_result, failed));
    }
}

}  // namespace

upL_t div_scratch_words(upL_t p) {
    if (p <= division_t9) return reciprocal_words(p) + rcp_scratch_words(p);
    const upL_t h = half_precision(p);
    return reciprocal_words(h) + std::max(rcp_scratch_words(h), step_words(h));
}

// The quotient's estimate keeps h + 2 words of its product, which is narrowed to as many words of each
// operand: at most 2 h + 4 words, less than the transform's. The products of a short division stay below the
// bound of the longest short one.
upL_t div_work_bytes(upL_t p, u64_t threads) {
    constexpr upL_t short_product = 2 * division_t9 + 5;
    return work_bytes_for<cdi>(std::max(transform_words(p), short_product), threads);
}

void div_step(const BasicParameters& bp, const transform& algorithm, FloatR& Q, const Float& A,
              const Float& B, const Float& r, upL_t p, Scratch scratch, StatusLine* status) {
    const upL_t h = half_precision(p);
    FloatR y0 = scratch.take(quotient_words(h));
    FloatR d = scratch.take(remainder_words(h));
    FloatR c = scratch.take(correction_words(h));

    show_step(status, " - 0M - ", h);
    y0.set_mul(bp, A.top_words(p), r, h);

    show_step(status, " - 1M - ", h);
    const s64_t te = std::min(A.get_mag() - static_cast<s64_t>(h) + 3, A.get_mag());
    const TransformHelper helper(bp, algorithm);
    FloatR& T = Q;
    ProductCheck product(y0, B.top_words(p));
    {
        Float::Transform Y0(y0, helper.scratch, algorithm, helper.T2, h);
        const Float::Transform divisor(B, helper.scratch, algorithm, helper.T1, p);
        product.whole = T.set_checked_fmul(helper.scratch, Y0, divisor, te, p);
    }
    Float low_A = A;
    low_A.truncate_top(te);
    remainder(d, low_A, T, A.raw_sign(), te, h);
    // A and the product differ below te only, but for a carry into what lies above.
    const u64_t known = residue_from(A, product.wrap_position(algorithm));
    if (!product.holds(algorithm, known, 1)) fail_residue(residue_text, failed);

    show_step(status, " - 2M - ", h);
    if (!d.is_zero()) {
        product = ProductCheck(d, r);
        Float::Transform D(d, helper.scratch, algorithm, helper.T2, h + 4);
        const Float::Transform R(r, helper.scratch, algorithm, helper.T1, h);
        product.whole = c.set_checked_fmul(helper.scratch, D, R, D.mag + R.mag, h + 1);
        if (!product.holds(algorithm)) fail_residue(residue_text, failed);
    }
    Q.set_add(y0, c, p + 1);
}

void zlp_div_t9_B(const BasicParameters& bp, FloatR& Q, const Float& A, const Float& B, upL_t p,
                  Scratch scratch, StatusLine* status) {
    if (A.is_zero()) return Q.set_zero();
    require_scratch(scratch, div_scratch_words(p), "zlp_div_t9_B(): Insufficient Allocated Space - PL");
    if (p <= division_t9) {
        FloatR r = scratch.take(reciprocal_words(p));
        zlb_rcp_E(bp, r, B, p, scratch);
        return Q.set_mul(bp, A.top_words(p), r, p + 1);
    }
    const upL_t h = half_precision(p);
    FloatR r = scratch.take(reciprocal_words(h));
    zlp_rcp_B(bp, r, B, h, scratch, status);
    TransformSlot slot;
    const transform& algorithm = make_transform<cdi>(bp, slot, transform_words(p));
    div_step(bp, algorithm, Q, A, B, r.top_words(h), p, scratch, status);
}

}  // namespace znp
