// The constants of the residue recovery, each in all lanes of a vector: see recovery_kernel.cpp.
#pragma once

#include "multiply/vst/vector_width.hpp"

namespace znp::vst {

template <unsigned a>
struct RecoveryTable {
    struct Lanes {
        double lane[vector_doubles];
    };
    Lanes quotient_offset;    // M' + 0.2 P - pair products, in multiples of 2^48 of the top high part
    Lanes quotient_factor;    // -1 / P in these units
    Lanes factors[a][a - 1];  // limbs of each P / p
    Lanes product[a];         // limbs of P
    Lanes pair_products[a];   // limbs, with what the magic numbers leave taken off
};

// The mantissas' sums begin with these: M, M'.
inline constexpr double low_magic = 0x1.8p52;
inline constexpr double high_magic = 0x1.8p100;

// What a limb's 16 upper bits hold beside its carry, which the next limb's sum takes back.
inline constexpr double low_excess = 0x4338;
inline constexpr double both_excess = 0x4338 + 0x4638;

}  // namespace znp::vst
