#include "compute/run/agreement.hpp"

namespace znp {
namespace {

TEST(Agreement, OfAllFormulasAtFixedSizes) {
    for (const u64_t threads : {1u, 2u, 7u}) {
        testing::expect_agreement_at(1000, threads);
        testing::expect_agreement_at(54'321, threads);
    }
}

TEST(Agreement, OfAllFormulasAtRandomSizes) {
    auto rng = testing::make_rng(11);
    for (int i = 0; i < 6; i++) testing::expect_agreement(rng, 20'000, 200'000, false);
    for (int i = 0; i < 2; i++) testing::expect_agreement(rng, 10'000, 60'000);
}

}  // namespace
}  // namespace znp
