#include "compute/constant_menu.hpp"

#include <limits>

#include "shell/console.hpp"

namespace znp {
namespace {

void print_group(const char* title) {
    Console::print_newline();
    Console::println(title, 'w');
    Console::print_newline();
}

void print_menu() {
    Console::println("Compute a Constant: (in ascending order of difficulty to compute)\n", 'P');
    Console::println("  #         Constant                      Value        Approximate Difficulty*\n", 'w');
    Console::println("Fast Constants:", 'w');
    Console::print_newline();
    Console::println("  0         Sqrt(n)                                         1.42", 'P');
    Console::println("  1         Golden Ratio                = 1.618034...       1.42");
    print_group("Moderate Constants:");
    Console::println("  2         e                           = 2.718281...       4.02 / 4.02", 'G');
    Console::println("  3         Pi                          = 3.141592...       12.8 / 19.0");
    Console::println("  4         ArcCoth(n)                                      6.25 - 72.8");
    Console::println("  5         Log(n)                                        > 34.2");
    Console::println("  6         Zeta(3) (Apery's Constant)  = 1.202056...       61.9 / 64.8");
    Console::println("  7         Lemniscate                  = 5.244115...       121. / 150.");
    print_group("Slow Constants:");
    Console::println("  8         Catalan's Constant          = 0.915965...       279. / 313.", 'B');
    Console::println("  9         Euler-Mascheroni Constant   = 0.577215...       355. / 528.");
    Console::print_newline();
    Console::println("*Actual numbers will vary. Radix conversion = 1.00\n", 'w');
    Console::println("Enter your choice:");
}

u64_t ask_from_2(const char* prompt, s64_t high) {
    return static_cast<u64_t>(Console::ask_int_range(prompt, 2, high));
}

u64_t ask_radicand() {
    Console::println("Square Root of n", 'w');
    for (;;) {
        const u64_t n = ask_from_2("n = ", std::numeric_limits<s64_t>::max());
        if (check_constant(constant_id::sqrt, n) == nullptr) return n;
        Console::println("\nThis number is a perfect square.", 'w');
        Console::println("Please choose something more interesting :)");
        Console::print_newline();
    }
}

// Constants without a parameter take 0.
u64_t ask_parameter(u64_t id) {
    switch (id) {
        case constant_id::sqrt:
            return ask_radicand();
        case constant_id::arccoth:
            Console::println("ArcCoth(n)", 'w');
            return ask_from_2("n = ", 4294967295);
        case constant_id::log:
            Console::println("Log(n)", 'w');
            return ask_from_2("n = ", 2147483647);
        case constant_id::euler_gamma_override:
            Console::println("Select a parameter:", 'w');
            return ask_from_2("n = 2^", 63);
        default:
            return 0;
    }
}

}  // namespace

void choose_constant_menu(ComputeParameters& settings) {
    print_menu();
    const auto id =
        static_cast<u64_t>(Console::ask_int_range("option: ", 0, constant_id::euler_gamma_override));
    Console::print_newline();
    const u64_t parameter = ask_parameter(id);
    if (Console::print_entry_error(settings.choose_constant(id, parameter)) != 0) Console::pause();
}

}  // namespace znp
