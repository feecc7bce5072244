// Redundancy checks at the end of a section of a series: each exact number's residue against its words.
//
// [a, b) is the section's range of terms. A mismatch goes to the event log (which may be null) and, in red,
// to the console, and is thrown as zl_BSRModularCheckFailed with the printed text. In swap mode the block is
// then computed again; in memory the exception ends the stage. Cost: one pass over the words of each number.
#pragma once

#include <array>
#include <span>

#include "foundation/types.hpp"

namespace znp {

class EventLog;

// The differences of stored and recomputed residues: all zero returns, anything else is the failure above.
void check_residues(EventLog* log, u64_t a, u64_t b, std::span<const u64_t> differences);

// The numbers X, Y, ... are anything with hash_error().
template <class TX, class TY>
void check2(EventLog* log, u64_t a, u64_t b, const TX& X, const TY& Y) {
    check_residues(log, a, b, std::array{X.hash_error(), Y.hash_error()});
}

template <class TX, class TY, class TZ>
void check3(EventLog* log, u64_t a, u64_t b, const TX& X, const TY& Y, const TZ& Z) {
    check_residues(log, a, b, std::array{X.hash_error(), Y.hash_error(), Z.hash_error()});
}

template <class TX, class TY, class TZ, class TW>
void check4(EventLog* log, u64_t a, u64_t b, const TX& X, const TY& Y, const TZ& Z, const TW& W) {
    check_residues(log, a, b, std::array{X.hash_error(), Y.hash_error(), Z.hash_error(), W.hash_error()});
}

}  // namespace znp
