#include "multiply/vst/vst_passes.hpp"

#include <algorithm>
#include <cstring>

#include "foundation/threads.hpp"
#include "multiply/kernels/residue.hpp"
#include "multiply/vst/redundancy.hpp"
#include "multiply/vst/vst_kernels.hpp"

namespace znp::vst {

namespace {

constexpr upL_t max_block_bytes = 224 * 24;  // words of a block

constexpr upL_t round_up_32(upL_t n) {
    return (n + 31) & ~upL_t{31};
}

// ---- Threads ----------------------------------------------------------------------------------------------

// Calls f(low, high, slot) on disjoint ranges that make up [low, high), with up to `threads` threads. Even
// threads halve the range; odd ones that are fewer than the items divide it in proportion, the larger part
// rounded up; otherwise the items are halved and the threads follow. Slots are below `threads`, and in the
// order of the ranges.
template <class F>
void split_range(u64_t low, u64_t high, u64_t threads, u64_t slot, const F& f) {
    const u64_t items = high - low;
    if (threads <= 1 || items <= 1) {
        f(low, high, slot);
        return;
    }
    u64_t first_threads = threads / 2;
    u64_t first_items = items / 2;
    if (threads % 2 != 0) {
        if (threads < items) {
            first_threads = threads - threads / 2;
            first_items = (items * first_threads + threads - 1) / threads;
        } else {
            first_threads = std::max<u64_t>(1, threads * first_items / items);
        }
    }
    const u64_t mid = low + first_items;
    auto first = make_task([&](u64_t) { split_range(low, mid, first_threads, slot, f); });
    auto second =
        make_task([&](u64_t) { split_range(mid, high, threads - first_threads, slot + first_threads, f); });
    raise_status(fork_two(first, second));
}

// ---- Scratch ----------------------------------------------------------------------------------------------

upL_t column_twiddle_doubles(const Stages& stages) {
    unsigned levels = 0;
    for (unsigned s = 0; s < stages.count; s++) levels = std::max(levels, stages.levels[s]);
    return (upL_t{1} << levels) + 4;
}

upL_t part_twiddle_doubles(const Geometry& g, const Stages& stages) {
    return (upL_t{1} << (stages.part + block_levels(g.b))) + 4;
}

// What a thread works with.
class Slot {
  public:
    static upL_t bytes(const Geometry& g, const Stages& stages) {
        return round_up_32(twiddle_doubles(g, stages) * sizeof(double)) + max_block_bytes + row_bytes(stages);
    }

    Slot(const Frame& frame, u64_t index)
        : geometry_(frame.geometry),
          stages_(frame.stages),
          memory_(frame.scratch + pattern_bytes(frame.geometry) + index * bytes(geometry_, stages_)) {}

