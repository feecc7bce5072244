#include "compute/constant.hpp"

#include <array>
#include <cmath>
#include <span>

#include "foundation/fatal.hpp"
#include "foundation/strings.hpp"
#include "shell/console.hpp"

namespace znp {
namespace {

constexpr const char* parameter_out_of_range_text = "Parameter out of range";

// Parameters lie in [2, max]; the unsigned difference makes 0 and 1 large.
constexpr bool in_range_from_2(u64_t parameter, u64_t max) {
    return parameter - 2 <= max - 2;
}
constexpr bool arccoth_parameter_ok(u64_t parameter) {
    return in_range_from_2(parameter, 4294967295);
}
constexpr bool log_parameter_ok(u64_t parameter) {
    return in_range_from_2(parameter, 2147483647);
}

struct AlgorithmNames {
    const char* short_name;
    const char* name;
    const char* menu;
};

// A constant whose algorithms are a fixed list of names.
class zlr_ListedConstant : public zlr_Constant {
  public:
    zlr_ListedConstant(s32_t algorithm_count, std::span<const AlgorithmNames> names)
        : zlr_Constant(algorithm_count), names_(names) {}

    std::string get_algorithm_short(s32_t algorithm, upL_t) const override {
        return text_of(algorithm, &AlgorithmNames::short_name);
    }
    std::string get_algorithm_name(s32_t algorithm, upL_t) const override {
        return text_of(algorithm, &AlgorithmNames::name);
    }
    std::string get_algorithm_menu(s32_t algorithm, upL_t) const override {
        return text_of(algorithm, &AlgorithmNames::menu);
    }

  private:
    std::string text_of(s32_t algorithm, const char* AlgorithmNames::*text) const {
        if (algorithm < 0 || static_cast<upL_t>(algorithm) >= names_.size()) return {};
        return names_[static_cast<upL_t>(algorithm)].*text;
    }

    std::span<const AlgorithmNames> names_;
};

std::string with_argument(const char* function, u64_t argument) {
    return std::string(function) + "(" + to_string_u64(argument) + ")";
}

constexpr std::array newton_names{
    AlgorithmNames{"Newton", "Newton's Method", "1st order Newton's Method"},
};

class zlr_Sqrt final : public zlr_ListedConstant {
  public:
    explicit zlr_Sqrt(u64_t radicand) : zlr_ListedConstant(1, newton_names), radicand_(radicand) {}
    char get_color() const override { return 'P'; }
    std::string get_short_name() const override { return with_argument("Sqrt", radicand_); }

  private:
    u64_t radicand_;
};

class zlr_GoldenRatio final : public zlr_ListedConstant {
  public:
    zlr_GoldenRatio() : zlr_ListedConstant(1, newton_names) {}
    char get_color() const override { return 'P'; }
    std::string get_short_name() const override { return "Golden Ratio"; }
};

constexpr std::array e_names{
    AlgorithmNames{"exp(1)", "Taylor Series of exp(1)", "Taylor Series of exp(1)"},
    AlgorithmNames{"exp(-1)", "Taylor Series of exp(-1)", "Taylor Series of exp(-1)   (same speed)"},
};

class zlr_E final : public zlr_ListedConstant {
  public:
    zlr_E() : zlr_ListedConstant(2, e_names) {}
    std::string get_short_name() const override { return "e"; }
};

// The reduced-memory forms exist behind the algorithm count: they cannot be selected.
constexpr std::array pi_names{
    AlgorithmNames{"Chudnovsky", "Chudnovsky Formula", "Chudnovsky Formula      (fastest)\n"},
    AlgorithmNames{"Ramanujan", "Ramanujan's Formula", "Ramanujan's Formula     (~40% slower)\n"},
    AlgorithmNames{"Chudnovsky", "Chudnovsky Formula (reduced memory)",
                   "Chudnovsky Formula      (reduced memory)\n"
                   "            This form uses alternate parameters: it sums the series in\n"
                   "            smaller pieces. It needs less memory, and it is slower.\n"},
    AlgorithmNames{"Ramanujan", "Ramanujan's Formula (reduced memory)",
                   "Ramanujan's Formula     (reduced memory)\n"
                   "            This form uses alternate parameters: it sums the series in\n"
                   "            smaller pieces. It needs less memory, and it is slower.\n"},
};

class zlr_Pi final : public zlr_ListedConstant {
  public:
    zlr_Pi() : zlr_ListedConstant(2, pi_names) {}
    std::string get_short_name() const override { return "Pi"; }
};

constexpr std::array arccoth_names{
    AlgorithmNames{"Taylor", "Taylor Series", "Taylor Series of ArcCoth(x)"},
};

class zlr_ArcCoth final : public zlr_ListedConstant {
  public:
    explicit zlr_ArcCoth(u64_t argument) : zlr_ListedConstant(1, arccoth_names), argument_(argument) {}
    std::string get_short_name() const override { return with_argument("ArcCoth", argument_); }

