// What the Newton routines share: the chain of precisions and its scratch, how a product next to 1 is judged,
// products that are verified, failures, the status line.
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

#include <initializer_list>
#include <optional>

#include "foundation/exceptions.hpp"
#include "foundation/status_line.hpp"
#include "multiply/basic_parameters.hpp"
#include "multiply/transform.hpp"
#include "numbers/big_float.hpp"
#include "numbers/transform_helper.hpp"

namespace znp::newton {

// From this precision down the small routines serve.
inline constexpr upL_t small_precision = 9;

// The precision of the recursive call.
constexpr upL_t half_precision(upL_t p) {
    return p <= 2 ? p - 1 : (p + 1) >> 1;
}

// ---- Memory

// Scratch words, handed out from the front; what is left goes to the recursion.
class Scratch {
  public:
    Scratch(cdi* words, upL_t size) : words_(words), size_(size) {}
    upL_t size() const { return size_; }

    BigFloatR take(upL_t size) {
        BigFloatR number(words_, size);
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

// Words of the correction of an estimate that is right to h words.
constexpr upL_t correction_words(upL_t h) {
    return h + 3;
}

// Scratch of a chain of steps, each of which has its estimate, to h words and `spare` beyond, and behind it
// first the recursion and then the correction.
upL_t chain_scratch_words(upL_t p, upL_t spare);

// Work buffer of a chain whose longest transform has so many words.
upL_t chain_work_bytes(upL_t transform_words, u64_t threads);

// ---- Failures

// A product that does not look as it should. What decided it is on the console by then.
class ConvergenceFailure : public ArithmeticFailure {
  public:
    using ArithmeticFailure::ArithmeticFailure;
    [[noreturn]] void raise() const override { throw *this; }
};

// A routine as its failures name it, and the tests that all routines make.
struct Routine {
    const char* name;
    const char* failed;    // message of the ConvergenceFailure; null: it is raised without a report
    const char* no_space;  // message where the scratch is too short

    // The estimate's number to h words and `spare` beyond, from scratch that must have a step's words.
    BigFloatR take_estimate(Scratch& scratch, upL_t h, upL_t spare) const;

    // A product next to 1 tells by one word on which side of 1 it lies: `over` above, up to `deepest` less
    // below. True: below, the estimate was too small.
    bool is_under(cdi top, cdi over, unsigned deepest = 1) const;

    // T = |1 - T| for a product on the known side of 1, of which the words below te count: above them lie
    // the 1 and zeros, or all ones. Its magnitude must not be above the limit; h is printed.
    void take_distance(BigFloatR& T, bool under, s64_t te, s64_t limit, upL_t h) const;

    // Prints "name(): what" and the words, and throws.
    struct ShownWord {
        const char* label;
        cdi word;
    };
    [[noreturn]] void fail(const char* what, std::initializer_list<ShownWord> words = {}) const;
    void require_residue(bool holds) const {
        if (!holds) fail("Residue Check Failure");
    }
};

// ---- Verified products

// Verifies a product of transformed operands by residues: what neither convergence nor a later step would
// show. The words of a cyclic product that wrapped are known to the caller of a step beforehand.
class ProductCheck {
  public:
    // The operands as they go into the transforms.
    ProductCheck(const BigFloat& a, const BigFloat& b);

    // The guard residue of the transform's whole result, if it ran.
    std::optional<u64_t> whole;

    // The product's position from which the words wrap, or its lowest position where no transform ran.
    s64_t wrap_position(const transform& algorithm) const;
    // known: guard residue of the words from wrap_position on, as a number, which may be off by up to
    // `slack`.
    bool holds(const transform& algorithm, u64_t known, unsigned slack = 0) const;
    // For a product that does not wrap.
    bool holds(const transform& algorithm) const { return holds(algorithm, 0); }

  private:
    s64_t exp_;
    upL_t L_;
    u64_t product_;  // residue of the mantissas' product
};

// The guard residue of the words from `position` on of a product next to 1: of 1 followed by zeros, or of all
// ones.
u64_t near_one_residue(s64_t position, bool under);

// The top p + 2 words of a number and their transform.
struct Operand {
    Operand(const TransformHelper& helper, Image* image, const BigFloat& source, upL_t p)
        : words(source.top_words(p)), transformed(words, helper.algorithm, image, helper.scratch, p) {}

    BigFloat words;
    BigFloat::Transform transformed;
};

// out = p + 2 words of a b below te; a is consumed.
ProductCheck checked_mul(BigFloatR& out, const TransformHelper& helper, Operand& a, const Operand& b,
                         s64_t te, upL_t p);

// c = d r to h + 1 words for the words of a distance d and an estimate r; uses the first image.
void set_correction(const Routine& routine, BigFloatR& c, const TransformHelper& helper, const BigFloat& d,
                    upL_t d_precision, const Operand& r, upL_t h);

// ---- The end of a step

// y = y0 + c, or y0 - c where y0 was too large, to `kept` words; perturbed.
void correct(BigFloatR& y, const BigFloat& y0, const BigFloat& c, bool under, upL_t kept, upL_t p);

// Adds one at the lowest word of a number that is longer than p words, so that no later step meets an
// all-zero or all-ones tail. Never grows the number.
void perturb(BigFloatR& y, upL_t p);

// Label and digits on the status line, if there is one.
void show_step(StatusLine* status, const char* label, upL_t h);

}  // namespace znp::newton
