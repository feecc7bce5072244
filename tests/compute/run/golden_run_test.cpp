// Runs against the golden digits: file hash, last digits, counts of the digits, residue.
#include "compute/run/golden_run.hpp"

namespace znp {
namespace {

using testing::GoldenRun;

TEST_P(GoldenRun, UpTo10000Digits) {
    check_sizes(100, 10'000, {1, 2, 3, 8});
}

TEST_P(GoldenRun, HundredThousandDigits) {
    check_sizes(100'000, 100'000, {1, 3});
}

TEST_P(GoldenRun, AMillionDigitsOfTheFastOnes) {
    if (testing::is_fast(GetParam().constant)) check_sizes(1'000'000, 1'000'000, {2});
}

INSTANTIATE_TEST_SUITE_P(Constants, GoldenRun, ::testing::ValuesIn(testing::computed_algorithms()),
                         testing::algorithm_name);

TEST(Sha256, OfTheStandardsExamples) {
    EXPECT_EQ(testing::sha256("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(testing::sha256("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
}

}  // namespace
}  // namespace znp
