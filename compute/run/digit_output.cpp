#include "compute/run/digit_output.hpp"

#include <algorithm>
#include <string>

#include "digits/digit_count.hpp"
#include "digits/digit_writer.hpp"
#include "foundation/fail.hpp"
#include "foundation/fatal.hpp"
#include "foundation/strings.hpp"
#include "multiply/kernels/digit_conversion.hpp"
#include "multiply/kernels/preview_string.hpp"
#include "multiply/kernels/residue.hpp"
#include "shell/console.hpp"

namespace znp {

constinit ConversionCalls conversion_calls{convert, power_check};

namespace {

struct Parts {
    cdi integer;
    const cdi* fraction;  // least significant word first
    upL_t L;
};

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
    return {number.word_at(0), number.get_T() + (L - used), used};
}

// Calls the attempt until it gives true; says so, on the console and in the log, after each other one.
template <class Attempt>
void repeat_until_right(RunTimeParameters& run, StatusLine& status, const std::string& failure,
                        Attempt attempt) {
    while (!attempt()) {
        status.erase();
        Console::println(failure, 'R');
        Console::set_color('w');
        run.events.add(failure);
    }
}

void write_digits(const RunTimeParameters& run, u64_t radix, const std::string& first_digits, char* digits,
                  u64_t count) {
    const RunSettings& settings = run.settings;
    const DigitFileParameters parameters{settings.short_name, settings.algorithm_short, settings.path,
                                         settings.digits_per_file, nullptr};
    const std::unique_ptr<DigitWriter> writer = open_digit_writer(parameters, radix, first_digits);
    writer->write(digits, count);
    writer->close();
    Console::print(Console::format_int(count, Console::IntFormat::commas), 'G');
    Console::println("  digits written", 'w');
}

// ---- Decimal ----------------------------------------------------------------------------------------------

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
        repeat_until_right(run, status, "Radix Conversion Failed - Reattempting...", [&] {
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

void write_decimal(StageMemory& memory, const Parts& number, const cdi* words, upL_t w) {
    const auto digits = memory.array<char>(CVN::decimal_digits * w);
    memory.carry_out([&](RunTimeParameters& run) {
        const u64_t dec = run.settings.dec;
        Console::print("\nWriting Decimal Digits:   ");
        run.events.add("Writing Decimal Digits");
        const std::string first_digits = CVN::preview_string_dec(dec, words + w, w, number.integer);

        CVN::cdi_to_raw(digits.get(), words, w);
        keep_last_digits(run, digits.get());
        std::array<u64_t, 16> counts{};
        count_digits(counts, digits.get(), dec);
        std::copy_n(counts.begin(), run.decimal_histogram.size(), run.decimal_histogram.begin());
        write_digits(run, 10, first_digits, digits.get(), dec);
    });
}

// The residue of the number that the integer and the first dec digits of the words form without a point. The
// words' own residue, less the e digits that were not wanted, divided by 10^e.
u64_t residue_of_digits(cdi integer, const cdi* words, upL_t w, u64_t dec) {
    constexpr cdi radix = CVN::decimal_base;
    const u64_t e = CVN::decimal_digits * w - dec;
    const upL_t unwanted_words = e / CVN::decimal_digits;
    cdi unit = 1;  // the lowest wanted digit of the word that holds wanted and unwanted ones
    for (u64_t i = e % CVN::decimal_digits; i > 0; --i) unit *= 10;
    const cdi top = unit == 1 ? 0 : words[unwanted_words] % unit;

    const u64_t all = residue::hash_radix64(words, w, radix, 0);
    const u64_t unwanted = residue::hash_radix64(words, unwanted_words, radix, top);
    const u64_t fraction = residue::mul(residue::sub(all, unwanted), residue::pow(10, residue::p - 1 - e));
    return residue::add(fraction, residue::mul(residue::reduce(integer), residue::pow(10, dec)));
}

u64_t residue_of_number(RunTimeParameters& run, const BasicParameters& bp, const Parts& number) {
    StatusLine status;
    u64_t result = 0;
    repeat_until_right(run, status, "Verification Failed - Reattempting...", [&] {
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

void verify(StageMemory& memory, const Parts& number) {
    const auto work = memory.work(power_check_size(10, memory.settings().dec, memory.threads()));
    memory.carry_out([&](RunTimeParameters& run) {
        Console::print("\nVerifying Base Conversion...");
        run.events.add("Verifying Base Conversion");
        Console::print_newline();
        const u64_t R = run.binary_hash;
        const u64_t B = residue_of_number(run, run.arithmetic(work.get(), work.size), number);
        if (agree(R, B)) return;
        Console::println("R = " + to_string_u64(R));
        Console::println("B = " + to_string_u64(B));
        fatal_exit("Base Conversion Failed: Checksum Mismatch");
    });
}

}  // namespace

void write_hex(StageMemory& memory, const BigFloat& number) {
    const u64_t hex = memory.settings().hex;
    if (hex == 0) return;
    const upL_t w = hexadecimal_words(hex);
    const auto digits = memory.array<char>(CVN::hexadecimal_digits * w);
    memory.carry_out([&](RunTimeParameters& run) {
        Console::print("\nWriting Hexadecimal Digits:   ");
        run.events.add("Writing hexadecimal Digits");
        const Parts parts = parts_of(run, number, std::max(w, least_fraction(run.settings.p)));
        const cdi* const end = parts.fraction + parts.L;

        CVN::u64_to_raw(digits.get(), end - w, w);
        run.hexadecimal_histogram = {};
        count_digits(run.hexadecimal_histogram, digits.get(), hex);
        write_digits(run, 16, CVN::preview_string_hex(hex, end, parts.L, parts.integer), digits.get(), hex);
    });
}

// Work buffer and digits come one after the other beside the decimal words, the verification alone.
void convert_and_write_B(StageMemory& memory, const BigFloat& number) {
    Parts parts{};
    memory.carry_out([&](RunTimeParameters& run) {
        run.events.add("Base Converting");
        Console::print("\nBase Converting:\n");
        run.take_snapshot();
        parts = parts_of(run, number, least_fraction(run.settings.p));
    });
    {
        const upL_t w = decimal_words(memory.settings().dec);
        const auto words = memory.array<cdi>(w);
        convert_fraction(memory, parts, words.get(), w);
        write_decimal(memory, parts, words.get(), w);
        memory.carry_out([&](RunTimeParameters& run) {
            run.binary_hash = residue_of_digits(parts.integer, words.get(), w, run.settings.dec);
        });
    }
    verify(memory, parts);
}

}  // namespace znp
