#include "numbers/division.hpp"

#include <algorithm>

#include "multiply/dispatch.hpp"
#include "multiply/kernels/guard_residue.hpp"
#include "numbers/reciprocal.hpp"

namespace znp {

using namespace newton;

namespace {

constexpr const char* failed = "zlp_div_t9_B(): Computation Failed";
constexpr Routine whole{"zlm_div_t9_B", failed, nullptr};
constexpr Routine step{"zlp_div_t9_B", failed, "zlp_div_t9_B(): Insufficient Allocated Space - PL"};

constexpr upL_t quotient_words(upL_t h) {
    return h + 2;
}
constexpr upL_t remainder_words(upL_t h) {
    return h + 6;
}
constexpr upL_t step_words(upL_t h) {
    return quotient_words(h) + remainder_words(h) + correction_words(h);
}
constexpr upL_t transform_words(upL_t p) {
    return p + 9;
}

// Guard residue of the words of A from a position on, as a number.
u64_t residue_from(const BigFloat& A, s64_t position, u64_t threads) {
    return guard::shift_words(guard::sub(A.get_residue(), A.residue_below(position, threads)), -position);
}

// d = A - y0 B from the words below te of A, whose sign is given, and of the product. The two agree above but
// for a borrow from below.
void remainder(BigFloatR& d, const BigFloat& A, const BigFloat& T, bool positive, s64_t te, upL_t h) {
    const cdi topA = T.word_at(te - 1);
    const cdi topB = A.word_at(te - 1);
    if (topB == 0 && topA == ~cdi{0}) {
        d.set_rsub(A, T, te, h + 4, positive);
    } else if (topB == ~cdi{0} && topA == 0) {
        d.set_rsub(T, A, te, h + 4, !positive);
    } else if (topA - topB + 1 <= 2) {
        d.set_sub(A, T, h + 4);
    } else {
        whole.fail("Convergence Failure", {{"topA", topA}, {"topB", topB}});
    }
}

}  // namespace

upL_t div_scratch_words(upL_t p) {
    if (p <= division_t9) return rcp_words(p) + rcp_scratch_words(p);
    const upL_t h = half_precision(p);
    return rcp_words(h) + std::max(rcp_scratch_words(h), step_words(h));
}

// The quotient's estimate is a product of h + 2 words of each operand: 2 h + 4 words, less than the
// transform's. The products of a short division stay below the
// bound of the longest short one.
upL_t div_work_bytes(upL_t p, u64_t threads) {
    constexpr upL_t short_product = 2 * division_t9 + 5;
    return work_bytes_for<cdi>(std::max(transform_words(p), short_product), threads);
}

void zlp_div_t9_B(const BasicParameters& bp, const transform& algorithm, BigFloatR& Q, const BigFloat& A,
                  const BigFloat& B, const BigFloat& r, upL_t p, Scratch scratch, StatusLine* status) {
    const upL_t h = half_precision(p);
    BigFloatR y0 = scratch.take(quotient_words(h));
    BigFloatR d = scratch.take(remainder_words(h));
    BigFloatR c = scratch.take(correction_words(h));

    show_step(status, " - 0M - ", h);
    y0.set_mul(bp, A.top_words(h, bp.tds), r, h);

    show_step(status, " - 1M - ", h);
    const s64_t te = std::min(A.get_mag() - static_cast<s64_t>(h) + 3, A.get_mag());
    const TransformHelper helper(bp, algorithm);
    Operand Y0(helper, helper.T2, y0, h);
    const Operand divisor(helper, helper.T1, B, p);
    BigFloatR& T = Q;
    const ProductCheck product = checked_mul(T, helper, Y0, divisor, te, p);
    BigFloat low_A = A;
    low_A.truncate_top(te);
    remainder(d, low_A, T, A.raw_sign(), te, h);
    // A and the product differ below te only, but for a carry into what lies above.
    const u64_t above = residue_from(A, product.wrap_position(algorithm), bp.tds);
    step.require_residue(product.holds(algorithm, above, 1));

    show_step(status, " - 2M - ", h);
    if (!d.is_zero()) set_correction(step, c, helper, d, h + 4, Operand(helper, helper.T2, r, h), h);
    Q.set_add(y0, c, p + 1);
}

void zlm_div_t9_B(const BasicParameters& bp, BigFloatR& Q, const BigFloat& A, const BigFloat& B, upL_t p,
                  Scratch scratch, StatusLine* status) {
    if (A.is_zero()) return Q.set_zero();
    require_scratch(scratch, div_scratch_words(p), step.no_space);
    if (p <= division_t9) {
        BigFloatR r = scratch.take(rcp_words(p));
        zlb_rcp_E(bp, r, B, p, scratch);
        return Q.set_mul(bp, A.top_words(p, bp.tds), r, p + 1);
    }
    const upL_t h = half_precision(p);
    BigFloatR r = scratch.take(rcp_words(h));
    zlp_rcp_B(bp, r, B, h, scratch, status);
    TransformSlot slot;
    const transform& algorithm = make_transform<cdi>(bp, slot, transform_words(p));
    zlp_div_t9_B(bp, algorithm, Q, A, B, r.top_words(h, bp.tds), p, scratch, status);
}

}  // namespace znp
