// Which algorithm serves which product length.
#pragma once

#include <algorithm>
#include <span>
#include <string_view>

#include "foundation/fail.hpp"
#include "multiply/multiplier.hpp"

namespace znp {

// Above this product length the large transform takes over from the floating-point FFT and the hybrid NTT. A
// setting in its own right: the tables and the twiddle builder follow it.
inline constexpr u64_t vst_threshold_bits = 0xa0040;

// A row of a table, which is sorted by length. Algorithm is what a table's users ask: multiplier<word> for
// products in memory.
template <class Algorithm>
struct SelectionRow {
    upL_t max_words;  // longest product of this row
    const Algorithm* algorithm;
};
template <class Algorithm>
using SelectionTable = std::span<const SelectionRow<Algorithm>>;

// The first row with max_words >= L; none: the generic exception, code size_beyond_tables.
template <class Algorithm>
const SelectionRow<Algorithm>& select_row(SelectionTable<Algorithm> table, upL_t L) {
    for (const SelectionRow<Algorithm>& row : table) {
        if (row.max_words >= L) return row;
    }
    fail(zn_exception(error_code::size_beyond_tables));
}
template <class Algorithm>
const Algorithm& select(SelectionTable<Algorithm> table, upL_t L) {
    return *select_row(table, L).algorithm;
}

// What suffices for every product of up to L words: the largest need(algorithm, length) over the shorter
// rows, each at its own longest product, and the row of L at L. A row whose algorithm has no parameters for
// its length is skipped.
template <class Algorithm, class Need>
upL_t largest_need(SelectionTable<Algorithm> table, upL_t L, const Need& need) {
    const SelectionRow<Algorithm>* const last = &select_row(table, L);
    upL_t largest = 0;
    for (const SelectionRow<Algorithm>* row = table.data(); row <= last; ++row) {
        try {
            largest = std::max(largest, need(*row->algorithm, std::min(row->max_words, L)));
        } catch (const InvalidTransformParametersException&) {
            // The algorithm has no transform so short: it does not serve such products, nor needs anything.
        }
    }
    return largest;
}

// Constants, usable before main.
template <class word>
SelectionTable<multiplier<word>> memory_table();
template <class word>
SelectionTable<multiplier<word>> swap_table();

// All multipliers of a word family in the order BKT, FFT, HNT, VST; and by key, null if there is none.
template <class word>
std::span<const multiplier<word>* const> multipliers();
template <class word>
const multiplier<word>* find_multiplier(std::string_view key);

// "Convolution Algorithm Table (..-bit Word)" on the console: the memory table in words and digits.
template <class word>
void print_convolution_table();

}  // namespace znp
