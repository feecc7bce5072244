#include "numbers/newton_steps.hpp"

#include <algorithm>
#include <string>

#include "foundation/fail.hpp"
#include "foundation/strings.hpp"
#include "multiply/dispatch.hpp"
#include "multiply/kernels/guard_residue.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "shell/console.hpp"

namespace znp::newton {

namespace {

// The longest product of the small routines, in words.
constexpr upL_t small_product = 20;

}  // namespace

// ---- Memory

void require_scratch(const Scratch& scratch, upL_t required, const char* message) {
    if (scratch.size() >= required) return;
    Console::print_labelled_line("Required", to_string_u64(required));
    Console::print_labelled_line("Given   ", to_string_u64(scratch.size()));
    fail(zn_exception(error_code::numerical_result, message));
}

upL_t chain_scratch_words(upL_t p, upL_t spare) {
    if (p == 0) return 0;
    const upL_t h = half_precision(p);
    return h + spare + std::max(chain_scratch_words(h, spare), correction_words(h));
}

upL_t chain_work_bytes(upL_t transform_words, u64_t threads) {
    return work_bytes_for<cdi>(std::max(transform_words, small_product), threads);
}

// ---- Failures

BigFloatR Routine::take_estimate(Scratch& scratch, upL_t h, upL_t spare) const {
    require_scratch(scratch, h + spare + correction_words(h), no_space);
    return scratch.take(h + spare);
}

bool Routine::is_under(cdi top, cdi over, unsigned deepest) const {
    const cdi below = over - top;
    if (below > deepest) fail("Convergence Failure", {{"top", top}});
    return below != 0;
}

void Routine::take_distance(BigFloatR& T, bool under, s64_t te, s64_t limit, upL_t h) const {
    if (under && T.is_zero()) fail("strip_l1s() resulted in zero.", {{"top", 0}});
    const bool next_to_one = !under || T.get_mag() == te;
    if (!under) {
        T.truncate_top(te);
    } else if (next_to_one) {
        T.negate_twos_complement();
    }
    if (next_to_one && (T.is_zero() || T.get_mag() <= limit)) return;
    Console::println(format_printf(64, "%ld", T.get_mag()));
    Console::println(format_printf(64, "%ld", -static_cast<s64_t>(h)));
    fail(under ? "Under-Estimate -> Convergence Failure" : "Over-Estimate -> Convergence Failure");
}

void Routine::fail(const char* what, std::initializer_list<ShownWord> words) const {
    Console::print_error(std::string(name) + "(): " + what);
    for (const ShownWord& shown : words) {
        Console::print_labelled_line(shown.label, format_printf(32, "%016lx", shown.word));
    }
    znp::fail(ConvergenceFailure(error_code::numerical_result, failed, {}, {},
                                 failed == nullptr ? action::throw_silently : action::print_and_throw));
}

// ---- Verified products

ProductCheck::ProductCheck(const BigFloat& a, const BigFloat& b)
    : exp_(a.get_exp() + b.get_exp()),
      L_(a.get_L() + b.get_L()),
      product_(guard::shift_words(guard::mul(a.get_residue(), b.get_residue()), -exp_)) {}

s64_t ProductCheck::wrap_position(const transform& algorithm) const {
    return whole ? exp_ + static_cast<s64_t>(algorithm.max_bits / WordTraits<cdi>::bits) : exp_;
}

// With R the whole result and M the modulus the product is R + q M, q being the wrapped words or one less.
bool ProductCheck::holds(const transform& algorithm, u64_t known, unsigned slack) const {
    const u64_t modulus = whole ? algorithm.modulus() : 1;
    u64_t rest = guard::sub(product_, whole.value_or(0));
    const bool wrapped = L_ * WordTraits<cdi>::bits > algorithm.max_bits;
    if (whole && (modulus == 0 || !wrapped)) return rest == 0;
    rest = guard::sub(rest, guard::mul(known, modulus));
    const unsigned less = slack + (whole ? 1 : 0);
    for (unsigned i = 0; i < less; i++) rest = guard::add(rest, modulus);
    for (unsigned i = 0; i <= less + slack; i++) {
        if (rest == 0) return true;
        rest = guard::sub(rest, modulus);
    }
    return false;
}

u64_t near_one_residue(s64_t position, bool under) {
    if (position > 0) return 0;
    return guard::sub(guard::word_power(-position), under ? 1 : 0);
}

ProductCheck checked_mul(BigFloatR& out, const TransformHelper& helper, Operand& a, const Operand& b,
                         s64_t te, upL_t p) {
    ProductCheck product(a.words, b.words);
    product.whole = out.set_checked_fmul(helper.scratch, a.transformed, b.transformed, te, p);
    return product;
}

void set_correction(const Routine& routine, BigFloatR& c, const TransformHelper& helper, const BigFloat& d,
                    upL_t d_precision, const Operand& r, upL_t h) {
    Operand D(helper, helper.T1, d, d_precision);
    const s64_t top = D.transformed.mag + r.transformed.mag;
    routine.require_residue(checked_mul(c, helper, D, r, top, h + 1).holds(helper.algorithm));
}

// ---- The end of a step

void correct(BigFloatR& y, const BigFloat& y0, const BigFloat& c, bool under, upL_t kept, upL_t p) {
    if (under) {
        y.set_add(y0, c, kept);
    } else {
        y.set_sub(y0, c, kept);
    }
    perturb(y, p);
}

void perturb(BigFloatR& y, upL_t p) {
    const upL_t L = y.get_L();
    if (L <= p) return;
    cdi* const T = y.word_ptr(0);
    const u64_t residue = guard::add(y.get_residue(), guard::word_power(y.get_exp()));
    if (!copy_add_carry(T, T, L, true)) return y.set_view({T, L, y.get_exp(), y.raw_sign(), residue});
    // All words were ones and are zeros now: the value is the next power of the word base.
    T[L - 1] = 1;
    y.set_view({T, L, y.get_exp() + 1, y.raw_sign(), residue});
}

void show_step(StatusLine* status, const char* label, upL_t h) {
    if (status == nullptr) return;
    const double digits = static_cast<double>(h) * WordTraits<cdi>::decimal_digits + 1;
    status->clear();
    status->add('w', label);
    status->add('Y', to_string_u64(static_cast<u64_t>(digits)));
    status->update(StatusLine::Update::if_due);
}

}  // namespace znp::newton
