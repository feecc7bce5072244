// The recursion of the radix conversion over the pieces of a fraction.
//
// A piece of m words: out[0..m) receives them, least significant first; its fraction lies below `end` as
// CBR_table says and is destroyed; `overlap` receives the word behind its last one. The first piece of a cut
// is the most significant one. Its overlap word is also the top word of the second piece, which comes from
// other arithmetic: the two are compared, and a carry or borrow between them is rippled into the first piece.
//
// Returns 0, or overlap_error if pieces disagree; that is on the console then.
#pragma once

#include <string>

#include "foundation/status_line.hpp"
#include "numbers/radix_plan.hpp"
#include "numbers/radix_table.hpp"

namespace znp {

// Shows the cuts on the way down, and how far this thread's piece is.
class ConversionProgress {
  public:
    explicit ConversionProgress(StatusLine* line) : line_(line) {}
    void enter(unsigned tasks, double digits);  // " -> 2 x 1000"
    void begin(upL_t words);                    // from now on advance() counts up to these
    void advance(upL_t words);

  private:
    void show();

    StatusLine* line_;
    std::string path_;
    upL_t words_ = 0;
    upL_t done_ = 0;
};

struct RadixPiece {
    cdi* out;
    upL_t m;
    cdi* end;
    unsigned level;  // a cut is below it
};

// On one thread. work: the largest product_bytes(i, 1) of the levels below. progress may be null.
[[nodiscard]] int znh_CBRv2_ci_btrf_L(const CBR_table& table, const RadixPiece& piece, cdi& overlap,
                                      std::byte* work, ConversionProgress* progress);

// The top of the recursion: forks while the plan does. bp: the tables, the threads of this piece, and its
// work buffer of plan.task_bytes(depth, bp.tds) bytes.
[[nodiscard]] int znq_CBRv2_ci_btrf_T(const BasicParameters& bp, const CBR_table& table,
                                      const CBR_ParallelPlan& plan, unsigned depth, const RadixPiece& piece,
                                      cdi& overlap, ConversionProgress* progress);

// Makes the words [0, m) of the first piece agree with the second, whose top word is `actual`, where the
// first piece expects `expected`. False if they are more than one apart.
bool repair_overlap(cdi* first, upL_t m, cdi radix, cdi expected, cdi actual);

}  // namespace znp
