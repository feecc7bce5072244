#include "multiply/transform.hpp"

#include <algorithm>

#include "foundation/fail.hpp"

namespace znp {

namespace {

// The images and the scratch in a work buffer.
struct WorkAreas {
    std::byte* T1;
    std::byte* T2;
    std::byte* scratch;

    WorkAreas(const transform& t, const BasicParameters& bp)
        : T1(bp.M), T2(T1 + t.transform_bytes), scratch(T2 + t.transform_bytes) {}
};

template <class word>
void product_by_steps(const transform& t, word* R, upL_t s, upL_t e, const word* A, upL_t La, const word* B,
                      upL_t Lb, void* T1, void* T2, void* scratch) {
    t.forward(T1, A, La, scratch);
    if (A == B && La == Lb) {
        t.inverse_fsqr(R, s, e, T1, scratch);
    } else {
        t.forward(T2, B, Lb, scratch);
        t.inverse_fmul(R, s, e, T1, T2, scratch);
    }
}

[[noreturn]] void unchecked(const transform& t) {
    fail(zn_exception(error_code::unspecified, "The algorithm's results cannot be verified.", t.name()));
}

// 64-bit words as pairs of 32-bit ones, which are the same bytes on a little-endian machine. The pointer only
// hands on an address: the steps below use no object of type c32i behind it.
const c32i* halves(const c64i* A) {
    return reinterpret_cast<const c32i*>(A);
}
c32i* halves(c64i* A) {
    return reinterpret_cast<c32i*>(A);
}

}  // namespace

void transform::check_product(const char* location, const BasicParameters& bp, u64_t bits) const {
    if (bits > max_bits) fail(ConvolutionTooSmallException(name(), bits, max_bits));
    if (bp.ML < product_bytes()) {
        fail(zn_exception(error_code::work_space_too_small, nullptr, {}, {}, action::print_and_throw,
                          "Generic Exception", location));
    }
}

template <class word>
void transform::sqr(const BasicParameters& bp, word* T, const word* A, upL_t n) const {
    sqr_window(bp, T, 0, 2 * n, A, n);
}

template <class word>
void transform::mul(const BasicParameters& bp, word* T, const word* A, upL_t La, const word* B,
                    upL_t Lb) const {
    mul_window(bp, T, 0, La + Lb, A, La, B, Lb);
}

template <class word>
void transform::sqr_window(const BasicParameters& bp, word* T, upL_t s, upL_t e, const word* A,
                           upL_t n) const {
    check_product("transform::sqr()", bp, 2 * n * WordTraits<word>::bits);
    if (n == 0) return;
    const WorkAreas work(*this, bp);
    product(T, s, e, A, n, A, n, work.T1, work.T2, work.scratch);
}

template <class word>
void transform::mul_window(const BasicParameters& bp, word* T, upL_t s, upL_t e, const word* A, upL_t La,
                           const word* B, upL_t Lb) const {
    check_product("transform::mul()", bp, (La + Lb) * WordTraits<word>::bits);
    if (La == 0 || Lb == 0) {
        std::fill(T, T + (e - s), word{0});
        return;
    }
    const WorkAreas work(*this, bp);
    product(T, s, e, A, La, B, Lb, work.T1, work.T2, work.scratch);
}

void transform::forward(void* image, const c64i* A, upL_t L, void* scratch) const {
    forward(image, halves(A), 2 * L, scratch);
}

void transform::inverse_fsqr(c64i* R, upL_t s, upL_t e, void* T, void* scratch) const {
    inverse_fsqr(halves(R), 2 * s, 2 * e, T, scratch);
}

void transform::inverse_fmul(c64i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const {
    inverse_fmul(halves(R), 2 * s, 2 * e, T1, T2, scratch);
}

void transform::product(c32i* R, upL_t s, upL_t e, const c32i* A, upL_t La, const c32i* B, upL_t Lb, void* T1,
                        void* T2, void* scratch) const {
    product_by_steps(*this, R, s, e, A, La, B, Lb, T1, T2, scratch);
}

void transform::product(c64i* R, upL_t s, upL_t e, const c64i* A, upL_t La, const c64i* B, upL_t Lb, void* T1,
                        void* T2, void* scratch) const {
    product_by_steps(*this, R, s, e, A, La, B, Lb, T1, T2, scratch);
}

u64_t transform::checked_fsqr(c64i*, upL_t, upL_t, void*, void*) const {
    unchecked(*this);
}

u64_t transform::checked_fmul(c64i*, upL_t, upL_t, void*, const void*, void*) const {
    unchecked(*this);
}

u64_t transform::modulus() const {
    unchecked(*this);
}

#define ZNP_INSTANTIATE(word)                                                                            \
    template void transform::sqr(const BasicParameters&, word*, const word*, upL_t) const;               \
    template void transform::mul(const BasicParameters&, word*, const word*, upL_t, const word*, upL_t)  \
        const;                                                                                           \
    template void transform::sqr_window(const BasicParameters&, word*, upL_t, upL_t, const word*, upL_t) \
        const;                                                                                           \
    template void transform::mul_window(const BasicParameters&, word*, upL_t, upL_t, const word*, upL_t, \
                                        const word*, upL_t) const;
ZNP_INSTANTIATE(c32i)
ZNP_INSTANTIATE(c64i)
#undef ZNP_INSTANTIATE

}  // namespace znp