    static upL_t pattern_bytes(const Geometry& g) { return round_up_32(g.input_words() * 4); }

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

// Threads that can find work.
u64_t useful_threads(const Stages& stages, u64_t threads) {
    return std::clamp<u64_t>(threads, 1, u64_t{1} << std::min(20u, stages.columns_log(0)));
}

// ---- Stages -----------------------------------------------------------------------------------------------

// The index of node j at a depth, in the tree to which the ring belongs.
u64_t node_index(const Frame& frame, unsigned depth, u64_t j) {
    return frame.ring == Ring::cyclic ? j : (u64_t{1} << depth) + j;
}

upL_t block_doubles(const Geometry& g) {
    return g.block_vectors() * 4;
}

void make_column_twiddles(const Frame& frame, const Slot& slot, Direction direction, unsigned stage,
                          u64_t j) {
    const u64_t node = node_index(frame, frame.stages.first_level(stage), j);
    for (unsigned s = 0; s < frame.geometry.a; s++)
        local_twiddles(slot.column(s), frame.tables->prime[s], direction, node, frame.stages.levels[stage]);
}

// The rows of prime s in the column that begins at the block `first`.
Rows column_rows(const Frame& frame, const Slot& slot, double* image, unsigned stage, u64_t first,
                 unsigned s) {
    const Geometry& g = frame.geometry;
    double* const data = image + first * block_doubles(g) + s * g.row() * 4;
    // Next comes the next prime, and behind the last one the next column, which stands there too.
    return {data,
            block_doubles(g) << frame.stages.columns_log(stage),
            g.lanes(),
            slot.column(s),
            &frame.tables->prime[s],
            data + g.row() * 4};
}

// A stage behind the first, both ways: sections times columns, in order.
void middle_stage(const Frame& frame, double* image, Direction direction, unsigned stage) {
    const unsigned columns_log = frame.stages.columns_log(stage);
    const u64_t items = u64_t{1} << (frame.stages.first_level(stage) + columns_log);
    split_range(0, items, frame.threads, 0, [&](u64_t low, u64_t high, u64_t index) {
        const Slot slot(frame, index);
        for (u64_t i = low; i < high; i++) {
            const u64_t j = i >> columns_log;
            const u64_t column = i - (j << columns_log);
            if (i == low || column == 0) make_column_twiddles(frame, slot, direction, stage, j);
            const u64_t first = (j << (columns_log + frame.stages.levels[stage])) + column;
            for (unsigned s = 0; s < frame.geometry.a; s++) {
                const Rows rows = column_rows(frame, slot, image, stage, first, s);
                if (direction == forward_direction) {
                    forward_levels(rows, frame.stages.levels[stage], Top::large);
                } else {
                    inverse_levels(rows, frame.stages.levels[stage]);
                }
            }
        }
    });
}

// Prime s of part j, with its twiddles made.
Part make_part(const Frame& frame, const Slot& slot, double* image, Direction direction, u64_t j,
               unsigned s) {
    const Geometry& g = frame.geometry;
    const PrimeTables& prime = frame.tables->prime[s];
    const unsigned levels = frame.stages.part;
    const u64_t node = node_index(frame, frame.stages.part_depth(), j);
    const unsigned depth = levels + block_levels(g.b);
    double* const data = image + (j << levels) * block_doubles(g) + s * g.row() * 4;
    const double* const next =
        s + 1 < g.a ? data + g.row() * 4 : image + ((j + 1) << levels) * block_doubles(g);
    Part part{data,
              block_doubles(g),
              g.b,
              levels,
              {{slot.part(forward_direction), slot.part(inverse_direction)},
               {slot.powers(forward_direction), slot.powers(inverse_direction)},
               slot.weights(),
               slot.block_nodes()},
              &prime,
              next};
    if (direction == forward_direction || g.b == 1)
        local_twiddles(slot.part(forward_direction), prime, forward_direction, node, depth);
    if (direction == inverse_direction)
        local_twiddles(slot.part(inverse_direction), prime, inverse_direction, node, depth);
    if (g.b > 1) {
        local_powers(slot.powers(direction), prime, g.b, frame.tables->block_nodes, direction, node,
                     levels + 3);
        if (direction == inverse_direction) local_weights(slot.weights(), prime, g.b, node, levels + 3);
    }
    return part;
}

// f(slot, j) for each part, on all threads.
template <class F>
void for_each_part(const Frame& frame, const F& f) {
    split_range(0, u64_t{1} << frame.stages.part_depth(), frame.threads, 0,
                [&](u64_t low, u64_t high, u64_t index) {
                    const Slot slot(frame, index);
                    for (u64_t j = low; j < high; j++) f(slot, j);
                });
}

void forward_part_stage(const Frame& frame, double* image) {
    for_each_part(frame, [&](const Slot& slot, u64_t j) {
        for (unsigned s = 0; s < frame.geometry.a; s++)
            forward_part(make_part(frame, slot, image, forward_direction, j, s));
    });
}

void inverse_part_stage(const Frame& frame, double* image, const double* other) {
    for_each_part(frame, [&](const Slot& slot, u64_t j) {
        for (unsigned s = 0; s < frame.geometry.a; s++) {
            const Part part = make_part(frame, slot, image, inverse_direction, j, s);
            inverse_part(part, other != nullptr ? other + (part.data - image) : nullptr);
        }
    });
}

// Both parts forward and the product back, prime by prime. other may be image: the square.
void product_part_stage(const Frame& frame, double* image, double* other) {
    for_each_part(frame, [&](const Slot& slot, u64_t j) {
        for (unsigned s = 0; s < frame.geometry.a; s++) {
            Part part = make_part(frame, slot, image, forward_direction, j, s);
            forward_part(part);
            double* const image_part = part.data;
            double* const other_part = other + (part.data - image);
            if (other != image) {
                part.data = other_part;
                part.next = other + (part.next - image);
                forward_part(part);
            }
            part = make_part(frame, slot, image, inverse_direction, j, s);
            inverse_part({image_part, part.stride, part.b, part.levels, part.twiddles, part.prime},
                         other_part);
        }
    });
}

// ---- The negacyclic offset --------------------------------------------------------------------------------
//
// Coefficients modulo X^N + 1 have both signs. K = 2^(2 input_bits + d), with 2^d the bound of the redundancy
// check, is added to each, which makes them positive and below 2 K. What was added to the result,
//
//     K sum 2^(input_bits i), i < points   =   sum 2^(input_bits i + d), 2 <= i < points + 2
//                                          =   sum 2^(input_bits i + d), i < points
//                                              - 2 (2^d + 2^(input_bits + d))   modulo 2^capacity + 1,
//
// is a pattern that is the same in every block, and a number that is put right at the end.

unsigned offset_shift(const Geometry& g) {
    return g.c + (g.b == 1 ? 0 : g.b == 3 ? 2 : 3);
}

// K modulo prime s times the factor crt_inverses, as the scaled residues have it.
double scaled_offset(const Frame& frame, unsigned s) {
    const PrimeSet& set = *frame.tables->set;
    const auto p = static_cast<s128_t>(set.primes[s]);
    auto x = static_cast<s128_t>(set.crt_inverses[s]);
    const unsigned exponent = 2 * frame.geometry.input_bits() + offset_shift(frame.geometry);
    for (unsigned i = 0; i < exponent; i++) x = 2 * x % p;
    if (x > p / 2) x -= p;
    if (x < -(p / 2)) x += p;
    return static_cast<double>(static_cast<s64_t>(x));
}

u64_t* pattern(const Frame& frame) {
    return reinterpret_cast<u64_t*>(frame.scratch);
}

void make_pattern(const Frame& frame) {
    const Geometry& g = frame.geometry;
    u64_t* const words = pattern(frame);
    std::memset(words, 0, g.input_words() * 4);
    for (upL_t i = 0; i < g.n(); i++) {
        const upL_t bit = i * g.input_bits() + offset_shift(g);
        words[bit / 64] |= u64_t{1} << (bit % 64);
    }
}

u64_t load_word(const std::byte* x) {
    u64_t word;
    std::memcpy(&word, x, sizeof word);
    return word;
}
void store_word(std::byte* x, u64_t word) {
    std::memcpy(x, &word, sizeof word);
}

// x -= y + borrow over `count` words; returns the borrow.
u64_t subtract_words(std::byte* x, const u64_t* y, upL_t count, u64_t borrow) {
    for (upL_t i = 0; i < count; i++) {
        const u64_t word = load_word(x + 8 * i);
        const u64_t difference = word - y[i];
        store_word(x + 8 * i, difference - borrow);
        borrow = static_cast<u64_t>(word < y[i]) | static_cast<u64_t>(difference < borrow);
    }
    return borrow;
}

// ---- The result's words -----------------------------------------------------------------------------------

// The words of the blocks, wherever they stand, as one number of blocks() blocks.
class ResultWords {
  public:
    ResultWords(const Frame& frame, double* image, const Result& result)
        : geometry_(frame.geometry),
          ring_(frame.ring),
          image_(reinterpret_cast<std::byte*>(image)),
          result_(result),
          block_words_(frame.geometry.input_words()) {}

