// What the processor and the operating system offer, the report of it, and the check at start.
#pragma once

#include "foundation/processor.hpp"
#include "foundation/types.hpp"

namespace znp {

// A byte for each feature, 0 or 1. The OS_ fields say that the operating system saves the registers too.
struct CPUFeatures {
    using flag = unsigned char;

    flag AMD, Intel;
    flag OS_x64, OS_AVX, OS_AVX512;
    flag MMX, x64, ABM, RDRAND, BMI1, BMI2, ADX, PREFETCHWT1;
    flag SSE, SSE2, SSE3, SSSE3, SSE41, SSE42, SSE4a, AES, SHA;
    flag AVX, XOP, FMA3, FMA4, AVX2;
    flag AVX512_F, AVX512_PF, AVX512_ER, AVX512_CD, AVX512_VL, AVX512_BW, AVX512_DQ, AVX512_IFMA, AVX512_VBMI;
};

using Feature = CPUFeatures::flag CPUFeatures::*;

// Executes only the leaves that the processor reports, and XGETBV only where it is legal.
void read_features(CPUFeatures& features, const CpuidSource& source = this_processor());

// The report: a heading for each group, a line for each feature. A star marks what some build uses.
void print_features(const CPUFeatures& features);

// Prints what this build requires, and warns and waits for ENTER if something is missing. Never refuses.
void check_features(const CpuidSource& source = this_processor());

}  // namespace znp
