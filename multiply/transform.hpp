// transform: one convolution of a fixed product length, as a cheap value that holds no data.
//
// Made by multiplier::make_transform in the caller's storage. A product is forward, forward, inverse_fmul; a
// transformed operand (an image of transform_bytes) may serve several products made with equal transforms.
//
// Units: lengths and windows in words of the call's word type; *_bytes in bytes; max_bits in bits.
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
#include "multiply/word_span.hpp"

namespace znp {

// What lies in an image and in the scratch is the algorithm's own: these types have no definition.
struct Image;
struct TransformScratch;

inline Image* image_at(void* place) {
    return static_cast<Image*>(place);
}
inline const Image* image_at(const void* place) {
    return static_cast<const Image*>(place);
}
inline TransformScratch* scratch_at(void* place) {
    return static_cast<TransformScratch*>(place);
}

// What a product works on.
struct WorkAreas {
    Image* T1;
    Image* T2;
    TransformScratch* scratch;
};

// Guard residues (multiply/kernels/guard_residue.hpp) of a result: of all its words, of which those in the
// window are read where they were delivered, and of the window's alone, as a number from its first word on.
struct CheckedResult {
    u64_t whole;
    u64_t window;
};

class transform {
  public:
    const TableHolder* holder;
    u64_t max_bits;         // product length that it serves; at least the one that was asked for
    upL_t transform_bytes;  // one transformed operand
    upL_t work_bytes;       // scratch beyond that

    virtual ~transform() = default;
    virtual const char* name() const = 0;  // key of the algorithm

    // The whole product, as many words as the operands have together, or a window of it, by the steps below
    // in bp's work buffer. An operand of length 0 gives zeros. The whole product must fit max_bits, and the
    // work buffer must have product_bytes(): a smaller one throws (code work_space_too_small) before anything
    // is written.
    template <class word>
    void sqr(const BasicParameters& bp, word* T, WordSpan<word> A) const;
    template <class word>
    void mul(const BasicParameters& bp, word* T, WordSpan<word> A, WordSpan<word> B) const;
    template <class word>
    void sqr_window(const BasicParameters& bp, Window<word> R, WordSpan<word> A) const;
    template <class word>
    void mul_window(const BasicParameters& bp, Window<word> R, WordSpan<word> A, WordSpan<word> B) const;

    // The steps. Each operand may be as long as max_bits by itself, so that a product can be longer than the
    // transform: then only its words above those on which the excess top words wrap are true, and the window
    // must not begin below them. It ends at most at max_bits; its words above the product are zero.
    //
    // An inverse consumes its first image and leaves the second as it is.
    virtual void forward(Image* image, WordSpan<c32i> A, TransformScratch* scratch) const = 0;
    virtual void inverse_fsqr(Window<c32i> R, Image* T, TransformScratch* scratch) const = 0;
    virtual void inverse_fmul(Window<c32i> R, Image* T1, const Image* T2,
                              TransformScratch* scratch) const = 0;

    // 64-bit words: by default the 32-bit forms at twice the length, on the same memory. A class that keeps
    // the default therefore reads and writes words as bytes (by copies or vectors) and never as objects of
    // type c32i, which its operands may not be. It brings these names into its scope with using-declarations.
    virtual void forward(Image* image, WordSpan<c64i> A, TransformScratch* scratch) const;
    virtual void inverse_fsqr(Window<c64i> R, Image* T, TransformScratch* scratch) const;
    virtual void inverse_fmul(Window<c64i> R, Image* T1, const Image* T2, TransformScratch* scratch) const;

    // The steps of a product in one (B may be A: the square, and T2 is not used). Where an algorithm has a
    // shorter way than the steps one by one, which is the default.
    virtual void product(Window<c32i> R, WordSpan<c32i> A, WordSpan<c32i> B, const WorkAreas& work) const;
    virtual void product(Window<c64i> R, WordSpan<c64i> A, WordSpan<c64i> B, const WorkAreas& work) const;

    // Inverses that can be verified: the same with guard residues. The operands' product is R + q M, where R
    // is the whole result, M the modulus of a cyclic algorithm and q the words above max_bits, less one if
    // they are more than the words below. A modulus of 0: nothing wraps, R is the product. An algorithm
    // without these forms throws.
    virtual CheckedResult checked_fsqr(Window<c64i> R, Image* T, TransformScratch* scratch) const;
    virtual CheckedResult checked_fmul(Window<c64i> R, Image* T1, const Image* T2,
                                       TransformScratch* scratch) const;
    virtual u64_t modulus() const;  // its guard residue

    // A window of the whole product with its residues, by these; B may be A.
    CheckedResult checked_mul(const BasicParameters& bp, Window<c64i> R, WordSpan<c64i> A,
                              WordSpan<c64i> B) const;

    // Same algorithm and same parameters, so that images made by either can be combined.
    virtual bool equals(const transform& other) const = 0;

    // Bytes of a work buffer for a whole product, and how it is divided.
    upL_t product_bytes() const { return 2 * transform_bytes + work_bytes; }
    WorkAreas work_areas(std::byte* work) const {
        return {image_at(work), image_at(work + transform_bytes), scratch_at(work + 2 * transform_bytes)};
    }

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
