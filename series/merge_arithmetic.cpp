#include "series/merge_arithmetic.hpp"

#include <algorithm>

namespace znp {

TruncatedProduct TruncatedArithmetic::second_product(BigFloatR& out, const BigFloat& a, const BigFloat& b,
                                                     const BigFloat& c, const BigFloat& d) const {
    const s64_t below = std::max<s64_t>(0, c.get_mag() + d.get_mag() - a.get_mag() - b.get_mag());
    const s64_t reached = std::max<s64_t>(0, static_cast<s64_t>(p_) - below);
    return {out, a, b, std::min(q_, static_cast<upL_t>(reached))};
}

void TruncatedArithmetic::strip(BigFloatR& x) const {
    const cdi* T = x.get_T();
    upL_t zeros = 0;
    while (zeros < x.get_L() && T[zeros] == 0) zeros++;
    zeros &= ~upL_t{3};
    x.set_view({T + zeros, x.get_L() - zeros, x.get_exp() + static_cast<s64_t>(zeros), x.raw_sign(),
                x.get_residue()});
}

upL_t truncated_merge_words(upL_t left, upL_t right, upL_t p) {
    const upL_t longest = p + extra_precision;
    return std::min(left, longest) + std::min(right, longest) + transform_slack;
}

}  // namespace znp
