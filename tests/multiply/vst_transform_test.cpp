#include "multiply/vst/vst_transform.hpp"

#include <gmp.h>
#include <gtest/gtest.h>

#include <vector>

#include "foundation/guarded_alloc.hpp"
#include "multiply/table_holder.hpp"
#include "multiply/vst/size_plan.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using Words = std::vector<c64i>;

// Tables for all sets.
class Tables {
  public:
    explicit Tables(unsigned c) {
        vst::TablePlan plan;
        for (unsigned a = 4; a <= 9; a++) {
            for (unsigned b = 1; b <= 7; b += 2) plan.require({a, b, c});
        }
        memory_ = make_guarded_array<std::byte>(nullptr, vst::table_bytes(plan), 64);
        EXPECT_EQ(vst::build_tables(holder.vst, plan, memory_.get()), memory_.get() + vst::table_bytes(plan));
    }
    TableHolder holder;

  private:
    GuardedArray<std::byte> memory_;
};

const TableHolder& tables() {
    static const Tables built(20);
    return built.holder;
}

Words product(const Words& A, const Words& B) {
    Words P(A.size() + B.size());
    if (A.size() >= B.size()) {
        mpn_mul(P.data(), A.data(), static_cast<mp_size_t>(A.size()), B.data(),
                static_cast<mp_size_t>(B.size()));
    } else {
        mpn_mul(P.data(), B.data(), static_cast<mp_size_t>(B.size()), A.data(),
                static_cast<mp_size_t>(A.size()));
    }
    return P;
}

Words random_words(std::mt19937_64& rng, upL_t n) {
    Words A(n);
    for (c64i& w : A) w = rng();
    return A;
}

// One transform with its images and scratch, exactly as large as promised.
class Machine {
  public:
    Machine(const vst::Geometry& g, u64_t threads)
        : vst(&tables(), g, threads),
          image1(make_guarded_array<std::byte>(nullptr, vst.transform_bytes)),
          image2(make_guarded_array<std::byte>(nullptr, vst.transform_bytes)),
          scratch(make_guarded_array<std::byte>(nullptr, vst.work_bytes)),
          work{image_at(image1.get()), image_at(image2.get()), scratch_at(scratch.get())} {}

    Words multiply(const Words& A, const Words& B, upL_t s, upL_t e) {
        Words R(e - s, 0x5555);
        vst.forward(work.T1, A, work.scratch);
        vst.forward(work.T2, B, work.scratch);
        vst.inverse_fmul({R.data(), s, e}, work.T1, work.T2, work.scratch);
        return R;
    }
    Words product_in_one(const Words& A, const Words& B, upL_t s, upL_t e) {
        Words R(e - s, 0x5555);
        vst.product({R.data(), s, e}, A, B, work);
        return R;
    }
    Words square(const Words& A, upL_t s, upL_t e) {
        Words R(e - s, 0x5555);
        vst.forward(work.T1, A, work.scratch);
        vst.inverse_fsqr({R.data(), s, e}, work.T1, work.scratch);
        return R;
    }

    VST vst;
    GuardedArray<std::byte> image1, image2, scratch;
    WorkAreas work;
};

std::vector<vst::Geometry> all_sets(unsigned extra) {
    std::vector<vst::Geometry> list;
    for (unsigned a = 4; a <= 9; a++) {
        for (unsigned b = 1; b <= 7; b += 2) list.push_back({a, b, (b == 1 ? 6u : 5u) + extra});
    }
    return list;
}

TEST(VSTTransform, ProductsOfEverySet) {
    auto rng = testing::make_rng(501);
    for (unsigned extra = 4; extra <= 9; extra++) {
        for (const vst::Geometry& g : all_sets(extra)) {
            if (g.points() > 6000) continue;
            SCOPED_TRACE(::testing::Message() << g.a << " " << g.b << " " << g.c);
            Machine machine(g, 1);
            const upL_t L = g.capacity() / 64;
            const Words A = random_words(rng, L / 2 + 7), B = random_words(rng, L - A.size());
            ASSERT_EQ(machine.multiply(A, B, 0, L), product(A, B));
            const Words C = random_words(rng, L / 2);
            ASSERT_EQ(machine.square(C, 0, 2 * C.size()), product(C, C));
            const Words ones(L / 2, ~c64i{0});
            ASSERT_EQ(machine.square(ones, 0, L / 2 * 2), product(ones, ones));
        }
    }
}

TEST(VSTTransform, AnyCountOfThreads) {
    auto rng = testing::make_rng(502);
    for (const vst::Geometry& g : {vst::Geometry{9, 1, 15}, {4, 3, 13}, {6, 7, 12}, {5, 1, 10}}) {
        const upL_t L = g.capacity() / 64;
        const Words A = random_words(rng, L / 2), B = random_words(rng, L - A.size());
        const Words P = product(A, B), square = product(A, A);
        for (const u64_t threads : {1u, 2u, 3u, 5u, 7u, 16u, 33u, 256u}) {
            SCOPED_TRACE(::testing::Message() << g.a << " " << g.b << " " << g.c << " threads " << threads);
            Machine machine(g, threads);
            ASSERT_EQ(machine.multiply(A, B, 0, L), P);
            ASSERT_EQ(machine.product_in_one(A, B, 0, L), P);
            ASSERT_EQ(machine.product_in_one(A, A, 0, L - L % 2 - 6),
                      Words(square.begin(), square.begin() + static_cast<s64_t>(L - L % 2 - 6)));
        }
    }
}

