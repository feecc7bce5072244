// Radix conversion of a fraction from binary words to words of another radix, in practice 10^19.
//
// Divide and conquer by multiplication: the fraction times radix^n has the top digits as its integer part
// and the rest as its fraction; the powers and their transforms are made once. No division anywhere.
//
// A fraction is L words with the value sum fraction[i] 2^(64 (i - L)), in [0, 1). Words of the result: n,
// least significant first, each below the radix; the value is truncated. Before that it is raised by less
// than 2^-50 of the last word (of the last digit in the check), so that a fraction that ends at a digit comes
// out exactly.
//
// Threads: bp.tds. Memory: bp's work buffer, of the bytes that the queries promise, exactly. Nothing
// allocates.
#pragma once

#include "foundation/status_line.hpp"
#include "multiply/basic_parameters.hpp"

namespace znp {

inline constexpr int overlap_error = 0x10000002;

// The first n words of the fraction in the radix. Returns 0, 1 if a power came out wrong, or overlap_error
// if pieces disagree about the word that they share: the caller tries again. bp.ML: cbr_table_size.
[[nodiscard]] int convert(const BasicParameters& bp, cdi radix, cdi* out, upL_t n, const cdi* fraction,
                          upL_t L, StatusLine* status = nullptr);
// Bytes of work buffer for convert of n words.
upL_t cbr_table_size(cdi radix, upL_t n, u64_t threads);

// The independent check: residue = floor((integer + fraction) * radix^e) mod 2^61 - 1, computed by one big
// power and one product, with no transform length in common with the conversion. Returns 0, or 1 if the
// residue of the power or of the product is wrong: the caller tries again. bp.ML: power_check_size.
[[nodiscard]] int power_check(const BasicParameters& bp, cdi radix, u64_t e, cdi integer, const cdi* fraction,
                              upL_t L, u64_t& residue, StatusLine* status = nullptr);
upL_t power_check_size(cdi radix, u64_t e, u64_t threads);

}  // namespace znp
