#include "multiply/vst/vst_multiplier.hpp"

#include <algorithm>
#include <new>

#include "foundation/fail.hpp"
#include "multiply/table_holder.hpp"
#include "multiply/vst/crt_mulp.hpp"
#include "multiply/vst/size_plan.hpp"
#include "multiply/vst/vst_tables.hpp"
#include "multiply/vst/vst_transform.hpp"

namespace znp {

namespace {

template <class word>
constexpr u64_t bits(upL_t L) {
    return L * WordTraits<word>::bits;
}

// The largest need over the rows that products of up to so many bits take and over the thread counts up to
// `threads`: fewer threads can need more, since they divide the levels into longer parts. Counts with the
// same logarithm divide them alike.
template <class Need>
upL_t largest_need(u64_t product_bits, u64_t threads, const Need& need) {
    const u64_t last = vst::find_size(product_bits).capacity();
    const u64_t main_end = vst::main_plan().back().capacity();
    upL_t bytes = 0;
    const auto ask = [&](const vst::Geometry& g) {
        bytes = std::max(bytes, need(g, threads));
        for (u64_t fewer = 1; fewer < threads; fewer *= 2) bytes = std::max(bytes, need(g, fewer));
    };
    for (const vst::SizePlanRow& row : vst::main_plan()) {
        if (row.capacity() <= last) ask(row.geometry());
    }
    for (const vst::SizePlanRow& row : vst::large_plan()) {
        if (row.capacity() > main_end && row.capacity() <= last) ask(row.geometry());
    }
    return bytes;
}

vst::Geometry half(const vst::Geometry& g) {
    return {g.a, g.b, g.c - 1};
}

// For a product of L words.
template <class word>
VST half_transform(const BasicParameters& bp, upL_t L) {
    return VST(bp.holder, half(vst::find_size(bits<word>(L)).geometry()), bp.tds);
}

}  // namespace

template <class word>
upL_t VSTMultiplier<word>::table_bytes(u64_t limit_bits) const {
    return vst::table_bytes(vst::TablePlan(limit_bits));
}

template <class word>
std::byte* VSTMultiplier<word>::build_tables(TableHolder& holder, u64_t limit_bits, std::byte* memory) const {
    holder.limit_bits = limit_bits;
    return vst::build_tables(holder.vst, vst::TablePlan(limit_bits), memory);
}

template <class word>
upL_t VSTMultiplier<word>::work_bytes(upL_t L, u64_t threads) const {
    return largest_need(bits<word>(L), threads, [](const vst::Geometry& g, u64_t tds) {
        return VST(nullptr, g, tds).product_bytes();
    });
}

template <class word>
transform* VSTMultiplier<word>::make_transform(const BasicParameters& bp, void* place, upL_t L) const {
    static_assert(sizeof(VST) <= TransformSlot::bytes);
    if (place == nullptr) return nullptr;
    return new (place) VST(bp.holder, vst::find_size(bits<word>(L)).geometry(), bp.tds);
}

template <class word>
upL_t VSTMultiplier<word>::mulp_bytes(upL_t L, u64_t threads) const {
    return largest_need(bits<word>(L), threads, [](const vst::Geometry& g, u64_t tds) {
        return half(g).long_enough() ? crt_mulp_bytes(VST(nullptr, half(g), tds)) : 0;
    });
}

template <class word>
void VSTMultiplier<word>::mulp(const BasicParameters& bp, Window<word> R, WordSpan<word> A,
                               WordSpan<word> B) const {
    CRT_mulp(half_transform<word>(bp, A.size() + B.size()), bp, R, A, B);
}

template <class word>
CheckedResult VSTMultiplier<word>::checked_mulp(const BasicParameters& bp, Window<word> R, WordSpan<word> A,
                                                WordSpan<word> B) const {
    if constexpr (sizeof(word) == sizeof(c64i)) {
        return checked_CRT_mulp(half_transform<word>(bp, A.size() + B.size()), bp, R, A, B);
    } else {
        return multiplier<word>::checked_mulp(bp, R, A, B);
    }
}

template class VSTMultiplier<c32i>;
template class VSTMultiplier<c64i>;

}  // namespace znp
