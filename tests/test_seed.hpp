// The seed of the random tests: taken from ZELMAR_TEST_SEED, otherwise drawn; printed with every test that
// uses it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>

namespace znp::testing {

inline std::uint64_t test_seed() {
    static const std::uint64_t seed = [] {
        const char* given = std::getenv("ZELMAR_TEST_SEED");
        const std::uint64_t s = given != nullptr ? std::strtoull(given, nullptr, 0) : std::random_device{}();
        std::printf("[   SEED   ] ZELMAR_TEST_SEED=%llu\n", static_cast<unsigned long long>(s));
        return s;
    }();
    return seed;
}

// A generator for one test; `stream` keeps tests of one program apart.
inline std::mt19937_64 make_rng(std::uint64_t stream) {
    return std::mt19937_64(test_seed() * 0x9E3779B97F4A7C15u + stream);
}

}  // namespace znp::testing
