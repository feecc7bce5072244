// The constants.
#include <algorithm>
#include <limits>

#include "compute/constants/table_constant.hpp"
#include "compute/formulas/e.hpp"
#include "compute/formulas/euler_gamma.hpp"
#include "compute/formulas/log.hpp"
#include "compute/formulas/one_series.hpp"
#include "compute/formulas/pi.hpp"
#include "compute/formulas/square_root.hpp"

namespace znp {

namespace {

constexpr std::string_view fast = "Fast Constants:";
constexpr std::string_view moderate = "Moderate Constants:";
constexpr std::string_view slow = "Slow Constants:";

constexpr Algorithm sqrt_algorithms[] = {
    {"Newton", "Newton's Method", "1st order Newton's Method",
     formula([](auto& engine, u64_t n) { return square_root(engine, n); })},
};

constexpr Algorithm golden_ratio_algorithms[] = {
    {"Newton", "Newton's Method", "1st order Newton's Method",
     formula([](auto& engine, u64_t) { return golden_ratio(engine); })},
};

constexpr Algorithm e_algorithms[] = {
    {"exp(1)", "Taylor Series of exp(1)", "Taylor Series of exp(1)",
     formula([](auto& engine, u64_t) { return e(engine, false); })},
    {"exp(-1)", "Taylor Series of exp(-1)", "Taylor Series of exp(-1)   (same speed)",
     formula([](auto& engine, u64_t) { return e(engine, true); })},
};

// The forms in less memory exist behind the number of algorithms that can be selected.
constexpr Algorithm pi_algorithms[] = {
    {"Chudnovsky", "Chudnovsky Formula", "Chudnovsky Formula      (fastest)\n",
     formula([](auto& engine, u64_t) { return pi(engine, Pi_Chudnovsky(), chudnovsky, false); })},
    {"Ramanujan", "Ramanujan's Formula", "Ramanujan's Formula     (~40% slower)\n",
     formula([](auto& engine, u64_t) { return pi(engine, Pi_Ramanujan(), ramanujan, false); })},
    {"Chudnovsky", "Chudnovsky Formula (reduced memory)",
     "Chudnovsky Formula      (reduced memory)\n"
     "            This form uses alternate parameters: it sums the series in\n"
     "            smaller pieces. It needs less memory, and it is slower.\n",
     formula([](auto& engine, u64_t) { return pi(engine, Pi_Chudnovsky(), chudnovsky, true); })},
    {"Ramanujan", "Ramanujan's Formula (reduced memory)",
     "Ramanujan's Formula     (reduced memory)\n"
     "            This form uses alternate parameters: it sums the series in\n"
     "            smaller pieces. It needs less memory, and it is slower.\n",
     formula([](auto& engine, u64_t) { return pi(engine, Pi_Ramanujan(), ramanujan, true); })},
};

constexpr Algorithm arccoth_algorithms[] = {
    {"Taylor", "Taylor Series", "Taylor Series of ArcCoth(x)",
     formula([](auto& engine, u64_t n) { return arccoth(engine, n); })},
};

// The names in full go on with the number of terms.
constexpr Algorithm log_algorithms[] = {
    {"Machin 1", "Primary Machin-like Formula (", "",
     machin_formula([](auto& engine, const MachinFormula& sum) { return log_by_machin(engine, sum); })},
    {"Machin 2", "Secondary Machin-like Formula (", "",
     machin_formula([](auto& engine, const MachinFormula& sum) { return log_by_machin(engine, sum); })},
};

constexpr Algorithm zeta3_algorithms[] = {
    {"Amdeberhan-Zeiberger 2", "Amdeberhan-Zeiberger Formula 2",
     "Amdeberhan-Zeiberger Formula 2      (fastest)",
     formula([](auto& engine, u64_t) { return zeta3_by_az2(engine); })},
    {"Amdeberhan-Zeiberger 1", "Amdeberhan-Zeiberger Formula 1",
     "Amdeberhan-Zeiberger Formula 1      (slightly slower)",
     formula([](auto& engine, u64_t) { return zeta3_by_az1(engine); })},
};

constexpr Algorithm lemniscate_algorithms[] = {
    {"Gauss", "Gauss formula",
     "Gauss Formula       (fastest)\n\n"
     "            Lemniscate = 8 * ArcSinlemn(1/2) + 4 * ArcSinLemn(7/23)\n",
     formula([](auto& engine, u64_t) { return lemniscate_by_gauss(engine); })},
    {"Sebah", "Sebah's formula",
     "Sebah's Formula     (20% slower)\n\n"
     "            Lemniscate = 8 * ArcSinlemn(2/3) - 4 * ArcSinLemn(7/137)\n",
     formula([](auto& engine, u64_t) { return lemniscate_by_sebah(engine); })},
};

constexpr Algorithm catalan_algorithms[] = {
    {"Lupas", "Lupas Formula", "Lupas Formula       (fastest)",
     formula([](auto& engine, u64_t) { return catalan_by_lupas(engine); })},
    {"Huvent", "Huvent's Formula", "Huvent's Formula    (20% slower)",
     formula([](auto& engine, u64_t) { return catalan_by_huvent(engine); }), "Catalan"},
};

// The refined form needs half of n. The names in full tell n.
constexpr Algorithm euler_gamma_algorithms[] = {
    {"Brent-McMillan (Refined)", "Brent-McMillan with Refinement", "",
     formula([](auto& engine, u64_t k) { return euler_gamma(engine, static_cast<u32_t>(k), true); })},
    {"Brent-McMillan", "Brent-McMillan", "",
     formula([](auto& engine, u64_t k) { return euler_gamma(engine, static_cast<u32_t>(k), false); })},
};

constexpr ConstantRow rows[] = {
    {.id = constant_id::sqrt,
     .keywords = {"sqrt"},
     .short_name = "Sqrt",
     .closing_name = "Square Root",
     .color = 'P',
     .menu_group = fast,
     .menu_line = "Sqrt(n)                                         1.42",
     .parameter = {ParameterRule::no_square, std::numeric_limits<s64_t>::max(), "Square Root of n"},
     .selectable = 1,
     .algorithms = sqrt_algorithms,
     .make = make_table_constant},
    {.id = constant_id::golden_ratio,
     .keywords = {"goldenratio", "phi"},
     .short_name = "Golden Ratio",
     .closing_name = "Golden Ratio",
     .color = 'P',
     .menu_group = fast,
     .menu_line = "Golden Ratio                = 1.618034...       1.42",
     .selectable = 1,
     .algorithms = golden_ratio_algorithms,
     .make = make_table_constant},
    {.id = constant_id::e,
     .keywords = {"e"},
     .short_name = "e",
     .closing_name = "e",
     .color = 'G',
     .menu_group = moderate,
     .menu_line = "e                           = 2.718281...       4.02 / 4.02",
     .selectable = 2,
     .algorithms = e_algorithms,
     .make = make_table_constant},
    {.id = constant_id::pi,
     .keywords = {"pi"},
     .short_name = "Pi",
     .closing_name = "Pi",
     .color = 'G',
     .menu_group = moderate,
     .menu_line = "Pi                          = 3.141592...       12.8 / 19.0",
     .selectable = 2,
     .algorithms = pi_algorithms,
     .make = make_table_constant},
    {.id = constant_id::arccoth,
     .keywords = {"arccoth"},
     .short_name = "ArcCoth",
     .closing_name = "ArcCoth",
     .color = 'G',
     .menu_group = moderate,
     .menu_line = "ArcCoth(n)                                      6.25 - 72.8",
     .parameter = {ParameterRule::from_2_to_high, 4294967295, "ArcCoth(n)"},
     .selectable = 1,
     .algorithms = arccoth_algorithms,
     .make = make_table_constant},
    {.id = constant_id::log,
     .keywords = {"log"},
     .short_name = "Log",
     .closing_name = "Log",
     .color = 'G',
     .menu_group = moderate,
     .menu_line = "Log(n)                                        > 34.2",
     .parameter = {ParameterRule::from_2_to_high, 2147483647, "Log(n)"},
     .selectable = 2,
     .algorithms = log_algorithms,
     .make = make_log},
    {.id = constant_id::zeta3,
     .keywords = {"zeta(3)", "apery"},
     .short_name = "Zeta(3)",
     .name = "Zeta(3) - Apery's Constant",
     .closing_name = "Zeta(3) - Apery's Constant",
     .color = 'G',
     .menu_group = moderate,
     .menu_line = "Zeta(3) (Apery's Constant)  = 1.202056...       61.9 / 64.8",
     .selectable = 2,
     .algorithms = zeta3_algorithms,
     .make = make_table_constant},
    {.id = constant_id::lemniscate,
     .keywords = {"lemniscate"},
     .short_name = "Lemniscate",
     .closing_name = "Lemniscate",
     .color = 'G',
     .menu_group = moderate,
     .menu_line = "Lemniscate                  = 5.244115...       121. / 150.",
     .selectable = 2,
     .algorithms = lemniscate_algorithms,
     .make = make_table_constant},
    {.id = constant_id::catalan,
     .keywords = {"catalan"},
     .short_name = "Catalan",
     .name = "Catalan's Constant",
     .closing_name = "Catalan's Constant",
     .color = 'B',
     .menu_group = slow,
     .menu_line = "Catalan's Constant          = 0.915965...       279. / 313.",
     .selectable = 2,
     .algorithms = catalan_algorithms,
     .make = make_table_constant},
    {.id = constant_id::euler_gamma,
     .keywords = {"gamma"},
     .short_name = "Euler's Constant",
     .name = "Euler-Mascheroni Constant",
     .closing_name = "Euler-Mascheroni Constant",
     .color = 'B',
     .menu_group = slow,
     .menu_line = "Euler-Mascheroni Constant   = 0.577215...       355. / 528.",
     .selectable = 2,
     .algorithms = euler_gamma_algorithms,
     .make = make_euler_gamma},
    {.id = constant_id::euler_gamma_override,
     .keywords = {"brent"},  // reserved: check_constant refuses the id
     .short_name = "Euler's Constant",
     .name = "Euler-Mascheroni Constant (parameter override)",
     .closing_name = "Euler-Mascheroni Constant",
     .color = 'B',
     .parameter = {ParameterRule::none, 63, "Select a parameter:", "n = 2^"},
     .selectable = 2,
     .algorithms = euler_gamma_algorithms,
     .make = make_euler_gamma_override},
};

constexpr bool ids_are_positions() {
    for (upL_t i = 0; i < std::size(rows); i++) {
        if (rows[i].id != i) return false;
    }
    return true;
}
static_assert(ids_are_positions());

}  // namespace

std::span<const ConstantRow> constant_rows() {
    return rows;
}

const ConstantRow* find_constant(std::string_view keyword) {
    if (keyword.empty()) return nullptr;
    const auto found = std::find_if(std::begin(rows), std::end(rows), [&](const ConstantRow& row) {
        return row.keywords[0] == keyword || row.keywords[1] == keyword;
    });
    return found == std::end(rows) ? nullptr : found;
}

}  // namespace znp
