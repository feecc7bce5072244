#include "multiply/fft/fft_tables.hpp"

#include <cmath>
#include <new>
#include <numbers>

namespace znp::fft {

Root unit_root(u64_t num, unsigned log2_den) {
    // den >= 8, so that the octants are whole.
    if (log2_den < 3) num <<= 3 - log2_den, log2_den = 3;
    const u64_t den = u64_t{1} << log2_den;
    const unsigned octant = static_cast<unsigned>((num & (den - 1)) >> (log2_den - 3));
    u64_t x = num & (den / 8 - 1);
    if ((octant & 1) != 0) x = den / 8 - x;
    const double angle = 2 * std::numbers::pi * (static_cast<double>(x) / static_cast<double>(den));
    const double c = x == den / 8 ? std::numbers::sqrt2 / 2 : std::cos(angle);
    const double s = x == den / 8 ? std::numbers::sqrt2 / 2 : std::sin(angle);
    switch (octant) {
        case 0:
            return {c, s};
        case 1:
            return {s, c};
        case 2:
            return {-s, c};
        case 3:
            return {-c, s};
        case 4:
            return {-c, -s};
        case 5:
            return {-s, -c};
        case 6:
            return {s, -c};
        default:
            return {c, -s};
    }
}

namespace {

u64_t bitreverse(u64_t x, unsigned bits) {
    u64_t r = 0;
    for (unsigned b = 0; b < bits; ++b) r |= (x >> b & 1) << (bits - 1 - b);
    return r;
}

Root block_root(unsigned depth, u64_t j, unsigned power) {
    return unit_root(power * (4 * bitreverse(j, depth) + 1), depth + 4);
}

}  // namespace

upL_t tables_bytes(unsigned depth) {
    upL_t blocks = 0;
    for (unsigned d = 2; d <= depth; d += 2) blocks += upL_t{1} << d;
    return sizeof(FFTTables) + blocks * sizeof(BlockTwiddles);
}

std::byte* build_tables(const FFTTables*& tables, unsigned depth, std::byte* memory) {
    auto* header = new (memory) FFTTables{};
    memory += sizeof(FFTTables);
    header->depth = depth;
    for (unsigned d = 2; d <= depth; d += 2) {
        auto* blocks = new (memory) BlockTwiddles[upL_t{1} << d];
        memory += sizeof(BlockTwiddles) << d;
        header->level[d] = blocks;
        for (u64_t j = 0; j < u64_t{1} << d; ++j) {
            for (unsigned power = 1; power <= 3; ++power) {
                const Root e = block_root(d, j, power);
                blocks[j].c[power - 1] = e.c;
                blocks[j].s[power - 1] = e.s;
                for (unsigned l = 0; l < 4; ++l) {
                    const Root child = block_root(d + 2, 4 * j + l, power);
                    blocks[j].child_c[power - 1][l] = child.c;
                    blocks[j].child_s[power - 1][l] = child.s;
                }
            }
            blocks[j].unused[0] = blocks[j].unused[1] = 0;
        }
    }
    tables = header;
    return memory;
}

}  // namespace znp::fft