TEST(VSTTransform, Windows) {
    auto rng = testing::make_rng(503);
    for (const vst::Geometry& g : {vst::Geometry{8, 1, 13}, {5, 3, 11}}) {
        const upL_t L = g.capacity() / 64;
        const upL_t block = g.input_words() / 2;
        const Words A = random_words(rng, L / 2), B = random_words(rng, L - A.size());
        const Words P = product(A, B);
        Machine machine(g, 3);
        const upL_t edges[] = {0, 1, block - 1, block, block + 1, 5 * block, L / 2 + 1, L - block, L - 1, L};
        for (const upL_t s : edges) {
            for (const upL_t e : edges) {
                if (e < s) continue;
                ASSERT_EQ(machine.multiply(A, B, s, e),
                          Words(P.begin() + static_cast<s64_t>(s), P.begin() + static_cast<s64_t>(e)));
            }
        }
    }
}

// P modulo B^L - 1 or B^L + 1; the flag is the value B^L.
struct RingValue {
    Words words;
    bool top;
};
RingValue reduce(const Words& P, upL_t L, bool negacyclic) {
    mpz_t x, m;
    mpz_inits(x, m, nullptr);
    mpz_import(x, P.size(), -1, 8, 0, 0, P.data());
    mpz_setbit(m, 64 * L);
    if (negacyclic) {
        mpz_add_ui(m, m, 1);
    } else {
        mpz_sub_ui(m, m, 1);
    }
    mpz_mod(x, x, m);
    RingValue value{Words(L + 1), false};
    mpz_export(value.words.data(), nullptr, -1, 8, 0, 0, x);
    value.top = value.words.back() != 0;
    value.words.pop_back();
    mpz_clears(x, m, nullptr);
    return value;
}

// By steps and, which must not differ, in one.
RingValue product_in(vst::Ring ring, Machine& machine, const Words& A, const Words& B) {
    const VST& vst = machine.vst;
    const upL_t L = vst.capacity / 64;
    const auto operand = [](const Words& W) {
        return vst::Operand{reinterpret_cast<const std::byte*>(W.data()), 2 * W.size()};
    };
    const auto result = [L](Words& R) {
        R.assign(L, 0x5555);
        return vst::Result{reinterpret_cast<std::byte*>(R.data()), 0, 2 * L};
    };
    RingValue value{}, other{};
    const auto& [T1, T2, scratch] = machine.work;
    vst.forward_in(ring, T1, operand(A), scratch);
    vst.forward_in(ring, T2, operand(B), scratch);
    value.top = vst.inverse_in(ring, result(value.words), T1, T2, scratch);
    other.top = vst.product_in(ring, result(other.words), operand(A), operand(B), machine.work);
    EXPECT_EQ(value.words, other.words);
    EXPECT_EQ(value.top, other.top);
    return value;
}

TEST(VSTTransform, ProductsInTheRings) {
    auto rng = testing::make_rng(504);
    for (const vst::Geometry& g : all_sets(4)) {
        if (g.capacity() % 64 != 0 || g.a % 3 == 0) continue;
        const upL_t L = g.capacity() / 64;
        Words zero(L), one(L), ones(L, ~c64i{0}), top(L);
        one[0] = 1;
        top[L - 1] = c64i{1} << 63;
        const Words A = random_words(rng, L), B = random_words(rng, L);
        for (const u64_t threads : {1u, 3u}) {
            SCOPED_TRACE(::testing::Message() << g.a << " " << g.b << " " << g.c << " threads " << threads);
            Machine machine(g, threads);
            for (const auto& [X, Y] : {std::pair(&A, &B),
                                       {&A, &one},
                                       {&ones, &ones},
                                       {&ones, &A},
                                       {&top, &top},
                                       {&one, &ones},
                                       {&zero, &A},
                                       {&A, &top}}) {
                const RingValue expected = reduce(product(*X, *Y), L, true);
                const RingValue found = product_in(vst::Ring::negacyclic, machine, *X, *Y);
                ASSERT_EQ(found.top, expected.top);
                ASSERT_EQ(found.words, expected.words);
            }
            const RingValue cyclic = reduce(product(A, B), L, false);
            ASSERT_EQ(product_in(vst::Ring::cyclic, machine, A, B).words, cyclic.words);
        }
    }
}

// (B^(L/2))^2 = -1: the value B^L itself.
TEST(VSTTransform, TopBitOfTheNegacyclicRing) {
    const vst::Geometry g{7, 1, 13};
    const upL_t L = g.capacity() / 64;
    Words half(L / 2 + 1);
    half.back() = 1;
    for (const u64_t threads : {1u, 4u}) {
        Machine machine(g, threads);
        const RingValue value = product_in(vst::Ring::negacyclic, machine, half, half);
        EXPECT_TRUE(value.top);
        EXPECT_EQ(value.words, Words(L));
    }
}

}  // namespace
}  // namespace znp
