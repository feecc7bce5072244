// The class of series whose terms are fractions of their own: P and Q in a range,
//
//     P = Pl Qr +- Ql Pr, Q = Ql Qr.
#pragma once

#include "series/bss.hpp"
#include "series/classes/pq_rules.hpp"

namespace znp {

struct BBPRules : PQRules<BBPRules, zl_BSS_P2B2_BBP, PQObjects> {
    using Node = Objects<ExactFloatR>;
    using PQRules::PQRules;

    // Q may lie over Qr, of which P needs the image: one transform.
    template <class By, class Numbers>
    static void merge_by(const By& by, const MergeResults<typename By::Result>& out, const Numbers& left,
                         const Numbers& right, bool subtract) {
        by.multiply(ChainTransforms::one, by.second_product(*out.t, right.P, left.Q, left.P, right.Q),
                    by.product(out.Q, left.Q, right.Q), by.sum(out.P, left.P, right.Q, *out.t, subtract));
        by.strip(out.Q);
    }

    void end(Node& node, u64_t, u64_t b) const { series.BSR_End(node.P, node.Q, b); }
    Node behind(const Node& results) const;
    void merge(const BasicParameters& bp, Node& out, const Node& left, const Node& right,
               bool subtract) const {
        merge_by(ExactArithmetic(bp), {out.P, out.Q, &out.t}, left, right, subtract);
    }
};

template <class F>
void with_section_rules(const zl_BSS_P2B2_BBP& series, const Section&, F f) {
    f(BBPRules(series));
}

}  // namespace znp
