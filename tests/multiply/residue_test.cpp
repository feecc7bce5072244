#include "multiply/kernels/residue.hpp"

#include <gmp.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <vector>

#include "multiply/kernels/residue_reference.hpp"
#include "test_seed.hpp"

namespace znp::residue {
namespace {

constexpr c64i ten_19 = 10'000'000'000'000'000'000u;
constexpr u64_t all_ones = std::numeric_limits<u64_t>::max();
constexpr s64_t lowest = std::numeric_limits<s64_t>::min();
constexpr s64_t highest = std::numeric_limits<s64_t>::max();

template <class word>
u64_t gmp_residue(const word* T, upL_t L, u64_t seed) {
    mpz_t value;
    mpz_t top;
    mpz_init(value);
    mpz_init_set_ui(top, seed);
    mpz_import(value, L, -1, sizeof(word), 0, 0, T);
    mpz_mul_2exp(top, top, 8 * sizeof(word) * L);
    mpz_add(value, value, top);
    const u64_t result = mpz_fdiv_ui(value, p);
    mpz_clear(value);
    mpz_clear(top);
    return result;
}

template <class word>
u64_t plain_hash_radix(const std::vector<word>& T, word radix, u64_t seed) {
    u128_t h = seed % p;
    for (upL_t i = T.size(); i-- != 0;) h = (h * (radix % p) + T[i]) % p;
    return static_cast<u64_t>(h);
}

std::vector<c64i> random_words(std::mt19937_64& rng, upL_t L) {
    std::vector<c64i> T(L);
    for (c64i& word : T) word = rng();
    return T;
}

// Every pattern at every length, and at every offset of a 32-bit word inside a cache line.
template <class word, class Hash, class Reference>
void expect_same_hash(Hash hash, Reference reference) {
    auto rng = testing::make_rng(sizeof(word));
    constexpr upL_t longest = 300;
    constexpr upL_t offsets = 64 / sizeof(word);
    std::vector<word> memory(longest + 2 * offsets);
    for (int pattern = 0; pattern < 3; pattern++) {
        for (word& w : memory) {
            w = pattern == 0   ? static_cast<word>(rng())
                : pattern == 1 ? static_cast<word>(all_ones)
                               : word{0};
        }
        for (upL_t L = 0; L <= longest; L++) {
            const word* T = memory.data() + L % offsets;
            for (const u64_t seed : {u64_t{0}, p - 1, p, all_ones, u64_t{rng()}}) {
                ASSERT_EQ(hash(T, L, seed), reference(T, L, seed)) << "L = " << L << ", seed = " << seed;
            }
        }
        for (upL_t offset = 0; offset < offsets; offset++) {
            for (const upL_t L : {upL_t{20}, upL_t{41}, upL_t{160}, longest}) {
                ASSERT_EQ(hash(&memory[offset], L, 1), reference(&memory[offset], L, 1))
                    << L << " " << offset;
            }
        }
    }
}

TEST(Residue, OfThePrimeIsZero) {
    EXPECT_EQ(reduce(p), 0u);
    const c64i word = p;
    EXPECT_EQ(hash_words64(&word, 1, 0), 0u);
    EXPECT_EQ(hash_words64_reference(&word, 1, 0), 0u);
    const c32i halves[] = {0xffffffff, 0x1fffffff};
    EXPECT_EQ(hash_words32(halves, 2, 0), 0u);
    EXPECT_EQ(hash_words32_reference(halves, 2, 0), 0u);
    EXPECT_EQ(hash_radix64(&word, 1, ten_19, 0), 0u);
}

TEST(Residue, ArithmeticIsCanonical) {
    for (const u64_t a : {u64_t{0}, u64_t{1}, u64_t{8}, p / 2, p - 2, p - 1}) {
        for (const u64_t b : {u64_t{0}, u64_t{1}, u64_t{7}, p / 2 + 1, p - 2, p - 1}) {
            EXPECT_EQ(add(a, b), static_cast<u64_t>((static_cast<u128_t>(a) + b) % p));
            EXPECT_EQ(sub(a, b), static_cast<u64_t>((static_cast<u128_t>(a) + p - b) % p));
            EXPECT_EQ(mul(a, b), static_cast<u64_t>(static_cast<u128_t>(a) * b % p));
        }
        for (unsigned k = 0; k <= 60; k++) EXPECT_EQ(mul_power_of_2(a, k), mul(a, u64_t{1} << k));
    }
    for (const u64_t x : {u64_t{0}, p - 1, p, p + 1, 2 * p - 1, 2 * p, 8 * p - 1, 8 * p, all_ones}) {
        EXPECT_EQ(reduce(x), x % p);
    }
}

TEST(Residue, ArithmeticOnRandomValues) {
    auto rng = testing::make_rng(1);
    for (int i = 0; i < 10000; i++) {
        const u64_t a = rng() % p;
        const u64_t b = rng() % p;
        ASSERT_EQ(mul(a, b), static_cast<u64_t>(static_cast<u128_t>(a) * b % p));
        ASSERT_EQ(sub(add(a, b), b), a);
    }
}

TEST(Residue, WordPower64OfOneAndMinusOne) {
    EXPECT_EQ(word_power64(0), 1u);
    EXPECT_EQ(word_power64(1), 8u);
    EXPECT_EQ(word_power64(-1), u64_t{1} << 58);
    EXPECT_EQ(mul(word_power64(1), word_power64(-1)), 1u);
}

TEST(Residue, WordPower32OfOneAndMinusOne) {
    EXPECT_EQ(word_power32(0), 1u);
    EXPECT_EQ(word_power32(1), u64_t{1} << 32);
    EXPECT_EQ(word_power32(-1), u64_t{1} << 29);
    EXPECT_EQ(mul(word_power32(1), word_power32(-1)), 1u);
}

TEST(Residue, WordPowerIsThePowerOfTheWordsBase) {
    auto rng = testing::make_rng(2);
    std::vector<s64_t> exponents = {1, 2, 60, 61, 62, -61, -62, highest, lowest, lowest + 1};
    for (int i = 0; i < 100; i++) exponents.push_back(static_cast<s64_t>(rng()));
    for (const s64_t e : exponents) {
        const u64_t magnitude = e < 0 ? -static_cast<u64_t>(e) : static_cast<u64_t>(e);
        EXPECT_EQ(word_power64(e), pow(e < 0 ? u64_t{1} << 58 : 8, magnitude)) << e;
        EXPECT_EQ(word_power32(e), pow(u64_t{1} << (e < 0 ? 29 : 32), magnitude)) << e;
    }
}

TEST(Residue, PowAgainstGmp) {
    auto rng = testing::make_rng(3);
    mpz_t result;
    mpz_t base;
    mpz_t exponent;
    mpz_t modulus;
    mpz_init(result);
    mpz_init(base);
    mpz_init(exponent);
    mpz_init_set_ui(modulus, p);
    for (const u64_t radix : {u64_t{0}, u64_t{1}, u64_t{10}, p - 1, p, p + 1, all_ones, u64_t{rng()}}) {
        for (const u64_t e : {u64_t{0}, u64_t{1}, u64_t{2}, u64_t{61}, p, all_ones, u64_t{rng()}}) {
            mpz_set_ui(base, radix);
            mpz_set_ui(exponent, e);
            mpz_powm(result, base, exponent, modulus);
            EXPECT_EQ(pow(radix, e), mpz_get_ui(result)) << radix << "^" << e;
        }
    }
    mpz_clears(result, base, exponent, modulus, nullptr);
}

TEST(Residue, HashWords64OfOneWordIsTheWordModP) {
    auto rng = testing::make_rng(4);
    for (const c64i word : {c64i{0}, c64i{1}, p - 1, p, p + 1, 7 * p + 3, all_ones, c64i{rng()}}) {
        EXPECT_EQ(hash_words64(&word, 1, 0), word % p);
        EXPECT_EQ(hash_words64_reference(&word, 1, 0), word % p);
    }
}

TEST(Residue, HashRadix64OfOneWordIsTheWordModP) {
    auto rng = testing::make_rng(5);
    for (const c64i word : {c64i{0}, c64i{1}, p, ten_19 - 1, all_ones, c64i{rng()}}) {
        EXPECT_EQ(hash_radix64(&word, 1, ten_19, 0), word % p);
    }
}

TEST(Residue, OfNoWordsIsTheSeed) {
    EXPECT_EQ(hash_words32(nullptr, 0, 0), 0u);
    EXPECT_EQ(hash_words64(nullptr, 0, 0), 0u);
    EXPECT_EQ(hash_words64(nullptr, 0, p), 0u);
    EXPECT_EQ(hash_words64(nullptr, 0, p + 5), 5u);
    EXPECT_EQ(hash_radix32(nullptr, 0, 10, 3), 3u);
    EXPECT_EQ(hash_radix64(nullptr, 0, ten_19, all_ones), 7u);
}

TEST(Residue, OfTheNumberTwoTo64IsEight) {
    const c64i mantissa = 1;
    EXPECT_EQ(mul(hash_words64(&mantissa, 1, 0), word_power64(1)), 8u);
    const c64i words[] = {0, 1};
    EXPECT_EQ(hash_words64(words, 2, 0), 8u);
}

TEST(Residue, HashWords32SameAsReference) {
    expect_same_hash<c32i>(hash_words32, hash_words32_reference);
}

TEST(Residue, HashWords64SameAsReference) {
    expect_same_hash<c64i>(hash_words64, hash_words64_reference);
}

// The lanes' sums of halves, which are the largest where all halves are, up to whole blocks of 640 words, and
// the scale of every number of steps modulo 61.
TEST(Residue, HashOfTheLargestWordsSameAsReference) {
    for (const c64i pattern : {all_ones, all_ones << 32, all_ones >> 32, p, p << 3, c64i{1} << 63}) {
        const std::vector<c64i> T(20 * 130 + 19, pattern);
        for (upL_t steps = 25; steps <= 130; steps++) {
            const upL_t L = 20 * steps + steps % 20;
            const u64_t seed = all_ones - steps;
            ASSERT_EQ(hash_words64(T.data(), L, seed), hash_words64_reference(T.data(), L, seed)) << L;
        }
    }
}

TEST(Residue, HashWordsAgainstGmp) {
    auto rng = testing::make_rng(6);
    for (const upL_t L : {1u, 2u, 19u, 20u, 21u, 640u, 641u, 1280u, 5000u, 12345u}) {
        const std::vector<c64i> T = random_words(rng, L);
        std::vector<c32i> T32(2 * L);
        std::memcpy(T32.data(), T.data(), 8 * L);
        const u64_t seed = rng();
        EXPECT_EQ(hash_words(T.data(), L), gmp_residue(T.data(), L, 0));
        EXPECT_EQ(hash_words(T.data(), L, seed), gmp_residue(T.data(), L, seed));
        EXPECT_EQ(hash_words(T32.data(), 2 * L, seed), gmp_residue(T.data(), L, seed));
        EXPECT_EQ(hash_words(T32.data(), 2 * L - 1, seed), gmp_residue(T32.data(), 2 * L - 1, seed));
        EXPECT_EQ(hash_words64_reference(T.data(), L, seed), gmp_residue(T.data(), L, seed));
    }
}

TEST(Residue, HashInPiecesThroughTheSeed) {
    auto rng = testing::make_rng(7);
    const std::vector<c64i> T = random_words(rng, 1000);
    const u64_t whole = hash_words64(T.data(), T.size(), 0);
    for (const upL_t cut : {1u, 19u, 20u, 333u, 980u, 999u}) {
        const u64_t top = hash_words64(T.data() + cut, T.size() - cut, 0);
        EXPECT_EQ(hash_words64(T.data(), cut, top), whole);
        EXPECT_EQ(add(mul(top, word_power64(static_cast<s64_t>(cut))), hash_words64(T.data(), cut, 0)),
                  whole);
    }
}

TEST(Residue, AnyFlippedBitChangesTheHash) {
    auto rng = testing::make_rng(8);
    std::vector<c64i> T = random_words(rng, 45);
    const u64_t right = hash_words64(T.data(), T.size(), 0);
    for (c64i& word : T) {
        for (unsigned bit = 0; bit < 64; bit++) {
            word ^= c64i{1} << bit;
            ASSERT_NE(hash_words64(T.data(), T.size(), 0), right);
            word ^= c64i{1} << bit;
        }
    }
}

TEST(Residue, HashRadixAgainstPlainRemainders) {
    auto rng = testing::make_rng(9);
    for (const upL_t L : {0u, 1u, 2u, 63u, 127u, 128u, 129u, 130u, 131u, 132u, 1001u}) {
        std::vector<c64i> T = random_words(rng, L);
        std::vector<c32i> T32(L);
        for (upL_t i = 0; i < L; i++) T32[i] = static_cast<c32i>(T[i]);
        for (const u64_t seed : {u64_t{0}, p - 1, p, all_ones}) {
            for (const c64i radix : {c64i{0}, c64i{1}, c64i{10}, ten_19, p - 1, p, p + 1, all_ones}) {
                EXPECT_EQ(hash_radix64(T.data(), L, radix, seed), plain_hash_radix(T, radix, seed));
            }
            for (const c32i radix : {c32i{0}, c32i{10}, c32i{1000000000}, c32i{0xffffffff}}) {
                EXPECT_EQ(hash_radix32(T32.data(), L, radix, seed), plain_hash_radix(T32, radix, seed));
            }
        }
    }
    const std::vector<c64i> ones(500, all_ones);
    EXPECT_EQ(hash_radix64(ones.data(), 500, all_ones, all_ones), plain_hash_radix(ones, all_ones, all_ones));
}

// Digits and binary words of the same number have the same hash.
TEST(Residue, HashOfDecimalWordsIsTheHashOfTheBinaryWords) {
    auto rng = testing::make_rng(10);
    std::vector<c64i> digits = random_words(rng, 300);
    for (c64i& word : digits) word %= ten_19;
    mpz_t value;
    mpz_init(value);
    for (upL_t i = digits.size(); i-- != 0;) {
        mpz_mul_ui(value, value, ten_19);
        mpz_add_ui(value, value, digits[i]);
    }
    EXPECT_EQ(hash_radix64(digits.data(), digits.size(), ten_19, 0),
              hash_words64(mpz_limbs_read(value), mpz_size(value), 0));
    mpz_clear(value);
}

}  // namespace
}  // namespace znp::residue
