// Words to residues: the first step of a forward transform.
//
// A point's bytes are cut into limbs l_i of 48 bits (with an even number of primes the top one has 24), four
// points at a time, and a byte shuffle leaves each limb in the mantissa of a double. There are two ways on.
//
// Small factors. With p = k 2^c + 1 and 2^48 = 2^(48 - c) 2^c, modulo p
//
//     2^48 k = -S,   S = 2^(48 - c),   k < S.
//
// So a point times the power of k that set.input_power tells, one less than there are limbs, is a sum of
// small multiples:
//
//     k^3 sum l_i 2^(48 i) = ((l_0 k - l_1 S) k + l_2 S^2) k - l_3 S^3.
//
// l_i S^i is cut once for all primes into a high part, a multiple of 2^24, and a rest within 2^23 S^i. Then
// both parts' sums H and G are exact without more ado. With S^3 <= 2^27 at most (generators/vst_prime_sets.py
// proves it): the values of H before and after each step are below 2^52 multiples of 2^24, as the signs
// alternate, and those of G below 5 2^50. Last,
//
//     r = (H - q p) + G,   q = round((H + G) / p):
//
// H + G and 1 / p are rounded by 2^-53 of 2^76, which is less than 2^-20 of p, so that |r| <= 0.51 p; H - q p
// is an integer below 2^53, exact, and so is r.
//
// Any factors. With four limbs and k of 10 or 11 bits there is no room for that, and set.input_power is 0.
// With the balanced constants B_i = 2^(48 i) mod p,
//
//     l_0 + sum l_i B_i = high + low,   r = (high - q p) + low,   q = round((high + low) / p),
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
#include "multiply/vst/recovery_table.hpp"
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

// Limbs of four points, as integers.
template <unsigned a>
struct Limbs {
    static constexpr unsigned count = a / 2;
    static constexpr bool short_top = a % 2 == 0;
    __m256i limb[count];

    ZNP_INLINE explicit Limbs(const std::byte* bytes) {
        constexpr upL_t width = (a - 1) * 3;
#pragma GCC unroll 2
        for (unsigned k = 0; k < count; k += 2) {
            const std::byte* const at = bytes + 6 * k;
            const __m256i cut = two_limbs(short_top && k + 1 == count, short_top && k + 2 == count);
            const __m256i even = _mm256_shuffle_epi8(load_two(at, at + 2 * width), cut);
            const __m256i odd = _mm256_shuffle_epi8(load_two(at + width, at + 3 * width), cut);
            limb[k] = _mm256_unpacklo_epi64(even, odd);
            if (k + 1 < count) limb[k + 1] = _mm256_unpackhi_epi64(even, odd);
        }
    }
};

// ---- Small factors ----------------------------------------------------------------------------------------

// For limb i, in multiples of S^i: 2^52, whose mantissa takes the limb; 1.5 2^76, to round to multiples of
// 2^24; and their difference.
struct CutConstants {
    __m256d mantissa, rounding, difference;
};

template <unsigned a>
class SmallFactors {
  public:
    explicit SmallFactors(const PrimeSet& set)
        : primes_(set.primes), inverses_(set.inverse_primes), multipliers_(set.multipliers) {
        const auto S = static_cast<double>(u64_t{1} << (48 - set.max_c));
        double unit = 1;
        for (unsigned i = 0; i < count; ++i) {
            cut_[i] = {_mm256_set1_pd(0x1p52 * unit), _mm256_set1_pd(0x1.8p76 * unit),
                       _mm256_set1_pd((0x1.8p76 - 0x1p52) * unit)};
            unit *= S;
        }
    }

    ZNP_INLINE void convert(double* to, upL_t stride, const std::byte* bytes) const {
        const Limbs<a> x(bytes);
        __m256d high[count], rest[count];
#pragma GCC unroll 4
        for (unsigned i = 0; i < count; ++i) {
            const __m256d y = _mm256_or_pd(_mm256_castsi256_pd(x.limb[i]), cut_[i].mantissa);
            if (i + 1 == count && Limbs<a>::short_top) {
                high[i] = _mm256_setzero_pd();
                rest[i] = _mm256_sub_pd(y, cut_[i].mantissa);
            } else {
                const __m256d rounded = _mm256_add_pd(y, cut_[i].difference);
                high[i] = _mm256_sub_pd(rounded, cut_[i].rounding);
                rest[i] = _mm256_sub_pd(y, _mm256_sub_pd(rounded, cut_[i].difference));
            }
        }
        const __m256d magic = _mm256_set1_pd(round_magic);
        // The sums of the next prime come before the reduction of this one: a chain of dependent operations
        // less that waits at a time.
        __m256d H = combine(high, k(0), Limbs<a>::short_top), G = combine(rest, k(0), false);
#pragma GCC unroll 9
        for (unsigned s = 0; s < a; ++s) {
            __m256d H1 = H, G1 = G;
            if (s + 1 < a) {
                H1 = combine(high, k(s + 1), Limbs<a>::short_top);
                G1 = combine(rest, k(s + 1), false);
                asm("" : "+x"(H1), "+x"(G1));  // in this order
            }
            const __m256d p = _mm256_set1_pd(primes_[s]), inverse = _mm256_set1_pd(inverses_[s]);
            const __m256d q = _mm256_sub_pd(_mm256_fmadd_pd(_mm256_add_pd(H, G), inverse, magic), magic);
            _mm256_store_pd(to + s * stride, _mm256_add_pd(_mm256_fnmadd_pd(q, p, H), G));
            H = H1;
            G = G1;
        }
    }