    bool in_window(u64_t block) const {
        return block * block_words_ >= result_.s && (block + 1) * block_words_ <= result_.e;
    }
    std::byte* at(u64_t block) const {
        return in_window(block) ? result_.R + (block * block_words_ - result_.s) * 4
                                : image_ + block * geometry_.block_bytes();
    }
    upL_t words64() const { return block_words_ / 2; }

    // Adds (subtracts) a number at the first bit of a block and lets the carry run, over the end by the rule
    // of the ring. `block` may be blocks(), which is the end. The carries out of the end are counted in top.
    void add(u64_t block, const u64_t* number, upL_t length, bool subtract) {
        if (std::all_of(number, number + length, [](u64_t word) { return word == 0; })) return;
        if (top_) {  // -1 until now
            const u64_t one = 1;
            top_ = false;
            add(block, number, length, subtract);
            add(0, &one, 1, true);
            return;
        }
        if (block == geometry_.blocks()) {
            wrap(number, length, subtract);
            return;
        }
        u64_t carry = 0;
        std::byte* x = at(block);
        for (upL_t i = 0;; i++) {
            if (i == words64()) {
                if (carry == 0) return;
                if (++block == geometry_.blocks()) break;
                x = at(block);
                i = 0;
            }
            if (carry == 0 && length == 0) return;
            const u64_t y = length > 0 ? *number++ : 0;
            if (length > 0) length--;
            step(x + 8 * i, y, carry, subtract);
        }
        if (carry != 0) wrap(&carry, 1, subtract);
    }

