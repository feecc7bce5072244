// The hash of words modulo q, with AVX2.
//
// A step takes twelve words: three vectors ("columns") of four lanes. Words of a lane in successive steps
// differ in weight by B^12 = -1/5 mod q, so that from the bottom up Horner's rule for a lane is
//     A = word - 5 A,      the lane's part being A B^(12 (steps - 1)) at the end.
// A block of twelve steps adds up the words with the weights (-5)^j at once, the low and the high halves
// apart, which stay below 2^62: five vector operations for 32 bytes and one load. Between blocks the sums
// become words again, and what these carry goes to the next lane; from the last lane, of weight B^12, it
// comes back to the first one, as Horner's factor -5 turns -1/5 into 1. The twelve words of the end are
// multiplied by powers of B one by one.
#include <immintrin.h>

#include "multiply/kernels/guard_residue.hpp"

namespace znp::guard {

namespace {

constexpr unsigned columns = 3;
constexpr unsigned lanes = 4;
constexpr unsigned step_words = columns * lanes;
constexpr unsigned block_steps = 12;

static_assert(mul(5, pow(word_base, step_words)) == q - 1);

// Numbers below this length go without vectors, whose sums cost as much at the end as many a word.
constexpr upL_t min_vector_words = 5 * step_words;

// B^i, and B^(12 i)
template <upL_t count>
constexpr std::array<u64_t, count> powers_of(u64_t base) {
    std::array<u64_t, count> w{1};
    for (upL_t i = 1; i < count; i++) w[i] = mul(w[i - 1], base);
    return w;
}
constexpr auto powers = powers_of<min_vector_words + 1>(word_base);
constexpr auto step_powers = powers_of<64>(powers[step_words]);

// 5^j in every lane
struct alignas(32) Lanes {
    u64_t lane[lanes];
};
constexpr auto weights = [] {
    std::array<Lanes, block_steps + 1> w{};
    u64_t power = 1;
    for (Lanes& weight : w) {
        for (u64_t& lane : weight.lane) lane = power;
        power *= 5;
    }
    return w;
}();
// Carries into the first lane have one factor less.
constexpr Lanes first_carry_weights = [] {
    Lanes w = weights[block_steps];
    w.lane[0] = weights[block_steps - 1].lane[0];
    return w;
}();
constexpr Lanes first_lane{{~u64_t{0}, 0, 0, 0}};
constexpr u64_t largest_half = 0xffffffff;
constexpr u64_t largest_weight = weights[block_steps].lane[0];
static_assert(largest_weight < u64_t{1} << 31);

// What the sums start with so that none is negative at the end: 2^59 for the low and for the high halves, and
// in the first lane as much more as makes it all a multiple of q. What is subtracted in a block is below
// 5^11 (25/24 + 1/8) 2^32, what is added below 5^12 (2 + 25/24 / 25) 2^32.
constexpr u64_t offset = u64_t{1} << 59;
static_assert(static_cast<u128_t>(largest_weight / 5) * 2 * largest_half < offset);
static_assert(static_cast<u128_t>(largest_weight) * 3 * largest_half + 2 * offset < u128_t{1} << 63);
struct Offsets {
    Lanes low{{offset, offset, offset, offset}};
    Lanes high = low;
};
constexpr Offsets first_offsets = [] {
    u64_t sum = 0;
    const u64_t lane = mul(offset, (u64_t{1} << 32) + 1);
    for (unsigned i = 0; i < step_words; i++) sum = add(sum, mul(lane, powers[i]));
    const u64_t rest = sub(0, sum);
    Offsets first;
    first.low.lane[0] += rest & largest_half;
    first.high.lane[0] += rest >> 32;
    return first;
}();

ZNP_INLINE __m256i load(const c64i* T) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i_u*>(T));
}
ZNP_INLINE void store(u64_t* T, __m256i x) {
    _mm256_storeu_si256(reinterpret_cast<__m256i_u*>(T), x);
}
ZNP_INLINE __m256i load(const Lanes& x) {
    return _mm256_load_si256(reinterpret_cast<const __m256i*>(x.lane));
}

// A sum of words times residues, of up to 2^60 of them.
class LongSum {
  public:
    ZNP_INLINE void add_product(u64_t word, u64_t residue) {
        const u128_t product = static_cast<u128_t>(word) * residue;
        asm("add %3, %0\n\tadc %4, %1\n\tadc $0, %2"
            : "+r"(sum0_), "+r"(sum1_), "+r"(sum2_)
            : "r"(static_cast<u64_t>(product)), "r"(static_cast<u64_t>(product >> 64))
            : "cc");
    }
    // Below 3 q. B mod q is below 2^60, the top word is small.
    ZNP_INLINE u64_t folded() const {
        return fold(static_cast<u128_t>(sum1_) * powers[1] + static_cast<u128_t>(sum2_) * powers[2] + sum0_);
    }

  private:
    u64_t sum0_ = 0, sum1_ = 0, sum2_ = 0;
};
static_assert(powers[1] < u64_t{1} << 60);

// h B^count + the words, for any h; below 3 q.
ZNP_INLINE u64_t append_words(u64_t h, const c64i* T, upL_t count) {
    LongSum sum;
    sum.add_product(h, powers[count]);
    upL_t i = 0;
    for (; i + 4 <= count; i += 4) {
        for (upL_t k = 0; k < 4; k++) sum.add_product(T[i + k], powers[i + k]);
    }
    for (; i < count; i++) sum.add_product(T[i], powers[i]);
    return sum.folded();
}

