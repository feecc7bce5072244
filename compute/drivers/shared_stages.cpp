#include "compute/drivers/shared_stages.hpp"

#include <algorithm>

#include "compute/stages.hpp"
#include "foundation/fatal.hpp"
#include "multiply/bkt/basecase.hpp"
#include "multiply/dispatch.hpp"
#include "numbers/division.hpp"
#include "numbers/inverse_sqrt.hpp"
#include "numbers/transform_helper.hpp"

namespace znp {

namespace {

constexpr const char* iterating = "Iterating: ";

// Numbers of a formula have p + 2 words, or a few more from Newton's iterations and products with words.
constexpr upL_t product_slack = 100;

// Of the products of an iteration, and of the last step's transform.
upL_t inv_sqrt_work(upL_t p, u64_t threads) {
    return std::max(invsqrt_work_bytes(p, threads), work_bytes_for<cdi>(p + 8, threads));
}

upL_t final_multiply_work(upL_t p, u64_t threads, bool half_length) {
    return work_bytes_for<cdi>(2 * p + product_slack, threads, half_length);
}

// The top p + 2 words of a * b, the whole product verified.
void set_verified_mul(BigFloatR<cdi>& out, const BasicParameters& bp, const Number& a, const Number& b,
                      upL_t p) {
    TransformSlot slot;
    const transform& algorithm = make_transform<cdi>(bp, slot, a.get_L() + b.get_L());
    const TransformHelper helper(bp, algorithm);
    newton::ProductCheck product(a, b);
    Number::Transform A(a, helper.scratch, algorithm, helper.T1, a.get_L());
    const Number::Transform B(b, helper.scratch, algorithm, helper.T2, b.get_L());
    product.whole = out.set_checked_fmul(helper.scratch, A, B, A.mag + B.mag, p);
    if (!product.holds(algorithm)) fatal_exit("Checksum Mismatch. Multiplication Failed.");
}

// The same by the dispatcher mulp, not verified.
void set_mulp(BigFloatR<cdi>& out, const BasicParameters& bp, const Number& a, const Number& b, upL_t p) {
    const upL_t n = a.get_L() + b.get_L();
    const upL_t kept = std::min(n, p + extra_precision);
    if (kept == n && n < basecase_clen) return out.set_mul(bp, a, b, p);
    mulp(bp, out.get_base(), n - kept, n, a.get_T(), a.get_L(), b.get_T(), b.get_L());
    out.set_words(kept, a.get_exp() + b.get_exp() + static_cast<s64_t>(n - kept),
                  a.raw_sign() == b.raw_sign());
}

}  // namespace

upL_t heap_words(upL_t words) {
    return heap_bytes(array_bytes(words, sizeof(cdi)));
}

void inv_sqrt_B(HeapFloat& out, u64_t n, upL_t p, RunTimeParameters& run, upL_t extra) {
    Stage stage(run, "InvSqrt...", "InvSqrt");
    StatusLine* const status = stage.start(iterating);
    out = HeapFloat(run.heap, inv_sqrt_words(p, extra));
    const upL_t scratch_words = invsqrt_scratch_words(p);
    const auto scratch = make_guarded_array<cdi>(&run.heap, scratch_words);
    const upL_t work_bytes = inv_sqrt_work(p, run.tds);
    const auto work = make_guarded_array<std::byte>(&run.heap, work_bytes);
    const int failure = zlp_invsqrt_udw_B(run.arithmetic(work.get(), work_bytes), out, n, p,
                                          newton::Scratch(scratch.get(), scratch_words), status);
    if (failure != 0) fatal_exit("Computation Failed");
    stage.finish();
}

upL_t inv_sqrt_bytes(upL_t p, u64_t threads, upL_t extra) {
    return HeapFloat::bytes(inv_sqrt_words(p, extra)) + heap_words(invsqrt_scratch_words(p)) +
           heap_bytes(inv_sqrt_work(p, threads));
}

void divide_B(HeapFloat& out, RunTimeParameters& run, const Number& numerator, const Number& denominator,
              upL_t p) {
    Stage stage(run, "Division...", "Division");
    StatusLine* const status = stage.start(iterating);
    out = HeapFloat(run.heap, divide_words(p));
    const upL_t scratch_words = div_scratch_words(p);
    const auto scratch = make_guarded_array<cdi>(&run.heap, scratch_words);
    const upL_t work_bytes = div_work_bytes(p, run.tds);
    const auto work = make_guarded_array<std::byte>(&run.heap, work_bytes);
    zlp_div_t9_B(run.arithmetic(work.get(), work_bytes), out, numerator, denominator, p,
                 newton::Scratch(scratch.get(), scratch_words), status);
    stage.finish();
}

upL_t divide_bytes(upL_t p, u64_t threads) {
    return HeapFloat::bytes(divide_words(p)) + heap_words(div_scratch_words(p)) +
           heap_bytes(div_work_bytes(p, threads));
}

void final_multiply_B(HeapFloat& out, RunTimeParameters& run, const Number& a, const Number& b, upL_t p,
                      bool half_length) {
    Stage stage(run, "Final Multiply...", "Final Multiply");
    stage.start("Multiplying: ");
    out = HeapFloat(run.heap, final_multiply_words(p));
    const upL_t work_bytes = final_multiply_work(p, run.tds, half_length);
    const auto work = make_guarded_array<std::byte>(&run.heap, work_bytes);
    const BasicParameters bp = run.arithmetic(work.get(), work_bytes);
    if (half_length) {
        set_mulp(out, bp, a, b, p);
    } else {
        set_verified_mul(out, bp, a, b, p);
    }
    stage.finish();
}

upL_t final_multiply_bytes(upL_t p, u64_t threads, bool half_length) {
    return HeapFloat::bytes(final_multiply_words(p)) +
           heap_bytes(final_multiply_work(p, threads, half_length));
}

void output_B(RunTimeParameters& run, const char* name, const Time& start, const Number& number) {
    run.stopwatch.stop();
    print_stage(name, start);
    const Number digits = number.top_words(run.p);
    write_hex(run, digits);
    convert_and_write_B(run, digits);
}

// p words hold at most 16 (p - 1) hexadecimal digits.
upL_t output_bytes(upL_t p, u64_t dec, u64_t threads) {
    return std::max(write_hex_bytes(16 * p), conversion_bytes(dec, threads));
}

}  // namespace znp
