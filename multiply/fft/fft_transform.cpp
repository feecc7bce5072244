#include "multiply/fft/fft_transform.hpp"

#include <algorithm>
#include <cstring>

#include "foundation/fatal.hpp"
#include "multiply/fft/fft_carry.hpp"
#include "multiply/fft/fft_check.hpp"
#include "multiply/fft/fft_kernels.hpp"
#include "multiply/hash_by_threads.hpp"
#include "multiply/table_holder.hpp"

namespace znp {

namespace {

[[noreturn]] void invalid(const wchar_t* detail) {
    assert_failure(fatal_category::invalid_parameters, L"FFT", detail);
}

// The streams of an operand. One that lies in the operand, together with the 16 bytes that the first pass
// reads behind it, is read in place; one that crosses the operand's end is copied to the scratch and filled
// up with zeros; all those beyond share a run of zeros. That is at most two copies and the zeros, 3 (N w/64 +
// 16) bytes.
fft::DigitStreams make_streams(WordSpan<c32i> A, u64_t bits, TransformScratch* scratch) {
    const auto* const operand = reinterpret_cast<const std::byte*>(A.data());
    auto* free = reinterpret_cast<std::byte*>(scratch);
    const upL_t bytes = 4 * A.size();
    const upL_t stream = bits / 64;
    const upL_t reads = stream + 16;
    fft::DigitStreams streams;
    streams.upper = bytes > 4 * stream;
    const unsigned used = streams.upper ? 8 : 4;
    const std::byte* zeros = nullptr;
    for (unsigned s = 0; s < used; ++s) {
        const upL_t start = s * stream;
        if (start + reads <= bytes) {
            streams.begin[s] = operand + start;
        } else if (start < bytes) {
            std::memcpy(free, operand + start, bytes - start);
            std::memset(free + (bytes - start), 0, reads - (bytes - start));
            streams.begin[s] = free;
            free += reads;
        } else {
            if (zeros == nullptr) zeros = static_cast<std::byte*>(std::memset(free, 0, reads));
            streams.begin[s] = zeros;
        }
    }
    return streams;
}

}  // namespace

FFT::FFT(const TableHolder* holder_, const fft::PlanRow& size)
    : transform(holder_, size.capacity_bits, 8 * size.N(), 4 * size.N()),
      k(static_cast<u32_t>(size.k)),
      p(static_cast<u32_t>(size.p)),
      w(static_cast<u32_t>(size.w)),
      N(size.N()),
      bits(size.capacity_bits) {}

bool FFT::equals(const transform& other) const {
    const auto* fft = dynamic_cast<const FFT*>(&other);
    return fft != nullptr && fft->k == k && fft->p == p && fft->w == w;
}

const FFTTables& FFT::tables() const {
    const FFTTables* const given = holder != nullptr ? holder->fft : nullptr;
    if (given == nullptr || given->depth < fft::bottom_depth(p)) invalid(L"twiddle tables");
    return *given;
}

void FFT::forward(Image* image, WordSpan<c32i> A, TransformScratch* scratch) const {
    if (32 * A.size() > bits) invalid(L"operand longer than the transform");
    const FFTTables& twiddles = tables();
    auto* const points = reinterpret_cast<double*>(image);
    fft::first_pass(points, N, w, make_streams(A, bits, scratch));
    fft::forward_tree(points, N, leaf(), twiddles);
}

u32_t FFT::inverse(std::byte* words, Image* T, const Image* B) const {
    auto* const points = reinterpret_cast<double*>(T);
    fft::inverse_tree(points, reinterpret_cast<const double*>(B), N, leaf(), tables());
    s64_t carry[8];
    const double scale = 2.0 * leaf() / static_cast<double>(N);
    if (fft::last_pass(words, carry, points, N, w, scale)) fft::check_distances(points, N, w, scale);
    return fft::resolve_carries(words, carry, bits);
}

u32_t FFT::ring_fsqr(c32i* R, Image* T) const {
    return inverse(reinterpret_cast<std::byte*>(R), T, T);
}

u32_t FFT::ring_fmul(c32i* R, Image* T1, const Image* T2) const {
    return inverse(reinterpret_cast<std::byte*>(R), T1, T2);
}

u32_t FFT::ring_from(c32i* R, Image* T) const {
    return inverse(reinterpret_cast<std::byte*>(R), T, nullptr);
}

u32_t FFT::inverse_window(Window<c32i> R, Image* T, const Image* B, TransformScratch* scratch) const {
    if (R.s > R.e || 32 * R.e > bits) invalid(L"window");
    auto* const words = reinterpret_cast<std::byte*>(scratch);
    const u32_t top = inverse(words, T, B);
    std::copy(words + 4 * R.s, words + 4 * R.e, reinterpret_cast<std::byte*>(R.T));
    return top;
}

void FFT::inverse_fsqr(Window<c32i> R, Image* T, TransformScratch* scratch) const {
    inverse_window(R, T, T, scratch);
}

void FFT::inverse_fmul(Window<c32i> R, Image* T1, const Image* T2, TransformScratch* scratch) const {
    inverse_window(R, T1, T2, scratch);
}

CheckedResult FFT::checked_fsqr(Window<c64i> R, Image* T, TransformScratch* scratch) const {
    return checked_fmul(R, T, T, scratch);
}

CheckedResult FFT::checked_fmul(Window<c64i> R, Image* T1, const Image* T2, TransformScratch* scratch) const {
    const u32_t top = inverse_window(as_c32i(R), T1, T2, scratch);
    CheckedResult result = checked_result(reinterpret_cast<const c64i*>(scratch), bits / 64, R, 1);
    if (top != 0) result.whole = guard::add(result.whole, guard::sub(modulus(), 1));
    return result;
}

u64_t FFT::modulus() const {
    return guard::add(guard::word_power(static_cast<s64_t>(bits / 64)), 1);
}

void FFT::inverse_from(Window<c32i> R, Image* T, TransformScratch* scratch) const {
    inverse_window(R, T, nullptr, scratch);
}

}  // namespace znp
