#include "compute/constants/constant.hpp"

#include <cmath>

#include "compute/constants/constant_row.hpp"
#include "foundation/fatal.hpp"
#include "shell/console.hpp"

namespace znp {
namespace {

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
bool zlr_Constant::get_memory_B(s32_t, upL_t p, u64_t, u64_t, upL_t&) const {
    if (p != 0) Console::print_error("zlr_Constant::get_memory_B() - Function not implemented");
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
    const auto rows = constant_rows();
    if (id >= rows.size()) fatal_exit("Unknown Constant ID");
    return rows[id].make(rows[id], parameter, p);
}

const char* check_constant(u64_t id, u64_t parameter) {
    if (id > constant_id::last_selectable) return "Invalid constant, or not yet implemented.";
    const ConstantParameter& row = constant_rows()[id].parameter;
    switch (row.rule) {
        case ParameterRule::none:
            return nullptr;
        case ParameterRule::no_square:
            return is_perfect_square(parameter) ? "This is a perfect square." : nullptr;
        case ParameterRule::from_2_to_high:
            const bool in_range = parameter >= 2 && parameter <= static_cast<u64_t>(row.high);
            return in_range ? nullptr : "Parameter out of range";
    }
    return nullptr;
}

}  // namespace znp
