#include "multiply/selection.hpp"

#include <algorithm>
#include <string>

#include "foundation/strings.hpp"
#include "multiply/bkt/bkt_multiplier.hpp"
#include "multiply/fft/fft_multiplier.hpp"
#include "multiply/unavailable_multiplier.hpp"
#include "multiply/vst/vst_multiplier.hpp"
#include "shell/console.hpp"

namespace znp {

namespace {

// Longest products in bits. The first three are limits of the tables, not of the algorithms.
constexpr u64_t bkt_bits = 3712;
constexpr u64_t fft_bits = vst_threshold_bits;
constexpr u64_t hnt_bits = vst_threshold_bits;
constexpr u64_t vst_bits = 0x2400000000000;

template <class word>
struct Objects {
    static constinit const BKTMultiplier<word> BKT;
    static constinit const FFTMultiplier<word> FFT;
    static constinit const UnavailableMultiplier<word> HNT;
    static constinit const VSTMultiplier<word> VST;
};

template <class word>
constinit const BKTMultiplier<word> Objects<word>::BKT{};
template <class word>
constinit const FFTMultiplier<word> Objects<word>::FFT{};
template <class word>
constinit const UnavailableMultiplier<word> Objects<word>::HNT{0x7fff0000000, "HNT", "Hybrid NTT"};
template <class word>
constinit const VSTMultiplier<word> Objects<word>::VST{};

template <class word>
constexpr upL_t words(u64_t bits) {
    return bits / WordTraits<word>::bits;
}

template <class word>
constexpr const multiplier<word>* all_multipliers[] = {&Objects<word>::BKT, &Objects<word>::FFT,
                                                       &Objects<word>::HNT, &Objects<word>::VST};

template <class word>
constexpr SelectionRow<multiplier<word>> memory_rows[] = {
    {words<word>(bkt_bits), &Objects<word>::BKT},
    {words<word>(fft_bits), &Objects<word>::FFT},
    {words<word>(vst_bits), &Objects<word>::VST},
};

template <class word>
constexpr SelectionRow<multiplier<word>> swap_rows[] = {
    {words<word>(hnt_bits), &Objects<word>::HNT},
    {words<word>(vst_bits), &Objects<word>::VST},
};

// Words of 180 trillion digits: longer rows are shown with this length.
template <class word>
constexpr upL_t report_limit = 0;
template <>
constexpr upL_t report_limit<c32i> = 18685845533793;
template <>
constexpr upL_t report_limit<c64i> = 9342922766896;

std::string with_commas(u64_t value) {
    return Console::format_int(value, Console::IntFormat::commas);
}

}  // namespace

template <class word>
SelectionTable<multiplier<word>> memory_table() {
    return memory_rows<word>;
}

template <class word>
SelectionTable<multiplier<word>> swap_table() {
    return swap_rows<word>;
}

template <class word>
std::span<const multiplier<word>* const> multipliers() {
    return all_multipliers<word>;
}

template <class word>
const multiplier<word>* find_multiplier(std::string_view key) {
    for (const multiplier<word>* algorithm : multipliers<word>()) {
        if (algorithm->name == key) return algorithm;
    }
    return nullptr;
}

// The columns end below the words of the heading: words and digits at 20 and 45, then the algorithm.
template <class word>
void print_convolution_table() {
    constexpr double digits_per_word = WordTraits<word>::decimal_digits;
    Console::println(std::string("Convolution Algorithm Table (") + WordTraits<word>::title + ")");
    Console::println("Decimal Digits/word: " + format_printf(32, "%.15f", digits_per_word));
    Console::println("   Maximum Convolution Length  (words/digits)  -  Algorithm");
    for (const auto& row : memory_table<word>()) {
        const upL_t shown = std::min(row.max_words, report_limit<word>);
        const auto digits = static_cast<u64_t>(static_cast<double>(shown) * digits_per_word);
        Console::print_padded_left(20, with_commas(shown));
        Console::print(" / ");
        Console::print_padded_left(22, with_commas(digits));
        Console::print("  -  ");
        Console::print_padded(7, row.algorithm->table_name);
        Console::println(row.algorithm->table_long_name);
    }
}

#define ZNP_INSTANTIATE(word)                                                 \
    template SelectionTable<multiplier<word>> memory_table();                 \
    template SelectionTable<multiplier<word>> swap_table();                   \
    template std::span<const multiplier<word>* const> multipliers();          \
    template const multiplier<word>* find_multiplier<word>(std::string_view); \
    template void print_convolution_table<word>();
ZNP_INSTANTIATE(c32i)
ZNP_INSTANTIATE(c64i)
#undef ZNP_INSTANTIATE

}  // namespace znp
