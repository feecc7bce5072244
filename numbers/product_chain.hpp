// Chains of products: neighbours share an operand, which is transformed once.
//
// A product is two forward transforms and an inverse one. Where a product and the next one of its chain name
// the same operand object, and their transforms are equal (transform::equals), the operand's image is kept,
// which saves a forward transform for each such link. A square takes one forward transform, and no addend.
//
//     c a, c b                two products with a common operand: three forward transforms for four
//     d c, c a, a b           any path: four for six
//
// A chain of one product without an addend is a plain product (set_mul). Work memory is bp's buffer: two
// images and a transform's scratch (numbers/transform_helper.hpp); work_bytes_for the longest product, with
// the slack below if it is truncated, serves any chain. Nothing allocates.
//
// Overlap: every operand is transformed, or multiplied, before a result of its product is written, so that a
// result may lie over the operands of its own product and of those before it, unless a later product names
// them. On one transform (ChainTransforms::one) it may also lie over the operand that the next product
// shares. Addends lie apart from all results. Results do not overlap each other.
//
// Errors: BufferTooSmallException for a result, or for the work buffer at each transform that is taken;
// lengths beyond the tables as in multiply/dispatch.hpp.
#pragma once

#include <span>

#include "multiply/basic_parameters.hpp"
#include "multiply/transform.hpp"
#include "numbers/big_float.hpp"
#include "numbers/exact_float.hpp"

namespace znp {

// out = a b, or with an addend a b +- addend. A sum needs a word above it, and zero words below the product
// where the addend reaches lower.
struct ExactProduct {
    ExactFloatR& out;
    const ExactFloat& a;
    const ExactFloat& b;
    const ExactFloat* addend = nullptr;
    bool subtract = false;
};

// The same to p words: p + 2 are kept. Operands are cut to the words of the products that they enter, the
// most of them. A product that gets an addend is made in `product`, which lies apart from all else.
struct TruncatedProduct {
    BigFloatR& out;
    const BigFloat& a;
    const BigFloat& b;
    upL_t p;
    const BigFloat* addend = nullptr;
    bool subtract = false;
    BigFloatR* product = nullptr;
};

// Which transforms a chain takes: one, of the longest product; or for each product its own, but the one of
// those before it where that costs less.
enum class ChainTransforms { one, own };

inline constexpr upL_t longest_chain = 4;  // products

void multiply_chain(const BasicParameters& bp, std::span<const ExactProduct> chain, ChainTransforms which);
void multiply_chain(const BasicParameters& bp, std::span<const TruncatedProduct> chain,
                    ChainTransforms which);

// With the transforms given, one for each product.
void multiply_chain(const BasicParameters& bp, std::span<const ExactProduct> chain,
                    std::span<const transform* const> transforms);
void multiply_chain(const BasicParameters& bp, std::span<const TruncatedProduct> chain,
                    std::span<const transform* const> transforms);

// Words by which a transform is longer than a product of truncated operands: their extra words and the
// alignment.
inline constexpr upL_t transform_slack = 6;

// A chain of exact products of at most so many words is multiplied without images, by way of the stack.
inline constexpr upL_t direct_product_words = 58;

}  // namespace znp
