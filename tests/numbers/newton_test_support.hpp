// What the tests of the Newton routines share: operands, runs in buffers of exactly the promised sizes,
// errors against exact integers, transforms that count or err, and tables that make all err.
#pragma once

#include <cstring>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "console_capture.hpp"
#include "multiply/dispatch.hpp"
#include "numbers/float_test_support.hpp"
#include "numbers/newton_steps.hpp"

namespace znp::testing {

using newton::Scratch;

inline constexpr upL_t longest_sweep = 300;
inline constexpr upL_t long_precisions[] = {384, 511, 512, 777, 1000, 1024, 2000, 3001, 4096, 5000};

// Bounds of the error, as log2 of the relative error in units of B^-p.
//
// A result that ends early, at word p below its top, is moved by one unit there, and such a half result's
// error squared is one unit again: two units where the top word is 1. All other errors come from the first
// step, which squares a double's 2^-52 against one word: 2^-104 to 2^-64; for a square root times 1.5 and,
// the root of a word being 2^-32 at the least, against a top word of half a word.
inline constexpr double hard_error_bound = 1;
inline constexpr double random_error_bound = -28;

struct Operand {
    std::vector<c64i> words;
    bool random = false;
    double error_bound() const { return random ? random_error_bound : hard_error_bound; }
};

// Operands of L words that are hard on an iteration, next to powers of the word base and of two, and a random
// one.
inline std::vector<Operand> hard_operands(upL_t L, std::mt19937_64& rng) {
    constexpr c64i ones = ~c64i{0};
    std::vector<Operand> all;
    const auto add = [&](c64i bottom, c64i middle, c64i top) {
        Operand x{std::vector<c64i>(L, middle)};
        x.words.front() = bottom;
        x.words.back() = top;
        all.push_back(std::move(x));
    };
    add(ones, ones, ones);                 // B^L - 1
    add(0, 0, c64i{1} << (rng() % 64));    // a power of two
    add(1, 0, c64i{1} << 63);              // next to one, above
    add(1, 0, 1);                          // B^(L-1) + 1
    add(ones, ones, (c64i{1} << 63) - 1);  // next to one, below
    add(0, 0, ones - 1);                   // the top word one short of all ones
    add(rng(), 0, ones);
    all.push_back({random_mantissa(L, rng)});
    Operand x{std::vector<c64i>(L), true};
    for (c64i& w : x.words) w = rng() | 1;
    all.push_back(std::move(x));
    return all;
}

// Words of scratch of exactly this size between guards.
class ScratchWords {
  public:
    explicit ScratchWords(upL_t size) : words_(size), size_(size) {}
    Scratch get() { return {words_.data(), size_}; }

  private:
    GuardedWords<c64i> words_;
    upL_t size_;
};

// log2 of |a - b| / |b| for the values of integers.
inline double relative_log2(const Integer& a, const Integer& b) {
    const Integer d = a - b;
    return d.is_zero() ? -1e300 : d.log2() - b.log2();
}

// log2 of the error of y = n / d in units of the p-th word below the top: |y d - n| / n times B^p. The
// operands are mantissas and exponents of floats.
inline double quotient_error(const BigFloat& y, const BigFloat& n, const BigFloat& d, upL_t p) {
    const s64_t low = std::min(y.get_exp() + d.get_exp(), n.get_exp());
    const Integer product = value(y, 0 + y.get_exp()) * value(d, d.get_exp());
    const Integer yd = product << static_cast<u64_t>(y.get_exp() + d.get_exp() - low) * 64;
    return relative_log2(yd, value(n, low)) + 64 * static_cast<double>(p);
}

// A transform that passes everything on to another one, counts its steps, and flips one bit in the image
// after a forward step, or in the second image of a product before an inverse step.
class FaultyTransform final : public transform {
  public:
    enum class Fault { none, after_forward, before_inverse };

    explicit FaultyTransform(const transform& target)
        : transform(target.holder, target.max_bits, target.transform_bytes, target.work_bytes),
          target_(target) {}
    // The step counts from 0; the bit lies in an image.
    void arm(Fault fault, int step, upL_t bit) { fault_ = fault, step_ = step, bit_ = bit; }

    mutable int forwards = 0, inverses = 0;

    using transform::forward;
    using transform::inverse_fmul;
    using transform::inverse_fsqr;
    const char* name() const override { return target_.name(); }
    void forward(Image* image, WordSpan<c32i> A, TransformScratch* scratch) const override {
        target_.forward(image, A, scratch);
    }
    void forward(Image* image, WordSpan<c64i> A, TransformScratch* scratch) const override {
        target_.forward(image, A, scratch);
        strike(Fault::after_forward, forwards++, image);
    }
    void inverse_fsqr(Window<c32i> R, Image* T, TransformScratch* scratch) const override {
        target_.inverse_fsqr(R, T, scratch);
    }
    void inverse_fmul(Window<c32i> R, Image* T1, const Image* T2, TransformScratch* scratch) const override {
        target_.inverse_fmul(R, T1, T2, scratch);
    }
    void inverse_fsqr(Window<c64i> R, Image* T, TransformScratch* scratch) const override {
        strike(Fault::before_inverse, inverses++, T);
        target_.inverse_fsqr(R, T, scratch);
    }
    void inverse_fmul(Window<c64i> R, Image* T1, const Image* T2, TransformScratch* scratch) const override {
        strike(Fault::before_inverse, inverses++, const_cast<Image*>(T2));
        target_.inverse_fmul(R, T1, T2, scratch);
    }
    CheckedResult checked_fsqr(Window<c64i> R, Image* T, TransformScratch* scratch) const override {
        strike(Fault::before_inverse, inverses++, T);
        return target_.checked_fsqr(R, T, scratch);
    }
    CheckedResult checked_fmul(Window<c64i> R, Image* T1, const Image* T2,
                               TransformScratch* scratch) const override {
        strike(Fault::before_inverse, inverses++, const_cast<Image*>(T2));
        return target_.checked_fmul(R, T1, T2, scratch);
    }
    u64_t modulus() const override { return target_.modulus(); }
    bool equals(const transform& other) const override { return &other == this; }

  private:
    void strike(Fault fault, int step, Image* image) const {
        if (fault != fault_ || step != step_) return;
        reinterpret_cast<unsigned char*>(image)[bit_ / 8] ^= static_cast<unsigned char>(1u << bit_ % 8);
    }

    const transform& target_;
    Fault fault_ = Fault::none;
    int step_ = 0;
    upL_t bit_ = 0;
};

// Twiddle tables of a run whose memory has gone bad: every transform of some length errs.
class BadTables {
  public:
    BadTables() : memory_(table_size(bits) / sizeof(c64i) + 8) {
        auto at = reinterpret_cast<std::uintptr_t>(memory_.data());
        auto* const start = reinterpret_cast<std::byte*>(memory_.data()) + (32 - at % 32) % 32;
        build_tables(holder, bits, start);
        for (c64i& word : memory_) {
            const unsigned exponent = word >> 52 & 0x7ff;  // of a root of unity; pointers have none
            if (exponent > 0x300 && exponent < 0x400) word ^= u64_t{1} << 50;
        }
    }
    TableHolder holder;

  private:
    static constexpr u64_t bits = 300'000;
    std::vector<c64i> memory_;
};

}  // namespace znp::testing
