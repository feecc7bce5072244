// VST as multiplier objects.
#pragma once

#include "multiply/multiplier.hpp"

namespace znp {

// A transform takes its size from the size plan by product length. The tables of a limit serve every product
// up to it. work_bytes and mulp_bytes cover every shorter product and every smaller number of threads, too;
// mulp_bytes asks only sizes whose halves are transforms, and mulp of a product of a shorter length than all
// of them is InvalidTransformParametersException.
template <class word>
class VSTMultiplier final : public multiplier<word> {
  public:
    constexpr VSTMultiplier() : multiplier<word>(0x2400000000000, "VST", "VST Algorithm") {}

    upL_t table_bytes(u64_t limit_bits) const override;
    std::byte* build_tables(TableHolder& holder, u64_t limit_bits, std::byte* memory) const override;
    upL_t work_bytes(upL_t L, u64_t threads) const override;
    transform* make_transform(const BasicParameters& bp, void* place, upL_t L) const override;
    upL_t mulp_bytes(upL_t L, u64_t threads) const override;
    void mulp(const BasicParameters& bp, Window<word> R, WordSpan<word> A, WordSpan<word> B) const override;
    CheckedResult checked_mulp(const BasicParameters& bp, Window<word> R, WordSpan<word> A,
                               WordSpan<word> B) const override;
};

extern template class VSTMultiplier<c32i>;
extern template class VSTMultiplier<c64i>;

}  // namespace znp