    // Of the ring modulo 2^capacity + 1: the value is 2^capacity.
    bool top() const { return top_; }

    // The parts of the window that lie in blocks which are not wholly in it.
    void copy_rest() const {
        if (result_.s == result_.e) return;
        for (u64_t block = result_.s / block_words_; block * block_words_ < result_.e; block++) {
            if (in_window(block)) {
                block = result_.e / block_words_ - 1;
                continue;
            }
            const upL_t low = std::max(result_.s, block * block_words_);
            const upL_t high = std::min(result_.e, (block + 1) * block_words_);
            std::memcpy(result_.R + (low - result_.s) * 4, at(block) + (low - block * block_words_) * 4,
                        (high - low) * 4);
        }
    }

    u64_t hash() const {
        u64_t h = 0;
        for (u64_t block = geometry_.blocks(); block-- > 0;)
            h = residue::hash_words64(reinterpret_cast<const c64i*>(at(block)), words64(), h);
        return h;
    }

  private:
    static void step(std::byte* x, u64_t y, u64_t& carry, bool subtract) {
        const u64_t word = load_word(x);
        if (subtract) {
            const u64_t difference = word - y;
            store_word(x, difference - carry);
            carry = static_cast<u64_t>(word < y) | static_cast<u64_t>(difference < carry);
        } else {
            const u64_t sum = word + y;
            store_word(x, sum + carry);
            carry = static_cast<u64_t>(sum < word) | static_cast<u64_t>(sum + carry < sum);
        }
    }

    // 2^capacity is 1 or -1. A negative value that wraps to all ones and one more is 2^capacity.
    void wrap(const u64_t* number, upL_t length, bool subtract) {
        if (ring_ == Ring::cyclic) {
            add(0, number, length, subtract);
            return;
        }
        if (!subtract && is_one(number, length) && is_zero()) {
            top_ = true;
            return;
        }
        add(0, number, length, !subtract);
    }
    static bool is_one(const u64_t* number, upL_t length) {
        return number[0] == 1 &&
               std::all_of(number + 1, number + length, [](u64_t word) { return word == 0; });
    }
    bool is_zero() const {
        for (u64_t block = 0; block < geometry_.blocks(); block++) {
            for (upL_t i = 0; i < words64(); i++) {
                if (load_word(at(block) + 8 * i) != 0) return false;
            }
        }
        return true;
    }

