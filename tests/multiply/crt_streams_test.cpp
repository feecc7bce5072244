// The fold and the join of the two rings against an independent library, with words that come in any pieces.
#include "multiply/vst/crt_streams.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "multiply/vst_test_support.hpp"
#include "test_seed.hpp"

namespace znp::vst {
namespace {

using testing::all_ones;
using testing::Integer;
using testing::random_words;

void set_sum(Integer& sum, const Integer& x, long y) {
    if (y < 0) {
        mpz_sub_ui(sum.value, x.value, static_cast<unsigned long>(-y));
    } else {
        mpz_add_ui(sum.value, x.value, static_cast<unsigned long>(y));
    }
}

template <class word>
class CRTStreams : public ::testing::Test {
  protected:
    using Words = std::vector<word>;
    static constexpr unsigned bits = WordTraits<word>::bits;

    static void load(Integer& x, const Words& words) {
        mpz_import(x.value, words.size(), -1, sizeof(word), 0, 0, words.data());
    }
    static Words words_of(const Integer& x, upL_t L) {
        Words words(std::max<upL_t>(L, mpz_sizeinbase(x.value, 2) / bits + 1));
        mpz_export(words.data(), nullptr, -1, sizeof(word), 0, 0, x.value);
        words.resize(L);
        return words;
    }
    // x modulo B - 1 or B + 1 in L words. True: it is B, and the words are zero.
    static bool reduce(Words& r, const Integer& x, upL_t L, Ring ring) {
        Integer modulus, residue;
        mpz_setbit(modulus.value, L * bits);
        if (ring == Ring::cyclic) {
            mpz_sub_ui(modulus.value, modulus.value, 1);
        } else {
            mpz_add_ui(modulus.value, modulus.value, 1);
        }
        mpz_mod(residue.value, x.value, modulus.value);
        r = words_of(residue, L);
        return mpz_tstbit(residue.value, L * bits) != 0;
    }

    // [0, L) in pieces: all at once, a word each, or of any lengths.
    static std::vector<upL_t> pieces(upL_t L, unsigned kind, std::mt19937_64& rng) {
        std::vector<upL_t> lengths;
        for (upL_t done = 0; done < L; done += lengths.back())
            lengths.push_back(kind == 0 ? L : kind == 1 ? 1 : 1 + rng() % std::min<upL_t>(L - done, 300));
        return lengths;
    }

    static void expect_fold(const Words& A, upL_t L, std::mt19937_64& rng) {
        Integer x;
        load(x, A);
        for (const Ring ring : {Ring::cyclic, Ring::negacyclic}) {
            Words expected;
            const bool is_B = reduce(expected, x, L, ring);
            for (unsigned kind = 0; kind < 3; kind++) {
                Words T(L);
                Fold<word> fold(ring);
                upL_t i = 0;
                for (const upL_t n : pieces(L, kind, rng)) {
                    const upL_t rest = A.size() - L, upper = rest > i ? std::min(n, rest - i) : 0;
                    fold.next(T.data() + i, A.data() + i, n, A.data() + L + std::min(i, rest), upper);
                    i += n;
                }
                EXPECT_EQ(copy_add_carry(T.data(), T.data(), L, fold.carry()), is_B);
                // Of the two forms of 0 modulo B - 1 it may be the other one.
                if (ring == Ring::cyclic && T == all_ones<word>(L)) T.assign(L, 0);
                EXPECT_EQ(T, expected);
            }
        }
    }

