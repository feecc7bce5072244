// Sqrt(n) and the Golden Ratio.
#include <array>

#include "compute/constants/constants.hpp"
#include "compute/constants/listed_constant.hpp"
#include "compute/drivers/algebraic.hpp"
#include "compute/drivers/shared_stages.hpp"

namespace znp {

namespace {

constexpr std::array newton_names{
    AlgorithmNames{"Newton", "Newton's Method", "1st order Newton's Method"},
};

class zlr_Sqrt final : public zlr_ListedConstant {
  public:
    explicit zlr_Sqrt(u64_t radicand) : zlr_ListedConstant(1, newton_names), radicand_(radicand) {}
    char get_color() const override { return 'P'; }
    std::string get_short_name() const override { return with_argument("Sqrt", radicand_); }
    bool runs_B(s32_t algorithm) const override { return knows_algorithm(algorithm, 0); }
    void run_B(s32_t algorithm, RunTimeParameters& run) const override;

  private:
    upL_t memory_B(s32_t, upL_t p, u64_t digits, u64_t threads) const override {
        return algebraic_memory_B(p, digits, threads);
    }

    u64_t radicand_;
};

class zlr_GoldenRatio final : public zlr_ListedConstant {
  public:
    zlr_GoldenRatio() : zlr_ListedConstant(1, newton_names) {}
    char get_color() const override { return 'P'; }
    std::string get_short_name() const override { return "Golden Ratio"; }
    bool runs_B(s32_t algorithm) const override { return knows_algorithm(algorithm, 0); }
    void run_B(s32_t algorithm, RunTimeParameters& run) const override;

  private:
    upL_t memory_B(s32_t, upL_t p, u64_t digits, u64_t threads) const override {
        return algebraic_memory_B(p, digits, threads);
    }
};

void zlr_Sqrt::run_B(s32_t, RunTimeParameters& run) const {
    const Time start = Time::now();
    HeapFloat number;
    sqrt_B(number, run, radicand_);
    output_B(run, "Square Root", start, number);
}

void zlr_GoldenRatio::run_B(s32_t, RunTimeParameters& run) const {
    const Time start = Time::now();
    HeapFloat number;
    golden_ratio_B(number, run);
    output_B(run, "Golden Ratio", start, number);
}

}  // namespace

std::unique_ptr<zlr_Constant> make_sqrt(u64_t radicand) {
    return std::make_unique<zlr_Sqrt>(radicand);
}

std::unique_ptr<zlr_Constant> make_golden_ratio() {
    return std::make_unique<zlr_GoldenRatio>();
}

}  // namespace znp
