#include "multiply/kernels/guard_residue.hpp"

#include <gmp.h>
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "multiply/hash_by_threads.hpp"
#include "multiply/kernels/residue_reference.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using Words = std::vector<c64i>;

Words random_words(upL_t L, std::mt19937_64& rng) {
    Words words(L);
    for (c64i& w : words) w = rng();
    return words;
}

TEST(GuardResidue, TheModulusIsAPrimeInWhichTwoHasALargeOddOrder) {
    mpz_t q;
    mpz_init_set_ui(q, guard::q);
    EXPECT_NE(mpz_probab_prime_p(q, 40), 0);
    mpz_clear(q);
    constexpr u64_t order = u64_t{71} * 66782081 * 89392859;
    EXPECT_EQ(14 * order, guard::q - 1);
    EXPECT_EQ(guard::pow(2, order), 1u);
    for (const u64_t factor : {u64_t{71}, u64_t{66782081}, u64_t{89392859}}) {
        EXPECT_NE(guard::pow(2, order / factor), 1u) << factor;
    }
    // Odd: no power of 2 is -1, so that two bits cancel at a multiple of the order alone.
    EXPECT_EQ(order % 2, 1u);
    EXPECT_EQ(guard::mul(5, guard::word_power(12)), guard::q - 1);
}

TEST(GuardResidue, ArithmeticAtTheEdges) {
    constexpr u64_t q = guard::q;
    EXPECT_EQ(guard::reduce(q), 0u);
    EXPECT_EQ(guard::reduce(q - 1), q - 1);
    for (const u64_t x : {2 * q - 1, 2 * q, 3 * q - 1, 3 * q, ~u64_t{0}}) EXPECT_EQ(guard::reduce(x), x % q);
    // fold: below 3 q for whatever is below 2^126
    for (const u128_t x : {u128_t{0}, u128_t{q - 1}, u128_t{q}, (u128_t{1} << 126) - 1, u128_t{q} * q,
                           u128_t{q} * q - 1, (u128_t{1} << 125) - 1}) {
        EXPECT_LT(guard::fold(x), 3 * q);
        EXPECT_EQ(guard::fold(x) % q, static_cast<u64_t>(x % q));
    }
    EXPECT_EQ(guard::add(q - 1, q - 1), q - 2);
    EXPECT_EQ(guard::add(q - 1, 1), 0u);
    EXPECT_EQ(guard::sub(0, q - 1), 1u);
    EXPECT_EQ(guard::mul(q - 1, q - 1), 1u);
    auto rng = testing::make_rng(701);
    for (int i = 0; i < 10000; i++) {
        const u64_t a = rng() % q, b = rng() % q;
        EXPECT_EQ(guard::mul(a, b), static_cast<u64_t>(static_cast<u128_t>(a) * b % q));
        const u64_t x = rng();
        EXPECT_EQ(guard::reduce(x), x % q);
        const u128_t wide = (static_cast<u128_t>(x) << 64 | rng()) >> 2;
        EXPECT_LT(guard::fold(wide), 3 * q);
        EXPECT_EQ(guard::fold(wide) % q, static_cast<u64_t>(wide % q));
    }
}

TEST(GuardResidue, PowersOfWords) {
    EXPECT_EQ(guard::word_power(0), 1u);
    constexpr u64_t B = guard::word_base;
    EXPECT_EQ(B, static_cast<u64_t>((u128_t{1} << 64) % guard::q));
    EXPECT_EQ(guard::word_power(1), B);
    EXPECT_EQ(guard::mul(guard::word_power(-1), B), 1u);
    auto rng = testing::make_rng(702);
    for (int i = 0; i < 200; i++) {
        const s64_t e = static_cast<s64_t>(rng() >> (rng() % 60 + 2));
        EXPECT_EQ(guard::word_power(e), guard::pow(B, static_cast<u64_t>(e)));
        EXPECT_EQ(guard::mul(guard::word_power(e), guard::word_power(-e)), 1u);
    }
}

TEST(GuardResidue, KernelAgainstTheReference) {
    auto rng = testing::make_rng(703);
    std::vector<upL_t> lengths(600);
    std::iota(lengths.begin(), lengths.end(), upL_t{0});
    for (const upL_t steps : {64u, 65u, 128u, 129u, 1023u, 1024u}) {
        for (const upL_t above : {0u, 1u, 11u}) lengths.push_back(12 * steps + above);
    }
    for (const upL_t L : lengths) {
        Words alternating(L);  // in vectors the largest sums of one sign, then of the other
        for (upL_t i = 0; i < L; i++) alternating[i] = i / 12 % 2 == 0 ? ~c64i{0} : 0;
        Words other(L);
        for (upL_t i = 0; i < L; i++) other[i] = ~alternating[i];
        for (const Words& words :
             {random_words(L, rng), Words(L, ~c64i{0}), Words(L, 0), alternating, other}) {
            for (const u64_t seed : {u64_t{0}, ~u64_t{0}, guard::q, rng()}) {
                ASSERT_EQ(guard::hash_words(words.data(), L, seed),
                          guard::hash_words_reference(words.data(), L, seed))
                    << L;
            }
        }
    }
}

TEST(GuardResidue, ByThreads) {
    auto rng = testing::make_rng(704);
    for (const upL_t L : {upL_t{1000}, hash_part_words, 2 * hash_part_words, 5 * hash_part_words + 3}) {
        const Words words = random_words(L, rng);
        const u64_t guarded = guard::hash_words_reference(words.data(), L, 0);
        const u64_t hash = residue::hash_words(words.data(), L);
        for (const u64_t threads : {1u, 2u, 3u, 7u, 16u}) {
            EXPECT_EQ(guard::hash_words_by_threads(words.data(), L, threads), guarded) << L << " " << threads;
            EXPECT_EQ(residue::hash_words_by_threads(words.data(), L, threads), hash) << L << " " << threads;
        }
    }
}

// Two bits at a distance of 61 or 122, one up and one down: the residue modulo 2^61 - 1 stays, this does not.
TEST(GuardResidue, SeesErrorsOfAPeriod) {
    auto rng = testing::make_rng(705);
    const Words right = random_words(64, rng);
    for (unsigned period = 61; period < 61 * 40; period += 61) {
        Words wrong = right;
        for (unsigned bit = 0; bit < 61 * 60; bit += 2 * period) {
            const auto flip = [&](unsigned at, bool up) {
                wrong[at / 64] &= ~(c64i{1} << at % 64);
                if (up) wrong[at / 64] |= c64i{1} << at % 64;
            };
            flip(bit, true);
            if (bit + period < 64 * 64) flip(bit + period, false);
        }
        Words other = wrong;  // the same pattern with the two bits exchanged
        for (unsigned bit = 0; bit + period < 61 * 60; bit += 2 * period) {
            other[bit / 64] ^= c64i{1} << bit % 64;
            other[(bit + period) / 64] ^= c64i{1} << (bit + period) % 64;
        }
        ASSERT_NE(other, wrong);
        EXPECT_EQ(residue::hash_words(other.data(), 64), residue::hash_words(wrong.data(), 64));
        EXPECT_NE(guard::hash_words(other.data(), 64), guard::hash_words(wrong.data(), 64));
    }
}

}  // namespace
}  // namespace znp
