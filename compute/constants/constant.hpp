// zlr_Constant: something that the system can compute.
//
// A settings record owns exactly one and asks it everything; the objects are made of the rows of the table
// (compute/constants/constant_row.hpp). Algorithms are numbered from 0; algorithm_count() of them can be
// selected. Some classes name more algorithms than that.
#pragma once

#include <memory>
#include <string>

#include "foundation/types.hpp"

namespace znp {

struct RunTimeParameters;

namespace constant_id {
inline constexpr u32_t sqrt = 0;
inline constexpr u32_t golden_ratio = 1;
inline constexpr u32_t e = 2;
inline constexpr u32_t pi = 3;
inline constexpr u32_t arccoth = 4;
inline constexpr u32_t log = 5;
inline constexpr u32_t zeta3 = 6;
inline constexpr u32_t lemniscate = 7;
inline constexpr u32_t catalan = 8;
inline constexpr u32_t euler_gamma = 9;
inline constexpr u32_t euler_gamma_override = 10;  // only a checkpoint can name it
inline constexpr u32_t last_selectable = euler_gamma;
}  // namespace constant_id

class zlr_Constant {
  public:
    explicit zlr_Constant(s32_t algorithm_count) : algorithm_count_(algorithm_count) {}
    zlr_Constant(const zlr_Constant&) = delete;
    zlr_Constant& operator=(const zlr_Constant&) = delete;
    virtual ~zlr_Constant() = default;

    s32_t algorithm_count() const { return algorithm_count_; }

    virtual u64_t get_max_digits() const;  // decimal digits
    virtual char get_color() const;

    virtual std::string get_short_name() const = 0;  // in files and the event log
    virtual std::string get_name() const;            // on the screen

    // Numbers that the class does not know give the empty text. p: precision in 64-bit words.
    virtual std::string get_algorithm_short(s32_t algorithm, upL_t p) const = 0;
    virtual std::string get_algorithm_name(s32_t algorithm, upL_t p) const;
    virtual std::string get_algorithm_menu(s32_t algorithm, upL_t p) const;  // may be several lines

    // Whether the class knows the algorithm. Every algorithm that exists runs in memory and in swap mode.
    bool knows_algorithm(s32_t algorithm, upL_t p) const {
        return !get_algorithm_short(algorithm, p).empty();
    }

    // Bytes of working memory of a run in memory, before anything is allocated; false for a number that the
    // class does not know. The run takes one block of this size (and a fixed margin) and never asks for more.
    // p = 0 only asks whether the class knows the number.
    virtual bool get_memory_B(s32_t algorithm, upL_t p, u64_t digits, u64_t threads, upL_t& bytes) const;
    // Bytes of logical disk and working memory of a run in swap mode.
    virtual bool get_memory_S(s32_t algorithm, upL_t p, u64_t digits, upL_t ML, upL_t minIO, u64_t threads,
                              u64_t& disk_bytes, upL_t& memory_bytes) const;

    // The computation: sums, divides and multiplies in the run's memory, and hands the result to the output
    // stages. In memory and on disk.
    virtual void run_B(s32_t algorithm, RunTimeParameters& run) const;
    virtual void run_S(s32_t algorithm, RunTimeParameters& run) const;

    // Whether this version has the computation and its estimates, asked before anything is reserved.
    virtual bool runs_B(s32_t algorithm) const;
    virtual bool runs_S(s32_t algorithm) const;

    // Called whenever the precision changes.
    virtual void set_precision(upL_t p);

  protected:
    void set_algorithm_count(s32_t count) { algorithm_count_ = count; }

  private:
    s32_t algorithm_count_;
};

// The object of a constant, without any check of the parameter. An unknown id is a fatal error.
std::unique_ptr<zlr_Constant> make_constant(u32_t id, u64_t parameter, upL_t p);

// Whether a user may choose this constant with this parameter: null, or the reason why not.
const char* check_constant(u64_t id, u64_t parameter);

}  // namespace znp
