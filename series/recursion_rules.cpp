#include "series/recursion_rules.hpp"

#include <algorithm>

namespace znp {

namespace {

// A number of an end routine lies where the node's object has to be.
SeriesInt end_object(const ExactR& x) {
    return SeriesInt(x.get_base(), x.get_size());
}

void adopt(ExactR& x, const SeriesInt& value) {
    x.reset_T();
    x.set_LN(value.get_L(), 0, value.get_hash());
}

}  // namespace

// ---- P, Q; the right P in t

void TaylorRules::end(Node& node, u64_t a, u64_t b) const {
    SeriesInt P = end_object(node[0]);
    SeriesInt Q = end_object(node[1]);
    series.BSR_End(P, Q, a, b);
    adopt(node[0], P);
    adopt(node[1], Q);
}

TaylorRules::Node TaylorRules::behind(const Node& results) const {
    const auto& [P, Q, t] = results;
    const upL_t offset = std::max(P.get_L(), Q.get_L());
    Node right;
    right[0] = t;
    right[0].reset_T();
    right[1].set_rest_of(offset, Q);
    right[2].set_rest_of(offset, P);
    return right;
}

void TaylorRules::merge(const BasicParameters& bp, Node& out, const Node& left, const Node& right,
                        bool subtract) const {
    merge_P2B1(bp, out[0], out[1], left[0], left[1], right[0], right[1], subtract);
}

// ---- P, Q

void BBPRules::end(Node& node, u64_t, u64_t b) const {
    series.BSR_End(node[0], node[1], b);
}

BBPRules::Node BBPRules::behind(const Node& results) const {
    const auto& [P, Q, t] = results;
    const upL_t offset = std::max(P.get_L(), Q.get_L());
    Node right;
    right[0].set_rest_of(offset, P);
    right[1].set_rest_of(offset, Q);
    right[2] = t;
    return right;
}

void BBPRules::merge(const BasicParameters& bp, Node& out, const Node& left, const Node& right,
                     bool subtract) const {
    merge_P2B2(bp, out[0], out[1], out[2], left[0], left[1], right[0], right[1], subtract);
}

// ---- P, Q, R

void Type0Rules::end(Node& node, u64_t a, u64_t b) const {
    SeriesInt P = end_object(node[0]);
    SeriesInt Q = end_object(node[1]);
    SeriesInt R = end_object(node[2]);
    const upL_t half = half_words(node[3].get_size());
    SeriesInt t0(node[3].get_base(), half);
    SeriesInt t1(node[3].get_base() + half, half);
    series.BSR_End(P, Q, R, t0, t1, a, b);
    adopt(node[0], P);
    adopt(node[1], Q);
    adopt(node[2], R);
}

Type0Rules::Node Type0Rules::behind(const Node& results) const {
    const auto& [P, Q, R, t] = results;
    const upL_t offset = std::max({P.get_L(), Q.get_L(), R.get_L()});
    Node right;
    right[0].set_rest_of(offset, P);
    right[1].set_rest_of(offset, Q);
    right[2].set_rest_of(offset, R);
    right[3] = t;
    return right;
}

void Type0Rules::merge(const BasicParameters& bp, Node& out, const Node& left, const Node& right,
                       bool subtract) const {
    merge_P2B3(bp, out[0], out[1], with_R ? &out[2] : nullptr, out[3], {left[0], left[1], left[2]},
               {right[0], right[1], right[2]}, subtract);
}

}  // namespace znp
