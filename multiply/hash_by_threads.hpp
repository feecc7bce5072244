// The residues of long numbers by several threads.
//
// Each thread has at least hash_part_words, below which the fork costs more than the pass; the parts are
// added up as they come.
#pragma once

#include <algorithm>
#include <atomic>

#include "foundation/range_fork.hpp"
#include "foundation/types.hpp"
#include "multiply/kernels/guard_residue.hpp"
#include "multiply/kernels/residue.hpp"
#include "multiply/transform.hpp"

namespace znp {

inline constexpr upL_t hash_part_words = upL_t{1} << 17;

// hash(low, high): the residue of the words [low, high) as a number from its first word on; add(sum, part,
// low) adds it, times B^low.
template <class Hash, class Add>
u64_t hash_by_threads(upL_t words, u64_t threads, const Hash& hash, const Add& add) {
    const u64_t parts = std::min<u64_t>(threads, words / hash_part_words);
    if (parts < 2) return hash(0, words);
    std::atomic<u64_t> sum{0};
    split_range(0, words, parts, 0, [&](u64_t low, u64_t high, u64_t) {
        const u64_t part = hash(low, high);
        u64_t seen = sum.load();
        while (!sum.compare_exchange_weak(seen, add(seen, part, static_cast<s64_t>(low)))) {
        }
    });
    return sum.load();
}

namespace guard {

template <class Hash>
u64_t hash_by_threads(upL_t words, u64_t threads, const Hash& hash) {
    return znp::hash_by_threads(words, threads, hash, [](u64_t sum, u64_t part, s64_t low) {
        return add(sum, shift_words(part, low));
    });
}

inline u64_t hash_words_by_threads(const c64i* T, upL_t L, u64_t threads) {
    return hash_by_threads(L, threads,
                           [T](upL_t low, upL_t high) { return hash_words(T + low, high - low); });
}

}  // namespace guard

namespace residue {

inline u64_t hash_words_by_threads(const c64i* T, upL_t L, u64_t threads) {
    return hash_by_threads(
        L, threads, [T](upL_t low, upL_t high) { return hash_words(T + low, high - low); },
        [](u64_t sum, u64_t part, s64_t low) { return add(sum, mul(part, word_power64(low))); });
}

}  // namespace residue

// Of a result of n words, with the window's words as they arrived at R.T; R.e is at most n.
inline CheckedResult checked_result(const c64i* words, upL_t n, Window<c64i> R, u64_t threads) {
    const u64_t above = guard::hash_words_by_threads(words + R.e, n - R.e, threads);
    const u64_t window = guard::hash_words_by_threads(R.T, R.size(), threads);
    const u64_t from_s = guard::add(guard::shift_words(above, static_cast<s64_t>(R.size())), window);
    const u64_t below = guard::hash_words_by_threads(words, R.s, threads);
    return {guard::add(guard::shift_words(from_s, static_cast<s64_t>(R.s)), below), window};
}

}  // namespace znp
