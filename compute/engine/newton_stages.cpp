#include "compute/engine/newton_stages.hpp"

#include <algorithm>

#include "compute/engine/stage_lines.hpp"
#include "compute/run/recovery.hpp"
#include "compute/settings/precision.hpp"
#include "foundation/fatal.hpp"
#include "foundation/repeat_once.hpp"
#include "multiply/bkt/basecase.hpp"
#include "multiply/dispatch.hpp"
#include "numbers/division.hpp"
#include "numbers/inverse_sqrt.hpp"

namespace znp {

namespace {

constexpr const char* iterating = "Iterating: ";

// Of the products of an iteration, and of the last step's transform.
upL_t inv_sqrt_work(upL_t p, u64_t threads) {
    return std::max(invsqrt_work_bytes(p, threads), work_bytes_for<cdi>(p + 8, threads));
}

// Whether both still are what they were.
bool are_whole(const BigFloat& a, const BigFloat& b, u64_t threads) {
    return a.hash_error(threads) == 0 && b.hash_error(threads) == 0;
}

}  // namespace

HeapFloat inv_sqrt_B(StageMemory& memory, u64_t n, upL_t p, upL_t extra) {
    const upL_t room = memory.room(p);
    StageLines lines(memory, "InvSqrt...", "InvSqrt");
    lines.start(iterating);
    HeapFloat out = memory.number(room + 4 + extra);
    const auto scratch = memory.array<cdi>(invsqrt_scratch_words(room));
    const auto work = memory.work(inv_sqrt_work(room, memory.threads()));
    memory.carry_out([&](RunTimeParameters& run) {
        const auto iterate = [&] {
            const int failure =
                zlp_invsqrt_udw_B(run.arithmetic(work.get(), work.size), out, n, p,
                                  newton::Scratch(scratch.get(), scratch.size), lines.status());
            if (failure != 0) throw newton::ConvergenceFailure(failure);
        };
        try {
            repeat_once(
                iterate, [] { return true; },
                [&] { announce_reattempt(run, "InvSqrt Failed - Reattempting..."); });
        } catch (const newton::ConvergenceFailure&) {
            fatal_exit("Computation Failed");
        }
    });
    lines.finish();
    return out;
}

HeapFloat divide_B(StageMemory& memory, const BigFloat& numerator, const BigFloat& denominator, upL_t p) {
    const upL_t room = memory.room(p);
    StageLines lines(memory, "Division...", "Division");
    lines.start(iterating);
    HeapFloat out = memory.number(divide_words(room));
    const auto scratch = memory.array<cdi>(div_scratch_words(room));
    const auto work = memory.work(div_work_bytes(room, memory.threads()));
    memory.carry_out([&](RunTimeParameters& run) {
        repeat_once(
            [&] {
                zlm_div_t9_B(run.arithmetic(work.get(), work.size), out, numerator, denominator, p,
                             newton::Scratch(scratch.get(), scratch.size), lines.status());
            },
            [&] { return are_whole(numerator, denominator, memory.threads()); },
            [&] { announce_reattempt(run, "Division Failed - Reattempting..."); });
    });
    lines.finish();
    return out;
}

HeapFloat final_multiply_B(StageMemory& memory, const BigFloat& a, const BigFloat& b, upL_t p,
                           bool half_length) {
    const upL_t room = memory.room(p);
    StageLines lines(memory, "Final Multiply...", "Final Multiply");
    lines.start("Multiplying: ");
    HeapFloat out = memory.number(room + extra_precision);
    const auto work =
        memory.work(work_bytes_for<cdi>(2 * room + final_product_margin, memory.threads(), half_length));
    memory.carry_out([&](RunTimeParameters& run) {
        const BasicParameters bp = run.arithmetic(work.get(), work.size);
        const auto multiply = [&] {
            if (half_length) {
                out.set_mulp(bp, a, b, p);
            } else {
                VerifiedFactor(bp, b, a.get_L()).multiply(out, a, p);
            }
        };
        try {
            repeat_once(
                multiply, [&] { return are_whole(a, b, memory.threads()); },
                [&] { announce_reattempt(run, "Final Multiply Failed - Reattempting..."); });
        } catch (const ArithmeticFailure&) {
            fatal_exit("Checksum Mismatch. Multiplication Failed.");
        }
    });
    lines.finish();
    return out;
}

VerifiedFactor::VerifiedFactor(const BasicParameters& bp, const BigFloat& factor, upL_t others)
    : algorithm_(make_transform<cdi>(bp, slot_, factor.get_L() + others)),
      helper_(bp, algorithm_),
      factor_(factor),
      image_(factor, algorithm_, helper_.T2, helper_.scratch, factor.get_L()) {}

void VerifiedFactor::multiply(BigFloatR& out, const BigFloat& a, upL_t p) const {
    BigFloat::Transform A(a, algorithm_, helper_.T1, helper_.scratch, a.get_L());
    out.set_inverse_fmul(helper_.scratch, A, image_, A.mag + image_.mag, p);
}

}  // namespace znp
