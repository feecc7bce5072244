// Digits and words of precision, and the margins of a run's numbers and products.
#pragma once

#include "foundation/types.hpp"

namespace znp {

// h = floor(log16(10) d) + 1 hexadecimal digits, p = h / 16 + 2 words, and back d = trunc(h / log16(10)).
u64_t hex_digits_for(u64_t decimal_digits);
u64_t decimal_digits_for(u64_t hex_digits);
upL_t precision_for(u64_t hex_digits);

// Words by which the operands of a run may exceed the precision. Twiddle tables are made for their products,
// and the memory queries ask for buffers at this precision, so that a stage may come to keep a few guard
// words more without a change of what users are told.
inline constexpr upL_t operand_margin = 100;

// Words by which the product of the last numbers of a formula may exceed twice the precision: they have p + 2
// words, or a few more from Newton's iterations and products with words.
inline constexpr upL_t final_product_margin = 100;

// The longest products in words: of a run's operands, which the tables serve, and of all that a query for it
// asks for.
constexpr upL_t longest_product(upL_t p) {
    return 2 * (p + operand_margin);
}
constexpr upL_t longest_estimated_product(upL_t p) {
    return longest_product(p) + final_product_margin;
}

}  // namespace znp
