// The guard residue of long numbers by several threads.
//
// hash(low, high) gives the residue of the words [low, high) as a number from its first word on. Each thread
// has at least hash_part_words, below which the fork costs more than the pass; the parts are added up as they
// come.
#pragma once

#include <algorithm>
#include <atomic>

#include "foundation/range_fork.hpp"
#include "foundation/types.hpp"
#include "multiply/kernels/guard_residue.hpp"
#include "multiply/transform.hpp"

namespace znp::guard {

inline constexpr upL_t hash_part_words = upL_t{1} << 17;

template <class Hash>
u64_t hash_by_threads(upL_t words, u64_t threads, const Hash& hash) {
    const u64_t parts = std::min<u64_t>(threads, words / hash_part_words);
    if (parts < 2) return hash(0, words);
    std::atomic<u64_t> sum{0};
    split_range(0, words, parts, 0, [&](u64_t low, u64_t high, u64_t) {
        const u64_t part = shift_words(hash(low, high), static_cast<s64_t>(low));
        u64_t seen = sum.load();
        while (!sum.compare_exchange_weak(seen, add(seen, part))) {
        }
    });
    return sum.load();
}

inline u64_t hash_words(const c64i* T, upL_t L, u64_t seed, u64_t threads) {
    const u64_t words =
        hash_by_threads(L, threads, [T](upL_t low, upL_t high) { return hash_words(T + low, high - low); });
    return seed == 0 ? words : add(words, shift_words(reduce(seed), static_cast<s64_t>(L)));
}

}  // namespace znp::guard

namespace znp {

// Of a result of n words, with the window's words as they arrived at R.T; R.e is at most n.
inline CheckedResult checked_result(const c64i* words, upL_t n, Window<c64i> R, u64_t threads) {
    const u64_t above = guard::hash_words(words + R.e, n - R.e, 0, threads);
    const u64_t window = guard::hash_words(R.T, R.size(), 0, threads);
    const u64_t from_s = guard::add(guard::shift_words(above, static_cast<s64_t>(R.size())), window);
    const u64_t below = guard::hash_words(words, R.s, 0, threads);
    return {guard::add(guard::shift_words(from_s, static_cast<s64_t>(R.s)), below), window};
}

}  // namespace znp
