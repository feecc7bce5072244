#include "compute/constants/listed_constant.hpp"

#include "compute/constants/memory_query.hpp"
#include "foundation/strings.hpp"

namespace znp {

std::string zlr_ListedConstant::get_algorithm_short(s32_t algorithm, upL_t) const {
    return text_of(algorithm, &AlgorithmNames::short_name);
}

std::string zlr_ListedConstant::get_algorithm_name(s32_t algorithm, upL_t) const {
    return text_of(algorithm, &AlgorithmNames::name);
}

std::string zlr_ListedConstant::get_algorithm_menu(s32_t algorithm, upL_t) const {
    return text_of(algorithm, &AlgorithmNames::menu);
}

bool zlr_ListedConstant::get_memory_B(s32_t algorithm, upL_t p, u64_t digits, u64_t threads,
                                      upL_t& bytes) const {
    return query_memory(*this, algorithm, p, bytes, [&] { return memory_B(algorithm, p, digits, threads); });
}

std::string zlr_ListedConstant::text_of(s32_t algorithm, const char* AlgorithmNames::*text) const {
    if (algorithm < 0 || static_cast<upL_t>(algorithm) >= names_.size()) return {};
    return names_[static_cast<upL_t>(algorithm)].*text;
}

std::string with_argument(const char* function, u64_t argument) {
    return std::string(function) + "(" + to_string_u64(argument) + ")";
}

}  // namespace znp
