#include "multiply/vst/vst_passes.hpp"

#include <algorithm>
#include <cstring>

#include "foundation/range_fork.hpp"
#include "multiply/vst/conversion.hpp"
#include "multiply/vst/negacyclic_offset.hpp"
#include "multiply/vst/result_words.hpp"
#include "multiply/vst/vst_kernels.hpp"
#include "multiply/vst/vst_slot.hpp"

namespace znp::vst {

namespace {

// ---- Stages -----------------------------------------------------------------------------------------------

// The index of node j at a depth, in the tree to which the ring belongs.
u64_t node_index(const Frame& frame, unsigned depth, u64_t j) {
    return frame.ring == Ring::cyclic ? j : (u64_t{1} << depth) + j;
}

void make_column_twiddles(const Frame& frame, const Slot& slot, Direction direction, unsigned stage,
                          u64_t j) {
    const u64_t node = node_index(frame, frame.stages.first_level(stage), j);
    for (unsigned s = 0; s < frame.geometry.a; s++)
        local_twiddles(slot.column(s), frame.tables->prime[s], direction, node, frame.stages.levels[stage]);
}

// A column of a stage: a block in each row.
struct Column {
    double* data;  // of the first row
    upL_t stride;  // from a row to the next

    double* block(u64_t row) const { return data + row * stride; }
};

// The one that begins at the block `first`.
Column column_at(const Frame& frame, double* image, unsigned stage, u64_t first) {
    const Geometry& g = frame.geometry;
    return {image + g.block_offset(first), g.distance(frame.stages.columns_log(stage))};
}

// Its rows of prime s. Next comes the next prime, and behind the last one the next column, which stands there
// too.
Rows rows_of(const Frame& frame, const Slot& slot, const Column& column, unsigned s) {
    const Geometry& g = frame.geometry;
    double* const data = column.data + s * g.row_doubles();
    return {data, column.stride, g.lanes(), slot.column(s), &frame.tables->prime[s], data + g.row_doubles()};
}

// A stage behind the first, both ways: sections times columns, in order.
void middle_stage(const Frame& frame, double* image, Direction direction, unsigned stage) {
    const unsigned columns_log = frame.stages.columns_log(stage);
    const u64_t items = u64_t{1} << (frame.stages.first_level(stage) + columns_log);
    split_range(0, items, frame.threads, 0, [&](u64_t low, u64_t high, u64_t index) {
        const Slot slot(frame, index);
        for (u64_t i = low; i < high; i++) {
            const u64_t j = i >> columns_log;
            const u64_t first = i - (j << columns_log);  // of its section
            if (i == low || first == 0) make_column_twiddles(frame, slot, direction, stage, j);
            const Column column =
                column_at(frame, image, stage, (j << (columns_log + frame.stages.levels[stage])) + first);
            for (unsigned s = 0; s < frame.geometry.a; s++) {
                const Rows rows = rows_of(frame, slot, column, s);
                if (direction == forward_direction) {
                    forward_levels(rows, frame.stages.levels[stage], Top::large);
                } else {
                    inverse_levels(rows, frame.stages.levels[stage]);
                }
            }
        }
    });
}

// Prime s of part j.
Part part_of(const Frame& frame, const Slot& slot, double* image, u64_t j, unsigned s) {
    const Geometry& g = frame.geometry;
    const unsigned levels = frame.stages.part;
    double* const data = image + g.block_offset(j << levels) + s * g.row_doubles();
    const double* const next =
        s + 1 < g.a ? data + g.row_doubles() : image + g.block_offset((j + 1) << levels);
    return {data,
            g.block_doubles(),
            g.b,
            levels,
            {{slot.part(forward_direction), slot.part(inverse_direction)},
             {slot.powers(forward_direction), slot.powers(inverse_direction)},
             slot.weights(),
             slot.block_nodes()},
            &frame.tables->prime[s],
            next};
}

// What the steps of a direction take of its twiddles.
void make_part_twiddles(const Frame& frame, const Slot& slot, const Part& part, Direction direction,
                        u64_t j) {
    const u64_t node = node_index(frame, frame.stages.part_depth(), j);
    const unsigned levels = part.levels + block_levels(part.b);
    local_twiddles(slot.part(direction), *part.prime, direction, node, levels);
    if (part.b > 1)
        local_powers(slot.powers(direction), *part.prime, part.b, frame.tables->block_nodes, direction, node,
                     levels);
}

// What the pointwise step takes: the weights, which are forward twiddles for b = 1.
void make_part_weights(const Frame& frame, const Slot& slot, const Part& part, u64_t j) {
    const u64_t node = node_index(frame, frame.stages.part_depth(), j);
    const unsigned levels = part.levels + block_levels(part.b);
    if (part.b > 1) {
        local_weights(slot.weights(), *part.prime, part.b, node, levels);
    } else {
        local_twiddles(slot.part(forward_direction), *part.prime, forward_direction, node, levels);
    }
}

// f(slot, j) for each part, on all threads.
template <class F>
void for_each_part(const Frame& frame, const F& f) {
    split_range(0, frame.stages.parts(), frame.threads, 0, [&](u64_t low, u64_t high, u64_t index) {
        const Slot slot(frame, index);
        for (u64_t j = low; j < high; j++) f(slot, j);
    });
}

void forward_part_stage(const Frame& frame, double* image) {
    for_each_part(frame, [&](const Slot& slot, u64_t j) {
        for (unsigned s = 0; s < frame.geometry.a; s++) {
            const Part part = part_of(frame, slot, image, j, s);
            make_part_twiddles(frame, slot, part, forward_direction, j);
            forward_part(part);
        }
    });
}

void inverse_part_stage(const Frame& frame, double* image, const double* other) {
    for_each_part(frame, [&](const Slot& slot, u64_t j) {
        for (unsigned s = 0; s < frame.geometry.a; s++) {
            const Part part = part_of(frame, slot, image, j, s);
            make_part_twiddles(frame, slot, part, inverse_direction, j);
            make_part_weights(frame, slot, part, j);
            inverse_part(part, other + (part.data - image));
        }
    });
}

// Both parts forward and the product back, prime by prime. other may be image: the square.
void product_part_stage(const Frame& frame, double* image, double* other) {
    for_each_part(frame, [&](const Slot& slot, u64_t j) {
        for (unsigned s = 0; s < frame.geometry.a; s++) {
            const Part part = part_of(frame, slot, image, j, s);
            make_part_twiddles(frame, slot, part, forward_direction, j);
            forward_part(part);
            const Part other_part = part_of(frame, slot, other, j, s);
            if (other != image) forward_part(other_part);
            make_part_twiddles(frame, slot, part, inverse_direction, j);
            if (part.b > 1) make_part_weights(frame, slot, part, j);  // else they are made
            inverse_part(part, other_part.data);
        }
    });
}

// ---- The first stage, forward and back --------------------------------------------------------------------
//
// The words of a column's blocks stand far apart, on a page each: no processor sees a pattern in that. They
// are fetched a few blocks before they are read or written.

void prefetch_words(const std::byte* words, upL_t bytes) {
    for (upL_t i = 0; i < bytes; i += 64) __builtin_prefetch(words + i);
}

// The first stage of up to two operands.
class FirstStage {
  public:
    explicit FirstStage(const Frame& frame) : frame_(frame) {}

