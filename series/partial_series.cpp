#include "series/partial_series.hpp"

#include <algorithm>
#include <type_traits>

#include "foundation/fail.hpp"
#include "multiply/dispatch.hpp"
#include "series/asr_rules.hpp"
#include "series/modular_check.hpp"
#include "series/recursion_rules.hpp"
#include "series/section_walk.hpp"

namespace znp {

namespace {

// From so many words on the topmost merge of a section is worth a line of its own on the status line; below,
// its halves run at the same time.
constexpr upL_t level_min_words = 1 << 18;

u64_t levels_of(const SectionRow& row) {
    return row.length >= level_min_words ? 1 : 0;
}

// Words of a sum that joins a section: all that it was made with, so that the words by which the estimate of
// its weight may be wrong cost no precision.
constexpr upL_t joined_words(const SectionRow& row) {
    return row.next_precision + extra_precision;
}

// ---- What the classes of series differ in
//
//   Rules           of an exact section
//   rules           last: nothing stands right of the section
//   check           the residues of a section's results
//   factor          what the sum on the right is multiplied with when it joins a section

constexpr cdi one_word = 1;

struct TaylorSums {
    using Rules = TaylorRules;
    const Series_E_Taylor& series;

    Rules rules(bool) const { return {series}; }
    static void check(EventLog* log, const SectionRow& row, const Rules::Node& node, bool) {
        check2(log, row.a, row.b, node[0], node[1]);
    }
    static Float factor(const Rules::Node&) { return Float(&one_word, 1, 0); }
};

struct BBPSums {
    using Rules = BBPRules;
    const zl_BSS_P2B2_BBP& series;

    Rules rules(bool) const { return {series}; }
    static void check(EventLog* log, const SectionRow& row, const Rules::Node& node, bool) {
        check2(log, row.a, row.b, node[0], node[1]);
    }
    static Float factor(const Rules::Node& node) { return as_float(node[1]); }
};

// ASR nodes hold floats.
Float as_float(const Float& x) {
    return x;
}

struct Type0Sums {
    using Rules = Type0Rules;
    const zl_BSS_P2B3_Type0& series;

    Rules rules(bool last) const { return {series, !last}; }
    static void check(EventLog* log, const SectionRow& row, const Rules::Node& node, bool last) {
        if (last) return check2(log, row.a, row.b, node[0], node[1]);
        check3(log, row.a, row.b, node[0], node[1], node[2]);
    }
    template <class Node>
    static Float factor(const Node& node) {
        return as_float(node[2]);
    }
};

// ---- The sum by a plan

template <class Sums>
class PartialSums {
  public:
    PartialSums(const Sums& sums, const PSRPlan& plan, u64_t threads)
        : sums_(sums), plan_(plan), threads_(std::max<u64_t>(1, threads)) {}

    SumSizes sizes() const {
        SumSizes sizes{};
        for (const SectionRow& row : plan_) {
            const MemoryPlan need = memory(row);
            upL_t nodes = 0;
            for (upL_t i = 0; i < objects(row); i++) {
                const upL_t words = object_words(row, i, need.words);
                if (is_last(row) && i < 2) {
                    sizes.P = std::max(sizes.P, words);
                } else {
                    nodes += words;
                }
            }
            sizes.nodes = std::max(sizes.nodes, nodes);
            sizes.work_bytes = std::max(sizes.work_bytes, need.bytes);
            if (is_last(row)) continue;
            sizes.P = std::max(sizes.P, row.precision + extra_precision);
            const upL_t product = truncated_merge_words(row.length + sums_.series.memory_overhead,
                                                        joined_words(row) + extra_precision, row.precision);
            sizes.work_bytes = std::max(sizes.work_bytes, work_bytes_for<cdi>(product, threads_));
        }
        sizes.Q = sizes.P;
        return sizes;
    }

    void sum(const BasicParameters& bp, FloatR& P, FloatR& Q, cdi* nodes, EventLog* log,
             StatusLine* status) const {
        for_each_section(plan_, status, [&](const SectionRow& row, const RecursionProgress& progress) {
            const Context context{bp, P, Q, nodes, log, progress};
            if constexpr (std::is_same_v<Sums, Type0Sums>) {
                if (row.asr) {
                    return section(context, row, ASRRules{sums_.series, row.precision, plan_.back().b});
                }
            }
            section(context, row, sums_.rules(is_last(row)));
        });
    }

  private:
    static constexpr upL_t exact_objects = std::tuple_size_v<typename Sums::Rules::Node>;
    static constexpr upL_t asr_objects = std::tuple_size_v<ASRRules::Node>;

