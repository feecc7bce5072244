// What debug builds assert at the entrance and the exit of every VST kernel: integers within the kernel's
// bounds.
//
// Only for files compiled as kernels.
#pragma once

#include "multiply/vst/vst_kernels.hpp"

namespace znp::vst {

// In multiples of p, as vst_kernels.hpp tells them.
inline constexpr double any_bound = 1.05;
inline constexpr double large_bound = 10;
inline constexpr double forward_bound = 16;
inline constexpr double inverse_bound = 1.2;
inline constexpr double result_bound = 0.54;
// What the forward blocks leave.
constexpr double pointwise_bound(unsigned b) {
    return b == 7 ? 4.1 : 2.84;
}

// Count vectors of integers up to `bound` p.
ZNP_INLINE bool bounded(const double* x, upL_t vectors, double bound, const PrimeTables& prime) {
    for (upL_t i = 0; i < 4 * vectors; i++) {
        const double magnitude = x[i] < 0 ? -x[i] : x[i];
        if (!(magnitude <= bound * prime.p) || static_cast<double>(static_cast<s64_t>(x[i])) != x[i])
            return false;
    }
    return true;
}

ZNP_INLINE bool rows_bounded(const Rows& rows, upL_t first, upL_t last, double bound) {
    for (upL_t i = first; i < last; i++) {
        if (!bounded(rows.data + i * rows.stride, rows.count, bound, *rows.prime)) return false;
    }
    return true;
}

ZNP_INLINE bool blocks_bounded(const Part& part, upL_t first, upL_t last, double bound) {
    for (upL_t i = first; i < last; i++) {
        if (!bounded(part.data + i * part.stride, block_lanes(part.b), bound, *part.prime)) return false;
    }
    return true;
}

}  // namespace znp::vst
