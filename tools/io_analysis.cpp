#include "tools/io_analysis.hpp"

#include <algorithm>

#include "foundation/memory.hpp"
#include "foundation/threads.hpp"

namespace znp {

void IOAnalysis::set_memory(u64_t bytes) {
    memory = bytes;
    test_bytes = test_bytes_per_memory * bytes;
}

void IOAnalysis::set_min_io(u64_t bytes) {
    min_io = bytes;
    swap.set_min_io(bytes);
}

IOAnalysis default_io_analysis() {
    IOAnalysis settings;
    settings.set_memory(std::min<u64_t>(u64_t{1} << 30, physical_memory() / 2));
    settings.threads = std::min(logical_cores(), max_threads);
    return settings;
}

}  // namespace znp