  private:
    u64_t argument_;
};

// The long names tell the number of terms and the menu texts the formulas themselves. Both belong to the
// formula generator; without it the short names stand in through the defaults of zlr_Constant.
class zlr_Log final : public zlr_Constant {
  public:
    zlr_Log(u64_t argument, upL_t p) : zlr_Constant(2), argument_(argument) { zlr_Log::set_precision(p); }
    std::string get_short_name() const override { return with_argument("Log", argument_); }
    std::string get_algorithm_short(s32_t algorithm, upL_t) const override {
        if (algorithm == 0) return "Machin 1";
        if (algorithm == 1) return "Machin 2";
        return {};
    }
    void set_precision(upL_t) override {
        if (!log_parameter_ok(argument_)) fatal_exit(parameter_out_of_range_text);
    }

  private:
    u64_t argument_;
};

constexpr std::array zeta3_names{
    AlgorithmNames{"Amdeberhan-Zeiberger 2", "Amdeberhan-Zeiberger Formula 2",
                   "Amdeberhan-Zeiberger Formula 2      (fastest)"},
    AlgorithmNames{"Amdeberhan-Zeiberger 1", "Amdeberhan-Zeiberger Formula 1",
                   "Amdeberhan-Zeiberger Formula 1      (slightly slower)"},
};

class zlr_Zeta3 final : public zlr_ListedConstant {
  public:
    zlr_Zeta3() : zlr_ListedConstant(2, zeta3_names) {}
    std::string get_short_name() const override { return "Zeta(3)"; }
    std::string get_name() const override { return "Zeta(3) - Apery's Constant"; }
};

constexpr std::array lemniscate_names{
    AlgorithmNames{"Gauss", "Gauss formula",
                   "Gauss Formula       (fastest)\n\n"
                   "            Lemniscate = 8 * ArcSinlemn(1/2) + 4 * ArcSinLemn(7/23)\n"},
    AlgorithmNames{"Sebah", "Sebah's formula",
                   "Sebah's Formula     (20% slower)\n\n"
                   "            Lemniscate = 8 * ArcSinlemn(2/3) - 4 * ArcSinLemn(7/137)\n"},
};

class zlr_Lemniscate final : public zlr_ListedConstant {
  public:
    zlr_Lemniscate() : zlr_ListedConstant(2, lemniscate_names) {}
    std::string get_short_name() const override { return "Lemniscate"; }
};

constexpr std::array catalan_names{
    AlgorithmNames{"Lupas", "Lupas Formula", "Lupas Formula       (fastest)"},
    AlgorithmNames{"Huvent", "Huvent's Formula", "Huvent's Formula    (20% slower)"},
};

class zlr_Catalan final : public zlr_ListedConstant {
  public:
    zlr_Catalan() : zlr_ListedConstant(2, catalan_names) {}
    char get_color() const override { return 'B'; }
    std::string get_short_name() const override { return "Catalan"; }
    std::string get_name() const override { return "Catalan's Constant"; }
};

// The least k with 2^k at least X = 10 + 16 ln(2) p, and 2 where X is at most 4.
u32_t brent_mcmillan_exponent(upL_t p) {
    const double x = 10 + 11.090354888959125 * static_cast<double>(p);
    if (x <= 4) return 2;
    u32_t k = 3;
    while (std::ldexp(1.0, static_cast<int>(k)) < x) k++;
    return k;
}

// The Brent-McMillan formula with n = 2^k; algorithm 0 is the refined form, which needs half of n.
class zlr_EulerGamma_Base : public zlr_Constant {
  public:
    explicit zlr_EulerGamma_Base(u32_t exponent) : zlr_Constant(2), exponent_(exponent) {}
    char get_color() const override { return 'B'; }
    std::string get_short_name() const override { return "Euler's Constant"; }
    std::string get_algorithm_short(s32_t algorithm, upL_t) const override {
        if (algorithm == 0) return "Brent-McMillan (Refined)";
        if (algorithm == 1) return "Brent-McMillan";
        return {};
    }
    std::string get_algorithm_name(s32_t algorithm, upL_t) const override {
        const u64_t k = exponent_;
        if (algorithm == 0) return "Brent-McMillan with Refinement ( n = 2^" + to_string_u64(k - 1) + " )";
        if (algorithm == 1) return "Brent-McMillan ( n = 2^" + to_string_u64(k) + " )";
        return {};
    }

