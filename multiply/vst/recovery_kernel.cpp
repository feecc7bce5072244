// Residues to words: the last step of an inverse transform.
//
// The recovery of a coefficient x by the Chinese remainder theorem, four neighbouring points at a time: with
// y_s = x (P / p_s)^-1 mod p_s, which the transform hands over,
//
//     x = sum y_s P / p_s - k P,   k the multiple that leaves 0 <= x < P.
//
// P / p_s stands in limbs C_s of base 2^48. Two primes share the products of a limb (S. Winograd, "A new
// algorithm for inner product", 1968):
//
//     y_0 C_0 + y_1 C_1 = (y_0 + C_1) (y_1 + C_0) - y_0 y_1 - C_0 C_1,
//
// where all limbs have the y_0 y_1 in common, and the C_0 C_1 of all pairs and limbs are one constant number.
// A product is split without error into a high part, a multiple of 2^48, and a low part by a sum that carries
// the magic number M' = 1.5 2^100, whose last place is 2^48:
//
//     high' = high + x y,   low' = low + (x y + (high - high'))
//
// The sums begin with M' and M = 1.5 2^52 and stay in these binades, so that their mantissas, read as
// integers, are the sums. Both have room for 2^51. With |y| <= 0.6 p, a limb's high parts are below 2^50
// units of 2^48: generators/vst_prime_sets.py proves it for each set. The low parts, at most 2^47 each, are
// those of up to 4 products y_0 y_1 and 5 others, of the constant number's limb, and of a limb of k P, |k| <=
// 5: 15 2^47 in all.
//
// k comes from the top high part t = (x + k P) / 2^(48 (a - 1)) up to a relative error of 2^-34: what is left
// out is below 16 units, and P above 2^38 of them. -k = round(0.2 - t 2^(48 (a - 1)) / P). As 0 <= x <
// 2^-1.29 P < 0.41 P, the argument lies within 0.21 of -k; a negacyclic transform, whose coefficients have an
// offset, leaves at most 0.44 P and 0.24. A value that is no coefficient comes out modulo P between -0.3 P
// and 0.7 P; its high part shows it.
//
// A coefficient has just the bits of two points and the part above them. So the coefficients of the even
// points, set side by side, are one number, those of the odd points another, and the words are their sum. The
// carries of both run through the limbs as 64-bit integers, point by point, in the integer units while the
// vector units recover the next points; a point's part above goes into the first limb of the next but one.
#include <cassert>
#include <cstddef>

#include "multiply/kernels/carry_loop.hpp"
#include "multiply/vst/conversion.hpp"
#include "multiply/vst/conversion_reference.hpp"
#include "multiply/vst/recovery_table.hpp"
#include "multiply/vst/vst_vector.hpp"

namespace znp::vst {
namespace {

constexpr auto both_bits =
    static_cast<s64_t>(u64_t{0x4338 + 0x4638} << 48);  // of the sum of both magic numbers

ZNP_INLINE __m256i bits(__m256d x) {
    return _mm256_castpd_si256(x);
}

// The limbs of four coefficients before any carry: integers with what both magic numbers add.
template <unsigned a>
struct alignas(32) Sums {
    u64_t limb[a][4];
};
ZNP_INLINE void store(u64_t (&to)[4], __m256i x) {
    _mm256_store_si256(reinterpret_cast<__m256i*>(to), x);
}

// A sum of exact products, in multiples of 2^48 and rests, with a magic number each.
struct SplitSum {
    __m256d high, low;
};

template <unsigned a>
class Recovery {
  public:
    // Residues of the primes `stride` bytes apart.
    ZNP_INLINE Recovery(const double* table, upL_t stride)
        : table_(table),
          stride_(stride),
          stride3_(3 * stride),
          stride5_(5 * stride),
          one_(_mm256_set1_pd(1.0)) {
        asm("" : "+x"(one_), "+r"(stride3_), "+r"(stride5_));
    }

