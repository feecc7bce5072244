// The rate of the schoolbook product over its useful lengths, in both word families. Arguments: the seconds
// of each measurement (4).

#include <cstdlib>

#include "shell/console.hpp"
#include "tools/stress_bench_mul1.hpp"

int main(int argc, char** argv) {
    using namespace znp;
    const double seconds = argc > 1 ? std::strtod(argv[1], nullptr) : bench_mul1_seconds;
    for (const upL_t L : {2u, 4u, 8u, 16u, 32u, 64u}) bench_mul1<c32i>(L, seconds);
    for (const upL_t L : {2u, 4u, 8u, 16u, 32u, 64u}) bench_mul1<c64i>(L, seconds);
    Console::reset_color();
    Console::print_newline();
    return 0;
}
