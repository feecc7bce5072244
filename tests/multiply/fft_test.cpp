// The floating-point FFT against GMP modulo 2^(N w) + 1, and its kernels against the plain form.
#include <gtest/gtest.h>

#include <algorithm>
#include <complex>
#include <functional>

#include "console_capture.hpp"
#include "multiply/fft/fft_carry.hpp"
#include "multiply/fft/fft_kernels.hpp"
#include "multiply/fft/fft_reference.hpp"
#include "multiply/fft_test_support.hpp"
#include "multiply/kernels/residue.hpp"
#include "multiply/selection.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using fft::PlanRow;
using fft::testing::Buffer;
using fft::testing::Integer;
using fft::testing::random_words;
using fft::testing::ring_product;
using fft::testing::row;
using fft::testing::Tables;
using fft::testing::Words;

// Every k, both parities of p, and every leaf length.
constexpr PlanRow sizes[] = {row(1, 7, 16),  row(1, 7, 9),   row(3, 7, 20),  row(5, 7, 17), row(1, 8, 20),
                             row(3, 8, 19),  row(5, 8, 15),  row(1, 9, 19),  row(3, 9, 18), row(5, 9, 11),
                             row(1, 10, 18), row(3, 10, 13), row(5, 10, 10), row(1, 11, 18)};

fft::reference::Size plain(const FFT& t) {
    return {t.N, t.w, t.p % 2 != 0 ? t.k : 2 * t.k};
}

// One transform with buffers of just the promised sizes.
struct Machine {
    Machine(const Tables& tables, const PlanRow& size)
        : t(&tables.holder, size), T1(t.transform_bytes), T2(t.transform_bytes), scratch(t.work_bytes) {}

    u32_t product(const Words& A, const Words& B, Words& R) {
        R.assign(t.bits / 32, 0xdeadbeef);
        t.forward(T1, A, scratch);
        t.forward(T2, B, scratch);
        return t.ring_fmul(R.data(), T1, T2);
    }
    u32_t square(const Words& A, Words& R) {
        R.assign(t.bits / 32, 0xdeadbeef);
        t.forward(T1, A, scratch);
        return t.ring_fsqr(R.data(), T1);
    }

    FFT t;
    Buffer T1, T2, scratch;
};

void check_ring(Machine& machine, const Words& A, const Words& B) {
    const FFT& t = machine.t;
    SCOPED_TRACE(::testing::Message() << "k " << t.k << " p " << t.p << " w " << t.w << " words " << A.size()
                                      << " by " << B.size());
    Words R;
    u32_t flag = 7;
    u32_t top = machine.product(A, B, R);
    EXPECT_EQ(R, ring_product(A, B, t.bits, flag));
    EXPECT_EQ(top, flag);
    top = machine.square(A, R);
    EXPECT_EQ(R, ring_product(A, A, t.bits, flag));
    EXPECT_EQ(top, flag);
}

Words power_of_two(u64_t bit) {
    Words A(bit / 32 + 1);
    A.back() = c32i{1} << (bit & 31);
    return A;
}

TEST(FftReference, ProductsModuloTheRing) {
    auto rng = testing::make_rng(30);
    for (const PlanRow& size : {row(1, 7, 16), row(3, 7, 11), row(5, 8, 9)}) {
        const FFT t(nullptr, size);
        const Words A = random_words(rng, t.bits / 32), B = random_words(rng, t.bits / 40);
        const auto a = fft::reference::forward(plain(t), A.data(), A.size());
        const auto b = fft::reference::forward(plain(t), B.data(), B.size());
        u32_t flag = 7, expected = 7;
        double error = 1;
        EXPECT_EQ(fft::reference::inverse(plain(t), fft::reference::pointwise(plain(t), a, b), flag, &error),
                  ring_product(A, B, t.bits, expected));
        EXPECT_EQ(flag, expected);
        EXPECT_LT(error, 0.1);
        EXPECT_EQ(fft::reference::inverse(plain(t), a, flag), A);
    }
}

