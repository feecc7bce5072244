// The rules of the recursion (series/recursion.hpp) for the series A and B.
#pragma once

#include "series/euler_gamma_ab.hpp"
#include "series/merge.hpp"
#include "series/recursion.hpp"

namespace znp {

// U, V, W, X, then temporaries: three as long as X, three as long as V.
struct ABRules {
    using Node = std::array<ExactR, 10>;

    const Series_EulerGamma_BM_AB& series;

    bool ends(u64_t a, u64_t b) const { return b - a <= 2; }
    u64_t divide(u64_t a, u64_t b) const { return series.divide_even(a, b); }
    ABRules left(u64_t) const { return *this; }
    ABRules right(u64_t) const { return *this; }
    void end(Node& node, u64_t a, u64_t b) const { series.BSR_End(node[0], node[1], node[2], node[3], a, b); }
    Node behind(const Node& results) const;
    void right_half(Node&) const {}
    // Left a0 to a3, right b0 to b3:
    //     U = a0 b1 + a1 b0, V = a1 b1, W = a2 b1^2 + b2, X = a3 b1^3 + a0 b1 b2 + a1 b3.
    void merge(const BasicParameters& bp, Node& out, const Node& left, const Node& right, bool) const;
};

static_assert(RecursionRules<ABRules>);

// Words of X over a range allow V and U at most so many: X has the size of V^3 at least.
constexpr upL_t ab_short_words(upL_t X_words) {
    return X_words / 3 + 2;
}

}  // namespace znp
