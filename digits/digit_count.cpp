#include "digits/digit_count.hpp"

#include <cstring>

namespace znp {

namespace {

// Counts digits in pairs, one increment for two of them.
class PairCounts {
  public:
    // Eight digits, each in its byte; a byte that is no digit counts as its low half.
    void add(u64_t digits) {
        constexpr u64_t low_halves = 0x0f0f0f0f0f0f0f0f;
        digits &= low_halves;
        digits |= digits >> 4;  // the pairs in the even bytes
        ++lanes_[0][digits & 0xff];
        ++lanes_[1][digits >> 16 & 0xff];
        ++lanes_[0][digits >> 32 & 0xff];
        ++lanes_[1][digits >> 48 & 0xff];
    }

    void add_to(std::array<u64_t, 16>& counts) const {
        for (const auto& lane : lanes_) {
            for (upL_t pair = 0; pair < lane.size(); ++pair) {
                counts[pair & 15] += lane[pair];
                counts[pair >> 4] += lane[pair];
            }
        }
    }

  private:
    // Neighbours go to counters of their own: an increment does not wait for the one before it.
    std::array<std::array<u64_t, 256>, 2> lanes_{};
};

}  // namespace

void count_digits(std::array<u64_t, 16>& counts, const char* digits, upL_t count) {
    constexpr upL_t step = sizeof(u64_t);
    PairCounts pairs;
    upL_t i = 0;
    for (; count - i >= step; i += step) {
        u64_t eight;
        std::memcpy(&eight, digits + i, step);
        pairs.add(eight);
    }
    pairs.add_to(counts);
    for (; i < count; ++i) ++counts[static_cast<unsigned char>(digits[i]) & 15];
}

}  // namespace znp
