// The process: one computation resumed, one command, or one action of the main menu.
#include <exception>

#include "compute/version.hpp"
#include "foundation/basic_file.hpp"
#include "foundation/exceptions.hpp"
#include "foundation/fatal.hpp"
#include "foundation/standard_streams.hpp"
#include "shell/command_line.hpp"
#include "shell/console.hpp"
#include "shell/cpu_features.hpp"
#include "shell/dispatch.hpp"

namespace znp {
namespace {

[[noreturn]] void resume_computation() {
    Console::println("An unfinished computation has been found.\nResuming...", 'Y');
    Console::pause();
    not_available_yet("The resuming of an unfinished computation");
}

// An exception that arrives here is reported as what ended the process, whether or not fire() has reported it
// where it happened, and the process still ends with 0: only fatal errors and refused commands give 1. What
// is no exception object at all ends the process through the runtime.
int run_program(int argc, const char* const* argv) {
    try {
        check_features();
        if (file_exists(checkpoint_file_name)) resume_computation();
        CommandLine line(argc, argv);
        return dispatch(line);
    } catch (const zn_exception& exception) {
        print_exception(exception);
    } catch (const std::exception& exception) {
        Console::print_labelled_line("Uncaught std exception", exception.what(), 'R');
    } catch (...) {
        Console::reset_color();
        throw;
    }
    return 0;
}

}  // namespace
}  // namespace znp

int main(int argc, char** argv) {
    znp::open_missing_standard_streams();
    znp::Console::reset_color_on_break();
    znp::Console::tell_crashes();
    znp::Console::print_newline();
    const int status = znp::run_program(argc, argv);
    znp::Console::reset_color();
    znp::Console::print_newline();
    return status;
}
