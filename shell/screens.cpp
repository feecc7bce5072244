#include "shell/screens.hpp"

#include <string>

#include "compute/version.hpp"
#include "shell/console.hpp"

namespace znp {
namespace {

constexpr const char* maker = "The Zelmar developers";
constexpr const char* attribution = "Written and maintained by The Zelmar developers";

void print_disclaimer() {
    Console::println("Disclaimer:");
    Console::println("This software is provided \"as is\", without any guarantee made to its");
    Console::println("suitability or fitness for any particular use. It may contain bugs so use");
    Console::println("of this program is at your own risk. I take no responsibility for any");
    Console::println("damage that may unintentionally be caused through its use.");
}

}  // namespace

void print_banner() {
    Console::print("Zelmar v");
    Console::print(program_version, 'g');
    Console::println(std::string("  ( ") + maker + " )", 'w');
    Console::println(attribution);
    Console::print_newline();
    Console::println("Distribute Freely - Please Report any Bugs", 'w');
    Console::print_newline();
    Console::print_labelled_line("Tuning", std::string(" ") + program_target, 'G');
    Console::print_newline();
}

void print_about() {
    Console::print_newline();
    Console::println("Zelmar - Mathematical Constants to Many Digits", 'G');
    Console::print_newline();
    Console::print_labelled_line("Version", program_version, 'g');
    Console::println(attribution);
    Console::print_newline();
    Console::println("Zelmar computes mathematical constants to millions, billions, and", 'T');
    Console::println("trillions of digits, in memory or on disk.");
    Console::print_newline();
    Console::println("It began as a program for the Euler-Mascheroni Constant alone. Once its");
    Console::println("arithmetic was fast enough for that, other constants were a small step:");
    Console::println("Pi, e, logarithms, Zeta(3), Catalan's Constant, and several more.");
    Console::print_newline();
    Console::println("For all overclockers:");
    Console::println("Zelmar is also a multi-threaded Pi benchmark, whose digits are checked");
    Console::println("against known ones, so that an unstable machine cannot score.");
    Console::print_newline();
    print_disclaimer();
    Console::set_color('w');
}

void print_warning() {
    Console::print_newline();
    Console::println("A Word of Warning...", 'Y');
    Console::print_newline();
    Console::println("Performing large multi-threaded computations using this program may", 'T');
    Console::println("subject your computer to extremely high levels of stress for extended");
    Console::println("periods of time. To protect your computer, MAKE SURE that your hardware");
    Console::println("is stable and fit before performing large computations. I will take");
    Console::println("absolutely no responsibility for any damage that may be caused by this");
    Console::println("program.");
    Console::print_newline();
    print_disclaimer();
    Console::set_color('w');
}

}  // namespace znp
