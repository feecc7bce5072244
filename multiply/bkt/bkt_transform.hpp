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

    void forward(void* image, const c32i* A, upL_t L, void* scratch) const override;
    void inverse_fsqr(c32i* R, upL_t s, upL_t e, void* T, void* scratch) const override;
    void inverse_fmul(c32i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const override;

    void forward(void* image, const c64i* A, upL_t L, void* scratch) const override;
    void inverse_fsqr(c64i* R, upL_t s, upL_t e, void* T, void* scratch) const override;
    void inverse_fmul(c64i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const override;

    // The whole product in the scratch, so that the window's words are the true ones.
    u64_t checked_fsqr(c64i* R, upL_t s, upL_t e, void* T, void* scratch) const override;
    u64_t checked_fmul(c64i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const override;
    u64_t modulus() const override { return 0; }

    bool equals(const transform& other) const override;

  private:
    void check_length(upL_t L) const;
};

}  // namespace znp
