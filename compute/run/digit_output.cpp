#include "compute/run/digit_output.hpp"

#include <algorithm>
#include <memory>
#include <string>

#include "compute/run/recovery.hpp"
#include "digits/digit_count.hpp"
#include "digits/digit_hash.hpp"
#include "digits/digit_writer.hpp"
#include "foundation/fail.hpp"
#include "foundation/fatal.hpp"
#include "foundation/strings.hpp"
#include "multiply/kernels/digit_conversion.hpp"
#include "multiply/kernels/preview_string.hpp"
#include "multiply/kernels/residue.hpp"
#include "shell/console.hpp"

namespace znp {

constinit ConversionCalls conversion_calls{convert, power_check, open_digit_writer};

namespace {

constexpr const char* output_failure = "Digit Output Failed";

[[noreturn]] void checksum_mismatch(const std::string& failure) {
    fatal_exit(failure + ": Checksum Mismatch");
}

void reattempt_after(RunTimeParameters& run, const std::string& failure) {
    begin_reattempt(run, failure + " - Reattempting...");
}

// ---- The number -------------------------------------------------------------------------------------------

struct Parts {
    cdi integer;
    const cdi* fraction;  // least significant word first
    upL_t L;
    BigFloat all;  // the number itself
};

// Behind the last use of the number: what was made from it was made from the words that were computed.
void check_number(const RunTimeParameters& run, const Parts& number) {
    if (number.all.hash_error(run.settings.tds) != 0) checksum_mismatch("Computed Number Damaged");
}

// The number in front of the point and behind it. A number of too few words would give wrong last digits.
Parts parts_of(const RunTimeParameters& run, const BigFloat& number, upL_t least_words) {
    const s64_t mag = number.get_mag();
    if (number.get_sign() <= 0 || mag < 0 || mag > 1) fatal_exit("Number is out of range.");
    const upL_t integer_words = static_cast<upL_t>(mag);
    const upL_t L = number.get_L() - integer_words;
    if (L < least_words) {
        assert_failure(fatal_category::invalid_parameters, L"BigFloat", L"Fewer words than digits need.");
    }
    const upL_t used = std::min(L, most_fraction(run.settings.p));
    return {number.word_at(0), number.get_T() + (L - used), used, number};
}

// ---- Files ------------------------------------------------------------------------------------------------

// Words of digits, of which the top ones go to a file behind the integer part.
struct DigitWords {
    u64_t radix;
    u64_t count;  // of wanted digits
    cdi integer;
    const cdi* T;
    upL_t L;

