// The stages between the series and the digits: inverse square roots, divisions, products. Each prints its
// lines and gives its result, which lies behind what the caller holds. Precisions p in words. A stage that
// fails a check is repeated once, if its operands are whole.
#pragma once

#include "compute/engine/stage_memory.hpp"
#include "multiply/transform.hpp"
#include "numbers/transform_helper.hpp"

namespace znp {

// 1/sqrt(n), with room for `extra` words more than the p + 4 of the iteration. A failure is the fatal error
// "Computation Failed".
HeapFloat inv_sqrt_B(StageMemory& memory, u64_t n, upL_t p, upL_t extra = 0);

// numerator / denominator, with room for a product with a word and the carry of a sum.
HeapFloat divide_B(StageMemory& memory, const BigFloat& numerator, const BigFloat& denominator, upL_t p);
constexpr upL_t divide_words(upL_t p) {
    return p + 5;
}

// The top p + 2 words of a * b, with half_length by the route of two half-length convolutions. A failure is the
// fatal error "Checksum Mismatch. Multiplication Failed."
HeapFloat final_multiply_B(StageMemory& memory, const BigFloat& a, const BigFloat& b, upL_t p,
                           bool half_length);

// A factor that is transformed once, for verified products with others. Takes bp's work buffer as long as it
// lives: work_bytes_for the product's length.
class VerifiedFactor {
  public:
    // The others have up to `others` words.
    VerifiedFactor(const BasicParameters& bp, const BigFloat& factor, upL_t others);

    // The top p + 2 words of the product, verified.
    void multiply(BigFloatR& out, const BigFloat& a, upL_t p) const;

  private:
    TransformSlot slot_;
    const transform& algorithm_;
    const TransformHelper helper_;
    const BigFloat factor_;
    const BigFloat::Transform image_;
};

}  // namespace znp
