// transform: one convolution of a fixed product length, as a cheap value that holds no data.
//
// Made by multiplier::make_transform in the caller's storage. A product is forward, forward, inverse_fmul; a
// transformed operand (an image of transform_bytes) may serve several products made with equal transforms.
//
// Units: L, n, s, e in words of the call's word type; *_bytes in bytes; max_bits in bits.
// Buffers: an image has transform_bytes bytes, scratch work_bytes bytes, both aligned to 32 bytes;
// transform_bytes is a multiple of 32.
// Aliasing: operands, images, scratch and result are disjoint.
// Threads: not shared between threads. It may split its own work over the threads that it was made for.
// Errors: a whole product beyond max_bits is ConvolutionTooSmallException with name() and the two lengths in
// bits. The steps refuse an operand or a window's end beyond max_bits, with that exception or as a fatal
// error.
#pragma once

#include "foundation/types.hpp"
#include "multiply/basic_parameters.hpp"

namespace znp {

class transform {
  public:
    const TableHolder* holder;
    u64_t max_bits;         // product length that it serves; at least the one that was asked for
    upL_t transform_bytes;  // one transformed operand
    upL_t work_bytes;       // scratch beyond that

    virtual ~transform() = default;
    virtual const char* name() const = 0;  // key of the algorithm

    // The whole product or its words [s, e), e at most the product's length, by the steps below with both
    // images and the scratch in bp's work buffer. T has 2 n, La + Lb or e - s words. An operand of length 0
    // gives zeros. The whole product must fit max_bits, and the work buffer must have product_bytes(): a
    // smaller one throws (code work_space_too_small) before anything is written.
    template <class word>
    void sqr(const BasicParameters& bp, word* T, const word* A, upL_t n) const;
    template <class word>
    void mul(const BasicParameters& bp, word* T, const word* A, upL_t La, const word* B, upL_t Lb) const;
    template <class word>
    void sqr_window(const BasicParameters& bp, word* T, upL_t s, upL_t e, const word* A, upL_t n) const;
    template <class word>
    void mul_window(const BasicParameters& bp, word* T, upL_t s, upL_t e, const word* A, upL_t La,
                    const word* B, upL_t Lb) const;

    // The steps. Each operand may be as long as max_bits by itself, so that a product can be longer than the
    // transform: then only its words above those on which the excess top words wrap are true, and s must not
    // lie below them. e is at most max_bits; words of the window above the product are zero.
    //
    // An inverse consumes its first image and leaves the second as it is.
    virtual void forward(void* image, const c32i* A, upL_t L, void* scratch) const = 0;
    virtual void inverse_fsqr(c32i* R, upL_t s, upL_t e, void* T, void* scratch) const = 0;
    virtual void inverse_fmul(c32i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const = 0;

    // 64-bit words: by default the 32-bit forms at twice the length, on the same memory. A class that keeps
    // the default therefore reads and writes words as bytes (by copies or vectors) and never as objects of
    // type c32i, which its operands may not be. It brings these names into its scope with using-declarations.
    virtual void forward(void* image, const c64i* A, upL_t L, void* scratch) const;
    virtual void inverse_fsqr(c64i* R, upL_t s, upL_t e, void* T, void* scratch) const;
    virtual void inverse_fmul(c64i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const;

    // The steps of a product in one, with both images (B may be A: the square, and T2 is not used). Where an
    // algorithm has a shorter way than the steps one by one, which is the default.
    virtual void product(c32i* R, upL_t s, upL_t e, const c32i* A, upL_t La, const c32i* B, upL_t Lb,
                         void* T1, void* T2, void* scratch) const;
    virtual void product(c64i* R, upL_t s, upL_t e, const c64i* A, upL_t La, const c64i* B, upL_t Lb,
                         void* T1, void* T2, void* scratch) const;

    // Inverses that can be verified: the same with the residue (multiply/kernels/residue.hpp) of the whole
    // result R, of which the window is a part. The operands' product is R + q M, where M is the modulus of a
    // cyclic algorithm and q the words above max_bits, less one if they are more than the words below. A
    // modulus of 0: nothing wraps, R is the product. An algorithm without these forms throws.
    virtual u64_t checked_fsqr(c64i* R, upL_t s, upL_t e, void* T, void* scratch) const;
    virtual u64_t checked_fmul(c64i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const;
    virtual u64_t modulus() const;  // its residue

    // Same algorithm and same parameters, so that images made by either can be combined.
    virtual bool equals(const transform& other) const = 0;

    // Bytes of a work buffer for a whole product.
    upL_t product_bytes() const { return 2 * transform_bytes + work_bytes; }

  protected:
    transform(const TableHolder* holder_, u64_t max_bits_, upL_t transform_bytes_, upL_t work_bytes_)
        : holder(holder_), max_bits(max_bits_), transform_bytes(transform_bytes_), work_bytes(work_bytes_) {}
    transform(const transform&) = default;
    transform& operator=(const transform&) = default;

  private:
    void check_product(const char* location, const BasicParameters& bp, u64_t bits) const;
};

// Storage on the stack for one transform object, which it destroys.
class TransformSlot {
  public:
    static constexpr std::size_t bytes = 512;

    TransformSlot() = default;
    TransformSlot(const TransformSlot&) = delete;
    TransformSlot& operator=(const TransformSlot&) = delete;
    ~TransformSlot() { reset(); }

    // Before a new object is made in place(), the old one goes (reset); then the slot adopts the new one.
    void* place() { return storage_; }
    void reset() {
        if (object_ != nullptr) object_->~transform();
        object_ = nullptr;
    }
    void adopt(transform* object) { object_ = object; }
    transform& operator*() const { return *object_; }
    transform* operator->() const { return object_; }

  private:
    alignas(64) std::byte storage_[bytes];
    transform* object_ = nullptr;
};

}  // namespace znp
