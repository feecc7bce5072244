// Operations that a check can find wrong, and what becomes of them.
//
// A result that fails its check (ArithmeticFailure) says that memory or processor have failed. As long as
// what it was made from is whole, it is made once more; a second failure, or one of the operands, goes on to
// the caller. Every fault that was repaired counts.
#pragma once

#include "foundation/exceptions.hpp"
#include "foundation/types.hpp"

namespace znp {

// Faults repaired since the start of the process, whoever repaired them: arithmetic, the output stages, and
// files that rebuild what a drive has lost. Any thread.
class RecoveredErrors {
  public:
    static u64_t count();
    static void add();
};

// operation(); and once more where a check fails and operands_are_whole(). failed() tells the user that.
template <class Operation, class Whole, class Failed>
void repeat_once(Operation operation, Whole operands_are_whole, Failed failed) {
    try {
        operation();
        return;
    } catch (const ArithmeticFailure&) {
        if (!operands_are_whole()) throw;
        failed();
    }
    operation();
    RecoveredErrors::add();
}

// With "Re-attempting..." on the console.
void tell_reattempt();
template <class Operation, class Whole>
void repeat_once(Operation operation, Whole operands_are_whole) {
    repeat_once(operation, operands_are_whole, tell_reattempt);
}

}  // namespace znp
