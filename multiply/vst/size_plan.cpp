#include "multiply/vst/size_plan.hpp"

#include <algorithm>

#include "foundation/fail.hpp"

namespace znp::vst {

namespace {

#include "multiply/vst/size_plan.inc"

}  // namespace

std::span<const SizePlanRow> main_plan() {
    return main_rows;
}

std::span<const SizePlanRow> large_plan() {
    return large_rows;
}

const SizePlanRow& find_size(u64_t bits) {
    for (const std::span<const SizePlanRow> plan : {main_plan(), large_plan()}) {
        const auto row = std::lower_bound(plan.begin(), plan.end(), bits,
                                          [](const SizePlanRow& r, u64_t b) { return r.capacity() < b; });
        if (row != plan.end()) return *row;
    }
    fail(zn_exception(error_code::size_beyond_tables));
}

}  // namespace znp::vst
