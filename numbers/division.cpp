#include "numbers/division.hpp"

#include <algorithm>

#include "foundation/fail.hpp"
#include "foundation/strings.hpp"
#include "multiply/dispatch.hpp"
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
    return h + 5;
}
constexpr upL_t correction_words(upL_t h) {
    return h + 3;
}
constexpr upL_t transform_words(upL_t p) {
    return p + 9;
}

// d = A - y0 B from A's words and the product's below te. The two agree there but for a borrow from below.
void remainder(FloatR& d, const Float& A, const Float& T, s64_t te, upL_t h) {
    const cdi topA = T.word_at(te - 1);
    const cdi topB = A.word_at(te - 1);
    const bool positive = A.raw_sign();
    if (topB == 0 && topA == ~cdi{0}) {
        d.set_rsub(A, T, te, h + 3, positive);
    } else if (topB == ~cdi{0} && topA == 0) {
        d.set_rsub(T, A, te, h + 3, !positive);
    } else if (topA - topB + 1 <= 2) {
        d.set_sub(A, T, h + 3);
    } else {
        Console::print_error("zlm_div_t9_B(): Convergence Failure");
        Console::print_labelled_line("topA", format_printf(32, "%016lx", topA));
        Console::print_labelled_line("topB", format_printf(32, "%016lx", topB));
        fail(zn_exception(error_code::numerical_result, "zlp_div_t9_B(): Computation Failed"));
    }
}

}  // namespace

upL_t div_scratch_words(upL_t p) {
    if (p <= division_t9) return reciprocal_words(p) + rcp_scratch_words(p);
    const upL_t h = half_precision(p);
    return reciprocal_words(h) +
           std::max(rcp_scratch_words(h), quotient_words(h) + remainder_words(h) + correction_words(h));
}

upL_t div_work_bytes(upL_t p, u64_t threads) {
    const upL_t P = std::max(p, division_t9);
    return std::max(work_bytes_for<cdi>(transform_words(P), threads),
                    work_bytes_for<cdi>(2 * P + 8, threads));
}

void zlp_div_t9_B(const BasicParameters& bp, FloatR& Q, const Float& A, const Float& B, upL_t p,
                  Scratch scratch, StatusLine* status) {
    if (A.is_zero()) return Q.set_zero();
    if (p <= division_t9) {
        FloatR r = scratch.take(reciprocal_words(p));
        zlb_rcp_E(bp, r, B, p, scratch);
        return Q.set_mul(bp, A.top_words(p), r, p);
    }

    const upL_t h = half_precision(p);
    FloatR r_words = scratch.take(reciprocal_words(h));
    zlp_rcp_B(bp, r_words, B, h, scratch, status);
    const Float r = r_words.top_words(h);
    FloatR y0 = scratch.take(quotient_words(h));
    FloatR d = scratch.take(remainder_words(h));
    FloatR c = scratch.take(correction_words(h));

    show_step(status, " - 0M - ", h);
    y0.set_mul(bp, A.top_words(p), r, h);

    show_step(status, " - 1M - ", h);
    const s64_t te = std::min(A.get_mag() - static_cast<s64_t>(h) + 3, A.get_mag());
    FloatR& T = Q;
    {
        TransformSlot slot;
        const TransformHelper helper(bp, make_transform<cdi>(bp, slot, transform_words(p)));
        Float::Transform Y0(y0, helper.scratch, helper.algorithm, helper.T2, h);
        const Float::Transform divisor(B, helper.scratch, helper.algorithm, helper.T1, p);
        T.set_inverse_fmul(helper.scratch, Y0, divisor, te, p);
    }
    Float low_A = A;
    low_A.truncate_top(te);
    remainder(d, low_A, T, te, h);

    show_step(status, " - 2M - ", h);
    c.set_mul(bp, d, r, h + 1);
    Q.set_add(y0, c, p + 1);
}

}  // namespace znp
