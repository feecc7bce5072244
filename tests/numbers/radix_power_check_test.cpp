#include "multiply/kernels/residue.hpp"
#include "numbers/newton_test_support.hpp"
#include "numbers/radix_fraction.hpp"
#include "numbers/radix_power.hpp"
#include "numbers/radix_test_support.hpp"

namespace znp {
namespace {

using testing::CdiArray;
using testing::decimal_point;
using testing::random_words;
using testing::ten19;

// floor((integer + fraction) radix^e) mod p by the independent library.
u64_t expected_residue(cdi radix, u64_t e, cdi integer, const CdiArray& F) {
    mpz_t x, power;
    mpz_inits(x, power, nullptr);
    CdiArray words = F;
    words.push_back(integer);
    mpz_import(x, words.size(), -1, sizeof(cdi), 0, 0, words.data());
    mpz_ui_pow_ui(power, radix, e);
    mpz_mul(x, x, power);
    mpz_fdiv_q_2exp(x, x, 64 * F.size());
    const u64_t r = mpz_fdiv_ui(x, residue::p);
    mpz_clears(x, power, nullptr);
    return r;
}

u64_t checked_residue(cdi radix, u64_t e, cdi integer, const CdiArray& F, u64_t threads = 1) {
    testing::RadixWork work(power_check_size(radix, e, threads), threads);
    u64_t residue = ~u64_t{0};
    EXPECT_EQ(power_check(work.bp(), radix, e, integer, F.data(), F.size(), residue), 0);
    return residue;
}

TEST(PowerCheck, ResidueOfRandomNumbers) {
    auto rng = testing::make_rng(431);
    for (u64_t e = 0; e <= 1300; e += e < 400 ? 1 : 7) {
        const CdiArray F = random_words(e / 19 + 3, rng);
        const cdi integer = e % 3 == 0 ? rng() : rng() % 10;
        EXPECT_EQ(checked_residue(10, e, integer, F), expected_residue(10, e, integer, F)) << e;
    }
    for (const u64_t e : {2000u, 9973u, 20000u, 65536u, 116'000u, 117'000u, 600'000u}) {
        const CdiArray F = random_words(e / 19 + 3, rng);
        for (const u64_t threads : {1u, 2u, 3u, 7u, 16u}) {
            EXPECT_EQ(checked_residue(10, e, 3, F, threads), expected_residue(10, e, 3, F)) << e;
        }
    }
}

TEST(PowerCheck, FewAndManyFractionWords) {
    auto rng = testing::make_rng(432);
    for (const u64_t e : {1u, 19u, 500u, 3000u}) {
        for (const upL_t L : {upL_t{1}, upL_t{2}, upL_t{e / 40 + 1}, upL_t{e / 19 + 2}, upL_t{e}}) {
            const CdiArray F = random_words(L, rng);
            EXPECT_EQ(checked_residue(10, e, 1, F), expected_residue(10, e, 1, F)) << e << " " << L;
        }
    }
}

TEST(PowerCheck, OtherRadices) {
    auto rng = testing::make_rng(433);
    for (const cdi radix : {ten19, cdi{2}, cdi{3}, cdi{1} << 63, ~cdi{0}, cdi{1'000'000}}) {
        for (const u64_t e : {0u, 1u, 2u, 3u, 15u, 100u, 777u}) {
            const CdiArray F = random_words(e + 3, rng);
            EXPECT_EQ(checked_residue(radix, e, 2, F), expected_residue(radix, e, 2, F)) << radix << " " << e;
        }
    }
}

TEST(PowerCheck, FractionsThatEndAndAllOnes) {
    for (const u64_t e : {1u, 19u, 40u, 1000u, 10000u}) {
        for (const upL_t L : {upL_t{1}, upL_t{e / 19 + 3}}) {
            CdiArray F(L, 0);
            EXPECT_EQ(checked_residue(10, e, 7, F), expected_residue(10, e, 7, F));
            F.back() = cdi{1} << 63;
            EXPECT_EQ(checked_residue(10, e, 7, F), expected_residue(10, e, 7, F));
            F.assign(L, ~cdi{0});
            EXPECT_EQ(checked_residue(10, e, 7, F), expected_residue(10, e, 7, F));
        }
    }
}

// R of the converted words equals B of the binary fraction, as the run compares them.
TEST(PowerCheck, AgreesWithTheConversion) {
    auto rng = testing::make_rng(434);
    for (const u64_t digits : {1u, 18u, 19u, 20u, 300u, 2000u, 30000u}) {
        const upL_t n = digits / 19 + 3;
        const CdiArray F = random_words(n + 2, rng);
        const CdiArray words = testing::converted(F, n);
        const u64_t e = 19 * n - digits;
        const u64_t hash = residue::hash_radix64(words.data(), n, ten19, 0);
        CdiArray low = words;
        u64_t E = 0;  // the last e digits
        for (upL_t i = (e + 18) / 19; i-- > 0;) {
            const bool partial = 19 * (i + 1) > e;
            u64_t modulus = 1;
            for (u64_t k = 0; partial && k < e - 19 * i; k++) modulus *= 10;
            const u64_t word = partial ? words[i] % modulus : words[i];
            E = residue::add(residue::mul(E, residue::reduce(ten19)), residue::reduce(word));
        }
        const u64_t inverse = residue::pow(10, residue::p - 1 - e);
        const u64_t R = residue::mul(residue::sub(hash, E), inverse);
        EXPECT_EQ(R, checked_residue(10, digits, 0, F)) << digits;
    }
}

TEST(PowerCheck, WorkBufferAByteShort) {
    const upL_t need = power_check_size(10, 5000, 1);
    testing::Work work(need - 1);
    const CdiArray F(270, 1);
    u64_t residue = 0;
    const auto e = testing::caught<BufferTooSmallException>(
        [&] { EXPECT_EQ(power_check(work.bp(), 10, 5000, 0, F.data(), F.size(), residue), 0); });
    EXPECT_EQ(e.size_needed, need);
}

TEST(PowerCheck, TheStatusLineNamesTheSteps) {
    testing::Work work(power_check_size(10, 5000, 1));
    const CdiArray F(270, 1);
    u64_t residue = 0;
    const std::string text = testing::console_output([&] {
        StatusLine status(79, 0);
        EXPECT_EQ(power_check(work.bp(), 10, 5000, 0, F.data(), F.size(), residue, &status), 0);
    });
    EXPECT_NE(text.find("Powering...   "), std::string::npos);
    EXPECT_NE(text.find("Multiplying...    "), std::string::npos);
}

// ---- Sizes and checks of powers

TEST(RadixPower, SizesEnclosePowers) {
    for (const cdi radix : {ten19, cdi{10}, cdi{2}, cdi{3}, ~cdi{0}, cdi{1} << 63, cdi{1} << 32}) {
        for (u64_t e = 0; e < 3000; e += 1 + e / 50) {
            mpz_t power;
            mpz_init(power);
            mpz_ui_pow_ui(power, radix, e);
            const radix::PowerSize size = radix::power_size(radix, e);
            const upL_t words = (mpz_sizeinbase(power, 2) + 63) / 64;
            EXPECT_LE(size.least, words);
            EXPECT_GE(size.most, words);
            EXPECT_LE(size.most - size.least, 1u);
            EXPECT_EQ(size.zero_words, mpz_scan1(power, 0) / 64);
            mpz_clear(power);
        }
    }
}

TEST(RadixPower, AWrongBitFailsTheHash) {
    CdiArray P{ten19 * 1, 0};
    EXPECT_TRUE(radix::power_holds(ten19, 1, P.data(), 1, 0));
    P[0] ^= 1 << 20;
    const std::string text =
        testing::console_output([&] { EXPECT_FALSE(radix::power_holds(ten19, 1, P.data(), 1, 0)); });
    EXPECT_NE(text.find("Radix Conversion: Power Hash Mismatch"), std::string::npos);
    EXPECT_NE(text.find("Expected: "), std::string::npos);
    EXPECT_NE(text.find("Actual: "), std::string::npos);
    EXPECT_NE(text.find(std::to_string(residue::reduce(ten19))), std::string::npos);
}

// ---- Fractions

TEST(RadixFraction, TopWordsZeroFilledAndMoved) {
    const CdiArray F{1, 2, 3};
    CdiArray T(5);
    radix::load_fraction(T.data(), 5, F.data(), 3);
    EXPECT_EQ(T, (CdiArray{0, 256, 1, 2, 3}));
    T.resize(2);
    radix::load_fraction(T.data(), 2, F.data(), 3);
    EXPECT_EQ(T, (CdiArray{2, 259}));
}

TEST(RadixFraction, ACarryRipplesAndOnesAreMovedDown) {
    CdiArray T(4);
    const CdiArray F{5, ~cdi{0}, ~cdi{0}, 8};
    radix::load_fraction(T.data(), 4, F.data(), 4);
    EXPECT_EQ(T, (CdiArray{5, 255, 0, 9}));
    const CdiArray ones(4, ~cdi{0});
    radix::load_fraction(T.data(), 4, ones.data(), 4);
    EXPECT_EQ(T, (CdiArray{~cdi{0}, ~cdi{0} - 256, ~cdi{0}, ~cdi{0}}));
}

}  // namespace
}  // namespace znp