    struct Context {
        const BasicParameters& bp;
        FloatR& P;
        FloatR& Q;
        cdi* nodes;
        EventLog* log;
        RecursionProgress progress;
    };

    bool is_last(const SectionRow& row) const { return &row == &plan_.back(); }
    static upL_t objects(const SectionRow& row) { return row.asr ? asr_objects : exact_objects; }

    // The range of the most terms at each level is the leftmost: how often it can fork.
    unsigned forks(const SectionRow& row) const {
        unsigned forks = 0;
        for (u64_t b = row.b; b - row.a >= fork_min_terms; b = sums_.series.split(row.a, b)) forks++;
        return forks;
    }

    MemoryPlan memory(const SectionRow& row) const {
        const upL_t overhead = sums_.series.memory_overhead;
        const u64_t level = levels_of(row);
        if (level > 0) return level_memory_plan(row.length, overhead, level, threads_, forks(row));
        const u64_t tasks = threads_ < 2 ? threads_ : 2 * threads_;
        return parallel_memory_plan(row.length, overhead, tasks, threads_, forks(row));
    }

    // Of the objects of a section's node two serve again when the sum on the right joins it: the one of a
    // product to the row's precision (P itself, or the temporary that truncated products have for it) and the
    // last temporary.
    static upL_t product_object(const SectionRow& row) { return row.asr ? asr_objects - 2 : 0; }

    upL_t object_words(const SectionRow& row, upL_t object, upL_t words) const {
        if (!is_last(row)) {
            if (object == product_object(row)) words = std::max(words, row.precision + extra_precision);
            if (object == objects(row) - 1) words = std::max(words, joined_words(row) + extra_precision);
        }
        return aligned_words(words);
    }

    template <class Rules>
    void section(const Context& context, const SectionRow& row, const Rules& rules) const {
        constexpr bool exact = std::is_same_v<Rules, typename Sums::Rules>;
        const bool last = is_last(row);
        const upL_t words = memory(row).words;
        typename Rules::Node node;
        cdi* at = context.nodes;
        for (upL_t i = 0; i < node.size(); i++) {
            const upL_t size = object_words(row, i, words);
            if (last && i < 2) {
                node[i].set_base((i == 0 ? context.P : context.Q).get_base(), size);
            } else {
                node[i].set_base(at, size);
                at += size;
            }
        }
        sum_range(context.bp, rules, node, row.a, row.b, levels_of(row), context.progress.part(0, 0.9));
        if constexpr (exact) Sums::check(context.log, row, node, last);

        const TruncatedOperands results{as_float(node[0]), as_float(node[1]), Sums::factor(node)};
        if (last) {
            view(context.P, results.P);
            view(context.Q, results.Q);
            return;
        }
        auto& product = node[product_object(row)];
        auto& temporary = node.back();
        FloatR x(product.get_base(), product.get_size());
        FloatR t(temporary.get_base(), temporary.get_size());
        const upL_t q = joined_words(row);
        const bool subtract = subtracts(sums_.series, row.a, row.b);
        truncated_merge(context.bp, context.P, context.Q, nullptr, x, t, results,
                        {context.P.top_words(q), context.Q.top_words(q), {}}, row.precision, q, subtract);
    }

    static void view(FloatR& out, const Float& x) {
        out.set_view(x.get_T(), x.get_L(), x.get_exp(), x.raw_sign());
    }

    const Sums& sums_;
    const PSRPlan& plan_;
    const u64_t threads_;
};

// f(sums) with the class that the series belongs to.
template <class F>
auto with_class_of(const zl_BSS& series, F f) {
    if (const auto* type0 = dynamic_cast<const zl_BSS_P2B3_Type0*>(&series)) return f(Type0Sums{*type0});
    if (const auto* bbp = dynamic_cast<const zl_BSS_P2B2_BBP*>(&series)) return f(BBPSums{*bbp});
    if (const auto* taylor = dynamic_cast<const Series_E_Taylor*>(&series)) return f(TaylorSums{*taylor});
    fail(zn_exception(error_code::unspecified, "B_PSR(): A series of this class has a sum of its own."));
}

}  // namespace

SumSizes sum_sizes(const zl_BSS& series, const PSRPlan& plan, u64_t threads) {
    return with_class_of(series, [&](const auto& sums) { return PartialSums(sums, plan, threads).sizes(); });
}

void B_PSR(const BasicParameters& bp, const zl_BSS& series, const PSRPlan& plan, BigFloatR<cdi>& P,
           BigFloatR<cdi>& Q, cdi* nodes, EventLog* log, StatusLine* status) {
    with_class_of(
        series, [&](const auto& sums) { PartialSums(sums, plan, bp.tds).sum(bp, P, Q, nodes, log, status); });
}

}  // namespace znp
