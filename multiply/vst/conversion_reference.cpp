#include "multiply/vst/conversion_reference.hpp"

#include <cmath>
#include <cstring>

namespace znp::vst {

namespace {

// Room for a coefficient, a carry and sums of a few of them: 48 a + 80 bits.
constexpr unsigned words_of_value = 8;

struct Value {
    u64_t words[words_of_value];
};

void add(Value& x, const Value& y) {
    u128_t sum = 0;
    for (unsigned k = 0; k < words_of_value; ++k) {
        sum += static_cast<u128_t>(x.words[k]) + y.words[k];
        x.words[k] = static_cast<u64_t>(sum);
        sum >>= 64;
    }
}

void subtract(Value& x, const Value& y) {
    u64_t borrow = 0;
    for (unsigned k = 0; k < words_of_value; ++k) {
        const u128_t difference = static_cast<u128_t>(x.words[k]) - y.words[k] - borrow;
        x.words[k] = static_cast<u64_t>(difference);
        borrow = static_cast<u64_t>(difference >> 64) & 1;
    }
}

bool less(const Value& x, const Value& y) {
    for (unsigned k = words_of_value; k-- > 0;) {
        if (x.words[k] != y.words[k]) return x.words[k] < y.words[k];
    }
    return false;
}

Value multiply(const Value& x, u64_t y) {
    Value product;
    u128_t sum = 0;
    for (unsigned k = 0; k < words_of_value; ++k) {
        sum += static_cast<u128_t>(x.words[k]) * y;
        product.words[k] = static_cast<u64_t>(sum);
        sum >>= 64;
    }
    return product;
}

Value shift_right(const Value& x, unsigned bits) {
    Value shifted{};
    for (unsigned k = 0; k + bits / 64 < words_of_value; ++k) {
        shifted.words[k] = x.words[k + bits / 64] >> bits % 64;
        if (bits % 64 != 0 && k + bits / 64 + 1 < words_of_value)
            shifted.words[k] |= x.words[k + bits / 64 + 1] << (64 - bits % 64);
    }
    return shifted;
}

// A nonnegative number from limbs of either sign in base 2^48, from the top down in two's complement.
Value from_limbs(const double* limbs, unsigned count) {
    Value x{};
    for (unsigned k = count; k-- > 0;) {
        x = multiply(x, u64_t{1} << 48);
        const auto limb = static_cast<s64_t>(limbs[k]);
        Value extended;
        std::memset(&extended, limb < 0 ? 0xff : 0, sizeof extended);
        extended.words[0] = static_cast<u64_t>(limb);
        add(x, extended);
    }
    return x;
}

u64_t to_modulus(double residue) {
    return static_cast<u64_t>(residue);
}

// The number modulo p in [0, p), from bytes and from a balanced residue.
u64_t reduce(const std::byte* bytes, upL_t count, u64_t p) {
    u128_t r = 0;
    while (count-- > 0) r = ((r << 8) + static_cast<u64_t>(bytes[count])) % p;
    return static_cast<u64_t>(r);
}

u64_t reduce(double residue, u64_t p) {
    const s64_t r = static_cast<s64_t>(residue) % static_cast<s64_t>(p);
    return static_cast<u64_t>(r < 0 ? r + static_cast<s64_t>(p) : r);
}

// The number in [0, P) whose residues times crt_inverses are those at r, every `stride` doubles.
Value recover(const PrimeSet& set, const double* r, upL_t stride) {
    const Value product = from_limbs(set.crt_factors + set.a * (set.a - 1), set.a);
    Value x{};
    for (unsigned s = 0; s < set.a; ++s) {
        const u64_t y = reduce(r[s * stride], to_modulus(set.primes[s]));
        add(x, multiply(from_limbs(set.crt_factors + s * (set.a - 1), set.a - 1u), y));
    }
    while (!less(x, product)) subtract(x, product);
    return x;
}

}  // namespace

void words_to_block_reference(const Geometry& g, const PrimeSet& set, double* block, const std::byte* words,
                              upL_t L, upL_t i) {
    const upL_t point_bytes = g.input_bits() / 8;
    const upL_t end = 4 * L;
    for (upL_t j = 0; j < g.n(); ++j) {
        const upL_t start = (i * g.n() + j) * point_bytes;
        std::byte point[24] = {};
        if (start < end)
            std::memcpy(point, words + start, end - start < point_bytes ? end - start : point_bytes);
        for (unsigned s = 0; s < g.a; ++s) {
            const u64_t p = to_modulus(set.primes[s]);
            u128_t x = reduce(point, point_bytes, p);
            for (unsigned k = 0; k < set.input_power; ++k) x = x * static_cast<u64_t>(set.multipliers[s]) % p;
            const auto r = static_cast<double>(static_cast<u64_t>(x));
            block[g.row_doubles() * s + j] = 2 * r > set.primes[s] ? r - set.primes[s] : r;
        }
    }
}

u64_t block_to_words_reference(const Geometry& g, const PrimeSet& set, std::byte* words, const double* block,
                               BlockCarry& carry) {
    Value sum;
    std::memcpy(&sum, &carry, sizeof sum);
    u64_t high_parts = 0;
    for (upL_t j = 0; j < g.n(); ++j) {
        const Value x = recover(set, block + j, g.row_doubles());
        high_parts |= shift_right(x, 2 * g.input_bits()).words[0];
        add(sum, x);
        std::memcpy(words + j * (g.input_bits() / 8), &sum, g.input_bits() / 8);
        sum = shift_right(sum, g.input_bits());
    }
    std::memcpy(&carry, &sum, sizeof sum);
    return high_parts;
}

bool is_balanced(const Geometry& g, const PrimeSet& set, const double* block) {
    for (unsigned s = 0; s < g.a; ++s) {
        for (upL_t j = 0; j < g.n(); ++j) {
            const double r = block[g.row_doubles() * s + j];
            if (!(std::fabs(r) <= 0.6 * set.primes[s]) || r != std::rint(r)) return false;
        }
    }
    return true;
}

}  // namespace znp::vst
