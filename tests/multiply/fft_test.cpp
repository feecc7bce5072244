// The floating-point FFT against GMP modulo 2^(N w) + 1.
#include <gtest/gtest.h>

#include "multiply/fft/fft_reference.hpp"
#include "test_seed.hpp"
#include "tests/multiply/fft_test_support.hpp"

namespace znp {
namespace {

using fft::PlanRow;
using fft::testing::Buffer;
using fft::testing::random_words;
using fft::testing::ring_product;
using fft::testing::row;
using fft::testing::Tables;
using fft::testing::Words;

constexpr PlanRow sizes[] = {row(1, 7, 16),  row(1, 7, 9),   row(3, 7, 20),  row(5, 7, 17),  row(1, 8, 20),
                             row(3, 8, 19),  row(5, 8, 15),  row(1, 9, 19),  row(3, 9, 18),  row(5, 9, 11),
                             row(1, 10, 18), row(3, 10, 13), row(5, 10, 10), row(1, 11, 18), row(3, 11, 14),
                             row(5, 11, 12), row(1, 12, 17), row(1, 13, 17)};

// Both products of one pair through the ring forms.
void check_ring(const Tables& tables, const PlanRow& size, const Words& A, const Words& B) {
    const FFT t(&tables.holder, size);
    SCOPED_TRACE(::testing::Message() << "k " << t.k << " p " << t.p << " w " << t.w << " words " << A.size()
                                      << " by " << B.size());
    const Buffer T1(t.transform_bytes), T2(t.transform_bytes), scratch(t.work_bytes);
    Words R(t.bits / 32, 0xdeadbeef);
    u32_t flag = 7;
    t.forward(T1, A.data(), A.size(), scratch);
    t.forward(T2, B.data(), B.size(), scratch);
    const u32_t top = t.ring_fmul(R.data(), T1, T2);
    EXPECT_EQ(R, ring_product(A, B, t.bits, flag));
    EXPECT_EQ(top, flag);
    t.forward(T1, A.data(), A.size(), scratch);
    const u32_t top_square = t.ring_fsqr(R.data(), T1);
    EXPECT_EQ(R, ring_product(A, A, t.bits, flag));
    EXPECT_EQ(top_square, flag);
}

TEST(FftRing, RandomOperandsOfEveryLengthClass) {
    auto rng = testing::make_rng(1);
    const Tables tables(8);
    for (const PlanRow& size : sizes) {
        const upL_t words = size.capacity_bits / 32;
        for (const upL_t La :
             {words, words - 1, words / 2, words / 2 - 1, words / 2 + 1, words / 3, upL_t{1}})
            check_ring(tables, size, random_words(rng, La), random_words(rng, words - La + 1));
    }
}

}  // namespace
}  // namespace znp
