#include "compute/run/run.hpp"

#include <cstring>

#include "compute/run/run_report.hpp"
#include "foundation/fatal.hpp"
#include "foundation/memory.hpp"
#include "shell/console.hpp"

namespace znp {
namespace {

RunSettings run_settings(const ComputeParameters& settings) {
    const zlr_Constant& constant = settings.constant();
    return {.short_name = constant.get_short_name(),
            .name = constant.get_name(),
            .algorithm_short = constant.get_algorithm_short(settings.algorithm(), settings.p()),
            .algorithm_name = constant.get_algorithm_name(settings.algorithm(), settings.p()),
            .param = settings.param(),
            .p = settings.p(),
            .dec = settings.dec(),
            .hex = settings.hex(),
            .mode = settings.mode(),
            .path = settings.path(),
            .digits_per_file = settings.digits_per_file(),
            .tds = settings.tds()};
}

// What is reserved, and the event of the same name; the size follows on the same line.
void announce(RunTimeParameters& run, const char* label, const char* event) {
    Console::print(label);
    run.events.add(event);
}

void print_reserved(u64_t bytes) {
    Console::println(Console::format_bytes(bytes), bytes == 0 ? 'g' : 'G');
    Console::set_color('w');
}

// The block that the formula and the stages carve.
class WorkingMemory {
  public:
    WorkingMemory(RunTimeParameters& run, upL_t bytes) : heap_(run.heap) {
        announce(run, "Reserving Working Memory...         ", "Reserving Working Memory");
        heap_create(heap_, nullptr, bytes);
        print_reserved(bytes);
    }
    ~WorkingMemory() { heap_destroy(heap_); }
    WorkingMemory(const WorkingMemory&) = delete;
    WorkingMemory& operator=(const WorkingMemory&) = delete;

    upL_t peak_bytes() const { return static_cast<upL_t>(heap_.peak_top - heap_.base); }

  private:
    BasicHeap& heap_;
};

GuardedArray<std::byte> make_twiddle_tables(RunTimeParameters& run, const ComputeParameters& settings) {
    announce(run, "Constructing Twiddle Tables...      ", "Constructing Twiddle Tables");
    GuardedArray<std::byte> memory = make_guarded_array<std::byte>(nullptr, settings.memTW());
    build_tables(run.tables, settings.longest_product_bits(), memory.get());
    print_reserved(settings.memTW());
    return memory;
}

// The buffers belong to files striped over drives, which only a run on disk opens.
void allocate_io_buffers(RunTimeParameters& run, const ComputeParameters& settings) {
    announce(run, "Allocating I/O Buffers...           ", "Allocating I/O Buffers");
    print_reserved(settings.memIO());
}

void begin_computation(RunTimeParameters& run) {
    Console::print_newline();
    Console::println("Begin Computation:\n");
    run.events.add("Begin Computation");
    run.stopwatch.start();
}

// The formula has written its digits and stopped the stopwatch.
void end_computation(RunTimeParameters& run, const Time& start) {
    const double total_seconds = seconds_between(start, Time::now());
    run.end_time = current_time_text();
    run.take_snapshot();
    run.events.add("End Computation");

    print_run_times(run, total_seconds, false);
    Console::print_newline();
    print_last_digits(run);
    // The system report and the validation file follow here.
}

}  // namespace

std::string run_refusal(const ComputeParameters& settings) {
    if (settings.mode() == ComputeMode::swap) return not_available_text("Swap Mode");
    if (!settings.constant().runs_B(settings.algorithm())) {
        return not_available_text("The computation of " + settings.constant().get_short_name());
    }
    if (settings.digits_per_file() != 0) return not_available_text("Compressed output");
    return settings.estimate_refusal();
}

RunTimeParameters run_in_block(const ComputeParameters& settings, upL_t working_bytes) {
    if (const std::string refusal = run_refusal(settings); !refusal.empty()) fatal_exit(refusal);

    Console::print_newline();
    check_available_memory(settings.Osize() + settings.ML());
    // A new run on disk writes its settings to a checkpoint here; a resumed one takes its state from it.
    RunTimeParameters run(run_settings(settings));
    print_run_heading(settings);

    const Time start = Time::now();
    run.start_time = current_time_text();
    print_start_time(run);
    run.take_snapshot();

    const WorkingMemory memory(run, working_bytes);
    const GuardedArray<std::byte> tables = make_twiddle_tables(run, settings);
    allocate_io_buffers(run, settings);
    begin_computation(run);
    settings.constant().run_B(settings.algorithm(), run);
    end_computation(run, start);
    run.peak_working_bytes = memory.peak_bytes();
    return run;
}

u64_t run(const ComputeParameters& settings, char* last_digits_out) {
    const RunTimeParameters state = run_in_block(settings, settings.ML() + working_memory_margin);
    if (last_digits_out != nullptr) {
        const upL_t count = state.last_digits.copy(last_digits_out, last_digits_bytes - 1);
        last_digits_out[count] = '\0';
    }
    return state.recovered_errors();
}

}  // namespace znp
