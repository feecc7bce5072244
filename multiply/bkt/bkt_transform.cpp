#include "multiply/bkt/bkt_transform.hpp"

#include <algorithm>
#include <cstring>

#include "foundation/fail.hpp"
#include "multiply/bkt/karatsuba.hpp"
#include "multiply/bkt/window.hpp"
#include "multiply/hash_by_threads.hpp"

namespace znp {

namespace {

// The operand in an image.
WordSpan<c64i> operand(const Image* image) {
    const auto* const words = reinterpret_cast<const c64i*>(image);
    return {words + 1, words[0]};
}

constexpr upL_t image_bytes(upL_t L) {
    return work_aligned((L + 1) * sizeof(c64i));
}

[[noreturn]] void no_32_bit_words(const char* location) {
    fail(zn_exception(error_code::unspecified, "32-bit transform not supported in x64.", {}, {},
                      action::print_and_throw, "Generic Exception", location));
}

// Writes zeros to the words of a window that lie above a product of n words, and gives the rest of it.
Window<c64i> clear_above(Window<c64i> R, upL_t n) {
    if (R.e <= n) return R;
    const upL_t top = std::max(R.s, n);
    std::fill_n(R.T + (top - R.s), R.e - top, c64i{0});
    return {R.T, std::min(R.s, n), n};
}

upL_t product_length(WordSpan<c64i> A, WordSpan<c64i> B) {
    return A.empty() || B.empty() ? 0 : A.size() + B.size();
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

void BKTTransform::forward(Image* image, WordSpan<c64i> A, TransformScratch*) const {
    check_length(A.size());
    auto* const words = reinterpret_cast<c64i*>(image);
    words[0] = A.size();
    std::copy_n(A.data(), A.size(), words + 1);
}

void BKTTransform::inverse_fsqr(Window<c64i> R, Image* T, TransformScratch* scratch) const {
    check_length(R.e);
    const WordSpan<c64i> A = operand(T);
    check_length(A.size());
    const upL_t n = 2 * A.size();
    R = clear_above(R, n);
    if (R.size() == 0) return;
    auto* const S = reinterpret_cast<c64i*>(scratch);
    if (R.size() == n) {
        bkt::sqr(A.data(), A.size(), R.T, S);
    } else {
        bkt::sqr_window(R, A, S);
    }
}

void BKTTransform::inverse_fmul(Window<c64i> R, Image* T1, const Image* T2, TransformScratch* scratch) const {
    check_length(R.e);
    const WordSpan<c64i> A = operand(T1), B = operand(T2);
    check_length(std::max(A.size(), B.size()));
    const upL_t n = product_length(A, B);
    R = clear_above(R, n);
    if (R.size() == 0) return;
    auto* const S = reinterpret_cast<c64i*>(scratch);
    if (R.size() == n) {
        bkt::mul(A.data(), A.size(), B.data(), B.size(), R.T, S);
    } else {
        bkt::mul_window(R, A, B, S);
    }
}

CheckedResult BKTTransform::checked_fsqr(Window<c64i> R, Image* T, TransformScratch* scratch) const {
    return checked_fmul(R, T, T, scratch);
}

CheckedResult BKTTransform::checked_fmul(Window<c64i> R, Image* T1, const Image* T2,
                                         TransformScratch* scratch) const {
    check_length(R.e);
    const WordSpan<c64i> A = operand(T1), B = operand(T2);
    check_length(std::max(A.size(), B.size()));
    const upL_t n = product_length(A, B);
    auto* const product = reinterpret_cast<c64i*>(scratch);
    if (n != 0) bkt::mul(A.data(), A.size(), B.data(), B.size(), product, product + n);
    R = clear_above(R, n);
    std::copy_n(product + R.s, R.size(), R.T);
    return checked_result(product, n, R, 1);
}

void BKTTransform::forward(Image*, WordSpan<c32i>, TransformScratch*) const {
    no_32_bit_words("BKT::forward()");
}

void BKTTransform::inverse_fsqr(Window<c32i>, Image*, TransformScratch*) const {
    no_32_bit_words("BKT::inverse_fsqr()");
}

void BKTTransform::inverse_fmul(Window<c32i>, Image*, const Image*, TransformScratch*) const {
    no_32_bit_words("BKT::inverse_fmul()");
}

// The images do not depend on the length that the transform was made for, but what fits it does.
bool BKTTransform::equals(const transform& other) const {
    return dynamic_cast<const BKTTransform*>(&other) != nullptr && other.max_bits == max_bits;
}

}  // namespace znp
