// 1/sqrt(x) of a word x by Newton's method: y = y0 + y0/2 (1 - x y0^2).
//
// y has invsqrt_words(p) words. The small routine serves up to 9 words; the big one transforms y0 once for
// its square and the correction: two forward (and the correction's own) and two inverse transforms of about p
// + 6 words in a step. Returns 0, or 2 when a step's product does not come out next to 1: what decided it is
// printed by then, and the caller reports the failure. x is at least 1. Nothing is allocated.
#pragma once

#include "numbers/newton_steps.hpp"

namespace znp {

// Words of the result's buffer.
constexpr upL_t invsqrt_words(upL_t p) {
    return p + 4;
}

[[nodiscard]] int zlm_invsqrt_udw_E(const BasicParameters& bp, BigFloatR& y, u64_t x, upL_t p,
                                    newton::Scratch scratch);
[[nodiscard]] int zlp_invsqrt_udw_B(const BasicParameters& bp, BigFloatR& y, u64_t x, upL_t p,
                                    newton::Scratch scratch, StatusLine* status = nullptr);

// The last step of zlp_invsqrt_udw_B, p above 9: from y0, the value to h = (p + 1) / 2 words, at most h + 2
// long, by a transform of at least p + 6 words. scratch: h + 3 words. Throws newton::ConvergenceFailure.
void invsqrt_step(const BasicParameters& bp, const transform& algorithm, BigFloatR& y, u64_t x,
                  const BigFloat& y0, upL_t p, newton::Scratch scratch, StatusLine* status = nullptr);

// Words of scratch for either, exactly.
upL_t invsqrt_scratch_words(upL_t p);
// Bytes of work buffer for either.
upL_t invsqrt_work_bytes(upL_t p, u64_t threads);

}  // namespace znp
