// BKT: basecase and Karatsuba as multiplier objects.
//
// Products go straight to the kernels, without the copies of a transform. They need no tables and one thread.
// make_transform gives a BKTTransform, which knows 64-bit words only: one of the 32-bit family serves words
// of 64 bits at half the length, rounded up. work_bytes covers both roads.
#pragma once

#include "multiply/multiplier.hpp"

namespace znp {

template <class word>
class BKTMultiplier final : public multiplier<word> {
  public:
    static constexpr upL_t max_words = 464;

    constexpr BKTMultiplier()
        : multiplier<word>(max_words * WordTraits<word>::bits, "BKT", "Basecase/Karatsuba") {}

    upL_t table_bytes(u64_t limit_bits) const override;
    std::byte* build_tables(TableHolder& holder, u64_t limit_bits, std::byte* memory) const override;
    upL_t work_bytes(upL_t L, u64_t threads) const override;
    transform* make_transform(const BasicParameters& bp, void* place, upL_t L) const override;

    // An operand of length 0 gives zeros. A work buffer that is too small for the kernel's scratch throws
    // (code work_space_too_small) before anything is written.
    void sqr(const BasicParameters& bp, word* T, WordSpan<word> A) const override;
    void mul(const BasicParameters& bp, word* T, WordSpan<word> A, WordSpan<word> B) const override;
    void sqr_window(const BasicParameters& bp, Window<word> R, WordSpan<word> A) const override;
    void mul_window(const BasicParameters& bp, Window<word> R, WordSpan<word> A,
                    WordSpan<word> B) const override;
};

extern template class BKTMultiplier<c32i>;
extern template class BKTMultiplier<c64i>;

}  // namespace znp
