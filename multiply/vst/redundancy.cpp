#include "multiply/vst/redundancy.hpp"

#include <string>

#include "foundation/fail.hpp"
#include "foundation/strings.hpp"
#include "shell/console.hpp"

namespace znp::vst {

void check_redundancy(u64_t H, u64_t bound) {
    if (H < bound) return;
    Console::println("VST Redundancy Check Failed:  " + to_string_u64(H) + " / " + to_string_u64(bound), 'R');
    fail(zn_exception(error_code::action_1));
}

}  // namespace znp::vst