  protected:
    u32_t exponent_;
};

class zlr_EulerGamma final : public zlr_EulerGamma_Base {
  public:
    explicit zlr_EulerGamma(upL_t p) : zlr_EulerGamma_Base(brent_mcmillan_exponent(p)) {}
    std::string get_name() const override { return "Euler-Mascheroni Constant"; }
    void set_precision(upL_t p) override { exponent_ = brent_mcmillan_exponent(p); }
};

class zlr_EulerGamma_Override final : public zlr_EulerGamma_Base {
  public:
    explicit zlr_EulerGamma_Override(u64_t exponent) : zlr_EulerGamma_Base(static_cast<u32_t>(exponent)) {}
    std::string get_name() const override { return "Euler-Mascheroni Constant (parameter override)"; }
};

// The root is taken in double precision and the square in wrapping integers, so the largest 64-bit numbers,
// whose root rounds up to 2^32, are no perfect squares.
bool is_perfect_square(u64_t n) {
    const u64_t root = static_cast<u64_t>(std::sqrt(static_cast<double>(n)) + 0.5);
    return root * root == n;
}

}  // namespace

u64_t zlr_Constant::get_max_digits() const {
    return 90'000'000'000'050;
}
char zlr_Constant::get_color() const {
    return 'G';
}
std::string zlr_Constant::get_name() const {
    return get_short_name();
}
std::string zlr_Constant::get_algorithm_name(s32_t algorithm, upL_t p) const {
    return get_algorithm_short(algorithm, p);
}
std::string zlr_Constant::get_algorithm_menu(s32_t algorithm, upL_t p) const {
    return get_algorithm_name(algorithm, p);
}
bool zlr_Constant::get_memory_B(s32_t, upL_t, u64_t, u64_t, upL_t&) const {
    Console::print_error("zlr_Constant::get_memory_B() - Function not implemented");
    return false;
}

bool zlr_Constant::get_memory_S(s32_t, upL_t, u64_t, upL_t, upL_t, u64_t, u64_t&, upL_t&) const {
    Console::print_error("zlr_Constant::get_memory_S() - Function not implemented");
    return false;
}

void zlr_Constant::run_B(s32_t, RunTimeParameters&) const {
    fatal_exit("zlr_Constant::run_B() - Function not implemented");
}

void zlr_Constant::run_S(s32_t, RunTimeParameters&) const {
    fatal_exit("zlr_Constant::run_S() - Function not implemented");
}

bool zlr_Constant::runs_B(s32_t) const {
    return false;
}
bool zlr_Constant::runs_S(s32_t) const {
    return false;
}

void zlr_Constant::set_precision(upL_t) {}

std::unique_ptr<zlr_Constant> make_constant(u32_t id, u64_t parameter, upL_t p) {
    switch (id) {
        case constant_id::sqrt:
            return std::make_unique<zlr_Sqrt>(parameter);
        case constant_id::golden_ratio:
            return std::make_unique<zlr_GoldenRatio>();
        case constant_id::e:
            return std::make_unique<zlr_E>();
        case constant_id::pi:
            return std::make_unique<zlr_Pi>();
        case constant_id::arccoth:
            return std::make_unique<zlr_ArcCoth>(parameter);
        case constant_id::log:
            return std::make_unique<zlr_Log>(parameter, p);
        case constant_id::zeta3:
            return std::make_unique<zlr_Zeta3>();
        case constant_id::lemniscate:
            return std::make_unique<zlr_Lemniscate>();
        case constant_id::catalan:
            return std::make_unique<zlr_Catalan>();
        case constant_id::euler_gamma:
            return std::make_unique<zlr_EulerGamma>(p);
        case constant_id::euler_gamma_override:
            return std::make_unique<zlr_EulerGamma_Override>(parameter);
        default:
            fatal_exit("Unknown Constant ID");
    }
}

const char* check_constant(u64_t id, u64_t parameter) {
    if (id > constant_id::last_selectable) return "Invalid constant, or not yet implemented.";
    if (id == constant_id::sqrt && is_perfect_square(parameter)) return "This is a perfect square.";
    if (id == constant_id::arccoth && !arccoth_parameter_ok(parameter)) return parameter_out_of_range_text;
    if (id == constant_id::log && !log_parameter_ok(parameter)) return parameter_out_of_range_text;
    return nullptr;
}

}  // namespace znp
