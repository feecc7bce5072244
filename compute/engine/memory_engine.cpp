#include "compute/engine/memory_engine.hpp"

#include "compute/run/digit_output.hpp"
#include "compute/run/run_report.hpp"
#include "shell/console.hpp"

namespace znp {

HeapFloat MemoryEngine::series_quotient(const zl_BSS& series, const PSRPlan& plan,
                                        const SeriesQuotient& formula) {
    return series_quotient_B(memory_, series, plan, formula, precision());
}

HeapFloat MemoryEngine::series_quotient(const zl_BSS& series, const SeriesQuotient& formula,
                                        double section_ratio) {
    return series_quotient(series, make_psr_plan(series, precision(), section_ratio, 0, memory_.threads()),
                           formula);
}

HeapFloat MemoryEngine::quotient(Number numerator, Number denominator) {
    Number out = divide_B(memory_, numerator, denominator, precision());
    numerator.free();
    denominator.free();
    out.settle();
    return out;
}

HeapFloat MemoryEngine::product(Number a, Number b, bool half_length) {
    Number out = final_multiply_B(memory_, a, b, precision(), half_length);
    a.free();
    b.free();
    out.settle();
    return out;
}

HeapFloat MemoryEngine::sum(Number a, Number b) {
    Number out = memory_.number(divide_words(memory_.room(precision())));
    memory_.carry_out([&](RunTimeParameters&) { out.set_add(a, b, precision() + extra_precision); });
    a.free();
    b.free();
    out.settle();
    return out;
}

HeapFloat MemoryEngine::add_arccoth_term(Number so_far, u64_t x, s64_t coefficient) {
    leave_line();
    return sum(std::move(so_far), arccoth_term(x, coefficient));
}

void MemoryEngine::leave_line() {
    memory_.carry_out([](RunTimeParameters&) { Console::print_newline(); });
}

void MemoryEngine::multiply(Number& x, cdi word) {
    memory_.carry_out([&](RunTimeParameters&) { x.mul_uW(word); });
}

void MemoryEngine::add(Number& x, cdi word, s64_t position) {
    memory_.carry_out([&](RunTimeParameters&) { x.add_ip(word, position); });
}

void MemoryEngine::halve(Number& x) {
    memory_.carry_out([&](RunTimeParameters& run) {
        run.events.add("Shifting");
        x.mul_uW(cdi{1} << 63);
        x.shift_exp(-1);
    });
}

void output_B(StageMemory& memory, const char* name, const Time& start, const BigFloat& number) {
    memory.carry_out([&](RunTimeParameters& run) {
        run.stopwatch.stop();
        print_stage(name, start);
    });
    const BigFloat digits = number.top_words(memory.settings().p, memory.threads());
    write_hex(memory, digits);
    convert_and_write_B(memory, digits);
}

}  // namespace znp