    // The sums of the four points at y. The upper limbs come first, for the quotient. Calls meanwhile(i, n) n
    // times, spread over the work, with i counting up.
    template <class F>
    ZNP_INLINE void operator()(Sums<a>& result, const double* y, const F& meanwhile) {
        constexpr unsigned half = (a - 1) / 2, steps = a / 2;
        y_ = reinterpret_cast<const std::byte*>(y);
        y5_ = y_ + stride5_;
        // Keeps the compiler from taking the constants out of the caller's loop, into the stack.
        asm("" : "+r"(y5_), "+r"(table_));

        const SplitSum start = pairs();
        SplitSum sum[a - 1];
        add<half, a - 1>(
            start, sum, [&](unsigned i) __attribute__((always_inline)) { meanwhile(i, 2 * steps); });
        const __m256d magic = _mm256_set1_pd(low_magic);
        const __m256d t = _mm256_sub_pd(sum[a - 2].high, get(quotient_offset));
        const __m256d minus_k = _mm256_sub_pd(_mm256_fmadd_pd(t, get(quotient_factor), magic), magic);
        const __m256d top = _mm256_fmadd_pd(minus_k, get(product + a - 1), get(pair_products + a - 1));
        store(result.limb[a - 1], _mm256_sub_epi64(_mm256_add_epi64(bits(sum[a - 2].high), bits(top)),
                                                   _mm256_set1_epi64x(both_bits)));
#pragma GCC unroll 4
        for (unsigned j = a - 2; j > half; --j)
            store(result.limb[j], limb(sum[j].low, sum[j - 1].high, j, minus_k));
        const __m256d low_half = sum[half].low;

        add<0, half>(
            start, sum, [&](unsigned i) __attribute__((always_inline)) { meanwhile(steps + i, 2 * steps); });
        store(result.limb[half], limb(low_half, sum[half - 1].high, half, minus_k));
#pragma GCC unroll 4
        for (unsigned j = half - 1; j > 0; --j)
            store(result.limb[j], limb(sum[j].low, sum[j - 1].high, j, minus_k));
        store(result.limb[0], bits(multiple(sum[0].low, 0, minus_k)));
    }

  private:
    // Vectors of RecoveryTable<a>.
    static constexpr unsigned quotient_offset = 0, quotient_factor = 1, factors = 2;
    static constexpr unsigned product = factors + a * (a - 1), pair_products = product + a;

    ZNP_INLINE __m256d get(unsigned i) const {
        return _mm256_load_pd(table_ + 4 * i);
    }
    ZNP_INLINE __m256d factor(unsigned s, unsigned j) const {
        return get(factors + s * (a - 1) + j);
    }

    // Two pointers and two multiples of the stride reach all residues.
    ZNP_INLINE __m256d residue(unsigned s) const {
        const std::byte* const at = s == 3             ? y_ + stride3_
                                    : s == 6           ? y_ + 2 * stride3_
                                    : s == 5 || s == 7 ? y5_ + (s - 5) * stride_
                                                       : y_ + s * stride_;
        return _mm256_load_pd(reinterpret_cast<const double*>(at));
    }

    // Adds x y. The lower sum goes through the multipliers, which have less to do here than the adders.
    ZNP_INLINE void add(SplitSum& to, const SplitSum& from, __m256d x, __m256d y) const {
        const __m256d high = _mm256_fmadd_pd(x, y, from.high);
        const __m256d rest = _mm256_fmadd_pd(x, y, _mm256_sub_pd(from.high, high));
        to.low = _mm256_fmadd_pd(rest, one_, from.low);
        to.high = high;
    }

    // Minus the sum of y_0 y_1, y_2 y_3, ...
    ZNP_INLINE SplitSum pairs() const {
        SplitSum sum{_mm256_set1_pd(high_magic), _mm256_set1_pd(low_magic)};
#pragma GCC unroll 4
        for (unsigned s = 0; s + 1 < a; s += 2) {
            const __m256d y = residue(s), z = residue(s + 1);
            const __m256d high = _mm256_fnmadd_pd(y, z, sum.high);
            const __m256d rest = _mm256_fnmadd_pd(y, z, _mm256_sub_pd(sum.high, high));
            sum.low = _mm256_add_pd(sum.low, rest);
            sum.high = high;
        }
        return sum;
    }

    // The sums of the limbs from `begin` to below `end`. Calls meanwhile(i) for each pair i.
    template <unsigned begin, unsigned end, class F>
    ZNP_INLINE void add(const SplitSum& start, SplitSum* sum, const F& meanwhile) const {
#pragma GCC unroll 4
        for (unsigned s = 0; s + 1 < a; s += 2) {
            __m256d y = residue(s), z = residue(s + 1);
            asm("" : "+x"(y), "+x"(z));  // in registers
#pragma GCC unroll 4
            for (unsigned j = begin; j < end; ++j)
                add(sum[j], s == 0 ? start : sum[j], _mm256_add_pd(y, factor(s + 1, j)),
                    _mm256_add_pd(z, factor(s, j)));
            meanwhile(s / 2);
        }
        if (a % 2 != 0) {
            const __m256d y = residue(a - 1);
#pragma GCC unroll 4
            for (unsigned j = begin; j < end; ++j) add(sum[j], sum[j], y, factor(a - 1, j));
        }
    }

