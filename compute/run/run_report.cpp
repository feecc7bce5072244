#include "compute/run/run_report.hpp"

#include <algorithm>

#include "foundation/threads.hpp"
#include "shell/console.hpp"

namespace znp {
namespace {

constexpr upL_t field_width = 12;
constexpr upL_t digits_width = 22;
constexpr upL_t percent_width = 6;
constexpr upL_t group_digits = 10;
constexpr upL_t line_digits = 50;
constexpr const char* start_time_label = "Start Time:";

std::string with_commas(u64_t value) {
    return Console::format_int(value, Console::IntFormat::commas);
}

void print_time(const char* label, const std::string& time) {
    Console::print_field_line(field_width, label, time, 'Y');
}

void print_percentage(const char* label, double percentage, bool known) {
    Console::print(label);
    if (known) {
        Console::print_padded_left(percent_width, Console::format_seconds(percentage, 2), 'Y');
        Console::println(" %");
    } else {
        Console::println("Not Available", 'Y');
        Console::set_color('w');
    }
}

void print_processor_use(const StopWatch& stopwatch) {
    const bool known = stopwatch.cpu_seconds() > 0 && stopwatch.wall_seconds() > 0;
    const double percentage = known ? 100 * stopwatch.cpu_seconds() / stopwatch.wall_seconds() : 0;
    print_percentage("CPU Utilization:        ", percentage, known);
    print_percentage("Multi-core Efficiency:  ", percentage / static_cast<double>(logical_cores()), known);
}

}  // namespace

void print_run_heading(const ComputeParameters& settings) {
    const zlr_Constant& constant = settings.constant();
    Console::print_field_line(field_width, "Constant:", constant.get_name(), constant.get_color());
    Console::print_field_line(
        field_width, "Algorithm:", constant.get_algorithm_name(settings.algorithm(), settings.p()), 'Y');
    Console::print_newline();
    Console::print_field_line(digits_width, "Decimal Digits:", with_commas(settings.dec()), 'G');
    Console::print_field_line(digits_width, "Hexadecimal Digits:",
                              settings.hex() == 0 ? "Disabled" : with_commas(settings.hex()), 'G');
    Console::print_newline();
    Console::print_field_line(field_width, "Threads:", with_commas(settings.tds()), 'T');
    Console::print_field_line(field_width, "Mode:", "Ram Only", 'T');
}

void print_stage(const std::string& name, const Time& start) {
    Console::print_newline();
    Console::print(name, 'G');
    Console::print("  :  ", 'w');
    Console::print_seconds_line(seconds_between(start, Time::now()), 'Y');
}

void print_start_time(const RunTimeParameters& run) {
    print_time(start_time_label, run.start_time);
}

void print_run_times(const RunTimeParameters& run, double total_seconds, bool resumed) {
    print_start_time(run);
    print_time("End Time:", run.end_time);
    Console::print_newline();

    Console::print("Total Computation Time:             ", 'G');
    Console::print_seconds_line(run.stopwatch.wall_seconds(), 'G');
    Console::print("Total Time (with output + verify):  ", 'G');
    if (resumed) {
        Console::println("N/A");
        Console::set_color('w');
    } else {
        Console::print_seconds_line(total_seconds, 'G');
    }
    Console::print_newline();
    print_processor_use(run.stopwatch);
}

void print_last_digits(const RunTimeParameters& run) {
    Console::println("Last Digits:  " + run.settings.name);
    const std::string& digits = run.last_digits;
    for (upL_t line = 0; line < digits.size(); line += line_digits) {
        const upL_t end = std::min(line + line_digits, digits.size());
        std::string text = digits.substr(line, std::min(group_digits, end - line));
        for (upL_t i = line + group_digits; i < end; i += group_digits) {
            text += ' ' + digits.substr(i, std::min(group_digits, end - i));
        }
        Console::print(text);
        if (end - line == line_digits) {
            Console::print(" :  ");
            Console::print(with_commas(run.last_digits_index + end), 'G');
            Console::set_color('w');
        }
        Console::print_newline();
    }
}

}  // namespace znp
