#include "shell/option_values.hpp"

#include <algorithm>
#include <string>
#include <vector>

#include "foundation/strings.hpp"
#include "foundation/threads.hpp"
#include "shell/console.hpp"
#include "shell/number_forms.hpp"

namespace znp {

u64_t byte_size_below_2_63(const CommandLine& line) {
    return std::min(parse_byte_size(line.value()), ~u64_t{0} >> 1);
}

u64_t clipped_threads(const CommandLine& line) {
    return std::clamp<u64_t>(parse_u64(line.value()), 1, max_threads);
}

u64_t clip_threads_with_warning(u64_t threads) {
    const u64_t clipped = std::clamp<u64_t>(threads, 1, max_threads);
    if (clipped != threads) {
        Console::println("Warning: Clipping threads to " + to_string_u64(clipped) + ".", 'Y');
        Console::set_color('w');
    }
    return clipped;
}

int set_swap_paths(SwapConfiguration& swap, CommandLine& line) {
    const std::string mode = line.value();
    std::vector<std::wstring> paths;
    do {
        line.advance();
        paths.push_back(a_to_w_direct(line.argument()));
    } while (line.has_more());
    return Console::print_entry_error(swap.set_paths(mode, paths));
}

}  // namespace znp
