#include "foundation/standard_streams.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

namespace znp {

void open_missing_standard_streams() {
    // A new descriptor is the lowest that is free: going upward, the missing one itself.
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0) static_cast<void>(open("/dev/null", O_RDWR));
    }
}

}  // namespace znp
