// What the tests of short products share: operands of every awkward kind, buffers with guard words, and exact
// products from an independent library.
#pragma once

#include <gmp.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <limits>
#include <random>
#include <span>
#include <vector>

#include "foundation/types.hpp"

namespace znp::testing {

// A buffer of exactly `size` words between guard words, filled with rubbish. The destructor checks the
// guards.
template <class word>
class GuardedWords {
  public:
    explicit GuardedWords(upL_t size) : size_(size), storage_(size + 2 * margin, rubbish) {
        std::fill_n(storage_.begin(), margin, guard);
        std::fill_n(storage_.end() - margin, margin, guard);
    }
    explicit GuardedWords(const std::vector<word>& words) : GuardedWords(words.size()) {
        std::copy(words.begin(), words.end(), data());
    }
    GuardedWords(const GuardedWords&) = delete;
    GuardedWords& operator=(const GuardedWords&) = delete;
    ~GuardedWords() {
        EXPECT_TRUE(intact()) << "a guard word of a buffer of " << size_ << " words was overwritten";
    }

    word* data() { return storage_.data() + margin; }
    std::vector<word> words() const {
        const std::span<const word> all = storage_;
        const auto inner = all.subspan(margin, size_);
        return {inner.begin(), inner.end()};
    }

  private:
    static constexpr upL_t margin = 4;
    static constexpr word guard = static_cast<word>(0xA5C3F00D5EEDBEEFu);
    static constexpr word rubbish = static_cast<word>(0xDEADBEEFDEADBEEFu);

    bool intact() const {
        const auto is_guard = [](word w) { return w == guard; };
        return std::all_of(storage_.begin(), storage_.begin() + margin, is_guard) &&
               std::all_of(storage_.end() - margin, storage_.end(), is_guard);
    }

    upL_t size_;
    std::vector<word> storage_;
};

enum class Kind {
    random,
    all_ones,
    zero,
    sparse,
    equal_halves,
    leading_zeros,
    upper_half_zero,
    lower_half_zero,
    one
};
inline constexpr Kind all_kinds[] = {Kind::random,          Kind::all_ones,        Kind::zero,
                                     Kind::sparse,          Kind::equal_halves,    Kind::leading_zeros,
                                     Kind::upper_half_zero, Kind::lower_half_zero, Kind::one};

template <class word>
std::vector<word> make_operand(Kind kind, upL_t n, std::mt19937_64& rng) {
    const auto ones = std::numeric_limits<word>::max();
    std::vector<word> A(n);
    for (word& w : A) w = static_cast<word>(rng());
    const upL_t h = (n + 1) / 2;
    switch (kind) {
        case Kind::random:
            break;
        case Kind::all_ones:
            std::fill(A.begin(), A.end(), ones);
            break;
        case Kind::zero:
            std::fill(A.begin(), A.end(), word{0});
            break;
        case Kind::sparse:
            for (word& w : A) w = (rng() & 7) == 0 ? w : ((rng() & 1) != 0 ? ones : word{0});
            break;
        case Kind::equal_halves:
            for (upL_t i = h; i < n; i++) A[i] = A[i - h];
            if (n - h < h) A[h - 1] = 0;
            break;
        case Kind::leading_zeros:
            for (upL_t i = 0, k = 1 + rng() % n; i < k; i++) A[n - 1 - i] = 0;
            break;
        case Kind::upper_half_zero:
            for (upL_t i = h; i < n; i++) A[i] = 0;
            break;
        case Kind::lower_half_zero:
            for (upL_t i = 0; i < h; i++) A[i] = 0;
            break;
        case Kind::one:
            std::fill(A.begin(), A.end(), word{0});
            A[0] = 1;
            break;
    }
    return A;
}

// The exact product of A and B: La + Lb words.
template <class word>
std::vector<word> exact_product(std::span<const word> A, std::span<const word> B) {
    mpz_t a, b;
    mpz_inits(a, b, nullptr);
    mpz_import(a, A.size(), -1, sizeof(word), 0, 0, A.data());
    mpz_import(b, B.size(), -1, sizeof(word), 0, 0, B.data());
    mpz_mul(a, a, b);
    std::vector<word> T(A.size() + B.size());
    mpz_export(T.data(), nullptr, -1, sizeof(word), 0, 0, a);
    mpz_clears(a, b, nullptr);
    return T;
}
template <class word>
std::vector<word> exact_product(const std::vector<word>& A, const std::vector<word>& B) {
    return exact_product(std::span<const word>(A), std::span<const word>(B));
}

using Words = ::testing::Types<c32i, c64i>;
using Lengths = std::initializer_list<upL_t>;

}  // namespace znp::testing