// The sums of the lanes: `low` of the low halves of the words, `high` of the high ones.
struct Sums {
    __m256i low[columns];
    __m256i high[columns];

    ZNP_INLINE Sums() {
        low[0] = load(first_offsets.low);
        high[0] = load(first_offsets.high);
        for (unsigned c = 1; c < columns; c++) {
            low[c] = high[c] = _mm256_set1_epi64x(static_cast<long long>(offset));
        }
    }

    // The words of one step times (-5)^j.
    template <bool odd>
    ZNP_INLINE void append(const c64i* T, unsigned j) {
        const __m256i weight = load(weights[j]);
        for (unsigned c = 0; c < columns; c++) {
            const __m256i words = load(T + lanes * c);
            const __m256i low_part = _mm256_mul_epu32(words, weight);
            const __m256i high_part = _mm256_mul_epu32(_mm256_srli_epi64(words, 32), weight);
            low[c] = odd ? _mm256_sub_epi64(low[c], low_part) : _mm256_add_epi64(low[c], low_part);
            high[c] = odd ? _mm256_sub_epi64(high[c], high_part) : _mm256_add_epi64(high[c], high_part);
        }
    }
    // Steps with words from T upwards.
    ZNP_INLINE void append_steps(const c64i* T, unsigned steps) {
        unsigned j = steps;
        if (steps % 2 != 0) {
            append<false>(T, --j);
            T += step_words;
        }
        for (; j != 0; j -= 2, T += 2 * step_words) {
            append<true>(T, j - 1);
            append<false>(T + step_words, j - 2);
        }
    }

    // The high sums with what the low ones have above 32 bits: their low halves and the low sums' are words,
    // their high halves what these carry.
    ZNP_INLINE __m256i top(unsigned c) const {
        return _mm256_add_epi64(high[c], _mm256_srli_epi64(low[c], 32));
    }

    // Adds the sums of the block below times (-5)^12.
    ZNP_INLINE void append_sums(const Sums& below) {
        const __m256i weight = load(weights[block_steps]);
        __m256i tops[columns], carries[columns];
        for (unsigned c = 0; c < columns; c++) {
            tops[c] = below.top(c);
            carries[c] = _mm256_permute4x64_epi64(_mm256_srli_epi64(tops[c], 32), 0x93);  // one lane up
        }
        for (unsigned c = 0; c < columns; c++) {
            low[c] = _mm256_add_epi64(low[c], _mm256_mul_epu32(below.low[c], weight));
            high[c] = _mm256_add_epi64(high[c], _mm256_mul_epu32(tops[c], weight));
            const __m256i from = _mm256_blend_epi32(carries[c], carries[(c + columns - 1) % columns], 3);
            if (c == 0) {
                const __m256i negative = load(first_lane);
                const __m256i part = _mm256_mul_epu32(from, load(first_carry_weights));
                low[c] =
                    _mm256_add_epi64(low[c], _mm256_sub_epi64(_mm256_xor_si256(part, negative), negative));
            } else {
                low[c] = _mm256_add_epi64(low[c], _mm256_mul_epu32(from, weight));
            }
        }
    }
};

// The twelve lanes of the steps: their sum A is that of A_i B^i.
ZNP_INLINE Sums sum_steps(const c64i* T, upL_t steps) {
    const unsigned part = static_cast<unsigned>((steps - 1) % block_steps + 1);
    Sums sums;
    sums.append_steps(T, part);
    T += part * step_words;
    for (upL_t blocks = (steps - part) / block_steps; blocks != 0; blocks--) {
        Sums block;
        block.append_steps(T, block_steps);
        block.append_sums(sums);
        sums = block;
        T += block_steps * step_words;
    }
    return sums;
}

// h B^12 + the sums, for any h; below 3 q.
ZNP_INLINE u64_t append_sums(u64_t h, const Sums& sums) {
    u64_t words[step_words], carries[step_words];
    const __m256i half = _mm256_set1_epi64x(largest_half);
    for (unsigned c = 0; c < columns; c++) {
        const __m256i top = sums.top(c);
        store(words + lanes * c,
              _mm256_or_si256(_mm256_and_si256(sums.low[c], half), _mm256_slli_epi64(top, 32)));
        store(carries + lanes * c, _mm256_srli_epi64(top, 32));
    }
    asm("" : "+m"(words), "+m"(carries));  // by memory, which is faster than word by word from the vectors

    LongSum sum;
    sum.add_product(h, powers[step_words]);
    u128_t word = 0;
    for (unsigned i = 0; i < step_words; i++) {
        word = (word >> 64) + words[i] + (i == 0 ? 0 : carries[i - 1]);
        sum.add_product(static_cast<u64_t>(word), powers[i]);
    }
    sum.add_product(static_cast<u64_t>(word >> 64) + carries[step_words - 1], powers[step_words]);
    return sum.folded();
}

// x B^(12 steps)
ZNP_INLINE u64_t shift_steps(u64_t x, upL_t steps) {
    constexpr upL_t near = step_powers.size();
    constexpr u64_t far_power = mul(step_powers[near - 1], step_powers[1]);
    const u64_t h = mul(x, step_powers[steps % near]);
    return steps < near ? h : mul(h, pow(far_power, steps / near));
}

}  // namespace

u64_t hash_words(const c64i* T, upL_t L, u64_t seed) {
    if (L < min_vector_words) return reduce(append_words(seed, T, L));
    const upL_t steps = L / step_words;
    const upL_t below = steps * step_words;
    const u64_t top = append_words(seed, T + below, L - below);
    return shift_steps(reduce(append_sums(top, sum_steps(T, steps))), steps - 1);
}

}  // namespace znp::guard
