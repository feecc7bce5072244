#include "tools/stress_component.hpp"

#include <chrono>
#include <string>
#include <vector>

#include "foundation/exceptions.hpp"
#include "foundation/threads.hpp"
#include "multiply/kernels/residue.hpp"
#include "multiply/table_holder.hpp"
#include "shell/console.hpp"
#include "tools/stress_operand.hpp"
#include "tools/stress_signals.hpp"
#include "tools/stress_size.hpp"

namespace znp {

namespace {

// What a thread leaves behind at the end of a round.
struct Slot {
    bool error = false;
    u64_t multiplications = 0;
};

// The threads' side of a test. They share the operand and the tables, which nobody writes during a round.
class Round final : public Task {
  public:
    Round(const multiplier<c64i>& component, const TableHolder& holder, const StressLayout& layout,
          std::byte* slices, u64_t threads, StressClock clock)
        : component_(component),
          holder_(holder),
          layout_(layout),
          slices_(slices),
          operand_(reinterpret_cast<c64i*>(slices + threads * layout.per_thread)),
          clock_(clock),
          slots_(threads) {
        fill_stress_operand(operand_, layout_.operand_words);
    }

    // Runs all threads until the deadline; true if there was an error.
    bool run_threads(double deadline) {
        deadline_ = deadline;
        fork_range_on_threads(*this, 0, slots_.size());
        bool error = false;
        for (const Slot& slot : slots_) error |= slot.error;
        return error;
    }

    u64_t multiplications() const {
        u64_t sum = 0;
        for (const Slot& slot : slots_) sum += slot.multiplications;
        return sum;
    }

    void run(u64_t index) override {
        const upL_t n = layout_.operand_words;
        std::byte* const slice = slices_ + index * layout_.per_thread;
        c64i* const product = reinterpret_cast<c64i*>(slice);
        const upL_t product_bytes = 2 * n * sizeof(c64i);  // a multiple of 64, so that the work is aligned

        BasicParameters bp;
        bp.holder = &holder_;
        bp.M = slice + product_bytes;
        bp.ML = layout_.per_thread - product_bytes;

        const u64_t hash = residue::hash_words(operand_, n);
        const u64_t expected = residue::mul(hash, hash);

        bool error = false;
        u64_t multiplications = 0;
        do {
            error = !multiply(bp, product) || residue::hash_words(product, 2 * n) != expected;
            multiplications++;
        } while (!error && clock_() < deadline_ && !StopSignals::requested());

        slots_[index].error |= error;
        slots_[index].multiplications += multiplications;
    }

  private:
    bool multiply(const BasicParameters& bp, c64i* product) const {
        try {
            const upL_t n = layout_.operand_words;
            component_.mul(bp, product, {operand_, n}, {operand_, n});
            return true;
        } catch (const zn_exception&) {
            return false;
        }
    }

    const multiplier<c64i>& component_;
    const TableHolder& holder_;
    const StressLayout layout_;
    std::byte* const slices_;
    c64i* const operand_;
    const StressClock clock_;
    double deadline_ = 0;
    std::vector<Slot> slots_;
};

std::byte* align_32(std::byte* address) {
    const auto misplaced = reinterpret_cast<std::uintptr_t>(address) & 31;
    return address + (32 - misplaced) % 32;
}

void print_verdict(const char* name, StressResult::Verdict verdict, double seconds) {
    Console::print(std::string(name) + " Test: ", 'w');
    if (verdict == StressResult::Verdict::stopped) {
        Console::print("Stopped", 'Y');
    } else {
        Console::print_pass_fail(verdict == StressResult::Verdict::passed);
    }
    Console::print("  Test Time: ", 'w');
    Console::print_seconds_line(seconds);
}

}  // namespace

double steady_seconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

StressResult run_stress_component(const multiplier<c64i>& component, StressBuffer& buffer,
                                  const StressLimits& limits) {
    using Verdict = StressResult::Verdict;
    const std::string name = component.name;

    const u64_t n = largest_stress_words(component, buffer.bytes(), limits.threads);
    if (n == 0) {
        Console::print(name + " Test: ", 'w');
        Console::println("Insufficient memory to run this test.", 'R');
        Console::set_color('w');
        return {Verdict::skipped, 0};
    }

    Console::println("Preparing " + name + " Test...", 'w');
    buffer.clear(limits.threads);
    const StressLayout layout = stress_layout(component, n, limits.threads);
    TableHolder holder;
    std::byte* const slices = align_32(component.build_tables(holder, 64 * n, buffer.data()));
    Round round(component, holder, layout, slices, limits.threads, limits.clock);

    const double start = limits.clock();
    const double deadline = start + static_cast<double>(limits.seconds);
    Verdict verdict = StopSignals::requested() ? Verdict::stopped : Verdict::passed;
    for (u64_t i = 0; verdict == Verdict::passed; i++) {
        const double now = limits.clock();
        if (now >= deadline) break;
        Console::print(name + " Test " + Console::format_int(i, Console::IntFormat::plain), 'w');
        Console::print("  Elapsed Time: ");
        Console::print_seconds_line(now - start);
        if (round.run_threads(deadline)) {
            verdict = Verdict::failed;
        } else if (StopSignals::requested()) {
            verdict = Verdict::stopped;
        }
    }
    print_verdict(component.name, verdict, limits.clock() - start);
    return {verdict, round.multiplications()};
}

}  // namespace znp
