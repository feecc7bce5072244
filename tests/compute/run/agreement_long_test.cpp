#include "compute/run/agreement.hpp"

namespace znp {
namespace {

TEST(Agreement, OfAllFormulasAtManyRandomSizes) {
    auto rng = testing::make_rng(12);
    for (int i = 0; i < 200; i++) testing::expect_agreement(rng, 400, 30'000);
    for (int i = 0; i < 50; i++) testing::expect_agreement(rng, 80'000, 1'000'000);
    for (int i = 0; i < 5; i++) testing::expect_agreement(rng, 1'000'000, 5'000'000);
}

}  // namespace
}  // namespace znp
