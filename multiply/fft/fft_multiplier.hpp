// FFT as multiplier objects.
#pragma once

#include "multiply/multiplier.hpp"

namespace znp {

// A transform takes its size from the main plan by product length. One thread. work_bytes covers every
// shorter product, too. The tables of a limit serve every product up to it.
template <class word>
class FFTMultiplier final : public multiplier<word> {
  public:
    constexpr FFTMultiplier() : multiplier<word>(0x6000000, "FFT", "Floating-Point FFT") {}

    upL_t table_bytes(u64_t limit_bits) const override;
    std::byte* build_tables(TableHolder& holder, u64_t limit_bits, std::byte* memory) const override;
    upL_t work_bytes(upL_t L, u64_t threads) const override;
    transform* make_transform(const BasicParameters& bp, void* place, upL_t L) const override;
};

extern template class FFTMultiplier<c32i>;
extern template class FFTMultiplier<c64i>;

}  // namespace znp
