// The floating-point FFT written plainly: the definition that the kernels are tested against.
//
// The same tree and the same ring as the kernels (see fft_tables.hpp), one binary level at a time, on complex
// numbers in natural order, with roots computed where they are needed. Leaves in the order of the tree.
#pragma once

#include <complex>
#include <vector>

#include "foundation/types.hpp"

namespace znp::fft::reference {

using Points = std::vector<std::complex<double>>;

struct Size {
    u64_t N;
    unsigned w;
    unsigned C;  // length of the leaves; N / 2 is C times a power of 4
};

// Leaf l's coefficient t is at l C + t.
Points forward(const Size& size, const c32i* A, upL_t L);

// Product of images modulo the leaves; A may be B.
Points pointwise(const Size& size, const Points& A, const Points& B);

// Inverse, rounding and carry: N w / 32 words of the residue modulo 2^(N w) + 1. flag is its top bit; error,
// if not null, receives the largest distance of a point from an integer.
std::vector<c32i> inverse(const Size& size, Points image, u32_t& flag, double* error = nullptr);

}  // namespace znp::fft::reference
