// Residues to words: the last step of an inverse transform.
//
// The recovery of a coefficient x by the Chinese remainder theorem, four neighbouring points at a time: with
// y_s = x (P / p_s)^-1 mod p_s, which the transform hands over,
//
//     x = sum y_s P / p_s - k P,   k the multiple that leaves 0 <= x < P.
//
// P / p_s stands in limbs C_j of base 2^48. A product y C_j is split without error into a high part, a
// multiple of 2^48, and a low part by a sum that carries the magic number M' = 1.5 2^100, whose last place is
// 2^48:
//
//     high' = high + y C_j,   low' = low + (y C_j + (high - high'))
//
// The sums begin with M' and M = 1.5 2^52 and stay in these binades, so that their mantissas, read as
// integers, are the sums: |y| < 0.6 2^48 and |C_j| <= 2^47, 2^48 for the top limb, so the high parts are at
// most 9 0.6 2^48 = 10.8 2^47 units of 2^48, and the low ones at most 9 2^47. Both sums have room for 2^51 =
// 16 2^47.
//
// k comes from the top high part t = (x + k P) / 2^(48 (a - 1)) up to a relative error of 2^-38:
// -k = round(0.2 - t 2^(48 (a - 1)) / P). As 0 <= x < 2^-1.29 P < 0.41 P, the argument lies within 0.21 of
// -k; a negacyclic transform, whose coefficients have an offset, leaves at most 0.44 P and 0.24. -k P, |k| <=
// 5, is added limb by limb to the low parts: at most 15 2^47 in all. A value that is no coefficient comes out
// modulo P between -0.3 P and 0.7 P; its high part shows it.
//
// Carries go through the limbs in 64-bit integers. Then neighbouring points are added: the upper input_bits
// of the point before, and of the one before that what lies above 2 input_bits, of which the OR is kept.
// Last, the limbs become bytes.
#include <cassert>

#include "multiply/vst/conversion.hpp"
#include "multiply/vst/conversion_reference.hpp"
#include "multiply/vst/vst_vector.hpp"

namespace znp::vst {
namespace {

constexpr double high_magic = 0x1.8p100;
constexpr auto both_bits =
    static_cast<s64_t>(u64_t{0x4338 + 0x4638} << 48);  // of the sum of both magic numbers
constexpr upL_t largest_lanes = 56;
constexpr s64_t limb_mask = (s64_t{1} << 48) - 1;

// What a limb's 16 upper bits hold beside its carry, which the next limb's sum takes back.
constexpr double low_excess = 0x4338;
constexpr double both_excess = 0x4338 + 0x4638;

ZNP_INLINE __m256i bits(__m256d x) {
    return _mm256_castpd_si256(x);
}

// The last lane of `before` and the first three of x; the last two and the first two.
ZNP_INLINE __m256i shift_one(__m256i before, __m256i x) {
    return _mm256_alignr_epi8(x, _mm256_permute2x128_si256(before, x, 0x21), 8);
}
ZNP_INLINE __m256i shift_two(__m256i before, __m256i x) {
    return _mm256_permute2x128_si256(before, x, 0x21);
}

// The shape of a point: limbs of 48 bits; with an even number of primes the last one has 24 bits.
template <unsigned a>
struct Shape {
    static constexpr unsigned count = a / 2;
    static constexpr unsigned top_bits = a % 2 == 0 ? 24 : 48;
    static constexpr upL_t width = (a - 1) * 3;  // bytes
};

template <unsigned a>
struct Constants {
    const double* factors;   // a - 1 limbs of each P / p
    double product[a];       // limbs of P
    double quotient_offset;  // M' and 0.2 P
    double quotient_factor;  // -1 / P in units of the top high part

    explicit Constants(const PrimeSet& set) : factors(set.crt_factors) {
        __builtin_memcpy(product, set.crt_factors + a * (a - 1), sizeof product);
        quotient_factor = set.scale * 0x1p-96;
        quotient_offset = high_magic + 0.2 / -quotient_factor;
    }
};

// The split sums of four coefficients' limbs, before any carry: integers with what both magic numbers add.
template <unsigned a>
struct Sums {
    __m256i limb[a];

