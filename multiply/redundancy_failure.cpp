#include "multiply/redundancy_failure.hpp"

#include "foundation/fail.hpp"
#include "shell/console.hpp"

namespace znp {

void redundancy_failure(const char* algorithm, const std::string& found, const std::string& bound) {
    Console::println(std::string(algorithm) + " Redundancy Check Failed:  " + found + " / " + bound, 'R');
    fail(ArithmeticFailure(error_code::action_1));
}

}  // namespace znp