    FirstStage& add(double* image, const Operand& operand) {
        const Geometry& g = frame_.geometry;
        const bool root = frame_.ring == Ring::cyclic;
        const bool half = root && operand.L <= (g.blocks() / 2) * g.input_words();  // the upper rows are zero
        jobs_[count_++] = {image, operand,
                           half   ? Top::half_root
                           : root ? Top::root
                                  : Top::any,
                           (u64_t{1} << frame_.stages.levels[0]) >> (half ? 1 : 0)};
        return *this;
    }

    void run() const {
        split_range(0, frame_.stages.columns(), frame_.threads, 0, [&](u64_t low, u64_t high, u64_t index) {
            const Slot slot(frame_, index);
            make_column_twiddles(frame_, slot, forward_direction, 0, 0);
            for (unsigned i = 0; i < count_; i++) {
                for (u64_t k = low; k < high; k++) run_column(jobs_[i], slot, k);
            }
        });
    }

  private:
    struct Job {
        double* image;
        Operand operand;
        Top top;
        u64_t rows;  // that are not zero
    };

    void run_column(const Job& job, const Slot& slot, u64_t k) const {
        const Column column = column_at(frame_, job.image, 0, k);
        for (u64_t r = 0; r < job.rows; r++) {
            prefetch_operand(job, r + 3, k);
            words_to_block(frame_.geometry, *frame_.tables->set, column.block(r), job.operand.words,
                           job.operand.L, r * frame_.stages.columns() + k);
        }
        for (unsigned s = 0; s < frame_.geometry.a; s++)
            forward_levels(rows_of(frame_, slot, column, s), frame_.stages.levels[0], job.top);
    }

