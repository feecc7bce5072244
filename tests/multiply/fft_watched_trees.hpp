// The trees of the floating-point FFT with one fault between two steps of the work.
#pragma once

#include "multiply/fft/fft_tables.hpp"

namespace znp::fft::testing {

// One bit, which flips when so many passes and bottom blocks are behind. Counts on below zero.
struct Fault {
    s64_t steps;
    std::byte* at;
    std::byte bit;

    void flip() const {
        volatile std::byte* const target = at;
        *target = *target ^ bit;
    }
    void step() {
        if (--steps == 0) flip();
    }
};

// Those of fft_kernels.hpp, the same code.
void forward_tree(double* image, upL_t N, unsigned C, const FFTTables& tables, Fault& fault);
void inverse_tree(double* image, const double* B, upL_t N, unsigned C, const FFTTables& tables, Fault& fault);

}  // namespace znp::fft::testing
