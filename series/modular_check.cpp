#include "series/modular_check.hpp"

#include <algorithm>
#include <string>

#include "foundation/event_log.hpp"
#include "foundation/fail.hpp"
#include "foundation/strings.hpp"
#include "shell/console.hpp"

namespace znp {

void check_residues(EventLog* log, u64_t a, u64_t b, std::span<const u64_t> differences) {
    if (std::ranges::all_of(differences, [](u64_t difference) { return difference == 0; })) return;

    const std::string from = to_string_u64(a);
    const std::string to = to_string_u64(b);
    if (log != nullptr) log->add("Modular Redundancy Check Failed: " + from + " - " + to);

    std::string text = "Modular Redundancy Check Failed:\na = " + from + "\nb = " + to;
    char letter = 'A';
    for (const u64_t difference : differences) {
        text += std::string("\nhash") + letter++ + " = " + to_string_u64(difference);
    }
    text += "\n";
    Console::print_error(text);

    zl_BSRModularCheckFailed failure(text);
    failure.action = action::throw_silently;  // the text stands on the screen already
    fail(failure);
}

}  // namespace znp
