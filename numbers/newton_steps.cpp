#include "numbers/newton_steps.hpp"

#include "foundation/fail.hpp"
#include "foundation/strings.hpp"
#include "multiply/kernels/residue.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "shell/console.hpp"

namespace znp::newton {

namespace {

[[noreturn]] void fail_with(const char* message) {
    fail(zn_exception(error_code::numerical_result, message));
}

}  // namespace

void require_scratch(const Scratch& scratch, upL_t required, const char* message) {
    if (scratch.size() >= required) return;
    Console::print_labelled_line("Required", to_string_u64(required));
    Console::print_labelled_line("Given   ", to_string_u64(scratch.size()));
    fail_with(message);
}

void print_top(const char* text, cdi top) {
    Console::print_error(text);
    Console::print_labelled_line("top", format_printf(32, "%016lx", top));
}

void print_magnitude(const char* text, s64_t magnitude, upL_t h) {
    Console::println(format_printf(64, "%ld", magnitude));
    Console::println(format_printf(64, "%ld", -static_cast<s64_t>(h)));
    Console::print_error(text);
}

void fail_top(const char* text, cdi top, const char* failed) {
    print_top(text, top);
    fail_with(failed);
}

void fail_magnitude(const char* text, s64_t magnitude, upL_t h, const char* failed) {
    print_magnitude(text, magnitude, h);
    fail_with(failed);
}

ProductCheck::ProductCheck(const Float& a, const Float& b)
    : product_(
          residue::mul(residue::hash_words(a.get_T(), a.get_L()), residue::hash_words(b.get_T(), b.get_L()))),
      exp_(a.get_exp() + b.get_exp()),
      L_(a.get_L() + b.get_L()) {}

s64_t ProductCheck::wrap_position(const transform& algorithm) const {
    return whole ? exp_ + static_cast<s64_t>(algorithm.max_bits / WordTraits<cdi>::bits) : exp_;
}

// With R the whole result and M the modulus the product is R + q M, q being the wrapped words or one less.
bool ProductCheck::holds(const transform& algorithm, u64_t known, unsigned slack) const {
    const u64_t modulus = whole ? algorithm.modulus() : 1;
    u64_t rest = residue::sub(product_, whole.value_or(0));
    const bool wrapped = L_ * WordTraits<cdi>::bits > algorithm.max_bits;
    if (whole && (modulus == 0 || !wrapped)) return rest == 0;
    rest = residue::sub(rest, residue::mul(known, modulus));
    const unsigned less = slack + (whole ? 1 : 0);
    for (unsigned i = 0; i < less; i++) rest = residue::add(rest, modulus);
    for (unsigned i = 0; i <= less + slack; i++) {
        if (rest == 0) return true;
        rest = residue::sub(rest, modulus);
    }
    return false;
}

u64_t near_one_residue(s64_t position, bool under) {
    if (position > 0) return 0;
    return residue::sub(residue::word_power64(-position), under ? 1 : 0);
}

void fail_residue(const char* text, const char* failed) {
    Console::print_error(text);
    fail_with(failed);
}

void perturb(FloatR& y, upL_t p) {
    const upL_t L = y.get_L();
    if (L <= p) return;
    cdi* T = y.get_base() + (y.get_T() - y.get_base());
    if (!copy_add_carry(T, T, L, true)) return;
    // All words were ones and are zeros now: the value is the next power of the word base.
    T[L - 1] = 1;
    y.set_view(T, L, y.get_exp() + 1, y.raw_sign());
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
