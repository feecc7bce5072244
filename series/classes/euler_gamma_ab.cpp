#include "series/classes/euler_gamma_ab.hpp"

#include "series/classes/objects.hpp"
#include "series/modular_check.hpp"
#include "series/partial_sums.hpp"

namespace znp {

static_assert(RecursionRules<ABRules>);

namespace {

MemoryPlan memory_of(const Section& section, upL_t length) {
    return parallel_memory_plan(length, section.series.memory_overhead, range_tasks(section.threads),
                                section.threads);
}

}  // namespace

// The same offset for U and V, and for W and X, since an operand moves from one to the other.
ABRules::Node ABRules::behind(const Node& results) const {
    const upL_t shorter = longest_of(results.U, results.V);
    const upL_t longer = longest_of(results.W, results.X);
    Node right = results;
    right.U.set_rest_of(shorter, results.U);
    right.V.set_rest_of(shorter, results.V);
    right.W.set_rest_of(longer, results.W);
    right.X.set_rest_of(longer, results.X);
    return right;
}

void ABRules::merge(const BasicParameters& bp, Node& out, const Node& left, const Node& right, bool) const {
    ExactFloatR X_right = right.X;
    merge_ab(
        ExactArithmetic(bp),
        {&out.U, &out.a1b0, out.V, out.W, out.X, X_right, out.long1, out.long2, out.sum, out.a0b1, out.b1b1},
        left, right);
}

MemoryPlan ABRules::memory(const Section& section) {
    return memory_of(section, section.row.length);
}

// The long temporaries also hold the products of a section with the sum on its right, to the row's precision,
// and so do the three short ones together, which lie behind each other.
ABRules::Objects<ObjectPlace> ABRules::layout(const Section& section, upL_t words) {
    const upL_t product = section.row.precision + extra_precision;
    const ObjectPlace shorter{memory_of(section, ab_short_words(section.row.length)).words};
    const ObjectPlace longer{words};
    const ObjectPlace longest{std::max(longer.words, product)};
    ObjectPlace last = shorter;
    if (3 * shorter.words < product) last.words = product - 2 * shorter.words;
    return {.U = shorter,
            .V = shorter,
            .W = longer,
            .X = longer,
            .long1 = longest,
            .long2 = longest,
            .sum = longest,
            .a1b0 = shorter,
            .a0b1 = shorter,
            .b1b1 = last};
}

upL_t ABRules::result_words(const Section& section) {
    return section.row.precision + extra_precision;
}

upL_t ABRules::join_words(const Section& section) {
    const upL_t kept = section.row.precision + extra_precision;
    return kept + std::max(kept + transform_slack, section.row.length + section.series.memory_overhead);
}

void ABRules::check(const SumTask& task, const SectionRow& row, const Node& node) {
    check4(task.log, row.a, row.b, node.U, node.V, node.W, node.X, task.bp.tds);
}

void ABRules::keep(const SumTask& task, const SectionRow& row, const Node& node) {
    task.P.set_gfp(as_float(node.X), row.precision);
    task.Q.set_gfp(as_float(node.V), row.precision);
    task.R->set_gfp(as_float(node.W), row.precision);
}

// The sum's numbers are b1, b2 and b3; nobody needs U of the sum, so that there is no b0.
void ABRules::join(const SumTask& task, const Section& section, const Node& node) {
    const struct {
        BigFloat U, V, W, X;
    } left{as_float(node.U), as_float(node.V), as_float(node.W), as_float(node.X)};
    const struct {
        BigFloat U;
        const BigFloat &V, &W, &X;
    } right{{}, task.Q, *task.R, task.P};

    BigFloatR long1 = as_buffer(node.long1);
    BigFloatR long2 = as_buffer(node.long2);
    BigFloatR sum = as_buffer(node.sum);
    const upL_t short_words = node.a1b0.get_size() + node.a0b1.get_size() + node.b1b1.get_size();
    BigFloatR b1b1(node.a1b0.get_base(), short_words);
    const upL_t p = section.row.precision;
    merge_ab(
        TruncatedArithmetic(task.bp, p, p, sum),
        ABPlaces<BigFloatR>{nullptr, nullptr, task.Q, *task.R, task.P, task.P, long1, long2, sum, sum, b1b1},
        left, right);
}

}  // namespace znp
