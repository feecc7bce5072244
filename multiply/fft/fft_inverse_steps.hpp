// The inverse transform above the last pass, with the pointwise step in its lowest levels.
//
// For kernel files only. Watch is called after each pass and each bottom block, in the order of the work:
// nothing in the program (Unwatched), the faults of the tests.
#pragma once

#include "multiply/fft/fft_vector.hpp"

namespace znp::fft {

enum class Pointwise { none, square, product };

// The product of two leaves modulo X^C - rho, where rho is u, -u, iu, -iu for r = 0 .. 3.
template <unsigned C, unsigned r>
ZNP_INLINE void leaf_product(double* out, const double* A, const double* B, CV u) {
    for (unsigned t = 0; t < C; ++t) {
        CV low = mul(load(A), load(B + 8 * t));
        for (unsigned i = 1; i <= t; ++i) low = mul_add(low, load(A + 8 * i), load(B + 8 * (t - i)));
        if (t + 1 < C) {
            CV high = mul(load(A + 8 * (t + 1)), load(B + 8 * (C - 1)));
            for (unsigned i = t + 2; i < C; ++i)
                high = mul_add(high, load(A + 8 * i), load(B + 8 * (C + t - i)));
            const CV wrapped = mul(high, u);
            low = r == 0   ? add(low, wrapped)
                  : r == 1 ? sub(low, wrapped)
                  : r == 2 ? add_i(low, wrapped)
                           : sub_i(low, wrapped);
        }
        store(out + 8 * t, low);
    }
}

// The mirror image of the forward bottom block, after the pointwise step.
template <unsigned C, Pointwise mode>
ZNP_INLINE void inverse_bottom(double* x, const double* y, const BlockTwiddles& twiddles) {
    alignas(32) double leaves[32 * C];
    const Powers u = child_powers(twiddles);
    const double* from = x;
    if (mode != Pointwise::none) {
        const double* B = mode == Pointwise::square ? x : y;
        leaf_product<C, 0>(leaves, x, B, u.e1);
        leaf_product<C, 1>(leaves + 8 * C, x + 8 * C, B + 8 * C, u.e1);
        leaf_product<C, 2>(leaves + 16 * C, x + 16 * C, B + 16 * C, u.e1);
        leaf_product<C, 3>(leaves + 24 * C, x + 24 * C, B + 24 * C, u.e1);
        from = leaves;
    }
    for (unsigned t = 0; t < C; ++t) {
        CV a = load(from + 8 * t), b = load(from + 8 * (C + t)), c = load(from + 8 * (2 * C + t)),
           d = load(from + 8 * (3 * C + t));
        inverse_step(a, b, c, d, u);
        store(leaves + 8 * t, a);
        store(leaves + 8 * (C + t), b);
        store(leaves + 8 * (2 * C + t), c);
        store(leaves + 8 * (3 * C + t), d);
    }
    const Powers e = block_powers(twiddles);
    for (unsigned i = 0; i < C; ++i) {
        CV a = load(leaves + 32 * i), b = load(leaves + 32 * i + 8), c = load(leaves + 32 * i + 16),
           d = load(leaves + 32 * i + 24);
        transpose(a, b, c, d);
        inverse_step(a, b, c, d, e);
        store(x + 8 * i, a);
        store(x + 8 * (C + i), b);
        store(x + 8 * (2 * C + i), c);
        store(x + 8 * (3 * C + i), d);
    }
}

// Block j at depth d, of the given number of groups.
template <unsigned C, Pointwise mode, class Watch>
static void inverse_blocks(double* x, const double* y, upL_t groups, unsigned d, upL_t j,
                           const FFTTables& tables, Watch watch) {
    const upL_t quarter = groups / 4;
    if (quarter == 4 * C) {
        for (unsigned l = 0; l < 4; ++l) {
            inverse_bottom<C, mode>(x + 32 * C * l, y + 32 * C * l, tables.level[d + 2][4 * j + l]);
            watch();
        }
    } else {
        for (unsigned l = 0; l < 4; ++l)
            inverse_blocks<C, mode>(x + 8 * quarter * l, y + 8 * quarter * l, quarter, d + 2, 4 * j + l,
                                    tables, watch);
    }
    pass<inverse_step>(x, quarter, tables.level[d][j]);
    watch();
}

template <unsigned C, Pointwise mode, class Watch>
static void inverse_tree_of(double* x, const double* y, upL_t N, const FFTTables& tables, Watch watch) {
    const upL_t groups = N / 32;
    for (unsigned l = 0; l < 4; ++l) {
        if (groups == 4 * C) {
            inverse_bottom<C, mode>(x + 32 * C * l, y + 32 * C * l, tables.level[2][l]);
            watch();
        } else {
            inverse_blocks<C, mode>(x + 8 * groups * l, y + 8 * groups * l, groups, 2, l, tables, watch);
        }
    }
}

template <unsigned C, class Watch>
static void inverse_tree_of(double* x, const double* y, upL_t N, const FFTTables& tables, Watch watch) {
    if (y == nullptr)
        inverse_tree_of<C, Pointwise::none>(x, x, N, tables, watch);
    else if (y == x)
        inverse_tree_of<C, Pointwise::square>(x, x, N, tables, watch);
    else
        inverse_tree_of<C, Pointwise::product>(x, y, N, tables, watch);
}

template <class Watch>
static void inverse_tree(double* image, const double* B, upL_t N, unsigned C, const FFTTables& tables,
                         Watch watch) {
    switch (C) {
        case 1:
            return inverse_tree_of<1>(image, B, N, tables, watch);
        case 2:
            return inverse_tree_of<2>(image, B, N, tables, watch);
        case 3:
            return inverse_tree_of<3>(image, B, N, tables, watch);
        case 5:
            return inverse_tree_of<5>(image, B, N, tables, watch);
        case 6:
            return inverse_tree_of<6>(image, B, N, tables, watch);
        default:
            return inverse_tree_of<10>(image, B, N, tables, watch);
    }
}

}  // namespace znp::fft
