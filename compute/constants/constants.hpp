// The makers of the catalogue's objects, one file for each family. No checks of the parameters, but for
// Log's.
#pragma once

#include <memory>

#include "compute/constant.hpp"

namespace znp {

inline constexpr const char* parameter_out_of_range_text = "Parameter out of range";

// Parameters lie in [2, max]; the unsigned difference makes 0 and 1 large.
constexpr bool in_range_from_2(u64_t parameter, u64_t max) {
    return parameter - 2 <= max - 2;
}
constexpr bool arccoth_parameter_ok(u64_t parameter) {
    return in_range_from_2(parameter, 4294967295);
}
constexpr bool log_parameter_ok(u64_t parameter) {
    return in_range_from_2(parameter, 2147483647);
}

std::unique_ptr<zlr_Constant> make_sqrt(u64_t radicand);
std::unique_ptr<zlr_Constant> make_golden_ratio();
std::unique_ptr<zlr_Constant> make_e();
std::unique_ptr<zlr_Constant> make_pi();
std::unique_ptr<zlr_Constant> make_arccoth(u64_t argument);
std::unique_ptr<zlr_Constant> make_log(u64_t argument, upL_t p);  // fatal where the argument is out of range
std::unique_ptr<zlr_Constant> make_zeta3();
std::unique_ptr<zlr_Constant> make_lemniscate();
std::unique_ptr<zlr_Constant> make_catalan();
std::unique_ptr<zlr_Constant> make_euler_gamma(upL_t p);
std::unique_ptr<zlr_Constant> make_euler_gamma_override(u64_t exponent);

}  // namespace znp
