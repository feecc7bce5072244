#include "multiply/vst/conversion.hpp"

#include "multiply/vst/conversion_reference.hpp"

namespace znp::vst {

void words_to_block(const Geometry& g, const PrimeSet& set, double* block, const std::byte* words, upL_t L,
                    upL_t i) {
    words_to_block_reference(g, set, block, words, L, i);
}

u64_t block_to_words(const Geometry& g, const PrimeSet& set, std::byte* words, const double* block,
                     BlockCarry& carry) {
    return block_to_words_reference(g, set, words, block, carry);
}

}  // namespace znp::vst
