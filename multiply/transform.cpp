#include "multiply/transform.hpp"

#include <algorithm>

#include "foundation/fail.hpp"

namespace znp {

namespace {

template <class word>
void product_by_steps(const transform& t, Window<word> R, WordSpan<word> A, WordSpan<word> B,
                      const WorkAreas& work) {
    t.forward(work.T1, A, work.scratch);
    if (A.data() == B.data() && A.size() == B.size()) {
        t.inverse_fsqr(R, work.T1, work.scratch);
    } else {
        t.forward(work.T2, B, work.scratch);
        t.inverse_fmul(R, work.T1, work.T2, work.scratch);
    }
}

[[noreturn]] void unchecked(const transform& t) {
    fail(zn_exception(error_code::unspecified, "The algorithm's results cannot be verified.", t.name()));
}

}  // namespace

void transform::check_product(const char* location, const BasicParameters& bp, u64_t bits) const {
    if (bits > max_bits) fail(ConvolutionTooSmallException(name(), bits, max_bits));
    require_work(bp, product_bytes(), location);
}

template <class word>
void transform::sqr(const BasicParameters& bp, word* T, WordSpan<word> A) const {
    sqr_window(bp, Window{T, 0, 2 * A.size()}, A);
}

template <class word>
void transform::mul(const BasicParameters& bp, word* T, WordSpan<word> A, WordSpan<word> B) const {
    mul_window(bp, Window{T, 0, A.size() + B.size()}, A, B);
}

template <class word>
void transform::sqr_window(const BasicParameters& bp, Window<word> R, WordSpan<word> A) const {
    check_product("transform::sqr()", bp, 2 * A.size() * WordTraits<word>::bits);
    if (A.empty()) return;
    product(R, A, A, work_areas(bp.M));
}

template <class word>
void transform::mul_window(const BasicParameters& bp, Window<word> R, WordSpan<word> A,
                           WordSpan<word> B) const {
    check_product("transform::mul()", bp, (A.size() + B.size()) * WordTraits<word>::bits);
    if (A.empty() || B.empty()) {
        std::fill_n(R.T, R.size(), word{0});
        return;
    }
    product(R, A, B, work_areas(bp.M));
}

CheckedResult transform::checked_mul(const BasicParameters& bp, Window<c64i> R, WordSpan<c64i> A,
                                     WordSpan<c64i> B) const {
    check_product("transform::checked_mul()", bp, (A.size() + B.size()) * WordTraits<c64i>::bits);
    const WorkAreas work = work_areas(bp.M);
    forward(work.T1, A, work.scratch);
    if (A.data() == B.data() && A.size() == B.size()) return checked_fsqr(R, work.T1, work.scratch);
    forward(work.T2, B, work.scratch);
    return checked_fmul(R, work.T1, work.T2, work.scratch);
}

void transform::forward(Image* image, WordSpan<c64i> A, TransformScratch* scratch) const {
    forward(image, as_c32i(A), scratch);
}

void transform::inverse_fsqr(Window<c64i> R, Image* T, TransformScratch* scratch) const {
    inverse_fsqr(as_c32i(R), T, scratch);
}

void transform::inverse_fmul(Window<c64i> R, Image* T1, const Image* T2, TransformScratch* scratch) const {
    inverse_fmul(as_c32i(R), T1, T2, scratch);
}

void transform::product(Window<c32i> R, WordSpan<c32i> A, WordSpan<c32i> B, const WorkAreas& work) const {
    product_by_steps(*this, R, A, B, work);
}

void transform::product(Window<c64i> R, WordSpan<c64i> A, WordSpan<c64i> B, const WorkAreas& work) const {
    product_by_steps(*this, R, A, B, work);
}

CheckedResult transform::checked_fsqr(Window<c64i>, Image*, TransformScratch*) const {
    unchecked(*this);
}

CheckedResult transform::checked_fmul(Window<c64i>, Image*, const Image*, TransformScratch*) const {
    unchecked(*this);
}

u64_t transform::modulus() const {
    unchecked(*this);
}

#define ZNP_INSTANTIATE(word)                                                                          \
    template void transform::sqr(const BasicParameters&, word*, WordSpan<word>) const;                 \
    template void transform::mul(const BasicParameters&, word*, WordSpan<word>, WordSpan<word>) const; \
    template void transform::sqr_window(const BasicParameters&, Window<word>, WordSpan<word>) const;   \
    template void transform::mul_window(const BasicParameters&, Window<word>, WordSpan<word>,          \
                                        WordSpan<word>) const;
ZNP_INSTANTIATE(c32i)
ZNP_INSTANTIATE(c64i)
#undef ZNP_INSTANTIATE

}  // namespace znp
