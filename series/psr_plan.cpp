#include "series/psr_plan.hpp"

#include "foundation/strings.hpp"
#include "series/bss.hpp"
#include "shell/console.hpp"

namespace znp {

namespace {

// A last section of more terms is divided further.
constexpr u64_t last_section_terms = 1000;

class PlanMaker {
  public:
    PlanMaker(const zl_BSS& series, upL_t p, double ratio, upL_t memory_limit, u64_t threads)
        : series_(series),
          terms_(series.terms(p)),
          target_(static_cast<double>(p) * ratio * nats_per_word),
          memory_limit_(memory_limit),
          threads_(threads) {}

    PSRPlan make() {
        u64_t a = 0;
        do {
            a = append_section(a);
        } while (terms_ - a > last_section_terms || series_.words_of(a, terms_) > plan_.front().length);
        if (a != terms_) append(a, terms_);
        plan_.back().next_precision = 0;
        return plan_;
    }

  private:
    upL_t precision_from(u64_t a) const {
        return static_cast<upL_t>(series_.precision_of(a, terms_) * words_per_nat + 2);
    }

    void append(u64_t a, u64_t b) {
        plan_.push_back({precision_from(a), series_.words_of(a, b), precision_from(b), a, b, false});
    }

    u64_t append_section(u64_t a) {
        const bool asr = asr_target_ > 0;
        append(a, asr ? series_.section_end_asr(a, terms_, asr_target_)
                      : series_.section_end(a, terms_, target_));
        SectionRow& row = plan_.back();
        if (!asr && series_.can_be_truncated() && fits(row)) {
            asr_target_ = static_cast<double>(row.length) * nats_per_word;
        }
        row.asr = asr_target_ > 0;
        return row.b;
    }

    // With room to spare for the accumulator and the five objects of a node.
    bool fits(const SectionRow& row) const {
        if (memory_limit_ == 0) return true;
        const MemoryPlan need = series_.memory_plan(row.length, 1, threads_);
        return 16 * row.precision + need.bytes + 40 * need.words < memory_limit_;
    }

    const zl_BSS& series_;
    const u64_t terms_;
    const double target_;  // nats
    const upL_t memory_limit_;
    const u64_t threads_;
    double asr_target_ = 0;  // nats of each section from the first one that is summed with truncated products
    PSRPlan plan_;
};

}  // namespace

PSRPlan make_psr_plan(const zl_BSS& series, upL_t p, double ratio, upL_t memory_limit, u64_t threads) {
    return PlanMaker(series, p, ratio, memory_limit, threads).make();
}

PSRPlan make_single_section(const zl_BSS& series, u64_t a, u64_t b) {
    const auto precision = static_cast<upL_t>(series.precision_of(a, b) * words_per_nat + 2);
    return {{precision, series.words_of(a, b), 0, a, b, false}};
}

void print_psr_plan(const PSRPlan& plan) {
    Console::println("   #         Precision                 b             Terms  ASR");
    const u64_t n = plan.back().b;
    for (upL_t i = 0; i < plan.size(); i++) {
        const SectionRow& row = plan[i];
        const auto percent = static_cast<u64_t>(static_cast<u128_t>(n - row.b) * 100 / n);
        Console::print_padded_left(4, to_string_u64(i));
        Console::print_padded_left(18, to_string_u64(row.precision));
        Console::print_padded_left(18, to_string_u64(row.b));
        Console::print_padded_left(18, to_string_u64(row.b - row.a));
        Console::print(row.asr ? "  yes" : "   no");
        Console::print_padded_left(5, to_string_u64(percent));
        Console::println("%");
    }
}

}  // namespace znp