    ZNP_INLINE __m256d multiple(__m256d low, unsigned j, __m256d minus_k) const {
        return _mm256_fmadd_pd(minus_k, get(product + j), _mm256_add_pd(low, get(pair_products + j)));
    }
    ZNP_INLINE __m256i limb(__m256d low, __m256d below, unsigned j, __m256d minus_k) const {
        return _mm256_add_epi64(bits(multiple(low, j, minus_k)), bits(below));
    }

    const double* table_;
    const std::byte *y_ = nullptr, *y5_ = nullptr;
    upL_t stride_, stride3_, stride5_;
    __m256d one_;
};

// The number that the coefficients of every other point are. Their parts above are taken with what the point
// before carries in, which does not lift one over its bound N: N (2^w - 1)^2 + N < N 2^(2 w), w the bits of a
// point.
template <unsigned a>
struct Stream {
    u64_t carry;
    u64_t high_parts;

    // Limb j of a point to `out`, and 2 bytes behind it.
    ZNP_INLINE void put(const Sums<a>& sums, unsigned lane, unsigned j, std::byte* out) {
        carry += sums.limb[j][lane];
        if (j + 1 == a) {
            high_parts |= carry;
        } else {
            __builtin_memcpy(out + 6 * j, &carry, 8);
            carry >>= 48;
        }
    }
};

// What the block leaves to the next one: the end of the odd points, and what the even ones and the addition
// carry.
ZNP_INLINE void leave(BlockCarry& carry, const std::byte* end, upL_t bytes, u64_t above) {
    u64_t rest[8] = {};
    __builtin_memcpy(rest, end, bytes);
    u128_t sum = above;
    for (unsigned i = 0; i < 8; ++i) {
        sum += rest[i];
        carry.words[i] = static_cast<u64_t>(sum);
        sum >>= 64;
    }
}

template <unsigned a>
u64_t convert(const Geometry& g, const PrimeSet& set, std::byte* words, const double* block,
              BlockCarry& carry) {
    constexpr upL_t width = 3 * (a - 1);  // bytes of a point
    constexpr upL_t step = 4 * width;     // and of four
    const upL_t lanes = g.lanes();
    alignas(32) std::byte even_bytes[max_input_bytes + 8];
    alignas(32) std::byte odd_bytes[max_input_bytes + width + 8];
    __builtin_memcpy(odd_bytes, carry.words, width + 8);
    Stream<a> even{0, 0}, odd{0, 0};
    __builtin_memcpy(&odd.carry, odd_bytes + width, 8);

    // Part i of n of the limbs of four points.
    std::byte *even_out = even_bytes, *odd_out = odd_bytes + width;
    const auto put = [&](const Sums<a>& sums, unsigned i, unsigned n) __attribute__((always_inline)) {
        for (unsigned k = i * 2 * a / n; k < (i + 1) * 2 * a / n; ++k) {
            const unsigned lane = k < a ? 0 : 2, j = k % a;
            even.put(sums, lane, j, even_out + lane * width);
            odd.put(sums, lane + 1, j, odd_out + lane * width);
        }
    };
    // The sum of both, in pieces of whole words. It follows some steps behind: its loads span two stores, and
    // wait until these have left the store queue.
    constexpr upL_t piece = 2, lag = 4;
    bool over = false;
    const auto add = [&](upL_t v) __attribute__((always_inline)) {
        over =
            add_loop(words + v * step, even_bytes + v * step, odd_bytes + v * step, piece * step / 8, over);
    };

    Sums<a> sums[2];
    Recovery<a> recover(set.recovery, 32 * g.row());
    recover(sums[0], block, [](unsigned, unsigned) {});
    for (upL_t v = 1; v < lanes; ++v) {
        const Sums<a>& from = sums[(v - 1) % 2];
        recover(
            sums[v % 2],
            block + 4 * v, [&](unsigned i, unsigned n) __attribute__((always_inline)) { put(from, i, n); });
        even_out += step;
        odd_out += step;
        if (v % piece == 0 && v >= lag + piece) add(v - lag - piece);
    }
    for (unsigned i = 0; i < 2; ++i) put(sums[(lanes - 1) % 2], i, 2);
    for (upL_t v = lanes - lag - piece; v < lanes; v += piece) add(v);

    __builtin_memcpy(odd_out + step, &odd.carry, 8);
    leave(carry, odd_out + step - width, width + 8, even.carry + (over ? 1 : 0));
    return even.high_parts | odd.high_parts;
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
