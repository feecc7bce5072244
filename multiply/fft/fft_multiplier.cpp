#include "multiply/fft/fft_multiplier.hpp"

#include <new>

#include "multiply/fft/fft_plan.hpp"
#include "multiply/fft/fft_tables.hpp"
#include "multiply/fft/fft_transform.hpp"
#include "multiply/table_holder.hpp"

namespace znp {

template <class word>
upL_t FFTMultiplier<word>::table_bytes(u64_t limit_bits) const {
    return fft::tables_bytes(fft::depth_for(fft::main_plan(), limit_bits));
}

template <class word>
std::byte* FFTMultiplier<word>::build_tables(TableHolder& holder, u64_t limit_bits, std::byte* memory) const {
    holder.limit_bits = limit_bits;
    return fft::build_tables(holder.fft, fft::depth_for(fft::main_plan(), limit_bits), memory);
}

template <class word>
upL_t FFTMultiplier<word>::work_bytes(upL_t L, u64_t) const {
    return fft::fft_capacity_bytes(L * WordTraits<word>::bits);
}

template <class word>
transform* FFTMultiplier<word>::make_transform(const BasicParameters& bp, void* place, upL_t L) const {
    static_assert(sizeof(FFT) <= TransformSlot::bytes);
    if (place == nullptr) return nullptr;
    return new (place) FFT(bp.holder, fft::find_size(L * WordTraits<word>::bits));
}

template class FFTMultiplier<c32i>;
template class FFTMultiplier<c64i>;

}  // namespace znp
