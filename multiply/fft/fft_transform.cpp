#include "multiply/fft/fft_transform.hpp"

#include <algorithm>
#include <cstring>

#include "foundation/fatal.hpp"
#include "multiply/fft/fft_carry.hpp"
#include "multiply/fft/fft_kernels.hpp"
#include "multiply/kernels/residue.hpp"
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
fft::DigitStreams make_streams(const c32i* A, upL_t L, u64_t bits, void* scratch) {
    const auto* const operand = reinterpret_cast<const std::byte*>(A);
    auto* free = static_cast<std::byte*>(scratch);
    const upL_t bytes = 4 * L;
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

void FFT::forward(void* image, const c32i* A, upL_t L, void* scratch) const {
    if (32 * L > bits) invalid(L"operand longer than the transform");
    const FFTTables& twiddles = tables();
    auto* const points = static_cast<double*>(image);
    fft::first_pass(points, N, w, make_streams(A, L, bits, scratch));
    fft::forward_tree(points, N, leaf(), twiddles);
}

u32_t FFT::inverse(std::byte* words, void* T, const void* B) const {
    auto* const points = static_cast<double*>(T);
    fft::inverse_tree(points, static_cast<const double*>(B), N, leaf(), tables());
    s64_t carry[8];
    fft::last_pass(words, carry, points, N, w, 2.0 * leaf() / static_cast<double>(N));
    return fft::resolve_carries(words, carry, bits);
}

u32_t FFT::ring_fsqr(c32i* R, void* T) const {
    return inverse(reinterpret_cast<std::byte*>(R), T, T);
}

u32_t FFT::ring_fmul(c32i* R, void* T1, const void* T2) const {
    return inverse(reinterpret_cast<std::byte*>(R), T1, T2);
}

u32_t FFT::ring_from(c32i* R, void* T) const {
    return inverse(reinterpret_cast<std::byte*>(R), T, nullptr);
}

u32_t FFT::inverse_window(c32i* R, upL_t s, upL_t e, void* T, const void* B, void* scratch) const {
    if (s > e || 32 * e > bits) invalid(L"window");
    auto* const words = static_cast<std::byte*>(scratch);
    const u32_t top = inverse(words, T, B);
    std::copy(words + 4 * s, words + 4 * e, reinterpret_cast<std::byte*>(R));
    return top;
}

void FFT::inverse_fsqr(c32i* R, upL_t s, upL_t e, void* T, void* scratch) const {
    inverse_window(R, s, e, T, T, scratch);
}

void FFT::inverse_fmul(c32i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const {
    inverse_window(R, s, e, T1, T2, scratch);
}

u64_t FFT::checked_fsqr(c64i* R, upL_t s, upL_t e, void* T, void* scratch) const {
    return checked_fmul(R, s, e, T, T, scratch);
}

u64_t FFT::checked_fmul(c64i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const {
    const u32_t top = inverse_window(reinterpret_cast<c32i*>(R), 2 * s, 2 * e, T1, T2, scratch);
    return top != 0 ? residue::sub(modulus(), 1)
                    : residue::hash_words(static_cast<c64i*>(scratch), bits / 64);
}

u64_t FFT::modulus() const {
    return residue::add(residue::mul_power_of_2(1, static_cast<unsigned>(bits % 61)), 1);
}

void FFT::inverse_from(c32i* R, upL_t s, upL_t e, void* T, void* scratch) const {
    inverse_window(R, s, e, T, nullptr, scratch);
}

}  // namespace znp
