// The types that every layer shares: words, lengths and what depends on the width of a word.
//
// Which type counts what:
//   upL_t   a length or index of things in memory. Unless a name says _bytes or _bits it counts words
//   ufL_t   a length or offset in a file
//   u64_t   an unsigned 64-bit value: a word, a residue, a count of bits
//   c32i, c64i   the words of the two word families, base 2^32 and base 2^64
//   cdi     the word of digit arrays: 16 hexadecimal digits, or one base 10^19 value (19 decimal digits)
//
// Numbers are arrays of words, least significant word first.
//
// The letters in names:
//   ..._E, ..._B, ..._S   how it is computed: exact and small; big, in memory; in swap mode, on disk
//   zlb_                  by small products alone
//   zlp_                  by transforms, on all threads
//   zlm_                  a whole routine, which chooses its way by the size
//   zlf_                  the formula of a constant; on disk also a routine's steps
//   BigFloat, ...R, ...O  a number in words of somebody else's; in a buffer of the caller; in words of its
//   own
#pragma once

#include <cstddef>
#include <cstdint>

namespace znp {

using u32_t = std::uint32_t;
using u64_t = std::uint64_t;
using s32_t = std::int32_t;
using s64_t = std::int64_t;
__extension__ using u128_t = unsigned __int128;
__extension__ using s128_t = __int128;

using upL_t = std::uint64_t;
using ufL_t = std::uint64_t;

using c32i = u32_t;
using c64i = u64_t;
using cdi = c64i;

// What a template over the word needs to know of it.
template <class word>
struct WordTraits;

template <>
struct WordTraits<c32i> {
    using wide = u64_t;         // holds the product of two words
    using accumulator = s64_t;  // signed: holds sums of a few words and their carry or borrow
    static constexpr unsigned bits = 32;
    static constexpr const char* name = "c32i";
    static constexpr const char* title = "32-bit Word";
    static constexpr double decimal_digits = 9.632959861247398;  // 32 log10(2)
};

template <>
struct WordTraits<c64i> {
    using wide = u128_t;
    using accumulator = s128_t;
    static constexpr unsigned bits = 64;
    static constexpr const char* name = "c64i";
    static constexpr const char* title = "64-bit Word";
    static constexpr double decimal_digits = 19.265919722494797;  // 64 log10(2)
};

// Small helpers that kernel files share with baseline files are forced inline: an out-of-line copy compiled
// with wider instructions could otherwise be the one that the linker keeps for everybody.
#define ZNP_INLINE [[gnu::always_inline]] inline

}  // namespace znp
