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
    u32_t a;                       // primes
    u32_t b;                       // odd factor of the length
    u32_t c;                       // log2 of the power-of-two factor
    u64_t capacity;                // bits of a product
    const vst::SetTables* record;  // null in queries
    u32_t levels;                  // binary levels above a block
    u32_t first_levels;            // those above the contiguous parts
    u32_t log2_threads;
    u64_t threads;
    upL_t carry_bytes;  // of each thread

    // Fewer than 4 levels is InvalidTransformParametersException. The holder's tables must have the set when
    // a step is called; queries do without (null). Threads that would find no work are left out.
    VST(const TableHolder* holder, const vst::Geometry& geometry, u64_t threads);

    using transform::forward;
    using transform::inverse_fmul;
    using transform::inverse_fsqr;

    const char* name() const override { return "VST"; }
    bool equals(const transform& other) const override;

    // At most capacity bits. The plain group is the cyclic one.
    void forward(void* image, const c32i* A, upL_t L, void* scratch) const override;
    void inverse_fsqr(c32i* R, upL_t s, upL_t e, void* T, void* scratch) const override;
    void inverse_fmul(c32i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const override;

    // The images' parts are made and used in one pass.
    void product(c32i* R, upL_t s, upL_t e, const c32i* A, upL_t La, const c32i* B, upL_t Lb, void* T1,
                 void* T2, void* scratch) const override;
    void product(c64i* R, upL_t s, upL_t e, const c64i* A, upL_t La, const c64i* B, upL_t Lb, void* T1,
                 void* T2, void* scratch) const override;

    u64_t checked_fsqr(c64i* R, upL_t s, upL_t e, void* T, void* scratch) const override;
    u64_t checked_fmul(c64i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const override;
    u64_t modulus() const override;

    // All capacity / 32 words of a product modulo 2^capacity - 1 (all ones may stand for zero).
    void cyclic_forward(void* image, const c32i* A, upL_t L, void* scratch) const;
    void cyclic_inverse_fsqr(c32i* R, void* T, void* scratch) const;
    void cyclic_inverse_fmul(c32i* R, void* T1, const void* T2, void* scratch) const;

    // The same modulo 2^capacity + 1. The inverses return the top bit: 1 means 2^capacity, and the words are
    // zero then.
    void negacyclic_forward(void* image, const c32i* A, upL_t L, void* scratch) const;
    u32_t negacyclic_inverse_fsqr(c32i* R, void* T, void* scratch) const;
    u32_t negacyclic_inverse_fmul(c32i* R, void* T1, const void* T2, void* scratch) const;

    // Both at once: the images' parts are made and used in one pass. A's words may lie in T2, and so may R.
    void cyclic_product(c32i* R, const c32i* A, upL_t La, const c32i* B, upL_t Lb, void* T1, void* T2,
                        void* scratch) const;
    u32_t negacyclic_product(c32i* R, const c32i* A, upL_t La, const c32i* B, upL_t Lb, void* T1, void* T2,
                             void* scratch) const;

  private:
    vst::Geometry geometry_;
    vst::Stages stages_;

    vst::Frame frame(vst::Ring ring, void* scratch) const;
    void check_operand(upL_t L) const;
    void check_window(upL_t s, upL_t e) const;
    void forward_in(vst::Ring ring, void* image, const c32i* A, upL_t L, void* scratch) const;
    u32_t inverse_in(vst::Ring ring, c32i* R, upL_t s, upL_t e, void* T1, const void* T2,
                     void* scratch) const;
    u32_t product_in(vst::Ring ring, const vst::Result& result, const vst::Operand& A, const vst::Operand& B,
                     void* T1, void* T2, void* scratch) const;
};

}  // namespace znp
