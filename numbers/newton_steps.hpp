// What the Newton routines share: their scratch, their failures, their status line, the moved low word.
//
// Every routine doubles the precision from step to step along the chain p, (p + 1) >> 1, ... and multiplies
// only what it cannot deduce: a step's product is known in its top words, so that a short cyclic transform
// serves, whose wrapped words fall where nobody looks (D. J. Bernstein, "Removing redundancy in
// high-precision Newton iteration", 2004; A. H. Karp, P. Markstein, "High-precision division and square
// root", 1997).
//
// Units: precision p in words of 64 bits, positions in words, position 0 just above the point. The value that
// a routine returns is right to p words: its error is at most a few units of the position p below the top.
#pragma once

#include <optional>

#include "foundation/status_line.hpp"
#include "multiply/basic_parameters.hpp"
#include "multiply/transform.hpp"
#include "numbers/big_float.hpp"

namespace znp::newton {

using Float = BigFloat<cdi>;
using FloatR = BigFloatR<cdi>;

// From this precision down the small routines serve.
inline constexpr upL_t small_precision = 9;

// The longest product that they make, in words: a bound for the work buffer.
inline constexpr upL_t small_product = 20;

// The precision of the recursive call.
constexpr upL_t half_precision(upL_t p) {
    return p <= 2 ? p - 1 : (p + 1) >> 1;
}

// Scratch words, handed out from the front; what is left goes to the recursion.
class Scratch {
  public:
    Scratch(cdi* words, upL_t size) : words_(words), size_(size) {}
    upL_t size() const { return size_; }

    FloatR take(upL_t size) {
        FloatR number(words_, size);
        words_ += size;
        size_ -= size;
        return number;
    }

  private:
    cdi* words_;
    upL_t size_;
};

// Throws with the message where scratch is shorter than the words required.
void require_scratch(const Scratch& scratch, upL_t required, const char* message);

// The top of a product that does not look like 1 plus or minus a small error: prints what decided it. The
// texts are the routine's. The second form of each then throws with the text `failed`.
void print_top(const char* text, cdi top);
void print_magnitude(const char* text, s64_t magnitude, upL_t h);
[[noreturn]] void fail_top(const char* text, cdi top, const char* failed);
[[noreturn]] void fail_magnitude(const char* text, s64_t magnitude, upL_t h, const char* failed);

// Verifies a product of transformed operands by residues: what neither convergence nor a later step would
// show. The words of a cyclic product that wrapped are known to the caller of a step beforehand.
class ProductCheck {
  public:
    // The operands' words as they go into the transforms.
    ProductCheck(const Float& a, const Float& b);

    // The residue of the transform's whole result, if it ran.
    std::optional<u64_t> whole;

    // The product's position from which the words wrap, or its lowest position where no transform ran.
    s64_t wrap_position(const transform& algorithm) const;
    // known: residue of the words from wrap_position on, as a number, which may be off by up to `slack`.
    bool holds(const transform& algorithm, u64_t known, unsigned slack = 0) const;
    // For a product that does not wrap.
    bool holds(const transform& algorithm) const { return holds(algorithm, 0); }

  private:
    u64_t product_;
    s64_t exp_;
    upL_t L_;
};

// The residue of the words from `position` on of a product next to 1: of 1 followed by zeros, or of all ones.
u64_t near_one_residue(s64_t position, bool under);

// Prints the text, then throws with the text `failed`.
[[noreturn]] void fail_residue(const char* text, const char* failed);

// Adds one at the lowest word of a number that is longer than p words, so that no later step meets an
// all-zero or all-ones tail. Never grows the number.
void perturb(FloatR& y, upL_t p);

// Label and digits on the status line, if there is one.
void show_step(StatusLine* status, const char* label, upL_t h);

}  // namespace znp::newton
