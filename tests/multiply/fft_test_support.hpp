// What the tests of the floating-point FFT share: buffers with guard words, operands, and products modulo
// 2^bits + 1 by GMP.
#pragma once

#include <gmp.h>
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "foundation/guarded_alloc.hpp"
#include "multiply/fft/fft_plan.hpp"
#include "multiply/fft/fft_tables.hpp"
#include "multiply/fft/fft_transform.hpp"
#include "multiply/table_holder.hpp"

namespace znp::fft::testing {

// Exactly so many bytes, aligned to 32, guard words on both sides that are tested at the release.
class Buffer {
  public:
    explicit Buffer(upL_t size) : size_(size), bytes_(make_guarded_array<std::byte>(nullptr, size)) {
        std::memset(bytes_.get(), 0xA5, size);
    }
    std::byte* get() const { return bytes_.get(); }
    operator Image*() const { return image_at(bytes_.get()); }
    operator TransformScratch*() const { return scratch_at(bytes_.get()); }
    upL_t size() const { return size_; }

  private:
    upL_t size_;
    GuardedArray<std::byte> bytes_;
};

// Twiddle tables to a depth.
class Tables {
  public:
    explicit Tables(unsigned depth) : memory_(tables_bytes(depth)) {
        EXPECT_EQ(build_tables(holder.fft, depth, memory_.get()), memory_.get() + memory_.size());
    }
    TableHolder holder;

  private:
    Buffer memory_;
};

constexpr PlanRow row(unsigned k, unsigned p, unsigned w) {
    return {(k << p) * w, static_cast<signed char>(k), static_cast<signed char>(p),
            static_cast<signed char>(w), 0};
}

using Words = std::vector<c32i>;

inline Words random_words(std::mt19937_64& rng, upL_t L) {
    Words A(L);
    for (c32i& x : A) x = static_cast<c32i>(rng());
    return A;
}

class Integer {
  public:
    Integer() { mpz_init(z); }
    explicit Integer(const Words& A) : Integer() { mpz_import(z, A.size(), -1, 4, 0, 0, A.data()); }
    Integer(const Integer&) = delete;
    Integer& operator=(const Integer&) = delete;
    ~Integer() { mpz_clear(z); }
    mpz_t z;
};

// The product modulo 2^bits + 1: bits / 32 words, and the flag for the value 2^bits.
inline Words ring_product(const Words& A, const Words& B, u64_t bits, u32_t& flag) {
    const Integer a(A), b(B);
    Integer r, m;
    mpz_mul(r.z, a.z, b.z);
    mpz_setbit(m.z, bits);
    mpz_add_ui(m.z, m.z, 1);
    mpz_mod(r.z, r.z, m.z);
    flag = static_cast<u32_t>(mpz_tstbit(r.z, bits));
    Words R(bits / 32);
    if (flag == 0) mpz_export(R.data(), nullptr, -1, 4, 0, 0, r.z);
    return R;
}

}  // namespace znp::fft::testing
