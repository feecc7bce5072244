#include "foundation/processor.hpp"

#include <cpuid.h>

namespace znp {

namespace {

class ThisProcessor final : public CpuidSource {
  public:
    CpuidRegisters cpuid(u32_t leaf, u32_t subleaf) const override {
        CpuidRegisters r{};
        __cpuid_count(leaf, subleaf, r.eax, r.ebx, r.ecx, r.edx);
        return r;
    }

    // The compiler's intrinsic for this instruction needs a target flag that this file must not have.
    u64_t xgetbv() const override {
        u32_t low = 0;
        u32_t high = 0;
        __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
        return static_cast<u64_t>(high) << 32 | low;
    }
};

constexpr u32_t first_name_leaf = 0x80000002;
constexpr u32_t last_name_leaf = 0x80000004;

// The bytes of a register, lowest first.
void append_bytes(std::string& text, u32_t value) {
    for (int i = 0; i < 4; ++i) text.push_back(static_cast<char>(value >> (8 * i) & 0xff));
}

}  // namespace

const CpuidSource& this_processor() {
    static constinit ThisProcessor source;
    return source;
}

std::string processor_name(const CpuidSource& source) {
    std::string bytes;
    for (u32_t leaf = first_name_leaf; leaf <= last_name_leaf; ++leaf) {
        const CpuidRegisters r = source.cpuid(leaf, 0);
        for (const u32_t value : {r.eax, r.ebx, r.ecx, r.edx}) append_bytes(bytes, value);
    }
    std::string name;
    for (const char c : bytes) {
        if (c == '\0') break;
        const bool repeated = name.empty() || name.back() == ' ';
        if (c != ' ' || !repeated) name.push_back(c);
    }
    return name;
}

}  // namespace znp
