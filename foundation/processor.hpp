// CPUID and XGETBV, behind an interface that tests can replace by the registers of another machine.
#pragma once

#include <string>

#include "foundation/types.hpp"

namespace znp {

struct CpuidRegisters {
    u32_t eax, ebx, ecx, edx;
};

class CpuidSource {
  public:
    virtual ~CpuidSource() = default;
    virtual CpuidRegisters cpuid(u32_t leaf, u32_t subleaf) const = 0;
    virtual u64_t xgetbv() const = 0;  // word 0; only legal where OSXSAVE is set
};

// The processor that the program runs on.
const CpuidSource& this_processor();

// The 48 bytes of leaves 0x80000002 to 0x80000004: no leading blanks, runs of blanks reduced to one, cut at
// the first zero byte.
std::string processor_name(const CpuidSource& source = this_processor());

}  // namespace znp
