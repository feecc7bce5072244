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
        return whole_vector_bytes(twiddle_doubles(g, stages) * sizeof(double)) + max_input_bytes +
               row_bytes(stages);
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
        return twiddles() + 2 * part_twiddle_doubles(geometry_, stages_) +
               direction * power_doubles(geometry_, stages_);
    }
    double* weights() const { return powers(forward_direction) + 2 * power_doubles(geometry_, stages_); }

    std::byte* block_words() const {
        return memory_ + whole_vector_bytes(twiddle_doubles(geometry_, stages_) * sizeof(double));
    }
    // One for each row.
    struct Row {
        BlockCarry carry;
        u64_t borrow;
    };
    Row* rows() const { return reinterpret_cast<Row*>(block_words() + max_input_bytes); }

    upL_t block_nodes() const { return block_nodes(geometry_, stages_); }

  private:
    static upL_t row_bytes(const Stages& stages) {
        return whole_vector_bytes(sizeof(Row) * ((upL_t{1} << stages.levels[0]) + 1));
    }

    static upL_t column_twiddle_doubles(const Stages& stages) {
        unsigned levels = 0;
        for (unsigned s = 0; s < stages.count; s++) levels = std::max(levels, stages.levels[s]);
        return (upL_t{1} << levels) + vector_doubles;
    }

    static upL_t part_twiddle_doubles(const Geometry& g, const Stages& stages) {
        return (upL_t{1} << (stages.part + block_levels(g.b))) + vector_doubles;
    }
    double* twiddles() const { return reinterpret_cast<double*>(memory_); }
    static upL_t block_nodes(const Geometry& g, const Stages& stages) {
        return upL_t{1} << (stages.part + block_levels(g.b));
    }
    static upL_t power_doubles(const Geometry& g, const Stages& stages) {
        return (g.b - 1) * block_nodes(g, stages);
    }
    static upL_t twiddle_doubles(const Geometry& g, const Stages& stages) {
        const upL_t weights = g.b == 1 ? 0 : g.b * block_nodes(g, stages);
        const upL_t odd = 2 * power_doubles(g, stages) + weights;
        return std::max(g.a * column_twiddle_doubles(stages), 2 * part_twiddle_doubles(g, stages) + odd);
    }

    Geometry geometry_;
    Stages stages_;
    std::byte* memory_;
};

}  // namespace znp::vst
