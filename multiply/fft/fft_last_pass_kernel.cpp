// Last pass of the inverse transform: the top two levels, rounding, carry and the words of the result.
//
// The step's outputs for four neighbouring positions are four digits of each of the eight streams;
// transposed, a vector holds one digit of four streams, and two carry chains (streams 0 to 3 and 4 to 7) run
// through all of them. Rounding: x scale + 1.5 2^52 leaves the rounded integer n in the mantissa. With
//
//     t = n + 2^51 + carry,   digit = t mod 2^w,   carry = floor(t / 2^w) - 2^51 / 2^w
//
// t is not negative, and all the constants fold into one addition outside the chain.
#include "multiply/fft/fft_kernels.hpp"
#include "multiply/fft/fft_vector.hpp"

namespace znp::fft {
namespace {

constexpr double magic = 6755399441055744.0;  // 1.5 2^52
constexpr u64_t magic_exponent = u64_t{0x433} << 52;

ZNP_INLINE __m256i round(__m256d x, __m256d scale) {
    return _mm256_castpd_si256(_mm256_fmadd_pd(x, scale, _mm256_set1_pd(magic)));
}

// Four digits of each stream, [digit], for the streams 0 to 3 (lower) and 4 to 7 (upper).
struct DigitBlock {
    __m256i lower[4], upper[4];
};

ZNP_INLINE DigitBlock root_step(const double* x, upL_t quarter, __m256d scale) {
    CV a = load(x), b = load(x + quarter), c = load(x + 2 * quarter), d = load(x + 3 * quarter);
    const __m256d co = _mm256_set1_pd(root_c), si = _mm256_set1_pd(root_s), h = _mm256_set1_pd(root_half);
    inverse_step(a, b, c, d, {{co, si}, {h, h}, {si, co}});
    transpose(a, b, c, d);
    return {{round(a.r, scale), round(b.r, scale), round(c.r, scale), round(d.r, scale)},
            {round(a.i, scale), round(b.i, scale), round(c.i, scale), round(d.i, scale)}};
}

// The low bytes (2, 4, 6 or 8) of a lane.
ZNP_INLINE void put(std::byte* p, u64_t value, unsigned bytes) {
    const u32_t low = static_cast<u32_t>(value);
    const u32_t top = static_cast<u32_t>(value >> 32);
    if (bytes >= 4) __builtin_memcpy(p, &low, 4);
    if (bytes == 2) __builtin_memcpy(p, &low, 2);
    if (bytes == 6) __builtin_memcpy(p + 4, &top, 2);
}

// The low lane, to any address; of an upper lane moved down, one store without the move.
ZNP_INLINE void put_double(std::byte* p, __m128d value) {
    const double low = _mm_cvtsd_f64(value);
    __builtin_memcpy(p, &low, 8);
}

// One word, or the beginning of one, of each of four streams.
ZNP_INLINE void put4(std::byte* p, upL_t stream, __m256i words, unsigned bytes) {
    const __m128i low = _mm256_castsi256_si128(words), high = _mm256_extracti128_si256(words, 1);
    if (bytes == 8) {
        const __m128d words01 = _mm_castsi128_pd(low), words23 = _mm_castsi128_pd(high);
        put_double(p, words01);
        put_double(p + stream, _mm_unpackhi_pd(words01, words01));
        put_double(p + 2 * stream, words23);
        put_double(p + 3 * stream, _mm_unpackhi_pd(words23, words23));
        return;
    }
    put(p, static_cast<u64_t>(_mm_cvtsi128_si64(low)), bytes);
    put(p + stream, static_cast<u64_t>(_mm_extract_epi64(low, 1)), bytes);
    put(p + 2 * stream, static_cast<u64_t>(_mm_cvtsi128_si64(high)), bytes);
    put(p + 3 * stream, static_cast<u64_t>(_mm_extract_epi64(high, 1)), bytes);
}

// One chain of four streams: the carry, and the word that is being filled.
template <unsigned w>
struct Chain {
    __m256i carry, word;
    std::byte* out;

