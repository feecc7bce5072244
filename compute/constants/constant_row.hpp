// ConstantRow: all that the system knows of one constant, as a row of the table in
// compute/constants/table.cpp.
//
// Besides the table nothing has a list of the constants: the menu, the command line and the objects of the
// catalogue take what they need from here.
#pragma once

#include <array>
#include <memory>
#include <span>
#include <string_view>

#include "compute/constants/constant.hpp"
#include "compute/engine/memory_engine.hpp"
#include "series/log_formula/machin_formula.hpp"

namespace znp {

// What a formula needs to know of its constant.
struct FormulaInput {
    u64_t parameter;
    const MachinFormula* sum;  // of Log(n): the terms
};

// The text of a formula as the engines carry it out.
struct Formula {
    HeapFloat (*in_memory)(MemoryEngine& engine, const FormulaInput& input) = nullptr;
};

// Of a text, a lambda (auto& engine, u64_t parameter) without captures; of one (auto& engine, const
// MachinFormula&).
template <class Text>
constexpr Formula formula(Text) {
    return {[](MemoryEngine& engine, const FormulaInput& input) { return Text{}(engine, input.parameter); }};
}
template <class Text>
constexpr Formula machin_formula(Text) {
    return {[](MemoryEngine& engine, const FormulaInput& input) { return Text{}(engine, *input.sum); }};
}

struct Algorithm {
    const char* short_name;
    const char* name;
    const char* menu;
    Formula formula;
    const char* closing_name = nullptr;  // null: that of the constant
};

enum class ParameterRule {
    none,       // any; not part of the constant's name
    no_square,  // any but perfect squares
    from_2_to_high,
};

struct ConstantParameter {
    ParameterRule rule = ParameterRule::none;
    s64_t high = 0;               // the menu takes 2 to high
    const char* title = nullptr;  // of the menu's question; null: it takes 0 without one
    const char* prompt = "n = ";
};

struct ConstantRow {
    u32_t id;
    std::array<std::string_view, 2> keywords;  // on the command line; the second one may be empty
    const char* short_name;                    // without the parameter
    const char* name = nullptr;                // on the screen; null: the short one
    const char* closing_name;                  // of the line that closes a formula
    char color;                                // in the menu, too
    std::string_view menu_group = {};          // empty: not in the menu
    const char* menu_line = nullptr;
    ConstantParameter parameter = {};
    s32_t selectable;  // algorithms that can be chosen: the first ones
    std::span<const Algorithm> algorithms;
    std::unique_ptr<zlr_Constant> (*make)(const ConstantRow& row, u64_t parameter, upL_t p);
};

// In the order of the ids.
std::span<const ConstantRow> constant_rows();

// Null for an unknown keyword.
const ConstantRow* find_constant(std::string_view keyword);

}  // namespace znp