    // The upper limbs come first, for the quotient.
    ZNP_INLINE void recover(const Constants<a>& set, const double* y, upL_t stride) {
        constexpr unsigned half = (a - 1) / 2;
        const __m256d magic = _mm256_set1_pd(round_magic);
        __m256d high[a - 1], low[a - 1];
        add<half, a - 1>(set, y, stride, high, low);
        const __m256d t = _mm256_sub_pd(high[a - 2], _mm256_set1_pd(set.quotient_offset));
        const __m256d minus_k =
            _mm256_sub_pd(_mm256_fmadd_pd(t, _mm256_set1_pd(set.quotient_factor), magic), magic);
        const __m256d top = _mm256_set1_pd(round_magic - both_excess);
        limb[a - 1] = _mm256_add_epi64(
            bits(high[a - 2]), bits(_mm256_fmadd_pd(minus_k, _mm256_set1_pd(set.product[a - 1]), top)));
#pragma GCC unroll 4
        for (unsigned j = a - 2; j > half; --j) finish(set, j, minus_k, low[j], high[j - 1]);
        add<0, half>(set, y, stride, high, low);
        finish(set, half, minus_k, low[half], high[half - 1]);
#pragma GCC unroll 4
        for (unsigned j = half - 1; j > 0; --j) finish(set, j, minus_k, low[j], high[j - 1]);
        limb[0] = bits(_mm256_fmadd_pd(minus_k, _mm256_set1_pd(set.product[0]), low[0]));
    }

  private:
    // The sums of the limbs from `begin` to below `end`. The low ones start without what the limb below
    // carries in excess.
    template <unsigned begin, unsigned end>
    ZNP_INLINE static void add(const Constants<a>& set, const double* y, upL_t stride, __m256d* high,
                               __m256d* low) {
#pragma GCC unroll 4
        for (unsigned j = begin; j < end; ++j) {
            const double excess = j == 0 ? 0 : j == 1 ? low_excess : both_excess;
            high[j] = _mm256_set1_pd(high_magic);
            low[j] = _mm256_set1_pd(round_magic - excess);
        }
        // Keeps the compiler from taking all of them out of the caller's loop, into the stack.
        const double* factors = set.factors;
        asm("" : "+r"(factors));
#pragma GCC unroll 9
        for (unsigned s = 0; s < a; ++s) {
            const __m256d factor = _mm256_load_pd(y + s * stride);
#pragma GCC unroll 4
            for (unsigned j = begin; j < end; ++j) {
                const __m256d c = _mm256_set1_pd(factors[s * (a - 1) + j]);
                const __m256d sum = _mm256_fmadd_pd(factor, c, high[j]);
                low[j] = _mm256_add_pd(low[j], _mm256_fmadd_pd(factor, c, _mm256_sub_pd(high[j], sum)));
                high[j] = sum;
            }
        }
    }

    ZNP_INLINE void finish(const Constants<a>& set, unsigned j, __m256d minus_k, __m256d low, __m256d below) {
        const __m256d sum = _mm256_fmadd_pd(minus_k, _mm256_set1_pd(set.product[j]), low);
        limb[j] = _mm256_add_epi64(bits(sum), bits(below));
    }
};

// Coefficients of four points in limbs, the top one with sign.
template <unsigned a>
struct Coefficients {
    __m256i limb[a];

    ZNP_INLINE void carry(const Sums<a>& sums) {
        const __m256i mask = _mm256_set1_epi64x(limb_mask);
        limb[0] = _mm256_and_si256(sums.limb[0], mask);
        __m256i carry = _mm256_srli_epi64(sums.limb[0], 48);
#pragma GCC unroll 8
        for (unsigned j = 1; j < a - 1; ++j) {
            const __m256i x = _mm256_add_epi64(sums.limb[j], carry);
            limb[j] = _mm256_and_si256(x, mask);
            carry = _mm256_srli_epi64(x, 48);
        }
        const __m256i top = _mm256_sub_epi64(sums.limb[a - 1], _mm256_set1_epi64x(both_bits));
        limb[a - 1] = _mm256_add_epi64(top, carry);
    }

