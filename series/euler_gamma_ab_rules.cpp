#include "series/euler_gamma_ab_rules.hpp"

#include <algorithm>

#include "multiply/dispatch.hpp"
#include "numbers/transform_helper.hpp"

namespace znp {

namespace {

using Transform = Exact::Transform;

// The products of V with V and U: out.a1b0, out.V = a1 b1, out.a0b1, out.b1b1, each operand transformed once.
// V's buffer begins at a1 and may reach over b1, which moves to b0's place in time: b1 refers to it after.
struct ShortProducts {
    ExactR &a1b0, &V, &a0b1, &b1b1;
};

void short_products(const BasicParameters& bp, const ShortProducts& out, const Exact& a0, const Exact& a1,
                    const Exact& b0, const Exact& b1, ExactR& b1_moved) {
    const upL_t L =
        std::max({a1.get_L() + b0.get_L(), a1.get_L() + b1.get_L(), a0.get_L() + b1.get_L(), 2 * b1.get_L()});
    if (L <= direct_merge_words) {
        out.a1b0.set_mul(bp, a1, b0);
        b1_moved.set_efp(b1);
        out.b1b1.set_mul(bp, a1, b1_moved);
        out.V.set_efp(out.b1b1);
        out.V.strip_low();
        out.a0b1.set_mul(bp, a0, b1_moved);
        out.b1b1.set_mul(bp, b1_moved, b1_moved);
        return;
    }
    TransformSlot slot;
    const TransformHelper helper(bp, make_transform<cdi>(bp, slot, L));
    Transform A1(a1, helper.algorithm, helper.T2, helper.scratch);
    Transform B0(b0, helper.algorithm, helper.T1, helper.scratch);
    out.a1b0.set_inverse_fmul(helper.scratch, B0, A1);
    b1_moved.set_efp(b1);
    Transform B1(b1_moved, helper.algorithm, helper.T1, helper.scratch);
    out.V.set_inverse_fmul(helper.scratch, A1, B1);
    out.V.strip_low();
    Transform A0(a0, helper.algorithm, helper.T2, helper.scratch);
    out.a0b1.set_inverse_fmul(helper.scratch, A0, B1);
    out.b1b1.set_inverse_fsqr(helper.scratch, B1);
}

}  // namespace

// The same offset for U and V, and for W and X, since an operand moves from one to the other.
ABRules::Node ABRules::behind(const Node& results) const {
    Node right = results;
    const upL_t shorter = std::max(results[0].get_L(), results[1].get_L());
    const upL_t longer = std::max(results[2].get_L(), results[3].get_L());
    right[0].set_rest_of(shorter, results[0]);
    right[1].set_rest_of(shorter, results[1]);
    right[2].set_rest_of(longer, results[2]);
    right[3].set_rest_of(longer, results[3]);
    return right;
}

void ABRules::merge(const BasicParameters& bp, Node& out, const Node& left, const Node& right, bool) const {
    auto& [U, V, W, X, long1, long2, long3, a1b0, a0b1, b1b1] = out;
    const Exact &a0 = left[0], &a1 = left[1], &a2 = left[2], &a3 = left[3];
    const Exact &b0 = right[0], &b1 = right[1], &b2 = right[2], &b3 = right[3];
    ExactR b1_moved = right[0];
    ExactR b2_moved = right[3];

    ExactR& a1b3 = long1;
    a1b3.set_mul(bp, b3, a1);
    short_products(bp, {a1b0, V, a0b1, b1b1}, a0, a1, b0, b1, b1_moved);
    ExactR& a0b1b2 = long2;
    a0b1b2.set_mul(bp, b2, a0b1);

    ExactR& a2b1b1 = long3;
    a2b1b1.set_mul(bp, a2, b1b1);
    b2_moved.set_efp(b2);
    W.set_add(a2b1b1, b2_moved);
    W.strip_low();

    ExactR& sum = long3;
    sum.set_add(a0b1b2, a1b3);
    ExactR& cube = long1;
    cube.set_mul(bp, b1_moved, b1b1);
    ExactR& a3cube = long2;
    a3cube.set_mul(bp, a3, cube);
    X.set_add(a3cube, sum);
    X.strip_low();
    U.set_add(a0b1, a1b0);
}

}  // namespace znp
