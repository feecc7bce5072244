// multiplier: one multiplication algorithm for one word family.
//
// Stateless. It answers for the memory that a product will need before anything runs, builds its lookup
// tables, and makes transforms. All lengths are product lengths in words of the family unless a name says
// bits or bytes. Number objects never name one: they go through the dispatchers of multiply/dispatch.hpp.
//
// The objects are static constants, initialised at compile time and usable before main (multiply/selection).
//
// To add an algorithm: derive from multiplier<word> (and transform), give it static objects and rows in
// multiply/selection.cpp. An algorithm that also multiplies numbers on disk adds those operations in a class
// between multiplier and itself: the in-memory callers see none of them.
#pragma once

#include "foundation/types.hpp"
#include "multiply/basic_parameters.hpp"
#include "multiply/transform.hpp"
#include "multiply/word_span.hpp"

namespace znp {

template <class word>
class multiplier {
  public:
    const u64_t max_bits;  // the largest product that the object's own limits allow
    const char* const name;
    const char* const long_name;
    const char* const table_name;  // the same two texts, for the table report
    const char* const table_long_name;

    multiplier(const multiplier&) = delete;
    multiplier& operator=(const multiplier&) = delete;

    // Lookup tables for products up to limit_bits: bytes; construction, which notes them in the holder and
    // returns the end of what it used. memory is aligned to 32 bytes.
    virtual upL_t table_bytes(u64_t limit_bits) const = 0;
    virtual std::byte* build_tables(TableHolder& holder, u64_t limit_bits, std::byte* memory) const = 0;

    // Bytes of a work buffer for a product of up to L words on `threads` threads. A length for which the
    // algorithm has no parameters is InvalidTransformParametersException, here and in make_transform.
    virtual upL_t work_bytes(upL_t L, u64_t threads) const = 0;

    // A transform of product length L in the caller's storage (TransformSlot::bytes) at place; bp gives the
    // tables and the threads. A null place makes nothing and gives null.
    virtual transform* make_transform(const BasicParameters& bp, void* place, upL_t L) const = 0;

    // Products with all working memory in bp's buffer of work_bytes(product length, bp.tds) bytes; see
    // transform, by which they go unless an algorithm has a shorter way.
    virtual void sqr(const BasicParameters& bp, word* T, WordSpan<word> A) const;
    virtual void mul(const BasicParameters& bp, word* T, WordSpan<word> A, WordSpan<word> B) const;
    virtual void sqr_window(const BasicParameters& bp, Window<word> R, WordSpan<word> A) const;
    virtual void mul_window(const BasicParameters& bp, Window<word> R, WordSpan<word> A,
                            WordSpan<word> B) const;

    // The route by two half-length convolutions, where an algorithm has one; otherwise the plain one.
    virtual upL_t mulp_bytes(upL_t L, u64_t threads) const { return work_bytes(L, threads); }
    virtual void mulp(const BasicParameters& bp, Window<word> R, WordSpan<word> A, WordSpan<word> B) const {
        mul_window(bp, R, A, B);
    }

    // A window of the whole product with its guard residues, by either route. 64-bit words only; 32-bit ones
    // throw. B may be A.
    CheckedResult checked_mul(const BasicParameters& bp, Window<word> R, WordSpan<word> A,
                              WordSpan<word> B) const;
    virtual CheckedResult checked_mulp(const BasicParameters& bp, Window<word> R, WordSpan<word> A,
                                       WordSpan<word> B) const {
        return checked_mul(bp, R, A, B);
    }

  protected:
    constexpr multiplier(u64_t max_bits_, const char* name_, const char* long_name_)
        : max_bits(max_bits_),
          name(name_),
          long_name(long_name_),
          table_name(name_),
          table_long_name(long_name_) {}
    ~multiplier() = default;
};

extern template class multiplier<c32i>;
extern template class multiplier<c64i>;

}  // namespace znp
