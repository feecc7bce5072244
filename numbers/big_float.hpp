// BigFloat: signed, truncated numbers for the Newton routines and the final stages of a constant.
//
// The value is +- mantissa * B^exp, B the word base. An operation takes a precision p in words and may drop
// what lies below: p + 2 words are kept. Zero has L = 0, sign 1 and (normalised) exp 0.
//
// Every number carries the guard residue (multiply/kernels/guard_residue.hpp) of its magnitude, exponent
// included. Operations take it from their operands' residues: words that are dropped take their residue with
// them, and the words of the result are not looked at. So a comparison with the words at any later time
// checks all operations since the last one. Products of more than a few words are compared at once: what the
// words dropped and kept make together must be the product of the operands' residues. A mismatch is an
// ArithmeticFailure with "Checksum Mismatch. Multiplication Failed.".
//
// Positions: a number's magnitude is exp + L, one past the position of its top word; the word at position i
// is T[i - exp], and zero outside.
//
//   BigFloat    a view of words that somebody else owns
//   BigFloatR   a number in a caller's buffer of `size` words
//
// Operands may not lie in the result's buffer, except in the in-place operations. A result that does not fit
// throws BufferTooSmallException. Nothing allocates: sums read their operands through two windows of 128
// words on the stack.
#pragma once

#include <algorithm>
#include <optional>

#include "foundation/types.hpp"
#include "multiply/basic_parameters.hpp"
#include "multiply/transform.hpp"
#include "numbers/basic_int.hpp"
#include "numbers/exact_float.hpp"

namespace znp {

// Words kept beyond every precision argument, and the length of the windows of a sum.
inline constexpr upL_t extra_precision = 2;
inline constexpr upL_t addition_buffer = 128;

class BigFloat {
  public:
    class Transform;

    BigFloat() = default;
    // The residue as given, or that of the words.
    BigFloat(const cdi* T, upL_t L, s64_t exp, bool positive, u64_t residue)
        : T_(T), L_(L), exp_(exp), residue_(residue), sign_(positive) {}
    BigFloat(const cdi* T, upL_t L, s64_t exp, bool positive = true) : BigFloat(T, L, exp, positive, 0) {
        residue_ = words_residue(1);
    }

    const cdi* get_T() const { return T_; }
    upL_t get_L() const { return L_; }
    s64_t get_exp() const { return exp_; }
    s64_t get_mag() const { return exp_ + static_cast<s64_t>(L_); }
    int get_sign() const { return L_ == 0 ? 0 : (sign_ ? 1 : -1); }
    bool raw_sign() const { return sign_; }  // true: positive
    bool is_zero() const { return L_ == 0; }

    u64_t get_residue() const { return residue_; }
    // The stored residue minus that of the words, by threads; 0: they agree.
    u64_t hash_error(u64_t threads = 1) const;
    // The residue of the words below a position; from position low up to position high. All words have the
    // stored one.
    u64_t residue_below(s64_t position, u64_t threads = 1) const;
    u64_t residue_between(s64_t low, s64_t high, u64_t threads = 1) const;

    cdi word_at(s64_t position) const {
        return position >= exp_ && position < get_mag() ? T_[position - exp_] : 0;
    }

    // The words of positions [position, position + n), zeros outside the mantissa.
    void read_window(cdi* out, s64_t position, upL_t n) const;

    // The value without its sign as d * B^exp, d in [1/B, 1) (rounded), with the sign on d.
    double to_double(s64_t& exp) const;

    // Throws where the top word of a number that is about to seed an iteration is zero.
    void check_normalization() const;

    // These change how the view reads its words, not the words.
    void negate() { sign_ = L_ == 0 || !sign_; }
    void normalise_top();
    void shift_exp(s64_t n);            // times B^n
    void truncate_top(s64_t position);  // keeps only what lies below position
    void strip_l1s();  // an all-ones top (its first word may be one short) is removed word by word
    // The top min(p + 2, L) words of the number, and their count. By threads: the residue of what is dropped.
    BigFloat top_words(upL_t p, u64_t threads = 1) const;
    upL_t kept_words(upL_t p) const { return std::min(p + extra_precision, L_); }
    // The same with the residue of these words as they stand: where so much is dropped that its residue would
    // cost more, and the words are proven otherwise.
    BigFloat unproven_top_words(upL_t p, u64_t threads = 1) const;

