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
#include <optional>
#include <string>

#include "compute/constants/constant.hpp"
#include "compute/run/run_settings.hpp"
#include "compute/settings/precision.hpp"
#include "foundation/types.hpp"
#include "storage/raid_settings.hpp"

namespace znp {

namespace testing {
struct SettingsAccess;  // to states that the setters do not reach
}

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

    ComputeParameters();  // 50 million digits of Pi in memory, on all logical cores

    u32_t id() const { return id_; }
    const zlr_Constant& constant() const { return *constant_; }
    u64_t param() const { return param_; }
    s32_t algorithm() const { return algorithm_; }
    ComputeMode mode() const { return mode_; }
    upL_t p() const { return p_; }                      // precision in 64-bit words
    u64_t dec() const { return dec_; }                  // decimal digits
    u64_t hex() const { return hex_; }                  // hexadecimal digits; 0: no hexadecimal output
    const std::wstring& path() const { return path_; }  // of the output; empty: the current directory
    // 0: a text file; all ones: one compressed file; else compressed files of so many.
    u64_t digits_per_file() const { return digits_per_file_; }
    bool too_few_digits_to_compress() const;
    u32_t tds() const { return tds_; }  // threads, 1 to max_threads
    u64_t minIO() const {
        return minIO_;
    }  // as the user gave it; the swap configuration holds the working sizes
    const SwapConfiguration& swap() const { return swap_; }
    u64_t memory_limit() const { return memory_limit_; }  // bytes that the user allows in all

    // The estimates, in bytes. 0 where the constant has none, and where estimate_refusal says why.
    u64_t ML() const { return ML_; }        // working memory
    u64_t memTW() const { return memTW_; }  // twiddle tables
    u64_t memIO() const { return memIO_; }  // I/O buffers
    u64_t Osize() const { return memIO_ + memTW_; }
    u64_t Msize() const { return Msize_; }  // smallest working memory that works
    u64_t Fsize() const { return Fsize_; }  // logical disk
    const std::string& estimate_refusal() const { return estimate_refusal_; }

    // What the settings would cost in a mode, whichever the record is in: memory in all, the least of a run
    // on disk, and logical disk. None where the mode has no estimates in this version, or they refuse.
    struct Cost {
        u64_t memory, disk;
    };
    std::optional<Cost> cost_in(ComputeMode mode) const;

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

    // change(swap configuration), whose answer it gives.
    template <class Change>
    auto change_swap(Change change) {
        const auto answer = change(swap_);
        update_estimates();
        return answer;
    }

    // The longest product of the run, which the twiddle tables must serve.
    u64_t longest_product_bits() const;

  private:
    friend struct testing::SettingsAccess;

    // What every setter ends in: update_memory, and on disk the limit and the estimates that follow from it.
    void update_estimates();
    // The estimates for the record as it stands. A run on disk keeps its ML, which rises to Msize.
    void update_memory();
    // On disk: ML becomes all of the memory limit that the tables and buffers leave, and at least Msize.
    void fit_memory_limit();
    void estimate_ram_only();
    void estimate_swap();
    u64_t memory_of_ram_only() const;
    // On disk with a working memory of ML, which may be less than the least.
    struct SwapNeeds {
        u64_t memory = 0;  // the least
        u64_t disk = 0;
    };
    SwapNeeds needs_of_swap(u64_t ML) const;
    u64_t below_memory_limit(u64_t outside) const;
    const char* set_digits(u64_t new_dec, u64_t new_hex);

    u32_t id_ = constant_id::pi;
    std::unique_ptr<zlr_Constant> constant_;
    u64_t param_ = 2;
    s32_t algorithm_ = 0;
    ComputeMode mode_ = ComputeMode::ram_only;
    u64_t dec_ = default_digits;
    u64_t hex_;
    upL_t p_;
    std::wstring path_;
    u64_t digits_per_file_ = 0;
    u32_t tds_ = 1;
    u64_t minIO_ = SwapConfiguration::default_min_io;
    SwapConfiguration swap_;
    u64_t memory_limit_;

    u64_t ML_ = 0, memTW_ = 0, memIO_ = 0, Msize_ = 0, Fsize_ = 0;
    std::string estimate_refusal_;
};

}  // namespace znp
