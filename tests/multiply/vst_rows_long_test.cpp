// Exactness of the large transform at the capacity of every row of both size plans: one test for each row
// whose images and scratch fit 4 GiB, and a shorter one for each row above up to 12 GiB. A test's name has
// the binary logarithm of the row's capacity: --gtest_filter='*bits24*'.
//
// Products whose value is known: operands of all ones, of single words, and one of any words by a sparse
// one, with lengths that end inside a block, at its last word, and beyond the capacity, so that the product
// wraps. Products of random words: against an independent library up to ten million words an operand, and
// for every length modulo three random primes between 2^63 and 2^64, by Horner's rule in integers. A wrong
// product of L words passes all three with a probability below (64 L 44 / 2^63)^3, 10^-24 for the longest:
// its error has at most 64 L / 63 of the 2^63 / 44 primes there.
#include <gmp.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <future>
#include <ostream>
#include <string>
#include <vector>

#include "foundation/memory.hpp"
#include "multiply/vst/crt_mulp.hpp"
#include "multiply/vst/size_plan.hpp"
#include "multiply/vst/vst_transform.hpp"
#include "multiply/vst_test_support.hpp"
#include "test_seed.hpp"

namespace znp::vst {

void PrintTo(const Geometry& g, std::ostream* out) {
    *out << "(" << g.a << ", " << g.b << ", " << g.c << ")";
}

}  // namespace znp::vst

namespace znp {
namespace {

using vst::Geometry;

constexpr u64_t threads = 2;
constexpr upL_t full_limit = upL_t{4} << 30, reduced_limit = upL_t{12} << 30;
constexpr upL_t largest_of_library = 10'000'000;  // words of an operand

upL_t bytes_of(const Geometry& g) {
    return std::max(VST(nullptr, g, 1).product_bytes(), VST(nullptr, g, threads).product_bytes());
}

// The rows of both plans with so many bytes, by capacity. The large plan repeats most of the main one's.
std::vector<Geometry> rows_between(upL_t low, upL_t high) {
    std::vector<Geometry> rows;
    for (const auto plan : {vst::main_plan(), vst::large_plan()}) {
        for (const vst::SizePlanRow& row : plan) {
            const Geometry g = row.geometry();
            if (bytes_of(g) <= low || bytes_of(g) > high) continue;
            if (std::find(rows.begin(), rows.end(), g) == rows.end()) rows.push_back(g);
        }
    }
    std::sort(rows.begin(), rows.end(),
              [](const Geometry& x, const Geometry& y) { return x.capacity() < y.capacity(); });
    return rows;
}

std::string name_of(const ::testing::TestParamInfo<Geometry>& row) {
    const Geometry& g = row.param;
    return "bits" + std::to_string(std::bit_width(g.capacity()) - 1) + "_a" + std::to_string(g.a) + "b" +
           std::to_string(g.b) + "c" + std::to_string(g.c);
}

// ---- Words ------------------------------------------------------------------------------------------------

// Words of any content, made real before they are used.
class Words {
  public:
    explicit Words(upL_t n) : n_(n), memory_(make_guarded_array<c64i>(nullptr, n)) {
        first_touch(memory_.get(), 8 * n, threads);
    }
    c64i* data() { return memory_.get(); }
    const c64i* data() const { return memory_.get(); }
    upL_t size() const { return n_; }
    c64i& operator[](upL_t i) { return memory_[i]; }
    c64i operator[](upL_t i) const { return memory_[i]; }

    void fill(c64i word) { std::fill_n(data(), n_, word); }
    void fill_random(std::mt19937_64& rng) {
        auto other = std::async(std::launch::async, [&, half_rng = std::mt19937_64(rng())]() mutable {
            for (upL_t i = n_ / 2; i < n_; ++i) memory_[i] = half_rng();
        });
        for (upL_t i = 0; i < n_ / 2; ++i) memory_[i] = rng();
        other.get();
    }
    bool equals(const Words& other) const { return std::equal(data(), data() + n_, other.data()); }
    // Word i is word i - shift of the other, cyclically.
    bool is_rotation(const Words& other, upL_t shift) const {
        return std::equal(data() + shift, data() + n_, other.data()) &&
               std::equal(data(), data() + shift, other.data() + n_ - shift);
    }
    bool all(upL_t low, upL_t high, c64i word) const {
        return std::all_of(data() + low, data() + high, [word](c64i x) { return x == word; });
    }

