// What only transforms have that no memory holds, made in small: the twiddles of the deepest nodes of every
// set, and the passes of three and four column stages.
#include <gmp.h>
#include <gtest/gtest.h>

#include <vector>

#include "foundation/guarded_alloc.hpp"
#include "multiply/vst/redundancy.hpp"
#include "multiply/vst/vst_kernels.hpp"
#include "multiply/vst/vst_passes.hpp"
#include "multiply/vst_test_support.hpp"
#include "test_seed.hpp"

namespace znp::vst {
namespace {

// ---- Twiddles ---------------------------------------------------------------------------------------------

// Integers modulo a prime.
class Field {
  public:
    Field(const PrimeSet& set, unsigned s)
        : p_(static_cast<u64_t>(set.primes[s])), b_(set.b), max_c_(set.max_c), root_(of(set.roots[s])) {}

    u64_t of(double x) const {
        const auto r = static_cast<s64_t>(x) % static_cast<s64_t>(p_);
        return static_cast<u64_t>(r < 0 ? r + static_cast<s64_t>(p_) : r);
    }
    u64_t mul(u64_t x, u64_t y) const { return static_cast<u64_t>(static_cast<u128_t>(x) * y % p_); }
    u64_t power(u64_t x, u64_t e) const {
        u64_t result = 1;
        for (; e != 0; e >>= 1, x = mul(x, x)) {
            if ((e & 1) != 0) result = mul(result, x);
        }
        return result;
    }
    // The twiddle of node j at depth d: of angle r(j) / 2, with the bits of j reversed behind the point.
    u64_t twiddle(u64_t j, unsigned d) const {
        u64_t reversed = 0;
        for (unsigned i = 0; i < d; i++) reversed |= (j >> i & 1) << (d - 1 - i);
        return power(power(root_, u64_t{b_} << (max_c_ - d - 1)), reversed);
    }

  private:
    u64_t p_;
    unsigned b_, max_c_;
    u64_t root_;
};

class VSTDeepNodes : public ::testing::TestWithParam<std::pair<unsigned, unsigned>> {
  protected:
    VSTDeepNodes() : set_(prime_set(GetParam().first, GetParam().second)) {
        TablePlan plan;
        plan.require({set_.a, set_.b, set_.max_c});
        memory_ = make_guarded_array<std::byte>(nullptr, table_bytes(plan), 64);
        build_tables(holder_, plan, memory_.get());
        tables_ = holder_->sets[set_.a - 3][set_.b / 2];
    }

