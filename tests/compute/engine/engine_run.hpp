// What the tests of stages and formulas share: a run over a block of exactly the promised size, what was
// printed and logged, and reference values.
#pragma once

#include <gmp.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "compute/engine/memory_engine.hpp"
#include "compute/settings/precision.hpp"
#include "console_capture.hpp"
#include "foundation/strings.hpp"
#include "multiply/kernels/residue.hpp"
#include "numbers/float_test_support.hpp"

namespace znp::testing {

// Around the boundaries of words, and sizes of sections, up to what the FFT serves.
inline constexpr u64_t digits_to_test[] = {100, 101, 115, 116,  117,  134,   154,
                                           155, 200, 393, 1000, 5000, 20000, 50000};
inline constexpr u64_t threads_to_test[] = {1, 2, 3, 7, 16};
inline constexpr upL_t reference_guard = 4;  // words

inline RunSettings settings_of(u64_t dec, u64_t threads) {
    RunSettings settings;
    settings.dec = dec;
    settings.hex = hex_digits_for(dec);
    settings.p = precision_for(settings.hex);
    settings.tds = threads;
    return settings;
}

using Stages = std::function<HeapFloat(StageMemory&)>;

// What stages promise that work to the precision of so many digits.
inline upL_t promised_bytes(u64_t dec, u64_t threads, const Stages& stages) {
    return count_bytes(settings_of(dec, threads), 0, stages);
}

// Stages carried out in a run, with a heap over a block of exactly what they promise, or of other bytes. The
// block ends where the heap does: what lies behind it belongs to the sanitizers.
class EngineRun {
  public:
    EngineRun(u64_t dec, u64_t threads, const Stages& stages, upL_t other_bytes = 0)
        : run(settings_of(dec, threads)),
          bytes(other_bytes != 0 ? other_bytes : promised_bytes(dec, threads, stages)),
          stages_(stages),
          block_(bytes / 8) {
        run.tables = all_tables();
        heap_init(run.heap, block_.data(), bytes / 8 * 8);
    }

    void carry_out() {
        printed = console_output([&] { number = stages_(memory); });
    }

    upL_t peak_bytes() const {
        return static_cast<upL_t>(run.heap.peak_top - run.heap.base) +
               heap_entry_bytes * run.heap.peak_active;
    }

    // The log's texts, in order.
    std::vector<std::string> events() const {
        std::vector<std::string> texts;
        const std::string& log = run.events.text();
        for (std::size_t line = 0; line < log.size();) {
            const std::size_t end = log.find("\r\n", line);
            const std::size_t tab = log.rfind('\t', end);
            texts.push_back(log.substr(tab + 1, end - tab - 1));
            line = end + 2;
        }
        return texts;
    }

    RunTimeParameters run;
    StageMemory memory{run};
    const upL_t bytes;
    std::string printed;

  private:
    const Stages stages_;
    std::vector<u64_t> block_;

  public:
    HeapFloat number;  // before the block in the order of destruction
};

// The stages of formula(engine).
template <class Formula>
Stages stages_of(Formula formula) {
    return [=](StageMemory& memory) {
        MemoryEngine engine(memory);
        return formula(engine);
    };
}

// Of an estimate, a tenth and the guard words of short numbers may be left over.
inline void expect_not_wasteful(upL_t estimate, upL_t peak) {
    EXPECT_LE(estimate, peak + estimate / 10 + 16384);
}

// Each text is found behind the one before.
inline bool texts_in_order(const std::string& printed, const std::vector<std::string>& texts) {
    std::size_t position = 0;
    for (const std::string& text : texts) {
        const std::size_t found = printed.find(text, position);
        if (found == std::string::npos) return false;
        position = found + text.size();
    }
    return true;
}

// Tables for products of so many words.
struct Tables {
    explicit Tables(upL_t words)
        : bytes(table_size(64 * words)), memory(make_guarded_array<std::byte>(nullptr, bytes, 64)) {
        build_tables(holder, 64 * words, memory.get());
    }
    upL_t bytes;
    GuardedArray<std::byte> memory;
    TableHolder holder;
};

// The same with twiddle factors of the wrong sign, but for the first ones and what tells about the tables.
// Unless they can be built anew, the fault stays.
struct WrongTables : Tables {
    explicit WrongTables(upL_t words, bool stay_wrong = true) : Tables(words) {
        if (stay_wrong) holder.memory = nullptr;
        for (upL_t at = bytes / 64 * 8; at + 8 <= bytes; at += 8) memory[at + 7] ^= std::byte{0x80};
    }
};

inline upL_t precision_of_digits(u64_t dec) {
    return precision_for(hex_digits_for(dec));
}

// A constant as an integer: floor(value * 2^(64 n)), or one or two less.
class Reference {
  public:
    explicit Reference(upL_t n) : words(n) { mpz_init(z); }
    ~Reference() { mpz_clear(z); }
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;

    // log2 of the error of x in units of 2^(-64 p), p at most `words` less the guard words of the reference.
    double error_log2(const BigFloat& x, upL_t p) const {
        const s64_t low = -static_cast<s64_t>(words);
        std::vector<c64i> limbs(mpz_size(z));
        mpz_export(limbs.data(), nullptr, -1, sizeof(c64i), 0, 0, z);
        const Integer difference =
            value(x, std::min(low, x.get_exp())) -
            (Integer(limbs) << 64 * static_cast<u64_t>(std::max<s64_t>(low - x.get_exp(), 0)));
        if (difference.is_zero()) return -1e300;
        return difference.log2() -
               64.0 * static_cast<double>(std::max(-low, -x.get_exp()) - static_cast<s64_t>(p));
    }

    const upL_t words;
    mpz_t z;
};

// floor(x * 10^dec) modulo 2^61 - 1, x positive.
inline u64_t digit_residue(const BigFloat& x, u64_t dec) {
    mpz_t z, power;
    mpz_init(z);
    mpz_init(power);
    mpz_import(z, x.get_L(), -1, sizeof(cdi), 0, 0, x.get_T());
    mpz_ui_pow_ui(power, 10, dec);
    mpz_mul(z, z, power);
    EXPECT_LT(x.get_exp(), 0);
    mpz_fdiv_q_2exp(z, z, 64 * static_cast<u64_t>(-x.get_exp()));
    mpz_set_ui(power, residue::p);
    mpz_fdiv_r(z, z, power);
    const u64_t result = mpz_get_ui(z);
    mpz_clears(z, power, nullptr);
    return result;
}

}  // namespace znp::testing
