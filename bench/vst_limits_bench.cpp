// How far the large transform is from the machine's limits. Three tables:
//
//     vst_limits_bench kernels    what the kernels do in the first-level cache, against the ports
//     vst_limits_bench memory     a plain triad, on one and two threads
//     vst_limits_bench products   which limit binds the product of n by n words
//
// Without an argument all of them, in half a minute. Cycles are measured against a chain of dependent
// additions, instructions by running the kernel step by step (bench/instruction_mix.hpp).
#include <cstdio>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "bench/instruction_mix.hpp"
#include "bench/measurement.hpp"
#include "bench/vst_product.hpp"
#include "foundation/range_fork.hpp"
#include "multiply/vst/conversion.hpp"
#include "multiply/vst/vst_kernels.hpp"

namespace znp {
namespace {

using vst::Geometry;

// ---- Kernels ----------------------------------------------------------------------------------------------

// One kind of work. A unit of levels is a butterfly on two vectors of 4 points; of everything else it is a
// vector of 4 points of one prime.
struct Kernel {
    std::string name;
    double units;  // in a call
    std::function<void()> call;
    bench::InstructionMix mix{};  // of a unit
    double cycles = 0;            // of a unit, measured
};

// The kernels of a transform, on a few blocks that stay in the first-level cache.
class Kernels {
  public:
    explicit Kernels(const Geometry& g) : g_(g), set_(tables(g)), prime_(set_.prime[0]) {
        std::mt19937_64 rng(1);
        for (auto* image : {&x_, &y_}) {
            *image = make_guarded_array<double>(nullptr, image_doubles, 64);
            for (upL_t i = 0; i < image_doubles; ++i) (*image)[i] = static_cast<double>(rng() >> 17) - 0x1p46;
        }
        words_.resize(g.input_words());
        for (u64_t& word : words_) word = rng();
        for (const vst::Direction d : {vst::forward_direction, vst::inverse_direction}) {
            column_[d] = doubles((upL_t{1} << column_levels) + 4);
            vst::local_twiddles(column_[d].get(), prime_, d, 5, column_levels);
            twiddles_[d] = doubles((upL_t{1} << part_depth()) + 4);
            powers_[d] = doubles(7 * nodes + 4);
        }
        weights_ = doubles(7 * nodes + 4);
        make_part_twiddles();
        add_levels();
        add_blocks();
        add_conversions();
    }

    std::vector<Kernel>& list() { return list_; }
    const Kernel& operator[](const char* name) const {
        for (const Kernel& kernel : list_) {
            if (kernel.name == name) return kernel;
        }
        std::abort();
    }

    void measure(double hertz, bool blocks_only) {
        if (blocks_only)
            std::erase_if(list_, [](const Kernel& k) { return k.name.find("block") == std::string::npos; });
        for (Kernel& kernel : list_) {
            kernel.mix = bench::instruction_mix(kernel.call).per(kernel.units);
            kernel.cycles = bench::least_seconds(kernel.call, 200, 100) * hertz / kernel.units;
        }
    }

  private:
    // The blocks are the first ones of a part.
    static constexpr unsigned column_levels = 4, part_levels = 5;
    static constexpr upL_t blocks = 4, nodes = upL_t{8} << part_levels;
    static constexpr upL_t image_doubles = upL_t{60 * 4} << column_levels;

    static GuardedArray<double> doubles(upL_t count) {
        return make_guarded_array<double>(nullptr, count, 64);
    }
    const vst::SetTables& tables(const Geometry& g) {
        vst::TablePlan plan;
        plan.require({g.a, g.b, 14});
        memory_ = make_guarded_array<std::byte>(nullptr, vst::table_bytes(plan), 64);
        const VSTTables* built = nullptr;
        vst::build_tables(built, plan, memory_.get());
        return *built->sets[g.a - 3][g.b / 2];
    }
    unsigned part_depth() const { return part_levels + vst::block_levels(g_.b); }

