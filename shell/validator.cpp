#include "shell/validator.hpp"

#include "foundation/fatal.hpp"

namespace znp {

void benchmark_validator() {
    not_available_yet("The Benchmark Validator");
}

}  // namespace znp
