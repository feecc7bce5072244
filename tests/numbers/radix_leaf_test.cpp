#include "numbers/radix_leaf.hpp"

#include "numbers/radix_test_support.hpp"

namespace znp {
namespace {

using testing::CdiArray;
using testing::ten19;

TEST(RadixLeaf, KernelEqualsReferenceAtEveryLength) {
    auto rng = testing::make_rng(421);
    constexpr cdi radices[] = {ten19, 2, 10, ~cdi{0}, cdi{1} << 63};
    for (upL_t n = 0; n <= radix::max_leaf; n++) {
        for (int i = 0; i < 50; i++) {
            const cdi radix = radices[rng() % 5];
            const upL_t w = radix::leaf_fraction_words(n);
            CdiArray a = testing::random_mantissa(w, rng);
            CdiArray b = a;
            testing::GuardedWords<cdi> kernel(n + 1);
            CdiArray reference(n + 1);
            kernel.data()[n] = radix::convert_leaf(kernel.data(), n, a.data() + w, radix);
            reference[n] = radix::convert_leaf_reference(reference.data(), n, b.data() + w, radix);
            EXPECT_EQ(CdiArray(kernel.data(), kernel.data() + n + 1), reference) << n;
        }
    }
}

TEST(RadixLeaf, WordsAndOverlapOfAFraction) {
    auto rng = testing::make_rng(422);
    for (upL_t n = 1; n <= radix::max_leaf; n++) {
        for (int i = 0; i < 20; i++) {
            const upL_t w = radix::leaf_fraction_words(n);
            CdiArray F = testing::random_words(w, rng);
            const testing::Expected expected(F, n + 1, ten19);
            CdiArray out(n);
            const cdi overlap = radix::convert_leaf(out.data(), n, F.data() + w, ten19);
            EXPECT_EQ(out, CdiArray(expected.words.begin() + 1, expected.words.end()));
            EXPECT_LE(expected.words[0] - overlap, 1u);
        }
    }
}

TEST(RadixLeaf, ZeroFractionHasAZeroOverlap) {
    for (upL_t n = 1; n <= radix::max_leaf; n++) {
        CdiArray F(n + 2, 0), out(n, 1);
        EXPECT_EQ(radix::convert_leaf(out.data(), n, F.data() + n + 2, ten19), 0u);
        EXPECT_EQ(out, CdiArray(n, 0));
    }
}

}  // namespace
}  // namespace znp