    // What a product makes for a part and a prime.
    void make_part_twiddles() {
        vst::local_twiddles(twiddles_[0].get(), prime_, vst::forward_direction, 5, part_depth());
        vst::local_twiddles(twiddles_[1].get(), prime_, vst::inverse_direction, 5, part_depth());
        if (g_.b == 1) {  // once more, for the inverse
            vst::local_twiddles(twiddles_[0].get(), prime_, vst::forward_direction, 5, part_depth());
            return;
        }
        for (const vst::Direction d : {vst::forward_direction, vst::inverse_direction})
            vst::local_powers(powers_[d].get(), prime_, g_.b, set_.block_nodes, d, 5, part_levels + 3);
        vst::local_weights(weights_.get(), prime_, g_.b, 5, part_levels + 3);
    }

    void add_levels() {
        const upL_t stride = g_.row() * 4;
        const auto butterflies = [&](unsigned levels) {
            return static_cast<double>(g_.lanes() * levels << (levels - 1));
        };
        const vst::Rows forward{x_.get(), stride, g_.lanes(), column_[0].get(), &prime_};
        const vst::Rows inverse{x_.get(), stride, g_.lanes(), column_[1].get(), &prime_};
        const unsigned all = column_levels;
        list_.push_back({"forward levels", butterflies(all),
                         [=] { vst::forward_levels(forward, all, vst::Top::large); }});
        list_.push_back({"inverse levels", butterflies(all), [=] { vst::inverse_levels(inverse, all); }});
        list_.push_back({"forward root, half of it zero", butterflies(2),
                         [=] { vst::forward_levels(forward, 2, vst::Top::half_root); }});
        list_.push_back({"inverse root with the scale", butterflies(2),
                         [=] { vst::inverse_levels_root(inverse, 2, 12345); }});
    }

    void add_blocks() {
        const vst::Part part{x_.get(),
                             g_.row() * 4,
                             g_.b,
                             part_levels,
                             {{twiddles_[0].get(), twiddles_[1].get()},
                              {powers_[0].get(), powers_[1].get()},
                              weights_.get(),
                              nodes},
                             &prime_};
        const auto vectors = static_cast<double>(blocks * g_.lanes());
        const double* const other = y_.get();
        list_.push_back({"forward blocks", vectors, [=] { vst::forward_blocks(part, 0, blocks); }});
        list_.push_back(
            {"inverse blocks, product", vectors, [=] { vst::inverse_blocks(part, other, 0, blocks); }});
        list_.push_back(
            {"inverse blocks, square", vectors, [=] { vst::inverse_blocks(part, part.data, 0, blocks); }});
        list_.push_back({"twiddles of a part", static_cast<double>(g_.lanes() << part_levels),
                         [this] { make_part_twiddles(); }});
    }

    void add_conversions() {
        const auto vectors = static_cast<double>(g_.lanes() * g_.a);
        auto* const words = reinterpret_cast<std::byte*>(words_.data());
        list_.push_back({"words to residues", vectors, [=, this] {
                             vst::words_to_block(g_, *set_.set, y_.get(), words, 2 * g_.input_words(), 0);
                         }});
        list_.push_back({"residues to words", vectors, [=, this] {
                             vst::BlockCarry carry{};
                             vst::block_to_words(g_, *set_.set, words, y_.get(), carry);
                         }});
    }

