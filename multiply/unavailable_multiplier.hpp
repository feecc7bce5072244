// UnavailableMultiplier: stands in the tables for an algorithm that this version does not have yet.
//
// It has the algorithm's name and limits, so that selection and reports are complete; every operation throws
// a zn_exception that names the algorithm. The exception is not printed where it is raised: a caller that
// probes for an algorithm, like the stress tester, catches it and says what it wants, and the outermost
// handler prints it otherwise.
#pragma once

#include "multiply/multiplier.hpp"

namespace znp {

template <class word>
class UnavailableMultiplier final : public multiplier<word> {
  public:
    constexpr UnavailableMultiplier(u64_t max_bits_, const char* name_, const char* long_name_)
        : multiplier<word>(max_bits_, name_, long_name_) {}

    upL_t table_bytes(u64_t limit_bits) const override;
    std::byte* build_tables(TableHolder& holder, u64_t limit_bits, std::byte* memory) const override;
    upL_t work_bytes(upL_t L, u64_t threads) const override;
    transform* make_transform(const BasicParameters& bp, void* place, upL_t L) const override;
};

extern template class UnavailableMultiplier<c32i>;
extern template class UnavailableMultiplier<c64i>;

}  // namespace znp
