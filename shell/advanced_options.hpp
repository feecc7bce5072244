#pragma once

namespace znp {

// Shows the Advanced Options and runs one of them.
void advanced_options_menu();

}  // namespace znp
