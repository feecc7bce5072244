#include "multiply/selection.hpp"

#include <gtest/gtest.h>

#include <string>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "multiply/dispatch.hpp"
#include "multiply/multiply_test_support.hpp"
#include "multiply/table_holder.hpp"

namespace znp {
namespace {

using testing::caught;
using testing::console_output;

// Initialised before main, like the tables that other parts of the system build of the objects.
const multiplier<c64i>* const found_before_main = find_multiplier<c64i>("BKT");
const upL_t max_words_before_main = memory_table<c64i>()[0].max_words;

template <class word>
std::string key_for(SelectionTable<multiplier<word>> table, upL_t L) {
    return select(table, L).name;
}

TEST(Selection, ObjectsAreUsableBeforeMain) {
    ASSERT_NE(found_before_main, nullptr);
    EXPECT_STREQ(found_before_main->name, "BKT");
    EXPECT_EQ(max_words_before_main, 58u);
}

TEST(Selection, EightObjectsInOrderWithTheirLimits) {
    const char* const keys[] = {"BKT", "FFT", "HNT", "VST"};
    const char* const long_names[] = {"Basecase/Karatsuba", "Floating-Point FFT", "Hybrid NTT",
                                      "VST Algorithm"};
    const u64_t limits32[] = {14848, 100663296, 8795824586752, 633318697598976};
    const u64_t limits64[] = {29696, 100663296, 8795824586752, 633318697598976};
    const auto all32 = multipliers<c32i>();
    const auto all64 = multipliers<c64i>();
    ASSERT_EQ(all32.size(), 4u);
    ASSERT_EQ(all64.size(), 4u);
    for (std::size_t i = 0; i < 4; i++) {
        EXPECT_STREQ(all32[i]->name, keys[i]);
        EXPECT_STREQ(all64[i]->name, keys[i]);
        EXPECT_STREQ(all32[i]->table_name, keys[i]);
        EXPECT_STREQ(all64[i]->long_name, long_names[i]);
        EXPECT_STREQ(all32[i]->table_long_name, long_names[i]);
        EXPECT_EQ(all32[i]->max_bits, limits32[i]);
        EXPECT_EQ(all64[i]->max_bits, limits64[i]);
    }
}

TEST(Selection, FindByKey) {
    for (const auto* algorithm : multipliers<c32i>()) {
        EXPECT_EQ(find_multiplier<c32i>(algorithm->name), algorithm);
    }
    EXPECT_EQ(find_multiplier<c64i>("bkt"), nullptr);
    EXPECT_EQ(find_multiplier<c64i>("BK"), nullptr);
    EXPECT_EQ(find_multiplier<c64i>(""), nullptr);
}

TEST(Selection, MemoryTables) {
    const auto t32 = memory_table<c32i>();
    ASSERT_EQ(t32.size(), 3u);
    EXPECT_EQ(t32[0].max_words, 116u);
    EXPECT_EQ(t32[1].max_words, 20482u);
    EXPECT_EQ(t32[2].max_words, 0x120000000000u);
    const auto t64 = memory_table<c64i>();
    ASSERT_EQ(t64.size(), 3u);
    EXPECT_EQ(t64[0].max_words, 58u);
    EXPECT_EQ(t64[1].max_words, 10241u);
    EXPECT_EQ(t64[2].max_words, 0x90000000000u);
}

TEST(Selection, SwapTables) {
    const auto t32 = swap_table<c32i>();
    ASSERT_EQ(t32.size(), 2u);
    EXPECT_EQ(t32[0].max_words, 20482u);
    EXPECT_EQ(t32[1].max_words, 0x120000000000u);
    EXPECT_EQ(key_for(t32, 20482), "HNT");
    EXPECT_EQ(key_for(t32, 20483), "VST");
    const auto t64 = swap_table<c64i>();
    ASSERT_EQ(t64.size(), 2u);
    EXPECT_EQ(key_for(t64, 1), "HNT");
    EXPECT_EQ(key_for(t64, 10241), "HNT");
    EXPECT_EQ(key_for(t64, 10242), "VST");
}

TEST(Selection, RowBoundariesOf32BitProducts) {
    const auto table = memory_table<c32i>();
    EXPECT_EQ(key_for(table, 0), "BKT");
    EXPECT_EQ(key_for(table, 2), "BKT");
    EXPECT_EQ(key_for(table, 116), "BKT");
    EXPECT_EQ(key_for(table, 117), "FFT");
    EXPECT_EQ(key_for(table, 20482), "FFT");
    EXPECT_EQ(key_for(table, 20483), "VST");
    EXPECT_EQ(key_for(table, 19791209299968), "VST");
}

TEST(Selection, RowBoundariesOf64BitProducts) {
    const auto table = memory_table<c64i>();
    EXPECT_EQ(key_for(table, 58), "BKT");
    EXPECT_EQ(key_for(table, 59), "FFT");
    EXPECT_EQ(key_for(table, 10241), "FFT");
    EXPECT_EQ(key_for(table, 10242), "VST");
    EXPECT_EQ(key_for(table, 9895604649984), "VST");
}

TEST(Selection, LengthBeyondTheLastRowIsCodeMinus4) {
    const std::string output = console_output([] {
        const auto e = caught<zn_exception>([] { select(memory_table<c32i>(), 19791209299969); });
        EXPECT_EQ(e.code, -4);
        EXPECT_STREQ(e.title, "Generic Exception");
        EXPECT_EQ(e.message, nullptr);
        EXPECT_EQ(caught<zn_exception>([] { select(swap_table<c64i>(), 9895604649985); }).code, -4);
        EXPECT_EQ(caught<zn_exception>([] { select(memory_table<c64i>(), ~upL_t{0}); }).code, -4);
    });
    EXPECT_NE(output.find("Error Code: -4"), std::string::npos);
}

TEST(Selection, AnAlgorithmToComeThrowsSilentlyAndNamesItself) {
    for (const char* key : {"HNT"}) {
        SCOPED_TRACE(key);
        const multiplier<c64i>& algorithm = *find_multiplier<c64i>(key);
        std::vector<c64i> A(100), T(200);
        TransformSlot slot;
        TableHolder holder;
        const BasicParameters bp;
        const auto names_itself = [&](auto action) {
            const auto e = caught<zn_exception>(action);
            EXPECT_NE(e.text.find(key), std::string::npos);
            EXPECT_NE(e.text.find(algorithm.long_name), std::string::npos);
            EXPECT_EQ(e.action, action::throw_silently);
        };
        const std::string output = console_output([&] {
            names_itself([&] { (void)algorithm.table_bytes(1000000); });
            names_itself([&] { algorithm.build_tables(holder, 1000000, nullptr); });
            names_itself([&] { (void)algorithm.work_bytes(1000, 1); });
            names_itself([&] { (void)algorithm.mulp_bytes(1000, 1); });
            names_itself([&] { algorithm.make_transform(bp, slot.place(), 1000); });
            names_itself([&] { algorithm.sqr(bp, T.data(), {A.data(), 100}); });
            names_itself([&] { algorithm.mul(bp, T.data(), {A.data(), 100}, {A.data(), 100}); });
            names_itself([&] { algorithm.sqr_window(bp, Window{T.data(), 1, 9}, {A.data(), 100}); });
            names_itself([&] {
                algorithm.mul_window(bp, Window{T.data(), 1, 9}, {A.data(), 100}, {A.data(), 100});
            });
            names_itself([&] {
                algorithm.mulp(bp, Window{T.data(), 1, 9}, {A.data(), 100}, {A.data(), 100});
            });
        });
        EXPECT_EQ(output, "");
    }
}

// What a table of another kind may be asked: an algorithm with needs that the tests choose.
struct Needy {
    upL_t shortest;
    upL_t per_word;
    upL_t operator()(upL_t L) const {
        if (L < shortest) InvalidTransformParametersException("Transform length is too small.").raise();
        return per_word * L + 2;
    }
};
constexpr auto need = [](const Needy& algorithm, upL_t L) { return algorithm(L); };

TEST(Selection, LargestNeedOfTheShorterRowsAndTheCoveringRow) {
    const Needy greedy{0, 1000};
    const Needy frugal{0, 1};  // asks for less than the rows before it, as one does that is cut for memory
    const SelectionRow<Needy> rows[] = {{10, &greedy}, {100, &frugal}, {1000, &greedy}};
    const SelectionTable<Needy> table = rows;
    EXPECT_EQ(&select(table, 11), &frugal);
    EXPECT_EQ(largest_need(table, 7, need), 7002u);
    EXPECT_EQ(largest_need(table, 10, need), 10002u);
    EXPECT_EQ(largest_need(table, 11, need), 10002u);  // the frugal row asks for 13
    EXPECT_EQ(largest_need(table, 100, need), 10002u);
    EXPECT_EQ(largest_need(table, 101, need), 101002u);
    EXPECT_EQ(
        caught<zn_exception>([&] { console_output([&] { (void)largest_need(table, 1001, need); }); }).code,
        -4);
}

TEST(Selection, LargestNeedSkipsRowsWithoutParameters) {
    const Needy from_50{50, 1000};
    const Needy frugal{0, 1};
    const SelectionRow<Needy> rows[] = {{10, &frugal}, {20, &from_50}, {100, &from_50}};
    const SelectionTable<Needy> table = rows;
    EXPECT_EQ(largest_need(table, 20, need), 12u);
    EXPECT_EQ(largest_need(table, 49, need), 12u);
    EXPECT_EQ(largest_need(table, 50, need), 50002u);
}

TEST(Selection, WorkBytesAreTheLargestNeed) {
    const auto table = memory_table<c64i>();
    for (const upL_t L : {upL_t{40}, upL_t{3000}, upL_t{100000}}) {
        for (const u64_t threads : {u64_t{1}, u64_t{4}}) {
            upL_t bytes = 0, mulp_bytes = 0;
            for (const auto& row : table) {
                const upL_t length = std::min(row.max_words, L);
                bytes = std::max(bytes, row.algorithm->work_bytes(length, threads));
                mulp_bytes = std::max(mulp_bytes, row.algorithm->mulp_bytes(length, threads));
                if (row.max_words >= L) break;
            }
            EXPECT_EQ(work_bytes_for<c64i>(L, threads), bytes);
            EXPECT_EQ(work_bytes_for<c64i>(L, threads, true), mulp_bytes);
        }
    }
}

// The last rows stand for 180 trillion digits instead of their own maxima.
TEST(Selection, TableReport) {
    EXPECT_EQ(console_output([] { print_convolution_table<c32i>(); }),
              "Convolution Algorithm Table (32-bit Word)\n"
              "Decimal Digits/word: 9.632959861247398\n"
              "   Maximum Convolution Length  (words/digits)  -  Algorithm\n"
              "                 116 /                  1,117  -  BKT    Basecase/Karatsuba\n"
              "              20,482 /                197,302  -  FFT    Floating-Point FFT\n"
              "  18,685,845,533,793 /    180,000,000,000,496  -  VST    VST Algorithm\n");
    EXPECT_EQ(console_output([] { print_convolution_table<c64i>(); }),
              "Convolution Algorithm Table (64-bit Word)\n"
              "Decimal Digits/word: 19.265919722494797\n"
              "   Maximum Convolution Length  (words/digits)  -  Algorithm\n"
              "                  58 /                  1,117  -  BKT    Basecase/Karatsuba\n"
              "              10,241 /                197,302  -  FFT    Floating-Point FFT\n"
              "   9,342,922,766,896 /    180,000,000,000,487  -  VST    VST Algorithm\n");
}

}  // namespace
}  // namespace znp
