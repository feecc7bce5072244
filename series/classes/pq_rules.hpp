// What the classes whose sum is P/Q have in common: P and Q of the last section lie where the sum shall be,
// and the other sections join it by their class's merge, truncated to the precision of their row.
#pragma once

#include "numbers/big_float.hpp"
#include "series/classes/objects.hpp"
#include "series/merge_arithmetic.hpp"
#include "series/modular_check.hpp"
#include "series/recursion.hpp"
#include "series/section.hpp"

namespace znp {

// The numbers of a range in a truncated merge.
struct TruncatedOperands {
    BigFloat P, Q, R;
};

// Objects of a node, and a temporary for the second product of P.
template <class T>
struct PQObjects {
    T P, Q, t;

    template <class Self>
    static auto all(Self& self) {
        return std::array{&self.P, &self.Q, &self.t};
    }
    const T& shown() const { return P; }
};

// Rules has the schedule of its class's merge, for any arithmetic:
//     static void merge_by(by, MergeResults, left, right, subtract)
template <class Rules, class Series, template <class> class ObjectsOf>
struct PQRules {
    template <class T>
    using Objects = ObjectsOf<T>;

    const Series& series;

    explicit PQRules(const Series& series_) : series(series_) {}

    bool ends(u64_t a, u64_t b) const { return b - a < series.end_threshold; }
    u64_t divide(u64_t a, u64_t b) const { return series.divide(a, b); }

    static MemoryPlan memory(const Section& section) { return section.memory(); }
    static u64_t levels(const Section& section) { return section.levels(); }

    static Objects<ObjectPlace> layout(const Section& section, upL_t words) {
        Objects<ObjectPlace> places;
        for (ObjectPlace* place : Objects<ObjectPlace>::all(places)) place->words = words;
        if (section.is_last()) {
            places.P.buffer = ObjectBuffer::P;
            places.Q.buffer = ObjectBuffer::Q;
        } else {
            for_product(places).words = std::max(words, section.row.precision + extra_precision);
            places.t.words = std::max(words, section.joined_words() + extra_precision);
        }
        return places;
    }

    static upL_t result_words(const Section& section) {
        return section.is_last() ? 0 : section.row.precision + extra_precision;
    }
    static upL_t join_words(const Section& section) {
        return truncated_merge_words(section.row.length + section.series.memory_overhead,
                                     section.joined_words() + extra_precision, section.row.precision);
    }

    template <class Node>
    static void check(const SumTask& task, const SectionRow& row, const Node& node) {
        check2(task.log, row.a, row.b, node.P, node.Q, task.bp.tds);
    }

    template <class Node>
    static void keep(const SumTask& task, const SectionRow&, const Node& node) {
        task.P.set_view(as_float(node.P));
        task.Q.set_view(as_float(node.Q));
    }

    template <class Node>
    static void join(const SumTask& task, const Section& section, const Node& node) {
        BigFloatR product = as_buffer(for_product(node));
        BigFloatR t = as_buffer(node.t);
        const upL_t q = section.joined_words();
        TruncatedOperands left{as_float(node.P), as_float(node.Q), {}};
        if constexpr (requires { node.R; }) left.R = as_float(node.R);
        TruncatedOperands right{task.P.top_words(q, task.bp.tds), task.Q.top_words(q, task.bp.tds), {}};
        if constexpr (requires { Rules::right_P_in_t; }) {
            t.set_gfp(right.P, q);
            right.P = t;
        }
        Rules::merge_by(TruncatedArithmetic(task.bp, section.row.precision, q, product),
                        MergeResults<BigFloatR>{task.P, task.Q, &t}, left, right,
                        section.series.subtracts(section.row.a, section.row.b));
    }

  private:
    // The object that holds a product to the row's precision when the section joins: P itself, unless nodes
    // have one for products.
    static auto& for_product(auto& objects) {
        if constexpr (requires { objects.product; }) {
            return objects.product;
        } else {
            return objects.P;
        }
    }
};

}  // namespace znp
