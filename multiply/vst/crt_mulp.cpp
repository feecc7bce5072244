#include "multiply/vst/crt_mulp.hpp"

#include <algorithm>
#include <utility>

#include "foundation/fail.hpp"
#include "multiply/kernels/carry_chains.hpp"
#include "multiply/kernels/word_arrays.hpp"

namespace znp {

namespace {

// In what follows L is the length of half a product and B = 2^N, N = transform.capacity: a word beyond L
// words counts B.

[[noreturn]] void refuse(s32_t code, const char* location) {
    fail(zn_exception(code, nullptr, {}, {}, action::print_and_throw, "Generic Exception", location));
}

// 32-bit words as the transform takes them: it reads and writes them as bytes.
template <class word>
const c32i* as_c32i(const word* A) {
    return reinterpret_cast<const c32i*>(A);
}
template <class word>
c32i* as_c32i(word* A) {
    return reinterpret_cast<c32i*>(A);
}

// A of L < La <= 2 L words modulo B - 1.
template <class word>
void fold_minus(word* T, const word* A, upL_t La, upL_t L) {
    const upL_t overlap = La - L;
    bool carry = add_words(T, A, A + L, overlap);
    carry = copy_add_carry(T + overlap, A + overlap, L - overlap, carry);
    copy_add_carry(T, T, L, carry);  // B = 1; the sum is below 2 B - 1, so that nothing is carried again
}

// The same modulo B + 1. True: T is B, and its words are zero.
template <class word>
bool fold_plus(word* T, const word* A, upL_t La, upL_t L) {
    const upL_t overlap = La - L;
    bool borrow = sub_words(T, A, A + L, overlap);
    borrow = copy_sub_borrow(T + overlap, A + overlap, L - overlap, borrow);
    return copy_add_carry(T, T, L, borrow);  // -B = 1
}

// T = -A modulo B + 1. True: T is B, and its words are zero.
template <class word>
bool negate(word* T, upL_t L, const word* A, upL_t La) {
    const bool borrow = negate_words(T, A, La);
    std::fill(T + La, T + L, borrow ? static_cast<word>(~word{0}) : word{0});
    return copy_add_carry(T, T, L, borrow);
}

// The product's residues, of L words each. negative: that modulo B + 1 is B, and its words are zero.
template <class word>
struct Residues {
    word* c;  // modulo B - 1
    word* n;  // modulo B + 1
    bool negative;
};

template <class word>
bool is_all_ones(const word* A, upL_t L) {
    return std::all_of(A, A + L, [](word w) { return w == static_cast<word>(~word{0}); });
}

// In place, the 2 L words c + B n become twice the product modulo B^2 - 1, which is
//
//     (c + n) + B (c - n),   n = -1 if it is negative.
template <class word>
void join(const Residues<word>& r, upL_t L) {
    bool carry = false, borrow = false;
    for (upL_t i = 0; i < L; i++) {
        const word x = r.c[i], y = r.n[i];
        const word sum = static_cast<word>(x + y), difference = static_cast<word>(x - y);
        r.c[i] = static_cast<word>(sum + (carry ? 1 : 0));
        carry = sum < x || r.c[i] < sum;
        r.n[i] = static_cast<word>(difference - (borrow ? 1 : 0));
        borrow = x < y || difference < (borrow ? 1 : 0);
    }
    s64_t lower = carry ? 1 : 0, upper = borrow ? -1 : 0;
    if (copy_sub_borrow(r.c, r.c, L, r.negative)) lower -= 1;
    if (copy_add_carry(r.n, r.n, L, r.negative)) upper += 1;

    // What leaves the lower half belongs to the upper one, and what leaves that comes back: B^2 = 1.
    upper += ADDv2::add_ripple(r.n, L, lower);
    while (upper != 0) upper = ADDv2::add_ripple(r.n, L, ADDv2::add_ripple(r.c, L, upper));
    if (is_all_ones(r.n, L) && is_all_ones(r.c, L)) {  // zero
        std::fill_n(r.c, L, word{0});
        std::fill_n(r.n, L, word{0});
    }
}

// The words [s, e) of the half of the joined words: half of a number modulo 2^(2N) - 1 is the number rotated
// by a bit, for an odd one is made even by adding the modulus.
template <class word>
void write_half(word* T, upL_t s, upL_t e, const Residues<word>& joined, upL_t L) {
    constexpr unsigned top = WordTraits<word>::bits - 1;
    const auto at = [&](upL_t i) { return i < L ? joined.c[i] : i < 2 * L ? joined.n[i - L] : joined.c[0]; };
    for (upL_t i = s; i < e; i++) T[i - s] = static_cast<word>(at(i) >> 1 | at(i + 1) << top);
}

}  // namespace

upL_t crt_mulp_bytes(const VST& transform) {
    return transform.transform_bytes * 2 + vst::round_up_32(transform.capacity / 8) + transform.work_bytes;
}

// The work area: two images, the words of a result, and the transform's scratch. A folded operand lies in the
// place of the second image until that is made, and so does the second convolution's result afterwards.
template <class word>
void CRT_mulp(const VST& transform, const BasicParameters& bp, word* T, upL_t s, upL_t e, const word* A,
              upL_t La, const word* B, upL_t Lb) {
    constexpr unsigned word_bits = WordTraits<word>::bits;
    if (transform.capacity % word_bits != 0) {
        refuse(error_code::unspecified, "CRT_mulp(): Convolution length is not divisible by the word-size.");
    }
    const upL_t L = transform.capacity / word_bits;
    if (La + Lb > 2 * L)
        refuse(error_code::unspecified, "CRT_mulp(): Convolution length is not long enough.");
    if (bp.ML < crt_mulp_bytes(transform)) refuse(error_code::work_space_too_small, "CRT_mulp()");
    if (La < Lb) {
        std::swap(A, B);
        std::swap(La, Lb);
    }
    if (Lb == 0) {
        std::fill(T, T + (e - s), word{0});
        return;
    }

    std::byte *const T1 = bp.M, *const T2 = T1 + transform.transform_bytes,
                     *const first_result = T2 + transform.transform_bytes,
                     *const scratch = first_result + vst::round_up_32(transform.capacity / 8);
    Residues<word> residues{reinterpret_cast<word*>(first_result), reinterpret_cast<word*>(T2), false};
    const bool folded = La > L;
    const word* const operand = folded ? residues.n : A;
    constexpr upL_t units = word_bits / 32;
    const upL_t length = (folded ? L : La) * units;

    // Modulo B - 1.
    if (folded) fold_minus(residues.n, A, La, L);
    transform.cyclic_product(as_c32i(residues.c), as_c32i(operand), length, as_c32i(B), Lb * units, T1, T2,
                             scratch);

    // Modulo B + 1.
    if (folded && fold_plus(residues.n, A, La, L)) {
        residues.negative = negate(residues.n, L, B, Lb);
    } else {
        residues.negative = transform.negacyclic_product(as_c32i(residues.n), as_c32i(operand), length,
                                                         as_c32i(B), Lb * units, T1, T2, scratch) != 0;
    }
    join(residues, L);
    write_half(T, s, e, residues, L);
}

template void CRT_mulp(const VST&, const BasicParameters&, c32i*, upL_t, upL_t, const c32i*, upL_t,
                       const c32i*, upL_t);
template void CRT_mulp(const VST&, const BasicParameters&, c64i*, upL_t, upL_t, const c64i*, upL_t,
                       const c64i*, upL_t);

}  // namespace znp
