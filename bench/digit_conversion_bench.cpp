// The digit conversions: digits a second, with words and digits together in the second-level cache.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include "multiply/kernels/digit_conversion.hpp"
#include "multiply/kernels/digit_conversion_reference.hpp"

namespace znp::CVN {
namespace {

constexpr upL_t cache_bytes = upL_t{256} << 10;

struct Digits {
    upL_t L;
    std::vector<cdi> words;
    std::vector<char> digits;

    explicit Digits(upL_t digits_per_word)
        : L(cache_bytes / (sizeof(cdi) + digits_per_word)), words(L), digits(L * digits_per_word) {
        std::mt19937_64 rng(1);
        for (cdi& word : words) word = digits_per_word == decimal_digits ? rng() % decimal_base : rng();
        if (digits_per_word == decimal_digits) {
            cdi_to_raw(digits.data(), words.data(), L);
        } else {
            u64_to_raw(digits.data(), words.data(), L);
        }
    }
    void report(benchmark::State& state) const {
        state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(digits.size()));
    }
};

void to_digits(benchmark::State& state, upL_t digits_per_word, void (*convert)(char*, const cdi*, upL_t)) {
    Digits d(digits_per_word);
    for (auto _ : state) {
        convert(d.digits.data(), d.words.data(), d.L);
        benchmark::ClobberMemory();
    }
    d.report(state);
}

void to_words(benchmark::State& state, upL_t digits_per_word, void (*convert)(cdi*, const char*, upL_t)) {
    Digits d(digits_per_word);
    for (auto _ : state) {
        convert(d.words.data(), d.digits.data(), d.L);
        benchmark::ClobberMemory();
    }
    d.report(state);
}

// In place there and back again, so that each round starts from valid digits: two passes a round.
void text_and_back(benchmark::State& state, upL_t digits_per_word, void (*to_str)(char*, upL_t),
                   bool (*to_raw)(char*, upL_t)) {
    Digits d(digits_per_word);
    for (auto _ : state) {
        to_str(d.digits.data(), d.digits.size());
        benchmark::ClobberMemory();
        benchmark::DoNotOptimize(to_raw(d.digits.data(), d.digits.size()));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(2 * state.iterations() * static_cast<std::int64_t>(d.digits.size()));
}

BENCHMARK_CAPTURE(to_digits, u64_to_raw, hexadecimal_digits, u64_to_raw);
BENCHMARK_CAPTURE(to_digits, u64_to_str, hexadecimal_digits, u64_to_str);
BENCHMARK_CAPTURE(to_digits, u64_to_str_reference, hexadecimal_digits, u64_to_str_reference);
BENCHMARK_CAPTURE(to_words, raw_to_u64, hexadecimal_digits, raw_to_u64);
BENCHMARK_CAPTURE(to_words, raw_to_u64_reference, hexadecimal_digits, raw_to_u64_reference);
BENCHMARK_CAPTURE(to_digits, cdi_to_raw, decimal_digits, cdi_to_raw);
BENCHMARK_CAPTURE(to_digits, cdi_to_str, decimal_digits, cdi_to_str);
BENCHMARK_CAPTURE(to_digits, cdi_to_str_reference, decimal_digits, cdi_to_str_reference);
BENCHMARK_CAPTURE(to_words, raw_to_cdi, decimal_digits, raw_to_cdi);
BENCHMARK_CAPTURE(to_words, raw_to_cdi_reference, decimal_digits, raw_to_cdi_reference);
BENCHMARK_CAPTURE(text_and_back, hex, hexadecimal_digits, hex_raw_to_str, hex_str_to_raw);
BENCHMARK_CAPTURE(text_and_back, hex_reference, hexadecimal_digits, hex_raw_to_str_reference,
                  hex_str_to_raw_reference);
BENCHMARK_CAPTURE(text_and_back, dec, decimal_digits, dec_raw_to_str, dec_str_to_raw);
BENCHMARK_CAPTURE(text_and_back, dec_reference, decimal_digits, dec_raw_to_str_reference,
                  dec_str_to_raw_reference);

}  // namespace
}  // namespace znp::CVN

BENCHMARK_MAIN();
