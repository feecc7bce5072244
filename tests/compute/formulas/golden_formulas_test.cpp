// Every formula of the table, those that a version does not offer, too: carried out from its start to
// its digits in a block of exactly the estimate, against the golden digits.
#include "compute/constants/table_constant.hpp"
#include "compute/run/computed_run.hpp"
#include "golden.hpp"
#include "multiply/table_holder.hpp"
#include "sha256.hpp"

namespace znp {
namespace {

struct Case {
    const ConstantRow* row;
    s32_t algorithm;
    std::string keyword;  // of the golden digits
    u64_t parameter;
};

std::vector<Case> all_formulas() {
    std::vector<Case> cases;
    for (const ConstantRow& row : constant_rows()) {
        if (row.id > constant_id::last_selectable) continue;
        const std::string keyword(row.id == constant_id::golden_ratio ? "phi" : row.keywords[0]);
        for (upL_t i = 0; i < row.algorithms.size(); i++) {
            if (row.algorithms[i].formula.in_memory == nullptr) continue;
            const auto algorithm = static_cast<s32_t>(i);
            if (row.parameter.rule == ParameterRule::none) {
                cases.push_back({&row, algorithm, keyword, 0});
            } else {
                cases.push_back({&row, algorithm, keyword + ":2", 2});
            }
            if (row.id == constant_id::arccoth) {
                cases.push_back({&row, algorithm, keyword + ":4294967295", 4294967295});
            }
            if (row.id == constant_id::log) {
                for (const u64_t n : {10u, 2147483647u}) {
                    cases.push_back({&row, algorithm, keyword + ":" + std::to_string(n), n});
                }
            }
        }
    }
    return cases;
}

std::string name_of(const ::testing::TestParamInfo<Case>& info) {
    std::string name = info.param.keyword + "_" + std::to_string(info.param.algorithm);
    for (char& c : name) c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
    return name;
}

class GoldenFormulas : public ::testing::TestWithParam<Case> {
  protected:
    void check(u64_t dec, u64_t threads) {
        SCOPED_TRACE(std::to_string(dec) + " digits, threads: " + std::to_string(threads));
        const Case& what = GetParam();
        const testing::TemporaryFolder folder;
        RunSettings settings;
        settings.short_name = settings.algorithm_short = std::string(1, 'X');
        settings.dec = dec;
        settings.hex = hex_digits_for(dec);
        settings.p = precision_for(settings.hex);
        settings.path = folder.wide_path();
        settings.tds = threads;
        const auto constant = what.row->make(*what.row, what.parameter, settings.p);
        upL_t estimate = 0;
        ASSERT_TRUE(constant->get_memory_B(what.algorithm, settings.p, dec, threads, estimate));

        RunTimeParameters run(settings);
        const u64_t limit_bits = 64 * longest_product(settings.p);
        const auto tables = make_guarded_array<std::byte>(nullptr, table_size(limit_bits));
        build_tables(run.tables, limit_bits, tables.get());
        std::vector<u64_t> block(estimate / 8);
        heap_init(run.heap, block.data(), estimate / 8 * 8);
        run.stopwatch.start();
        testing::console_output([&] {
            StageMemory memory(run);
            dynamic_cast<const zlr_TableConstant&>(*constant).carry_out(what.algorithm, memory);
        });
        EXPECT_EQ(run.heap.active, 0u);
        // A tenth and the margins of short numbers may be left over.
        const upL_t peak =
            static_cast<upL_t>(run.heap.peak_top - run.heap.base) + heap_entry_bytes * run.heap.peak_active;
        EXPECT_LE(estimate, peak + estimate / 10 + 32768);

        for (const testing::GoldenDecimal& golden : testing::golden_decimal()) {
            if (golden.constant != what.keyword || golden.dec != dec) continue;
            EXPECT_EQ(testing::sha256(testing::file_text(folder.path() + "/X - Dec - X.txt")), golden.sha256);
            EXPECT_EQ(run.binary_hash, golden.residue);
            checked_++;
        }
    }

    void TearDown() override { EXPECT_GT(checked_, 0); }

  private:
    int checked_ = 0;
};

TEST_P(GoldenFormulas, AHundredDigits) {
    check(100, 1);
    check(100, 3);
}

TEST_P(GoldenFormulas, AThousandDigits) {
    for (const u64_t threads : {1u, 2u, 3u, 7u, 16u}) check(1000, threads);
}

TEST_P(GoldenFormulas, TenThousandDigits) {
    for (const u64_t threads : {1u, 2u, 3u, 7u, 16u}) check(10'000, threads);
}

TEST_P(GoldenFormulas, AHundredThousandDigits) {
    check(100'000, 2);
}

INSTANTIATE_TEST_SUITE_P(Table, GoldenFormulas, ::testing::ValuesIn(all_formulas()), name_of);

}  // namespace
}  // namespace znp
