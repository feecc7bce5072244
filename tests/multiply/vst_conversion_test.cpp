#include "multiply/vst/conversion.hpp"

#include <gmp.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "multiply/vst/conversion_reference.hpp"
#include "multiply/vst/redundancy.hpp"
#include "multiply/vst_test_support.hpp"
#include "test_seed.hpp"

namespace znp::vst {
namespace {

using testing::Integer;
using testing::make_rng;

constexpr double untouched = 1e300;

// A block's doubles, 32-byte aligned, filled with a mark.
class Block {
  public:
    explicit Block(const Geometry& g) : g_(g), vectors_(g.block_vectors()) {
        for (Vector& v : vectors_) std::fill_n(v.lane, 4, untouched);
    }
    double* data() { return vectors_.data()->lane; }
    double& at(unsigned s, upL_t j) { return data()[4 * g_.row() * s + j]; }
    bool padding_untouched() {
        for (unsigned s = 0; s < g_.a; ++s) {
            for (upL_t j = g_.n(); j < 4 * g_.row(); ++j) {
                if (at(s, j) != untouched) return false;
            }
        }
        return true;
    }

  private:
    struct alignas(32) Vector {
        double lane[4];
    };
    Geometry g_;
    std::vector<Vector> vectors_;
};

std::vector<Geometry> all_shapes() {
    std::vector<Geometry> shapes;
    for (unsigned a = 4; a <= 9; ++a) {
        for (unsigned b = 1; b <= 7; b += 2) shapes.push_back({a, b, 10});
    }
    return shapes;
}

upL_t block_bytes_of_words(const Geometry& g) {
    return 4 * g.input_words();
}

std::vector<std::byte> random_bytes(upL_t count, std::mt19937_64& rng, unsigned kind) {
    std::vector<std::byte> bytes(count);
    for (std::byte& b : bytes) {
        b = kind == 0 ? std::byte{0xff} : kind == 1 ? std::byte{0} : static_cast<std::byte>(rng());
    }
    return bytes;
}

// ---- Words to residues -----------------------------------------------------------------------------------

using Forward = void (*)(const Geometry&, const PrimeSet&, double*, const std::byte*, upL_t, upL_t);

void expect_residues(Forward convert, const Geometry& g, const std::vector<std::byte>& bytes, upL_t i) {
    const PrimeSet& set = prime_set(g.a, g.b);
    Block block(g);
    convert(g, set, block.data(), bytes.data(), bytes.size() / 4, i);
    Integer point, difference, factor;
    const upL_t width = g.input_bits() / 8;
    for (upL_t j = 0; j < g.n(); ++j) {
        const upL_t start = std::min((i * g.n() + j) * width, bytes.size());
        mpz_import(point.value, std::min(width, bytes.size() - start), -1, 1, -1, 0, bytes.data() + start);
        for (unsigned s = 0; s < g.a; ++s) {
            const double r = block.at(s, j), p = set.primes[s];
            ASSERT_EQ(r, std::rint(r));
            ASSERT_LE(std::fabs(r), p * 0.6) << g.a << " " << g.b << " point " << j;
            mpz_set_d(factor.value, set.multipliers[s]);
            mpz_pow_ui(factor.value, factor.value, set.input_power);
            mpz_set_d(difference.value, r);
            mpz_submul(difference.value, factor.value, point.value);
            ASSERT_TRUE(mpz_divisible_ui_p(difference.value, static_cast<unsigned long>(p)))
                << g.a << " " << g.b << " point " << j << " prime " << s;
        }
    }
    EXPECT_TRUE(block.padding_untouched());
}

TEST(VSTConversion, WordsToResiduesOfEveryShape) {
    std::mt19937_64 rng = make_rng(1);
    for (const Forward convert : {words_to_block, words_to_block_reference}) {
        for (const Geometry& g : all_shapes()) {
            for (unsigned kind = 0; kind < 3; ++kind)
                expect_residues(convert, g, random_bytes(2 * block_bytes_of_words(g), rng, kind), kind % 2);
        }
    }
}

// Points whose halves of limbs are 0, the largest, and either side of where they round, in all orders.
TEST(VSTConversion, ExtremeHalvesOfLimbs) {
    constexpr u64_t halves[] = {0, 0xffffff, 0x7fffff, 0x800000};
    std::mt19937_64 rng = make_rng(7);
    for (const Forward convert : {words_to_block, words_to_block_reference}) {
        for (const Geometry& g : all_shapes()) {
            std::vector<std::byte> bytes(block_bytes_of_words(g));
            for (upL_t k = 0; k < bytes.size(); k += 3) {
                const u64_t half = halves[rng() % 4];
                std::memcpy(bytes.data() + k, &half, 3);
            }
            // Limbs of all ones and of zeros in turn, from either.
            for (upL_t k = 0; k < 2 * g.input_bits() / 8; ++k) {
                const upL_t width = g.input_bits() / 8;
                bytes[k] = (k % width / 6 + k / width) % 2 == 0 ? std::byte{0xff} : std::byte{0};
            }
            expect_residues(convert, g, bytes, 0);
        }
    }
}

// The operand ends inside the block, at its last word, a word behind it, and before it.
TEST(VSTConversion, OperandEndsAnywhere) {
    std::mt19937_64 rng = make_rng(2);
    for (const Forward convert : {words_to_block, words_to_block_reference}) {
        for (const Geometry& g : all_shapes()) {
            const upL_t whole = block_bytes_of_words(g);
            std::vector<upL_t> lengths{4,         whole - 4,    whole, whole + 4, 2 * whole - 4,
                                       2 * whole, 2 * whole + 4};
            for (unsigned k = 0; k < 8; ++k) lengths.push_back(4 * (rng() % (whole / 2)) + 4);
            for (const upL_t length : lengths) {
                // Exactly so large, so that sanitizers see a read behind it; and no alignment.
                const std::vector<std::byte> bytes = random_bytes(length, rng, 2);
                expect_residues(convert, g, bytes, 0);
                expect_residues(convert, g, bytes, 1);
                expect_residues(convert, g, bytes, 2);
            }
        }
    }
}

// ---- Residues to words -----------------------------------------------------------------------------------

// What a block of coefficients must give, by plain integers.
struct Expected {
    std::vector<std::byte> words;
    BlockCarry carry{};
    u64_t high_parts = 0;
};

enum class Coefficients { random, largest, zero, one, sparse, all_ones };

void draw(Integer& x, const Geometry& g, Coefficients kind, std::mt19937_64& rng) {
    Integer largest;
    mpz_set_ui(largest.value, 1);
    mpz_mul_2exp(largest.value, largest.value, g.input_bits());
    mpz_sub_ui(largest.value, largest.value, 1);
    mpz_mul(largest.value, largest.value, largest.value);
    mpz_mul_ui(largest.value, largest.value, g.points());
    switch (kind) {
        case Coefficients::random: {
            u64_t words[8];
            for (u64_t& w : words) w = rng();
            mpz_import(x.value, 8, -1, 8, 0, 0, words);
            mpz_mod(x.value, x.value, largest.value);
            break;
        }
        case Coefficients::largest:
            mpz_set(x.value, largest.value);
            break;
        case Coefficients::zero:
            mpz_set_ui(x.value, 0);
            break;
        case Coefficients::one:
            mpz_set_ui(x.value, 1);
            break;
        case Coefficients::sparse:
            mpz_set_ui(x.value, rng() % 2);
            mpz_mul_2exp(x.value, x.value, rng() % (2 * g.input_bits()));
            break;
        case Coefficients::all_ones:  // sums of all ones: long ripples
            mpz_set_ui(x.value, 1);
            mpz_mul_2exp(x.value, x.value, g.input_bits());
            mpz_sub_ui(x.value, x.value, 1);
            break;
    }
}

Expected fill(Block& block, const Geometry& g, Coefficients kind, const BlockCarry& carry_in,
              std::mt19937_64& rng) {
    const PrimeSet& set = prime_set(g.a, g.b);
    Integer x, sum, high, r;
    Expected expected;
    mpz_import(sum.value, 8, -1, 8, 0, 0, carry_in.words);
    for (upL_t j = 0; j < g.n(); ++j) {
        draw(x, g, kind, rng);
        for (unsigned s = 0; s < g.a; ++s) {
            const auto p = static_cast<unsigned long>(set.primes[s]);
            mpz_set_d(r.value, set.crt_inverses[s]);
            mpz_mul(r.value, r.value, x.value);
            const auto residue = static_cast<double>(mpz_fdiv_ui(r.value, p));
            block.at(s, j) = 2 * residue > set.primes[s] ? residue - set.primes[s] : residue;
        }
        mpz_tdiv_q_2exp(high.value, x.value, 2 * g.input_bits());
        expected.high_parts |= mpz_get_ui(high.value);
        mpz_mul_2exp(x.value, x.value, j * g.input_bits());
        mpz_add(sum.value, sum.value, x.value);
    }
    const upL_t bytes = block_bytes_of_words(g);
    expected.words.resize(bytes);
    mpz_tdiv_r_2exp(x.value, sum.value, 8 * bytes);
    mpz_export(expected.words.data(), nullptr, -1, 1, -1, 0, x.value);
    mpz_tdiv_q_2exp(sum.value, sum.value, 8 * bytes);
    mpz_export(expected.carry.words, nullptr, -1, 8, 0, 0, sum.value);
    return expected;
}

using Inverse = u64_t (*)(const Geometry&, const PrimeSet&, std::byte*, const double*, BlockCarry&);

void expect_words(Inverse convert, const Geometry& g, Coefficients kind, BlockCarry carry,
                  std::mt19937_64& rng) {
    Block block(g);
    const Expected expected = fill(block, g, kind, carry, rng);
    constexpr upL_t margin = 40;
    std::vector<std::byte> words(expected.words.size() + 2 * margin, std::byte{0xA5});
    const u64_t high_parts = convert(g, prime_set(g.a, g.b), words.data() + margin, block.data(), carry);
    const auto begin = words.begin() + margin;
    const auto end = begin + static_cast<std::ptrdiff_t>(expected.words.size());
    ASSERT_TRUE(std::equal(begin, end, expected.words.begin())) << g.a << " " << g.b << " kind " << int(kind);
    ASSERT_EQ(std::memcmp(&carry, &expected.carry, sizeof carry), 0) << g.a << " " << g.b;
    ASSERT_EQ(high_parts, expected.high_parts);
    const auto is_guard = [](std::byte b) { return b == std::byte{0xA5}; };
    ASSERT_TRUE(std::all_of(words.begin(), begin, is_guard) && std::all_of(end, words.end(), is_guard));
    ASSERT_TRUE(block.padding_untouched());
    check_redundancy(high_parts, redundancy_bound(g));
}

constexpr Coefficients all_kinds[] = {Coefficients::random, Coefficients::largest, Coefficients::zero,
                                      Coefficients::one,    Coefficients::sparse,  Coefficients::all_ones};

TEST(VSTConversion, ResiduesToWordsOfEveryShape) {
    std::mt19937_64 rng = make_rng(3);
    for (const Inverse convert : {block_to_words, block_to_words_reference}) {
        for (Geometry g : all_shapes()) {
            for (const unsigned c : {10u, unsigned{prime_set(g.a, g.b).max_c}}) {
                g.c = c;
                for (const Coefficients kind : all_kinds) expect_words(convert, g, kind, {}, rng);
            }
        }
    }
}

// A carry as large as a block can leave, and one that ripples through the whole block.
TEST(VSTConversion, CarryFromTheBlockBefore) {
    std::mt19937_64 rng = make_rng(4);
    for (const Inverse convert : {block_to_words, block_to_words_reference}) {
        for (Geometry g : all_shapes()) {
            g.c = prime_set(g.a, g.b).max_c;
            for (const Coefficients kind : all_kinds) {
                BlockCarry carry{};
                Block before(g);
                fill(before, g, Coefficients::largest, {}, rng);
                std::vector<std::byte> words(block_bytes_of_words(g));
                convert(g, prime_set(g.a, g.b), words.data(), before.data(), carry);
                expect_words(convert, g, kind, carry, rng);
                expect_words(convert, g, kind, {{1}}, rng);
            }
        }
    }
}

// Residues at either end of their range, in even number: y = -(p - 1) / 2 for all of them makes the
// coefficient that is half the sum of the P / p, and y = (p - 1) / 2 the opposite, which is no coefficient.
TEST(VSTConversion, LargestResidues) {
    for (const Inverse convert : {block_to_words, block_to_words_reference}) {
        for (Geometry g : all_shapes()) {
            const PrimeSet& set = prime_set(g.a, g.b);
            g.c = set.max_c;
            const unsigned used = g.a / 2 * 2;
            Block low(g), high(g);
            Integer x, cofactor, sum;
            for (unsigned s = 0; s < g.a; ++s) {
                mpz_set_ui(cofactor.value, 1);
                for (unsigned other = 0; other < g.a; ++other) {
                    if (other != s)
                        mpz_mul_ui(cofactor.value, cofactor.value,
                                   static_cast<unsigned long>(set.primes[other]));
                }
                if (s < used) mpz_add(x.value, x.value, cofactor.value);
                for (upL_t j = 0; j < g.n(); ++j) {
                    low.at(s, j) = s < used ? -(set.primes[s] - 1) / 2 : 0.0;
                    high.at(s, j) = -low.at(s, j);
                }
            }
            mpz_tdiv_q_2exp(x.value, x.value, 1);
            for (upL_t j = 0; j < g.n(); ++j) {
                mpz_add(sum.value, sum.value, x.value);
                mpz_mul_2exp(x.value, x.value, g.input_bits());
            }
            std::vector<std::byte> words(block_bytes_of_words(g)), expected(words.size() + 200);
            mpz_export(expected.data(), nullptr, -1, 1, -1, 0, sum.value);
            BlockCarry carry{};
            const u64_t H = convert(g, set, words.data(), low.data(), carry);
            EXPECT_TRUE(std::equal(words.begin(), words.end(), expected.begin()));
            EXPECT_EQ(std::memcmp(&carry, expected.data() + words.size(), sizeof carry), 0);
            EXPECT_LT(H, redundancy_bound(g));
            carry = {};
            EXPECT_GE(convert(g, set, words.data(), high.data(), carry), redundancy_bound(g));
        }
    }
}

// A wrong residue makes a coefficient that is no sum of products.
TEST(VSTConversion, OneWrongResidueShows) {
    std::mt19937_64 rng = make_rng(6);
    for (const Inverse convert : {block_to_words, block_to_words_reference}) {
        for (const Geometry& g : all_shapes()) {
            const PrimeSet& set = prime_set(g.a, g.b);
            Block block(g);
            fill(block, g, Coefficients::random, {}, rng);
            const auto s = static_cast<unsigned>(rng() % g.a);
            double& r = block.at(s, rng() % g.n());
            r += std::rint((r > 0 ? -set.primes[s] : set.primes[s]) / 6);
            std::vector<std::byte> words(block_bytes_of_words(g));
            BlockCarry carry{};
            EXPECT_GE(convert(g, set, words.data(), block.data(), carry), redundancy_bound(g));
        }
    }
}

}  // namespace
}  // namespace znp::vst
