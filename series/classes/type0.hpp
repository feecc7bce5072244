// The class of hypergeometric series: P, Q, R in a range,
//
//     P = Pl Qr +- Rl Pr, Q = Ql Qr, R = Rl Rr.
//
// What nobody on the right multiplies with is left out: R of the last range and of the right halves down from
// it. A section of exact floats, or of floats whose precision falls from left to right (ASR): what stands
// right of a term is smaller than what stands left of it, and a series that can tell by how much
// (zl_BSS::PrecisionAtIndex) is summed without the words that no digit of the result depends on.
#pragma once

#include "series/bss.hpp"
#include "series/classes/pq_rules.hpp"

namespace znp {

template <class By, class Numbers>
void merge_type0(const By& by, const MergeResults<typename By::Result>& out, const Numbers& left,
                 const Numbers& right, bool subtract) {
    const auto t = by.second_product(*out.t, right.P, left.R, left.P, right.Q);
    if (out.R != nullptr) {
        by.multiply(ChainTransforms::own, t, by.product(*out.R, right.R, left.R));
        by.strip(*out.R);
    } else {
        by.multiply(ChainTransforms::own, t);
    }
    by.multiply(ChainTransforms::own, by.sum(out.P, left.P, right.Q, *out.t, subtract),
                by.product(out.Q, left.Q, right.Q));
    by.strip(out.Q);
}

// ---- Exact sections

template <class T>
struct Type0Objects {
    T P, Q, R, t;

    template <class Self>
    static auto all(Self& self) {
        return std::array{&self.P, &self.Q, &self.R, &self.t};
    }
    const T& shown() const { return P; }
};

struct Type0Rules : PQRules<Type0Rules, zl_BSS_P2B3_Type0, Type0Objects> {
    using Node = Objects<ExactFloatR>;

    const bool with_R;

    Type0Rules(const zl_BSS_P2B3_Type0& series_, bool with_R_) : PQRules(series_), with_R(with_R_) {}

    static void merge_by(const auto&... arguments) { merge_type0(arguments...); }

    Type0Rules left(u64_t) const { return {series, true}; }
    Type0Rules right(u64_t) const { return *this; }
    void end(Node& node, u64_t a, u64_t b) const;
    Node behind(const Node& results) const;
    void merge(const BasicParameters& bp, Node& out, const Node& left, const Node& right,
               bool subtract) const {
        merge_type0(ExactArithmetic(bp), {out.P, out.Q, &out.t, with_R ? &out.R : nullptr}, left, right,
                    subtract);
    }
    void check(const SumTask& task, const SectionRow& row, const Node& node) const;
};

// ---- Sections with truncated products

template <class T>
struct TruncatedType0Objects {
    T P, Q, R, product, t;

    template <class Self>
    static auto all(Self& self) {
        return std::array{&self.P, &self.Q, &self.R, &self.product, &self.t};
    }
    const T& shown() const { return P; }
};

struct TruncatedType0Rules : PQRules<TruncatedType0Rules, zl_BSS_P2B3_Type0, TruncatedType0Objects> {
    using Node = Objects<BigFloatR>;

    const upL_t p;      // words that the node needs
    const u64_t terms;  // of the whole series

    TruncatedType0Rules(const zl_BSS_P2B3_Type0& series_, upL_t p_, u64_t terms_)
        : PQRules(series_), p(p_), terms(terms_) {}

    static void merge_by(const auto&... arguments) { merge_type0(arguments...); }

    TruncatedType0Rules left(u64_t) const { return *this; }
    TruncatedType0Rules right(u64_t m) const {
        return {series, std::min(p, series.PrecisionAtIndex(m, terms)), terms};
    }
    void end(Node& node, u64_t a, u64_t b) const;
    Node behind(const Node& results) const;
    void merge(const BasicParameters& bp, Node& out, const Node& left, const Node& right,
               bool subtract) const {
        merge_type0(TruncatedArithmetic(bp, p, p, out.product), {out.P, out.Q, &out.t, &out.R}, left, right,
                    subtract);
    }
    static void check(const SumTask& task, const SectionRow& row, const Node& node) {
        check3(task.log, row.a, row.b, node.P, node.Q, node.R, task.bp.tds);
    }
};

template <class F>
void with_section_rules(const zl_BSS_P2B3_Type0& series, const Section& section, F f) {
    if (section.row.asr) {
        f(TruncatedType0Rules(series, section.row.precision, section.terms));
    } else {
        f(Type0Rules(series, !section.is_last()));
    }
}

}  // namespace znp
