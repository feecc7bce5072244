// The words of a result as one number, wherever they stand.
#pragma once

#include "multiply/transform.hpp"
#include "multiply/vst/vst_frame.hpp"

namespace znp::vst {

class ResultWords {
  public:
    ResultWords(const Frame& frame, double* image, const Result& result)
        : geometry_(frame.geometry),
          ring_(frame.ring),
          image_(reinterpret_cast<std::byte*>(image)),
          result_(result),
          block_words_(frame.geometry.input_words()) {}

    bool in_window(u64_t block) const {
        return block * block_words_ >= result_.s && (block + 1) * block_words_ <= result_.e;
    }
    std::byte* at(u64_t block) const {
        return in_window(block) ? result_.R + (block * block_words_ - result_.s) * 4
                                : image_ + geometry_.block_offset(block) * sizeof(double);
    }
    upL_t words64() const { return block_words_ / 2; }  // of a block

    // Adds (subtracts) a number not longer than a block at the first bit of one and lets the carry run, over
    // the end by the rule of the ring. `block` may be blocks(), which is the end. A negative value modulo
    // 2^capacity + 1 that reaches -1 and becomes 2^capacity is noted in top().
    void add(u64_t block, const u64_t* number, upL_t length, bool subtract);

    // Of the ring modulo 2^capacity + 1: the value is 2^capacity.
    bool top() const { return top_; }

    // The parts of the window that lie in blocks which are not wholly in it.
    void copy_rest() const;

    // The guard residues, by threads; the window begins and ends between words of 64 bits.
    CheckedResult checked(u64_t threads) const;

  private:
    void wrap(const u64_t* number, upL_t length, bool subtract);
    bool is_zero() const;
    u64_t hash_image(upL_t low, upL_t high) const;

    Geometry geometry_;
    Ring ring_;
    std::byte* image_;
    Result result_;
    upL_t block_words_;
    bool top_ = false;
};

}  // namespace znp::vst
