#include "numbers/inverse_sqrt.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "multiply/dispatch.hpp"
#include "numbers/transform_helper.hpp"
#include "shell/console.hpp"

namespace znp {

using namespace newton;

namespace {

constexpr int failure = 2;
constexpr cdi half = cdi{1} << 63;

// Words of the recursive result, which has to hold p + 4 words for its own steps, and of the correction.
constexpr upL_t half_words(upL_t h) {
    return h + 4;
}
constexpr upL_t correction_words(upL_t h) {
    return h + 3;
}
constexpr upL_t step_words(upL_t h) {
    return half_words(h) + correction_words(h);
}
constexpr upL_t transform_words(upL_t p) {
    return p + 6;
}

int failed_top(const char* text, cdi top) {
    print_top(text, top);
    return failure;
}

int failed_magnitude(const char* text, s64_t magnitude, upL_t h) {
    print_magnitude(text, magnitude, h);
    return failure;
}

int failed_residue() {
    Console::print_error("zlm_invsqrt_udw_B(): Residue Check Failure");
    return failure;
}

// y = y0 + c or y0 - c to p words, its low word moved.
void correct(FloatR& y, const Float& y0, const Float& c, bool under, upL_t p) {
    if (under) {
        y.set_add(y0, c, p);
    } else {
        y.set_sub(y0, c, p);
    }
    perturb(y, p);
}

// T = T / 2: one bit down.
void halve(FloatR& T) {
    T.mul_uW(half);
    T.shift_exp(-1);
}

}  // namespace

upL_t invsqrt_scratch_words(upL_t p) {
    if (p == 0) return 0;
    const upL_t h = half_precision(p);
    return half_words(h) + std::max(invsqrt_scratch_words(h), correction_words(h));
}

int zlm_invsqrt_udw_E(const BasicParameters& bp, FloatR& y, u64_t x, upL_t p, Scratch scratch) {
    if (p == 0) {
        y.set_double(1 / std::sqrt(static_cast<double>(x)), 0);
        return 0;
    }
    const upL_t h = half_precision(p);
    require_scratch(scratch, step_words(h), "zlm_invsqrt_udw_E(): Insufficient Allocated Space - PL");
    FloatR y0_words = scratch.take(half_words(h));
    if (const int status = zlm_invsqrt_udw_E(bp, y0_words, x, h, scratch); status != 0) return status;
    const Float y0 = y0_words.top_words(h);
    FloatR c = scratch.take(correction_words(h));

    FloatR& T = y;
    T.set_sqr(bp, y0, p);
    T.mul_uW(x);
    const s64_t te = std::min<s64_t>(y0.get_exp() + 2, 0);
    const cdi top = T.word_at(0);
    const bool under = top == 0;
    if (under) {
        if (T.get_mag() != 0) {
            return failed_magnitude("zlm_invsqrt_udw_E(): Under-Estimate -> Convergence Failure", T.get_mag(),
                                    h);
        }
        T.negate_twos_complement();
    } else if (top == 1) {
        T.truncate_top(0);
    } else {
        return failed_top("zlm_invsqrt_udw_E(): Convergence Failure", top);
    }
    if (T.is_zero()) {
        y.set_gfp(y0, p);
        return 0;
    }
    if (T.get_mag() > std::max<s64_t>(te, 2 - static_cast<s64_t>(h))) {
        return failed_magnitude(under ? "zlm_invsqrt_udw_E(): Under-Estimate -> Convergence Failure"
                                      : "zlm_invsqrt_udw_E(): Over-Estimate -> Convergence Failure",
                                T.get_mag(), h);
    }
    halve(T);
    c.set_mul(bp, T, y0, h + 1);
    correct(y, y0, c, under, p);
    return 0;
}

upL_t invsqrt_work_bytes(upL_t p, u64_t threads) {
    return work_bytes_for<cdi>(std::max(transform_words(p), small_product), threads);
}

int invsqrt_step(const BasicParameters& bp, const transform& algorithm, FloatR& y, u64_t x, const Float& y0,
                 upL_t p, Scratch scratch, StatusLine* status) {
    const upL_t h = half_precision(p);
    const s64_t te = std::min<s64_t>(y0.get_exp() + 2, 0);
    FloatR c = scratch.take(correction_words(h));

    show_step(status, " - 0S - ", h);
    const TransformHelper helper(bp, algorithm);
    const Float::Transform Y0(y0, helper.scratch, algorithm, helper.T2, h);
    FloatR& T = y;
    ProductCheck product(y0, y0);
    {
        Float::Transform square = Y0;  // the inverse consumes its image
        std::memcpy(helper.T1, helper.T2, algorithm.transform_bytes);
        square.image = helper.T1;
        product.whole = T.set_checked_fsqr(helper.scratch, square, te, p);
    }
    T.mul_uW(x);
    const cdi top = T.word_at(te - 1);
    T.truncate_top(te);
    const bool under = top == ~cdi{0};
    if (under) {
        T.negate_twos_complement();
    } else if (top != 0) {
        return failed_top("zlm_invsqrt_udw_B(): Convergence Failure", top);
    }
    if (!T.is_zero() && T.get_mag() > 2 - static_cast<s64_t>(h)) {
        return failed_magnitude(under ? "zlm_invsqrt_udw_B(): Under-Estimate -> Convergence Failure"
                                      : "zlm_invsqrt_udw_B(): Over-Estimate -> Convergence Failure",
                                T.get_mag(), h);
    }
    if (!product.holds(algorithm)) return failed_residue();
    if (T.is_zero()) {
        y.set_gfp(y0, p);
        return 0;
    }

    show_step(status, under ? " - U1M - " : " - O1M - ", h);
    halve(T);
    product = ProductCheck(T.top_words(h + 1), y0);
    Float::Transform E(T, helper.scratch, algorithm, helper.T1, h + 1);
    product.whole = c.set_checked_fmul(helper.scratch, E, Y0, E.mag + Y0.mag, h + 1);
    if (!product.holds(algorithm)) return failed_residue();
    correct(y, y0, c, under, p);
    return 0;
}

int zlp_invsqrt_udw_B(const BasicParameters& bp, FloatR& y, u64_t x, upL_t p, Scratch scratch,
                      StatusLine* status) {
    if (p <= small_precision) return zlm_invsqrt_udw_E(bp, y, x, p, scratch);
    const upL_t h = half_precision(p);
    require_scratch(scratch, step_words(h), "zlm_invsqrt_udw_B(): Insufficient Allocated Space - PL");
    FloatR y0 = scratch.take(half_words(h));
    if (const int result = zlp_invsqrt_udw_B(bp, y0, x, h, scratch, status); result != 0) return result;
    TransformSlot slot;
    const transform& algorithm = make_transform<cdi>(bp, slot, transform_words(p));
    return invsqrt_step(bp, algorithm, y, x, y0.top_words(h), p, scratch, status);
}

}  // namespace znp
