// The scratch memory of one thread of a VST: the twiddles of a subtree, a block of words, and a carry for
// each row of a column of the first stage.
#pragma once

#include <algorithm>

#include "multiply/vst/conversion.hpp"
#include "multiply/vst/negacyclic_offset.hpp"
#include "multiply/vst/vst_frame.hpp"
#include "multiply/vst/vst_kernels.hpp"

namespace znp::vst {

class Slot {
  public:
    static upL_t bytes(const Geometry& g, const Stages& stages) {
        return round_up_32(twiddle_doubles(g, stages) * sizeof(double)) + max_block_bytes + row_bytes(stages);
    }

    Slot(const Frame& frame, u64_t index)
        : geometry_(frame.geometry),
          stages_(frame.stages),
          memory_(frame.scratch + pattern_bytes(frame.geometry) + index * bytes(geometry_, stages_)) {}

    // Column twiddles of prime s.
    double* column(unsigned s) const { return twiddles() + s * column_twiddle_doubles(stages_); }
    // Part twiddles of one prime.
    double* part(Direction direction) const {
        return twiddles() + direction * part_twiddle_doubles(geometry_, stages_);
    }
    double* powers(Direction direction) const {
        return twiddles() + 2 * part_twiddle_doubles(geometry_, stages_) + direction * power_doubles();
    }
    double* weights() const { return powers(forward_direction) + 2 * power_doubles(); }

    std::byte* block_words() const {
        return memory_ + round_up_32(twiddle_doubles(geometry_, stages_) * sizeof(double));
    }
    // One for each row.
    struct Row {
        BlockCarry carry;
        u64_t borrow;
    };
    Row* rows() const { return reinterpret_cast<Row*>(block_words() + max_block_bytes); }

    upL_t block_nodes() const { return upL_t{8} << stages_.part; }

    static upL_t row_bytes(const Stages& stages) {
        return round_up_32(sizeof(Row) * ((upL_t{1} << stages.levels[0]) + 1));
    }

  private:
    static constexpr upL_t max_block_bytes = 224 * 24;  // words of a block

    static upL_t column_twiddle_doubles(const Stages& stages) {
        unsigned levels = 0;
        for (unsigned s = 0; s < stages.count; s++) levels = std::max(levels, stages.levels[s]);
        return (upL_t{1} << levels) + 4;
    }

    static upL_t part_twiddle_doubles(const Geometry& g, const Stages& stages) {
        return (upL_t{1} << (stages.part + block_levels(g.b))) + 4;
    }
    double* twiddles() const { return reinterpret_cast<double*>(memory_); }
    upL_t power_doubles() const { return geometry_.b == 1 ? 0 : (geometry_.b - 1) * block_nodes(); }
    static upL_t twiddle_doubles(const Geometry& g, const Stages& stages) {
        const upL_t nodes = upL_t{8} << stages.part;
        const upL_t odd = g.b == 1 ? 0 : 2 * (g.b - 1) * nodes + g.b * nodes;
        return std::max(g.a * column_twiddle_doubles(stages), 2 * part_twiddle_doubles(g, stages) + odd);
    }

    Geometry geometry_;
    Stages stages_;
    std::byte* memory_;
};

}  // namespace znp::vst
