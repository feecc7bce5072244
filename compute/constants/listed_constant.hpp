// A constant whose algorithms are a fixed list of names.
#pragma once

#include <span>
#include <string>

#include "compute/constant.hpp"

namespace znp {

struct AlgorithmNames {
    const char* short_name;
    const char* name;
    const char* menu;
};

class zlr_ListedConstant : public zlr_Constant {
  public:
    zlr_ListedConstant(s32_t algorithm_count, std::span<const AlgorithmNames> names)
        : zlr_Constant(algorithm_count), names_(names) {}

    std::string get_algorithm_short(s32_t algorithm, upL_t p) const override;
    std::string get_algorithm_name(s32_t algorithm, upL_t p) const override;
    std::string get_algorithm_menu(s32_t algorithm, upL_t p) const override;
    bool get_memory_B(s32_t algorithm, upL_t p, u64_t digits, u64_t threads, upL_t& bytes) const final;

  private:
    // What get_memory_B gives for an algorithm that there is.
    virtual upL_t memory_B(s32_t algorithm, upL_t p, u64_t digits, u64_t threads) const = 0;
    std::string text_of(s32_t algorithm, const char* AlgorithmNames::*text) const;

    std::span<const AlgorithmNames> names_;
};

// "Sqrt(2)"
std::string with_argument(const char* function, u64_t argument);

}  // namespace znp