// Image order: leaf 16 j + 4 l + r of the tree, coefficient t, is lane l of group 4 C j + r C + t.
TEST(FftKernels, ImagesAreThoseOfThePlainForm) {
    auto rng = testing::make_rng(31);
    const Tables tables(6);
    for (const PlanRow& size : sizes) {
        Machine machine(tables, size);
        const FFT& t = machine.t;
        for (const upL_t L : {t.bits / 32, t.bits / 64, t.bits / 100}) {
            const Words A = random_words(rng, L);
            t.forward(machine.T1, {A.data(), L}, machine.scratch);
            const auto expected = fft::reference::forward(plain(t), A.data(), L);
            const auto* const image = reinterpret_cast<const double*>(machine.T1.get());
            const u64_t C = plain(t).C;
            const double tolerance =
                std::ldexp(1.0, static_cast<int>(t.w)) * static_cast<double>(t.N) * 1e-15;
            double worst = 0;
            for (u64_t j = 0; j < t.N / 32 / C; ++j)
                for (u64_t l = 0; l < 4; ++l)
                    for (u64_t r = 0; r < 4; ++r)
                        for (u64_t i = 0; i < C; ++i) {
                            const double* const group = image + 8 * (4 * C * j + r * C + i);
                            const std::complex<double> point = {group[l], group[l + 4]};
                            worst = std::max(worst, std::abs(point - expected[(16 * j + 4 * l + r) * C + i]));
                        }
            EXPECT_LT(worst, tolerance) << "k " << t.k << " p " << t.p << " words " << L;
        }
    }
}

TEST(FftRing, OperandsOfEveryLengthClass) {
    auto rng = testing::make_rng(1);
    const Tables tables(8);
    const auto check = [&](const PlanRow& size) {
        Machine machine(tables, size);
        const upL_t words = size.capacity_bits / 32;
        for (const upL_t La :
             {words, words - 1, words / 2, words / 2 - 1, words / 2 + 1, words / 3, upL_t{1}})
            check_ring(machine, random_words(rng, La), random_words(rng, words - La + 1));
    };
    for (const PlanRow& size : sizes) check(size);
    for (const PlanRow& size : {row(1, 12, 17), row(3, 11, 17), row(1, 13, 17)}) check(size);
}

// All widths, all operand lengths: each position of the operand's end within the eight streams.
TEST(FftRing, EveryWidthAndEveryLength) {
    auto rng = testing::make_rng(2);
    const Tables tables(2);
    for (unsigned w = 9; w <= 21; ++w)
        for (const unsigned p : {7u, 8u}) {
            if (p == 8 && w == 21) continue;  // too wide for this length
            Machine machine(tables, row(1, p, w));
            for (upL_t L = 0; L <= machine.t.bits / 32; L += p == 7 ? 1 : 7)
                check_ring(machine, random_words(rng, L), random_words(rng, machine.t.bits / 32 - L));
        }
}

TEST(FftRing, HalfTheCapacityAndOneWordShorter) {
    auto rng = testing::make_rng(3);
    const Tables tables(6);
    for (const PlanRow& size : sizes) {
        Machine machine(tables, size);
        const upL_t half = size.capacity_bits / 64;
        for (const upL_t L : {half, half - 1})
            check_ring(machine, random_words(rng, L), random_words(rng, L));
    }
}

TEST(FftRing, TheValueTwoToTheCapacitySetsTheFlag) {
    const Tables tables(6);
    for (const PlanRow& size : sizes) {
        Machine machine(tables, size);
        const u64_t bits = size.capacity_bits;
        const Words zero(bits / 32);
        Words R;
        for (const u64_t a : {u64_t{1}, bits / 2, bits / 2 + 1, bits - 1}) {
            EXPECT_EQ(machine.product(power_of_two(a), power_of_two(bits - a), R), 1u) << a;
            EXPECT_EQ(R, zero);
        }
        EXPECT_EQ(machine.square(power_of_two(bits / 2), R), 1u);
        EXPECT_EQ(R, zero);
        // One more and one less: 2^bits * 2 = -2, and (2^bits - 1)^2 = 4.
        check_ring(machine, power_of_two(bits - 1), power_of_two(2));
        check_ring(machine, Words(bits / 32, ~c32i{0}), power_of_two(bits - 1));
    }
}

TEST(FftRing, TopDigitsAllOnesZeroesAndSpikes) {
    auto rng = testing::make_rng(4);
    const Tables tables(8);
    for (const PlanRow& size : {row(1, 7, 20), row(3, 7, 20), row(5, 7, 19), row(1, 8, 20), row(3, 8, 19),
                                row(1, 9, 19), row(5, 9, 18), row(1, 10, 19), row(1, 13, 17)}) {
        Machine machine(tables, size);
        const upL_t words = size.capacity_bits / 32;
        const Words ones(words, ~c32i{0}), half(words / 2, ~c32i{0}), zero(words);
        Words top(words);  // the largest possible top digit alone
        const auto w = static_cast<unsigned>(size.w);
        top.back() = ~c32i{0} << (32 - w);
        Words R;
        EXPECT_EQ(machine.square(ones, R), 0u);  // (-2)^2
        EXPECT_EQ(R[0], 4u);
        EXPECT_TRUE(std::all_of(R.begin() + 1, R.end(), [](c32i x) { return x == 0; }));
        check_ring(machine, ones, half);
        check_ring(machine, half, top);
        check_ring(machine, top, ones);
        check_ring(machine, zero, ones);
        for (unsigned i = 0; i < 10; ++i) {
            Words spike(words);
            spike[rng() % words] = c32i{1} << (rng() % 32);
            check_ring(machine, spike, ones);
            check_ring(machine, spike, random_words(rng, words));
        }
    }
}