    const PrimeSet& set_;
    const VSTTables* holder_ = nullptr;
    const SetTables* tables_;
    GuardedArray<std::byte> memory_;
};

// Subtrees at random nodes of the longest transform, down to its last level.
TEST_P(VSTDeepNodes, Twiddles) {
    constexpr unsigned levels = 3;
    auto rng = testing::make_rng(541);
    double out[2][(1u << levels) + 4];
    for (unsigned s = 0; s < set_.a; s++) {
        const Field f(set_, s);
        for (unsigned depth = 1; depth + levels < set_.max_c - 1u; depth += depth % 7 == 0 ? 1u : 2u) {
            const u64_t last = (u64_t{1} << depth) - 1;
            for (const u64_t node : {last, rng() & last}) {
                for (const Direction d : {forward_direction, inverse_direction})
                    local_twiddles(out[d], tables_->prime[s], d, node, levels);
                for (unsigned e = 0; e < levels; e++) {
                    for (u64_t j = 0; j < u64_t{1} << e; j++) {
                        const u64_t t = f.of(out[forward_direction][(1u << e) + j]);
                        ASSERT_EQ(t, f.twiddle((node << e) + j, depth + e)) << depth << " " << node;
                        ASSERT_EQ(f.mul(t, f.of(out[inverse_direction][(1u << e) + j])), 1u);
                    }
                }
            }
        }
    }
}

// The roots v of order b of the blocks' nodes: their powers, and the weights v z^k of the last polynomials.
TEST_P(VSTDeepNodes, PowersAndWeights) {
    constexpr unsigned levels = 3;
    const unsigned b = set_.b;
    if (b == 1) return;
    constexpr upL_t nodes = upL_t{1} << levels;
    auto rng = testing::make_rng(542);
    alignas(64) double powers[2][6 * nodes + 4], weights[7 * nodes + 4];
    for (unsigned s = 0; s < set_.a; s++) {
        const Field f(set_, s);
        for (unsigned depth = 1; depth + levels <= set_.max_c - 2u; depth += 3) {
            const u64_t node = rng() & ((u64_t{1} << depth) - 1);
            for (const Direction d : {forward_direction, inverse_direction})
                local_powers(powers[d], tables_->prime[s], b, tables_->block_nodes, d, node, levels);
            local_weights(weights, tables_->prime[s], b, node, levels);
            for (upL_t j = 0; j < nodes; j++) {
                const u64_t twiddle = f.twiddle((node << levels) + j, depth + levels);
                const u64_t w = f.mul(twiddle, twiddle), v = f.of(powers[0][j]);
                ASSERT_EQ(f.power(v, b), w) << depth << " " << node;
                for (unsigned r = 1; r < b; r++) {
                    ASSERT_EQ(f.of(powers[0][(r - 1) * nodes + j]), f.power(v, r));
                    ASSERT_EQ(f.mul(f.of(powers[1][(r - 1) * nodes + j]), f.power(v, r)), 1u);
                }
                for (unsigned k = 0; k < b; k++) {
                    ASSERT_EQ(f.power(f.of(weights[j * b + k]), b), w);
                    ASSERT_EQ(f.of(weights[j * b + k]) == v, k == 0);
                }
            }
        }
    }
}

std::vector<std::pair<unsigned, unsigned>> all_sets() {
    std::vector<std::pair<unsigned, unsigned>> sets;
    for (unsigned a = 4; a <= 9; a++) {
        for (unsigned b = 1; b <= 7; b += 2) sets.emplace_back(a, b);
    }
    return sets;
}
INSTANTIATE_TEST_SUITE_P(Sets, VSTDeepNodes, ::testing::ValuesIn(all_sets()), [](const auto& sets) {
    std::string name("a");
    name += std::to_string(sets.param.first);
    name += 'b';
    return name += std::to_string(sets.param.second);
});

// ---- Stages -----------------------------------------------------------------------------------------------

// The stages of a long transform on a short one.
Stages stages_of(const Geometry& g, std::initializer_list<unsigned> columns) {
    Stages stages(g.levels(), 1, 0);
    stages.count = 0;
    stages.part = g.levels();
    for (const unsigned levels : columns) {
        stages.levels[stages.count++] = levels;
        stages.part -= levels;
    }
    return stages;
}

TEST(VSTStages, LongTransformsHaveMore) {
    EXPECT_EQ(Stages(11 + 7, 7, 0).count, 1u);
    EXPECT_EQ(Stages(12 + 7, 7, 0).count, 2u);
    EXPECT_EQ(Stages(43 - 6, 7, 0).count, 3u);
    EXPECT_EQ(Stages(43 - 6, 3, 0).count, 4u);
}

TEST(VSTStages, ProductsInThreeAndFourStages) {
    auto rng = testing::make_rng(543);
    // The last one has gaps between its parts, as all long ones do.
    for (const Geometry& g : {Geometry{5, 1, 16}, {4, 3, 14}, {9, 7, 15}}) {
        EXPECT_EQ(g.has_gaps(), g.a == 9);
        const testing::VSTTablesOf tables(std::span(&g, 1));
        const SetTables& set = *tables.holder.vst->sets[g.a - 3][g.b / 2];
        const upL_t L = g.capacity() / 64;
        const auto A = testing::random_words<c64i>(rng, L / 2 + 3),
                   B = testing::random_words<c64i>(rng, L - A.size());
        const auto expected = testing::gmp_product(A, B);
        const auto T1 = make_guarded_array<double>(nullptr, g.image_bytes() / 8, 64),
                   T2 = make_guarded_array<double>(nullptr, g.image_bytes() / 8, 64);
        const Operand a{reinterpret_cast<const std::byte*>(A.data()), 2 * A.size()},
            b{reinterpret_cast<const std::byte*>(B.data()), 2 * B.size()};
        for (const Stages& stages :
             {stages_of(g, {2, 3}), stages_of(g, {2, 1, 2}), stages_of(g, {2, 1, 1, 1})}) {
            for (const u64_t threads : {1u, 2u, 3u}) {
                SCOPED_TRACE(::testing::Message() << g.a << " " << g.b << " " << g.c << ": " << stages.count
                                                  << " stages, " << threads << " threads");
                const auto scratch =
                    make_guarded_array<std::byte>(nullptr, scratch_bytes(g, stages, threads), 64);
                const Frame frame{&set, g, stages, Ring::cyclic, threads, scratch.get()};
                std::vector<c64i> R(L, 0x5555);
                const Result result{reinterpret_cast<std::byte*>(R.data()), 0, 2 * L};
                EXPECT_LT(product_passes(frame, T1.get(), T2.get(), a, &b, result).high_parts,
                          redundancy_bound(g));
                EXPECT_EQ(R, expected);
                std::fill(R.begin(), R.end(), 0x5555);
                forward_passes(frame, T1.get(), a);
                forward_passes(frame, T2.get(), b);
                EXPECT_LT(inverse_passes(frame, T1.get(), T2.get(), result).high_parts, redundancy_bound(g));
                EXPECT_EQ(R, expected);
            }
        }
    }
}

}  // namespace
}  // namespace znp::vst
