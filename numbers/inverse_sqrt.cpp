#include "numbers/inverse_sqrt.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "multiply/dispatch.hpp"

namespace znp {

using namespace newton;

namespace {

constexpr Routine small{"zlm_invsqrt_udw_E", nullptr,
                        "zlm_invsqrt_udw_E(): Insufficient Allocated Space - PL"};
constexpr Routine big{"zlm_invsqrt_udw_B", nullptr, "zlm_invsqrt_udw_B(): Insufficient Allocated Space - PL"};

constexpr upL_t spare_words = invsqrt_words(0);

constexpr upL_t transform_words(upL_t p) {
    return p + 6;
}

// From this position on the square of an estimate, times a word, is known.
s64_t known_from(const BigFloat& y0) {
    return std::min<s64_t>(y0.get_exp() + 2, 0);
}

// T = T / 2: one bit down.
void halve(BigFloatR& T) {
    T.mul_uW(cdi{1} << 63);
    T.shift_exp(-1);
}

void small_chain(const BasicParameters& bp, BigFloatR& y, u64_t x, upL_t p, Scratch scratch) {
    if (p == 0) return y.set_double(1 / std::sqrt(static_cast<double>(x)), 0);
    const upL_t h = half_precision(p);
    BigFloatR estimate = small.take_estimate(scratch, h, spare_words);
    small_chain(bp, estimate, x, h, scratch);
    const BigFloat y0 = estimate.top_words(h, bp.tds);

    BigFloatR& T = y;  // y's buffer is free until the end
    T.set_sqr(bp, y0, p);
    T.mul_uW(x);
    const bool under = small.is_under(T.word_at(0), 1);
    small.take_distance(T, under, 0, std::max(known_from(y0), 2 - static_cast<s64_t>(h)), h);
    if (T.is_zero()) return y.set_gfp(y0, p);
    halve(T);
    BigFloatR c = scratch.take(correction_words(h));
    c.set_mul(bp, T, y0, h + 1);
    correct(y, y0, c, under, p, p);
}

void chain(const BasicParameters& bp, BigFloatR& y, u64_t x, upL_t p, Scratch scratch, StatusLine* status) {
    if (p <= small_precision) return small_chain(bp, y, x, p, scratch);
    const upL_t h = half_precision(p);
    BigFloatR estimate = big.take_estimate(scratch, h, spare_words);
    chain(bp, estimate, x, h, scratch, status);
    TransformSlot slot;
    const transform& algorithm = make_transform<cdi>(bp, slot, transform_words(p));
    invsqrt_step(bp, algorithm, y, x, estimate.top_words(h, bp.tds), p, scratch, status);
}

// 0, or 2 for a chain that fails.
template <class Chain>
int result_of(Chain run) {
    try {
        run();
        return 0;
    } catch (const ArithmeticFailure&) {
        return error_code::numerical_result;
    }
}

}  // namespace

upL_t invsqrt_scratch_words(upL_t p) {
    return chain_scratch_words(p, spare_words);
}

upL_t invsqrt_work_bytes(upL_t p, u64_t threads) {
    return chain_work_bytes(transform_words(p), threads);
}

void invsqrt_step(const BasicParameters& bp, const transform& algorithm, BigFloatR& y, u64_t x,
                  const BigFloat& y0, upL_t p, Scratch scratch, StatusLine* status) {
    const upL_t h = half_precision(p);
    const s64_t te = known_from(y0);

    show_step(status, " - 0S - ", h);
    const TransformHelper helper(bp, algorithm);
    const Operand Y0(helper, helper.T2, y0, h);
    BigFloat::Transform square = Y0.transformed;  // the inverse consumes its image
    std::memcpy(helper.T1, helper.T2, algorithm.transform_bytes);
    square.image = helper.T1;
    BigFloatR& T = y;
    ProductCheck product(Y0.words, Y0.words);
    product.whole = T.set_checked_fsqr(helper.scratch, square, te, p);
    T.mul_uW(x);
    T.truncate_top(te);
    const bool under = big.is_under(T.word_at(te - 1), 0);
    big.take_distance(T, under, te, 2 - static_cast<s64_t>(h), h);
    big.require_residue(product.holds(algorithm));
    if (T.is_zero()) return y.set_gfp(y0, p);

    show_step(status, under ? " - U1M - " : " - O1M - ", h);
    halve(T);
    BigFloatR c = scratch.take(correction_words(h));
    set_correction(big, c, helper, T, h + 1, Y0, h);
    correct(y, y0, c, under, p, p);
}

int zlm_invsqrt_udw_E(const BasicParameters& bp, BigFloatR& y, u64_t x, upL_t p, Scratch scratch) {
    return result_of([&] { small_chain(bp, y, x, p, scratch); });
}

int zlp_invsqrt_udw_B(const BasicParameters& bp, BigFloatR& y, u64_t x, upL_t p, Scratch scratch,
                      StatusLine* status) {
    return result_of([&] { chain(bp, y, x, p, scratch, status); });
}

}  // namespace znp
