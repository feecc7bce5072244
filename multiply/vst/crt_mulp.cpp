#include "multiply/vst/crt_mulp.hpp"

#include <algorithm>
#include <utility>

#include "foundation/fail.hpp"
#include "multiply/hash_by_threads.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "multiply/vst/crt_streams.hpp"

namespace znp {

namespace {

// In what follows L is the length of half a product and B = 2^N, N = transform.capacity: a word beyond L
// words counts B.

[[noreturn]] void refuse(const char* location) {
    fail(zn_exception(error_code::unspecified, nullptr, {}, {}, action::print_and_throw, "Generic Exception",
                      location));
}

// Words as the transform takes them.
vst::Operand operand(WordSpan<c32i> A) {
    return {reinterpret_cast<const std::byte*>(A.data()), A.size()};
}
template <class word>
vst::Result result(word* R, upL_t L) {
    return {reinterpret_cast<std::byte*>(R), 0, L * sizeof(word) / 4};
}

// A of L < La <= 2 L words modulo B - 1 or B + 1. True: T is B, and its words are zero.
template <class word>
bool fold(vst::Ring ring, word* T, const word* A, upL_t La, upL_t L) {
    vst::Fold<word> folded(ring);
    folded.next(T, A, L, A + L, La - L);
    return copy_add_carry(T, T, L, folded.carry());
}

// T = -A modulo B + 1. True: T is B, and its words are zero.
template <class word>
bool negate(word* T, upL_t L, const word* A, upL_t La) {
    const bool borrow = negate_words(T, A, La);
    std::fill(T + La, T + L, borrow ? static_cast<word>(~word{0}) : word{0});
    return copy_add_carry(T, T, L, borrow);
}

// The product's residues, of L words each, which become its halves. negative: that modulo B + 1 is B.
template <class word>
struct Residues {
    word* c;  // modulo B - 1: the lower half
    word* n;  // modulo B + 1: the upper half
    bool negative;
};

// An operand of 0 has an image of 0 and residues of 0, so that c is not all ones where the product is 0.
template <class word>
void join(const Residues<word>& r, upL_t L) {
    vst::Join<word> halves(r.negative);
    halves.next(r.c, r.n, r.c, r.n, L);
    const auto carries = halves.finish(r.c[L - 1], r.n[L - 1]);
    copy_sub_borrow(r.c, r.c, L, carries.borrow);
    copy_add_carry(r.n, r.n, L, carries.carry);
}

// A window of the halves.
template <class word>
void copy_window(Window<word> R, const Residues<word>& joined, upL_t L) {
    word* T = R.T;
    if (R.s < L) T = std::copy(joined.c + R.s, joined.c + std::min(R.e, L), T);
    if (R.e > L) std::copy(joined.n + (std::max(R.s, L) - L), joined.n + (R.e - L), T);
}

}  // namespace

upL_t crt_mulp_bytes(const VST& transform) {
    return transform.transform_bytes * 2 + vst::whole_vector_bytes(transform.capacity / 8) +
           transform.work_bytes;
}

// The work area: two images, the words of a result, and the transform's scratch. A folded operand lies in the
// place of the second image until that is made, and so does the second convolution's result afterwards.
template <class word>
CRTHalves<word> CRT_mulp(const VST& transform, const BasicParameters& bp, Window<word> R, WordSpan<word> A,
                         WordSpan<word> B) {
    constexpr unsigned word_bits = WordTraits<word>::bits;
    if (transform.capacity % word_bits != 0) {
        refuse("CRT_mulp(): Convolution length is not divisible by the word-size.");
    }
    const upL_t L = transform.capacity / word_bits;
    if (A.size() + B.size() > 2 * L) refuse("CRT_mulp(): Convolution length is not long enough.");
    require_work(bp, crt_mulp_bytes(transform), "CRT_mulp()");
    if (A.size() < B.size()) std::swap(A, B);
    if (B.empty()) {
        std::fill_n(R.T, R.size(), word{0});
        return {nullptr, nullptr, 0};
    }

    std::byte *const T1 = bp.M, *const T2 = T1 + transform.transform_bytes,
                     *const first_result = T2 + transform.transform_bytes,
                     *const scratch = first_result + vst::whole_vector_bytes(transform.capacity / 8);
    const WorkAreas work{image_at(T1), image_at(T2), scratch_at(scratch)};
    Residues<word> residues{reinterpret_cast<word*>(first_result), reinterpret_cast<word*>(T2), false};
    const bool folded = A.size() > L;
    const vst::Operand longer = operand(as_c32i(folded ? WordSpan<word>(residues.n, L) : A));
    const vst::Operand shorter = operand(as_c32i(B));

    // Modulo B - 1.
    if (folded) fold(vst::Ring::cyclic, residues.n, A.data(), A.size(), L);
    transform.product_in(vst::Ring::cyclic, result(residues.c, L), longer, shorter, work);

    // Modulo B + 1.
    if (folded && fold(vst::Ring::negacyclic, residues.n, A.data(), A.size(), L)) {
        residues.negative = negate(residues.n, L, B.data(), B.size());
    } else {
        residues.negative =
            transform.product_in(vst::Ring::negacyclic, result(residues.n, L), longer, shorter, work);
    }
    join(residues, L);
    copy_window(R, residues, L);
    return {residues.c, residues.n, L};
}

template CRTHalves<c32i> CRT_mulp(const VST&, const BasicParameters&, Window<c32i>, WordSpan<c32i>,
                                  WordSpan<c32i>);
template CRTHalves<c64i> CRT_mulp(const VST&, const BasicParameters&, Window<c64i>, WordSpan<c64i>,
                                  WordSpan<c64i>);

CheckedResult checked_CRT_mulp(const VST& transform, const BasicParameters& bp, Window<c64i> R,
                               WordSpan<c64i> A, WordSpan<c64i> B) {
    const CRTHalves<c64i> product = CRT_mulp(transform, bp, R, A, B);
    const upL_t L = product.L;
    const auto hash = [&](const c64i* half, upL_t from, upL_t to) {
        return guard::hash_words_by_threads(half + from, to - from, bp.tds);
    };
    // The words [from, to) of the product as a number from the first one on.
    const auto words = [&](upL_t from, upL_t to) {
        if (from >= L) return hash(product.upper, from - L, to - L);
        if (to <= L) return hash(product.lower, from, to);
        const u64_t upper = hash(product.upper, 0, to - L);
        return guard::add(hash(product.lower, from, L),
                          guard::shift_words(upper, static_cast<s64_t>(L - from)));
    };
    if (L == 0) return {0, 0};
    const u64_t window = guard::hash_words_by_threads(R.T, R.size(), bp.tds);
    const u64_t above = guard::shift_words(words(R.e, 2 * L), static_cast<s64_t>(R.size()));
    const u64_t from_s = guard::shift_words(guard::add(above, window), static_cast<s64_t>(R.s));
    return {guard::add(from_s, words(0, R.s)), window};
}

}  // namespace znp
