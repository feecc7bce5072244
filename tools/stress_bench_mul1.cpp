#include "tools/stress_bench_mul1.hpp"

#include <string>
#include <vector>

#include "multiply/bkt/basecase.hpp"
#include "shell/console.hpp"
#include "tools/stress_component.hpp"
#include "tools/stress_operand.hpp"

namespace znp {

template <class word>
double bench_mul1(upL_t L, double seconds) {
    constexpr u64_t multiplications_per_timing = 10000;
    using Console::IntFormat;
    Console::print("        bench_mul1<", 'w');
    Console::print(Console::format_int(WordTraits<word>::bits, IntFormat::plain) + ">(" +
                   Console::format_int(L, IntFormat::plain) + "):  ");

    std::vector<word> A(L);
    std::vector<word> T(2 * L);
    fill_stress_operand(A.data(), L);

    u64_t timings = 0;
    double elapsed = 0;
    const double start = steady_seconds();
    do {
        for (u64_t i = 0; i < multiplications_per_timing; i++) {
            bkt::mulB(T.data(), A.data(), L, A.data(), L);
        }
        timings++;
        elapsed = steady_seconds() - start;
    } while (elapsed < seconds);

    const double word_products = static_cast<double>(L) * static_cast<double>(L) * multiplications_per_timing;
    const double rate = static_cast<double>(timings) * word_products / elapsed;
    Console::print(Console::format_int(static_cast<u64_t>(rate), IntFormat::commas), 'G');
    Console::println(" Multiplies / sec", 'w');
    return rate;
}

template double bench_mul1<c32i>(upL_t, double);
template double bench_mul1<c64i>(upL_t, double);

}  // namespace znp
