// BigFloat: products, whole, windowed, and from transformed operands.
#include <algorithm>

#include "foundation/fail.hpp"
#include "foundation/fatal.hpp"
#include "foundation/strings.hpp"
#include "multiply/bkt/basecase.hpp"
#include "multiply/dispatch.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "numbers/big_float.hpp"
#include "shell/console.hpp"

namespace znp {

namespace {

constexpr s64_t s64(upL_t n) {
    return static_cast<s64_t>(n);
}

[[noreturn]] void misuse(const char* message) {
    fail(zn_exception(error_code::unspecified, message));
}

}  // namespace

template <class word>
BigFloat<word>::Transform::Transform(const BigFloat& source, void* scratch, const transform& algorithm_,
                                     void* image_, upL_t p)
    : image(image_), algorithm(&algorithm_) {
    const BigFloat top = source.top_words(p);
    exp = top.exp_;
    L = top.L_;
    sign = top.sign_;
    mag = top.get_mag();
    if (L * WordTraits<word>::bits > algorithm->max_bits) {
        assert_failure(fatal_category::invalid_parameters, L"BigFloat::Transform::Transform()", L"");
    }
    algorithm->forward(image, top.T_, L, scratch);
}

template <class word>
void BigFloatR<word>::set_sqr(const BasicParameters& params, const BigFloat<word>& a, upL_t p) {
    if (a.is_zero()) return set_zero();
    const upL_t n = 2 * a.get_L();
    const upL_t kept = std::min(n, p + extra_precision);
    const upL_t skip = n - kept;
    require(kept, "BigFloat::set_sqr()");
    if (skip == 0 && n < basecase_clen) {
        bkt::sqrB(base_, a.get_T(), a.get_L());
    } else {
        sqr_window(params, base_, skip, n, a.get_T(), a.get_L());
    }
    const upL_t L = base_[kept - 1] != 0 ? kept : kept - 1;
    reset(L, s64(skip) + 2 * a.get_exp(), true);
}

template <class word>
void BigFloatR<word>::set_mul(const BasicParameters& params, const BigFloat<word>& a, const BigFloat<word>& b,
                              upL_t p) {
    if (a.is_zero() || b.is_zero()) return set_zero();
    const upL_t n = a.get_L() + b.get_L();
    const upL_t kept = std::min(n, p + extra_precision);
    const upL_t skip = n - kept;
    require(kept, "BigFloat::set_mul()");
    if (skip == 0 && n < basecase_clen) {
        bkt::mulB(base_, a.get_T(), a.get_L(), b.get_T(), b.get_L());
    } else {
        mul_window(params, base_, skip, n, a.get_T(), a.get_L(), b.get_T(), b.get_L());
    }
    const upL_t L = base_[kept - 1] != 0 ? kept : kept - 1;
    reset(L, s64(skip) + a.get_exp() + b.get_exp(), a.raw_sign() == b.raw_sign());
}

// Which words of a cyclic product of clen words are true and wanted. The top n - clen words of a longer
// product wrap onto the lowest ones. False: none are, and the result is zero.
template <class word>
bool BigFloatR<word>::inverse_range(ProductRange& range, const Transform& A, upL_t n, s64_t exp, s64_t te,
                                    upL_t p, bool always_check, const char* truncated) const {
    const upL_t clen = A.algorithm->max_bits / WordTraits<word>::bits;
    const upL_t wrapped = n >= clen ? n - clen : 0;
    const s64_t end = exp + s64(clen);
    if ((always_check || wrapped > 0) && te > end) {
        Console::print_labelled_line("ie = ", std::to_string(end));
        Console::print_labelled_line("te = ", std::to_string(te));
        misuse(truncated);
    }
    s64_t bottom = exp + s64(wrapped);
    if (bottom >= te) return false;
    const s64_t top = std::min({te, end, exp + s64(n)});
    bottom = std::max(bottom, te - s64(extra_precision + p));
    if (bottom >= top) return false;
    range = {static_cast<upL_t>(bottom - exp), static_cast<upL_t>(top - exp), bottom};
    return true;
}

// The frame of the inverses; inverse(s, e) is the step itself, where there is something to do.
template <class word>
template <class Inverse>
void BigFloatR<word>::inverse_fsqr(Transform& A, s64_t te, upL_t p, Inverse inverse) {
    ProductRange range;
    const bool some = inverse_range(range, A, 2 * A.L, 2 * A.exp, te, p, true,
                                    "BigFloat::set_inverse_fsqr(): Truncated Range\n\n");
    if (some) {
        require(range.e - range.s, "BigFloat::set_inverse_fsqr()");
        inverse(range.s, range.e);
        set_words(range.e - range.s, range.exp, true);
    } else {
        set_zero();
    }
    A.image = nullptr;
}

template <class word>
template <class Inverse>
void BigFloatR<word>::inverse_fmul(Transform& A, const Transform& B, s64_t te, upL_t p, Inverse inverse) {
    if (A.algorithm != B.algorithm && !A.algorithm->equals(*B.algorithm)) {
        misuse("BigFloat::set_inverse_fmul(): Mismatching Transform Parameters");
    }
    ProductRange range;
    const bool some = inverse_range(range, A, A.L + B.L, A.exp + B.exp, te, p, false,
                                    "BigFloat::set_inverse_fmul(): Truncated Range\n\n");
    if (some) {
        require(range.e - range.s, "BigFloat::set_inverse_fmul()");
        inverse(range.s, range.e);
        set_words(range.e - range.s, range.exp, A.sign == B.sign);
    } else {
        set_zero();
    }
    A.image = nullptr;
}

template <class word>
void BigFloatR<word>::set_inverse_fsqr(void* scratch, Transform& A, s64_t te, upL_t p) {
    inverse_fsqr(A, te, p,
                 [&](upL_t s, upL_t e) { A.algorithm->inverse_fsqr(base_, s, e, A.image, scratch); });
}

template <class word>
void BigFloatR<word>::set_inverse_fmul(void* scratch, Transform& A, const Transform& B, s64_t te, upL_t p) {
    inverse_fmul(A, B, te, p, [&](upL_t s, upL_t e) {
        A.algorithm->inverse_fmul(base_, s, e, A.image, B.image, scratch);
    });
}

template <class word>
std::optional<u64_t> BigFloatR<word>::set_checked_fsqr(void* scratch, Transform& A, s64_t te, upL_t p) {
    std::optional<u64_t> whole;
    inverse_fsqr(A, te, p,
                 [&](upL_t s, upL_t e) { whole = A.algorithm->checked_fsqr(base_, s, e, A.image, scratch); });
    return whole;
}

template <class word>
std::optional<u64_t> BigFloatR<word>::set_checked_fmul(void* scratch, Transform& A, const Transform& B,
                                                       s64_t te, upL_t p) {
    std::optional<u64_t> whole;
    inverse_fmul(A, B, te, p, [&](upL_t s, upL_t e) {
        whole = A.algorithm->checked_fmul(base_, s, e, A.image, B.image, scratch);
    });
    return whole;
}

#define ZNP_INSTANTIATE(word)                                                                              \
    template BigFloat<word>::Transform::Transform(const BigFloat&, void*, const transform&, void*, upL_t); \
    template void BigFloatR<word>::set_sqr(const BasicParameters&, const BigFloat<word>&, upL_t);          \
    template void BigFloatR<word>::set_mul(const BasicParameters&, const BigFloat<word>&,                  \
                                           const BigFloat<word>&, upL_t);                                  \
    template void BigFloatR<word>::set_inverse_fsqr(void*, Transform&, s64_t, upL_t);                      \
    template void BigFloatR<word>::set_inverse_fmul(void*, Transform&, const Transform&, s64_t, upL_t);
ZNP_INSTANTIATE(c32i)
ZNP_INSTANTIATE(c64i)
#undef ZNP_INSTANTIATE
template std::optional<u64_t> BigFloatR<c64i>::set_checked_fsqr(void*, Transform&, s64_t, upL_t);
template std::optional<u64_t> BigFloatR<c64i>::set_checked_fmul(void*, Transform&, const Transform&, s64_t,
                                                                upL_t);

}  // namespace znp
