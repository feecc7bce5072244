#include "foundation/active_allocations.hpp"

#include "shell/console.hpp"

namespace znp {

void ActiveAllocations::remove(const std::wstring& name) {
    const auto found = counts_.find(name);
    if (found != counts_.end() && --found->second == 0) counts_.erase(found);
}

void ActiveAllocations::print(char color) const {
    Console::println("List of Active Allocations:", 'w');
    for (const auto& [name, count] : counts_) {
        for (u64_t i = 0; i < count; ++i) Console::println(L"    " + name, color);
    }
    Console::set_color('w');
}

}  // namespace znp
