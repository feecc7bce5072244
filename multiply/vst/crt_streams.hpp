// The two passes over words of a product from its residues modulo B - 1 and B + 1, where B is 2^N and N the
// bits of L words: the fold of an operand, and the join of the residues.
//
// Each takes successive ranges of words from below, and its object carries what goes from one to the next:
// the words may be in memory at once, or come from files piece by piece. Results may be written over
// operands. Serial, no allocation. Cost: one pass.
#pragma once

#include <algorithm>

#include "foundation/types.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "multiply/vst/vst_frame.hpp"

namespace znp::vst {

// An operand of up to 2 L words modulo B - 1 (cyclic: the sum of its halves) or B + 1 (negacyclic: the lower
// half minus the upper one).
template <class word>
class Fold {
  public:
    explicit Fold(Ring ring) : cyclic_(ring == Ring::cyclic) {}

    // T = the next `count` words of the lower half and `upper_count` of the upper one, which may be shorter.
    void next(word* T, const word* lower, upL_t count, const word* upper, upL_t upper_count) {
        if (cyclic_) {
            carry_ = add_words(T, lower, upper, upper_count, carry_);
            carry_ = copy_add_carry(T + upper_count, lower + upper_count, count - upper_count, carry_);
        } else {
            carry_ = sub_words(T, lower, upper, upper_count, carry_);
            carry_ = copy_sub_borrow(T + upper_count, lower + upper_count, count - upper_count, carry_);
        }
    }

    // What leaves the last word is added to the first one, in either ring: B = 1, and -B = 1. If this carry
    // goes through all words, they are zero and the residue modulo B + 1 is B. Modulo B - 1 it does not.
    bool carry() const { return carry_; }

  private:
    bool cyclic_;
    bool carry_ = false;
};

// The product, below B^2 - 1, from its residues c modulo B - 1 (all ones may stand for 0 where the product is
// not 0) and n modulo B + 1. As modulo B^2 - 1
//
//     2 product = (c + n) + B (c - n),
//
// its halves of L words each are those of sum and difference, S and D, shifted by one bit. These have the
// lowest bit p in common, and carries s and d. What the shift leaves out,
//
//     (p + d) / 2 + B (p + s) / 2,
//
// is added at the end: where p + d or p + s is odd, B^2 / 2 = 1 / 2 and B / 2 are the top bits of the upper
// and of the lower half; where p + d is -1, the rest is -1 at the first word of the lower half, and where p +
// s is 2, it is 1 at the first word of the upper one. No half overflows by that. d is -1 only if n > c, and
// then S is not 0, or s is 1 and the lower half has its top bit. With p and s both 1, D is all ones only if d
// is -1, and then the upper half has no top bit. With n = B, p + d and p + s are 0 or 1.
template <class word>
class Join {
  public:
    // negative: n is B, that is -1, and its words are zero.
    explicit Join(bool negative) : negative_(negative), sum_{negative}, difference_{negative} {}

    // The next words of c and n. A word of the halves is known when the next one comes: writes `count` words
    // of each half from the one before lower and upper on; from the first range on the first call, one less.
    void next(word* lower, word* upper, const word* c, const word* n, upL_t count) {
        constexpr upL_t block = 128;
        word sums[block], differences[block];
        for (upL_t i = 0; i < count; i += block) {
            const upL_t length = std::min(block, count - i);
            if (negative_) {
                sum_.carry = sub_words(sums, c + i, n + i, length, sum_.carry);
                difference_.carry = add_words(differences, c + i, n + i, length, difference_.carry);
            } else {
                sum_.carry = add_words(sums, c + i, n + i, length, sum_.carry);
                difference_.carry = sub_words(differences, c + i, n + i, length, difference_.carry);
            }
            if (!begun_) odd_ = sums[0] % 2 != 0;
            sum_.halve(lower + i, sums, length, begun_);
            difference_.halve(upper + i, differences, length, begun_);
            begun_ = true;
        }
    }

    struct Carries {
        bool borrow;  // from the first word of the lower half on
        bool carry;   // to that of the upper one
    };
    // The last words of both halves.
    Carries finish(word& lower, word& upper) const {
        const int s = (odd_ ? 1 : 0) + (negative_ ? -1 : 1) * (sum_.carry ? 1 : 0);
        const int d = (odd_ ? 1 : 0) - (negative_ ? -1 : 1) * (difference_.carry ? 1 : 0);
        lower = sum_.with_top(s % 2 != 0);
        upper = difference_.with_top(d % 2 != 0);
        const bool borrow = d < 0;
        const bool carry = s > 1;
        return {borrow, carry};
    }

  private:
    struct Half {
        bool carry;
        word last = 0;

        word with_top(word bit) const {
            return static_cast<word>(last >> 1 | bit << (WordTraits<word>::bits - 1));
        }
        void halve(word* T, const word* words, upL_t count, bool begun) {
            if (begun) T[-1] = with_top(words[0] & 1);
            for (upL_t i = 0; i + 1 < count; i++)
                T[i] = static_cast<word>(words[i] >> 1 | words[i + 1] << (WordTraits<word>::bits - 1));
            last = words[count - 1];
        }
    };

    bool negative_;
    bool odd_ = false;  // the lowest bit of both
    bool begun_ = false;
    Half sum_, difference_;
};

}  // namespace znp::vst
