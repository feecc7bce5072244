#include "numbers/radix_conversion.hpp"

#include <algorithm>
#include <new>

#include "foundation/exceptions.hpp"
#include "foundation/heap_words.hpp"
#include "multiply/selection.hpp"
#include "numbers/radix_fraction.hpp"
#include "numbers/radix_plan.hpp"
#include "numbers/radix_recursion.hpp"
#include "numbers/radix_table.hpp"

namespace znp {

namespace {

// The table record is aligned to more than a work buffer.
constexpr upL_t record_bytes = work_aligned(sizeof(CBR_table)) + alignof(CBR_table) - work_alignment;

std::byte* record_place(std::byte* buffer) {
    return buffer + (-address_of(buffer) & (alignof(CBR_table) - 1));
}

bool is_convertible(cdi radix, upL_t n) {
    return radix >= 2 && n != 0 && n <= memory_table<cdi>().back().max_words;
}

// The work buffer of a conversion, from its start:
//     the table record
//     the images of the powers, except the top level's
//     the fraction; before that, the powers while they are built
//     the work buffers of the products, at first with the top level's image
struct Layout {
    upL_t images, fraction, work;  // where they start
    upL_t fraction_words;
    upL_t bytes;

    Layout(const CBR_shape& shape, const CBR_ParallelPlan& plan, u64_t threads) {
        images = record_bytes;
        fraction = images;
        upL_t products = 0;
        if (shape.levels != 0) {
            products = std::max(plan.at[0].bytes, shape.product_bytes(shape.levels - 1, threads));
            for (unsigned i = 0; i + 1 < shape.levels; i++) fraction += shape.image_bytes(i);
        }
        fraction_words = std::max(shape.region_words(shape.length), shape.powers_words());
        work = fraction + work_aligned(fraction_words * sizeof(cdi));
        bytes = work + products;
    }
};

// The table in the work buffer, destroyed at the end.
class TableInPlace {
  public:
    TableInPlace(std::byte* place, const CBR_shape& shape) : table_(new (place) CBR_table(shape)) {}
    TableInPlace(const TableInPlace&) = delete;
    TableInPlace& operator=(const TableInPlace&) = delete;
    ~TableInPlace() { table_->~CBR_table(); }
    CBR_table& operator*() const { return *table_; }

  private:
    CBR_table* table_;
};

}  // namespace

upL_t cbr_table_size(cdi radix, upL_t n, u64_t threads) {
    if (!is_convertible(radix, n)) return ~upL_t{0};
    const CBR_shape shape(radix, n);
    return Layout(shape, znp_CBRv2_ci_btrf_ap_make(shape, threads), threads).bytes;
}

int convert(const BasicParameters& bp, cdi radix, cdi* out, upL_t n, const cdi* fraction, upL_t L,
            StatusLine* status) {
    if (!is_convertible(radix, n)) fire(BufferTooSmallException("convert()", bp.ML, ~upL_t{0}));
    const CBR_shape shape(radix, n);
    const CBR_ParallelPlan plan = znp_CBRv2_ci_btrf_ap_make(shape, bp.tds);
    const Layout layout(shape, plan, bp.tds);
    if (bp.ML < layout.bytes) fire(BufferTooSmallException("convert()", bp.ML, layout.bytes));
    const TableInPlace place(record_place(bp.M), shape);
    CBR_table& table = *place;
    auto* const words = reinterpret_cast<cdi*>(bp.M + layout.fraction);
    BasicParameters work = bp;
    work.M = bp.M + layout.work;
    work.ML = layout.bytes - layout.work;

    if (table.levels != 0) {
        if (const int error = table.build(work, words, bp.M + layout.images, status)) return error;
    }
    cdi* const end = words + layout.fraction_words;
    const upL_t taken = table.fraction_words(n);
    radix::load_fraction(end - taken, taken, fraction, L);

    ConversionProgress progress(status);
    cdi overlap = 0;
    return znq_CBRv2_ci_btrf_T(work, table, plan, 0, {out, n, end, table.levels}, overlap, &progress);
}

}  // namespace znp