  private:
    upL_t n_;
    GuardedArray<c64i> memory_;
};

// (2^64n - 1) (2^64m - 1) = 1 - 2^64n - 2^64m + 2^64(n + m), for n <= m.
bool is_product_of_ones(const Words& R, upL_t n, upL_t m) {
    const c64i ones = ~c64i{0};
    return R[0] == 1 && R.all(1, n, 0) && R.all(n, m, ones) && R[m] == ones - 1 &&
           R.all(m + 1, n + m, ones) && R.all(n + m, R.size(), 0);
}

u64_t residue_of(const c64i* words, upL_t n, u64_t p) {
    u64_t r = 0;
    while (n-- > 0) r = static_cast<u64_t>((static_cast<u128_t>(r) << 64 | words[n]) % p);
    return r;
}

u64_t random_prime(std::mt19937_64& rng) {
    testing::Integer p;
    do {
        mpz_set_ui(p.value, rng() | u64_t{1} << 63);
        mpz_nextprime(p.value, p.value);
    } while (mpz_sizeinbase(p.value, 2) > 64);
    return mpz_get_ui(p.value);
}

// R = x B + y 2^(64 (L - 1)) B modulo 2^64L - 1.
void sparse_product(Words& R, c64i x, c64i y, const Words& B) {
    const upL_t L = B.size();
    c64i carry = mpn_mul_1(R.data(), B.data(), static_cast<mp_size_t>(L), x);
    const auto add = [&](upL_t at, c64i word) {
        for (; word != 0; at = (at + 1) % L) {
            R[at] += word;
            word = R[at] < word ? 1 : 0;
        }
    };
    add(0, carry);
    // Word i of B goes to place i - 1, and the first to the last.
    carry = mpn_addmul_1(R.data(), B.data() + 1, static_cast<mp_size_t>(L - 1), y);
    const u128_t last = static_cast<u128_t>(B[0]) * y + carry;
    add(L - 1, static_cast<c64i>(last));
    add(0, static_cast<c64i>(last >> 64));
}

// ---- A row ------------------------------------------------------------------------------------------------

class Row {
  public:
    explicit Row(const Geometry& g)
        : g_(g),
          rng_(testing::make_rng(g.capacity())),
          tables_(std::span(&g, 1)),
          vst_(&tables_.holder, g, threads),
          work_(make_guarded_array<std::byte>(nullptr, bytes_of(g), 64)),
          L_(g.capacity() / 64),
          block_(g.input_words() / 2),
          A_(L_),
          B_(L_),
          R_(L_),
          S_(L_) {
        first_touch(work_.get(), bytes_of(g), threads);
    }

    // Both operands end at the last word of a block, at the word before or behind it, or anywhere.
    void all_ones() {
        A_.fill(~c64i{0});
        B_.fill(~c64i{0});
        const upL_t half = L_ / 2 - L_ / 2 % block_;
        ones(A_, half, A_, half);
        ones(A_, half, B_, half);
        const upL_t k = 1 + rng_() % (L_ / block_ / 2), inside = rng_() % (block_ - 2) + 1;
        ones(A_, k * block_, B_, L_ - k * block_ - 1);
        ones(A_, k * block_ - inside, B_, L_ - k * block_ + inside);
        ones(A_, half - 1, B_, half + 1);
    }

    // Of all words: every coefficient is the largest that there is. The product is zero modulo 2^64L - 1.
    void largest_coefficients(bool square) {
        A_.fill(~c64i{0});
        B_.fill(~c64i{0});
        product(R_, A_.data(), L_, (square ? A_ : B_).data(), L_);
        EXPECT_TRUE(R_.all(0, L_, R_[0]) && (R_[0] == 0 || R_[0] == ~c64i{0}));
    }

    void sparse() {
        const c64i x = rng_(), y = rng_();
        A_.fill(0);
        A_[0] = x;
        A_[L_ - 1] = y;
        B_.fill_random(rng_);
        product(R_, A_.data(), L_, B_.data(), L_);
        sparse_product(S_, x, y, B_);
        EXPECT_TRUE(R_.equals(S_));
        // One word by all.
        product(R_, &x, 1, B_.data(), L_ - 1);
        S_[L_ - 1] = mpn_mul_1(S_.data(), B_.data(), static_cast<mp_size_t>(L_ - 1), x);
        EXPECT_TRUE(R_.equals(S_));
        // One word each, at the last place of a block and inside one.
        const upL_t m = block_ * (1 + rng_() % (L_ / block_ / 2)), n = L_ - m - block_ / 2;
        A_[0] = 0;
        A_[L_ - 1] = 0;
        A_[m - 1] = x;
        B_.fill(0);
        B_[n - 1] = y;
        product(R_, A_.data(), m, B_.data(), n);
        const u128_t xy = static_cast<u128_t>(x) * y;
        EXPECT_TRUE(R_.all(0, m + n - 2, 0) && R_.all(m + n, L_, 0));
        EXPECT_TRUE(R_[m + n - 2] == static_cast<c64i>(xy) && R_[m + n - 1] == static_cast<c64i>(xy >> 64));
    }

