// A short campaign of faults; vst_fault_long_test.cpp has the long one.
#include "multiply/vst_fault_campaign.hpp"

#include <cmath>
#include <string>

#include "multiply/vst/redundancy.hpp"

namespace znp {
namespace {

// One word of an image, changed by a third of its prime: no wrong result, and no right one either.
TEST(VSTFaults, ACorruptedTransformWordMakesTheCheckFire) {
#ifndef NDEBUG
    GTEST_SKIP() << "assertions see the faults first";
#endif
    std::mt19937_64 rng = testing::make_rng(2);
    for (const vst::Geometry& g : {vst::Geometry{4, 1, 10}, {6, 3, 10}, {9, 1, 12}, {7, 7, 9}}) {
        const testing::VSTTablesOf tables(std::span(&g, 1));
        const VST t(&tables.holder, g, 1);
        const auto image = make_guarded_array<std::byte>(nullptr, t.transform_bytes, 64);
        const auto scratch = make_guarded_array<std::byte>(nullptr, t.work_bytes, 64);
        const auto A = testing::random_words<c64i>(rng, g.capacity() / 128);
        std::vector<c64i> R(2 * A.size());
        for (unsigned k = 0; k < 10; ++k) {
            t.forward(image_at(image.get()), A, scratch_at(scratch.get()));
            const unsigned s = static_cast<unsigned>(rng() % g.a);
            const upL_t block = rng() % g.blocks(), point = rng() % g.n();
            auto* const residues = reinterpret_cast<double*>(image.get());
            residues[(block * g.block_vectors() + s * g.row()) * 4 + point] +=
                std::rint(t.record->set->primes[s] / 3);
            s32_t code = 0;
            const std::string output = testing::console_output([&] {
                code = testing::caught<zn_exception>([&] {
                           t.inverse_fsqr({R.data(), 0, R.size()}, image_at(image.get()),
                                          scratch_at(scratch.get()));
                       }).code;
            });
            EXPECT_EQ(code, 1);
            EXPECT_NE(output.find("VST Redundancy Check Failed:  "), std::string::npos);
        }
    }
}

TEST(VSTFaults, TheTextOfTheCheck) {
    EXPECT_EQ(testing::console_output([] { vst::check_redundancy(1023, 1024); }), "");
    const std::string output = testing::console_output([] {
        const auto e = testing::caught<zn_exception>([] { vst::check_redundancy(1024, 1024); });
        EXPECT_EQ(e.code, 1);
        EXPECT_STREQ(e.title, "Generic Exception");
    });
    EXPECT_EQ(output.rfind(testing::sent::R + "VST Redundancy Check Failed:  1024 / 1024\n", 0), 0u)
        << output;
    EXPECT_NE(output.find("Error Code: 1\n"), std::string::npos);
}

TEST(VSTFaults, TheBoundOfTheCheck) {
    EXPECT_EQ(vst::redundancy_bound({4, 1, 10}), u64_t{1} << 10);
    EXPECT_EQ(vst::redundancy_bound({4, 3, 10}), u64_t{1} << 12);
    EXPECT_EQ(vst::redundancy_bound({4, 5, 10}), u64_t{1} << 13);
    EXPECT_EQ(vst::redundancy_bound({4, 7, 10}), u64_t{1} << 13);
}

TEST(VSTFaults, NoWrongProductGoesUnnoticed) {
#ifndef NDEBUG
    GTEST_SKIP() << "assertions see the faults first";
#endif
    testing::run_fault_campaign({9, 1, 11}, 1, {100, 30, 30, 30, 20}, 1);
}

}  // namespace
}  // namespace znp
