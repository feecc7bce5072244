#include "compute/constants/table_constant.hpp"

#include "compute/settings/precision.hpp"
#include "foundation/fail.hpp"
#include "foundation/fatal.hpp"
#include "foundation/strings.hpp"
#include "multiply/selection.hpp"

namespace znp {

namespace {

// What the query needs to know of a run. Its hexadecimal digits are not known: p words hold at most
// 16 (p - 1).
RunSettings estimated_run(upL_t p, u64_t digits, u64_t threads) {
    RunSettings settings;
    settings.p = p;
    settings.dec = digits;
    settings.hex = 16 * p;
    settings.tds = threads;
    return settings;
}

void check_precision(upL_t p) {
    if (longest_estimated_product(p) <= memory_table<cdi>().back().max_words) return;
    fail(zn_exception(error_code::unspecified, "Internal Error: Maximum Size Exceeded"));
}

}  // namespace

std::string zlr_TableConstant::get_short_name() const {
    if (row_.parameter.rule == ParameterRule::none) return row_.short_name;
    return std::string(row_.short_name) + "(" + to_string_u64(parameter_) + ")";
}

std::string zlr_TableConstant::get_name() const {
    return row_.name == nullptr ? get_short_name() : row_.name;
}

std::string zlr_TableConstant::get_algorithm_short(s32_t algorithm, upL_t) const {
    const Algorithm* const found = find(algorithm);
    return found == nullptr ? "" : found->short_name;
}

std::string zlr_TableConstant::get_algorithm_name(s32_t algorithm, upL_t) const {
    const Algorithm* const found = find(algorithm);
    return found == nullptr ? "" : found->name;
}

std::string zlr_TableConstant::get_algorithm_menu(s32_t algorithm, upL_t) const {
    const Algorithm* const found = find(algorithm);
    return found == nullptr ? "" : found->menu;
}

bool zlr_TableConstant::get_memory_B(s32_t algorithm, upL_t p, u64_t digits, u64_t threads,
                                     upL_t& bytes) const {
    const Algorithm* const found = find(algorithm);
    if (found == nullptr) return false;
    if (p == 0) return true;
    check_precision(p);
    bytes = count_bytes(estimated_run(p, digits, threads), operand_margin,
                        [&](StageMemory& memory) { carry_out(algorithm, memory); });
    return true;
}

bool zlr_TableConstant::runs_B(s32_t algorithm) const {
    return find(algorithm) != nullptr;
}

void zlr_TableConstant::run_B(s32_t algorithm, RunTimeParameters& run) const {
    StageMemory memory(run);
    carry_out(algorithm, memory);
}

void zlr_TableConstant::carry_out(s32_t algorithm, StageMemory& memory) const {
    const Time start = Time::now();
    MemoryEngine engine(memory);
    const Algorithm& found = *find(algorithm);
    const HeapFloat number = found.formula.in_memory(engine, formula_input(algorithm));
    output_B(memory, found.closing_name == nullptr ? row_.closing_name : found.closing_name, start, number);
}

const Algorithm* zlr_TableConstant::find(s32_t algorithm) const {
    if (algorithm < 0 || static_cast<upL_t>(algorithm) >= row_.algorithms.size()) return nullptr;
    return &row_.algorithms[static_cast<upL_t>(algorithm)];
}

std::unique_ptr<zlr_Constant> make_table_constant(const ConstantRow& row, u64_t parameter, upL_t) {
    return std::make_unique<zlr_TableConstant>(row, parameter);
}

}  // namespace znp