    Geometry g_;
    GuardedArray<std::byte> memory_;
    const vst::SetTables& set_;
    const vst::PrimeTables& prime_;
    GuardedArray<double> x_, y_, column_[2], twiddles_[2], powers_[2], weights_;
    std::vector<u64_t> words_;
    std::vector<Kernel> list_;
};

void print_kernels(double hertz) {
    std::puts(
        "| kernel | b | instructions | products | sums | other | loads | stores | bound, cycles | measured | "
        "of the bound |");
    std::puts("| --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- |");
    for (const unsigned b : {1u, 3u, 5u, 7u}) {
        Kernels kernels({8, b, 14});
        kernels.measure(hertz, b != 1);
        for (const Kernel& k : kernels.list()) {
            std::printf("| %s | %u | %.1f | %.2f | %.2f | %.2f | %.2f | %.2f | %.2f | %.2f | %.0f %% |\n",
                        k.name.c_str(), b, k.mix.instructions, k.mix.multiply, k.mix.add, k.mix.other,
                        k.mix.loads, k.mix.stores, k.mix.bound(), k.cycles, 100 * k.mix.bound() / k.cycles);
        }
    }
}

// ---- Memory -----------------------------------------------------------------------------------------------

__attribute__((target("avx2,fma"))) void triad(double* a, const double* b, const double* c, upL_t n) {
    for (upL_t i = 0; i < n; ++i) a[i] = b[i] + 3.0 * c[i];
}

// Bytes a second that a = b + 3 c moves: b and c read, the lines of a fetched and written back. Each thread
// has three arrays of so many doubles.
double triad_rate(upL_t n, unsigned threads) {
    const auto memory = make_guarded_array<double>(nullptr, 3 * n * threads, 64);
    first_touch(memory.get(), 3 * n * threads * 8, threads);
    const unsigned turns = static_cast<unsigned>(std::max<upL_t>(1, (upL_t{1} << 24) / n));
    double best = 0;
    for (unsigned round = 0; round < 7; ++round) {
        auto task = make_task([&](u64_t index) {
            double* const a = memory.get() + 3 * n * index;
            for (unsigned turn = 0; turn < turns; ++turn) {
                triad(a, a + n, a + 2 * n, n);
                asm volatile("" ::: "memory");
            }
        });
        const double taken = bench::seconds_of([&] { fork_range(task, 0, threads); });
        best = std::max(best, 32.0 * static_cast<double>(n) * turns * threads / taken);
    }
    return best;
}

// Three arrays of a thread.
constexpr upL_t second_level_doubles = (upL_t{600} << 10) / 24;
constexpr upL_t third_level_doubles = (upL_t{8} << 20) / 24;
constexpr upL_t memory_doubles = (upL_t{768} << 20) / 24;

void print_memory() {
    std::puts("| three arrays in | GB/s, one thread | two threads |");
    std::puts("| --- | --- | --- |");
    const auto row = [](const char* where, upL_t n) {
        std::printf("| %s | %.1f | %.1f |\n", where, triad_rate(n, 1) * 1e-9, triad_rate(n, 2) * 1e-9);
    };
    row("the second-level cache, 600 KiB a thread", second_level_doubles);
    row("the third-level cache, 8 MiB a thread", third_level_doubles);
    row("memory, 768 MiB a thread", memory_doubles);
}

// ---- Products ---------------------------------------------------------------------------------------------

constexpr double second_level_bytes = 1 << 20, third_level_bytes = 32 << 20;

// How the levels of a product on one thread are divided.
struct Shape {
    Geometry g;
    vst::Stages stages;

    explicit Shape(const Geometry& geometry)
        : g(geometry), stages(g.levels(), g.part_levels(), 0, g.max_column_levels()) {}
    double image() const { return static_cast<double>(g.image_bytes()); }
    // A column of the first stage with all primes.
    double column() const {
        return static_cast<double>(g.block_bytes()) * static_cast<double>(u64_t{1} << stages.levels[0]);
    }
};

// What a product keeps at hand: both images, operands and result.
double footprint(const Shape& shape, upL_t n) {
    return 2 * shape.image() + 32.0 * static_cast<double>(n);
}

// Bytes that leave or enter the second-level cache, by where they come from. A line that is written is also
// fetched. The upper half of an operand's rows is zero and not read.
struct Traffic {
    double third_level = 0, memory = 0;

