#include "numbers/radix_recursion.hpp"

#include <algorithm>

#include "foundation/strings.hpp"
#include "foundation/threads.hpp"
#include "multiply/dispatch.hpp"
#include "numbers/radix_conversion.hpp"
#include "numbers/radix_leaf.hpp"
#include "shell/console.hpp"

namespace znp {

namespace {

// Pieces cut at this level or above are long enough for a look at the clock.
constexpr unsigned progress_level = 6;

struct Cut {
    unsigned k;
    RadixPiece first, second;

    Cut(const CBR_table& table, const RadixPiece& piece) : k(table.cut_level(piece.m, piece.level)) {
        const upL_t h = table.first_words(k);
        first = {piece.out + (piece.m - h), h, piece.end, k};
        second = {piece.out, piece.m - h, piece.end - table.first_region_words(k), k};
    }
};

int join(const char* mismatch, const CBR_table& table, const Cut& cut, cdi expected) {
    const cdi actual = cut.second.out[cut.second.m - 1];
    if (repair_overlap(cut.first.out, cut.first.m, table.radix, expected, actual)) return 0;
    Console::print_error(mismatch);
    Console::print_labelled_line("n", to_string_u64(cut.first.m + cut.second.m));
    Console::print_labelled_line("Expected", to_string_u64(expected));
    Console::print_labelled_line("Actual", to_string_u64(actual));
    return overlap_error;
}

// The second piece's fraction, by the level's transform on one thread.
void make_second_fraction(const CBR_table& table, unsigned level, const RadixPiece& piece, std::byte* work) {
    const transform* const algorithm = table.algorithm(level);
    if (algorithm == nullptr) return table.multiply_directly(level, piece.m, piece.end, work);
    table.transform_fraction(*algorithm, level, piece.m, piece.end, work);
    table.multiply_fraction(*algorithm, level, piece.m, piece.end, work);
}

// A leaf's fraction has fewer words than the leaf works on only where the radix is short.
cdi convert_piece(const CBR_table& table, const RadixPiece& piece) {
    const upL_t w = radix::leaf_fraction_words(piece.m);
    std::fill_n(piece.end - w, w - table.fraction_words(piece.m), cdi{0});
    return radix::convert_leaf(piece.out, piece.m, piece.end, table.radix);
}

}  // namespace

void ConversionProgress::enter(unsigned tasks, double digits) {
    path_ += " -> " + std::to_string(tasks) + " x " + to_string_u64(static_cast<u64_t>(digits));
    show();
}

void ConversionProgress::begin(upL_t words) {
    words_ = words;
    done_ = 0;
}

void ConversionProgress::advance(upL_t words) {
    done_ += words;
    show();
}

void ConversionProgress::show() {
    if (line_ == nullptr) return;
    line_->clear();
    line_->add('w', "Converting...  ");
    line_->add('Y', path_);
    if (words_ != 0) {
        const double percent = 100 * static_cast<double>(done_) / static_cast<double>(words_);
        line_->add('G', format_printf(32, "  %.1f %%", percent));
    }
    line_->update(StatusLine::Update::if_due);
}

bool repair_overlap(cdi* first, upL_t m, cdi radix, cdi expected, cdi actual) {
    const cdi nine = radix - 1;
    if (expected == actual) return true;
    if (expected == nine && actual == 0) {
        upL_t i = 0;
        while (i < m && first[i] == nine) first[i++] = 0;
        if (i < m) first[i]++;
        return true;
    }
    if (expected == 0 && actual == nine) {
        upL_t i = 0;
        while (i < m && first[i] == 0) first[i++] = nine;
        if (i < m) first[i]--;
        return true;
    }
    return expected + 1 == actual || actual + 1 == expected;
}

int znh_CBRv2_ci_btrf_L(const CBR_table& table, const RadixPiece& piece, cdi& overlap, std::byte* work,
                        ConversionProgress* progress) {
    if (CBR_shape::is_leaf(piece.m)) {
        overlap = convert_piece(table, piece);
        return 0;
    }
    const Cut cut(table, piece);
    make_second_fraction(table, cut.k, piece, work);
    cdi expected = 0;
    if (const int error = znh_CBRv2_ci_btrf_L(table, cut.first, expected, work, progress)) return error;
    if (const int error = znh_CBRv2_ci_btrf_L(table, cut.second, overlap, work, progress)) return error;
    if (progress != nullptr && cut.k == progress_level) progress->advance(piece.m);
    return join("znh_CBRv2_ci_btrf_L(): Overlap Mismatch", table, cut, expected);
}

int znq_CBRv2_ci_btrf_T(const BasicParameters& bp, const CBR_table& table, const CBR_ParallelPlan& plan,
                        unsigned depth, const RadixPiece& piece, cdi& overlap, ConversionProgress* progress) {
    const double digits =
        static_cast<double>(piece.m) * table.words_per_radix * WordTraits<cdi>::decimal_digits + 1;
    if (!plan.forks(depth, bp.tds) || CBR_shape::is_leaf(piece.m)) {
        if (progress != nullptr) {
            progress->enter(1, digits);
            progress->begin(piece.m);
        }
        return znh_CBRv2_ci_btrf_L(table, piece, overlap, bp.M, progress);
    }
    if (progress != nullptr) progress->enter(2, digits);

    const Cut cut(table, piece);
    const bool early = CBR_ParallelPlan::starts_early(table, cut.k);
    BasicParameters first = bp;
    BasicParameters second = bp;
    first.tds = CBR_ParallelPlan::first_threads(bp.tds);
    second.tds = CBR_ParallelPlan::second_threads(bp.tds);
    second.ML = plan.second_bytes(table, cut.k, depth, bp.tds);
    first.M += second.ML;
    first.ML = plan.task_bytes(depth + 1, first.tds);
    TransformSlot slot;
    const auto multiply = [&] { table.multiply_fraction(*slot, cut.k, piece.m, piece.end, bp.M); };
    if (table.is_direct(cut.k)) {
        table.multiply_directly(cut.k, piece.m, piece.end, bp.M);
    } else {
        make_transform<cdi>(early ? second : bp, slot, table.lengths[cut.k]);
        table.transform_fraction(*slot, cut.k, piece.m, piece.end, bp.M);
        if (!early) multiply();
    }

    cdi expected = 0;
    int first_error = 0;
    int second_error = 0;
    auto first_task = make_task([&](u64_t) {
        first_error = znq_CBRv2_ci_btrf_T(first, table, plan, depth + 1, cut.first, expected, nullptr);
    });
    auto second_task = make_task([&](u64_t) {
        if (early) multiply();
        second_error = znq_CBRv2_ci_btrf_T(second, table, plan, depth + 1, cut.second, overlap, progress);
    });
    fork_two(first_task, second_task);
    if (first_error != 0) return first_error;
    if (second_error != 0) return second_error;
    return join("znq_CBRv2_ci_btrf_T(): Overlap Mismatch", table, cut, expected);
}

}  // namespace znp
