// Which algorithm serves which product length.
#pragma once

#include <span>
#include <string_view>

#include "multiply/multiplier.hpp"

namespace znp {

// Above this product length the large transform takes over from the floating-point FFT and the hybrid NTT. A
// setting in its own right: the tables and the twiddle builder follow it.
inline constexpr u64_t vst_threshold_bits = 0xa0040;

template <class word>
struct ConvolutionRow {
    upL_t max_words;  // longest product of this row
    const multiplier<word>* algorithm;
};

// Sorted by length. Constants, usable before main.
template <class word>
std::span<const ConvolutionRow<word>> memory_table();
template <class word>
std::span<const ConvolutionRow<word>> swap_table();

// The first row with max_words >= L; none: the generic exception, code size_beyond_tables.
template <class word>
const ConvolutionRow<word>& select_row(std::span<const ConvolutionRow<word>> table, upL_t L);
template <class word>
const multiplier<word>& select(std::span<const ConvolutionRow<word>> table, upL_t L) {
    return *select_row(table, L).algorithm;
}

// Bytes of a work buffer with which every product of up to L words can be made by the table: the largest need
// over the shorter rows, each at its own longest product, and the row of L at L. use_mulp asks for
// mulp_bytes. A row whose algorithm has no parameters for its length is skipped.
template <class word>
upL_t work_bytes_over(std::span<const ConvolutionRow<word>> table, upL_t L, u64_t threads, bool use_mulp);

// All multipliers of a word family in the order BKT, FFT, HNT, VST; and by key, null if there is none.
template <class word>
std::span<const multiplier<word>* const> multipliers();
template <class word>
const multiplier<word>* find_multiplier(std::string_view key);

// "Convolution Algorithm Table (..-bit Word)" on the console: the memory table in words and digits.
template <class word>
void print_convolution_table();

}  // namespace znp
