// The class of the series A and B: U, V, W, X in a range; with left a0 to a3, right b0 to b3,
//
//     U = a0 b1 + a1 b0, V = a1 b1, W = a2 b1^2 + b2, X = a3 b1^3 + a0 b1 b2 + a1 b3.
#pragma once

#include "series/euler_gamma_ab.hpp"
#include "series/merge_arithmetic.hpp"
#include "series/recursion.hpp"
#include "series/section.hpp"

namespace znp {

// Where a merge writes. The results may lie over the operands of their names, left and right. X_right is the
// right X's place: once used up, it takes the right V, which V may lie over. U and a1b0 are null where nobody
// needs U; then sum may be a0b1. The others lie apart.
template <class Number>
struct ABPlaces {
    Number *U, *a1b0;
    Number &V, &W, &X;
    Number& X_right;
    Number &long1, &long2, &sum;  // as long as X
    Number &a0b1, &b1b1;          // as long as V
};

// The schedule of a merge. The short products are a chain; each other one has a length of its own.
template <class By, class Left, class Right>
void merge_ab(const By& by, const ABPlaces<typename By::Result>& out, const Left& a, const Right& b) {
    constexpr auto one = ChainTransforms::one;
    constexpr auto own = ChainTransforms::own;

    auto& a1b3 = out.long1;
    by.multiply_one(a1b3, b.X, a.V);
    auto& b1 = out.X_right;
    by.move(b1, b.V);

    const auto V = by.product(out.V, a.V, b1);
    const auto a0b1 = by.product(out.a0b1, a.U, b1);
    const auto b1b1 = by.product(out.b1b1, b1, b1);
    if (out.U != nullptr) {
        by.multiply(one, by.product(*out.a1b0, b.U, a.V), V, a0b1, b1b1);
    } else {
        by.multiply(own, V, a0b1, b1b1);
    }
    by.strip(out.V);

    auto& a0b1b2 = out.long2;
    by.multiply_one(a0b1b2, b.W, out.a0b1);
    by.add(out.sum, a0b1b2, a1b3);

    auto& a2b1b1 = out.long1;
    by.multiply_one(a2b1b1, a.W, out.b1b1);
    auto& b2 = out.long2;
    by.move(b2, b.W);
    by.add(out.W, a2b1b1, b2);
    by.strip(out.W);

    auto& cube = out.long1;
    by.multiply_one(cube, b1, out.b1b1);
    auto& a3cube = out.long2;
    by.multiply_one(a3cube, a.X, cube);
    by.add(out.X, a3cube, out.sum);
    by.strip(out.X);
    if (out.U != nullptr) by.add(*out.U, out.a0b1, *out.a1b0);
}

template <class T>
struct ABObjects {
    T U, V, W, X;
    T long1, long2, sum;
    T a1b0, a0b1, b1b1;

    template <class Self>
    static auto all(Self& self) {
        return std::array{&self.U,     &self.V,   &self.W,    &self.X,    &self.long1,
                          &self.long2, &self.sum, &self.a1b0, &self.a0b1, &self.b1b1};
    }
    const T& shown() const { return U; }
};

struct ABRules {
    template <class T>
    using Objects = ABObjects<T>;
    using Node = Objects<ExactFloatR>;

    const Series_EulerGamma_BM_AB& series;

    bool ends(u64_t a, u64_t b) const { return b - a <= 2; }
    u64_t divide(u64_t a, u64_t b) const { return series.divide_even(a, b); }
    void end(Node& node, u64_t a, u64_t b) const { series.BSR_End(node.U, node.V, node.W, node.X, a, b); }
    Node behind(const Node& results) const;
    void merge(const BasicParameters& bp, Node& out, const Node& left, const Node& right, bool) const;

    static MemoryPlan memory(const Section& section);
    static u64_t levels(const Section&) { return 0; }
    static Objects<ObjectPlace> layout(const Section& section, upL_t words);
    static upL_t result_words(const Section& section);
    static upL_t join_words(const Section& section);
    static void check(const SumTask& task, const SectionRow& row, const Node& node);
    static void keep(const SumTask& task, const SectionRow& row, const Node& node);
    static void join(const SumTask& task, const Section& section, const Node& node);
};

// Words of X over a range allow V and U at most so many: X has the size of V^3 at least.
constexpr upL_t ab_short_words(upL_t X_words) {
    return X_words / 3 + 2;
}

template <class F>
void with_section_rules(const Series_EulerGamma_BM_AB& series, const Section&, F f) {
    f(ABRules{series});
}

}  // namespace znp
