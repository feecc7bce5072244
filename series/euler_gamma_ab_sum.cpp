// The sum of the series A and B by a plan.
#include <algorithm>

#include "multiply/dispatch.hpp"
#include "series/euler_gamma_ab_rules.hpp"
#include "series/modular_check.hpp"
#include "series/section_walk.hpp"

namespace znp {

namespace {

MemoryPlan section_memory(const Series_EulerGamma_BM_AB& series, upL_t length, u64_t threads) {
    const u64_t tasks = threads < 2 ? threads : 2 * threads;
    return parallel_memory_plan(length, series.memory_overhead, tasks, threads);
}

// Words of each object of a section's node. The three long temporaries also hold the products of a section
// with the sum on its right.
std::array<upL_t, std::tuple_size_v<ABRules::Node>> object_words(const Series_EulerGamma_BM_AB& series,
                                                                 const SectionRow& row, u64_t threads) {
    const upL_t longer = aligned_words(section_memory(series, row.length, threads).words);
    const upL_t shorter = aligned_words(section_memory(series, ab_short_words(row.length), threads).words);
    const upL_t product = aligned_words(std::max(longer, row.precision + extra_precision));
    return {shorter, shorter, longer, longer, product, product, product, shorter, shorter, shorter};
}

// The sum to the right of a section, in the buffers of the results.
struct Accumulator {
    FloatR &T, &Q, &R;
};

// The section joins, by the merge's formulas, to p words.
void join(const BasicParameters& bp, const Accumulator& sum, const ABRules::Node& section, upL_t p) {
    const Float a0 = as_float(section[0]), a1 = as_float(section[1]);
    const Float a2 = as_float(section[2]), a3 = as_float(section[3]);
    const auto& [T, Q, R] = sum;
    FloatR x(section[4].get_base(), section[4].get_size());
    FloatR y(section[5].get_base(), section[5].get_size());
    FloatR z(section[6].get_base(), section[6].get_size());

    x.set_mul(bp, a1, T, p);
    y.set_mul(bp, a0, Q, p);
    T.set_mul(bp, y, R, p);
    y.set_add(T, x, p);  // a0 b1 b2 + a1 b3

    x.set_sqr(bp, Q, p);
    T.set_mul(bp, a2, x, p);
    z.set_add(T, R, p);
    R.set_gfp(z, p);

    z.set_mul(bp, Q, x, p);
    x.set_mul(bp, a3, z, p);
    T.set_add(x, y, p);

    x.set_mul(bp, a1, Q, p);
    Q.set_gfp(x, p);
}

}  // namespace

PSRPlan make_ab_plan(const Series_EulerGamma_BM_AB& series, upL_t p, double ratio) {
    PSRPlan plan = make_psr_plan(series, p, ratio);
    const u64_t end = plan.back().b;
    const auto precision_from = [&](u64_t a) {
        return static_cast<upL_t>(series.precision_of(a, end) * words_per_nat + 2);
    };
    for (SectionRow& row : plan) {
        if (row.a != 0) row.a &= ~u64_t{1};
        if (row.b != end) row.b &= ~u64_t{1};
    }
    std::erase_if(plan, [](const SectionRow& row) { return row.a == row.b; });
    for (SectionRow& row : plan) {
        row.precision = precision_from(row.a);
        row.length = series.words_of(row.a, row.b);
        row.next_precision = row.b == end ? 0 : precision_from(row.b);
    }
    return plan;
}

ABSumSizes ab_sum_sizes(const Series_EulerGamma_BM_AB& series, const PSRPlan& plan, u64_t threads) {
    ABSumSizes sizes{};
    for (const SectionRow& row : plan) {
        upL_t nodes = 0;
        for (const upL_t words : object_words(series, row, threads)) nodes += words;
        sizes.nodes = std::max(sizes.nodes, nodes);
        sizes.results = std::max(sizes.results, row.precision + extra_precision);
        sizes.work_bytes = std::max(sizes.work_bytes, section_memory(series, row.length, threads).bytes);
        if (row.b == plan.back().b) continue;
        const upL_t kept = row.precision + extra_precision;
        const upL_t product = kept + std::max(kept, row.length + series.memory_overhead);
        sizes.work_bytes = std::max(sizes.work_bytes, work_bytes_for<cdi>(product, threads));
    }
    return sizes;
}

void B_PSR(const BasicParameters& bp, const Series_EulerGamma_BM_AB& series, const PSRPlan& plan, FloatR& T,
           FloatR& Q, FloatR& R, cdi* nodes, EventLog* log, StatusLine* status) {
    for_each_section(plan, status, [&](const SectionRow& row, const RecursionProgress& progress) {
        ABRules::Node node;
        cdi* at = nodes;
        upL_t object = 0;
        for (const upL_t words : object_words(series, row, bp.tds)) {
            node[object++].set_base(at, words);
            at += words;
        }
        sum_range(bp, ABRules{series}, node, row.a, row.b, 0, progress.part(0, 0.9));
        check4(log, row.a, row.b, node[0], node[1], node[2], node[3]);

        if (&row == &plan.back()) {
            T.set_gfp(as_float(node[3]), row.precision);
            Q.set_gfp(as_float(node[1]), row.precision);
            R.set_gfp(as_float(node[2]), row.precision);
        } else {
            join(bp, {T, Q, R}, node, row.precision);
        }
    });
}

}  // namespace znp
