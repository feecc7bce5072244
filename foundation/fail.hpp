// fire() for places that cannot carry on afterwards: control never comes back, whatever the record's action.
#pragma once

#include "foundation/exceptions.hpp"

namespace znp {

[[noreturn]] inline void fail(const zn_exception& exception) {
    fire(exception);
    exception.raise();  // an action that drops the failure is not for such places
    std::terminate();   // not reached; compilers lose track of a virtual operation that never returns
}

}  // namespace znp
