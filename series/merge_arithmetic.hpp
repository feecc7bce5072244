// The arithmetic of a merge. A class of series states its merge once, as a schedule of chains of products and
// of sums (series/classes/); these types carry a schedule out on integers, on exact floats and on truncated
// ones. A number on disk will be one more.
//
// The operations of a schedule, on an arithmetic `by`:
//     product(out, a, b)                  out = a b, a product of a chain
//     second_product(out, a, b, c, d)     the same, for one that is then added to the product c d
//     sum(out, a, b, addend, subtract)    out = a b +- addend, a product of a chain
//     multiply(transforms, product, ...)  the chain: neighbours share an operand
//     multiply_one(out, a, b)             out = a b, a product that shares nothing
//     add(out, a, b)                      out = a + b
//     move(out, x)                        out = x, where x is about to be overwritten
//     strip(x)                            zero words at the low end drop out in multiples of four
//
// Which results may lie over which operands: numbers/product_chain.hpp.
#pragma once

#include <array>

#include "multiply/basic_parameters.hpp"
#include "numbers/basic_int.hpp"
#include "numbers/big_float.hpp"
#include "numbers/exact_float.hpp"
#include "numbers/product_chain.hpp"

namespace znp {

// What the schedules of the classes with P, Q (and R) write. t, a temporary, and R are not null where the
// schedule has them; R may be null where nobody on the right multiplies with it.
template <class Number>
struct MergeResults {
    Number& P;
    Number& Q;
    Number* t = nullptr;
    Number* R = nullptr;
};

// Integers of a few words below a series' end threshold. An addend may be longer than its product and is then
// used up.
class IntegerArithmetic {
  public:
    using Result = BasicIntR;
    struct Product {
        BasicIntR& out;
        const BasicInt& a;
        const BasicInt& b;
        BasicIntR* addend = nullptr;
        bool subtract = false;
    };

    Product product(BasicIntR& out, const BasicInt& a, const BasicInt& b) const { return {out, a, b}; }
    Product second_product(BasicIntR& out, const BasicInt& a, const BasicInt& b, const BasicInt&,
                           const BasicInt&) const {
        return {out, a, b};
    }
    Product sum(BasicIntR& out, const BasicInt& a, const BasicInt& b, BasicIntR& addend,
                bool subtract) const {
        return {out, a, b, &addend, subtract};
    }
    template <class... Products>
    void multiply(ChainTransforms, const Products&... products) const {
        (multiply_one(products), ...);
    }
    void strip(BasicIntR&) const {}

  private:
    static void multiply_one(const Product& x) {
        x.out.set_mulB(x.a, x.b);
        if (x.addend == nullptr) return;
        BasicIntR& t = *x.addend;
        if (x.subtract) {
            x.out -= t;
        } else if (t.get_L() <= x.out.get_L()) {
            x.out += t;
        } else {  // where the terms hardly shrink, the half with one term more can be the larger one
            t += x.out;
            x.out.set_bui(t);
        }
    }
};

// Exact floats. A sum is made in place, in the words of its product.
class ExactArithmetic {
  public:
    using Result = ExactFloatR;
    using Product = ExactProduct;

    explicit ExactArithmetic(const BasicParameters& bp) : bp_(bp) {}

    Product product(ExactFloatR& out, const ExactFloat& a, const ExactFloat& b) const { return {out, a, b}; }
    Product second_product(ExactFloatR& out, const ExactFloat& a, const ExactFloat& b, const ExactFloat&,
                           const ExactFloat&) const {
        return {out, a, b};
    }
    Product sum(ExactFloatR& out, const ExactFloat& a, const ExactFloat& b, const ExactFloat& addend,
                bool subtract) const {
        return {out, a, b, &addend, subtract};
    }
    template <class... Products>
    void multiply(ChainTransforms transforms, const Products&... products) const {
        multiply_chain(bp_, std::array<Product, sizeof...(products)>{products...}, transforms);
    }
    void multiply_one(ExactFloatR& out, const ExactFloat& a, const ExactFloat& b) const {
        out.set_mul(bp_, a, b);
    }
    void add(ExactFloatR& out, const ExactFloat& a, const ExactFloat& b) const { out.set_add(a, b); }
    void move(ExactFloatR& out, const ExactFloat& x) const { out.set_efp(x); }
    void strip(ExactFloatR& x) const { x.strip_low(); }

  private:
    const BasicParameters& bp_;
};

// Floats to p words: p + 2 are kept. Of a second product only q words are made, what the right range needs,
// or fewer where it lies so far below the first that their sum keeps less of it. The operands of the right
// range may have as few words, since P and Q are multiplied with the same ones and only their quotient
// counts.
//
// Buffers: p + 2 words for results and for the temporary in which the product of a sum is made, q + 2 for
// second products; a product that is shorter takes no more than its words, a sum one more. The work buffer
// serves a product of truncated_merge_words.
class TruncatedArithmetic {
  public:
    using Result = BigFloatR;
    using Product = TruncatedProduct;

    TruncatedArithmetic(const BasicParameters& bp, upL_t p, upL_t q, BigFloatR& temporary)
        : bp_(bp), p_(p), q_(q), temporary_(temporary) {}

    Product product(BigFloatR& out, const BigFloat& a, const BigFloat& b) const { return {out, a, b, p_}; }
    Product second_product(BigFloatR& out, const BigFloat& a, const BigFloat& b, const BigFloat& c,
                           const BigFloat& d) const;
    Product sum(BigFloatR& out, const BigFloat& a, const BigFloat& b, const BigFloat& addend,
                bool subtract) const {
        return {out, a, b, p_, &addend, subtract, &temporary_};
    }
    template <class... Products>
    void multiply(ChainTransforms transforms, const Products&... products) const {
        multiply_chain(bp_, std::array<Product, sizeof...(products)>{products...}, transforms);
    }
    void multiply_one(BigFloatR& out, const BigFloat& a, const BigFloat& b) const {
        out.set_mul(bp_, a.top_words(p_, bp_.tds), b.top_words(p_, bp_.tds), p_);
    }
    void add(BigFloatR& out, const BigFloat& a, const BigFloat& b) const { out.set_add(a, b, p_); }
    void move(BigFloatR& out, const BigFloat& x) const { out.set_gfp(x, p_); }
    void strip(BigFloatR& x) const;

  private:
    const BasicParameters& bp_;
    const upL_t p_, q_;
    BigFloatR& temporary_;
};

// The longest product of a truncated merge to p words, for operands of at most so many words.
upL_t truncated_merge_words(upL_t left, upL_t right, upL_t p);

}  // namespace znp
