#include "numbers/radix_fraction.hpp"

#include <algorithm>

#include "multiply/kernels/word_arrays.hpp"

namespace znp::radix {

namespace {

constexpr cdi move = cdi{1} << 8;

}  // namespace

void load_fraction(cdi* T, upL_t words, const cdi* fraction, upL_t L) {
    const upL_t taken = std::min(words, L);
    std::fill_n(T, words - taken, cdi{0});
    std::copy_n(fraction + (L - taken), taken, T + (words - taken));

    T[1] += move;
    if (T[1] >= move || !copy_add_carry(T + 2, T + 2, words - 2, true)) return;
    std::fill_n(T, words, ~cdi{0});
    T[1] -= move;
}

}  // namespace znp::radix
