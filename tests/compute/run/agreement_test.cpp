#include "compute/run/agreement.hpp"

namespace znp {
namespace {

TEST(Agreement, OfAllFormulasAtRandomSizes) {
    auto rng = testing::make_rng(11);
    for (int i = 0; i < 6; i++) testing::expect_agreement(rng, 20'000, 200'000);
}

}  // namespace
}  // namespace znp
