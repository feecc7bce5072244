// The word hashes by their definition, one word after the other: what the vector kernels are held against.
#pragma once

#include "foundation/types.hpp"

namespace znp::residue {

u64_t hash_words32_reference(const c32i* T, upL_t L, u64_t seed);
u64_t hash_words64_reference(const c64i* T, upL_t L, u64_t seed);

}  // namespace znp::residue

namespace znp::guard {

u64_t hash_words_reference(const c64i* T, upL_t L, u64_t seed);

}  // namespace znp::guard
