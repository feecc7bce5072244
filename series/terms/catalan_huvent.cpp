// Catalan's constant by Huvent's formula: terms P(k) / (Q(k) 2^(6k)), each a fraction of its own, with
// Q(k) = ((2k+1)(4k+1)(4k+3)(6k+1)(6k+5)(12k+1)(12k+5)(12k+7)(12k+11))^2 and a P of degree 16.
// Source: G. Huvent, "Formules BBP en base 3^n", and his further notes on such formulas, 2001 to 2006.
#include "foundation/fail.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "multiply/kernels/word_multiply.hpp"
#include "series/catalogue.hpp"
#include "series/terms/term_words.hpp"

namespace znp {

using namespace terms;

namespace {

constexpr upL_t fraction_words = 18;

// P's coefficients from k^16 to k^4, and without their sign from k^3 to the constant.
constexpr std::array<u64_t, 13> positive = {
    4636372233093120,   37721048963088384,  140614334152704000, 318025249742389248, 486920573914447872,
    532937589964406784, 428868733241327616, 256653109156773888, 113872382317283328, 36670081182465024,
    8098743309464448,   1029713994232704,   5572409156528};
constexpr std::array<u64_t, 4> negative = {24153149527360, 4419704161120, 360406957080, 11728430425};

// x = value in fraction_words words.
void store_fraction(ExactFloatR& x, const char* location, const Words<fraction_words>& value) {
    if (x.get_size() < fraction_words) {
        fail(BufferTooSmallException(location, x.get_size(), fraction_words));
    }
    x.reset_T();
    std::copy(value.begin(), value.end(), x.word_ptr(0));
    x.set_LN(fraction_words, 0);
}

Words<fraction_words> polynomial(u64_t k, const char* location) {
    Words<fraction_words> value{};
    upL_t L = 1;
    value[0] = positive[0];
    const auto step = [&](u64_t c) {
        const cdi carry = MulW(value.data(), L, k, c);
        if (carry != 0) value[L++] = carry;
    };
    for (upL_t i = 1; i < positive.size(); i++) step(positive[i]);
    for (const u64_t c : negative) {
        step(0);
        if (copy_sub_borrow(value.data() + 1, value.data() + 1, L - 1,
                            sub_words(value.data(), value.data(), &c, 1))) {
            fail(UnsupportedValueException::negative(location));
        }
    }
    return value;
}

}  // namespace

Catalan_Huvent::Catalan_Huvent()
    : SteadySeries(true, 60, 2,
                   {.terms_per_word = 10.666666666666668,
                    .size_per_term = 38.13664596417535,
                    .factorials = 18,
                    .offset = 0,
                    .precision_per_term = 4.1588830833596715}) {}

void Catalan_Huvent::BSR_End(ExactFloatR& P, ExactFloatR& Q, u64_t k) const {
    constexpr const char* location = "Catalan_Huvent_BSR_End()";
    const Words<9> root = product(2 * k + 1, 4 * k + 1, 4 * k + 3, 6 * k + 1, 6 * k + 5, 12 * k + 1,
                                  12 * k + 5, 12 * k + 7, 12 * k + 11);
    store_fraction(Q, location, times(root, root));
    store_fraction(P, location, polynomial(k, location));
    P.mp2(-6 * static_cast<s64_t>(k));
}

}  // namespace znp
