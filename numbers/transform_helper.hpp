// Products with transforms: how a transformed operand is kept in the work buffer and used twice.
//
// An operand that enters two products is transformed once: three forward transforms and two inverse ones
// instead of four and two, where both products fit the same transform. All work memory is bp's buffer: two
// images and the scratch; a buffer below 2 transform_bytes + work_bytes throws BufferTooSmallException at
// "TransformHelper::TransformHelper()". Nothing allocates.
//
// Results may lie over operands that are used up: an operand is transformed before a result of its product is
// written. mul_shared: out1 over a, out2 over a, b and c. mul_transformed: out over both.
#pragma once

#include "multiply/basic_parameters.hpp"
#include "multiply/transform.hpp"
#include "numbers/big_float.hpp"
#include "numbers/exact_float.hpp"

namespace znp {

// Words by which a transform is longer than a product of truncated operands: their extra words and the
// alignment.
inline constexpr upL_t transform_slack = 6;

// The work buffer carved for one transform.
class TransformHelper {
  public:
    TransformHelper(const BasicParameters& bp, const transform& algorithm);

    const transform& algorithm;
    std::byte* const T1;       // first image
    std::byte* const T2;       // second image
    std::byte* const scratch;  // of the transform
};

// out = a b to p words.
template <class word>
void mul_transformed(const BasicParameters& bp, BigFloatR<word>& out, const BigFloat<word>& a,
                     const BigFloat<word>& b, upL_t p);

// out1 = c a, out2 = c b.
template <class word>
void mul_shared(const BasicParameters& bp, ExactFloatR<word>& out1, ExactFloatR<word>& out2,
                const ExactFloat<word>& c, const ExactFloat<word>& a, const ExactFloat<word>& b);

// The same with the results' exponents limited to e, ready for an aligned += or -=.
template <class word>
void mul_shared(const BasicParameters& bp, ExactFloatR<word>& out1, ExactFloatR<word>& out2,
                const ExactFloat<word>& c, const ExactFloat<word>& a, const ExactFloat<word>& b, s64_t e);

// out1 = c a to p1 words, out2 = c b to p2 words.
template <class word>
void mul_shared(const BasicParameters& bp, BigFloatR<word>& out1, upL_t p1, BigFloatR<word>& out2, upL_t p2,
                const BigFloat<word>& c, const BigFloat<word>& a, const BigFloat<word>& b);

// The procedure behind the three above, with the transforms given: t1 serves the first product, t2 the
// second.
//     forward_c(helper)          the common operand's transform in helper.T2
//     product1(helper, C)        forward a into helper.T1, inverse into out1, which consumes T1
//     product2(helper, C)        the same for b and out2
template <class ForwardC, class Product1, class Product2>
void shared_products(const BasicParameters& bp, const transform& t1, const transform& t2, ForwardC forward_c,
                     Product1 product1, Product2 product2) {
    if (&t1 == &t2 || t1.equals(t2)) {
        const TransformHelper helper(bp, t1.max_bits >= t2.max_bits ? t1 : t2);
        const auto C = forward_c(helper);
        product1(helper, C);
        product2(helper, C);
        return;
    }
    {
        const TransformHelper helper(bp, t1);
        product1(helper, forward_c(helper));
    }
    const TransformHelper helper(bp, t2);
    product2(helper, forward_c(helper));
}

}  // namespace znp
