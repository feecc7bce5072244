// transform: one convolution of a fixed product length, as a cheap value that holds no data.
//
// Made by multiplier::make_transform in the caller's storage. A product is forward, forward, inverse_fmul; a
// transformed operand (an image of transform_bytes) may serve several products made with equal transforms.
//
// Units: L, s, e in words of the call's word type; *_bytes in bytes; max_bits in bits.
// Buffers: an image has transform_bytes bytes, scratch work_bytes bytes, both aligned to 32 bytes.
// Aliasing: operands, images, scratch and result are disjoint.
// Threads: not shared between threads. It may split its own work over the threads that it was made for.
#pragma once

#include "foundation/types.hpp"
#include "multiply/basic_parameters.hpp"

namespace znp {

class transform {
  public:
    const TableHolder* holder;
    u64_t max_bits;         // product length that it serves
    upL_t transform_bytes;  // one transformed operand
    upL_t work_bytes;       // scratch beyond that

    virtual ~transform() = default;
    virtual const char* name() const = 0;

    // The whole product or its words [s, e), with both images and the scratch in bp's work buffer. T has 2 n,
    // La + Lb or e - s words. A work buffer below 2 transform_bytes + work_bytes throws.
    template <class word>
    void sqr(const BasicParameters& bp, word* T, const word* A, upL_t n) const;
    template <class word>
    void mul(const BasicParameters& bp, word* T, const word* A, upL_t La, const word* B, upL_t Lb) const;
    template <class word>
    void sqr_window(const BasicParameters& bp, word* T, upL_t s, upL_t e, const word* A, upL_t n) const;
    template <class word>
    void mul_window(const BasicParameters& bp, word* T, upL_t s, upL_t e, const word* A, upL_t La,
                    const word* B, upL_t Lb) const;

    // The steps. An inverse consumes its first image and leaves the second as it is.
    virtual void forward(void* image, const c32i* A, upL_t L, void* scratch) const = 0;
    virtual void inverse_fsqr(c32i* R, upL_t s, upL_t e, void* T, void* scratch) const = 0;
    virtual void inverse_fmul(c32i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const = 0;

    // 64-bit words: by default the 32-bit forms at twice the length.
    virtual void forward(void* image, const c64i* A, upL_t L, void* scratch) const;
    virtual void inverse_fsqr(c64i* R, upL_t s, upL_t e, void* T, void* scratch) const;
    virtual void inverse_fmul(c64i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const;

    // Same algorithm and same parameters, so that images made by either can be combined.
    virtual bool equals(const transform& other) const = 0;

    // Bytes of a work buffer for a whole product.
    upL_t product_bytes() const { return 2 * transform_bytes + work_bytes; }

  protected:
    transform(const TableHolder* holder_, u64_t max_bits_, upL_t transform_bytes_, upL_t work_bytes_)
        : holder(holder_), max_bits(max_bits_), transform_bytes(transform_bytes_), work_bytes(work_bytes_) {}
    transform(const transform&) = default;
    transform& operator=(const transform&) = default;
};

// Storage on the stack for one transform object, which it destroys.
class TransformSlot {
  public:
    static constexpr std::size_t bytes = 512;

    TransformSlot() = default;
    TransformSlot(const TransformSlot&) = delete;
    TransformSlot& operator=(const TransformSlot&) = delete;
    ~TransformSlot() { reset(); }

    void* place() { return storage_; }
    void adopt(transform* object) { reset(), object_ = object; }
    void reset() {
        if (object_ != nullptr) object_->~transform();
        object_ = nullptr;
    }
    transform& operator*() const { return *object_; }
    transform* operator->() const { return object_; }

  private:
    alignas(64) std::byte storage_[bytes];
    transform* object_ = nullptr;
};

}  // namespace znp