    // other_zero: all ones for a c of 0.
    static void expect_join(const Integer& product, upL_t L, bool other_zero, std::mt19937_64& rng) {
        const Words expected = words_of(product, 2 * L);
        Words c, n;
        reduce(c, product, L, Ring::cyclic);
        if (other_zero && c == Words(L)) c = all_ones<word>(L);
        const bool negative = reduce(n, product, L, Ring::negacyclic);
        for (unsigned kind = 0; kind < 3; kind++) {
            for (const bool in_place : {false, true}) {
                Words lower(in_place ? c : Words(L)), upper(in_place ? n : Words(L));
                Join<word> join(negative);
                upL_t i = 0;
                for (const upL_t k : pieces(L, kind, rng)) {
                    join.next(lower.data() + i, upper.data() + i, (in_place ? lower : c).data() + i,
                              (in_place ? upper : n).data() + i, k);
                    i += k;
                }
                const auto carries = join.finish(lower.back(), upper.back());
                EXPECT_FALSE(copy_sub_borrow(lower.data(), lower.data(), L, carries.borrow));
                EXPECT_FALSE(copy_add_carry(upper.data(), upper.data(), L, carries.carry));
                lower.insert(lower.end(), upper.begin(), upper.end());
                ASSERT_EQ(lower, expected) << "L " << L << " pieces " << kind;
            }
        }
    }
};

using WordFamilies = ::testing::Types<c32i, c64i>;
TYPED_TEST_SUITE(CRTStreams, WordFamilies);

TYPED_TEST(CRTStreams, Folds) {
    std::mt19937_64 rng = testing::make_rng(601);
    for (const upL_t L : {1u, 2u, 3u, 127u, 128u, 129u, 500u}) {
        for (const upL_t rest : {upL_t{0}, upL_t{1}, L / 2, L}) {
            if (rest > L) continue;
            this->expect_fold(random_words<TypeParam>(rng, L + rest), L, rng);
            this->expect_fold(all_ones<TypeParam>(L + rest), L, rng);
            this->expect_fold(std::vector<TypeParam>(L + rest), L, rng);
            // The lower half one less than the upper one: -1, which is B modulo B + 1.
            auto A = random_words<TypeParam>(rng, L + rest);
            if (rest == 0) continue;
            A[L] |= 1;
            std::fill(A.begin() + long(rest), A.begin() + long(L), TypeParam{0});
            std::copy(A.begin() + long(L), A.end(), A.begin());
            A[0] -= 1;
            this->expect_fold(A, L, rng);
        }
    }
}

TYPED_TEST(CRTStreams, Joins) {
    std::mt19937_64 rng = testing::make_rng(602);
    Integer x;
    for (const upL_t L : {1u, 2u, 3u, 5u, 127u, 128u, 129u, 256u, 700u}) {
        for (unsigned k = 0; k < 20; k++) {
            this->load(x, random_words<TypeParam>(rng, 2 * L));
            this->expect_join(x, L, false, rng);
        }
    }
}

// Around multiples of B, B - 1 and B + 1, where carries meet and residues have two forms or are B.
TYPED_TEST(CRTStreams, JoinsAtTheEdges) {
    std::mt19937_64 rng = testing::make_rng(603);
    Integer B, end, x, multiple;
    for (const upL_t L : {1u, 2u, 130u}) {
        mpz_set_ui(B.value, 1);
        mpz_mul_2exp(B.value, B.value, L * this->bits);
        mpz_mul(end.value, B.value, B.value);
        mpz_sub_ui(end.value, end.value, 1);
        for (const unsigned halved : {0u, 1u}) {
            for (long i = -3; i <= 3; i++) {
                for (long k = -3; k <= 3; k++) {
                    for (long offset = -3; offset <= 3; offset++) {
                        // (B + i, or half of that) times (k, or B + k where k is negative) + offset
                        set_sum(x, B, i);
                        mpz_tdiv_q_2exp(x.value, x.value, halved);
                        if (k < 0) {
                            set_sum(multiple, B, k);
                            mpz_mul(x.value, x.value, multiple.value);
                        } else {
                            mpz_mul_si(x.value, x.value, k);
                        }
                        set_sum(x, x, offset);
                        if (mpz_sgn(x.value) < 0 || mpz_cmp(x.value, end.value) >= 0) continue;
                        this->expect_join(x, L, false, rng);
                        if (mpz_sgn(x.value) != 0) this->expect_join(x, L, true, rng);
                    }
                }
            }
        }
    }
}

}  // namespace
}  // namespace znp::vst
