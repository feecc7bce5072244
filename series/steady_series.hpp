// A series whose terms shrink by the same factor from each to the next, but for powers of the index: its
// count of terms and its sizes follow from a few numbers.
#pragma once

#include "series/bss.hpp"

namespace znp {

// Sizes in nats. Q(0, x) is about e^(size_per_term y) (y!)^factorials with y = x + offset.
struct Growth {
    double terms_per_word;
    double size_per_term;
    double factorials;
    double offset;
    double precision_per_term;
};

template <class SeriesClass>
class SteadySeries : public SeriesClass {
  public:
    u64_t terms(upL_t words) const final {
        return static_cast<u64_t>(static_cast<double>(words) * growth_.terms_per_word + 2);
    }
    double size_at(double x) const final {
        const double y = x + growth_.offset;
        return growth_.size_per_term * y + growth_.factorials * log_factorial(y);
    }
    double precision_of(u64_t a, u64_t b) const final {
        return static_cast<double>(b - a) * growth_.precision_per_term;
    }

  protected:
    SteadySeries(bool alternating_, u64_t memory_overhead_, u64_t end_threshold_, const Growth& growth)
        : SeriesClass(alternating_, memory_overhead_, end_threshold_), growth_(growth) {}

  private:
    const Growth growth_;
};

}  // namespace znp
