#include "series/log_formula/formula_tables.hpp"

#include <algorithm>

namespace znp {

namespace {

#include "series/log_formula/base_formulas.inc"
#include "series/log_formula/known_formulas.inc"
#include "series/log_formula/relations.inc"

constexpr BaseFormulas primary_bases[] = {{4, primary_arguments_4, primary_coefficients_4},
                                          {5, primary_arguments_5, primary_coefficients_5},
                                          {6, primary_arguments_6, primary_coefficients_6},
                                          {7, primary_arguments_7, primary_coefficients_7},
                                          {8, primary_arguments_8, primary_coefficients_8}};
constexpr BaseFormulas secondary_bases[] = {{4, secondary_arguments_4, secondary_coefficients_4},
                                            {5, secondary_arguments_5, secondary_coefficients_5},
                                            {6, secondary_arguments_6, secondary_coefficients_6},
                                            {7, secondary_arguments_7, secondary_coefficients_7},
                                            {8, secondary_arguments_8, secondary_coefficients_8}};

// The primes behind x, ascending, all of the base.
bool lies_within(const FormulaRow& relation, upL_t k) {
    return relation.count == 1 || relation.arguments[relation.count - 1] <= base_primes[k - 1];
}

auto rows_of(std::span<const FormulaRow> table, u64_t n) {
    return std::ranges::equal_range(table, n, {}, &FormulaRow::n);
}

}  // namespace

std::span<const FormulaRow> known_formulas(FormulaKind which) {
    if (which == FormulaKind::primary) return primary_known;
    return secondary_known;
}

const FormulaRow* find_known_formula(FormulaKind which, u64_t n) {
    const auto rows = rows_of(known_formulas(which), n);
    return rows.empty() || n == 0 ? nullptr : &rows.front();
}

std::span<const FormulaRow> relations(FormulaKind which) {
    if (which == FormulaKind::primary) return primary_relations;
    return secondary_relations;
}

const FormulaRow* find_relation(FormulaKind which, u64_t prime, upL_t k) {
    const FormulaRow* found = nullptr;
    for (const FormulaRow& row : rows_of(relations(which), prime)) {
        if (lies_within(row, k)) found = &row;
    }
    return found;
}

const BaseFormulas& base_formulas(FormulaKind which, upL_t k) {
    return (which == FormulaKind::primary ? primary_bases : secondary_bases)[k - BaseFormulas::least_k];
}

upL_t base_size_for(u64_t prime) {
    upL_t k = BaseFormulas::least_k;
    while (k < BaseFormulas::most_k && prime > base_primes[k - 1]) k++;
    return k;
}

}  // namespace znp
