// What the tests of the large transform's frame share: tables, exact products, operands.
#pragma once

#include <gmp.h>

#include <algorithm>
#include <random>
#include <span>
#include <vector>

#include "foundation/guarded_alloc.hpp"
#include "multiply/multiply_test_support.hpp"
#include "multiply/selection.hpp"
#include "multiply/table_holder.hpp"
#include "multiply/vst/vst_tables.hpp"

namespace znp::testing {

// The tables of a limit, built by the multiplier in exactly the bytes that it promises.
class VSTTablesOf {
  public:
    explicit VSTTablesOf(u64_t limit_bits) {
        const multiplier<c64i>& vst = *find_multiplier<c64i>("VST");
        const upL_t bytes = vst.table_bytes(limit_bits);
        memory_ = make_guarded_array<std::byte>(nullptr, bytes, 64);
        EXPECT_EQ(vst.build_tables(holder, limit_bits, memory_.get()), memory_.get() + bytes);
    }
    // Those of some sizes, whether the plan has them or not.
    explicit VSTTablesOf(std::span<const vst::Geometry> sizes) {
        vst::TablePlan plan;
        for (const vst::Geometry& g : sizes) plan.require(g);
        memory_ = make_guarded_array<std::byte>(nullptr, vst::table_bytes(plan), 64);
        vst::build_tables(holder.vst, plan, memory_.get());
    }
    TableHolder holder;

  private:
    GuardedArray<std::byte> memory_;
};

// A work buffer of exactly so many bytes.
class VSTWork {
  public:
    VSTWork(const TableHolder& holder, upL_t bytes, u64_t threads)
        : memory_(make_guarded_array<std::byte>(nullptr, bytes, 64)),
          bp_{&holder, memory_.get(), bytes, threads} {}
    const BasicParameters& bp() const { return bp_; }

  private:
    GuardedArray<std::byte> memory_;
    BasicParameters bp_;
};

// An integer of the independent library.
struct Integer {
    mpz_t value;
    Integer() { mpz_init(value); }
    ~Integer() { mpz_clear(value); }
    Integer(const Integer&) = delete;
    Integer& operator=(const Integer&) = delete;
};

// Products of operands of any length.
template <class word>
std::vector<word> gmp_product(const std::vector<word>& A, const std::vector<word>& B) {
    Integer a, b;
    mpz_import(a.value, A.size(), -1, sizeof(word), 0, 0, A.data());
    mpz_import(b.value, B.size(), -1, sizeof(word), 0, 0, B.data());
    mpz_mul(a.value, a.value, b.value);
    std::vector<word> product(A.size() + B.size());
    mpz_export(product.data(), nullptr, -1, sizeof(word), 0, 0, a.value);
    return product;
}

template <class word>
std::vector<word> random_words(std::mt19937_64& rng, upL_t n) {
    std::vector<word> A(n);
    for (word& w : A) w = static_cast<word>(rng());
    return A;
}

template <class word>
std::vector<word> all_ones(upL_t n) {
    return std::vector<word>(n, static_cast<word>(~word{0}));
}

}  // namespace znp::testing