    u64_t hash() const { return digit_hash_of_words(radix, integer, T, L, count); }
};

std::unique_ptr<DigitWriter> write_digits(const RunSettings& settings, const DigitWords& words,
                                          const std::string& first_digits, char* digits) {
    const DigitFileParameters parameters{settings.short_name, settings.algorithm_short, settings.path,
                                         settings.digits_per_file, nullptr};
    std::unique_ptr<DigitWriter> file = conversion_calls.writer(parameters, words.radix, first_digits);
    file->write(digits, words.count);
    file->close();
    return file;
}

// Writes the file until it holds digits of the hash, which the words had when they were made: once more, if
// the words still have it, and otherwise returns null. make() fills the buffer with digits and returns the
// first ones as text; announce() has told the stage, and does so again. The file is closed and has not got
// its name.
template <class Announce, class Make>
std::unique_ptr<DigitWriter> write_until_right(RunTimeParameters& run, const DigitWords& words, u64_t hash,
                                               char* digits, Announce announce, Make make) {
    for (bool repeated = false;; repeated = true) {
        const std::string first_digits = make();
        std::unique_ptr<DigitWriter> file = write_digits(run.settings, words, first_digits, digits);
        if (file->holds(words.count, hash)) {
            Console::print(Console::format_int(words.count, Console::IntFormat::commas), 'G');
            Console::println("  digits written", 'w');
            return file;
        }
        Console::print_newline();
        if (words.hash() != hash) return nullptr;
        if (repeated) checksum_mismatch(output_failure);
        reattempt_after(run, output_failure);
        announce();
    }
}

// ---- Decimal ----------------------------------------------------------------------------------------------

// Calls the attempt until it gives true; says so, on the console and in the log, after each other one. A
// check inside that throws is such a failure as well, but two in a row are thrown on.
template <class Attempt>
void repeat_until_right(RunTimeParameters& run, StatusLine& status, const std::string& failure,
                        Attempt attempt) {
    for (bool thrown = false;;) {
        try {
            if (attempt()) return;
            thrown = false;
        } catch (const zn_exception&) {
            if (thrown) throw;
            thrown = true;
        }
        status.erase();
        reattempt_after(run, failure);
    }
}

// The digits are made from the words without looking at them, so a word beyond the radix counts as a failure.
void convert_fraction(StageMemory& memory, const Parts& number, cdi* words, upL_t w) {
    const upL_t bytes = cbr_table_size(CVN::decimal_base, w, memory.threads());
    if (bytes == ~upL_t{0}) fail(zn_exception(error_code::size_beyond_tables));
    const auto work = memory.work(bytes);
    memory.carry_out([&](RunTimeParameters& run) {
        run.stopwatch.start();
        StatusLine status;
        status.set_label("Base Converting: ");
        const BasicParameters bp = run.arithmetic(work.get(), work.size);
        repeat_until_right(run, status, "Radix Conversion Failed", [&] {
            return conversion_calls.conversion(bp, CVN::decimal_base, words, w, number.fraction, number.L,
                                               &status) == 0 &&
                   std::all_of(words, words + w, [](cdi word) { return word < CVN::decimal_base; });
        });
        Console::print_elapsed(status, 'Y');
        run.stopwatch.stop();
    });
}

// The last digits for the closing report: all of up to 100, otherwise 51 to 100, from a multiple of 50 on.
void keep_last_digits(RunTimeParameters& run, const char* digits) {
    const u64_t dec = run.settings.dec;
    run.last_digits_index = dec <= 100 ? 0 : (dec - 51) / 50 * 50;
    run.last_digits.assign(digits + run.last_digits_index, digits + dec);
    CVN::dec_raw_to_str(run.last_digits.data(), run.last_digits.size());
}

// Null in a count, and if the words have changed since they were made, when their hash was binary_hash.
std::unique_ptr<DigitWriter> write_decimal(StageMemory& memory, const DigitWords& words) {
    std::unique_ptr<DigitWriter> file;
    const auto digits = memory.array<char>(CVN::decimal_digits * words.L);
    memory.carry_out([&](RunTimeParameters& run) {
        const auto announce = [&] {
            Console::print("\nWriting Decimal Digits:   ");
            run.events.add("Writing Decimal Digits");
        };
        announce();
        file = write_until_right(run, words, run.binary_hash, digits.get(), announce, [&] {
            CVN::cdi_to_raw(digits.get(), words.T, words.L);
            keep_last_digits(run, digits.get());
            std::array<u64_t, 16> counts{};
            count_digits(counts, digits.get(), words.count);
            std::copy_n(counts.begin(), run.decimal_histogram.size(), run.decimal_histogram.begin());
            return CVN::preview_string_dec(words.count, words.T + words.L, words.L, words.integer);
        });
    });
    return file;
}

u64_t residue_of_number(RunTimeParameters& run, const BasicParameters& bp, const Parts& number) {
    StatusLine status;
    u64_t result = 0;
    repeat_until_right(run, status, "Verification Failed", [&] {
        return conversion_calls.verification(bp, 10, run.settings.dec, number.integer, number.fraction,
                                             number.L, result, &status) == 0;
    });
    Console::print_elapsed(status, 'Y');
    return result;
}

// Conversion and verification cut the number at different words, so that one may come out one higher.
bool agree(u64_t R, u64_t B) {
    return R == B || residue::add(R, 1) == B || residue::add(B, 1) == R;
}

// Whether the digits, whose residue binary_hash is, are those of the number.
bool verify(StageMemory& memory, const Parts& number) {
    bool right = true;
    const auto work = memory.work(power_check_size(10, memory.settings().dec, memory.threads()));
    memory.carry_out([&](RunTimeParameters& run) {
        Console::print("\nVerifying Base Conversion...");
        run.events.add("Verifying Base Conversion");
        Console::print_newline();
        const u64_t R = run.binary_hash;
        const u64_t B = residue_of_number(run, run.arithmetic(work.get(), work.size), number);
        right = agree(R, B);
        if (right) return;
        Console::println("R = " + to_string_u64(R));
        Console::println("B = " + to_string_u64(B));
    });
    return right;
}

// From the number to the file under its name. What failed, if it is worth another attempt; otherwise empty,
// as in a count. Work buffer and digits come one after the other beside the decimal words, the verification
// alone.
std::string make_decimal_file(StageMemory& memory, const Parts& number) {
    std::unique_ptr<DigitWriter> file;
    bool words_are_whole = true;
    {
        const u64_t dec = memory.settings().dec;
        const upL_t w = decimal_words(dec);
        const auto memory_of_words = memory.array<cdi>(w);
        convert_fraction(memory, number, memory_of_words.get(), w);
        const DigitWords words{10, dec, number.integer, memory_of_words.get(), w};
        memory.carry_out([&](RunTimeParameters& run) { run.binary_hash = words.hash(); });
        file = write_decimal(memory, words);
        memory.carry_out([&](RunTimeParameters&) { words_are_whole = file != nullptr; });
    }
    if (!words_are_whole) return output_failure;
    const bool right = verify(memory, number);
    memory.carry_out([&](RunTimeParameters& run) {
        check_number(run, number);
        if (right) file->publish();
    });
    return right ? std::string() : "Base Conversion Failed";
}

}  // namespace

void write_hex(StageMemory& memory, const BigFloat& number) {
    const u64_t hex = memory.settings().hex;
    if (hex == 0) return;
    const upL_t w = hexadecimal_words(hex);
    const auto digits = memory.array<char>(CVN::hexadecimal_digits * w);
    memory.carry_out([&](RunTimeParameters& run) {
        const auto announce = [&] {
            Console::print("\nWriting Hexadecimal Digits:   ");
            run.events.add("Writing hexadecimal Digits");
        };
        announce();
        const Parts parts = parts_of(run, number, std::max(w, least_fraction(run.settings.p)));
        const cdi* const end = parts.fraction + parts.L;
        const DigitWords words{16, hex, parts.integer, end - w, w};
        const auto file = write_until_right(run, words, words.hash(), digits.get(), announce, [&] {
            CVN::u64_to_raw(digits.get(), words.T, w);
            run.hexadecimal_histogram = {};
            count_digits(run.hexadecimal_histogram, digits.get(), hex);
            return CVN::preview_string_hex(hex, end, parts.L, parts.integer);
        });
        check_number(run, parts);
        if (file == nullptr) checksum_mismatch(output_failure);
        file->publish();
    });
}

void convert_and_write_B(StageMemory& memory, const BigFloat& number) {
    Parts parts{};
    memory.carry_out([&](RunTimeParameters& run) {
        run.events.add("Base Converting");
        Console::print("\nBase Converting:\n");
        run.take_snapshot();
        parts = parts_of(run, number, least_fraction(run.settings.p));
    });
    for (bool repeated = false;; repeated = true) {
        const std::string failure = make_decimal_file(memory, parts);
        if (failure.empty()) return;
        if (repeated) checksum_mismatch(failure);
        memory.carry_out([&](RunTimeParameters& run) { reattempt_after(run, failure); });
    }
}

}  // namespace znp
