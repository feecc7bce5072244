#include "multiply/vst/vst_tables.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <new>

#include "foundation/fail.hpp"
#include "foundation/threads.hpp"
#include "multiply/vst/field.hpp"
#include "multiply/vst/size_plan.hpp"
#include "multiply/vst/vst_kernels.hpp"
#include "multiply/vst/vst_stages.hpp"
#include "shell/console.hpp"

namespace znp::vst {

namespace {

constexpr unsigned bit_entries = 48;

// Hands out arrays one behind the other.
class Carver {
  public:
    explicit Carver(std::byte* memory) : next_(memory) {}
    double* doubles(upL_t count) {
        auto* const array = reinterpret_cast<double*>(next_);
        next_ += whole_vector_doubles(count) * sizeof(double);
        return array;
    }
    std::byte* next() const { return next_; }

  private:
    std::byte* next_;
};

// Sizes of the tables of a set whose largest transform has this geometry.
struct TableShape {
    unsigned part;
    upL_t nodes;
    upL_t block_nodes;

    explicit TableShape(const Geometry& g)
        : part(std::min(g.part_levels(), g.levels())),
          nodes(std::max(upL_t{1} << (part + block_levels(g.b) - 1), upL_t{1} << (max_column_levels - 1))),
          block_nodes(g.b == 1 ? 0 : upL_t{1} << (part + block_levels(g.b))) {}

    upL_t prime_doubles(unsigned b) const {
        const upL_t plain = 2 * (whole_vector_doubles(nodes) + bit_entries);
        return b == 1 ? plain : plain + 2 * ((b - 1) * block_nodes + bit_entries) + b * block_nodes;
    }
    upL_t bytes(const Geometry& g) const {
        return (whole_vector_doubles(sizeof(SetTables) / 8 + 3) + g.a * prime_doubles(g.b)) * 8;
    }
};

class PrimeBuilder {
  public:
    PrimeBuilder(PrimeTables& tables, const SetTables& set, unsigned s, Carver carver)
        : tables_(tables),
          set_(set),
          b_(set.geometry.b),
          max_c_(set.set->max_c),
          field_(set.set->primes[s]),
          root_(field_.from(set.set->roots[s])),
          carver_(carver) {
        tables_.p = set.set->primes[s];
        tables_.inverse = 1.0 / tables_.p;
        tables_.product_magic =
            std::ldexp(1.5, static_cast<int>(std::ceil(std::log2(33 * tables_.p * tables_.p))) + 1);
    }

    void build() {
        for (const Direction direction : {forward_direction, inverse_direction}) {
            u64_t bits[bit_entries];
            for (unsigned i = 0; i < bit_entries; i++) bits[i] = unit(i + 2, 1, direction);
            tables_.bits[direction] = store(bits, bit_entries);
            tables_.twiddles[direction] = expand(set_.table_nodes, bits);
        }
        if (b_ > 1) build_odd();
    }

  private:
    // e(2^-order)^exponent or its inverse; 1 where the field has no such root.
    u64_t unit(unsigned order, u64_t exponent, Direction direction) const {
        if (order > max_c_) return 1;
        const u64_t base = field_.power(root_, u64_t{b_} << (max_c_ - order));
        const u64_t value = field_.power(base, exponent);
        return direction == forward_direction ? value : field_.invert(value);
    }

    const double* store(const u64_t* values, upL_t count) {
        double* const out = carver_.doubles(count);
        for (upL_t i = 0; i < count; i++) out[i] = field_.balanced(values[i]);
        return out;
    }

    const double* expand(upL_t count, const u64_t* bits) {
        double* const out = carver_.doubles(count);
        out[0] = 1;
        for (upL_t j = 1; j < std::min(count, vector_doubles); j++) {
            const upL_t top = std::bit_floor(j);
            out[j] = field_.balanced(field_.mul(field_.from(out[j - top]), bits[std::countr_zero(top)]));
        }
        for (upL_t top = vector_doubles; top < count; top *= 2)
            scale_residues(out + top, field_.balanced(bits[std::countr_zero(top)]), out, top, tables_);
        return out;
    }

