// The guard residues of verified products of every algorithm: of the whole result, of which any window is
// read where it was delivered, and of the window.
#include <gtest/gtest.h>

#include "multiply/dispatch.hpp"
#include "multiply/kernels/guard_residue.hpp"
#include "multiply/kernels/residue_reference.hpp"
#include "multiply/selection.hpp"
#include "multiply/table_holder.hpp"
#include "multiply/vst_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using Words = std::vector<c64i>;

// For products of so many words.
struct Tables {
    explicit Tables(upL_t words)
        : memory(make_guarded_array<std::byte>(nullptr, table_size(64 * words), 64)) {
        build_tables(holder, 64 * words, memory.get());
    }
    GuardedArray<std::byte> memory;
    TableHolder holder;
};

u64_t residue_of(const c64i* T, upL_t L) {
    return guard::hash_words_reference(T, L, 0);
}

// Every product also as a square of its first operand.
void check_windows(const TableHolder& holder, const Words& A, const Words& B, u64_t threads,
                   std::mt19937_64& rng) {
    for (const bool square : {false, true}) {
        const Words& second = square ? A : B;
        const Words product = testing::gmp_product(A, second);
        const upL_t n = product.size();
        const u64_t whole = residue_of(product.data(), n);
        for (const bool use_mulp : {false, true}) {
            const testing::VSTWork work(holder, work_bytes_for<c64i>(n, threads, use_mulp), threads);
            for (int i = 0; i < 6; i++) {
                upL_t s = i == 0 ? 0 : rng() % (n + 1), e = i == 0 ? n : rng() % (n + 1);
                if (s > e) std::swap(s, e);
                Words R(e - s, 0xabcdef);
                const Window<c64i> window{R.data(), s, e};
                const CheckedResult result = use_mulp ? checked_mulp(work.bp(), window, A, second)
                                                      : checked_mul(work.bp(), window, A, second);
                ASSERT_TRUE(std::equal(R.begin(), R.end(), product.begin() + static_cast<long>(s)))
                    << n << " " << s << " " << e;
                EXPECT_EQ(result.whole, whole) << n << " " << s << " " << e << " " << use_mulp;
                EXPECT_EQ(result.window, residue_of(R.data(), R.size()))
                    << n << " " << s << " " << e << " " << use_mulp;
            }
        }
    }
}

TEST(CheckedResults, AreTheResiduesOfTheProductAndOfAnyWindow) {
    auto rng = testing::make_rng(721);
    const Tables tables(1'000'000);
    for (const upL_t n :
         {upL_t{1}, upL_t{9}, upL_t{40}, upL_t{300}, upL_t{3000}, upL_t{7000}, upL_t{50'000}}) {
        const Words A = testing::random_words<c64i>(rng, n), B = testing::random_words<c64i>(rng, n / 2 + 1);
        check_windows(tables.holder, A, B, 1 + rng() % 3, rng);
        const Words ones = testing::all_ones<c64i>(n);
        check_windows(tables.holder, ones, ones, 1, rng);
    }
}

// Long enough that the residues themselves go by threads.
TEST(CheckedResults, OfLongProductsByThreads) {
    auto rng = testing::make_rng(722);
    const Tables tables(1'000'000);
    const Words A = testing::random_words<c64i>(rng, 250'000), B = testing::random_words<c64i>(rng, 200'000);
    for (const u64_t threads : {2u, 3u}) check_windows(tables.holder, A, B, threads, rng);
}

TEST(CheckedResults, ProductsOf32BitWordsAreRefused) {
    const std::vector<c32i> A{1, 2, 3};
    std::vector<c32i> R(6);
    const multiplier<c32i>& bkt = *find_multiplier<c32i>("BKT");
    EXPECT_THROW(bkt.checked_mul(BasicParameters{}, Window{R.data(), 0, 6}, A, A), zn_exception);
}

}  // namespace
}  // namespace znp
