// What the memory queries of all constants share.
#pragma once

#include "compute/constant.hpp"

namespace znp {

// Throws where a run of p words needs products beyond the multipliers' tables.
void check_precision(upL_t p);

// get_memory_B of a constant: whether it knows the algorithm; bytes = estimate() if p is not 0.
template <class Estimate>
bool query_memory(const zlr_Constant& constant, s32_t algorithm, upL_t p, upL_t& bytes, Estimate estimate) {
    if (!constant.knows_algorithm(algorithm, p)) return false;
    if (p == 0) return true;
    check_precision(p);
    bytes = estimate();
    return true;
}

// For the formulas that are still to come.
[[noreturn]] void refuse_B(const zlr_Constant& constant);

}  // namespace znp