  protected:
    u64_t words_residue(u64_t threads) const;
    void set_length(upL_t L);
    const cdi* T_ = nullptr;
    upL_t L_ = 0;
    s64_t exp_ = 0;
    u64_t residue_ = 0;
    bool sign_ = true;
};

// Compares magnitudes: 1, 0 or -1.
int ucmp(const BigFloat& a, const BigFloat& b);

// A transformed operand: the top min(p + 2, L) words of the source. Refers into a work buffer, owns nothing.
// An inverse that consumes it clears `image`.
class BigFloat::Transform {
  public:
    Transform(const BigFloat& source, const transform& algorithm, Image* image, TransformScratch* scratch,
              upL_t p);

    const transform* algorithm;
    Image* image;
    s64_t exp;
    upL_t L;
    bool sign;
    s64_t mag;
    u64_t residue;
};

class BigFloatR : public FloatR<BigFloat> {
  public:
    BigFloatR() = default;
    BigFloatR(cdi* buffer, upL_t size) { set_base(buffer, size); }

    void set_base(cdi* buffer, upL_t size);

    void set_zero();
    void set_uW(cdi x);
    void set_u64(u64_t x);
    void set_double(double x, s64_t exp);  // x * B^exp, exactly
    void set_bui(const BasicInt& source);
    void set_efp(const ExactFloat& source);
    void set_gfp(const BigFloat& source, upL_t p);  // the top min(p + 2, L) words

    // Words, length and exponent that the caller has written into the buffer, with the residue that the words
    // must have, or whichever they have.
    void set_words(upL_t L, s64_t exp, bool positive, u64_t residue);
    void set_words(upL_t L, s64_t exp, bool positive);
    // A number whose words lie in the buffer.
    void set_view(const BigFloat& view);

    // Complement and increment of the mantissa: the value becomes B^mag minus its former value.
    void negate_twos_complement();

    void mul_uW(cdi x);
    void set_mul_uW(const BigFloat& a, cdi x);

    // Sums and differences; the u forms take magnitudes, and usub needs |a| >= |b|.
    void set_uadd(const BigFloat& a, const BigFloat& b, upL_t p);
    void set_usub(const BigFloat& a, const BigFloat& b, upL_t p);
    void set_add(const BigFloat& a, const BigFloat& b, upL_t p);
    void set_sub(const BigFloat& a, const BigFloat& b, upL_t p);
    // |a| - |b| restricted to the p + 1 positions below mag; a borrow out of the top is discarded.
    void set_rsub(const BigFloat& a, const BigFloat& b, s64_t mag, upL_t p, bool positive);
    // Adds x in place at a position from exp to exp + L.
    void add_ip(u128_t x, s64_t position);

    void set_sqr(const BasicParameters& params, const BigFloat& a, upL_t p);
    void set_mul(const BasicParameters& params, const BigFloat& a, const BigFloat& b, upL_t p);
    // The same by two convolutions of half the length (the dispatcher's checked_mulp).
    void set_mulp(const BasicParameters& params, const BigFloat& a, const BigFloat& b, upL_t p);

    // The product of transformed operands, of which only p + 2 words below position te are wanted; the
    // transform may be shorter than the product as long as te excludes what wraps. A is consumed. scratch has
    // work_bytes bytes. A product that does not wrap is compared.
    void set_inverse_fsqr(TransformScratch* scratch, Transform& A, s64_t te, upL_t p);
    void set_inverse_fmul(TransformScratch* scratch, Transform& A, const Transform& B, s64_t te, upL_t p);

    // The same, left to the caller to compare: the guard residue of the transform's whole result
    // (transform::checked_fmul); nothing where no word is wanted and no transform ran.
    std::optional<u64_t> set_checked_fsqr(TransformScratch* scratch, Transform& A, s64_t te, upL_t p);
    std::optional<u64_t> set_checked_fmul(TransformScratch* scratch, Transform& A, const Transform& B,
                                          s64_t te, upL_t p);

  private:
    struct Product;
    void reset(upL_t L, s64_t exp, bool positive, u64_t residue);
    template <class Checked>
    void product(const BigFloat& a, const BigFloat& b, upL_t p, const char* location, Checked checked);
    void short_product(const BigFloat& a, const BigFloat& b, upL_t kept);
    template <class Inverse>
    std::optional<u64_t> take_product(Transform& A, const Product& whole, s64_t te, upL_t p, Inverse inverse);
    void signed_sum(const BigFloat& a, const BigFloat& b, bool b_positive, upL_t p);
};

}  // namespace znp
