#include "series/truncated_merge.hpp"

#include <algorithm>

#include "numbers/transform_helper.hpp"

namespace znp {

void truncated_merge(const BasicParameters& bp, FloatR& P, FloatR& Q, FloatR* R, FloatR& x, FloatR& t,
                     const TruncatedOperands& left, const TruncatedOperands& right, upL_t p, upL_t q,
                     bool subtract) {
    const s64_t top = left.P.get_mag() + right.Q.get_mag();
    const s64_t below = std::max<s64_t>(0, top - left.R.get_mag() - right.P.get_mag());
    const s64_t reached = std::max<s64_t>(0, static_cast<s64_t>(p) - below);
    q = std::min(q, static_cast<upL_t>(reached));

    if (R != nullptr) {
        mul_shared(bp, t, q, *R, p, left.R.top_words(p), right.P.top_words(q), right.R.top_words(p));
        strip_low(*R);
    } else {
        t.set_mul(bp, left.R.top_words(q), right.P.top_words(q), q);
    }
    mul_shared(bp, x, p, Q, p, right.Q.top_words(p), left.P.top_words(p), left.Q.top_words(p));
    strip_low(Q);
    if (subtract) {
        P.set_sub(x, t, p);
    } else {
        P.set_add(x, t, p);
    }
}

upL_t truncated_merge_words(upL_t left, upL_t right, upL_t p) {
    const upL_t longest = p + extra_precision;
    return std::min(left, longest) + std::min(right, longest) + transform_slack;
}

void strip_low(FloatR& x) {
    const cdi* T = x.get_T();
    upL_t zeros = 0;
    while (zeros < x.get_L() && T[zeros] == 0) zeros++;
    zeros &= ~upL_t{3};
    x.set_view(T + zeros, x.get_L() - zeros, x.get_exp() + static_cast<s64_t>(zeros), x.raw_sign());
}

}  // namespace znp
