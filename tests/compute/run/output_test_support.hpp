// What the tests of the output stages share: numbers and their digits by an independent library, a run whose
// heap has exactly the promised bytes, and exact stand-ins for the conversion and its verification.
#pragma once

#include <gmp.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "compute/run/digit_output.hpp"
#include "compute/settings/precision.hpp"
#include "console_capture.hpp"
#include "file_faults.hpp"
#include "foundation/heap_block.hpp"
#include "multiply/kernels/digit_conversion.hpp"
#include "multiply/kernels/residue.hpp"

namespace znp::testing {

struct Mpz {
    Mpz() { mpz_init(z); }
    explicit Mpz(u64_t x) { mpz_init_set_ui(z, x); }
    Mpz(const cdi* T, upL_t L) : Mpz() { mpz_import(z, L, -1, sizeof(cdi), 0, 0, T); }
    ~Mpz() { mpz_clear(z); }
    Mpz(const Mpz&) = delete;
    Mpz& operator=(const Mpz&) = delete;

    std::vector<cdi> words(upL_t L) const {
        std::vector<cdi> result(L);
        if (mpz_sizeinbase(z, 2) > 64 * L) std::abort();
        mpz_export(result.data(), nullptr, -1, sizeof(cdi), 0, 0, z);
        return result;
    }

    mpz_t z;
};

// A number of at most one word in front of the point.
struct Number {
    std::vector<cdi> words;
    s64_t exp;
    BigFloat view() const { return {words.data(), words.size(), exp}; }
};

// `fraction` words behind the point and one in front of it.
inline Number square_root(u64_t n, upL_t fraction) {
    Mpz x(n);
    mpz_mul_2exp(x.z, x.z, 128 * fraction);
    mpz_sqrt(x.z, x.z);
    return {x.words(fraction + 1), -static_cast<s64_t>(fraction)};
}

// (N + numerator / denominator) / 10^dec, rounded down to the words.
inline Number decimal_number(const std::string& N, u64_t numerator, u64_t denominator, u64_t dec,
                             upL_t fraction) {
    Mpz x;
    mpz_set_str(x.z, N.c_str(), 10);
    mpz_mul_ui(x.z, x.z, denominator);
    mpz_add_ui(x.z, x.z, numerator);
    mpz_mul_2exp(x.z, x.z, 64 * fraction);
    Mpz power;
    mpz_ui_pow_ui(power.z, 10, dec);
    mpz_mul_ui(power.z, power.z, denominator);
    mpz_fdiv_q(x.z, x.z, power.z);
    return {x.words(fraction + 1), -static_cast<s64_t>(fraction)};
}

// floor(number * base^count).
inline void scaled(Mpz& out, const Number& number, int base, u64_t count) {
    const Mpz mantissa(number.words.data(), number.words.size());
    mpz_ui_pow_ui(out.z, static_cast<unsigned long>(base), count);
    mpz_mul(out.z, out.z, mantissa.z);
    mpz_fdiv_q_2exp(out.z, out.z, static_cast<u64_t>(-number.exp) * 64);
}

// "3.14...": the file's text.
inline std::string text_of(const Number& number, int base, u64_t count) {
    Mpz x;
    scaled(x, number, base, count);
    std::unique_ptr<char, void (*)(void*)> raw(mpz_get_str(nullptr, base, x.z), std::free);
    std::string text = raw.get();
    if (text.size() <= count) text.insert(0, count + 1 - text.size(), '0');
    return text.substr(0, text.size() - count) + '.' + text.substr(text.size() - count);
}

inline u64_t residue_of(const Number& number, u64_t dec) {
    Mpz x;
    scaled(x, number, 10, dec);
    return mpz_fdiv_ui(x.z, residue::p);
}

// ---- Exact stand-ins --------------------------------------------------------------------------------------

inline int exact_conversion(const BasicParameters&, cdi radix, cdi* out, upL_t n, const cdi* fraction,
                            upL_t L, StatusLine*) {
    Mpz x(fraction, L);
    Mpz power(radix);
    mpz_pow_ui(power.z, power.z, n);
    mpz_mul(x.z, x.z, power.z);
    mpz_fdiv_q_2exp(x.z, x.z, 64 * L);
    for (upL_t i = 0; i < n; ++i) out[i] = mpz_fdiv_q_ui(x.z, x.z, radix);
    return 0;
}

inline int exact_verification(const BasicParameters&, cdi radix, u64_t e, cdi integer, const cdi* fraction,
                              upL_t L, u64_t& residue, StatusLine*) {
    std::vector<cdi> words(fraction, fraction + L);
    words.push_back(integer);
    Mpz x(words.data(), words.size());
    Mpz power(radix);
    mpz_pow_ui(power.z, power.z, e);
    mpz_mul(x.z, x.z, power.z);
    mpz_fdiv_q_2exp(x.z, x.z, 64 * L);
    residue = mpz_fdiv_ui(x.z, residue::p);
    return 0;
}

class UseCalls {
  public:
    UseCalls(decltype(ConversionCalls::conversion) conversion,
             decltype(ConversionCalls::verification) verification,
             decltype(ConversionCalls::writer) writer = open_digit_writer)
        : saved_(conversion_calls) {
        conversion_calls = {conversion, verification, writer};
    }
    ~UseCalls() { conversion_calls = saved_; }
    UseCalls(const UseCalls&) = delete;
    UseCalls& operator=(const UseCalls&) = delete;

