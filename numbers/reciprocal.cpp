#include "numbers/reciprocal.hpp"

#include <algorithm>

#include "foundation/fail.hpp"
#include "multiply/dispatch.hpp"
#include "numbers/transform_helper.hpp"

namespace znp {

using namespace newton;

namespace {

// Words of the recursive result and of the correction.
constexpr upL_t half_words(upL_t h) {
    return h + 3;
}
constexpr upL_t correction_words(upL_t h) {
    return h + 3;
}

// One step needs both; the recursion, which runs before there is a correction, takes what lies behind the
// half result.
constexpr upL_t step_words(upL_t h) {
    return half_words(h) + correction_words(h);
}

constexpr upL_t transform_words(upL_t p) {
    return p + 8;
}

// T = 1 - T for a T whose top word lies below `te`, just below a run of all-ones up to the point.
void complement(FloatR& T, s64_t te, upL_t h, const char* zero_text, const char* text, const char* failed) {
    if (T.is_zero()) fail_top(zero_text, 0, failed);
    if (T.get_mag() != te) fail_magnitude(text, T.get_mag(), h, failed);
    T.negate_twos_complement();
}

}  // namespace

upL_t rcp_scratch_words(upL_t p) {
    if (p == 0) return 0;
    const upL_t h = half_precision(p);
    return half_words(h) + std::max(rcp_scratch_words(h), correction_words(h));
}

void zlb_rcp_E(const BasicParameters& bp, FloatR& y, const Float& x, upL_t p, Scratch scratch) {
    constexpr const char* failed = "zlb_rcp_E(): Computation Failed";
    if (x.is_zero()) fail(zn_exception(error_code::divide_by_zero, "zlb_rcp_E(): Divide-by-Zero"));
    x.check_normalization();
    if (p == 0) {
        s64_t e;
        const double d = x.to_double(e);
        y.set_double(1 / d, -e);
        return;
    }

    const upL_t h = half_precision(p);
    const s64_t limit = 2 - static_cast<s64_t>(h);
    require_scratch(scratch, step_words(h), "zlb_rcp_E(): Insufficient Allocated Space - PL");
    FloatR half = scratch.take(half_words(h));
    zlb_rcp_E(bp, half, x, h, scratch);
    const Float y0 = half.top_words(h);
    FloatR c = scratch.take(correction_words(h));

    FloatR& T = y;  // y's buffer is free until the end
    T.set_mul(bp, x.top_words(p), y0, p + 1);
    const cdi top = T.word_at(0);
    if (top == 1) {
        T.truncate_top(0);
        if (T.is_zero()) return y.set_gfp(y0, p);
        if (T.get_mag() > limit) {
            fail_magnitude("zlb_rcp_E(): Over-Estimate -> Convergence Failure", T.get_mag(), h, failed);
        }
        c.set_mul(bp, T, y0, h + 1);
        y.set_sub(y0, c, p + 1);
    } else if (top == 0) {
        complement(T, 0, h, "zlb_rcp_E(): strip_l1s() resulted in zero.",
                   "zlb_rcp_E(): Under-Estimate -> Convergence Failure", failed);
        if (T.get_mag() > limit) {
            fail_magnitude("zlb_rcp_E(): Under-Estimate -> Convergence Failure", T.get_mag(), h, failed);
        }
        c.set_mul(bp, T, y0, h + 1);
        y.set_add(y0, c, p + 1);
    } else {
        fail_top("zlb_rcp_E(): Convergence Failure", top, failed);
    }
    perturb(y, p);
}

upL_t rcp_work_bytes(upL_t p, u64_t threads) {
    return work_bytes_for<cdi>(std::max(transform_words(p), small_product), threads);
}

void rcp_step(const BasicParameters& bp, const transform& algorithm, FloatR& y, const Float& x,
              const Float& y0, upL_t p, Scratch scratch, StatusLine* status) {
    constexpr const char* failed = "zlp_rcp_B(): Computation Failed";
    constexpr const char* residue_text = "zlp_rcp_B(): Residue Check Failure";
    const upL_t h = half_precision(p);
    const s64_t te = 2 - static_cast<s64_t>(h);
    FloatR c = scratch.take(correction_words(h));

    show_step(status, " - 0M - ", h);
    const TransformHelper helper(bp, algorithm);
    const Float::Transform Y0(y0, helper.scratch, algorithm, helper.T2, h);
    FloatR& T = y;
    ProductCheck product(x.top_words(p), y0);
    {
        Float::Transform X(x, helper.scratch, algorithm, helper.T1, p);
        product.whole = T.set_checked_fmul(helper.scratch, X, Y0, te, p);
    }
    const cdi top = T.word_at(te - 1);
    const bool under = top >= ~cdi{0} - 1;
    const bool right = product.holds(algorithm, near_one_residue(product.wrap_position(algorithm), under));
    if (under) {
        complement(T, te, h, "zlp_rcp_B(): strip_l1s() resulted in zero.",
                   "zlp_rcp_B(): Under-Estimate -> Convergence Failure", failed);
    } else if (top != 0) {
        fail_top("zlp_rcp_B(): Convergence Failure", top, failed);
    }
    if (!T.is_zero() && T.get_mag() > te) {
        fail_magnitude(under ? "zlp_rcp_B(): Under-Estimate -> Convergence Failure"
                             : "zlp_rcp_B(): Over-Estimate -> Convergence Failure",
                       T.get_mag(), h, failed);
    }
    if (!right) fail_residue(residue_text, failed);
    if (T.is_zero()) return y.set_gfp(y0, p);

    show_step(status, under ? " - U1M - " : " - O1M - ", h);
    product = ProductCheck(T.top_words(h + 1), y0);
    Float::Transform E(T, helper.scratch, algorithm, helper.T1, h + 1);
    product.whole = c.set_checked_fmul(helper.scratch, E, Y0, E.mag + Y0.mag, h + 1);
    if (!product.holds(algorithm)) fail_residue(residue_text, failed);
    if (under) {
        y.set_add(y0, c, p + 1);
    } else {
        y.set_sub(y0, c, p + 1);
    }
    perturb(y, p);
}

void zlp_rcp_B(const BasicParameters& bp, FloatR& y, const Float& x, upL_t p, Scratch scratch,
               StatusLine* status) {
    if (p <= small_precision) return zlb_rcp_E(bp, y, x, p, scratch);
    const upL_t h = half_precision(p);
    require_scratch(scratch, step_words(h), "zlp_rcp_B(): Insufficient Allocated Space - PL");
    FloatR half = scratch.take(half_words(h));
    zlp_rcp_B(bp, half, x, h, scratch, status);
    TransformSlot slot;
    const transform& algorithm = make_transform<cdi>(bp, slot, transform_words(p));
    rcp_step(bp, algorithm, y, x, half.top_words(h), p, scratch, status);
}

}  // namespace znp