    void build_odd() {
        const u64_t z = field_.power(root_, u64_t{1} << max_c_);
        // 1 / b modulo 2^max_c.
        u64_t inverse_b = 1;
        for (unsigned i = 0; i < 6; i++) inverse_b *= 2 - b_ * inverse_b;
        for (const Direction direction : {forward_direction, inverse_direction}) {
            u64_t bits[bit_entries];
            for (unsigned i = 0; i < bit_entries; i++)
                bits[i] = unit(i + 1, inverse_b & ((u64_t{2} << i) - 1), direction);
            tables_.power_bits[direction] = store(bits, bit_entries);
            build_powers(direction, bits);
            if (direction == forward_direction) build_weights(z);
            build_constants(tables_.odd[direction], direction == forward_direction ? z : field_.invert(z));
        }
    }

    void build_powers(Direction direction, const u64_t* bits) {
        const upL_t nodes = set_.block_nodes;
        const double* const v = expand(nodes, bits);
        double* out = carver_.doubles((b_ - 2) * nodes);
        const double* previous = v;
        for (unsigned r = 2; r < b_; r++, previous = out, out += nodes)
            multiply_residues(out, previous, v, nodes, tables_);
        tables_.powers[direction] = v;
    }

    // v_j z^k at j b + k, as many nodes at a time as make whole vectors.
    void build_weights(u64_t z) {
        const upL_t nodes = set_.block_nodes;
        double* const out = carver_.doubles(b_ * nodes);
        tables_.weights = out;
        double powers[vector_doubles * 7];
        u64_t power = 1;
        for (unsigned k = 0; k < b_; k++, power = field_.mul(power, z)) {
            for (upL_t j = 0; j < vector_doubles; j++) powers[j * b_ + k] = field_.balanced(power);
        }
        for (upL_t j = 0; j < nodes; j += vector_doubles) {
            for (upL_t i = 0; i < vector_doubles; i++) {
                std::fill_n(out + (j + i) * b_, b_, tables_.powers[forward_direction][j + i]);
            }
            multiply_residues(out + j * b_, out + j * b_, powers, vector_doubles * b_, tables_);
        }
    }

    // (z^j + z^-j) / 2 or (z^j - z^-j) / 2.
    u64_t half_sum(u64_t z, unsigned j, bool difference) const {
        const u64_t e = field_.power(z, j);
        const u64_t inverse = field_.invert(e);
        return field_.mul(field_.invert(2), difference ? field_.sub(e, inverse) : field_.add(e, inverse));
    }

    void build_constants(OddConstants& constants, u64_t z) const {
        constants.z = field_.balanced(z);
        if (b_ == 5) build_constants_5(constants, z);
        if (b_ == 7) build_constants_7(constants, z);
    }

    void build_constants_5(OddConstants& constants, u64_t z) const {
        const u64_t c1 = half_sum(z, 1, false), c2 = half_sum(z, 2, false);
        const u64_t s1 = half_sum(z, 1, true), s2 = half_sum(z, 2, true);
        constants.mean[0] = field_.balanced(field_.sub(0, field_.invert(4)));
        constants.factors[0][0] = field_.balanced(field_.mul(field_.invert(2), field_.sub(c1, c2)));
        constants.factors[1][0] = field_.balanced(s1);
        constants.factors[1][1] = field_.balanced(field_.sub(s2, s1));
        constants.factors[1][2] = field_.balanced(field_.add(s1, s2));
    }

    void build_constants_7(OddConstants& constants, u64_t z) const {
        for (const unsigned k : {0u, 1u}) {
            u64_t row[3];
            for (unsigned j = 0; j < 3; j++) row[j] = half_sum(z, j + 1, k == 1);
            if (k == 1) row[2] = field_.sub(0, row[2]);
            const u64_t sum = field_.add(field_.add(row[0], row[1]), row[2]);
            const u64_t mean = field_.mul(sum, field_.invert(3));
            constants.mean[k] = field_.balanced(mean);
            constants.factors[k][0] = field_.balanced(field_.sub(mean, row[1]));
            constants.factors[k][1] = field_.balanced(field_.sub(mean, row[0]));
            constants.factors[k][2] = field_.balanced(field_.sub(mean, row[2]));
        }
    }

