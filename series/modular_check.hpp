// Redundancy checks at the end of a section of a series: each number's residues against its words.
//
// [a, b) is the section's range of terms. A mismatch goes to the event log (which may be null) and, in red,
// to the console, and is thrown as zl_BSRModularCheckFailed with the printed text; the section is then summed
// once more. The same for a sum after a section has joined it, which ends the stage. Cost: one pass over the
// words of each number, by threads.
#pragma once

#include <array>
#include <span>

#include "foundation/types.hpp"

namespace znp {

class EventLog;

// The differences of stored and recomputed residues: all zero returns, anything else is the failure above.
void check_residues(EventLog* log, u64_t a, u64_t b, std::span<const u64_t> differences);

// The numbers X, Y, ... are anything with hash_error(), by threads where it can go by them.
template <class Number>
u64_t hash_error_of(const Number& x, u64_t threads) {
    if constexpr (requires { x.hash_error(threads); }) {
        return x.hash_error(threads);
    } else {
        return x.hash_error();
    }
}

template <class... Numbers>
void check_numbers(EventLog* log, u64_t a, u64_t b, u64_t threads, const Numbers&... numbers) {
    check_residues(log, a, b, std::array{hash_error_of(numbers, threads)...});
}

template <class TX, class TY>
void check2(EventLog* log, u64_t a, u64_t b, const TX& X, const TY& Y, u64_t threads = 1) {
    check_numbers(log, a, b, threads, X, Y);
}

template <class TX, class TY, class TZ>
void check3(EventLog* log, u64_t a, u64_t b, const TX& X, const TY& Y, const TZ& Z, u64_t threads = 1) {
    check_numbers(log, a, b, threads, X, Y, Z);
}

template <class TX, class TY, class TZ, class TW>
void check4(EventLog* log, u64_t a, u64_t b, const TX& X, const TY& Y, const TZ& Z, const TW& W,
            u64_t threads = 1) {
    check_numbers(log, a, b, threads, X, Y, Z, W);
}

}  // namespace znp