  private:
    const ConversionCalls saved_;
};

// ---- A run ------------------------------------------------------------------------------------------------

inline RunSettings output_settings(u64_t dec, u64_t hex, u64_t threads, const std::wstring& path = {}) {
    RunSettings settings;
    settings.short_name = settings.name = std::string(1, 'X');
    settings.algorithm_short = settings.algorithm_name = std::string(1, 'Y');
    settings.p = precision_for(hex_digits_for(dec));
    settings.dec = dec;
    settings.hex = hex;
    settings.path = path;
    settings.tds = threads;
    return settings;
}

// What the stages promise.
inline upL_t write_hex_bytes(u64_t hex) {
    return count_bytes(output_settings(100, hex, 1), 0,
                       [](StageMemory& memory) { write_hex(memory, BigFloat()); });
}
inline upL_t conversion_bytes(u64_t dec, u64_t threads) {
    return count_bytes(output_settings(dec, 0, threads), 0,
                       [](StageMemory& memory) { convert_and_write_B(memory, BigFloat()); });
}
inline upL_t output_bytes(u64_t dec, u64_t hex, u64_t threads) {
    return std::max(write_hex_bytes(hex), conversion_bytes(dec, threads));
}

// The state of a run of a constant called "X", its files in a folder of its own.
class OutputRun {
  public:
    explicit OutputRun(u64_t dec, u64_t threads = 1) : OutputRun(dec, hex_digits_for(dec), threads) {}
    OutputRun(u64_t dec, u64_t hex, u64_t threads, upL_t bytes = 0, const std::wstring& other_path = {})
        : run(output_settings(dec, hex, threads, other_path.empty() ? folder.wide_path() : other_path)),
          block_(bytes != 0 ? bytes : output_bytes(dec, hex, threads)) {
        heap_init(run.heap, block_.heap.base, static_cast<upL_t>(block_.heap.end - block_.heap.base));
    }

    // Nothing is left behind.
    bool clean() const { return run.heap.active == 0 && !run.stopwatch.running(); }
    upL_t peak_bytes() const {
        return static_cast<upL_t>(run.heap.peak_top - run.heap.base) + 16 * run.heap.peak_active;
    }
    std::string decimal_file() const { return folder.path() + "/X - Dec - Y.txt"; }
    std::string hexadecimal_file() const { return folder.path() + "/X - Hex - Y.txt"; }

    const TemporaryFolder folder;
    RunTimeParameters run;
    StageMemory memory{run};

  private:
    HeapBlock block_;
};

// The number as formulas leave it: p + 2 words.
inline Number root(const OutputRun& state, u64_t n) {
    return square_root(n, state.run.settings.p + 1);
}

// Both stages; what they print.
inline std::string output(OutputRun& state, const Number& number) {
    return console_output([&] {
        write_hex(state.memory, number.view());
        convert_and_write_B(state.memory, number.view());
    });
}

inline void expect_counts(const auto& histogram, const std::string& digits) {
    for (upL_t d = 0; d < histogram.size(); ++d) {
        const char c = "0123456789abcdef"[d];
        EXPECT_EQ(histogram[d], static_cast<u64_t>(std::count(digits.begin(), digits.end(), c))) << c;
    }
}

inline void expect_digits(const OutputRun& state, const Number& number) {
    const RunTimeParameters& run = state.run;
    const RunSettings& settings = run.settings;
    const std::string decimal = text_of(number, 10, settings.dec);
    EXPECT_EQ(file_text(state.decimal_file()), decimal);
    expect_counts(run.decimal_histogram, decimal.substr(decimal.find('.') + 1));
    EXPECT_EQ(run.binary_hash, residue_of(number, settings.dec));
    EXPECT_EQ(run.last_digits, decimal.substr(decimal.find('.') + 1 + run.last_digits_index));
    if (settings.hex != 0) {
        const std::string hexadecimal = text_of(number, 16, settings.hex);
        EXPECT_EQ(file_text(state.hexadecimal_file()), hexadecimal);
        expect_counts(run.hexadecimal_histogram, hexadecimal.substr(hexadecimal.find('.') + 1));
    } else {
        EXPECT_EQ(file_text(state.hexadecimal_file()), "");
    }
    EXPECT_FALSE(std::filesystem::exists(state.decimal_file() + ".unverified"));
    EXPECT_FALSE(std::filesystem::exists(state.hexadecimal_file() + ".unverified"));
    EXPECT_TRUE(state.clean());
}

}  // namespace znp::testing
