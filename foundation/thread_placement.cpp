#include "foundation/thread_placement.hpp"

#include <cstddef>

namespace znp {

PlacedElsewhere::PlacedElsewhere() {
    CPU_ZERO(&processors_);
    const int current = sched_getcpu();
    if (current < 0 || current >= CPU_SETSIZE) return;
    if (sched_getaffinity(0, sizeof processors_, &processors_) != 0) return;
    cpu_set_t others = processors_;
    CPU_CLR(static_cast<std::size_t>(current), &others);
    if (CPU_COUNT(&others) == 0 || pthread_attr_init(&attributes_) != 0) return;
    initialised_ = true;
    placed_ = pthread_attr_setaffinity_np(&attributes_, sizeof others, &others) == 0;
}

PlacedElsewhere::~PlacedElsewhere() {
    if (initialised_) pthread_attr_destroy(&attributes_);
}

void take_processors(const cpu_set_t& processors) {
    static_cast<void>(sched_setaffinity(0, sizeof processors, &processors));
}

}  // namespace znp
