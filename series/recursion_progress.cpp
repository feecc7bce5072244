#include "series/recursion_progress.hpp"

#include <string>

#include "foundation/strings.hpp"

namespace znp {

void RecursionProgress::show(double share, u64_t digits) const {
    if (line_ == nullptr) return;
    line_->clear();
    line_->add('w', heading_);
    line_->add('Y', format_printf(16, "%.1f", 100 * share) + "%");
    line_->add('w', " -> ");
    line_->add('Y', to_string_u64(digits));
    line_->update(StatusLine::Update::if_due);
}

}  // namespace znp
