// The rules of the recursion with truncated products (ASR): P, Q, R as floats of a precision that falls from
// left to right.
//
// What stands right of a term is smaller than what stands left of it, so that a right half needs fewer words.
// A series that can tell how many (zl_BSS::PrecisionAtIndex) is summed without the words that no digit of the
// result depends on. There are no residues: what is not exact cannot be checked by them.
#pragma once

#include "numbers/big_float.hpp"
#include "series/recursion.hpp"

namespace znp {

// P, Q, R and two temporaries.
struct ASRRules {
    using Node = std::array<BigFloatR<cdi>, 5>;

    const zl_BSS_P2B3_Type0& series;
    upL_t p;      // words that the node needs
    u64_t terms;  // of the whole series

    bool ends(u64_t a, u64_t b) const { return b - a < series.end_threshold; }
    u64_t divide(u64_t a, u64_t b) const { return series.divide(a, b); }
    ASRRules left(u64_t) const { return *this; }
    ASRRules right(u64_t m) const { return {series, std::min(p, series.PrecisionAtIndex(m, terms)), terms}; }
    void end(Node& node, u64_t a, u64_t b) const;
    Node behind(const Node& results) const;
    void right_half(Node&) const {}
    void merge(const BasicParameters& bp, Node& out, const Node& left, const Node& right,
               bool subtract) const;
};

}  // namespace znp
