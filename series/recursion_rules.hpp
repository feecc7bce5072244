// The rules of the recursion (series/recursion.hpp) for the classes of series with exact nodes.
#pragma once

#include "series/catalogue.hpp"
#include "series/merge.hpp"
#include "series/recursion.hpp"

namespace znp {

// P, Q and a temporary, which holds the right half's P.
struct TaylorRules {
    using Node = std::array<ExactR, 3>;

    const Series_E_Taylor& series;

    bool ends(u64_t a, u64_t b) const { return b - a < series.end_threshold; }
    u64_t divide(u64_t a, u64_t b) const { return series.divide(a, b); }
    TaylorRules left(u64_t) const { return *this; }
    TaylorRules right(u64_t) const { return *this; }
    void end(Node& node, u64_t a, u64_t b) const;
    Node behind(const Node& results) const;
    void right_half(Node& node) const { std::swap(node[0], node[2]); }
    void merge(const BasicParameters& bp, Node& out, const Node& left, const Node& right,
               bool subtract) const;
};

// P, Q and a temporary.
struct BBPRules {
    using Node = std::array<ExactR, 3>;

    const zl_BSS_P2B2_BBP& series;

    bool ends(u64_t a, u64_t b) const { return b - a < series.end_threshold; }
    u64_t divide(u64_t a, u64_t b) const { return series.divide(a, b); }
    BBPRules left(u64_t) const { return *this; }
    BBPRules right(u64_t) const { return *this; }
    void end(Node& node, u64_t a, u64_t b) const;
    Node behind(const Node& results) const;
    void right_half(Node&) const {}
    void merge(const BasicParameters& bp, Node& out, const Node& left, const Node& right,
               bool subtract) const;
};

// P, Q, R and a temporary. What nobody on the right multiplies with is left out: R of the last range and of
// the right halves down from it.
struct Type0Rules {
    using Node = std::array<ExactR, 4>;

    const zl_BSS_P2B3_Type0& series;
    bool with_R;

    bool ends(u64_t a, u64_t b) const { return b - a < series.end_threshold; }
    u64_t divide(u64_t a, u64_t b) const { return series.divide(a, b); }
    Type0Rules left(u64_t) const { return {series, true}; }
    Type0Rules right(u64_t) const { return *this; }
    void end(Node& node, u64_t a, u64_t b) const;
    Node behind(const Node& results) const;
    void right_half(Node&) const {}
    void merge(const BasicParameters& bp, Node& out, const Node& left, const Node& right,
               bool subtract) const;
};

static_assert(RecursionRules<TaylorRules> && RecursionRules<BBPRules> && RecursionRules<Type0Rules>);

}  // namespace znp
