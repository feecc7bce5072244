// The settings of one computation, and the setters that keep them consistent.
//
// Setters return null, or a static text that says why the entry was refused; a refusal changes nothing. The
// same setters serve the command line and the screens.
//
// What the settings cost (working memory, twiddle tables, I/O buffers, disk) is part of the record: every
// setter that can change it ends in the estimates. The working memory is a promise of the constant, which a
// run in memory reserves whole; the memory limit rules runs on disk only.
#pragma once

#include <memory>
#include <string>

#include "compute/constant.hpp"
#include "foundation/types.hpp"
#include "storage/raid_settings.hpp"

namespace znp {

enum class ComputeMode : s32_t { ram_only = 0, swap = 1 };

// Digits and words: h = floor(log16(10) d) + 1, p = h / 16 + 2, and back d = trunc(h / log16(10)).
u64_t hex_digits_for(u64_t decimal_digits);
u64_t decimal_digits_for(u64_t hex_digits);
upL_t precision_for(u64_t hex_digits);

class ComputeParameters {
  public:
    static constexpr u64_t min_digits = 100;
    static constexpr upL_t min_precision = 5;
    static constexpr u64_t min_digits_to_compress = 1048576;  // decimal and hexadecimal
    static constexpr u64_t min_digits_per_file = 1000000;
    static constexpr u64_t min_digits_swap_mode = 1000000;  // that set_mode accepts
    static constexpr u64_t min_digits_keep_swap_mode =
        10000000;  // below this a change of digits ends swap mode
    static constexpr u64_t default_digits = 50000000;

    u32_t id;
    std::unique_ptr<zlr_Constant> constant;
    u64_t param;
    s32_t algorithm;
    ComputeMode mode;
    upL_t p;                // precision in 64-bit words
    u64_t dec;              // decimal digits
    u64_t hex;              // hexadecimal digits; 0: no hexadecimal output
    std::wstring path;      // of the output; empty: the current directory
    u64_t digits_per_file;  // 0: a text file; all ones: one compressed file; else compressed files of so many
    u32_t tds;              // threads, 1 to max_threads
    u64_t minIO;            // as the user gave it; the swap configuration holds the working sizes
    SwapConfiguration swap;
    u64_t memory_limit;  // bytes that the user allows in all

    // The estimates, in bytes, made by update_memory after each change. 0 where the constant has none, and
    // where estimate_refusal says why.
    u64_t ML = 0;     // working memory
    u64_t memTW = 0;  // twiddle tables
    u64_t memIO = 0;  // I/O buffers
    u64_t Osize = 0;  // memTW + memIO
    u64_t Msize = 0;  // smallest working memory that works
    u64_t Fsize = 0;  // logical disk
    std::string estimate_refusal;

    ComputeParameters();  // 50 million digits of Pi in memory, on all logical cores

    // The factory: no check of the parameter; an unknown id is a fatal error. Corrects an algorithm, digits
    // or a mode that the new constant does not have.
    void set_constant(u32_t new_id, u64_t new_param);
    // The checked entry for users.
    const char* choose_constant(u64_t new_id, u64_t new_param);

    const char* set_algorithm(u64_t number);
    const char* set_dec(u64_t digits);
    const char* set_hex(u64_t digits);  // 0 only switches the hexadecimal output off
    void set_threads(u64_t threads);    // clipped to 1 and max_threads
    const char* set_path(const std::wstring& folder);
    const char* set_digits_per_file(u64_t digits);
    const char* set_mode(u64_t number);
    void set_memory_limit(u64_t bytes);
    void set_min_io(u64_t bytes);

    // The estimates for the record as it stands. A run on disk keeps its ML, which rises to Msize.
    void update_memory();
    // On disk: ML becomes all of the memory limit that the tables and buffers leave, and at least Msize.
    void fit_memory_limit();
    // What every setter ends in: update_memory, and on disk the limit and the estimates that follow from it.
    // For whoever changes the swap configuration, too.
    void update_estimates();

    // The longest product of the run, which the twiddle tables must serve.
    u64_t longest_product_bits() const;

  private:
    void estimate_ram_only();
    void estimate_swap();
    u64_t below_memory_limit() const;
    const char* set_digits(u64_t new_dec, u64_t new_hex);
    bool too_few_digits_to_compress() const;
};

}  // namespace znp