    // The upper half of the coefficients, as limbs of a point; what is above it.
    ZNP_INLINE __m256i upper(unsigned j) const {
        constexpr unsigned count = Shape<a>::count;
        if constexpr (a % 2 != 0) {
            return limb[count + j];
        } else {
            const __m256i low = _mm256_srli_epi64(limb[count - 1 + j], 24);
            if (j == count - 1) return low;
            const __m256i mask = _mm256_set1_epi64x((s64_t{1} << 24) - 1);
            return _mm256_or_si256(low, _mm256_slli_epi64(_mm256_and_si256(limb[count + j], mask), 24));
        }
    }
    ZNP_INLINE __m256i above() const {
        return limb[a - 1];
    }
};

// The words of a block, four points a step.
template <unsigned a>
class Output {
  public:
    static constexpr unsigned count = Shape<a>::count;

    explicit Output(const BlockCarry& carry) : carry_(_mm256_setzero_si256()) {
        u64_t limbs[count + 1];
        split(limbs, carry);
#pragma GCC unroll 4
        for (unsigned j = 0; j < count; ++j) upper_[j] = last_lane(limbs[j]);
        above_ = last_lane(limbs[count]);
    }

    // The words of four points, from limbs that are to be added to what the points before left. Writes up to
    // 16 bytes behind them.
    ZNP_INLINE void put(std::byte* out, const Coefficients<a>& x) {
        __m256i sum[count];
        const __m256i above = x.above();
        high_parts_ = _mm256_or_si256(high_parts_, above);
#pragma GCC unroll 4
        for (unsigned j = 0; j < count; ++j) {
            const __m256i upper = x.upper(j);
            __m256i low = x.limb[j];
            if (a % 2 == 0 && j == count - 1)
                low = _mm256_and_si256(low, _mm256_set1_epi64x((s64_t{1} << 24) - 1));
            sum[j] = _mm256_add_epi64(low, shift_one(upper_[j], upper));
            upper_[j] = upper;
        }
        sum[0] = _mm256_add_epi64(sum[0], shift_two(above_, above));
        above_ = above;

        // A carry out of a point goes to the next one, where it is all but never carried on.
        const __m256i carries = resolve(sum);
        sum[0] = _mm256_add_epi64(sum[0], shift_one(carry_, carries));
        carry_ = carries;
        while (__builtin_expect(overflows(sum[0]), 0)) {
            const __m256i more = resolve(sum);
            sum[0] = _mm256_add_epi64(sum[0], shift_one(_mm256_setzero_si256(), more));
            carry_ = _mm256_add_epi64(carry_, more);
        }
        store(out, sum);
    }

    // What the block leaves to the next one.
    void leave(BlockCarry& carry) const {
        u64_t limbs[count + 2];
        for (unsigned j = 0; j < count; ++j) limbs[j] = lane(upper_[j], 3);
        limbs[0] += lane(carry_, 3);
        join(carry, limbs, lane(above_, 2), lane(above_, 3));
    }

    u64_t high_parts() const {
        return lane(high_parts_, 0) | lane(high_parts_, 1) | lane(high_parts_, 2) | lane(high_parts_, 3);
    }

  private:
    ZNP_INLINE static __m256i last_lane(u64_t x) {
        return _mm256_setr_epi64x(0, 0, 0, static_cast<s64_t>(x));
    }
    static u64_t lane(__m256i x, unsigned k) {
        alignas(32) u64_t lanes[4];
        _mm256_store_si256(reinterpret_cast<__m256i*>(lanes), x);
        return lanes[k];
    }

    // A number cut into the limbs of a point and what is above.
    static void split(u64_t* limbs, const BlockCarry& carry) {
        u128_t window = 0;
        unsigned held = 0, next = 0;
        for (unsigned j = 0; j <= count; ++j) {
            const unsigned width = j == count ? 64 : j == count - 1 ? Shape<a>::top_bits : 48;
            if (held < width) {
                window |= static_cast<u128_t>(carry.words[next++]) << held;
                held += 64;
            }
            limbs[j] = static_cast<u64_t>(window) & (~u64_t{0} >> (64 - width));
            window >>= width;
            held -= width;
        }
    }

    // The opposite, with a part that is above a point's first bit and one above the whole point.
    static void join(BlockCarry& carry, const u64_t* limbs, u64_t low, u64_t above) {
        u128_t window = low;
        unsigned at = 0, word = 0;
        const auto flush = [&](unsigned width) {
            at += width;
            if (at < 64) return;
            carry.words[word++] = static_cast<u64_t>(window);
            window >>= 64;
            at -= 64;
        };
        for (unsigned j = 0; j < count; ++j) {
            window += static_cast<u128_t>(limbs[j]) << at;
            flush(j == count - 1 ? Shape<a>::top_bits : 48);
        }
        window += static_cast<u128_t>(above) << at;
        while (word < 8) {
            carry.words[word++] = static_cast<u64_t>(window);
            window >>= 64;
        }
    }