    // The words of a row's block; rows behind the last one are those of the next column.
    void prefetch_operand(const Job& job, u64_t row, u64_t k) const {
        if (row >= job.rows) {
            row -= job.rows;
            k++;
        }
        const upL_t length = frame_.geometry.input_words();
        const upL_t first = (row * frame_.stages.columns() + k) * length;
        if (first + length <= job.operand.L) prefetch_words(job.operand.words + 4 * first, 4 * length);
    }

    const Frame& frame_;
    Job jobs_[2] = {};
    unsigned count_ = 0;
};

// The last inverse stage and the words of its columns.
class LastStage {
  public:
    LastStage(const Frame& frame, double* image, const ResultWords& words)
        : frame_(frame), image_(image), words_(words), rows_(u64_t{1} << frame.stages.levels[0]) {
        for (unsigned s = 0; s < frame.geometry.a; s++) {
            // The tree ends at polynomials of four coefficients: two levels less.
            scale_[s] = inverse_scale(*frame.tables->set, s, frame.geometry.c - 2);
            if (frame.ring == Ring::negacyclic) offset_[s] = scaled_offset(frame, s);
        }
    }

    // All columns, and the high parts of their coefficients. What leaves the last column of each thread is
    // left to join().
    u64_t run() {
        split_range(0, frame_.stages.columns(), frame_.threads, 0, [&](u64_t low, u64_t high, u64_t index) {
            const Slot slot(frame_, index);
            make_column_twiddles(frame_, slot, inverse_direction, 0, 0);
            std::fill_n(slot.rows(), rows_, Slot::Row{});
            u64_t high_parts = 0;
            for (u64_t k = low; k < high; k++) high_parts |= run_column(slot, k);
            done_[index] = {high, high_parts};
        });
        u64_t high_parts = 0;
        for (const Done& done : done_) high_parts |= done.high_parts;
        return high_parts;
    }

    void join(ResultWords& words) const {
        for (u64_t i = 0; i < frame_.threads; i++) {
            if (done_[i].columns_end == 0) continue;
            const Slot slot(frame_, i);
            for (u64_t r = 0; r < rows_; r++) {
                const u64_t block = r * frame_.stages.columns() + done_[i].columns_end;
                const Slot::Row& row = slot.rows()[r];
                words.add(block, row.carry.words, 8, false);
                words.add(block, &row.borrow, 1, true);
            }
        }
    }

  private:
    // Of a thread.
    struct Done {
        u64_t columns_end, high_parts;
    };

    // The rows' carries come in from the column before and go on to the next.
    u64_t run_column(const Slot& slot, u64_t k) const {
        const Column column = column_at(frame_, image_, 0, k);
        inverse_column(slot, column);
        u64_t high_parts = 0;
        for (u64_t r = 0; r < rows_; r++) {
            const u64_t block = r * frame_.stages.columns() + k;
            if (r + 2 < rows_)
                prefetch_words(words_.at(block + 2 * frame_.stages.columns()), frame_.geometry.input_bytes());
            high_parts |= recover_block(slot, column.block(r), block, slot.rows()[r]);
        }
        return high_parts;
    }

