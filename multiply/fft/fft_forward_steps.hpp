// The forward transform below the first pass: depth-first radix-4 steps, then the bottom blocks.
//
// For kernel files only. Watch is called after each pass and each bottom block, in the order of the work:
// nothing in the program (Unwatched), the faults of the tests.
#pragma once

#include "multiply/fft/fft_vector.hpp"

namespace znp::fft {

// Four levels on a bottom block: a step between the block's quarters, lanes and groups transposed so that the
// lanes are the four children, and a step within each child.
template <unsigned C>
ZNP_INLINE void forward_bottom(double* x, const BlockTwiddles& twiddles) {
    alignas(32) double coefficients[32 * C];
    const Powers e = block_powers(twiddles);
    for (unsigned i = 0; i < C; ++i) {
        CV a = load(x + 8 * i), b = load(x + 8 * (C + i)), c = load(x + 8 * (2 * C + i)),
           d = load(x + 8 * (3 * C + i));
        forward_step(a, b, c, d, e);
        transpose(a, b, c, d);
        store(coefficients + 32 * i, a);
        store(coefficients + 32 * i + 8, b);
        store(coefficients + 32 * i + 16, c);
        store(coefficients + 32 * i + 24, d);
    }
    const Powers u = child_powers(twiddles);
    for (unsigned t = 0; t < C; ++t) {
        CV a = load(coefficients + 8 * t), b = load(coefficients + 8 * (C + t)),
           c = load(coefficients + 8 * (2 * C + t)), d = load(coefficients + 8 * (3 * C + t));
        forward_step(a, b, c, d, u);
        store(x + 8 * t, a);
        store(x + 8 * (C + t), b);
        store(x + 8 * (2 * C + t), c);
        store(x + 8 * (3 * C + t), d);
    }
}

// Block j at depth d, of the given number of groups, 4 C at the bottom.
template <unsigned C, class Watch>
static void forward_blocks(double* x, upL_t groups, unsigned d, upL_t j, const FFTTables& tables,
                           Watch watch) {
    const upL_t quarter = groups / 4;
    pass<forward_step>(x, quarter, tables.level[d][j]);
    watch();
    if (quarter == 4 * C) {
        for (unsigned l = 0; l < 4; ++l) {
            forward_bottom<C>(x + 32 * C * l, tables.level[d + 2][4 * j + l]);
            watch();
        }
    } else {
        for (unsigned l = 0; l < 4; ++l)
            forward_blocks<C>(x + 8 * quarter * l, quarter, d + 2, 4 * j + l, tables, watch);
    }
}

template <unsigned C, class Watch>
static void forward_tree_of(double* x, upL_t N, const FFTTables& tables, Watch watch) {
    const upL_t groups = N / 32;
    for (unsigned l = 0; l < 4; ++l) {
        if (groups == 4 * C) {
            forward_bottom<C>(x + 32 * C * l, tables.level[2][l]);
            watch();
        } else {
            forward_blocks<C>(x + 8 * groups * l, groups, 2, l, tables, watch);
        }
    }
}

template <class Watch>
static void forward_tree(double* image, upL_t N, unsigned C, const FFTTables& tables, Watch watch) {
    switch (C) {
        case 1:
            return forward_tree_of<1>(image, N, tables, watch);
        case 2:
            return forward_tree_of<2>(image, N, tables, watch);
        case 3:
            return forward_tree_of<3>(image, N, tables, watch);
        case 5:
            return forward_tree_of<5>(image, N, tables, watch);
        case 6:
            return forward_tree_of<6>(image, N, tables, watch);
        default:
            return forward_tree_of<10>(image, N, tables, watch);
    }
}

}  // namespace znp::fft
