// What a routine gives the processor's ports to do: it is run step by step in a child process under
// observation, and each instruction is counted by its kind.
#pragma once

#include <sys/ptrace.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>
#include <csignal>

#include <algorithm>

#include "foundation/types.hpp"

namespace znp::bench {

// Vector operations by the pipes that take them; moves between registers take none.
struct InstructionMix {
    double instructions = 0;
    double multiply = 0;  // products and multiply-adds
    double add = 0;       // sums, differences, comparisons, conversions
    double other = 0;     // shuffles, logic, integers
    double loads = 0, stores = 0;

    // Cycles that the ports need at least: two pipes for products, two for sums, four for all of them, two
    // loads, two stores and eight instructions a cycle.
    double bound() const {
        return std::max(
            {multiply / 2, add / 2, (multiply + add + other) / 4, loads / 2, stores / 2, instructions / 8});
    }
    InstructionMix per(double units) const {
        return {instructions / units, multiply / units, add / units,
                other / units,        loads / units,    stores / units};
    }
};

namespace detail {

// A vector instruction by its prefix: 0xc5 stands for the map 1, 0xc4 names its map.
inline void count_instruction(const unsigned char* at, InstructionMix& mix) {
    mix.instructions += 1;
    if (at[0] != 0xc5 && at[0] != 0xc4) return;
    const bool long_prefix = at[0] == 0xc4;
    const unsigned map = long_prefix ? at[1] & 31u : 1u;
    const unsigned char* const opcode = at + (long_prefix ? 3 : 2);
    const unsigned op = opcode[0];
    const bool memory = op != 0x77 && opcode[1] < 0xc0;
    if (map != 1 && op >= 0xf0) return;  // bit manipulation of words
    if (map == 1 && op == 0x77) return;  // the end of vector code
    const bool move = map == 1 && (op == 0x10 || op == 0x28 || op == 0x6f);
    const bool store = map == 1 && (op == 0x11 || op == 0x29 || op == 0x7f);
    const bool broadcast = map == 2 && ((op >= 0x18 && op <= 0x1a) || (op >= 0x58 && op <= 0x5a));
    if (memory) (store ? mix.stores : mix.loads) += 1;
    if (move || store || (broadcast && memory)) return;
    const bool fma = map == 2 && op >= 0x96 && op <= 0xbf && (op & 15) >= 6;
    const bool sum = map == 1 && (op == 0x58 || op == 0x5a || op == 0x5b || op == 0x5c || op == 0x5d ||
                                  op == 0x5f || op == 0xc2 || op == 0xe6);
    if (fma || (map == 1 && op == 0x59)) {
        mix.multiply += 1;
    } else if (sum) {
        mix.add += 1;
    } else {
        mix.other += 1;
    }
}

}  // namespace detail

// Runs the routine once, at some 20 us an instruction. All zeros where a process may not observe another.
template <class Routine>
InstructionMix instruction_mix(const Routine& routine) {
    InstructionMix mix;
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(1);
        asm volatile("int3" ::: "memory");
        routine();
        asm volatile("int3" ::: "memory");
        _exit(0);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) return mix;
    for (;;) {
        user_regs_struct registers{};
        if (ptrace(PTRACE_GETREGS, child, nullptr, &registers) != 0) break;
        // The child's code is this process's.
        const auto* const at = reinterpret_cast<const unsigned char*>(registers.rip);
        if (*at == 0xcc) break;
        detail::count_instruction(at, mix);
        if (ptrace(PTRACE_SINGLESTEP, child, nullptr, nullptr) != 0) break;
        if (waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) return mix;
    }
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return mix;
}

}  // namespace znp::bench
