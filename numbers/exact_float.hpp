// ExactFloat: exact positive numbers with a residue.
//
// The value is mantissa * B^exp, B the word base. Nothing is ever rounded. The exponent lets low zero words
// drop out of products; the residue modulo 2^61 - 1 of the whole value, exponent included, and its guard
// residue (multiply/kernels/guard_residue.hpp) are carried through every operation from the operands'
// residues, so that a comparison with the words at any later time checks all of them.
//
//   ExactFloat    a view of words that somebody else owns
//   ExactFloatR   a number in a caller's buffer of `size` words from `base`; T may lie above base
//   ExactFloatO   a number that owns its buffer
//
// Lengths in words; the top word is not zero. Operands may not lie in the result's buffer, except in the
// in-place operations. A result that does not fit its buffer throws BufferTooSmallException. Zero and
// negative values do not exist: a difference that would be one fires UnsupportedValueException. No operation
// of the first two allocates. Cost: one pass over the words; products as in multiply/dispatch.hpp.
#pragma once

#include "foundation/types.hpp"
#include "multiply/basic_parameters.hpp"
#include "multiply/transform.hpp"
#include "numbers/basic_int.hpp"
#include "numbers/number_storage.hpp"

namespace znp {

// A product of fewer words goes straight to the basecase multiplier.
inline constexpr upL_t basecase_clen = 20;

class ExactFloat {
  public:
    class Transform;

    ExactFloat() = default;
    // The guard residue is that of the words.
    ExactFloat(const cdi* T, upL_t L, s64_t exp, u64_t hash)
        : T_(T), L_(L), exp_(exp), hash_(hash), guard_(words_guard(1)) {}

    const cdi* get_T() const { return T_; }
    upL_t get_L() const { return L_; }
    s64_t get_exp() const { return exp_; }
    u64_t get_hash() const { return hash_; }
    u64_t get_guard() const { return guard_; }
    s64_t get_mag() const { return exp_ + static_cast<s64_t>(L_); }  // one past the top word's position

    // The stored residue minus the one recomputed from the words, by threads; that of the guard residues
    // where only they differ. 0: both agree.
    u64_t hash_error(u64_t threads = 1) const;

  protected:
    u64_t words_hash(u64_t threads) const;
    u64_t words_guard(u64_t threads) const;

    const cdi* T_ = nullptr;
    upL_t L_ = 0;
    s64_t exp_ = 0;
    u64_t hash_ = 0;
    u64_t guard_ = 0;
};

// An operand transformed for several products: refers into a work buffer, owns nothing. An inverse that
// consumes it clears `image`.
class ExactFloat::Transform {
  public:
    // image has transform_bytes bytes, scratch work_bytes.
    Transform(const ExactFloat& source, const transform& algorithm, Image* image, TransformScratch* scratch);

    const transform* algorithm;
    Image* image;
    s64_t exp;
    upL_t L;
    u64_t hash;
    u64_t guard;
};

class ExactFloatR : public FloatR<ExactFloat> {
  public:
    ExactFloatR() = default;
    ExactFloatR(cdi* buffer, upL_t size) { set_base(buffer, size); }

    void set_base(cdi* buffer, upL_t size);
    void set_base(cdi* buffer, upL_t offset, upL_t size);
    // The buffer that remains in other behind `offset` words of its mantissa.
    void set_rest_of(upL_t offset, const ExactFloatR& other);
    void reset_T() { T_ = base_; }

    // Length and exponent of words that the caller has written; the N forms strip zero top words first.
    void set_L(upL_t L, s64_t exp);
    void set_LN(upL_t L, s64_t exp);
    void set_LN(upL_t L, s64_t exp, u64_t hash);  // the guard residue is that of the words
    void set_LN(upL_t L, s64_t exp, u64_t hash, u64_t guard);
    void rehash();
    // The caller has added b to the words, which are L now.
    void set_sum(upL_t L, const ExactFloat& b);

    void set_uW(cdi x, s64_t exp = 0);
    void set_u64(u64_t x);
    void set_bui(const BasicInt& source);
    void set_efp(const ExactFloat& source);

    // Times B^n; factor is B^n modulo 2^61 - 1.
    void mul_pow_word(s64_t n, u64_t factor);
    // Times 2^n, n of either sign.
    void mp2(s64_t n);

    void set_mul(const BasicParameters& params, const ExactFloat& a, const ExactFloat& b);
    void set_add(const ExactFloat& a, const ExactFloat& b);
    void set_sub(const ExactFloat& a, const ExactFloat& b);

    // In place. += needs b's positions inside this number's, and one free word above the top.
    ExactFloatR& operator+=(const ExactFloat& b);
    ExactFloatR& operator-=(const ExactFloat& b);

    // The product of transformed operands. A is consumed: its image is cleared. scratch has work_bytes bytes.
    void set_inverse_fmul(TransformScratch* scratch, Transform& A, const Transform& B);
    void set_inverse_fsqr(TransformScratch* scratch, Transform& A);
    // The same with a result whose exponent is at most e: zero words below where A.exp + B.exp is above e.
    void set_inverse_fmul(TransformScratch* scratch, Transform& A, const Transform& B, s64_t e);

  private:
    struct InverseTexts {
        const char *location, *mismatch, *truncated;
    };
    void inverse_fmul(TransformScratch* scratch, Transform& A, const Transform& B, s64_t e,
                      const InverseTexts& texts);
    // inverse(R) writes the n words of the product, above so many zeros.
    template <class Inverse>
    void take_product(Transform& A, const Transform& B, upL_t zeros, const InverseTexts& texts,
                      Inverse inverse);
};

class ExactFloatO : public NumberO<ExactFloatR> {
  public:
    using NumberO::NumberO;

    // The sum and difference in a new allocation that replaces the old one. The operands may be this number.
    void add(const ExactFloat& a, const ExactFloat& b);
    void sub(const ExactFloat& a, const ExactFloat& b);

  private:
    static upL_t sum_size(const ExactFloat& a, const ExactFloat& b);
};

}  // namespace znp
