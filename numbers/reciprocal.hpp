// 1/x by Newton's method: y = y0 + y0 (1 - x y0).
//
// y has rcp_words(p) words. The small routine serves up to 9 words and multiplies by the dispatcher; the big
// one makes two transforms of y0 and x, a short cyclic product whose top is known, and reuses the image of
// y0: three forward and two inverse transforms of about p + 8 words in a step, about two products of p by p
// words for the whole chain. x may have any length; its top p + 2 words are read. Zero fires "zlb_rcp_E():
// Divide-by-Zero" (code -3). A product that does not come out next to 1 fires "... Computation Failed" (code
// 2). bp: work buffer of work_bytes_for(p + 8) bytes (big) with both images; nothing is allocated.
#pragma once

#include "numbers/newton_steps.hpp"

namespace znp {

// Words of the result's buffer.
constexpr upL_t rcp_words(upL_t p) {
    return p + 3;
}

void zlb_rcp_E(const BasicParameters& bp, BigFloatR& y, const BigFloat& x, upL_t p, newton::Scratch scratch);
void zlp_rcp_B(const BasicParameters& bp, BigFloatR& y, const BigFloat& x, upL_t p, newton::Scratch scratch,
               StatusLine* status = nullptr);

// The last step of zlp_rcp_B, p above 9: from y0, 1/x to h = (p + 1) / 2 words, at most h + 2 long, by a
// transform of at least p + 8 words. scratch: h + 3 words.
void rcp_step(const BasicParameters& bp, const transform& algorithm, BigFloatR& y, const BigFloat& x,
              const BigFloat& y0, upL_t p, newton::Scratch scratch, StatusLine* status = nullptr);

// Words of scratch for either, exactly.
upL_t rcp_scratch_words(upL_t p);
// Bytes of work buffer for either.
upL_t rcp_work_bytes(upL_t p, u64_t threads);

}  // namespace znp
