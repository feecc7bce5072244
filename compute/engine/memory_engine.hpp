// MemoryEngine: carries out the formulas of compute/formulas/ in memory, or counts what they take there, as
// its StageMemory says.
//
// A formula is a template over its engine, so that one text serves every way of computing. What an engine
// gives: numbers, which belong to the formula; stages, which make them out of others; and small steps in
// place. Numbers that are moved into a stage are gone when it ends. All numbers have the run's precision.
#pragma once

#include <string>
#include <utility>

#include "compute/engine/arccoth_term.hpp"
#include "compute/engine/euler_gamma_stages.hpp"
#include "compute/engine/newton_stages.hpp"
#include "compute/engine/series_stage.hpp"
#include "compute/engine/stage_lines.hpp"
#include "foundation/time.hpp"

namespace znp {

class MemoryEngine {
  public:
    using Number = HeapFloat;

    explicit MemoryEngine(StageMemory& memory) : memory_(memory) {}

    upL_t precision() const { return memory_.settings().p; }

    // ---- Stages

    // The series over the sections of a plan; over those of the usual plan; the form c (a Q + P) / (b Q).
    Number series_quotient(const zl_BSS& series, const PSRPlan& plan, const SeriesQuotient& formula);
    Number series_quotient(const zl_BSS& series, const SeriesQuotient& formula, double section_ratio = 1);
    Number sum_series(const zl_BSS& series, cdi a, cdi b, s64_t c) {
        return sum_series_B(memory_, series, a, b, c);
    }
    // 1/sqrt(n), with room for so many words more.
    Number inverse_sqrt(u64_t n, upL_t extra_words = 0) {
        return inv_sqrt_B(memory_, n, precision(), extra_words);
    }
    Number quotient(Number numerator, Number denominator);
    Number product(Number a, Number b, bool half_length);
    Number sum(Number a, Number b);

    // coefficient * ArcCoth(x) behind its line, and the same added to a sum.
    Number arccoth_term(u64_t x, s64_t coefficient) { return arccoth_term_B(memory_, x, coefficient); }
    Number add_arccoth_term(Number so_far, u64_t x, s64_t coefficient);

    void check_parameter(u32_t k) { znp::check_parameter(memory_, k); }
    EulerGammaSums euler_gamma_ab(u32_t m, upL_t w) { return euler_gamma_ab_B(memory_, m, w); }
    Number euler_gamma_c(u32_t m, upL_t w, const Number& S, const Number& R) {
        return euler_gamma_c_B(memory_, m, w, S, R);
    }
    void skip_euler_gamma_c() { skip_euler_gamma_c_B(memory_); }

    // The line of a term, on the console and in the log, in front of its stages; behind a blank one.
    void tell_term(const std::string& text) { znp::tell_term(memory_, text); }
    void leave_line();

    // ---- Steps in place; a number from a stage has room for a product with a word and a carry

    void multiply(Number& x, cdi word);
    void add(Number& x, cdi word, s64_t position);
    void halve(Number& x);  // with an event of its own

  private:
    StageMemory& memory_;
};

// The end of every formula in memory: stops the stopwatch, closes the formula with its name and the time
// since `start`, and writes the number's digits.
void output_B(StageMemory& memory, const char* name, const Time& start, const BigFloat& number);

}  // namespace znp