// Alternating maximal digits, operands of all ones: every row, by the residue of the product of halves.
TEST(FftPlanRows, EveryRowMultipliesAllOnes) {
    const Tables tables(10);
    for (const auto plan : {fft::main_plan(), fft::exact_plan()})
        for (const PlanRow& size : plan) {
            if (size.N() > 40000) continue;  // longer ones: bench/fft_sizes_bench
            Machine machine(tables, size);
            const upL_t words = size.capacity_bits / 64;
            const Words A(words, ~c32i{0});
            Words R;
            EXPECT_EQ(machine.square(A, R), 0u);
            const u64_t a = residue::hash_words(A.data(), words);
            EXPECT_EQ(residue::hash_words(R.data(), 2 * words), residue::mul(a, a)) << size.capacity_bits;
        }
}

TEST(Fft, InverseFromUndoesForward) {
    auto rng = testing::make_rng(5);
    const Tables tables(6);
    for (const PlanRow& size : sizes) {
        Machine machine(tables, size);
        const upL_t words = size.capacity_bits / 32;
        for (const upL_t L : {words, words / 2, words / 5}) {
            const Words A = random_words(rng, L);
            Words R(words), whole = A;
            whole.resize(words);
            machine.t.forward(machine.T1, {A.data(), L}, machine.scratch);
            EXPECT_EQ(machine.t.ring_from(R.data(), machine.T1), 0u);
            EXPECT_EQ(R, whole);
            machine.t.forward(machine.T1, {A.data(), L}, machine.scratch);
            const upL_t s = rng() % words, e = s + rng() % (words - s + 1);
            Words window(e - s);
            machine.t.inverse_from({window.data(), s, e}, machine.T1, machine.scratch);
            EXPECT_TRUE(
                std::equal(window.begin(), window.end(), whole.begin() + static_cast<std::ptrdiff_t>(s)));
        }
    }
}

// Windows in both word families; the second image of a product stays as it was.
TEST(Fft, WindowsOfProductsInBothWordFamilies) {
    auto rng = testing::make_rng(6);
    const Tables tables(6);
    for (const PlanRow& size : sizes) {
        Machine machine(tables, size);
        const FFT& t = machine.t;
        const upL_t words = size.capacity_bits / 32;
        const Words A = random_words(rng, words / 4 * 2), B = random_words(rng, words / 4 * 2);
        u32_t flag = 0;
        const Words whole = ring_product(A, B, t.bits, flag);
        t.forward(machine.T2, B, machine.scratch);
        for (unsigned round = 0; round < 5; ++round) {
            const upL_t s = rng() % (words / 2), e = s + 1 + rng() % (words / 2 - s);  // 64-bit words
            std::vector<c64i> R(e - s), A64(A.size() / 2);
            std::memcpy(A64.data(), A.data(), 4 * A.size());
            t.forward(machine.T1, A64, machine.scratch);
            t.inverse_fmul({R.data(), s, e}, machine.T1, machine.T2, machine.scratch);
            EXPECT_EQ(std::memcmp(R.data(), whole.data() + 2 * s, 8 * (e - s)), 0);
            Words R32(2 * (e - s));
            t.forward(machine.T1, A, machine.scratch);
            t.inverse_fmul({R32.data(), 2 * s, 2 * e}, machine.T1, machine.T2, machine.scratch);
            EXPECT_EQ(std::memcmp(R32.data(), R.data(), 8 * (e - s)), 0);
        }
        Words square(words);
        t.forward(machine.T1, A, machine.scratch);
        t.inverse_fsqr({square.data(), 0, words}, machine.T1, machine.scratch);
        EXPECT_EQ(square, ring_product(A, A, t.bits, flag));
    }
}

TEST(Fft, FieldsAndEquality) {
    const FFT t(nullptr, row(3, 9, 17)), same(nullptr, row(3, 9, 17)), narrower(nullptr, row(3, 9, 16)),
        longer(nullptr, row(1, 9, 17));
    EXPECT_EQ(t.k, 3u);
    EXPECT_EQ(t.p, 9u);
    EXPECT_EQ(t.w, 17u);
    EXPECT_EQ(t.N, 1536u);
    EXPECT_EQ(t.bits, 1536u * 17);
    EXPECT_EQ(t.max_bits, t.bits);
    EXPECT_EQ(t.transform_bytes, 8 * t.N);
    EXPECT_EQ(t.work_bytes, 4 * t.N);
    EXPECT_STREQ(t.name(), "FFT");
    EXPECT_TRUE(t.equals(same));
    EXPECT_FALSE(t.equals(narrower));
    EXPECT_FALSE(t.equals(longer));
}