    Geometry geometry_;
    Ring ring_;
    std::byte* image_;
    Result result_;
    upL_t block_words_;
    bool top_ = false;
};

// ---- The first stage, forward and back --------------------------------------------------------------------

// The first stage of up to two operands.
class FirstStage {
  public:
    explicit FirstStage(const Frame& frame) : frame_(frame) {}

    void add(double* image, const Operand& operand) {
        const Geometry& g = frame_.geometry;
        const bool root = frame_.ring == Ring::cyclic;
        const bool half = root && operand.L <= (g.blocks() / 2) * g.input_words();  // the upper rows are zero
        jobs_[count_++] = {image, operand,
                           half   ? Top::half_root
                           : root ? Top::root
                                  : Top::any,
                           (u64_t{1} << frame_.stages.levels[0]) >> (half ? 1 : 0)};
    }

    void run() const {
        split_range(0, u64_t{1} << frame_.stages.columns_log(0), frame_.threads, 0,
                    [&](u64_t low, u64_t high, u64_t index) {
                        const Slot slot(frame_, index);
                        make_column_twiddles(frame_, slot, forward_direction, 0, 0);
                        for (unsigned i = 0; i < count_; i++) {
                            for (u64_t column = low; column < high; column++)
                                run_column(jobs_[i], slot, column);
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

    void run_column(const Job& job, const Slot& slot, u64_t column) const {
        const Geometry& g = frame_.geometry;
        for (u64_t r = 0; r < job.rows; r++) {
            const u64_t block = (r << frame_.stages.columns_log(0)) + column;
            words_to_block(g, *frame_.tables->set, job.image + block * block_doubles(g), job.operand.words,
                           job.operand.L, block);
        }
        for (unsigned s = 0; s < g.a; s++)
            forward_levels(column_rows(frame_, slot, job.image, 0, column, s), frame_.stages.levels[0],
                           job.top);
    }

    const Frame& frame_;
    Job jobs_[2] = {};
    unsigned count_ = 0;
};

// What a thread leaves behind: the columns that it did, with a carry for each row, and the high parts.
struct SlotReport {
    u64_t low, high, H;
};

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

    void run(u64_t low, u64_t high, u64_t index) {
        const Slot slot(frame_, index);
        make_column_twiddles(frame_, slot, inverse_direction, 0, 0);
        std::fill_n(slot.rows(), rows_, Slot::Row{});
        u64_t H = 0;
        for (u64_t column = low; column < high; column++) {
            inverse_column(slot, column);
            for (u64_t r = 0; r < rows_; r++)
                H |= recover_block(slot, (r << frame_.stages.columns_log(0)) + column, slot.rows()[r]);
        }
        reports_[index] = {low, high, H};
    }

    u64_t high_parts() const {
        u64_t H = 0;
        for (u64_t i = 0; i < frame_.threads; i++) H |= reports_[i].H;
        return H;
    }

    // The carries that left the columns of each thread.
    void join(ResultWords& words) const {
        const unsigned columns_log = frame_.stages.columns_log(0);
        for (u64_t i = 0; i < frame_.threads; i++) {
            if (reports_[i].high == 0) continue;
            const Slot slot(frame_, i);
            for (u64_t r = 0; r < rows_; r++) {
                const u64_t block = (r << columns_log) + reports_[i].high;
                const Slot::Row& row = slot.rows()[r];
                words.add(block, row.carry.words, 8, false);
                words.add(block, &row.borrow, 1, true);
            }
        }
    }

  private:
    void inverse_column(const Slot& slot, u64_t column) const {
        const Geometry& g = frame_.geometry;
        for (unsigned s = 0; s < g.a; s++) {
            const Rows rows = column_rows(frame_, slot, image_, 0, column, s);
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

    u64_t recover_block(const Slot& slot, u64_t block, Slot::Row& row) const {
        const Geometry& g = frame_.geometry;
        const bool direct = words_.in_window(block);
        std::byte* const out = direct ? words_.at(block) : slot.block_words();
        const u64_t H =
            block_to_words(g, *frame_.tables->set, out, image_ + block * block_doubles(g), row.carry);
        if (frame_.ring == Ring::negacyclic)
            row.borrow = subtract_words(out, pattern(frame_), g.input_words() / 2, row.borrow);
        if (!direct) std::memcpy(words_.at(block), out, g.input_words() * 4);
        return H;
    }

    const Frame& frame_;
    double* image_;
    const ResultWords& words_;
    u64_t rows_;
    double scale_[9] = {};
    double offset_[9] = {};
    SlotReport reports_[max_threads] = {};
};

// What the pattern takes off too much.
void correct_offset(const Geometry& g, ResultWords& words) {
    const unsigned d = offset_shift(g) + 1;
    u64_t number[8] = {};
    for (const unsigned bit : {d, d + g.input_bits()}) number[bit / 64] |= u64_t{1} << (bit % 64);
    words.add(0, number, 8, false);
}

}  // namespace

upL_t carry_bytes(const Stages& stages) {
    return Slot::row_bytes(stages);
}

upL_t scratch_bytes(const Geometry& g, const Stages& stages, u64_t threads) {
    return Slot::pattern_bytes(g) + useful_threads(stages, threads) * Slot::bytes(g, stages);
}

void forward_passes(const Frame& frame, double* image, const std::byte* words, upL_t L) {
    FirstStage first(frame);
    first.add(image, {words, L});
    first.run();
    for (unsigned s = 1; s < frame.stages.count; s++) middle_stage(frame, image, forward_direction, s);
    forward_part_stage(frame, image);
}

namespace {

// From the parts' inverses to the words.
u32_t finish_inverse(const Frame& frame, double* image, const Result& result) {
    for (unsigned s = frame.stages.count; s-- > 1;) middle_stage(frame, image, inverse_direction, s);

    const bool negacyclic = frame.ring == Ring::negacyclic;
    if (negacyclic) make_pattern(frame);
    ResultWords words(frame, image, result);
    LastStage last(frame, image, words);
    split_range(0, u64_t{1} << frame.stages.columns_log(0), frame.threads, 0,
                [&](u64_t low, u64_t high, u64_t index) { last.run(low, high, index); });
    check_redundancy(last.high_parts(), redundancy_bound(frame.geometry) << (negacyclic ? 1 : 0));
    last.join(words);
    if (negacyclic) correct_offset(frame.geometry, words);
    words.copy_rest();
    return words.top() ? 1 : 0;
}

}  // namespace

u32_t inverse_passes(const Frame& frame, double* image, const double* other, const Result& result) {
    inverse_part_stage(frame, image, other);
    return finish_inverse(frame, image, result);
}

u32_t product_passes(const Frame& frame, double* T1, double* T2, const Operand& A, const Operand* B,
                     const Result& result) {
    FirstStage first(frame);
    first.add(T1, A);
    if (B != nullptr) first.add(T2, *B);
    first.run();
    for (unsigned s = 1; s < frame.stages.count; s++) {
        middle_stage(frame, T1, forward_direction, s);
        if (B != nullptr) middle_stage(frame, T2, forward_direction, s);
    }
    product_part_stage(frame, T1, B != nullptr ? T2 : T1);
    return finish_inverse(frame, T1, result);
}

u64_t hash_result(const Frame& frame, const double* image, const Result& result) {
    // Only looks at the words.
    return ResultWords(frame, const_cast<double*>(image), result).hash();
}

}  // namespace znp::vst
