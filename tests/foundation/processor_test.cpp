#include "foundation/processor.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace znp {
namespace {

// A processor whose name leaves hold the given bytes.
class NamedProcessor final : public CpuidSource {
  public:
    explicit NamedProcessor(const std::string& name) {
        std::memset(bytes_, 0, sizeof bytes_);
        std::memcpy(bytes_, name.data(), name.size());
    }
    CpuidRegisters cpuid(u32_t leaf, u32_t) const override {
        CpuidRegisters r{};
        if (leaf >= 0x80000002 && leaf <= 0x80000004) {
            std::memcpy(&r, bytes_ + 16 * (leaf - 0x80000002), 16);
        }
        return r;
    }
    u64_t xgetbv() const override { return 0; }

  private:
    char bytes_[48];
};

TEST(ProcessorName, LeadingBlanksGoAndRunsBecomeOne) {
    EXPECT_EQ(processor_name(NamedProcessor("   Some   Processor  @ 3.00GHz")), "Some Processor @ 3.00GHz");
    EXPECT_EQ(processor_name(NamedProcessor("Name")), "Name");
    EXPECT_EQ(processor_name(NamedProcessor("Name   ")), "Name ");
    EXPECT_EQ(processor_name(NamedProcessor("")), "");
    EXPECT_EQ(processor_name(NamedProcessor("      ")), "");
}

TEST(ProcessorName, AllBytesOfALongName) {
    const std::string name = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKL";
    ASSERT_EQ(name.size(), 48u);
    EXPECT_EQ(processor_name(NamedProcessor(name)), name);
}

TEST(ThisProcessor, AnswersTheBasicLeaves) {
    const CpuidSource& processor = this_processor();
    EXPECT_GE(processor.cpuid(0, 0).eax, 1u);
    EXPECT_NE(processor.cpuid(1, 0).edx & (1u << 26), 0u);  // SSE2, of every 64-bit x86
    if ((processor.cpuid(1, 0).ecx & (1u << 27)) != 0) {
        EXPECT_EQ(processor.xgetbv() & 3, 3u);  // x87 and SSE state
    }
    EXPECT_LE(processor_name().size(), 48u);
    EXPECT_EQ(processor_name().find("  "), std::string::npos);
}

}  // namespace
}  // namespace znp
