// VST: convolution over several primes of 48 bits at once, the large end of the range of lengths.
//
// A product modulo 2^capacity - 1, exact: every inverse checks the parts of the coefficients that must be
// zero (multiply/vst/redundancy.hpp). The groups of the negacyclic ring work modulo 2^capacity + 1.
//
// Cost: four vector operations on each of two kinds of ports for four points of one prime and level, three
// transforms to a product. An image has 8 a / (3 (a - 1)) bytes for each byte of capacity and the paddings,
// 3.0 to 3.8. Scratch: some hundred KiB for each thread.
#pragma once

#include "multiply/transform.hpp"
#include "multiply/vst/vst_passes.hpp"
#include "multiply/vst/vst_tables.hpp"

namespace znp {

class VST final : public transform {
  public:
    vst::Geometry geometry;
    u64_t capacity;                // bits of a product
    const vst::SetTables* record;  // null in queries
    u64_t threads;

    // Fewer than 4 levels is InvalidTransformParametersException. The holder's tables must have the set when
    // a step is called; queries do without (null). Threads that would find no work are left out.
    VST(const TableHolder* holder, const vst::Geometry& geometry, u64_t threads);

    using transform::forward;
    using transform::inverse_fmul;
    using transform::inverse_fsqr;

    const char* name() const override { return "VST"; }
    bool equals(const transform& other) const override;

    // At most capacity bits. The plain group is the cyclic one.
    void forward(Image* image, WordSpan<c32i> A, TransformScratch* scratch) const override;
    void inverse_fsqr(Window<c32i> R, Image* T, TransformScratch* scratch) const override;
    void inverse_fmul(Window<c32i> R, Image* T1, const Image* T2, TransformScratch* scratch) const override;

    // The images' parts are made and used in one pass.
    void product(Window<c32i> R, WordSpan<c32i> A, WordSpan<c32i> B, const WorkAreas& work) const override;
    void product(Window<c64i> R, WordSpan<c64i> A, WordSpan<c64i> B, const WorkAreas& work) const override;

    CheckedResult checked_fsqr(Window<c64i> R, Image* T, TransformScratch* scratch) const override;
    CheckedResult checked_fmul(Window<c64i> R, Image* T1, const Image* T2, TransformScratch* scratch) const override;
    u64_t modulus() const override;

    // The steps in either ring: cyclic, as above, modulo 2^capacity - 1 (all ones may stand for zero), or
    // negacyclic, modulo 2^capacity + 1, where the inverses return the top bit: true means 2^capacity, and
    // the words are zero then. The words of a product's A and those of its result may lie in T2.
    void forward_in(vst::Ring ring, Image* image, const vst::Operand& A, TransformScratch* scratch) const;
    bool inverse_in(vst::Ring ring, const vst::Result& result, Image* T1, const Image* T2,
                    TransformScratch* scratch) const;
    bool product_in(vst::Ring ring, const vst::Result& result, const vst::Operand& A, const vst::Operand& B,
                    const WorkAreas& work) const;

  private:
    vst::Stages stages_;

    vst::Frame frame(vst::Ring ring, TransformScratch* scratch) const;
    void check_operand(upL_t L) const;
    void check_window(upL_t s, upL_t e) const;
    bool judged(vst::Ring ring, const vst::Outcome& outcome) const;
};

}  // namespace znp