    PrimeTables& tables_;
    const SetTables& set_;
    unsigned b_;
    unsigned max_c_;
    Field field_;
    u64_t root_;
    Carver carver_;
};

template <class F>
void for_each_set(const TablePlan& plan, F f) {
    for (unsigned a = 4; a <= 9; a++) {
        for (unsigned b = 1; b <= 7; b += 2) {
            if (plan.c[a - 3][b / 2] != 0) f(Geometry{a, b, plan.c[a - 3][b / 2]});
        }
    }
}

constexpr upL_t header_bytes = whole_vector_bytes(sizeof(VSTTables));

// A contiguous part has so many levels at least.
constexpr unsigned min_part_levels = 3;

// The set's header, and where its primes' arrays lie.
SetTables* place_set(const Geometry& g, const TableShape& shape, std::byte* memory) {
    if (g.c < g.t() + min_part_levels || shape.part < min_part_levels)
        fail(zn_exception(error_code::action_1, "Buffer is too small."));
    auto* const tables = new (memory) SetTables{};
    tables->geometry = g;
    tables->set = &prime_set(g.a, g.b);
    tables->table_nodes = shape.nodes;
    tables->block_nodes = shape.block_nodes;
    return tables;
}

// One prime of one set: independent of all others.
struct PrimeJob {
    SetTables* set;
    unsigned s;
    std::byte* arrays;

    void run() const { PrimeBuilder(set->prime[s], *set, s, Carver(arrays)).build(); }
};

// All sets of a plan have so many primes together.
constexpr upL_t max_jobs = 4 * (4 + 5 + 6 + 7 + 8 + 9);

// Primes that are worth a thread.
constexpr upL_t jobs_of_a_thread = 20;

void run_jobs(const PrimeJob* jobs, upL_t count) {
    const u64_t threads = std::clamp<u64_t>(count / jobs_of_a_thread, 1, logical_cores());
    auto task = make_task([&](u64_t index) {
        for (upL_t i = index; i < count; i += threads) jobs[i].run();
    });
    fork_range(task, 0, threads);
}

}  // namespace

TablePlan::TablePlan(u64_t limit_bits) {
    const u64_t capacity = find_size(limit_bits).capacity();
    for (const auto rows : {main_plan(), large_plan()}) {
        for (const SizePlanRow& row : rows) {
            if (row.capacity() > capacity) break;
            require(row.geometry());
        }
    }
}

void TablePlan::require(const Geometry& g) {
    unsigned& largest = c[g.a - 3][g.b / 2];
    largest = std::max(largest, g.c);
}

upL_t table_bytes(const TablePlan& plan) {
    upL_t bytes = header_bytes;
    for_each_set(plan, [&](const Geometry& g) { bytes += TableShape(g).bytes(g); });
    return bytes;
}

std::byte* build_tables(const VSTTables*& tables, const TablePlan& plan, std::byte* memory) {
    if (reinterpret_cast<std::uintptr_t>(memory) % vector_bytes != 0)
        Console::print_error("Data Misalignment. Possible performance penalty.");
    auto* const header = new (memory) VSTTables{};
    memory += header_bytes;
    PrimeJob jobs[max_jobs];
    upL_t count = 0;
    for_each_set(plan, [&](const Geometry& g) {
        const TableShape shape(g);
        SetTables* const set = place_set(g, shape, memory);
        header->sets[g.a - 3][g.b / 2] = set;
        memory += shape.bytes(g);
        std::byte* arrays = memory - g.a * shape.prime_doubles(g.b) * sizeof(double);
        for (unsigned i = 0; i < g.a; i++, arrays += shape.prime_doubles(g.b) * sizeof(double))
            jobs[count++] = {set, i, arrays};
    });
    run_jobs(jobs, count);
    tables = header;
    return memory;
}

}  // namespace znp::vst
