// Last pass of the inverse transform: the top two levels, rounding, carry and the words of the result.
//
// The step's outputs for four neighbouring positions are four digits of each of the eight streams;
// transposed, a vector holds one digit of four streams, and two carry chains (streams 0 to 3 and 4 to 7) run
// through all of them. Rounding: x scale + 1.5 2^52 leaves the rounded integer n in the mantissa. With
//
//     t = n + 2^51 + carry,   digit = t mod 2^w,   carry = floor(t / 2^w) - 2^51 / 2^w
//
// t is not negative, and all the constants fold into one addition outside the chain.
//
// Strays (see fft_check.hpp): x scale + 1.5 2^50 leaves two bits behind the point in the mantissa. The OR of
// all these numbers has none of them if every point lies within 1/8 of an integer, and the exponent of 2^50
// if no point is at or above 2^49 (a larger exponent, infinity and NaN all have a bit that this one lacks).
// Of the eight outputs of a step three are looked at, in turns those two times three whose twiddle factor is
// not 1. A step's inputs reach each of them with a factor of cos or sin pi/8 or sqrt 1/2, so that no power of
// two that is added to an input moves all three by an integer; and the points that are looked at are spread
// over six of the eight streams, so that no wave over the result passes between them.
#include "multiply/fft/fft_kernels.hpp"
#include "multiply/fft/fft_vector.hpp"

namespace znp::fft {
namespace {

constexpr double magic = 6755399441055744.0;  // 1.5 2^52
constexpr u64_t magic_exponent = u64_t{0x433} << 52;

constexpr double stray_magic = 1688849860263936.0;  // 1.5 2^50

ZNP_INLINE __m256i round(__m256d x, __m256d scale) {
    return _mm256_castpd_si256(_mm256_fmadd_pd(x, scale, _mm256_set1_pd(magic)));
}

// The OR of the points that were looked at, each plus 1.5 2^50 / scale. The scale is a power of two.
class Strays {
  public:
    explicit Strays(double scale) : magic_(_mm256_set1_pd(stray_magic / scale)), bits_(_mm256_setzero_pd()) {}

    ZNP_INLINE void look(__m256d x) { bits_ = _mm256_or_pd(bits_, _mm256_add_pd(x, magic_)); }

    bool any() const {
        constexpr u64_t exponent = u64_t{0xfff} << 52, fraction = 3;
        const __m128d two = _mm_or_pd(_mm256_castpd256_pd128(bits_), _mm256_extractf128_pd(bits_, 1));
        return ((low_lane(_mm_or_pd(two, _mm_unpackhi_pd(two, two))) ^
                 low_lane(_mm256_castpd256_pd128(magic_))) &
                (exponent | fraction)) != 0;
    }

  private:
    static u64_t low_lane(__m128d x) { return static_cast<u64_t>(_mm_cvtsi128_si64(_mm_castpd_si128(x))); }

    __m256d magic_, bits_;
};

// Four digits of each stream, [digit], for the streams 0 to 3 (lower) and 4 to 7 (upper).
struct DigitBlock {
    __m256i lower[4], upper[4];
};

template <bool odd>
ZNP_INLINE DigitBlock root_step(const double* x, upL_t quarter, __m256d scale, Strays& strays) {
    CV a = load(x), b = load(x + quarter), c = load(x + 2 * quarter), d = load(x + 3 * quarter);
    const __m256d co = _mm256_set1_pd(root_c), si = _mm256_set1_pd(root_s), h = _mm256_set1_pd(root_half);
    inverse_step(a, b, c, d, {{co, si}, {h, h}, {si, co}});
    strays.look(odd ? d.r : b.r);
    strays.look(odd ? d.i : b.i);
    strays.look(odd ? c.i : c.r);
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
bool last_pass_of(std::byte* words, s64_t* carry, const double* image, upL_t N, double scale) {
    const upL_t quarter = N / 4;
    const upL_t stream = N / 64 * w;  // bytes
    const __m256d scales = _mm256_set1_pd(scale);
    const __m256i bias = _mm256_set1_epi64x(static_cast<s64_t>((u64_t{1} << 51) >> w));
    Chain<w> lower = {bias, _mm256_setzero_si256(), words};
    Chain<w> upper = {bias, _mm256_setzero_si256(), words + 4 * stream};
    Strays strays(scale);
    for (upL_t run = 0; run < N / 128; ++run, image += 32, lower.out += 2 * w, upper.out += 2 * w) {
#pragma GCC unroll 4
        for (unsigned g = 0; g < 4; ++g) {
            const double* const step = image + 8 * g;
            const DigitBlock digits = g % 2 != 0 ? root_step<true>(step, quarter, scales, strays)
                                                 : root_step<false>(step, quarter, scales, strays);
#pragma GCC unroll 4
            for (unsigned i = 0; i < 4; ++i) {
                lower.digit(digits.lower[i], 4 * g + i, stream);
                upper.digit(digits.upper[i], 4 * g + i, stream);
            }
        }
    }
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(carry), _mm256_sub_epi64(lower.carry, bias));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(carry + 4), _mm256_sub_epi64(upper.carry, bias));
    return strays.any();
}

}  // namespace

bool last_pass(std::byte* words, s64_t carry[8], const double* image, upL_t N, unsigned w, double scale) {
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
