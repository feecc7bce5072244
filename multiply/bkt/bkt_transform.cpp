#include "multiply/bkt/bkt_transform.hpp"

#include <algorithm>
#include <cstring>

#include "foundation/fail.hpp"
#include "multiply/bkt/karatsuba.hpp"
#include "multiply/bkt/window.hpp"
#include "multiply/kernels/residue.hpp"

namespace znp {

namespace {

struct Image {
    upL_t L;
    const c64i* words;

    explicit Image(const void* image)
        : L(*static_cast<const u64_t*>(image)), words(static_cast<const c64i*>(image) + 1) {}
};

constexpr upL_t image_bytes(upL_t L) {
    return ((L + 1) * sizeof(c64i) + 31) & ~upL_t{31};
}

[[noreturn]] void no_32_bit_words(const char* location) {
    fail(zn_exception(error_code::unspecified, "32-bit transform not supported in x64.", {}, {},
                      action::print_and_throw, "Generic Exception", location));
}

// Writes zeros to the words [s, e) of R's window that lie above a product of n words. Returns the end of the
// rest.
upL_t clear_above(c64i* R, upL_t s, upL_t e, upL_t n) {
    if (e <= n) return e;
    const upL_t top = std::max(s, n);
    std::fill(R + (top - s), R + (e - s), c64i{0});
    return top;
}

}  // namespace

BKTTransform::BKTTransform(upL_t L)
    : transform(nullptr, L * WordTraits<c64i>::bits, image_bytes(L), bkt::scratch_bytes<c64i>(L)) {}

const char* BKTTransform::name() const {
    return "BKT";
}

void BKTTransform::check_length(upL_t L) const {
    const u64_t bits = L * WordTraits<c64i>::bits;
    if (bits > max_bits) fail(ConvolutionTooSmallException(name(), bits, max_bits));
}

void BKTTransform::forward(void* image, const c64i* A, upL_t L, void*) const {
    check_length(L);
    auto* words = static_cast<c64i*>(image);
    words[0] = L;
    std::copy_n(A, L, words + 1);
}

void BKTTransform::inverse_fsqr(c64i* R, upL_t s, upL_t e, void* T, void* scratch) const {
    check_length(e);
    const Image A(T);
    check_length(A.L);
    const upL_t n = 2 * A.L;
    e = clear_above(R, s, e, n);
    if (s == e) return;
    auto* S = static_cast<c64i*>(scratch);
    if (e - s == n) {
        bkt::sqr(A.words, A.L, R, S);
    } else {
        bkt::sqr_window(R, s, e, A.words, A.L, S);
    }
}

void BKTTransform::inverse_fmul(c64i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const {
    check_length(e);
    const Image A(T1);
    const Image B(T2);
    check_length(std::max(A.L, B.L));
    const upL_t n = A.L == 0 || B.L == 0 ? 0 : A.L + B.L;
    e = clear_above(R, s, e, n);
    if (s == e) return;
    auto* S = static_cast<c64i*>(scratch);
    if (e - s == n) {
        bkt::mul(A.words, A.L, B.words, B.L, R, S);
    } else {
        bkt::mul_window(R, s, e, A.words, A.L, B.words, B.L, S);
    }
}

u64_t BKTTransform::checked_fsqr(c64i* R, upL_t s, upL_t e, void* T, void* scratch) const {
    return checked_fmul(R, s, e, T, T, scratch);
}

u64_t BKTTransform::checked_fmul(c64i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const {
    check_length(e);
    const Image A(T1);
    const Image B(T2);
    check_length(std::max(A.L, B.L));
    const upL_t n = A.L == 0 || B.L == 0 ? 0 : A.L + B.L;
    auto* product = static_cast<c64i*>(scratch);
    if (n != 0) bkt::mul(A.words, A.L, B.words, B.L, product, product + n);
    e = clear_above(R, s, e, n);
    s = std::min(s, e);
    std::copy(product + s, product + e, R);
    u64_t hash = residue::hash_words(product + e, n - e);
    hash = residue::hash_words(R, e - s, hash);  // the words as they arrived
    return residue::hash_words(product, s, hash);
}

void BKTTransform::forward(void*, const c32i*, upL_t, void*) const {
    no_32_bit_words("BKT::forward()");
}

void BKTTransform::inverse_fsqr(c32i*, upL_t, upL_t, void*, void*) const {
    no_32_bit_words("BKT::inverse_fsqr()");
}

void BKTTransform::inverse_fmul(c32i*, upL_t, upL_t, void*, const void*, void*) const {
    no_32_bit_words("BKT::inverse_fmul()");
}

// The images do not depend on the length that the transform was made for, but what fits it does.
bool BKTTransform::equals(const transform& other) const {
    return dynamic_cast<const BKTTransform*>(&other) != nullptr && other.max_bits == max_bits;
}

}  // namespace znp
