// First pass of the forward transform: cuts the operand into digits and does the first two levels.
//
// Eight digits of a stream are w bytes, so that a byte shuffle brings each digit, and up to 7 bits below it,
// to a 32-bit lane (w + 7 <= 28 bits); a shift and a mask by lane finish the cut. No digit array is written.
#include "multiply/fft/fft_kernels.hpp"
#include "multiply/fft/fft_vector.hpp"

namespace znp::fft {
namespace {

// How to cut digits 0..3 and 4..7 of a run of eight.
struct alignas(16) Cut {
    unsigned char shuffle[2][16];
    u32_t shift[2][4];
    u32_t mask[4];
};

constexpr Cut make_cut(unsigned w) {
    Cut cut{};
    for (unsigned half = 0; half < 2; ++half) {
        const unsigned base = half * 4 * w & 7;  // bit of digit 4 in its first byte
        for (unsigned i = 0; i < 4; ++i) {
            const unsigned bit = base + i * w;
            for (unsigned b = 0; b < 4; ++b)
                cut.shuffle[half][4 * i + b] = static_cast<unsigned char>(bit / 8 + b);
            cut.shift[half][i] = bit & 7;
        }
    }
    for (u32_t& m : cut.mask) m = (u32_t{1} << w) - 1;
    return cut;
}

constinit const Cut cuts[13] = {make_cut(9),  make_cut(10), make_cut(11), make_cut(12), make_cut(13),
                                make_cut(14), make_cut(15), make_cut(16), make_cut(17), make_cut(18),
                                make_cut(19), make_cut(20), make_cut(21)};

ZNP_INLINE __m128i load16(const void* p) {
    return _mm_loadu_si128(static_cast<const __m128i*>(p));
}

ZNP_INLINE __m256d digits4(const std::byte* p, const Cut& cut, unsigned half) {
    const __m128i lanes = _mm_shuffle_epi8(load16(p), load16(cut.shuffle[half]));
    const __m128i low = _mm_srlv_epi32(lanes, load16(cut.shift[half]));
    return _mm256_cvtepi32_pd(_mm_and_si128(low, load16(cut.mask)));
}

ZNP_INLINE void root_step_real(double* out, upL_t quarter, __m256d x0, __m256d x1, __m256d x2, __m256d x3) {
    const __m256d c = _mm256_set1_pd(root_c), s = _mm256_set1_pd(root_s), h = _mm256_set1_pd(root_half);
    const __m256d t2 = _mm256_mul_pd(x2, h);
    const CV even = {_mm256_add_pd(x0, t2), t2};
    const CV diff = {_mm256_sub_pd(x0, t2), _mm256_mul_pd(x2, _mm256_set1_pd(-root_half))};
    const CV t1 = {_mm256_mul_pd(x1, c), _mm256_mul_pd(x1, s)};
    const CV p = {_mm256_fmadd_pd(x3, s, t1.r), _mm256_fmadd_pd(x3, c, t1.i)};
    const CV q = {_mm256_fnmadd_pd(x3, s, t1.r), _mm256_fnmadd_pd(x3, c, t1.i)};
    store(out, add(even, p));
    store(out + quarter, sub(even, p));
    store(out + 2 * quarter, add_i(diff, q));
    store(out + 3 * quarter, sub_i(diff, q));
}

ZNP_INLINE void root_step(double* out, upL_t quarter, CV x0, CV x1, CV x2, CV x3) {
    const __m256d c = _mm256_set1_pd(root_c), s = _mm256_set1_pd(root_s), h = _mm256_set1_pd(root_half);
    forward_step(x0, x1, x2, x3, {{c, s}, {h, h}, {s, c}});
    store(out, x0);
    store(out + quarter, x1);
    store(out + 2 * quarter, x2);
    store(out + 3 * quarter, x3);
}

template <bool upper>
ZNP_INLINE void first_pass_of(double* image, upL_t N, unsigned w, const DigitStreams& digits) {
    const Cut& cut = cuts[w - 9];
    const upL_t quarter = N / 4;  // doubles between the outputs of a step
    const upL_t offset[2] = {0, w / 2};
    upL_t at = 0;
    for (upL_t run = 0; run < N / 64; ++run, at += w)
        for (unsigned half = 0; half < 2; ++half) {
            const auto cut_digits = [&](unsigned stream) __attribute__((always_inline)) {
                return digits4(digits.begin[stream] + at + offset[half], cut, half);
            };
            const __m256d x0 = cut_digits(0), x1 = cut_digits(1), x2 = cut_digits(2), x3 = cut_digits(3);
            double* out = image + 16 * run + 8 * half;
            if (upper)
                root_step(out, quarter, {x0, cut_digits(4)}, {x1, cut_digits(5)}, {x2, cut_digits(6)},
                          {x3, cut_digits(7)});
            else
                root_step_real(out, quarter, x0, x1, x2, x3);
        }
}

}  // namespace

void first_pass(double* image, upL_t N, unsigned w, const DigitStreams& digits) {
    if (digits.upper)
        first_pass_of<true>(image, N, w, digits);
    else
        first_pass_of<false>(image, N, w, digits);
}

}  // namespace znp::fft
