#include <gtest/gtest.h>

#include <vector>

#include "multiply/bkt/basecase.hpp"
#include "multiply/bkt/basecase_reference.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "multiply/multiply_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using Array = std::vector<c64i>;

// At every length: the words of the whole product, less at most Lb - 1 units of the lowest one.
TEST(MiddleProduct, LacksOnlyAPartOfTheCarryFromBelow) {
    auto rng = testing::make_rng(451);
    for (upL_t Lb = 4; Lb <= 30; Lb++) {
        for (upL_t n = 1; n <= 40; n++) {
            Array A(n + Lb), B(Lb), product(n + 2 * Lb), lacking(n);
            const bool ones = rng() % 4 == 0;
            for (c64i& word : A) word = ones ? ~c64i{0} : rng();
            for (c64i& word : B) word = ones ? ~c64i{0} : rng();
            testing::GuardedWords<c64i> T(n + 8);
            bkt::middleB(T.data(), A.data(), B.data(), Lb, n);
            bkt::mulB_reference<c64i>(product.data(), A.data(), n + Lb, B.data(), Lb);
            sub_words(lacking.data(), product.data() + Lb, T.data() + 4,
                      n);  // modulo the words of the window
            EXPECT_LT(lacking[0], Lb) << Lb << " " << n;
            EXPECT_EQ(normalised_length(lacking.data() + 1, n - 1), 0u) << Lb << " " << n;
        }
    }
}

}  // namespace
}  // namespace znp
