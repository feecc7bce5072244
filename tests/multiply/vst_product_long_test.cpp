// Long products of the large transform through the dispatchers against an independent library: operands of up
// to ten million words.
#include <gtest/gtest.h>

#include "multiply/dispatch.hpp"
#include "multiply/vst_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using Words = std::vector<c64i>;

Words product(const TableHolder& holder, const Words& A, const Words& B, u64_t threads, bool use_mulp) {
    const upL_t L = A.size() + B.size();
    const testing::VSTWork work(holder, work_bytes_for<c64i>(L, threads, use_mulp), threads);
    Words T(L);
    if (use_mulp) {
        mulp(work.bp(), Window{T.data(), 0, L}, A, B);
    } else {
        mul(work.bp(), T.data(), A, B);
    }
    return T;
}

TEST(VSTLongProducts, UpToTenMillionWords) {
    std::mt19937_64 rng = testing::make_rng(2);
    const testing::VSTTablesOf tables(u64_t{20'000'000} * 64);
    for (const upL_t n : {upL_t{1'000'000}, upL_t{3'141'593}, upL_t{10'000'000}}) {
        const Words A = testing::random_words<c64i>(rng, n), B = testing::random_words<c64i>(rng, n);
        const Words AB = testing::gmp_product(A, B);
        for (const bool use_mulp : {false, true}) {
            for (const u64_t threads : {1u, 2u})
                EXPECT_TRUE(product(tables.holder, A, B, threads, use_mulp) == AB) << n << " " << use_mulp;
        }
        const Words ones = testing::all_ones<c64i>(n);
        Words expected(2 * n);  // 1 - 2 B^n + B^2n
        expected[0] = 1;
        std::fill(expected.begin() + static_cast<long>(n), expected.end(), ~c64i{0});
        expected[n] = ~c64i{1};
        EXPECT_TRUE(product(tables.holder, ones, ones, 2, false) == expected) << n;
    }
}

}  // namespace
}  // namespace znp
