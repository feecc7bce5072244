#include "multiply/fft/fft_plan.hpp"

#include <algorithm>

#include "foundation/fail.hpp"
#include "multiply/fft/fft_tables.hpp"

namespace znp::fft {

namespace {

constexpr PlanRow main_rows[] = {
#include "multiply/fft/fft_main_plan.inc"
};
constexpr PlanRow exact_rows[] = {
#include "multiply/fft/fft_exact_plan.inc"
};

template <std::size_t rows>
constexpr bool well_formed(const PlanRow (&plan)[rows]) {
    for (std::size_t i = 0; i < rows; ++i) {
        const PlanRow& r = plan[i];
        const bool sizes = (r.k == 1 || r.k == 3 || r.k == 5) && r.p >= 7 && r.w >= 9 && r.w <= 20;
        if (!sizes || r.zero != 0 || r.N() * static_cast<u64_t>(r.w) != r.capacity_bits) return false;
        if (i > 0 && plan[i - 1].capacity_bits >= r.capacity_bits) return false;
    }
    return true;
}
static_assert(std::size(main_rows) == 98 && well_formed(main_rows));
static_assert(std::size(exact_rows) == 261 && well_formed(exact_rows));

const PlanRow& first_covering(std::span<const PlanRow> plan, u64_t bits) {
    const auto row = std::lower_bound(plan.begin(), plan.end(), bits,
                                      [](const PlanRow& r, u64_t b) { return r.capacity_bits < b; });
    if (row == plan.end()) fail(zn_exception(error_code::size_beyond_tables));
    return *row;
}

}  // namespace

std::span<const PlanRow> main_plan() {
    return main_rows;
}

std::span<const PlanRow> exact_plan() {
    return exact_rows;
}

const PlanRow& find_size(u64_t bits) {
    return first_covering(main_rows, bits);
}

const PlanRow& find_exact_size(u64_t bits) {
    const PlanRow& row = first_covering(exact_rows, bits);
    if (row.capacity_bits != bits) fail(zn_exception(error_code::invalid_exact_size));
    return row;
}

unsigned depth_for(std::span<const PlanRow> plan, u64_t bits) {
    const PlanRow* const last = &first_covering(plan, bits);
    unsigned depth = 0;
    for (const PlanRow* row = plan.data(); row <= last; ++row)
        depth = std::max(depth, bottom_depth(static_cast<unsigned>(row->p)));
    return depth;
}

u64_t fft_capacity_bytes(u64_t bits) {
    const PlanRow* const last = &find_size(bits);
    u64_t N = 0;
    for (const PlanRow* row = main_rows; row <= last; ++row) N = std::max(N, row->N());
    return 20 * N;
}

}  // namespace znp::fft
