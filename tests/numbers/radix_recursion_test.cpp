#include "numbers/radix_recursion.hpp"

#include <algorithm>
#include <array>
#include <functional>
#include <optional>

#include "multiply/dispatch.hpp"
#include "multiply/kernels/residue.hpp"
#include "numbers/newton_test_support.hpp"
#include "numbers/radix_plan.hpp"
#include "numbers/radix_power.hpp"
#include "numbers/radix_test_support.hpp"

namespace znp {
namespace {

using testing::CdiArray;
using testing::enough_words;
using testing::random_words;
using testing::ten19;

constexpr cdi nine = ten19 - 1;

// ---- Shape of the conversion

TEST(RadixShape, HalvingsAndLeafLengths) {
    using Halvings = std::pair<upL_t, upL_t>;
    const auto halvings = [](upL_t n) {
        const CBR_shape shape(ten19, n);
        return Halvings(shape.levels, shape.base);
    };
    EXPECT_EQ(halvings(1), Halvings(0, 1));
    EXPECT_EQ(halvings(15), Halvings(0, 15));
    EXPECT_EQ(halvings(16), Halvings(1, 8));
    EXPECT_EQ(halvings(30), Halvings(1, 15));
    EXPECT_EQ(halvings(31), Halvings(2, 8));
    EXPECT_EQ(halvings(60), Halvings(2, 15));
    EXPECT_EQ(halvings(61), Halvings(3, 8));
    EXPECT_EQ(halvings(5'263'161), Halvings(19, 11));
    for (upL_t n = 16; n < 100'000; n += 1 + n / 37) {
        const CBR_shape shape(ten19, n);
        EXPECT_GE(shape.base, 8u);
        EXPECT_LE(shape.base, 15u);
        EXPECT_GE(shape.base << shape.levels, n);
        EXPECT_LT(shape.base << (shape.levels - 1), n);
    }
}

TEST(RadixShape, APieceOfExactlyAPowerIsCutOneLevelLower) {
    const CBR_shape shape(ten19, 4000);
    for (unsigned k = 1; k < shape.levels; k++) {
        EXPECT_EQ(shape.cut_level(shape.base << k, shape.levels), k - 1);
        EXPECT_EQ(shape.cut_level((shape.base << k) + 1, shape.levels), k);
        EXPECT_EQ(shape.cut_level(shape.base << k, k), k - 1);
    }
}

TEST(RadixShape, ProductLengthsGrowWithTheLevel) {
    for (upL_t n = 16; n < 10'000'000; n += 1 + n / 61) {
        const CBR_shape shape(ten19, n);
        for (unsigned k = 1; k < shape.levels; k++) EXPECT_GT(shape.lengths[k], shape.lengths[k - 1]) << n;
    }
}

TEST(RadixShape, PowersWithoutTheirZeroWords) {
    const CBR_shape shape(ten19, 4000);
    EXPECT_EQ(shape.radix, ten19);
    EXPECT_NEAR(shape.radix_bits, 63.11663380285988, 1e-12);
    EXPECT_NEAR(shape.words_per_radix, 63.11663380285988 / 64, 1e-12);
    for (unsigned k = 0; k < shape.levels; k++) {
        EXPECT_EQ(shape.overlap[k], 19 * shape.exponent(k) / 64);
        EXPECT_EQ(shape.sizes[k], radix::power_size(ten19, shape.exponent(k)).most);
    }
}

// A fraction and the unused words below it fit the regions of the two pieces, at every cut.
TEST(RadixShape, RegionsHoldTheFractions) {
    for (const cdi radix : {ten19, cdi{10}, ~cdi{0}}) {
        for (upL_t n = 1; n < 30'000; n += 1 + n / 23) {
            const CBR_shape shape(radix, n);
            unsigned level = shape.levels;
            for (upL_t m = n; !CBR_shape::is_leaf(m); m -= shape.base << level) {
                level = shape.cut_level(m, level);
                const upL_t h = shape.base << level;
                EXPECT_GT(shape.region_words(m), shape.fraction_words(m)) << n;
                EXPECT_GE(shape.region_words(h), shape.fraction_words(h)) << n;
                EXPECT_EQ(shape.region_words(m), shape.region_words(h) + shape.region_words(m - h)) << n;
            }
        }
    }
}

// ---- Parallel plan

TEST(RadixPlan, EightLevelsNeverFork) {
    struct Case {
        upL_t n;
        u64_t threads;
        unsigned thread_levels;
        u64_t tasks;
    };
    // 15 << 8 = 3840 words have eight levels.
    for (const Case& c : {Case{3840, 16, 0, 1},
                          {3841, 1, 0, 1},
                          {3841, 2, 1, 2},
                          {3841, 16, 1, 2},
                          {7681, 16, 2, 4},
                          {7681, 3, 2, 3},
                          {12'000, 16, 2, 4},
                          {12'000, 7, 2, 4},
                          {10, 4, 0, 1}}) {
        const CBR_ParallelPlan plan = znp_CBRv2_ci_btrf_ap_make(CBR_shape(ten19, c.n), c.threads);
        EXPECT_EQ(plan.thread_levels, c.thread_levels) << c.n << " " << c.threads;
        EXPECT_EQ(plan.task_count, c.tasks) << c.n << " " << c.threads;
    }
}

TEST(RadixPlan, TasksOfAllDepthsFitTheirParents) {
    const CBR_shape shape(ten19, 8000);
    const CBR_ParallelPlan plan = znp_CBRv2_ci_btrf_ap_make(shape, 3);
    EXPECT_EQ(plan.at[0].threads, 3u);
    EXPECT_EQ(plan.at[1].threads, 2u);
    EXPECT_GE(plan.task_bytes(0, 3), plan.task_bytes(1, 2) + plan.task_bytes(1, 1));
    EXPECT_GE(plan.task_bytes(1, 2), 2 * plan.task_bytes(2, 1));
    EXPECT_GE(plan.task_bytes(1, 1), shape.product_bytes(shape.levels - 2, 1));
}

TEST(RadixPlan, AnotherThreadCountIsInconsistent) {
    const CBR_ParallelPlan plan = znp_CBRv2_ci_btrf_ap_make(CBR_shape(ten19, 8000), 7);
    for (const u64_t threads : {u64_t{8}, u64_t{5}, u64_t{1}}) {
        const auto e = testing::caught<zn_exception>([&] { plan.task_bytes(0, threads); });
        EXPECT_STREQ(e.message, "znp_CBRv2_ci_btrf_ap_make(): Thread Inconsistancy");
    }
}

// ---- Overlap of two pieces

TEST(OverlapRepair, EqualWordsChangeNothing) {
    CdiArray first{1, 2, 3};
    EXPECT_TRUE(repair_overlap(first.data(), 3, ten19, 77, 77));
    EXPECT_EQ(first, (CdiArray{1, 2, 3}));
}

TEST(OverlapRepair, ACarryRipplesThroughNines) {
    CdiArray first{nine, nine, 5, nine};
    EXPECT_TRUE(repair_overlap(first.data(), 4, ten19, nine, 0));
    EXPECT_EQ(first, (CdiArray{0, 0, 6, nine}));
    first = {nine, nine};
    EXPECT_TRUE(repair_overlap(first.data(), 2, ten19, nine, 0));
    EXPECT_EQ(first, (CdiArray{0, 0}));
}

TEST(OverlapRepair, ABorrowRipplesThroughZeros) {
    CdiArray first{0, 0, 5, 0};
    EXPECT_TRUE(repair_overlap(first.data(), 4, ten19, 0, nine));
    EXPECT_EQ(first, (CdiArray{nine, nine, 4, 0}));
    first = {0, 0};
    EXPECT_TRUE(repair_overlap(first.data(), 2, ten19, 0, nine));
    EXPECT_EQ(first, (CdiArray{nine, nine}));
}

TEST(OverlapRepair, ADifferenceOfExactlyOneIsAccepted) {
    const CdiArray words{nine, 0, 3};
    for (const auto& [t, b] : {std::pair<cdi, cdi>{4, 5}, {5, 4}, {0, 1}, {1, 0}, {nine, nine - 1}}) {
        CdiArray first = words;
        EXPECT_TRUE(repair_overlap(first.data(), 3, ten19, t, b));
        EXPECT_EQ(first, words);
    }
}

TEST(OverlapRepair, ALargerDifferenceIsAnError) {
    const CdiArray words{nine, 0, 3};
    for (const auto& [t, b] : {std::pair<cdi, cdi>{4, 6}, {6, 4}, {0, nine - 1}, {nine, 1}, {1, nine}}) {
        CdiArray first = words;
        EXPECT_FALSE(repair_overlap(first.data(), 3, ten19, t, b));
        EXPECT_EQ(first, words);
    }
}

// ---- Faults

// A table that has been built, ready for one conversion.
struct BuiltTable {
    BuiltTable(upL_t n, u64_t threads)
        : table(CBR_shape(ten19, n)),
          plan(znp_CBRv2_ci_btrf_ap_make(table, threads)),
          powers(table.powers_words()),
          kept(total_image_bytes()),
          work(std::max(plan.at[0].bytes, table.product_bytes(table.levels - 1, threads))),
          fraction(table.region_words(n), 0),
          out(n) {
        bp = work.bp();
        bp.tds = threads;
        EXPECT_EQ(table.build(bp, powers.data(), kept.bp().M, nullptr), 0);
    }
    upL_t total_image_bytes() const {
        upL_t bytes = 32;
        for (unsigned i = 0; i + 1 < table.levels; i++) bytes += table.image_bytes(i);
        return bytes;
    }
    int run() {
        cdi overlap = 0;
        const RadixPiece all{out.data(), out.size(), fraction.data() + fraction.size(), table.levels};
        return znq_CBRv2_ci_btrf_T(bp, table, plan, 0, all, overlap, nullptr);
    }
    // The top bits of the first words of a level's image.
    void corrupt(unsigned level) {
        auto* words = reinterpret_cast<c64i*>(const_cast<std::byte*>(table.images[level]));
        if (table.is_direct(level)) {
            for (upL_t i = 1; i < 6; i++) words[i] ^= u64_t{1} << 52;
        } else {  // the signs of all points: the transform of another number
            const upL_t points = table.transforms[level]->transform_bytes / sizeof(double);
            for (upL_t i = 0; i < points; i++) words[i] ^= u64_t{1} << 63;
        }
    }

    CBR_table table;
    CBR_ParallelPlan plan;
    CdiArray powers;
    testing::Work kept, work;
    CdiArray fraction, out;
    BasicParameters bp;
};

// What a run with a fault returns; nothing where a transform's own check saw the fault before.
std::optional<int> error_of(const std::function<int()>& run, std::string& text) {
    std::optional<int> error;
    text = testing::console_output([&] {
        try {
            error = run();
        } catch (const ArithmeticFailure&) {
        }
    });
    EXPECT_TRUE(error || text.find("Redundancy Check Failed:") != std::string::npos) << text;
    return error;
}

TEST(RadixFaults, AWrongPowerIsAnOverlapError) {
    auto rng = testing::make_rng(441);
    constexpr upL_t n = 4500;
    int overlaps = 0;
    for (unsigned level = 0; level < CBR_shape(ten19, n).levels; level++) {
        for (const u64_t threads : {u64_t{1}, u64_t{2}}) {
            BuiltTable built(n, threads);
            for (cdi& word : built.fraction) word = rng();
            built.corrupt(level);
            std::string text;
            const std::optional<int> error = error_of([&] { return built.run(); }, text);
            if (!error) continue;
            overlaps++;
            EXPECT_EQ(*error, 0x10000002) << level;
            const bool top = threads == 2 && level + 1 == built.table.levels;
            const char* const name =
                top ? "znq_CBRv2_ci_btrf_T(): Overlap Mismatch" : "znh_CBRv2_ci_btrf_L(): Overlap Mismatch";
            EXPECT_NE(text.find(name), std::string::npos) << level << text;
            EXPECT_NE(text.find("Expected: "), std::string::npos);
            EXPECT_NE(text.find("Actual: "), std::string::npos);
        }
    }
    EXPECT_EQ(overlaps, 2 * static_cast<int>(CBR_shape(ten19, n).levels));
}

TEST(RadixFaults, AZeroFractionHasAZeroOverlap) {
    BuiltTable built(1000, 1);
    cdi overlap = 1;
    const RadixPiece all{built.out.data(), 1000, built.fraction.data() + built.fraction.size(),
                         built.table.levels};
    EXPECT_EQ(znh_CBRv2_ci_btrf_L(built.table, all, overlap, built.bp.M, nullptr), 0);
    EXPECT_EQ(overlap, 0u);
    EXPECT_EQ(built.out, CdiArray(1000, 0));
}

TEST(RadixFaults, WrongTransformsFailThePowersHash) {
    const CdiArray F(1000, 0x123456789abcdef);
    testing::BadTables bad;
    testing::Work work(std::max(cbr_table_size(ten19, 1000, 1), power_check_size(10, 19'000, 1)));
    BasicParameters bp = work.bp();
    bp.holder = &bad.holder;
    CdiArray out(1000);
    u64_t residue = 0;
    for (const bool check : {false, true}) {
        std::string text;
        const std::optional<int> error = error_of(
            [&] {
                return check ? power_check(bp, 10, 19'000, 3, F.data(), F.size(), residue)
                             : convert(bp, ten19, out.data(), 1000, F.data(), F.size());
            },
            text);
        if (!error) continue;
        EXPECT_EQ(*error, 1);
        EXPECT_TRUE(text.find("Radix Conversion: Power Hash Mismatch") != std::string::npos || !check);
    }
}

// A power of so few words is made without transforms; its product with the fraction is not.
TEST(RadixFaults, AWrongTransformFailsTheProductsHash) {
    constexpr u64_t e = 1060;
    const CdiArray F(100, 0x123456789abcdef);
    testing::BadTables bad;
    testing::Work work(power_check_size(10, e, 1));
    BasicParameters bp = work.bp();
    bp.holder = &bad.holder;
    u64_t residue = 0;
    std::string text;
    const std::optional<int> error =
        error_of([&] { return power_check(bp, 10, e, 3, F.data(), F.size(), residue); }, text);
    if (!error) return;
    EXPECT_EQ(*error, 1);
    EXPECT_NE(text.find("Radix Conversion: Product Hash Mismatch"), std::string::npos) << text;
    EXPECT_NE(text.find("Expected: "), std::string::npos);
    EXPECT_NE(text.find("Actual: "), std::string::npos);
}

// ---- Independent digits

// floor(sqrt(2) 10^d) mod 2^61 - 1, computed elsewhere.
TEST(RadixConversion, SquareRootOfTwo) {
    constexpr std::array<std::pair<u64_t, u64_t>, 2> golden{
        {{100, 890894146615242185u}, {1000, 2205338105395037691u}}};
    for (const auto& [digits, expected] : golden) {
        const upL_t n = digits / 19 + 3;
        const upL_t L = enough_words(n);
        mpz_t x;
        mpz_init_set_ui(x, 2);
        mpz_mul_2exp(x, x, 128 * L);
        mpz_sqrt(x, x);
        CdiArray F(L + 1);
        mpz_export(F.data(), nullptr, -1, sizeof(cdi), 0, 0, x);
        mpz_clear(x);
        ASSERT_EQ(F.back(), 1u);
        F.pop_back();

        testing::Work work(power_check_size(10, digits, 1));
        u64_t residue = 0;
        EXPECT_EQ(power_check(work.bp(), 10, digits, 1, F.data(), L, residue), 0);
        EXPECT_EQ(residue, expected);
        const CdiArray words = testing::converted(F, n);
        EXPECT_EQ(words.back(), 4142135623730950488u);
        EXPECT_EQ(words[n - 2], 168872420969807856u);
    }
}

// The check multiplies by lengths that the conversion does not have.
TEST(PowerCheck, SharesNoTransformLengthWithTheConversion) {
    for (const u64_t digits :
         {u64_t{5000}, u64_t{20'000}, u64_t{50'000}, u64_t{1'000'000}, u64_t{100'000'000}}) {
        const CBR_shape shape(ten19, digits / 19 + 3);
        std::vector<upL_t> lengths;
        for (unsigned i = 0; i < shape.levels; i++) lengths.push_back(shape.lengths[i]);
        for (u64_t e = digits / 2; e > 500; e /= 2) {
            const radix::PowerSize size = radix::power_size(10, e);
            for (upL_t L = size.least_stripped(); L <= size.most_stripped() + 1; L++) {
                EXPECT_EQ(std::count(lengths.begin(), lengths.end(), 2 * L), 0) << digits << " " << e;
            }
        }
        const radix::PowerSize size = radix::power_size(10, digits);
        EXPECT_EQ(std::count(lengths.begin(), lengths.end(), size.most + 2 + size.most_stripped()), 0);
    }
}

}  // namespace
}  // namespace znp
