#pragma once

namespace znp {

// Shows the main menu and runs one action of it.
void main_menu();

}  // namespace znp
