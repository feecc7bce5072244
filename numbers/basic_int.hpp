// BasicInt: exact positive integers of up to a few thousand words, the bottom of the series engine.
//
// Three forms, which differ in who holds the words:
//   BasicInt    a view; nothing here writes through it
//   BasicIntR   a writable object in a buffer of the caller
//   BasicIntO   owns its allocation
//
// A value is positive: zero and negative results throw. L = 0 is an object that is about to be filled. Every
// object carries its residue modulo 2^61 - 1 (multiply/kernels/residue.hpp). Arithmetic computes it from the
// operands' residues and never from the result's words, so that hash_error() finds a wrong word.
//
// Lengths and sizes in words. Products are schoolbook products: short operands only. No threads, no scratch.
#pragma once

#include <algorithm>

#include "foundation/types.hpp"
#include "numbers/number_storage.hpp"

namespace znp {

class BasicInt {
  public:
    BasicInt() = default;
    // A value with a residue that is known.
    BasicInt(const cdi* T_, upL_t L_, u64_t hash_) : T(const_cast<cdi*>(T_)), L(L_), hash(hash_) {}

    const cdi* get_T() const { return T; }
    const cdi* word_ptr(upL_t i) const { return T + i; }
    upL_t get_L() const { return L; }
    u64_t get_hash() const { return hash; }
    upL_t max_L(const BasicInt& other) const { return std::max(L, other.L); }

    // Take the length of the words that lie at T, and the residue from them. set_LN drops zero top words; the
    // words must hold a value.
    void set_L(upL_t L);
    void set_LN(upL_t L);

    void rehash();
    u64_t hash_error() const;  // hash minus the residue of the words, canonical; 0 if they agree

  protected:
    // The view never writes to T; BasicIntR, which does, is only made from writable words.
    cdi* T = nullptr;
    upL_t L = 0;     // the top word T[L-1] is not zero
    u64_t hash = 0;  // canonical
};

// Errors: a value that does not fit is BufferTooSmallException with the operation's name. A result that is
// zero or negative is UnsupportedValueException; the words are then undefined and the object of no further
// use.
class BasicIntR : public BasicInt {
  public:
    BasicIntR() = default;
    BasicIntR(cdi* T_, upL_t size_) : size(size_) { T = T_; }

    using BasicInt::get_T;
    using BasicInt::word_ptr;
    cdi* get_T() { return T; }
    cdi* word_ptr(upL_t i) { return T + i; }
    upL_t get_size() const { return size; }

    // The rest of parent's buffer from offset on.
    void set(upL_t offset, const BasicIntR& parent);
    void check_size(const char* location, upL_t required) const;

    void set_uW(cdi x);  // x is not zero
    void set_bui(const BasicInt& src);

    // this = a b. The words overlap neither operand. a.L + b.L words are written.
    void set_mulB(const BasicInt& a, const BasicInt& b);

    // In place, b no longer than this; b may be this. A sum takes a word more only where it carries into one.
    BasicIntR& operator+=(const BasicInt& b);  // longer b: fatal error, invalid parameters
    BasicIntR& operator-=(const BasicInt& b);  // longer b: negative, before anything is written

  protected:
    upL_t size = 0;  // words at T
};

// Results go to a new allocation, which replaces the old one afterwards: operands may be this object.
class BasicIntO : public NumberO<BasicIntR> {
  public:
    using NumberO::NumberO;

    void add(const BasicInt& a, const BasicInt& b);   // max(a.L, b.L) + 2 words
    void sub(const BasicInt& a, const BasicInt& b);   // a.L + 2 words
    void mulB(const BasicInt& a, const BasicInt& b);  // a.L + b.L + 2 words
    BasicIntO& operator+=(const BasicInt& b);
    BasicIntO& operator-=(const BasicInt& b);
};

}  // namespace znp