  private:
    static constexpr unsigned count = a / 2;

    ZNP_INLINE __m256d k(unsigned s) const {
        return _mm256_set1_pd(multipliers_[s]);
    }
    // The sum by Horner's rule, with alternating signs; zero_top: the last one is 0.
    ZNP_INLINE static __m256d combine(const __m256d* x, __m256d k, bool zero_top) {
        __m256d sum = x[0];
#pragma GCC unroll 3
        for (unsigned i = 1; i < count; ++i)
            sum = i + 1 == count && zero_top ? _mm256_mul_pd(sum, k)
                  : i % 2 != 0               ? _mm256_fmsub_pd(sum, k, x[i])
                                             : _mm256_fmadd_pd(sum, k, x[i]);
        return sum;
    }

    const double *primes_, *inverses_, *multipliers_;
    CutConstants cut_[count];
};

// ---- Any factors ------------------------------------------------------------------------------------------

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
class AnyFactors {
  public:
    explicit AnyFactors(const PrimeSet& set)
        : primes_(set.primes), inverses_(set.inverse_primes), powers_(set.limb_powers) {}

    ZNP_INLINE void convert(double* to, upL_t stride, const std::byte* bytes) const {
        const Limbs<a> integers(bytes);
        const __m256d two52 = _mm256_set1_pd(0x1p52);
        __m256d x[count];
#pragma GCC unroll 4
        for (unsigned i = 0; i < count; ++i)
            x[i] = _mm256_sub_pd(_mm256_or_pd(_mm256_castsi256_pd(integers.limb[i]), two52), two52);
#pragma GCC unroll 9
        for (unsigned s = 0; s < a; ++s) _mm256_store_pd(to + s * stride, residue(x, s));
    }

  private:
    static constexpr unsigned count = a / 2;

    ZNP_INLINE __m256d residue(const __m256d* x, unsigned s) const {
        const __m256d magic = _mm256_set1_pd(round_magic), split_magic = _mm256_set1_pd(high_magic);
        const __m256d p = _mm256_set1_pd(primes_[s]), inverse = _mm256_set1_pd(inverses_[s]);
        SplitSum sum{split_magic, x[0]};
#pragma GCC unroll 3
        for (unsigned i = 1; i < count; ++i) sum.add(x[i], _mm256_set1_pd(powers_[3 * s + i - 1]));
        const __m256d high = _mm256_sub_pd(sum.high, split_magic), whole = _mm256_add_pd(high, sum.low);
        const __m256d q = _mm256_sub_pd(_mm256_fmadd_pd(whole, inverse, magic), magic);
        return _mm256_add_pd(_mm256_fnmadd_pd(q, p, high), sum.low);
    }

    const double *primes_, *inverses_, *powers_;
};

template <unsigned a, class Factors>
void convert(const Geometry& g, const Factors& factors, double* block, const std::byte* bytes) {
    const upL_t stride = 4 * g.row();
    for (double* const end = block + 4 * g.lanes(); block != end; block += 4) {
        factors.convert(block, stride, bytes);
        bytes += 12 * (a - 1);
    }
}
template <unsigned a>
void convert(const Geometry& g, const PrimeSet& set, double* block, const std::byte* bytes) {
    if (a < 8 || set.input_power != 0) {
        convert<a>(g, SmallFactors<a>(set), block, bytes);
    } else {
        convert<a>(g, AnyFactors<a>(set), block, bytes);
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
    const upL_t size = g.input_bytes(), start = i * size, end = 4 * L;
    if (start >= end) return clear(g, block);
    const std::byte* bytes = words + start;

    // The end of an operand: a copy with zeros behind.
    std::byte copy[max_input_bytes + load_bytes];
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