    // The whole row, of any words. Leaves the product in R.
    void random_product() {
        A_.fill_random(rng_);
        B_.fill_random(rng_);
        n_ = L_ / 2 + rng_() % (L_ / 16);
        product(R_, A_.data(), n_, B_.data(), L_ - n_);
        for (unsigned k = 0; k < 3; ++k) check_residue(random_prime(rng_));
        if (n_ > largest_of_library) return;
        mpn_mul(S_.data(), A_.data(), static_cast<mp_size_t>(n_), B_.data(), static_cast<mp_size_t>(L_ - n_));
        EXPECT_TRUE(R_.equals(S_));
    }
    // The same product otherwise.
    void random_product_by_steps() {
        const VST one(&tables_.holder, g_, 1);
        const auto [T1, T2, scratch] = one.work_areas(work_.get());
        one.forward(T1, {A_.data(), n_}, scratch);
        vst_.forward(T2, {B_.data(), L_ - n_}, scratch);
        one.inverse_fmul({S_.data(), 0, L_}, T1, T2, scratch);
        EXPECT_TRUE(S_.equals(R_));
    }
    void random_product_by_halves() {
        const Geometry half{g_.a, g_.b, g_.c - 1};
        if (!half.long_enough()) return;
        const VST transform(&tables_.holder, half, threads);
        const BasicParameters bp{&tables_.holder, work_.get(), bytes_of(g_), threads};
        ASSERT_LE(crt_mulp_bytes(transform), bp.ML);
        CRT_mulp(transform, bp, Window{S_.data(), 0, L_}, {A_.data(), n_}, {B_.data(), L_ - n_});
        EXPECT_TRUE(S_.equals(R_));
    }
    // Both operands moved up to the end of all words: the product is rotated.
    void wrapped_product() {
        const upL_t m = L_ - n_;
        for (Words* const words : {&A_, &B_}) {
            const upL_t length = words == &A_ ? n_ : m;
            std::copy_backward(words->data(), words->data() + length, words->data() + L_);
            std::fill_n(words->data(), L_ - length, c64i{0});
        }
        product(S_, A_.data(), L_, B_.data(), L_);
        EXPECT_TRUE(S_.is_rotation(R_, (L_ - n_ + L_ - m) % L_));
    }

    void report() const {
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start_;
        std::printf("[   ROW    ] (%u, %u, %u), %llu words, %.2f GiB: %u products in %.2f s, %.2f s in all\n",
                    g_.a, g_.b, g_.c, static_cast<unsigned long long>(L_),
                    static_cast<double>(bytes_of(g_)) / (1u << 30), products_, seconds_, taken.count());
        std::fflush(stdout);
    }

  private:
    // Words [0, L) of a product modulo 2^64L - 1.
    void product(Words& R, const c64i* A, upL_t La, const c64i* B, upL_t Lb) {
        const auto start = std::chrono::steady_clock::now();
        R[0] = R[L_ - 1] = 0x5555;
        vst_.product({R.data(), 0, L_}, {A, La}, {B, Lb}, vst_.work_areas(work_.get()));
        seconds_ += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        ++products_;
    }

    void ones(const Words& A, upL_t n, const Words& B, upL_t m) {
        product(R_, A.data(), n, B.data(), m);
        EXPECT_TRUE(is_product_of_ones(R_, std::min(n, m), std::max(n, m))) << n << " by " << m;
    }

    void check_residue(u64_t p) const {
        auto of_product = std::async(std::launch::async, [&] { return residue_of(R_.data(), L_, p); });
        const u64_t a = residue_of(A_.data(), n_, p), b = residue_of(B_.data(), L_ - n_, p);
        EXPECT_EQ(of_product.get(), static_cast<u64_t>(static_cast<u128_t>(a) * b % p));
    }

    Geometry g_;
    std::mt19937_64 rng_;
    testing::VSTTablesOf tables_;
    VST vst_;
    GuardedArray<std::byte> work_;
    upL_t L_;      // words of the product
    upL_t block_;  // words of a block
    Words A_, B_, R_, S_;
    upL_t n_ = 0;
    unsigned products_ = 0;
    double seconds_ = 0;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

class VSTRows : public ::testing::TestWithParam<Geometry> {};

TEST_P(VSTRows, Exact) {
    Row row(GetParam());
    row.all_ones();
    row.largest_coefficients(true);
    row.largest_coefficients(false);
    row.sparse();
    row.random_product();
    row.random_product_by_steps();
    row.random_product_by_halves();
    row.wrapped_product();
    row.report();
}

INSTANTIATE_TEST_SUITE_P(Plans, VSTRows, ::testing::ValuesIn(rows_between(0, full_limit)), name_of);

class VSTLargeRows : public ::testing::TestWithParam<Geometry> {};

TEST_P(VSTLargeRows, Exact) {
    const u64_t needed = bytes_of(GetParam()) + 4 * GetParam().capacity() / 8;
    if (physical_memory() < needed + needed / 16) GTEST_SKIP() << "needs " << (needed >> 30) << " GiB";
    Row row(GetParam());
    row.largest_coefficients(false);
    row.random_product();
    row.wrapped_product();
    row.report();
}

INSTANTIATE_TEST_SUITE_P(Plans, VSTLargeRows, ::testing::ValuesIn(rows_between(full_limit, reduced_limit)),
                         name_of);

}  // namespace
}  // namespace znp
