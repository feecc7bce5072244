#include "numbers/transform_helper.hpp"

#include <algorithm>

#include "foundation/exceptions.hpp"
#include "multiply/dispatch.hpp"

namespace znp {

TransformHelper::TransformHelper(const BasicParameters& bp, const transform& algorithm_)
    : algorithm(algorithm_),
      T1(bp.M),
      T2(bp.M + algorithm.transform_bytes),
      scratch(bp.M + 2 * algorithm.transform_bytes) {
    if (algorithm.product_bytes() > bp.ML) {
        fire(BufferTooSmallException("TransformHelper::TransformHelper()", bp.ML, algorithm.product_bytes()));
    }
}

template <class word>
void mul_transformed(const BasicParameters& bp, BigFloatR<word>& out, const BigFloat<word>& a,
                     const BigFloat<word>& b, upL_t p) {
    using Transform = typename BigFloat<word>::Transform;
    TransformSlot slot;
    const TransformHelper helper(bp, make_transform<word>(bp, slot, a.get_L() + b.get_L() + transform_slack));
    Transform A(a, helper.scratch, helper.algorithm, helper.T2, p);
    const Transform B(b, helper.scratch, helper.algorithm, helper.T1, p);
    out.set_inverse_fmul(helper.scratch, A, B, A.mag + B.mag, p);
}

namespace {

// product(out, A, C) is the inverse transform of one of the two products.
template <class word, class Product>
void exact_products(const BasicParameters& bp, ExactFloatR<word>& out1, ExactFloatR<word>& out2,
                    const ExactFloat<word>& c, const ExactFloat<word>& a, const ExactFloat<word>& b,
                    Product product) {
    using Transform = typename ExactFloat<word>::Transform;
    TransformSlot slot1;
    TransformSlot slot2;
    const transform& t1 = make_transform<word>(bp, slot1, c.get_L() + a.get_L());
    const transform& t2 = make_transform<word>(bp, slot2, c.get_L() + b.get_L());
    const auto product_with = [&](ExactFloatR<word>& out, const ExactFloat<word>& operand) {
        return [&out, &operand, &product](const TransformHelper& helper, const Transform& C) {
            Transform A(operand, helper.algorithm, helper.T1, helper.scratch);
            product(out, helper.scratch, A, C);
        };
    };
    shared_products(
        bp, t1, t2,
        [&](const TransformHelper& helper) {
            return Transform(c, helper.algorithm, helper.T2, helper.scratch);
        },
        product_with(out1, a), product_with(out2, b));
}

}  // namespace

template <class word>
void mul_shared(const BasicParameters& bp, ExactFloatR<word>& out1, ExactFloatR<word>& out2,
                const ExactFloat<word>& c, const ExactFloat<word>& a, const ExactFloat<word>& b) {
    exact_products(bp, out1, out2, c, a, b,
                   [](ExactFloatR<word>& out, void* scratch, auto& A, const auto& C) {
                       out.set_inverse_fmul(scratch, A, C);
                   });
}

template <class word>
void mul_shared(const BasicParameters& bp, ExactFloatR<word>& out1, ExactFloatR<word>& out2,
                const ExactFloat<word>& c, const ExactFloat<word>& a, const ExactFloat<word>& b, s64_t e) {
    exact_products(bp, out1, out2, c, a, b,
                   [e](ExactFloatR<word>& out, void* scratch, auto& A, const auto& C) {
                       out.set_inverse_fmul(scratch, A, C, e);
                   });
}

template <class word>
void mul_shared(const BasicParameters& bp, BigFloatR<word>& out1, upL_t p1, BigFloatR<word>& out2, upL_t p2,
                const BigFloat<word>& c, const BigFloat<word>& a, const BigFloat<word>& b) {
    using Transform = typename BigFloat<word>::Transform;
    const upL_t p = std::max(p1, p2);
    TransformSlot slot1;
    TransformSlot slot2;
    const transform& t1 = make_transform<word>(bp, slot1, c.get_L() + a.get_L() + transform_slack);
    const transform& t2 = make_transform<word>(bp, slot2, c.get_L() + b.get_L() + transform_slack);
    const auto product_with = [&](BigFloatR<word>& out, const BigFloat<word>& operand, upL_t precision) {
        return [&out, &operand, precision](const TransformHelper& helper, const Transform& C) {
            Transform A(operand, helper.scratch, helper.algorithm, helper.T1, precision);
            out.set_inverse_fmul(helper.scratch, A, C, A.mag + C.mag, precision);
        };
    };
    shared_products(
        bp, t1, t2,
        [&](const TransformHelper& helper) {
            return Transform(c, helper.scratch, helper.algorithm, helper.T2, p);
        },
        product_with(out1, a, p1), product_with(out2, b, p2));
}

#define ZNP_INSTANTIATE(word)                                                                            \
    template void mul_transformed(const BasicParameters&, BigFloatR<word>&, const BigFloat<word>&,       \
                                  const BigFloat<word>&, upL_t);                                         \
    template void mul_shared(const BasicParameters&, ExactFloatR<word>&, ExactFloatR<word>&,             \
                             const ExactFloat<word>&, const ExactFloat<word>&, const ExactFloat<word>&); \
    template void mul_shared(const BasicParameters&, ExactFloatR<word>&, ExactFloatR<word>&,             \
                             const ExactFloat<word>&, const ExactFloat<word>&, const ExactFloat<word>&,  \
                             s64_t);                                                                     \
    template void mul_shared(const BasicParameters&, BigFloatR<word>&, upL_t, BigFloatR<word>&, upL_t,   \
                             const BigFloat<word>&, const BigFloat<word>&, const BigFloat<word>&);
ZNP_INSTANTIATE(c32i)
ZNP_INSTANTIATE(c64i)
#undef ZNP_INSTANTIATE

}  // namespace znp
