// The three standard streams as a process finds them.
#pragma once

namespace znp {

// Opens the null device in the place of each standard stream that the process was started without. Otherwise
// the next file that is opened would become one of them, and what goes to the console would be written into
// it. Called before anything is opened.
void open_missing_standard_streams();

}  // namespace znp
