// How the binary levels of a VST are divided: stages of columns, then the contiguous parts.
#pragma once

#include <algorithm>

#include "multiply/vst/geometry.hpp"

namespace znp::vst {

// The longest column of all geometries, in levels.
inline constexpr unsigned max_column_levels = Geometry{4, 1, 10}.max_column_levels();

// Stage s works on the nodes at depth first_level(s): 2^first_level sections of 2^columns_log columns each,
// a column being 2^levels[s] blocks at distances of 2^columns_log blocks. The first stage is fused with the
// conversions and has two levels at least. part: levels of the contiguous parts.
struct Stages {
    static constexpr unsigned max_count = 4;

    unsigned total;
    unsigned count;
    unsigned levels[max_count];
    unsigned part;

    // part_limit: levels that a part may have at most; threads: how many shall find work in each stage.
    // column_limit: levels of a column.
    Stages(unsigned total_, unsigned part_limit, unsigned log2_threads,
           unsigned column_limit = max_column_levels)
        : total(total_), count(1), levels{} {
        unsigned columns = total > part_limit ? total - part_limit : 0;
        if (columns < 2) columns = 2;
        if (columns < log2_threads + 1) columns = log2_threads + 1;
        if (columns > total - 1) columns = total - 1;
        part = total - columns;
        if (columns > column_limit) count = (columns + column_limit - 1) / column_limit;
        for (unsigned s = 0; s < count; s++) levels[s] = columns * (s + 1) / count - columns * s / count;
    }

    unsigned first_level(unsigned s) const {
        unsigned sum = 0;
        for (unsigned i = 0; i < s; i++) sum += levels[i];
        return sum;
    }
    unsigned columns_log(unsigned s) const { return total - first_level(s) - levels[s]; }
    unsigned part_depth() const { return total - part; }
    // That find work in the first stage and in the parts.
    u64_t max_threads() const { return std::min(columns(), parts()); }
    u64_t columns() const { return u64_t{1} << columns_log(0); }  // of the first stage
    u64_t parts() const { return u64_t{1} << part_depth(); }
};

}  // namespace znp::vst
