#include "multiply/basic_parameters.hpp"

#include "foundation/fail.hpp"

namespace znp {

void work_space_too_small(const char* location) {
    fail(zn_exception(error_code::work_space_too_small, nullptr, {}, {}, action::print_and_throw,
                      "Generic Exception", location));
}

}  // namespace znp
