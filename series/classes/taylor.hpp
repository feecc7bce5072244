// The class of e: P and Q in a range, and no factor for what stands on its right,
//
//     P = Pl Qr +- Pr, Q = Ql Qr.
#pragma once

#include "series/catalogue.hpp"
#include "series/classes/pq_rules.hpp"

namespace znp {

// A right half's P lies in t, apart from the P that the merge makes.
struct TaylorRules : PQRules<TaylorRules, Series_E_Taylor, PQObjects> {
    using Node = Objects<ExactFloatR>;
    using PQRules::PQRules;
    static constexpr bool right_P_in_t = true;

    template <class By, class Numbers>
    static void merge_by(const By& by, const MergeResults<typename By::Result>& out, const Numbers& left,
                         const Numbers& right, bool subtract) {
        by.multiply(ChainTransforms::one, by.sum(out.P, left.P, right.Q, right.P, subtract),
                    by.product(out.Q, left.Q, right.Q));
        by.strip(out.Q);
    }

    void end(Node& node, u64_t a, u64_t b) const;
    Node behind(const Node& results) const;
    void right_half(Node& node) const { std::swap(node.P, node.t); }
    void merge(const BasicParameters& bp, Node& out, const Node& left, const Node& right,
               bool subtract) const {
        merge_by(ExactArithmetic(bp), {out.P, out.Q}, left, right, subtract);
    }
};

template <class F>
void with_section_rules(const Series_E_Taylor& series, const Section&, F f) {
    f(TaylorRules(series));
}

}  // namespace znp
