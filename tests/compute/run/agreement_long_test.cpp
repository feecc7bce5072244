#include "compute/run/agreement.hpp"

namespace znp {
namespace {

TEST(Agreement, OfAllFormulasAtAMillionDigits) {
    for (const u64_t threads : {1u, 2u, 3u}) testing::expect_agreement_at(1'000'000, threads);
}

TEST(Agreement, OfAllFormulasAtManyRandomSizes) {
    auto rng = testing::make_rng(12);
    for (int i = 0; i < 200; i++) testing::expect_agreement(rng, 400, 30'000);
    for (int i = 0; i < 50; i++) testing::expect_agreement(rng, 80'000, 1'000'000);
    for (int i = 0; i < 5; i++) testing::expect_agreement(rng, 1'000'000, 5'000'000);
}

}  // namespace
}  // namespace znp
