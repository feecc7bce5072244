// Words to residues: the first step of a forward transform.
//
// A point's bytes are cut into limbs of 48 bits (with an even number of primes the top one has 24), four
// points at a time, and a byte shuffle leaves each limb in the mantissa of a double. Then Horner's rule
// modulo each prime p: with M = 1.5 2^52, r the value so far, B = 2^48 mod p balanced, and l the next limb,
//
//     hi = r B,   lo = r B - hi,   q = round(r (B / p)),   r' = (hi - q p) + (lo + l)
//
// and in the last step q = round((hi + l) / p), which leaves r' balanced. That q does not wait for hi keeps
// the chain of a step short: the chains' latency, not the operations, bounds this kernel.
//
// Bounds, with |B| <= p / 2, 2^45 < p < 2^48, 0 <= l < 2^48. Throughout |r| < 1.53 2^48: then |r B / p| <
// 0.77 2^48, of which B / p rounded loses 2^-53, 0.024; so |r B - q p| <= 0.524 p and |r'| < 0.524 p + 2^48.
// As |r B| < 2^95.7, |lo| <= 2^42; hi - q p, lo + l and their sum are integers below 2^50: exact. In the last
// step lo is left out of q, hi + l is rounded, and 1 / p is: three times 0.024. So |r'| < 0.58 p.
#include <cassert>

#include "multiply/vst/conversion.hpp"
#include "multiply/vst/conversion_reference.hpp"
#include "multiply/vst/vst_vector.hpp"

namespace znp::vst {
namespace {

constexpr upL_t load_bytes = 28;  // from a point's first byte to the last one that its loads touch

// Takes two limbs of 48 bits to the two halves of a register, or of the one that is the top only 24 bits.
ZNP_INLINE __m256i two_limbs(bool short_first, bool short_second) {
    const char z = static_cast<char>(0x80);
    const char d = short_first ? z : 3, e = short_first ? z : 4, f = short_first ? z : 5;
    const char j = short_second ? z : 9, k = short_second ? z : 10, l = short_second ? z : 11;
    return _mm256_setr_epi8(0, 1, 2, d, e, f, z, z, 6, 7, 8, j, k, l, z, z,  //
                            0, 1, 2, d, e, f, z, z, 6, 7, 8, j, k, l, z, z);
}

ZNP_INLINE __m256i load_two(const std::byte* low, const std::byte* high) {
    const __m128i l = _mm_loadu_si128(reinterpret_cast<const __m128i*>(low));
    const __m128i h = _mm_loadu_si128(reinterpret_cast<const __m128i*>(high));
    return _mm256_inserti128_si256(_mm256_castsi128_si256(l), h, 1);
}

// 0 <= x < 2^52 in integer lanes to doubles.
ZNP_INLINE __m256d to_double(__m256i x) {
    const __m256d two52 = _mm256_set1_pd(4503599627370496.0);
    return _mm256_sub_pd(_mm256_castsi256_pd(_mm256_or_si256(x, _mm256_castpd_si256(two52))), two52);
}

// Limbs of four points.
template <unsigned a>
struct Limbs {
    static constexpr unsigned count = a / 2;
    __m256d limb[count];

    ZNP_INLINE void load(const std::byte* bytes) {
        constexpr upL_t width = (a - 1) * 3;
#pragma GCC unroll 2
        for (unsigned k = 0; k < count; k += 2) {
            const std::byte* const at = bytes + 6 * k;
            const bool even_set = a % 2 == 0;
            const __m256i cut = two_limbs(even_set && k + 1 == count, even_set && k + 2 == count);
            const __m256i even = _mm256_shuffle_epi8(load_two(at, at + 2 * width), cut);
            const __m256i odd = _mm256_shuffle_epi8(load_two(at + width, at + 3 * width), cut);
            limb[k] = to_double(_mm256_unpacklo_epi64(even, odd));
            if (k + 1 < count) limb[k + 1] = to_double(_mm256_unpackhi_epi64(even, odd));
        }
    }
};

// A prime's p, 1 / p, B and B / p.
struct Constants {
    const double *primes, *inverses, *bases, *ratios;
};

template <unsigned a>
ZNP_INLINE __m256d residue(const Limbs<a>& x, const Constants& set, unsigned s) {
    constexpr unsigned top = Limbs<a>::count - 1;
    const __m256d magic = _mm256_set1_pd(round_magic);
    const __m256d p = _mm256_set1_pd(set.primes[s]), inverse = _mm256_set1_pd(set.inverses[s]);
    const __m256d base = _mm256_set1_pd(set.bases[s]), ratio = _mm256_set1_pd(set.ratios[s]);
    __m256d r = x.limb[top];
#pragma GCC unroll 3
    for (unsigned done = 0; done < top; ++done) {
        const unsigned k = top - 1 - done;
        const __m256d hi = _mm256_mul_pd(r, base);
        const __m256d low = _mm256_add_pd(_mm256_fmsub_pd(r, base, hi), x.limb[k]);
        const __m256d q = k > 0 ? _mm256_fmadd_pd(r, ratio, magic)
                                : _mm256_fmadd_pd(_mm256_add_pd(hi, x.limb[k]), inverse, magic);
        r = _mm256_add_pd(_mm256_fnmadd_pd(_mm256_sub_pd(q, magic), p, hi), low);
    }
    return r;
}

template <unsigned a>
void convert(const Geometry& g, const PrimeSet& set, double* block, const std::byte* bytes) {
    const Constants constants{set.primes, set.inverse_primes, set.limb_bases, set.limb_ratios};
    const upL_t lanes = g.lanes(), stride = 4 * g.row();
    for (upL_t v = 0; v < lanes; ++v) {
        Limbs<a> x;
        x.load(bytes + 12 * (a - 1) * v);
#pragma GCC unroll 9
        for (unsigned s = 0; s < a; ++s)
            _mm256_store_pd(block + s * stride + 4 * v, residue<a>(x, constants, s));
    }
}

void clear(const Geometry& g, double* block) {
    for (unsigned s = 0; s < g.a; ++s) {
        for (upL_t v = 0; v < g.lanes(); ++v)
            _mm256_store_pd(block + 4 * (s * g.row() + v), _mm256_setzero_pd());
    }
}

void convert(const Geometry& g, const PrimeSet& set, double* block, const std::byte* bytes) {
    switch (g.a) {
        case 4:
            return convert<4>(g, set, block, bytes);
        case 5:
            return convert<5>(g, set, block, bytes);
        case 6:
            return convert<6>(g, set, block, bytes);
        case 7:
            return convert<7>(g, set, block, bytes);
        case 8:
            return convert<8>(g, set, block, bytes);
        default:
            return convert<9>(g, set, block, bytes);
    }
}

}  // namespace

void words_to_block(const Geometry& g, const PrimeSet& set, double* block, const std::byte* words, upL_t L,
                    upL_t i) {
    const upL_t size = 4 * g.input_words(), start = i * size, end = 4 * L;
    if (start >= end) return clear(g, block);
    const std::byte* bytes = words + start;

    // The end of an operand: a copy with zeros behind.
    std::byte copy[224 * 24 + load_bytes];
    if (end - start < size + load_bytes) {
        const upL_t rest = end - start < size ? end - start : size;
        __builtin_memcpy(copy, bytes, rest);
        __builtin_memset(copy + rest, 0, size + load_bytes - rest);
        bytes = copy;
    }
    convert(g, set, block, bytes);
    assert(is_balanced(g, set, block));
}

}  // namespace znp::vst
