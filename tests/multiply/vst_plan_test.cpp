// The prime sets and size plans of the large transform.
#include <gmp.h>
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "multiply/vst/prime_sets.hpp"
#include "multiply/vst/redundancy.hpp"
#include "multiply/vst/size_plan.hpp"
#include "multiply/vst/vst_stages.hpp"
#include "multiply/vst_test_support.hpp"

namespace znp::vst {
namespace {

using testing::caught;
using testing::console_output;
using testing::Integer;

std::vector<const PrimeSet*> all_sets() {
    std::vector<const PrimeSet*> sets;
    for (unsigned a = 4; a <= 9; ++a) {
        for (unsigned b = 1; b <= 7; b += 2) sets.push_back(&prime_set(a, b));
    }
    return sets;
}

unsigned long order_of(const PrimeSet& set) {
    return static_cast<unsigned long>(set.b) << set.max_c;
}

TEST(VSTPrimeSets, LongestTransforms) {
    const unsigned expected[6][4] = {{43, 41, 39, 39}, {42, 39, 39, 38}, {42, 39, 39, 38},
                                     {41, 39, 38, 38}, {40, 39, 38, 37}, {40, 39, 38, 37}};
    for (const PrimeSet* set : all_sets()) EXPECT_EQ(set->max_c, expected[set->a - 4][set->b / 2]);
}

TEST(VSTPrimeSets, KnownPrimes) {
    const double four[] = {263882790666241, 255086697644033, 96757023244289, 79164837199873};
    const double five[] = {263882790666241, 255086697644033, 215504279044097, 171523813933057,
                           96757023244289};
    EXPECT_TRUE(std::equal(std::begin(four), std::end(four), prime_set(4, 1).primes));
    EXPECT_TRUE(std::equal(std::begin(five), std::end(five), prime_set(5, 1).primes));
    EXPECT_EQ(prime_set(9, 7).primes[0], 271304494153729.0);
    EXPECT_EQ(prime_set(9, 7).primes[8], 163552354631681.0);
}

// No prime of the form below 2^48 is left out.
TEST(VSTPrimeSets, TheLargestPrimes) {
    Integer candidate;
    for (const PrimeSet* set : all_sets()) {
        const unsigned long step = order_of(*set);
        unsigned s = 0;
        for (unsigned long h = ((1UL << 48) - 2) / step; s < set->a; --h) {
            ASSERT_GT(h, 0u);
            mpz_set_ui(candidate.value, h * step + 1);
            if (mpz_probab_prime_p(candidate.value, 30) != 0) {
                ASSERT_EQ(set->primes[s], static_cast<double>(h * step + 1));
                ++s;
            }
        }
    }
}

TEST(VSTPrimeSets, RootsHaveTheirOrder) {
    Integer root, p, power;
    for (const PrimeSet* set : all_sets()) {
        for (unsigned s = 0; s < set->a; ++s) {
            mpz_set_d(p.value, set->primes[s]);
            mpz_set_d(root.value, set->roots[s]);
            EXPECT_LE(std::fabs(set->roots[s]), set->primes[s] / 2);
            const unsigned long order = order_of(*set);
            mpz_powm_ui(power.value, root.value, order, p.value);
            EXPECT_EQ(mpz_cmp_ui(power.value, 1), 0);
            mpz_powm_ui(power.value, root.value, order / 2, p.value);
            EXPECT_NE(mpz_cmp_ui(power.value, 1), 0);
            mpz_powm_ui(power.value, root.value, order / set->b, p.value);
            EXPECT_TRUE(set->b == 1 || mpz_cmp_ui(power.value, 1) != 0);
        }
    }
}

TEST(VSTPrimeSets, MultipliersOfTheInput) {
    for (const PrimeSet* set : all_sets()) {
        const unsigned step = 48u - set->max_c;
        EXPECT_TRUE(set->input_power == 0 || set->input_power == set->a / 2 - 1);
        EXPECT_LE(step * set->input_power, 27u);
        for (unsigned s = 0; s < set->a; ++s) {
            EXPECT_EQ(std::ldexp(set->multipliers[s], set->max_c) + 1, set->primes[s]);
            EXPECT_LT(set->multipliers[s], std::ldexp(1.0, static_cast<int>(step)));
        }
    }
}

TEST(VSTPrimeSets, InverseScale) {
    Integer x, p;
    for (const PrimeSet* set : all_sets()) {
        for (unsigned c = 9; c <= set->max_c; ++c) {
            for (unsigned s = 0; s < set->a; ++s) {
                const double scale = inverse_scale(*set, s, c);
                EXPECT_LE(std::fabs(scale), set->primes[s] / 2);
                mpz_set_d(p.value, set->primes[s]);
                mpz_set_d(x.value, scale);
                mpz_mul_ui(x.value, x.value, set->b);
                mpz_mul_2exp(x.value, x.value, c);
                for (unsigned i = 0; i < 2u * set->input_power; ++i)
                    mpz_mul_ui(x.value, x.value, static_cast<unsigned long>(set->multipliers[s]));
                for (unsigned other = 0; other < set->a; ++other) {
                    if (other != s)
                        mpz_mul_ui(x.value, x.value, static_cast<unsigned long>(set->primes[other]));
                }
                mpz_mod(x.value, x.value, p.value);
                EXPECT_EQ(mpz_cmp_ui(x.value, 1), 0) << int(set->a) << " " << int(set->b) << " " << c;
            }
        }
    }
}

// ---- Size plans ------------------------------------------------------------------------------------------

bool is_row(const SizePlanRow& row, unsigned a, unsigned b, unsigned c) {
    return row.geometry() == Geometry{a, b, c};
}

TEST(VSTSizePlan, TheMainPlan) {
    const auto plan = main_plan();
    ASSERT_EQ(plan.size(), 159u);
    const SizePlanRow first[] = {{4, 1, 10}, {5, 1, 10}, {4, 3, 9}, {6, 1, 10},
                                 {7, 1, 10}, {8, 1, 10}, {6, 3, 9}, {9, 1, 10}};
    for (unsigned k = 0; k < 8; ++k) EXPECT_TRUE(is_row(plan[k], first[k].a, first[k].b, first[k].c));
    EXPECT_EQ(plan.front().capacity(), 73728u);
    EXPECT_TRUE(is_row(plan.back(), 8, 1, 28));
    EXPECT_EQ(plan.back().capacity(), 45097156608u);
    for (const SizePlanRow& row : plan) EXPECT_TRUE(row.c >= 9 && row.c <= 28);
}

TEST(VSTSizePlan, TheLargePlan) {
    const auto plan = large_plan();
    ASSERT_EQ(plan.size(), 296u);
    EXPECT_TRUE(is_row(plan.front(), 4, 1, 12));
    EXPECT_EQ(plan.front().capacity(), 294912u);
    EXPECT_TRUE(is_row(plan.back(), 4, 1, 43));
    EXPECT_EQ(plan.back().capacity(), 633318697598976u);
    for (const SizePlanRow& row : plan) EXPECT_TRUE(row.c >= 11 && row.c <= 43);
}

// Each row: its capacity, its place, that its primes have roots for it, levels enough, and that the primes'
// product exceeds every coefficient (the quotient of the recovery wants 1.29 bits more) and leaves the bound
// of the redundancy check a meaning.
TEST(VSTSizePlan, EveryRowIsExact) {
    Integer product, coefficient, largest;
    for (const auto plan : {main_plan(), large_plan()}) {
        u64_t before = 0;
        for (const SizePlanRow& row : plan) {
            const PrimeSet& set = prime_set(row.a, row.b);
            const Geometry g = row.geometry();
            EXPECT_EQ(row.capacity(), ((48u * row.a - 48u) * u64_t{row.b}) << (row.c - 1u));
            EXPECT_GT(row.capacity(), before);
            before = row.capacity();
            EXPECT_LE(row.c, set.max_c);
            EXPECT_GE(g.levels(), 4u);

            // (2^input_bits - 1)^2 points, in whole and above 2 input_bits
            mpz_set_ui(largest.value, 1);
            mpz_mul_2exp(largest.value, largest.value, g.input_bits());
            mpz_sub_ui(largest.value, largest.value, 1);
            mpz_mul(coefficient.value, largest.value, largest.value);
            mpz_mul_ui(coefficient.value, coefficient.value, g.points());
            mpz_set_ui(product.value, 1);
            for (unsigned s = 0; s < row.a; ++s)
                mpz_mul_ui(product.value, product.value, static_cast<unsigned long>(set.primes[s]));
            // product >= 2^1.29 coefficient: 2^1.29 = 2.4453 rounded up
            mpz_mul_ui(coefficient.value, coefficient.value, 24453);
            mpz_mul_ui(product.value, product.value, 10000);
            EXPECT_GE(mpz_cmp(product.value, coefficient.value), 0);

            mpz_tdiv_q_ui(coefficient.value, coefficient.value, 24453);
            mpz_tdiv_q_2exp(coefficient.value, coefficient.value, 2 * g.input_bits());
            EXPECT_LT(mpz_get_ui(coefficient.value), redundancy_bound(g));
            mpz_tdiv_q_2exp(product.value, product.value, 2 * g.input_bits());
            mpz_tdiv_q_ui(product.value, product.value, 10000);
            EXPECT_LT(redundancy_bound(g) / 2, mpz_get_ui(product.value));
        }
    }
}

TEST(VSTSizePlan, LookupAtEveryBoundary) {
    u64_t before = 0;
    for (const SizePlanRow& row : main_plan()) {
        EXPECT_EQ(&find_size(before + 1), &row);
        EXPECT_EQ(&find_size(row.capacity()), &row);
        before = row.capacity();
    }
    for (const SizePlanRow& row : large_plan()) {
        if (row.capacity() <= main_plan().back().capacity()) continue;
        EXPECT_EQ(&find_size(before + 1), &row);
        EXPECT_EQ(&find_size(row.capacity()), &row);
        before = row.capacity();
    }
    EXPECT_EQ(&find_size(0), &main_plan().front());
    console_output([&] {
        const auto e = caught<zn_exception>([&] { find_size(before + 1); });
        EXPECT_EQ(e.code, error_code::size_beyond_tables);
    });
}

// Rows of a column stand at one distance, and not at one that is a multiple of a large power of two.
TEST(VSTGeometry, GapsKeepColumnsApart) {
    unsigned with_gaps = 0;
    for (const auto plan : {main_plan(), large_plan()}) {
        for (const SizePlanRow& row : plan) {
            const Geometry g = row.geometry();
            SCOPED_TRACE(::testing::Message() << g.a << " " << g.b << " " << g.c);
            const u64_t group = u64_t{1} << g.part_levels();
            const upL_t block = g.block_vectors() * 4;
            EXPECT_LE(group * g.block_bytes(), max_part_bytes);
            for (const u64_t i : {u64_t{0}, u64_t{1}, group - 2, group - 1, group, 3 * group - 1})
                EXPECT_EQ(g.block_offset(i + 1),
                          g.block_offset(i) + block + ((i + 1) % group == 0 ? g.gap_bytes() / 8 : 0));
            for (unsigned k = g.part_levels(); k < g.levels(); k++)
                EXPECT_EQ(g.block_offset(5 + (u64_t{3} << k)), g.block_offset(5) + 3 * g.distance(k));
            EXPECT_EQ(g.image_bytes(), 8 * (g.block_offset(g.blocks() - 1) + block) + g.gap_bytes());
            EXPECT_LE(g.image_bytes(), g.blocks() * g.block_bytes() / 100 * 101);
            const Stages stages(g.levels(), g.part_levels(), 0, g.max_column_levels());
            EXPECT_LE(stages.count, Stages::max_count);
            for (unsigned i = 0; i < stages.count; i++) EXPECT_LE(stages.levels[i], g.max_column_levels());
            if (!g.has_gaps()) continue;
            with_gaps++;
            EXPECT_EQ(g.gap_bytes() / 64 % 2, 1u);
            EXPECT_GE(g.gap_bytes(), g.row() * 32 - 32);
        }
    }
    EXPECT_GT(with_gaps, 100u);
}

// ---- Tables ----------------------------------------------------------------------------------------------

TEST(VSTTablePlan, APartOfTooFewLevelsIsRefused) {
    for (const unsigned b : {1u, 3u, 5u, 7u}) {
        for (const unsigned a : {4u, 9u}) {
            const Geometry g{a, b, block_t(b) + 3}, shorter{a, b, block_t(b) + 2};
            EXPECT_NE(testing::VSTTablesOf(std::span(&g, 1)).holder.vst->sets[a - 3][b / 2], nullptr);
            const std::string output = console_output([&] {
                const auto e = caught<zn_exception>([&] { testing::VSTTablesOf(std::span(&shorter, 1)); });
                EXPECT_EQ(e.code, error_code::action_1);
                EXPECT_STREQ(e.title, "Generic Exception");
                EXPECT_STREQ(e.message, "Buffer is too small.");
            });
            EXPECT_NE(output.find("Buffer is too small."), std::string::npos) << output;
        }
    }
}

}  // namespace
}  // namespace znp::vst
