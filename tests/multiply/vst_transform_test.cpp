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
          T1(make_guarded_array<std::byte>(nullptr, vst.transform_bytes)),
          T2(make_guarded_array<std::byte>(nullptr, vst.transform_bytes)),
          scratch(make_guarded_array<std::byte>(nullptr, vst.work_bytes)) {}

    Words multiply(const Words& A, const Words& B, upL_t s, upL_t e) {
        Words R(e - s, 0x5555);
        vst.forward(T1.get(), A.data(), A.size(), scratch.get());
        vst.forward(T2.get(), B.data(), B.size(), scratch.get());
        vst.inverse_fmul(R.data(), s, e, T1.get(), T2.get(), scratch.get());
        return R;
    }
    Words square(const Words& A, upL_t s, upL_t e) {
        Words R(e - s, 0x5555);
        vst.forward(T1.get(), A.data(), A.size(), scratch.get());
        vst.inverse_fsqr(R.data(), s, e, T1.get(), scratch.get());
        return R;
    }

    VST vst;
    GuardedArray<std::byte> T1, T2, scratch;
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

}  // namespace
}  // namespace znp
