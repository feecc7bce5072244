#include "numbers/radix_leaf.hpp"

#include "multiply/kernels/word_multiply.hpp"

namespace znp::radix {

cdi convert_leaf_reference(cdi* out, upL_t n, cdi* end, cdi radix) {
    upL_t w = leaf_fraction_words(n);
    while (n != 0) {
        out[--n] = MulW_reference<cdi>(end - w, w, radix, 0);
        w--;
    }
    return MulW_reference<cdi>(end - w, w, radix, 0);
}

}  // namespace znp::radix
