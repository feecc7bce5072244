// Output stages with the system's own conversion and verification, in blocks of exactly the promised bytes.
#include <gtest/gtest.h>

#include "compute/run/digit_output.hpp"
#include "compute/run/output_test_support.hpp"
#include "multiply/table_holder.hpp"

namespace znp {
namespace {

using testing::console_output;
using testing::dying;
using ::testing::ExitedWithCode;
using testing::expect_digits;
using testing::file_text;
using testing::Number;
using testing::output;
using testing::OutputRun;
using testing::root;
using testing::square_root;
using testing::text_of;
using testing::UseCalls;

// Twiddle tables as the run builds them.
class Tables {
  public:
    explicit Tables(upL_t p) : memory_(make_guarded_array<std::byte>(nullptr, table_size(limit_bits(p)))) {
        build_tables(holder, limit_bits(p), memory_.get());
    }
    TableHolder holder;

  private:
    static u64_t limit_bits(upL_t p) { return (p + 100) * 128; }
    GuardedArray<std::byte> memory_;
};

void expect_output_in_promised_bytes(u64_t dec, u64_t n, u64_t threads) {
    OutputRun state(dec, threads);
    const Tables tables(state.run.settings.p);
    state.run.tables = tables.holder;
    const Number number = root(state, n);
    output(state, number);
    expect_digits(state, number);
    if (::testing::Test::HasFailure()) FAIL() << dec << " digits on " << threads << " threads";
}

TEST(OutputArithmetic, SmallSizesInThePromisedBytes) {
    for (u64_t dec = 100; dec <= 400; ++dec) expect_output_in_promised_bytes(dec, 2, 1 + dec % 3);
}

TEST(OutputArithmetic, LargerSizesOnThreadsInThePromisedBytes) {
    for (const u64_t dec : {u64_t{1000}, u64_t{3000}, u64_t{12345}, u64_t{50000}}) {
        for (const u64_t threads : {1u, 2u, 3u, 7u, 16u}) expect_output_in_promised_bytes(dec, 3, threads);
    }
}

TEST(OutputArithmetic, LengthsOfTheNumberInThePromisedBytes) {
    const u64_t dec = 2000;
    const upL_t p = OutputRun(dec).run.settings.p;
    const Tables tables(p);
    for (upL_t L = least_fraction(p); L <= most_fraction(p) + 1; ++L) {
        OutputRun state(dec);
        state.run.tables = tables.holder;
        const Number number = square_root(5, L);
        console_output([&] { convert_and_write_B(state.memory, number.view()); });
        EXPECT_EQ(file_text(state.decimal_file()), text_of(number, 10, dec)) << L;
    }
}

TEST(OutputArithmeticDeathTest, ABlockThatIsAWordShort) {
    const u64_t dec = 2000;
    OutputRun state(dec, 0, 1, testing::conversion_bytes(dec, 1) - 8);
    const Tables tables(state.run.settings.p);
    state.run.tables = tables.holder;
    const Number number = root(state, 5);
    EXPECT_EXIT(dying([&] { convert_and_write_B(state.memory, number.view()); }), ExitedWithCode(1),
                "Memory Allocation Failure.");
}

// The right words, but the first answer is a failure.
TEST(OutputArithmetic, AFailedAttemptLeavesNothingBehind) {
    static int conversions, verifications;
    conversions = verifications = 0;
    const UseCalls calls(
        [](const BasicParameters& bp, cdi radix, cdi* out, upL_t n, const cdi* fraction, upL_t L,
           StatusLine* status) {
            const int result = convert(bp, radix, out, n, fraction, L, status);
            return ++conversions == 1 ? overlap_error : result;
        },
        [](const BasicParameters& bp, cdi radix, u64_t e, cdi integer, const cdi* fraction, upL_t L,
           u64_t& residue, StatusLine* status) {
            const int result = power_check(bp, radix, e, integer, fraction, L, residue, status);
            return ++verifications == 1 ? 1 : result;
        });
    expect_output_in_promised_bytes(5000, 2, 2);
    EXPECT_EQ(conversions, 2);
    EXPECT_EQ(verifications, 2);
}

}  // namespace
}  // namespace znp