template <class word>
void check_multiplier(std::mt19937_64& rng) {
    constexpr u64_t bits = WordTraits<word>::bits;
    const multiplier<word>& fft = *find_multiplier<word>("FFT");
    TableHolder holder;
    const Buffer tables(fft.table_bytes(200000));
    EXPECT_EQ(fft.build_tables(holder, 200000, tables.get()), tables.get() + tables.size());
    for (unsigned round = 0; round < 60; ++round) {
        const upL_t La = 1 + rng() % (100000 / bits), Lb = 1 + rng() % (100000 / bits);
        const Buffer work(fft.work_bytes(La + Lb, 1));
        BasicParameters bp;
        bp.holder = &holder;
        bp.M = work.get();
        bp.ML = work.size();
        std::vector<word> A(La), B(Lb), T(La + Lb);
        for (word& x : A) x = static_cast<word>(rng());
        for (word& x : B) x = static_cast<word>(rng());
        fft.mul(bp, T.data(), {A.data(), La}, {B.data(), Lb});
        Integer a, b, expected, found;
        mpz_import(a.z, La, -1, sizeof(word), 0, 0, A.data());
        mpz_import(b.z, Lb, -1, sizeof(word), 0, 0, B.data());
        mpz_mul(expected.z, a.z, b.z);
        mpz_import(found.z, La + Lb, -1, sizeof(word), 0, 0, T.data());
        ASSERT_EQ(mpz_cmp(found.z, expected.z), 0) << La << " by " << Lb;
    }
}

TEST(Fft, MultiplierObjectsOfBothFamilies) {
    auto rng = testing::make_rng(7);
    check_multiplier<c32i>(rng);
    check_multiplier<c64i>(rng);
}

TEST(FftDeathTest, BadParametersEndTheProgram) {
    const Tables tables(2);
    Machine machine(tables, row(1, 7, 16));
    const Words A(65);
    Words R(65);
    const char* const text = "Invalid Function Parameters:   ";
    const auto ends = [&](const std::function<void()>& action) {
        EXPECT_EXIT(testing::dying(action), ::testing::ExitedWithCode(1), text);
    };
    ends([&] { machine.t.forward(machine.T1, {A.data(), 65}, machine.scratch); });
    ends([&] { machine.t.inverse_from({R.data(), 0, 65}, machine.T1, machine.scratch); });
    ends([&] { machine.t.inverse_from({R.data(), 3, 2}, machine.T1, machine.scratch); });
    Machine too_deep(tables, row(1, 9, 16));
    ends([&] { too_deep.t.forward(too_deep.T1, {A.data(), 65}, too_deep.scratch); });
    const FFT no_tables(nullptr, row(1, 7, 16));
    ends([&] { no_tables.forward(machine.T1, {A.data(), 60}, machine.scratch); });
}

TEST(FftCarry, RipplesAndWraps) {
    auto rng = testing::make_rng(8);
    const u64_t bits = 128 * 9;
    Integer modulus;
    mpz_setbit(modulus.z, bits);
    mpz_add_ui(modulus.z, modulus.z, 1);
    const Words fillings[] = {Words(bits / 32), Words(bits / 32, ~c32i{0}), random_words(rng, bits / 32)};
    for (unsigned round = 0; round < 3000; ++round) {
        Words words = fillings[rng() % 3];
        if (rng() % 3 == 0) words[0] = static_cast<c32i>(rng() % 3);
        s64_t carry[8];
        Integer value(words), term;
        for (unsigned s = 0; s < 8; ++s) {
            carry[s] = rng() % 2 != 0 ? static_cast<s64_t>(rng() % 5) - 2
                                      : static_cast<s64_t>(rng() % (u64_t{1} << 36)) - (s64_t{1} << 35);
            if (round % 4 == 0 && s < 7) carry[s] = 0;
            mpz_set_si(term.z, carry[s]);
            mpz_mul_2exp(term.z, term.z, (s + 1) * bits / 8);
            mpz_add(value.z, value.z, term.z);
        }
        mpz_mod(value.z, value.z, modulus.z);
        const u32_t flag = fft::resolve_carries(reinterpret_cast<std::byte*>(words.data()), carry, bits);
        Integer found(words);
        if (flag != 0) mpz_setbit(found.z, bits);
        ASSERT_EQ(mpz_cmp(found.z, value.z), 0) << round;
    }
}

}  // namespace
}  // namespace znp