    // Carries within the points; returns what they carry out.
    ZNP_INLINE static __m256i resolve(__m256i* sum) {
        __m256i carry = _mm256_setzero_si256();
#pragma GCC unroll 4
        for (unsigned j = 0; j < count; ++j) {
            const int width = j == count - 1 ? static_cast<int>(Shape<a>::top_bits) : 48;
            const __m256i x = _mm256_add_epi64(sum[j], carry);
            sum[j] = _mm256_and_si256(x, _mm256_set1_epi64x((s64_t{1} << width) - 1));
            carry = _mm256_srli_epi64(x, width);
        }
        return carry;
    }

    ZNP_INLINE static bool overflows(__m256i x) {
        return _mm256_testz_si256(x, _mm256_set1_epi64x(~limb_mask)) == 0;
    }

    // Two limbs of a point at a time to 12 bytes, in rising order: each store but the last is cut off by the
    // next one.
    ZNP_INLINE static void store(std::byte* out, const __m256i* sum) {
        constexpr char z = static_cast<char>(0x80);
        const __m256i join = _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, z, z, z, z,  //
                                              0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, z, z, z, z);
        __m256i even[(count + 1) / 2], odd[(count + 1) / 2];
#pragma GCC unroll 2
        for (unsigned k = 0; k < count; k += 2) {
            const __m256i upper = k + 1 < count ? sum[k + 1] : _mm256_setzero_si256();
            even[k / 2] = _mm256_shuffle_epi8(_mm256_unpacklo_epi64(sum[k], upper), join);
            odd[k / 2] = _mm256_shuffle_epi8(_mm256_unpackhi_epi64(sum[k], upper), join);
        }
#pragma GCC unroll 4
        for (unsigned point = 0; point < 4; ++point) {
#pragma GCC unroll 2
            for (unsigned k = 0; k < count; k += 2) {
                const __m256i pair = point % 2 == 0 ? even[k / 2] : odd[k / 2];
                const __m128i two =
                    point < 2 ? _mm256_castsi256_si128(pair) : _mm256_extracti128_si256(pair, 1);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(out + point * Shape<a>::width + 6 * k), two);
            }
        }
    }

    __m256i upper_[count];
    __m256i above_;
    __m256i carry_;
    __m256i high_parts_ = _mm256_setzero_si256();
};

template <unsigned a>
u64_t convert(const Geometry& g, const PrimeSet& set, std::byte* words, const double* block,
              BlockCarry& carry) {
    const Constants<a> constants(set);
    const upL_t stride = 4 * g.row(), lanes = g.lanes();
    constexpr upL_t step = 4 * Shape<a>::width;
    Sums<a> sums[largest_lanes];
    for (upL_t v = 0; v < lanes; ++v) sums[v].recover(constants, block + 4 * v, stride);

    Output<a> output(carry);
    Coefficients<a> x;
    for (upL_t v = 0; v + 1 < lanes; ++v) {
        x.carry(sums[v]);
        output.put(words + v * step, x);
    }
    std::byte end[step + 16];
    x.carry(sums[lanes - 1]);
    output.put(end, x);
    __builtin_memcpy(words + (lanes - 1) * step, end, step);
    output.leave(carry);
    return output.high_parts();
}

}  // namespace

u64_t block_to_words(const Geometry& g, const PrimeSet& set, std::byte* words, const double* block,
                     BlockCarry& carry) {
    assert(is_balanced(g, set, block));
    switch (g.a) {
        case 4:
            return convert<4>(g, set, words, block, carry);
        case 5:
            return convert<5>(g, set, words, block, carry);
        case 6:
            return convert<6>(g, set, words, block, carry);
        case 7:
            return convert<7>(g, set, words, block, carry);
        case 8:
            return convert<8>(g, set, words, block, carry);
        default:
            return convert<9>(g, set, words, block, carry);
    }
}

}  // namespace znp::vst
