// What the programs that print tables of their own share: times, medians and the processor's clock.
#pragma once

#include <algorithm>
#include <chrono>
#include <limits>
#include <string>
#include <vector>

#include "foundation/types.hpp"

namespace znp::bench {

template <class Routine>
double seconds_of(const Routine& routine) {
    const auto start = std::chrono::steady_clock::now();
    routine();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The least time of one of `calls` in a row, over `rounds` such rows.
template <class Routine>
double least_seconds(const Routine& routine, unsigned calls, unsigned rounds) {
    double least = std::numeric_limits<double>::max();
    for (unsigned round = 0; round < rounds; ++round) {
        const double taken = seconds_of([&] {
            for (unsigned i = 0; i < calls; ++i) routine();
        });
        least = std::min(least, taken / calls);
    }
    return least;
}

inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Cycles a second: a chain of dependent additions takes one cycle each.
inline double clock_hertz() {
    constexpr unsigned turns = 100'000;
    const double taken = least_seconds(
        [] {
            u64_t x = 1;
            for (unsigned i = 0; i < turns; ++i) {
                asm volatile("add $1, %0\n\tadd $1, %0\n\tadd $1, %0\n\tadd $1, %0" : "+r"(x));
                asm volatile("add $1, %0\n\tadd $1, %0\n\tadd $1, %0\n\tadd $1, %0" : "+r"(x));
            }
        },
        1, 100);
    return 8.0 * turns / taken;
}

inline std::string with_commas(u64_t value) {
    std::string text = std::to_string(value);
    for (std::size_t i = text.size(); i > 3; i -= 3) text.insert(i - 3, 1, ',');
    return text;
}

}  // namespace znp::bench
