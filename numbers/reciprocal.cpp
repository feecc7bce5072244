#include "numbers/reciprocal.hpp"

#include "foundation/fail.hpp"
#include "multiply/dispatch.hpp"

namespace znp {

using namespace newton;

namespace {

constexpr Routine small{"zlb_rcp_E", "zlb_rcp_E(): Computation Failed",
                        "zlb_rcp_E(): Insufficient Allocated Space - PL"};
constexpr Routine big{"zlp_rcp_B", "zlp_rcp_B(): Computation Failed",
                      "zlp_rcp_B(): Insufficient Allocated Space - PL"};

constexpr upL_t spare_words = rcp_words(0);

constexpr upL_t transform_words(upL_t p) {
    return p + 8;
}

}  // namespace

upL_t rcp_scratch_words(upL_t p) {
    return chain_scratch_words(p, spare_words);
}

upL_t rcp_work_bytes(upL_t p, u64_t threads) {
    return chain_work_bytes(transform_words(p), threads);
}

void zlb_rcp_E(const BasicParameters& bp, BigFloatR& y, const BigFloat& x, upL_t p, Scratch scratch) {
    if (x.is_zero()) fail(zn_exception(error_code::divide_by_zero, "zlb_rcp_E(): Divide-by-Zero"));
    x.check_normalization();
    if (p == 0) {
        s64_t e;
        const double d = x.to_double(e);
        y.set_double(1 / d, -e);
        return;
    }

    const upL_t h = half_precision(p);
    BigFloatR estimate = small.take_estimate(scratch, h, spare_words);
    zlb_rcp_E(bp, estimate, x, h, scratch);
    const BigFloat y0 = estimate.top_words(h, bp.tds);

    BigFloatR& T = y;  // y's buffer is free until the end
    T.set_mul(bp, x.unproven_top_words(p, bp.tds), y0, p + 1);
    const bool under = small.is_under(T.word_at(0), 1);
    small.take_distance(T, under, 0, 2 - static_cast<s64_t>(h), h);
    if (T.is_zero()) return y.set_gfp(y0, p);
    BigFloatR c = scratch.take(correction_words(h));
    c.set_mul(bp, T, y0, h + 1);
    correct(y, y0, c, under, p + 1, p);
}

void rcp_step(const BasicParameters& bp, const transform& algorithm, BigFloatR& y, const BigFloat& x,
              const BigFloat& y0, upL_t p, Scratch scratch, StatusLine* status) {
    const upL_t h = half_precision(p);
    const s64_t te = 2 - static_cast<s64_t>(h);

    show_step(status, " - 0M - ", h);
    const TransformHelper helper(bp, algorithm);
    const Operand Y0(helper, helper.T2, y0, h);
    Operand X(helper, helper.T1, x.unproven_top_words(p, bp.tds), p);
    BigFloatR& T = y;
    const ProductCheck product = checked_mul(T, helper, X, Y0, te, p);
    // 2: an estimate with a top word of 1 may be so many units of its last word short.
    const bool under = big.is_under(T.word_at(te - 1), 0, 2);
    big.take_distance(T, under, te, te, h);
    big.require_residue(product.holds(algorithm, near_one_residue(product.wrap_position(algorithm), under)));
    if (T.is_zero()) return y.set_gfp(y0, p);

    show_step(status, under ? " - U1M - " : " - O1M - ", h);
    BigFloatR c = scratch.take(correction_words(h));
    set_correction(big, c, helper, T, h + 1, Y0, h);
    correct(y, y0, c, under, p + 1, p);
}

void zlp_rcp_B(const BasicParameters& bp, BigFloatR& y, const BigFloat& x, upL_t p, Scratch scratch,
               StatusLine* status) {
    if (p <= small_precision) return zlb_rcp_E(bp, y, x, p, scratch);
    const upL_t h = half_precision(p);
    BigFloatR estimate = big.take_estimate(scratch, h, spare_words);
    zlp_rcp_B(bp, estimate, x, h, scratch, status);
    TransformSlot slot;
    const transform& algorithm = make_transform<cdi>(bp, slot, transform_words(p));
    rcp_step(bp, algorithm, y, x, estimate.top_words(h, bp.tds), p, scratch, status);
}

}  // namespace znp
