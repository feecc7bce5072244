#include "numbers/radix_conversion.hpp"

#include "numbers/newton_test_support.hpp"
#include "numbers/radix_test_support.hpp"

namespace znp {
namespace {

using testing::CdiArray;
using testing::converts;
using testing::decimal_point;
using testing::enough_words;
using testing::random_words;
using testing::ten19;

constexpr u64_t thread_counts[] = {1, 2, 3, 7, 16};

TEST(RadixConversion, EveryShortLength) {
    auto rng = testing::make_rng(401);
    for (upL_t n = 1; n <= 300; n++) {
        EXPECT_TRUE(converts(random_words(enough_words(n), rng), n));
    }
}

TEST(RadixConversion, AroundEveryHalving) {
    auto rng = testing::make_rng(402);
    for (const upL_t base : {8u, 9u, 13u, 15u}) {
        for (upL_t h = base * 32; h <= 4000; h *= 2) {
            for (const upL_t n : {h - 1, h, h + 1}) {
                EXPECT_TRUE(converts(random_words(enough_words(n), rng), n));
            }
        }
    }
}

TEST(RadixConversion, ThreadsGiveTheSameWords) {
    auto rng = testing::make_rng(403);
    for (const upL_t n : {5u, 200u, 3840u, 3841u, 4097u, 5000u, 7681u, 8193u, 10000u, 12000u}) {
        const CdiArray F = random_words(enough_words(n), rng);
        const CdiArray words = testing::converted(F, n, 1);
        EXPECT_TRUE(converts(F, n));
        for (int run = 0; run < 5; run++) {
            for (const u64_t threads : thread_counts) EXPECT_EQ(testing::converted(F, n, threads), words);
        }
    }
}

TEST(RadixConversion, FewerAndMoreFractionWordsThanNeeded) {
    auto rng = testing::make_rng(404);
    for (const upL_t n : {1u, 7u, 15u, 16u, 31u, 100u, 777u}) {
        for (const upL_t L : {upL_t{1}, upL_t{2}, n / 2 + 1, n, n + 1, n + 2, n + 3, 3 * n}) {
            EXPECT_TRUE(converts(random_words(L, rng), n)) << L;
        }
    }
}

TEST(RadixConversion, ZeroFractionGivesZeroWords) {
    for (const upL_t n : {1u, 15u, 16u, 17u, 31u, 32u, 500u, 5000u}) {
        for (const upL_t L : {upL_t{0}, upL_t{1}, enough_words(n)}) {
            EXPECT_EQ(testing::converted(CdiArray(L, 0), n), CdiArray(n, 0)) << n;
        }
    }
}

TEST(RadixConversion, AllOnesGiveNines) {
    for (const upL_t n : {1u, 15u, 16u, 17u, 31u, 32u, 500u, 5000u}) {
        EXPECT_EQ(testing::converted(CdiArray(enough_words(n), ~cdi{0}), n), CdiArray(n, ten19 - 1)) << n;
        for (const upL_t L : {upL_t{1}, n / 2 + 1}) EXPECT_TRUE(converts(CdiArray(L, ~cdi{0}), n)) << L;
    }
}

TEST(RadixConversion, FractionsThatEndComeOutExactly) {
    // k / 2^m with m decimal digits at most 19 n: the digits end.
    auto rng = testing::make_rng(405);
    for (const upL_t n : {1u, 2u, 15u, 16u, 31u, 64u, 700u, 4000u}) {
        for (int i = 0; i < 6; i++) {
            const u64_t m = 1 + rng() % std::min<u64_t>(19 * n, 60);
            const CdiArray F{((rng() | 1) << (64 - m))};
            EXPECT_EQ(testing::converted(F, n, 2), testing::Expected(F, n, ten19).words) << m;
        }
        CdiArray half(enough_words(n), 0);
        half.back() = cdi{1} << 63;
        CdiArray digits(n, 0);
        digits.back() = ten19 / 2;
        EXPECT_EQ(testing::converted(half, n), digits) << n;
    }
}

// Runs of nines and zeros across every split: k 10^(-19 j) and its next neighbours, at every word j.
TEST(RadixConversion, NinesAndZerosAcrossEverySplit) {
    auto rng = testing::make_rng(406);
    for (const upL_t n : {14u, 16u, 17u, 31u, 40u, 61u, 64u}) {
        const upL_t L = enough_words(n);
        for (upL_t j = 1; j <= n; j++) {
            const cdi k = j == 1 ? 1 + rng() % (ten19 - 1) : rng() | 1;
            for (const long delta : {-2, -1, 0, 1, 2}) {
                EXPECT_TRUE(converts(decimal_point(L, k, j, delta), n)) << j << " " << delta;
                EXPECT_TRUE(converts(decimal_point(n - n / 4, k, j, delta), n)) << j << " " << delta;
            }
        }
    }
}

TEST(RadixConversion, NinesAndZerosInLongConversions) {
    auto rng = testing::make_rng(407);
    for (const upL_t n : {500u, 1023u, 3900u, 4800u}) {
        for (int i = 0; i < 8; i++) {
            const upL_t j = i < 3 ? (n + 1) / 2 + static_cast<upL_t>(i) - 1 : 1 + rng() % n;
            const long delta = static_cast<long>(rng() % 5) - 2;
            EXPECT_TRUE(converts(decimal_point(enough_words(n), rng() >> 2, j, delta), n, 2)) << j;
        }
    }
}

TEST(RadixConversion, RunsOfOnesAndZerosInTheFraction) {
    auto rng = testing::make_rng(408);
    for (int i = 0; i < 200; i++) {
        const upL_t n = 1 + rng() % 400;
        EXPECT_TRUE(converts(testing::random_mantissa(enough_words(n), rng), n));
    }
}

TEST(RadixConversion, OtherRadices) {
    auto rng = testing::make_rng(409);
    constexpr cdi radices[] = {
        10, 3, u64_t{1} << 32, u64_t{1} << 63, ~u64_t{0}, 1'000'000'000, 12'157'665'459'056'928'801u};
    for (const cdi radix : radices) {
        for (const upL_t n : {1u, 15u, 16u, 33u, 300u, 1000u}) {
            EXPECT_TRUE(converts(random_words(enough_words(n), rng), n, 1, radix)) << radix;
        }
    }
}

TEST(RadixConversion, FewerThan16WordsNeedNoTable) {
    for (const upL_t n : {1u, 15u, 16u}) {
        auto rng = testing::make_rng(412);
        const CdiArray F = random_words(enough_words(n), rng);
        testing::Work work(cbr_table_size(ten19, n, 2));
        CdiArray out(n);
        const std::string text = testing::console_output([&] {
            StatusLine line(79, 0);
            EXPECT_EQ(convert(work.bp(), ten19, out.data(), n, F.data(), F.size(), &line), 0);
        });
        EXPECT_EQ(text.find("Squaring") != std::string::npos, n == 16) << n;
        EXPECT_EQ(out, testing::Expected(F, n, ten19).words) << n;
    }
}

// ---- Beyond the floating-point transform

TEST(RadixConversion, LongConversionsOnThreads) {
    auto rng = testing::make_rng(411);
    // 12,372 words: the longest product of the floating-point transform is the top cut's; below and above.
    for (const upL_t n : {12'300u, 12'400u, 16'384u, 33'001u}) {
        const CdiArray F = random_words(enough_words(n), rng);
        EXPECT_TRUE(converts(F, n));
        const CdiArray words = testing::converted(F, n, 1);
        for (const u64_t threads : {u64_t{2}, u64_t{3}, u64_t{7}, u64_t{16}}) {
            EXPECT_EQ(testing::converted(F, n, threads), words) << n << " " << threads;
        }
    }
}

TEST(RadixConversion, EdgesOfLongConversions) {
    for (const upL_t n : {13'000u, 20'000u}) {
        for (const long delta : {-1, 0, 1}) {
            EXPECT_TRUE(converts(decimal_point(enough_words(n), 7, n / 2, delta), n, 2)) << n << " " << delta;
        }
        EXPECT_EQ(testing::converted(CdiArray(n, 0), n, 2), CdiArray(n, 0)) << n;
        EXPECT_EQ(testing::converted(CdiArray(enough_words(n), ~cdi{0}), n, 2), CdiArray(n, ten19 - 1)) << n;
        EXPECT_TRUE(converts(CdiArray{cdi{1} << 63}, n, 2)) << n;
    }
}

TEST(RadixConversion, WorkBufferAByteShort) {
    for (const upL_t n : {1u, 100u, 4000u}) {
        const upL_t need = cbr_table_size(ten19, n, 2);
        testing::Work work(need - 1);
        BasicParameters bp = work.bp();
        bp.tds = 2;
        CdiArray out(n);
        const CdiArray F(n, 1);
        const auto e = testing::caught<BufferTooSmallException>(
            [&] { EXPECT_EQ(convert(bp, ten19, out.data(), n, F.data(), n), 0); });
        EXPECT_EQ(e.size_needed, need);
        EXPECT_EQ(e.size_given, need - 1);
    }
}

TEST(RadixConversion, SizesThatCannotBeConverted) {
    EXPECT_EQ(cbr_table_size(1, 10, 1), ~upL_t{0});
    EXPECT_EQ(cbr_table_size(0, 10, 1), ~upL_t{0});
    EXPECT_EQ(cbr_table_size(ten19, 0, 1), ~upL_t{0});
    EXPECT_EQ(cbr_table_size(ten19, ~upL_t{0}, 1), ~upL_t{0});
}

TEST(RadixConversion, TheStatusLineShowsTheCuts) {
    const upL_t n = 4000;
    auto rng = testing::make_rng(410);
    const CdiArray F = random_words(n + 2, rng);
    for (const u64_t threads : {u64_t{1}, u64_t{2}}) {
        testing::Work work(cbr_table_size(ten19, n, threads));
        BasicParameters bp = work.bp();
        bp.tds = threads;
        CdiArray out(n);
        const std::string text = testing::console_output([&] {
            StatusLine status(79, 0);
            EXPECT_EQ(convert(bp, ten19, out.data(), n, F.data(), F.size(), &status), 0);
        });
        EXPECT_NE(text.find("Squaring...    "), std::string::npos);
        EXPECT_NE(text.find("Converting...  "), std::string::npos);
        // 4000 words are 76,000 digits; the second half of the cut is what is left of 250 << 4 words.
        EXPECT_EQ(text.find(" -> 2 x 76001") != std::string::npos, threads == 2);
        EXPECT_EQ(text.find(" -> 1 x 76001") != std::string::npos, threads == 1);
        EXPECT_NE(text.find("100.0 %"), std::string::npos);
    }
}

}  // namespace
}  // namespace znp
