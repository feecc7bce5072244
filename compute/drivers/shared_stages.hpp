// The stages that the formulas share: inverse square roots, divisions, products, and the end of a run.
//
// Each takes its buffers from the run's heap and leaves only its result there, behind what the caller holds;
// the query beside it tells how much that is at its peak, result included. Precisions p in words.
#pragma once

#include "compute/drivers/heap_float.hpp"
#include "compute/drivers/stage.hpp"

namespace znp {

using Number = BigFloat<cdi>;

// The memory queries of the constants ask for the stages at this many words more than the precision, so that
// a stage may come to keep a few guard words more without a change of what users are told.
inline constexpr upL_t estimate_margin = 100;

// Bytes of the heap for a buffer of so many words.
upL_t heap_words(upL_t words);

// 1/sqrt(n), with room for `extra` words more than the p + 4 of the iteration. Prints "InvSqrt...". A failure
// is the fatal error "Computation Failed".
void inv_sqrt_B(HeapFloat& out, u64_t n, upL_t p, RunTimeParameters& run, upL_t extra = 0);
upL_t inv_sqrt_bytes(upL_t p, u64_t threads, upL_t extra = 0);
constexpr upL_t inv_sqrt_words(upL_t p, upL_t extra = 0) {
    return p + 4 + extra;
}

// numerator / denominator, with room to be multiplied by a word. Prints "Division...".
void divide_B(HeapFloat& out, RunTimeParameters& run, const Number& numerator, const Number& denominator,
              upL_t p);
upL_t divide_bytes(upL_t p, u64_t threads);
constexpr upL_t divide_words(upL_t p) {
    return p + 5;
}

// The top p + 2 words of a * b. Prints "Final Multiply...". The whole product is verified by its residue; a
// mismatch is fatal. With half_length the product goes by the route of two half-length convolutions, which is
// not verified here: no whole product is ever made.
void final_multiply_B(HeapFloat& out, RunTimeParameters& run, const Number& a, const Number& b, upL_t p,
                      bool half_length);
upL_t final_multiply_bytes(upL_t p, u64_t threads, bool half_length);
constexpr upL_t final_multiply_words(upL_t p) {
    return p + 2;
}

// The end of every formula in memory: stops the stopwatch, closes the formula with its name and the time
// since `start`, and writes the number's digits. output_bytes: of the heap, without the number.
void output_B(RunTimeParameters& run, const char* name, const Time& start, const Number& number);
upL_t output_bytes(upL_t p, u64_t dec, u64_t threads);

}  // namespace znp
