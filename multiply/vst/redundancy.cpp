#include "multiply/vst/redundancy.hpp"

#include "foundation/strings.hpp"
#include "multiply/redundancy_failure.hpp"

namespace znp::vst {

void check_redundancy(u64_t H, u64_t bound) {
    if (H >= bound) redundancy_failure("VST", to_string_u64(H), to_string_u64(bound));
}

}  // namespace znp::vst
