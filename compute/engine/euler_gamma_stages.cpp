#include "compute/engine/euler_gamma_stages.hpp"

#include <cmath>

#include "compute/engine/newton_stages.hpp"
#include "compute/engine/series_stage.hpp"
#include "compute/run/recovery.hpp"
#include "foundation/fatal.hpp"
#include "foundation/repeat_once.hpp"
#include "multiply/dispatch.hpp"
#include "series/catalogue.hpp"
#include "series/euler_gamma_ab.hpp"
#include "shell/console.hpp"

namespace znp {

namespace {

upL_t product_work(upL_t p, u64_t threads) {
    return work_bytes_for<cdi>(2 * number_words(p), threads);
}

struct ABSum {
    HeapFloat Q, R, T;
};

ABSum sum_ab(StageMemory& memory, StageLines& lines, u32_t m) {
    const Series_EulerGamma_BM_AB series(m);
    const PSRPlan plan = make_ab_plan(series, memory.settings().p, 1.0);
    lines.print_terms(plan.back().b - plan.front().a, " #S");
    lines.start("Summing: ");
    const ABSumSizes sizes = ab_sum_sizes(series, plan, memory.threads());
    ABSum sum;
    sum.Q = memory.number(sizes.results);
    sum.R = memory.number(sizes.results);
    sum.T = memory.number(sizes.results);
    const auto nodes = memory.array<cdi>(sizes.nodes);
    const auto work = memory.work(sizes.work_bytes);
    memory.carry_out([&](RunTimeParameters& run) {
        try {
            B_PSR(run.arithmetic(work.get(), work.size), series, plan, sum.T, sum.Q, sum.R, nodes.get(),
                  &run.events, lines.status());
        } catch (const ArithmeticFailure&) {  // it has told what it found
            fatal_exit("Computation Failed");
        }
    });
    return sum;
}

// Products behind a sum; once more where one fails its check.
template <class Products>
void finish_series(StageMemory& memory, RunTimeParameters& run, const BigFloat& a, const BigFloat& b,
                   Products products) {
    repeat_once(
        products, [&] { return a.hash_error(memory.threads()) == 0 && b.hash_error(memory.threads()) == 0; },
        [&] { announce_reattempt(run, "Finishing Series Failed - Reattempting..."); });
}

// A copy of the top words, for the refinement.
HeapFloat cut(StageMemory& memory, const BigFloat& x, upL_t w) {
    HeapFloat out = memory.number(number_words(memory.room(w)));
    memory.carry_out([&](RunTimeParameters&) { out.set_gfp(x, w); });
    return out;
}

}  // namespace

void check_parameter(StageMemory& memory, u32_t k) {
    memory.carry_out([&](RunTimeParameters& run) {
        const double limit = std::ldexp(4 * digits_per_nat, static_cast<int>(k));
        const u64_t target = run.settings.dec;
        if (static_cast<double>(target) <= limit) return;
        constexpr upL_t width = 10;
        const auto digits = [](u64_t count) {
            return Console::format_int(count, Console::IntFormat::commas) + " digits";
        };
        Console::println("Warning:", 'R');
        Console::println("The current parameter is too small to meet the target precision.");
        Console::print_field_line(width, "Target:", digits(target), 'Y');
        Console::print_field_line(width, "Limit:", digits(static_cast<u64_t>(limit)), 'Y');
        Console::print_newline();
    });
}

// S = Q^2, D = Q (R + S). What is kept of S and R + S takes the room of Q and R.
EulerGammaSums euler_gamma_ab_B(StageMemory& memory, u32_t m, upL_t w) {
    const upL_t p = memory.settings().p;
    StageLines lines(memory, "Summing Series A and B...  ", "Summing Series A and B");
    ABSum sum = sum_ab(memory, lines, m);

    const upL_t words = number_words(memory.room(p));
    HeapFloat S = memory.number(words);
    HeapFloat RS = memory.number(words);
    EulerGammaSums result;
    result.D = memory.number(words);
    {
        const auto work = memory.work(product_work(memory.room(p), memory.threads()));
        memory.carry_out([&](RunTimeParameters& run) {
            run.events.add("Finishing Series");
            const BigFloat Q = sum.Q.top_words(p);
            finish_series(memory, run, Q, sum.R, [&] {
                const VerifiedFactor factor(run.arithmetic(work.get(), work.size), Q,
                                            p + extra_precision + 1);
                lines.show("Finalizing: Q^2: ");
                factor.multiply(S, Q, p);
                lines.show("Finalizing: R + S: ");
                RS.set_add(sum.R, S, p);
                lines.show("Finalizing: Q * (R + S): ");
                factor.multiply(result.D, RS, p);
            });
        });
    }
    sum.Q.free();
    sum.R.free();
    if (w != 0) {
        result.S = cut(memory, S, w);
        result.R = cut(memory, RS, w);
    }
    S.free();
    RS.free();
    result.T = std::move(sum.T);
    result.T.settle();
    result.D.settle();
    lines.finish();
    return result;
}

// C = (P + Q) / (4 n Q), so that C/B^2 = (P + Q) S^2 / (4 n Q R^2).
HeapFloat euler_gamma_c_B(StageMemory& memory, u32_t m, upL_t w, const BigFloat& S, const BigFloat& R) {
    HeapFloat U, V;
    {
        const EulerGamma_BM_C series(m);
        StageLines lines(memory, "\nSumming Series C...  ", "Summing Series C");
        SeriesSum sum = sum_plan_B(memory, lines, series, make_psr_plan(series, w, 1.0, 0, memory.threads()));
        const upL_t words = number_words(memory.room(w));
        U = memory.number(words);
        V = memory.number(words);
        HeapFloat PQ = memory.number(words);
        HeapFloat square = memory.number(words);
        const auto work = memory.work(product_work(memory.room(w), memory.threads()));
        memory.carry_out([&](RunTimeParameters& run) {
            const BasicParameters bp = run.arithmetic(work.get(), work.size);
            const auto multiply_all = [&] {
                PQ.set_add(sum.P, sum.Q, w);
                VerifiedFactor(bp, S, S.get_L()).multiply(square, S, w);
                VerifiedFactor(bp, PQ, square.get_L()).multiply(U, square, w);
                VerifiedFactor(bp, R, R.get_L()).multiply(square, R, w);
                VerifiedFactor(bp, sum.Q.top_words(w), square.get_L()).multiply(V, square, w);
                V.mul_uW(cdi{1} << (m + 2) % 64);
                V.shift_exp((m + 2) / 64);
            };
            finish_series(memory, run, S, R, multiply_all);
        });
        lines.finish();
    }
    U.settle();
    V.settle();
    HeapFloat out = divide_B(memory, U, V, w);
    U.free();
    V.free();
    out.settle();
    return out;
}

void skip_euler_gamma_c_B(StageMemory& memory) {
    memory.carry_out([](RunTimeParameters&) { Console::println("\nSumming Series C...  skipped"); });
}

}  // namespace znp
