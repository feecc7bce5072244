// FFT: convolution in double precision, the middle of the range of lengths.
//
// A product modulo 2^(N w) + 1 for a transform size (k, p, w); an ordinary product is shorter than N w bits.
// Right digits rest on the choice of w (docs/FFT_ERRORS.md). Every inverse looks at its points' distances
// from integers (fft_check.hpp); a product that fails this raises the generic exception with code 1 and
// leaves an undefined result. The residues of the number objects see what moves points by integers.
//
// An image has 8 N bytes, the scratch 4 N. Serial. Cost: about 7.5 N log2 N floating-point operations a
// product.
#pragma once

#include "multiply/fft/fft_plan.hpp"
#include "multiply/fft/fft_tables.hpp"
#include "multiply/transform.hpp"

namespace znp {

class FFT final : public transform {
  public:
    u32_t k;     // the odd factor
    u32_t p;     // log2 of the power-of-two factor
    u32_t w;     // bits per point
    u64_t N;     // k << p
    u64_t bits;  // N w, the product capacity

    // A size of the plan. The holder's tables must reach it when a step is called; queries do without.
    FFT(const TableHolder* holder, const fft::PlanRow& size);

    using transform::forward;
    using transform::inverse_fmul;
    using transform::inverse_fsqr;

    const char* name() const override { return "FFT"; }
    bool equals(const transform& other) const override;

    // At most N w bits; words past the operand count as zero.
    void forward(Image* image, WordSpan<c32i> A, TransformScratch* scratch) const override;
    // A window ends at most at N w / 32.
    void inverse_fsqr(Window<c32i> R, Image* T, TransformScratch* scratch) const override;
    void inverse_fmul(Window<c32i> R, Image* T1, const Image* T2, TransformScratch* scratch) const override;

    CheckedResult checked_fsqr(Window<c64i> R, Image* T, TransformScratch* scratch) const override;
    CheckedResult checked_fmul(Window<c64i> R, Image* T1, const Image* T2, TransformScratch* scratch) const override;
    u64_t modulus() const override;

    // Undoes forward, with no pointwise step.
    void inverse_from(Window<c32i> R, Image* T, TransformScratch* scratch) const;

    // Ring forms, which give all N w / 32 words of a residue modulo 2^(N w) + 1. Return its top bit: 1 means
    // the value 2^(N w), and the words are zero then.
    u32_t ring_fsqr(c32i* R, Image* T) const;
    u32_t ring_fmul(c32i* R, Image* T1, const Image* T2) const;
    u32_t ring_from(c32i* R, Image* T) const;

  private:
    const FFTTables& tables() const;
    unsigned leaf() const { return p % 2 != 0 ? k : 2 * k; }
    u32_t inverse(std::byte* words, Image* T, const Image* B) const;
    u32_t inverse_window(Window<c32i> R, Image* T, const Image* B, TransformScratch* scratch) const;
};

}  // namespace znp
