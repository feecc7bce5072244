#include "digits/digit_count.hpp"

namespace znp {

namespace {

// Neighbouring digits go to counters of their own: an increment does not wait for the one before it.
constexpr upL_t lanes = 4;

constexpr upL_t digit_mask = 15;  // a byte that is no digit must not count outside the table

}  // namespace

void count_digits(std::array<u64_t, 16>& counts, const char* digits, upL_t count) {
    std::array<std::array<u64_t, lanes>, 16> lane_counts{};
    const auto add = [&](upL_t i, upL_t lane) {
        ++lane_counts[static_cast<unsigned char>(digits[i]) & digit_mask][lane];
    };
    upL_t i = 0;
    for (; count - i >= lanes; i += lanes) {
        for (upL_t lane = 0; lane < lanes; ++lane) add(i + lane, lane);
    }
    for (; i < count; ++i) add(i, 0);

    for (upL_t d = 0; d < counts.size(); ++d) {
        for (const u64_t n : lane_counts[d]) counts[d] += n;
    }
}

}  // namespace znp
