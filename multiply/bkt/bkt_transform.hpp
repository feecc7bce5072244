// BKT as a transform: forward copies the operand, the inverse multiplies.
//
// It lets short products share the patterns that keep a transformed operand for several products. Image: the
// length as one 64-bit value, then the words. 64-bit words only; the 32-bit steps throw.
//
// Not cyclic: where a product is longer than the transform, every word of a window below max_bits is true up
// to the missing carry of multiply/bkt/window.hpp.
#pragma once

#include "multiply/transform.hpp"

namespace znp {

class BKTTransform final : public transform {
  public:
    explicit BKTTransform(upL_t L);  // for products of L 64-bit words

    const char* name() const override;

    void forward(Image* image, WordSpan<c32i> A, TransformScratch* scratch) const override;
    void inverse_fsqr(Window<c32i> R, Image* T, TransformScratch* scratch) const override;
    void inverse_fmul(Window<c32i> R, Image* T1, const Image* T2, TransformScratch* scratch) const override;

    void forward(Image* image, WordSpan<c64i> A, TransformScratch* scratch) const override;
    void inverse_fsqr(Window<c64i> R, Image* T, TransformScratch* scratch) const override;
    void inverse_fmul(Window<c64i> R, Image* T1, const Image* T2, TransformScratch* scratch) const override;

    // The whole product in the scratch, so that the window's words are the true ones.
    CheckedResult checked_fsqr(Window<c64i> R, Image* T, TransformScratch* scratch) const override;
    CheckedResult checked_fmul(Window<c64i> R, Image* T1, const Image* T2, TransformScratch* scratch) const override;
    u64_t modulus() const override { return 0; }

    bool equals(const transform& other) const override;

  private:
    void check_length(upL_t L) const;
};

}  // namespace znp