    Traffic(const Shape& shape, upL_t n) {
        const double image = shape.image(), operand = 8.0 * static_cast<double>(n);
        double bytes = 2 * (operand + 2 * image);  // the first stage, fused with the words
        bytes += 2 * 2 * image;                    // the parts of both, which remain
        bytes += 2 * image + 2 * 2 * operand;      // the last stage and the result
        bytes += 3 * 2 * image * (shape.stages.count - 1);
        (footprint(shape, n) > third_level_bytes ? memory : third_level) = bytes;
        // A column that the second level does not hold goes through it once more, prime by prime: behind the
        // words' conversion, and before the recovery.
        if (shape.column() > second_level_bytes) third_level += 3 * image;
    }
    double seconds(unsigned threads) const {
        return third_level / triad_rate(third_level_doubles, threads) +
               memory / triad_rate(memory_doubles, threads);
    }
};

// Cycles of a product's kernels: the ports' bounds and those measured in the first-level cache.
struct Cycles {
    double bound = 0, measured = 0;
    void add(const Kernel& kernel, double units) {
        bound += kernel.mix.bound() * units;
        measured += kernel.cycles * units;
    }
};

Cycles product_cycles(const Shape& shape, const Kernels& kernels) {
    const Geometry& g = shape.g;
    const double vectors = static_cast<double>(g.points() / 4 * g.a);
    const double level = vectors / 2;  // butterflies
    const unsigned inner = g.levels() - 2;
    Cycles cycles;
    cycles.add(kernels["words to residues"], vectors);  // half of each operand's image
    cycles.add(kernels["forward root, half of it zero"], 2 * 2 * level);
    cycles.add(kernels["forward levels"], 2 * inner * level);
    cycles.add(kernels["forward blocks"], 2 * vectors);
    cycles.add(kernels["inverse blocks, product"], vectors);
    cycles.add(kernels["inverse levels"], inner * level);
    cycles.add(kernels["inverse root with the scale"], 2 * level);
    cycles.add(kernels["residues to words"], vectors);
    cycles.add(kernels["twiddles of a part"], vectors);
    return cycles;
}

void print_product(upL_t n, double hertz) {
    const bench::VSTProduct product(n, 2);
    const Shape shape(product.geometry());
    Kernels kernels(shape.g);
    kernels.measure(hertz, false);
    const Cycles cycles = product_cycles(shape, kernels);
    const Traffic traffic(shape, n);
    double times[2];
    for (const u64_t threads : {1u, 2u}) {
        std::vector<double> calls;
        for (double spent = 0; spent < 1 || calls.size() < 3; spent += calls.back())
            calls.push_back(bench::seconds_of([&] { product.multiply(threads); }));
        times[threads - 1] = bench::median(calls);
    }
    std::printf("| %s | (%u, %u, %u) | %.1f | %.3g | %.3g | %.3g | %.0f | %.0f | %.3g | %.3g | %.3g |\n",
                bench::with_commas(n).c_str(), shape.g.a, shape.g.b, shape.g.c, shape.image() / (1 << 20),
                times[0] * 1e3, cycles.bound / hertz * 1e3, cycles.measured / hertz * 1e3,
                traffic.third_level * 1e-6, traffic.memory * 1e-6, traffic.seconds(1) * 1e3, times[1] * 1e3,
                traffic.seconds(2) * 1e3);
    std::fflush(stdout);
}

void print_products(double hertz) {
    std::puts(
        "| n | (a, b, c) | image, MiB | ms | ports' bound | kernels in L1 | MB, third level | MB, memory | "
        "at "
        "the triad's rate | two threads, ms | at the triad's rate |");
    std::puts("| --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- |");
    for (const upL_t n : {100'000u, 1'000'000u, 10'000'000u}) print_product(n, hertz);
}

}  // namespace
}  // namespace znp

int main(int argc, char** argv) {
    const auto asked = [&](const char* table) { return argc < 2 || std::strcmp(argv[1], table) == 0; };
    const double hertz = znp::bench::clock_hertz();
    std::printf("clock: %.2f GHz\n\n", hertz * 1e-9);
    if (asked("kernels")) znp::print_kernels(hertz);
    if (asked("memory")) znp::print_memory();
    if (asked("products")) znp::print_products(hertz);
    return 0;
}
