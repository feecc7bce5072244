#include "compute/engine/arccoth_term.hpp"

#include "compute/engine/series_stage.hpp"
#include "foundation/strings.hpp"
#include "series/catalogue.hpp"
#include "shell/console.hpp"

namespace znp {

HeapFloat arccoth_term_B(StageMemory& memory, u64_t x, s64_t coefficient) {
    memory.carry_out([&](RunTimeParameters& run) {
        const std::string text = std::to_string(coefficient) + " ArcCoth( " + to_string_u64(x) + " )";
        Console::println(text);
        run.events.add(text);
    });
    return sum_series_B(memory, ArcCoth(x), 1, x, coefficient);
}

}  // namespace znp
