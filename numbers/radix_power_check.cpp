// The check of a conversion from the other side: one big power and one product of whole length. The powers
// of the conversion have other exponents and its products other lengths.
#include <algorithm>
#include <bit>

#include "foundation/exceptions.hpp"
#include "multiply/dispatch.hpp"
#include "multiply/hash_by_threads.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "multiply/kernels/word_multiply.hpp"
#include "numbers/newton_steps.hpp"
#include "numbers/radix_conversion.hpp"
#include "numbers/radix_fraction.hpp"
#include "numbers/radix_power.hpp"

namespace znp {

namespace {

// The words of the check and where they lie.
//
// P lies where its square's product can be written over it; the product's words above the point take the
// same place once P is transformed.
struct CheckLayout {
    radix::PowerSize power;
    upL_t fraction_words;  // of the fraction
    upL_t product_words;   // of the fraction times P
    upL_t words;           // for P, and then the product's integer part
    upL_t fraction, work;  // where they start
    upL_t work_bytes;

    CheckLayout(cdi radix, u64_t e, u64_t threads)
        : power(radix::power_size(radix, e)),
          fraction_words(power.most + 2),
          product_words(fraction_words + power.most_stripped()),
          words(power.most + 2),
          fraction(work_aligned(words * sizeof(cdi))),
          work(fraction + work_aligned(fraction_words * sizeof(cdi))),
          work_bytes(work_bytes_for<cdi>(product_words, threads)) {}
    upL_t bytes() const { return work + work_bytes; }
};

struct Power {
    cdi* T;  // buffer
    upL_t L = 0;
    upL_t zero_words = 0;

    void strip() {
        const cdi* low = T;
        const upL_t zeros = radix::strip_zero_words(low, L);
        std::copy(low, low + L, T);
        zero_words += zeros;
    }
};

// P = radix^e by the binary digits of e, from the top.
void raise(const BasicParameters& bp, Power& P, cdi radix, u64_t e, StatusLine* status) {
    P.T[0] = e == 0 ? 1 : radix;
    P.L = 1;
    for (auto bit = e == 0 ? u64_t{0} : std::bit_floor(e) >> 1; bit != 0; bit >>= 1) {
        newton::show_step(status, "Powering...   ", 2 * P.L);
        TransformSlot slot;
        const transform& algorithm = make_transform<cdi>(bp, slot, 2 * P.L);
        const WorkAreas areas = algorithm.work_areas(bp.M);
        algorithm.forward(areas.T1, {P.T, P.L}, areas.scratch);
        algorithm.inverse_fsqr({P.T, 0, 2 * P.L}, areas.T1, areas.scratch);
        P.L *= 2;
        P.zero_words *= 2;
        if ((e & bit) != 0) {
            const cdi carry = MulW(P.T, P.L, radix);
            if (carry != 0) P.T[P.L++] = carry;
        }
        P.strip();
    }
}

}  // namespace

upL_t power_check_size(cdi radix, u64_t e, u64_t threads) {
    if (radix < 2) return ~upL_t{0};
    return CheckLayout(radix, e, threads).bytes();
}

int power_check(const BasicParameters& bp, cdi radix, u64_t e, cdi integer, const cdi* fraction, upL_t L,
                u64_t& residue, StatusLine* status) {
    const CheckLayout layout(radix, e, bp.tds);
    if (bp.ML < layout.bytes()) fire(BufferTooSmallException("power_check()", bp.ML, layout.bytes()));
    BasicParameters work = bp;
    work.M = bp.M + layout.work;
    work.ML = layout.work_bytes;

    Power P{reinterpret_cast<cdi*>(bp.M)};
    raise(work, P, radix, e, status);
    if (!radix::power_holds(radix, e, P.T, P.L, P.zero_words)) return 1;

    newton::show_step(status, "Multiplying...    ", P.L);
    auto* const F = reinterpret_cast<cdi*>(bp.M + layout.fraction);
    radix::load_fraction(F, layout.fraction_words, fraction, L);
    const u64_t expected = guard::mul(guard::hash_words_by_threads(F, layout.fraction_words, bp.tds),
                                      guard::hash_words_by_threads(P.T, P.L, bp.tds));
    // The point lies below the words [point, end) of the product.
    const upL_t point = layout.fraction_words - P.zero_words;
    const upL_t end = layout.fraction_words + P.L;
    TransformSlot slot;
    const transform& algorithm = make_transform<cdi>(work, slot, layout.product_words);
    const auto [T1, T2, scratch] = algorithm.work_areas(work.M);
    algorithm.forward(T1, {F, layout.fraction_words}, scratch);
    algorithm.forward(T2, {P.T, P.L}, scratch);
    const CheckedResult actual = algorithm.checked_fmul({P.T, point, end}, T1, T2, scratch);
    if (actual.whole != expected) {
        radix::report_mismatch("Radix Conversion: Product Hash Mismatch", expected, actual.whole);
        return 1;
    }
    const u64_t scaled_integer = residue::mul(residue::reduce(integer), residue::pow(radix, e));
    residue = residue::add(residue::hash_words_by_threads(P.T, end - point, bp.tds), scaled_integer);
    return 0;
}

}  // namespace znp
