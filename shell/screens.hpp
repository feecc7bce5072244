// The fixed screens: lists of lines without a pause.
#pragma once

namespace znp {

void print_banner();  // on top of the main menu
void print_about();
void print_warning();

}  // namespace znp
