// Words to residues: the first step of a forward transform.
//
// A point's bytes are cut into limbs of 48 bits (with an even number of primes the top one has 24), four
// points at a time, and a byte shuffle leaves each limb l_k in the mantissa of a double. Modulo a prime p,
// with the balanced constants B_k = 2^(48 k) mod p,
//
//     l_0 + sum l_k B_k = high + low,   r = (high - q p) + low,   q = round((high + low) / p),
//
// where each product is split without error into a multiple of 2^48 and a rest by a sum that carries the
// magic number 1.5 2^100 (see recovery_kernel.cpp); one reduction serves all of them.
//
// Bounds, with 0 <= l < 2^48, |B| <= p / 2, 2^45 < p < 2^48 and at most three products: |high| <= 1.5 2^48 p
// < 2^97, within the magic number's room; |low| <= 2^48 + 3 2^47. high + low and 1 / p are rounded by 2^-53,
// which is 0.047 of p each, so that |r| <= 0.6 p; high - q p is an integer below 2^50, exact, and so is r.
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

struct Constants {
    const double *primes, *inverses, *powers;
};

// A sum of exact products, in multiples of 2^48 (with the magic number) and rests.
struct SplitSum {
    __m256d high, low;

    ZNP_INLINE void add(__m256d x, __m256d y) {
        const __m256d sum = _mm256_fmadd_pd(x, y, high);
        low = _mm256_add_pd(low, _mm256_fmadd_pd(x, y, _mm256_sub_pd(high, sum)));
        high = sum;
    }
};

template <unsigned a>
ZNP_INLINE __m256d residue(const Limbs<a>& x, const Constants& set, unsigned s) {
    const __m256d magic = _mm256_set1_pd(round_magic), split_magic = _mm256_set1_pd(0x1.8p100);
    const __m256d p = _mm256_set1_pd(set.primes[s]), inverse = _mm256_set1_pd(set.inverses[s]);
    SplitSum sum{split_magic, x.limb[0]};
#pragma GCC unroll 3
    for (unsigned k = 1; k < Limbs<a>::count; ++k)
        sum.add(x.limb[k], _mm256_set1_pd(set.powers[3 * s + k - 1]));
    const __m256d high = _mm256_sub_pd(sum.high, split_magic), whole = _mm256_add_pd(high, sum.low);
    const __m256d q = _mm256_sub_pd(_mm256_fmadd_pd(whole, inverse, magic), magic);
    return _mm256_add_pd(_mm256_fnmadd_pd(q, p, high), sum.low);
}

template <unsigned a>
void convert(const Geometry& g, const PrimeSet& set, double* block, const std::byte* bytes) {
    const Constants constants{set.primes, set.inverse_primes, set.limb_powers};
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
