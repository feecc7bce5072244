#include "series/merge.hpp"

#include "foundation/fail.hpp"
#include "multiply/dispatch.hpp"
#include "multiply/kernels/residue.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "numbers/transform_helper.hpp"

namespace znp {

namespace {

using Transform = Exact::Transform;

upL_t product_length(const Exact& a, const Exact& b) {
    return a.get_L() + b.get_L();
}

// A short product on the stack.
class DirectProduct {
  public:
    const ExactR& operator()(const BasicParameters& bp, const Exact& a, const Exact& b) {
        product_.set_mul(bp, a, b);
        return product_;
    }

  private:
    cdi words_[direct_merge_words];
    ExactR product_{words_, direct_merge_words};
};

void set_sum(ExactR& out, const Exact& a, const Exact& b, bool subtract) {
    if (subtract) {
        out.set_sub(a, b);
    } else {
        out.set_add(a, b);
    }
}

// x += t for a t that may reach above x, which happens where the terms hardly shrink: the right half can have
// one term more than the left one.
void add_longer(ExactR& x, const Exact& t) {
    const upL_t L = static_cast<upL_t>(t.get_mag() - x.get_exp());
    const upL_t offset = static_cast<upL_t>(x.get_T() - x.get_base());
    if (offset + L + 1 > x.get_size()) {
        fail(BufferTooSmallException("ExactFloatR::operator+=()", x.get_size(), offset + L + 1));
    }
    cdi* T = x.word_ptr(0);
    std::fill(T + x.get_L(), T + L + 1, cdi{0});
    cdi* at = T + (t.get_exp() - x.get_exp());
    T[L] = add_words(at, at, t.get_T(), t.get_L()) ? 1 : 0;
    x.set_LN(L + 1, x.get_exp(), residue::add(x.get_hash(), t.get_hash()));
}

// x +- t in place; x reaches at least as low as t.
void accumulate(ExactR& x, const Exact& t, bool subtract) {
    if (subtract) {
        x -= t;
    } else if (t.get_mag() > x.get_mag()) {
        add_longer(x, t);
    } else {
        x += t;
    }
}

// out1 = c a at an exponent of at most e, out2 = c b, by one transform where that costs less than two: of the
// six transforms of two products it saves one, so that the shorter product may be a third shorter.
void shared_exact_products(const BasicParameters& bp, ExactR& out1, ExactR& out2, const Exact& c,
                           const Exact& a, const Exact& b, s64_t e) {
    const upL_t L1 = product_length(c, a);
    const upL_t L2 = product_length(c, b);
    const bool share = 3 * std::min(L1, L2) >= 2 * std::max(L1, L2);
    TransformSlot slot1;
    TransformSlot slot2;
    const transform& t1 = make_transform<cdi>(bp, slot1, share ? std::max(L1, L2) : L1);
    const transform& t2 = share ? t1 : make_transform<cdi>(bp, slot2, L2);
    shared_products(
        bp, t1, t2,
        [&](const TransformHelper& helper) {
            return Transform(c, helper.algorithm, helper.T2, helper.scratch);
        },
        [&](const TransformHelper& helper, const Transform& C) {
            Transform A(a, helper.algorithm, helper.T1, helper.scratch);
            out1.set_inverse_fmul(helper.scratch, A, C, e);
        },
        [&](const TransformHelper& helper, const Transform& C) {
            Transform B(b, helper.algorithm, helper.T1, helper.scratch);
            out2.set_inverse_fmul(helper.scratch, B, C);
        });
}

constexpr s64_t no_limit = INT64_MAX;

// The rest of a merge by direct products, P +- t and Q.
void merge_directly(const BasicParameters& bp, DirectProduct& product, ExactR& P, ExactR& Q, const Exact& t,
                    const Exact& Pl, const Exact& Ql, const Exact& Qr, bool subtract) {
    set_sum(P, product(bp, Pl, Qr), t, subtract);
    Q.set_efp(product(bp, Ql, Qr));
    Q.strip_low();
}

}  // namespace

void merge_P2B1(const BasicParameters& bp, ExactR& P, ExactR& Q, const Exact& Pl, const Exact& Ql,
                const Exact& Pr, const Exact& Qr, bool subtract) {
    const upL_t L = std::max(Pl.get_L(), Ql.get_L()) + Qr.get_L();
    if (L <= direct_merge_words) {
        DirectProduct product;
        return merge_directly(bp, product, P, Q, Pr, Pl, Ql, Qr, subtract);
    }
    TransformSlot slot;
    const TransformHelper helper(bp, make_transform<cdi>(bp, slot, L));
    const Transform C(Qr, helper.algorithm, helper.T2, helper.scratch);
    Transform A(Ql, helper.algorithm, helper.T1, helper.scratch);
    Q.set_inverse_fmul(helper.scratch, A, C);
    Q.strip_low();
    Transform B(Pl, helper.algorithm, helper.T1, helper.scratch);
    P.set_inverse_fmul(helper.scratch, B, C, Pr.get_exp());
    accumulate(P, Pr, subtract);
}

void merge_P2B2(const BasicParameters& bp, ExactR& P, ExactR& Q, ExactR& t, const Exact& Pl, const Exact& Ql,
                const Exact& Pr, const Exact& Qr, bool subtract) {
    const upL_t L = std::max({product_length(Qr, Ql), product_length(Qr, Pl), product_length(Ql, Pr)});
    if (L <= direct_merge_words) {
        t.set_mul(bp, Ql, Pr);
        DirectProduct product;
        return merge_directly(bp, product, P, Q, t, Pl, Ql, Qr, subtract);
    }
    TransformSlot slot;
    const TransformHelper helper(bp, make_transform<cdi>(bp, slot, L));
    Transform A(Ql, helper.algorithm, helper.T2, helper.scratch);
    Transform B(Pr, helper.algorithm, helper.T1, helper.scratch);
    t.set_inverse_fmul(helper.scratch, B, A);
    const Transform C(Qr, helper.algorithm, helper.T1, helper.scratch);
    Q.set_inverse_fmul(helper.scratch, A, C);
    Q.strip_low();
    Transform D(Pl, helper.algorithm, helper.T2, helper.scratch);
    P.set_inverse_fmul(helper.scratch, D, C, t.get_exp());
    accumulate(P, t, subtract);
}

void merge_P2B3(const BasicParameters& bp, ExactR& P, ExactR& Q, ExactR* R, ExactR& t,
                const P2B3Operands& left, const P2B3Operands& right, bool subtract) {
    upL_t L = std::max(
        {product_length(left.R, right.P), product_length(left.P, right.Q), product_length(left.Q, right.Q)});
    if (R != nullptr) L = std::max(L, product_length(left.R, right.R));
    if (L <= direct_merge_words) {
        DirectProduct product;
        t.set_mul(bp, left.R, right.P);
        if (R != nullptr) {
            R->set_efp(product(bp, left.R, right.R));
            R->strip_low();
        }
        return merge_directly(bp, product, P, Q, t, left.P, left.Q, right.Q, subtract);
    }
    if (R != nullptr) {
        shared_exact_products(bp, t, *R, left.R, right.P, right.R, no_limit);
        R->strip_low();
    } else {
        t.set_mul(bp, left.R, right.P);
    }
    shared_exact_products(bp, P, Q, right.Q, left.P, left.Q, t.get_exp());
    accumulate(P, t, subtract);
    Q.strip_low();
}

}  // namespace znp