    // Digit number `digit` of a run of 16, which are 2 w bytes.
    ZNP_INLINE void digit(__m256i rounded, unsigned digit, upL_t stream) {
        constexpr u64_t bias = (u64_t{1} << 51) >> w;
        const __m256i fold = _mm256_set1_epi64x(static_cast<s64_t>(u64_t{0} - magic_exponent - bias));
        const __m256i t = _mm256_add_epi64(_mm256_add_epi64(rounded, fold), carry);
        carry = _mm256_srli_epi64(t, static_cast<int>(w));
        const __m256i low = _mm256_and_si256(t, _mm256_set1_epi64x((s64_t{1} << w) - 1));
        const unsigned bit = digit * w, at = bit & 63;
        word = at == 0 ? low : _mm256_or_si256(word, _mm256_slli_epi64(low, static_cast<int>(at)));
        if (at + w >= 64 || digit == 15) {
            const unsigned filled = at + w >= 64 ? 64 : at + w;
            put4(out + bit / 64 * 8, stream, word, filled / 8);
            word = _mm256_srli_epi64(low, static_cast<int>(64 - at));
            // The end of a run can cut a word right after a full one.
            if (digit == 15 && at + w > 64) put4(out + bit / 64 * 8 + 8, stream, word, (at + w - 64) / 8);
        }
    }
};

template <unsigned w>
void last_pass_of(std::byte* words, s64_t* carry, const double* image, upL_t N, double scale) {
    const upL_t quarter = N / 4;
    const upL_t stream = N / 64 * w;  // bytes
    const __m256d scales = _mm256_set1_pd(scale);
    const __m256i bias = _mm256_set1_epi64x(static_cast<s64_t>((u64_t{1} << 51) >> w));
    Chain<w> lower = {bias, _mm256_setzero_si256(), words};
    Chain<w> upper = {bias, _mm256_setzero_si256(), words + 4 * stream};
    for (upL_t run = 0; run < N / 128; ++run, image += 32, lower.out += 2 * w, upper.out += 2 * w) {
#pragma GCC unroll 4
        for (unsigned g = 0; g < 4; ++g) {
            const DigitBlock digits = root_step(image + 8 * g, quarter, scales);
#pragma GCC unroll 4
            for (unsigned i = 0; i < 4; ++i) {
                lower.digit(digits.lower[i], 4 * g + i, stream);
                upper.digit(digits.upper[i], 4 * g + i, stream);
            }
        }
    }
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(carry), _mm256_sub_epi64(lower.carry, bias));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(carry + 4), _mm256_sub_epi64(upper.carry, bias));
}

}  // namespace

void last_pass(std::byte* words, s64_t carry[8], const double* image, upL_t N, unsigned w, double scale) {
    switch (w) {
        case 9:
            return last_pass_of<9>(words, carry, image, N, scale);
        case 10:
            return last_pass_of<10>(words, carry, image, N, scale);
        case 11:
            return last_pass_of<11>(words, carry, image, N, scale);
        case 12:
            return last_pass_of<12>(words, carry, image, N, scale);
        case 13:
            return last_pass_of<13>(words, carry, image, N, scale);
        case 14:
            return last_pass_of<14>(words, carry, image, N, scale);
        case 15:
            return last_pass_of<15>(words, carry, image, N, scale);
        case 16:
            return last_pass_of<16>(words, carry, image, N, scale);
        case 17:
            return last_pass_of<17>(words, carry, image, N, scale);
        case 18:
            return last_pass_of<18>(words, carry, image, N, scale);
        case 19:
            return last_pass_of<19>(words, carry, image, N, scale);
        case 20:
            return last_pass_of<20>(words, carry, image, N, scale);
        default:
            return last_pass_of<21>(words, carry, image, N, scale);
    }
}

}  // namespace znp::fft