    void inverse_column(const Slot& slot, const Column& column) const {
        const Geometry& g = frame_.geometry;
        for (unsigned s = 0; s < g.a; s++) {
            const Rows rows = rows_of(frame_, slot, column, s);
            if (frame_.ring == Ring::cyclic) {
                inverse_levels_root(rows, frame_.stages.levels[0], scale_[s]);
                continue;
            }
            inverse_levels(rows, frame_.stages.levels[0]);
            for (u64_t r = 0; r < rows_; r++)
                scale_row_offset(rows.data + r * rows.stride, g.lanes(), scale_[s], offset_[s],
                                 frame_.tables->prime[s]);
        }
    }

    u64_t recover_block(const Slot& slot, const double* residues, u64_t block, Slot::Row& row) const {
        const Geometry& g = frame_.geometry;
        const bool direct = words_.in_window(block);
        std::byte* const out = direct ? words_.at(block) : slot.block_words();
        const u64_t high_parts = block_to_words(g, *frame_.tables->set, out, residues, row.carry);
        if (frame_.ring == Ring::negacyclic)
            row.borrow = subtract_pattern(frame_, out, row.borrow != 0) ? 1 : 0;
        if (!direct) std::memcpy(words_.at(block), out, g.input_bytes());
        return high_parts;
    }

    const Frame& frame_;
    double* image_;
    const ResultWords& words_;
    u64_t rows_;
    double scale_[max_primes] = {};
    double offset_[max_primes] = {};
    Done done_[max_threads] = {};
};

}  // namespace

upL_t scratch_bytes(const Geometry& g, const Stages& stages, u64_t threads) {
    return pattern_bytes(g) + threads * Slot::bytes(g, stages);
}

void forward_passes(const Frame& frame, double* image, const Operand& A) {
    FirstStage(frame).add(image, A).run();
    for (unsigned s = 1; s < frame.stages.count; s++) middle_stage(frame, image, forward_direction, s);
    forward_part_stage(frame, image);
}

namespace {

bool lies_in(const double* image, const Geometry& g, const Operand& operand) {
    const auto* const begin = reinterpret_cast<const std::byte*>(image);
    return operand.words >= begin && operand.words < begin + g.image_bytes();
}

// From the parts' inverses to the words.
Outcome finish_inverse(const Frame& frame, double* image, const Result& result) {
    for (unsigned s = frame.stages.count; s-- > 1;) middle_stage(frame, image, inverse_direction, s);

    const bool negacyclic = frame.ring == Ring::negacyclic;
    if (negacyclic) make_pattern(frame);
    ResultWords words(frame, image, result);
    LastStage last(frame, image, words);
    const u64_t high_parts = last.run();
    last.join(words);
    if (negacyclic) correct_offset(frame.geometry, words);
    words.copy_rest();
    return {high_parts, words.top()};
}

}  // namespace

Outcome inverse_passes(const Frame& frame, double* image, const double* other, const Result& result) {
    inverse_part_stage(frame, image, other);
    return finish_inverse(frame, image, result);
}

Outcome product_passes(const Frame& frame, double* T1, double* T2, const Operand& A, const Operand* B,
                       const Result& result) {
    if (B != nullptr && lies_in(T2, frame.geometry, A)) {  // all of A is read before T2 is written
        FirstStage(frame).add(T1, A).run();
        FirstStage(frame).add(T2, *B).run();
    } else {
        FirstStage first(frame);
        first.add(T1, A);
        if (B != nullptr) first.add(T2, *B);
        first.run();
    }
    for (unsigned s = 1; s < frame.stages.count; s++) {
        middle_stage(frame, T1, forward_direction, s);
        if (B != nullptr) middle_stage(frame, T2, forward_direction, s);
    }
    product_part_stage(frame, T1, B != nullptr ? T2 : T1);
    return finish_inverse(frame, T1, result);
}

CheckedResult checked_result(const Frame& frame, const double* image, const Result& result) {
    // Only looks at the words.
    return ResultWords(frame, const_cast<double*>(image), result).checked(frame.threads);
}

}  // namespace znp::vst
