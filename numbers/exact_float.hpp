// ExactFloat: exact positive numbers with a residue.
//
// The value is mantissa * B^exp, B the word base. Nothing is ever rounded. The exponent lets low zero words
// drop out of products; the residue modulo 2^61 - 1 of the whole value, exponent included, is carried through
// every operation from the operands' residues, so that a comparison with the words at any later time checks
// all of them.
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

#include "foundation/guarded_alloc.hpp"
#include "foundation/types.hpp"
#include "multiply/basic_parameters.hpp"
#include "multiply/transform.hpp"
#include "numbers/basic_int.hpp"

namespace znp {

// A product of fewer words goes straight to the basecase multiplier.
inline constexpr upL_t basecase_clen = 20;

template <class word>
class ExactFloat {
  public:
    class Transform;

    ExactFloat() = default;
    ExactFloat(const word* T, upL_t L, s64_t exp, u64_t hash) : T_(T), L_(L), exp_(exp), hash_(hash) {}

    const word* get_T() const { return T_; }
    upL_t get_L() const { return L_; }
    s64_t get_exp() const { return exp_; }
    u64_t get_hash() const { return hash_; }
    s64_t get_mag() const { return exp_ + static_cast<s64_t>(L_); }  // one past the top word's position

    // The stored residue minus the one recomputed from the words; 0: they agree.
    u64_t hash_error() const;

  protected:
    u64_t words_hash() const;

    const word* T_ = nullptr;
    upL_t L_ = 0;
    s64_t exp_ = 0;
    u64_t hash_ = 0;
};

// An operand transformed for several products: refers into a work buffer, owns nothing. An inverse that
// consumes it clears `image`.
template <class word>
class ExactFloat<word>::Transform {
  public:
    // image has transform_bytes bytes, scratch work_bytes.
    Transform(const ExactFloat& source, const transform& algorithm, void* image, void* scratch);

    const transform* algorithm;
    void* image;
    s64_t exp;
    upL_t L;
    u64_t hash;
};

template <class word>
class ExactFloatR : public ExactFloat<word> {
  public:
    using typename ExactFloat<word>::Transform;

    ExactFloatR() = default;
    ExactFloatR(word* buffer, upL_t size) { set_base(buffer, size); }

    word* get_base() const { return base_; }
    upL_t get_size() const { return size_; }
    word* word_ptr(upL_t i) const { return writable_T() + i; }

    void set_base(word* buffer, upL_t size);
    void set_base(word* buffer, upL_t offset, upL_t size);
    // The buffer that remains in other behind `offset` words of its mantissa.
    void set_rest_of(upL_t offset, const ExactFloatR& other);
    void reset_T() { this->T_ = base_; }

    // Length and exponent of words that the caller has written; the N forms strip zero top words first.
    void set_L(upL_t L, s64_t exp);
    void set_LN(upL_t L, s64_t exp);
    void set_LN(upL_t L, s64_t exp, u64_t hash);
    void rehash() { this->hash_ = this->words_hash(); }

    void set_uW(word x, s64_t exp = 0);
    void set_u64(u64_t x);
    void set_bui(const BasicInt<word>& source);
    void set_efp(const ExactFloat<word>& source);

    // Drops low zero words in multiples of four, which keeps the mantissa's alignment. Same value.
    void strip_low();
    // Times B^n; factor is B^n modulo 2^61 - 1.
    void mul_pow_word(s64_t n, u64_t factor);
    // Times 2^n, n of either sign.
    void mp2(s64_t n);

    void set_mul(const BasicParameters& params, const ExactFloat<word>& a, const ExactFloat<word>& b);
    void set_add(const ExactFloat<word>& a, const ExactFloat<word>& b);
    void set_sub(const ExactFloat<word>& a, const ExactFloat<word>& b);

    // In place. += needs b's positions inside this number's, and one free word above the top.
    ExactFloatR& operator+=(const ExactFloat<word>& b);
    ExactFloatR& operator-=(const ExactFloat<word>& b);

    // The product of transformed operands. A is consumed: its image is cleared. scratch has work_bytes bytes.
    void set_inverse_fmul(void* scratch, Transform& A, const Transform& B);
    void set_inverse_fsqr(void* scratch, Transform& A);
    // The same with a result whose exponent is at most e: zero words below where A.exp + B.exp is above e.
    void set_inverse_fmul(void* scratch, Transform& A, const Transform& B, s64_t e);

  protected:
    word* writable_T() const { return base_ + (this->T_ - base_); }
    upL_t room() const { return size_ - static_cast<upL_t>(this->T_ - base_); }  // words from T on
    void require(upL_t words, const char* location) const;

    word* base_ = nullptr;
    upL_t size_ = 0;
};

template <class word>
class ExactFloatO : public ExactFloatR<word> {
  public:
    explicit ExactFloatO(BasicHeap* heap = nullptr) : heap_(heap) {}
    ExactFloatO(BasicHeap* heap, upL_t size);
    ExactFloatO(ExactFloatO&& other) noexcept;
    ExactFloatO& operator=(ExactFloatO&& other) noexcept;

    // The sum and difference in a new allocation that replaces the old one. The operands may be this number.
    void add(const ExactFloat<word>& a, const ExactFloat<word>& b);
    void sub(const ExactFloat<word>& a, const ExactFloat<word>& b);

  private:
    upL_t sum_size(const ExactFloat<word>& a, const ExactFloat<word>& b) const;

    BasicHeap* heap_ = nullptr;
    GuardedArray<word> owned_;
};

}  // namespace znp
