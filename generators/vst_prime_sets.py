#!/usr/bin/env python3
"""Makes the prime sets of the large transform.

    generators/vst_prime_sets.py            rewrites multiply/vst/prime_sets.inc
    generators/vst_prime_sets.py --check    says whether it is what it would write

For each set (a, b) the a largest primes p = h b 2^max_c + 1 below 2^48. Proved for each set:

    each prime          by Proth's theorem: p = k 2^max_c + 1 with k < 2^max_c and some g^((p - 1)/2) = -1
    each root's order   r^(b 2^max_c) = 1, and not 1 for this exponent over each of its prime factors
    the recovery        the limbs give back the cofactors; inverse times cofactor is 1; random numbers come back;
                        the sums of exact products have room
    the input           the multiples of the limbs have room
    the room            the product of the primes is above every coefficient at max_c; slack() says how far
"""
import math
import random
import sys

from generated import write_or_check

MAX_C = {4: (43, 41, 39, 39), 5: (42, 39, 39, 38), 6: (42, 39, 39, 38), 7: (41, 39, 38, 38), 8: (40, 39, 38, 37),
         9: (40, 39, 38, 37)}
LIMIT = 1 << 48
LIMB = 48


def balanced(x, p):
    x %= p
    return x - p if x > p // 2 else x


def is_proven_prime(p, exponent):
    """Proth's theorem, which needs the power of two to exceed the other factor."""
    k = p >> exponent
    assert p == (k << exponent) + 1 and k < 1 << exponent
    if any(p % small == 0 for small in (3, 5, 7, 11, 13)):
        return False
    for g in (2, 3, 5, 7, 11, 13, 17, 19, 23, 29, 31, 37):
        power = pow(g, (p - 1) // 2, p)
        if power == p - 1:
            return True
        if power != 1:
            return False  # Euler's criterion
    raise AssertionError("no witness for %d" % p)


def largest_primes(a, b, max_c):
    step = b << max_c
    h = (LIMIT - 2) // step
    primes = []
    while len(primes) < a:
        assert h > 0
        if is_proven_prime(h * step + 1, max_c):
            primes.append(h * step + 1)
        h -= 1
    return primes


def has_order(r, order, b, p):
    factors = [2] if b == 1 else [2, b]
    return pow(r, order, p) == 1 and all(pow(r, order // q, p) != 1 for q in factors)


def root_of_order(order, b, p):
    """That of the least base."""
    g = 2
    while not has_order(pow(g, (p - 1) // order, p), order, b, p):
        g += 1
    return balanced(pow(g, (p - 1) // order, p), p)


def limbs(x, count):
    """Digits in [-2^47, 2^47) of base 2^48, the last one with what remains."""
    digits = []
    for _ in range(count - 1):
        low = x & ((1 << LIMB) - 1)
        if low >= 1 << (LIMB - 1):
            low -= 1 << LIMB
        digits.append(low)
        x = (x - low) >> LIMB
    return digits + [x]


def from_limbs(digits):
    return sum(d << (LIMB * i) for i, d in enumerate(digits))


class PrimeSet:
    def __init__(self, a, b):
        self.a, self.b, self.max_c = a, b, MAX_C[a][(b - 1) // 2]
        self.primes = largest_primes(a, b, self.max_c)
        self.roots = [root_of_order(b << self.max_c, b, p) for p in self.primes]
        self.product = math.prod(self.primes)
        self.cofactors = [self.product // p for p in self.primes]
        self.inverses = [balanced(pow(m, -1, p), p) for m, p in zip(self.cofactors, self.primes)]
        self.factors = [limb for m in self.cofactors for limb in limbs(m, a - 1)] + limbs(self.product, a)
        self.pair_products = self.limb_products()
        self.multipliers = [p >> self.max_c for p in self.primes]
        self.input_power = a // 2 - 1 if a < 8 or b <= 3 else 0
        self.inverse_primes = [1.0 / p for p in self.primes]
        self.limb_powers = [balanced(1 << LIMB * k, p) for p in self.primes for k in (1, 2, 3)]
        self.scale = -(2.0 ** 48) * (1 << (LIMB * (a - 1))) / self.product

    def cofactor_limbs(self, s):
        return self.factors[s * (self.a - 1):(s + 1) * (self.a - 1)]

    def pairs(self):
        return [(s, s + 1) for s in range(0, self.a - 1, 2)]

    def limb_products(self):
        """Limbs of minus the number whose digits are the sums of the pairs' products, limb by limb."""
        sums = [sum(self.cofactor_limbs(s)[j] * self.cofactor_limbs(t)[j] for s, t in self.pairs())
                for j in range(self.a - 1)]
        return limbs(-from_limbs(sums), self.a)

    def verify_room(self):
        """The bounds of recovery_kernel.cpp, with residues up to 0.6 p and up to six times the product."""
        a = self.a
        for j in range(a - 1):
            high = 0
            for s, t in self.pairs():
                y, z = 0.6 * self.primes[s], 0.6 * self.primes[t]
                high += (y + abs(self.cofactor_limbs(t)[j])) * (z + abs(self.cofactor_limbs(s)[j])) + y * z
            if a % 2 != 0:
                high += 0.6 * self.primes[a - 1] * abs(self.cofactor_limbs(a - 1)[j])
            assert high < 2.0 ** 98
            assert abs(self.factors[a * (a - 1) + j]) <= 1 << 47 and abs(self.pair_products[j]) <= 1 << 47
        assert 0 < self.factors[a * (a - 1) + a - 1] <= 1 << 48
        assert 6 * self.factors[a * (a - 1) + a - 1] + abs(self.pair_products[a - 1]) < 1 << 50

    def verify_input(self):
        """The bounds of residues_kernel.cpp where small factors make the residues."""
        step = 1 << LIMB - self.max_c
        for p, k in zip(self.primes, self.multipliers):
            assert p == k * (1 << self.max_c) + 1 and k < step and (k << LIMB) % p == p - step
            assert (p - 1) // 2 > 1 << 44
        assert self.input_power == 0 or step ** self.input_power <= 1 << 27

    def slack(self, c):
        """log2 of the primes' product over the bound of a coefficient, b 2^c (2^(24 (a - 1)) - 1)^2."""
        return math.log2(self.product) - math.log2((self.b << c) * ((1 << 24 * (self.a - 1)) - 1) ** 2)

    def sums_of_pairs(self, y):
        """What the recovery adds to pair_products."""
        total = 0
        for j in range(self.a - 1):
            for s, t in self.pairs():
                product = (y[s] + self.cofactor_limbs(t)[j]) * (y[t] + self.cofactor_limbs(s)[j])
                total += product - y[s] * y[t] << LIMB * j
            if self.a % 2 != 0:
                total += y[-1] * self.cofactor_limbs(self.a - 1)[j] << LIMB * j
        return total

    def verify(self, rng):
        a, order = self.a, self.b << self.max_c
        assert len(set(self.primes)) == a and all(p < LIMIT for p in self.primes)
        for p, root, cofactor, inverse in zip(self.primes, self.roots, self.cofactors, self.inverses):
            assert has_order(root % p, order, self.b, p) and abs(root) <= (p - 1) // 2
            assert inverse * cofactor % p == 1 and abs(inverse) <= (p - 1) // 2
        for i in range(a):
            assert from_limbs(self.cofactor_limbs(i)) == self.cofactors[i]
            *lower, top = self.cofactor_limbs(i)
            assert 0 < top <= 1 << LIMB and all(abs(limb) <= 1 << LIMB - 1 for limb in lower)
        assert from_limbs(self.factors[a * (a - 1):]) == self.product
        self.verify_room()
        self.verify_input()
        # The quotient estimate of the recovery wants 0 <= x / product < 0.41: see recovery_kernel.cpp.
        assert self.slack(self.max_c) >= 1.29
        bound = (self.b << self.max_c) * ((1 << 24 * (a - 1)) - 1) ** 2
        for x in [0, bound] + [rng.randrange(bound + 1) for _ in range(20)]:
            y = [balanced(x * i, p) for i, p in zip(self.inverses, self.primes)]
            total = from_limbs(self.pair_products) + self.sums_of_pairs(y)
            assert total == sum(v * m for v, m in zip(y, self.cofactors))
            top = total >> (LIMB * (a - 1))
            quotient = round(top * self.scale * 2.0 ** -48 + 0.2)
            assert total + quotient * self.product == x


def c_array(name, values, a, b):
    """The values in a line each four."""
    numbers = [float(v) for v in values]
    assert numbers == values
    rows = [", ".join("%r" % v for v in numbers[i:i + 4]) for i in range(0, len(numbers), 4)]
    return "constexpr double %s_%d_%d[] = {\n    %s,\n};\n" % (name, a, b, ",\n    ".join(rows))


def include_text(sets):
    lines = ["// Made by generators/vst_prime_sets.py, which proves it.\n"]
    for s in sets:
        lines.append("\n// (%d, %d): %.2f bits of slack at 2^%d\n" % (s.a, s.b, s.slack(s.max_c), s.max_c))
        lines.append(c_array("primes", s.primes, s.a, s.b))
        lines.append(c_array("roots", s.roots, s.a, s.b))
        lines.append(c_array("inverse_primes", s.inverse_primes, s.a, s.b))
        lines.append(c_array("multipliers", s.multipliers, s.a, s.b))
        lines.append(c_array("limb_powers", s.limb_powers, s.a, s.b))
        lines.append(c_array("crt_factors", s.factors, s.a, s.b))
        lines.append(c_array("pair_products", s.pair_products, s.a, s.b))
        lines.append(c_array("crt_inverses", s.inverses, s.a, s.b))
        lines.append("constexpr auto recovery_%d_%d =\n" % (s.a, s.b))
        lines.append("    recovery<%d>(crt_factors_%d_%d, pair_products_%d_%d, %r);\n"
                     % (s.a, s.a, s.b, s.a, s.b, s.scale))
    lines.append("\nconstexpr PrimeSet sets[6][4] = {\n")
    for a in sorted(MAX_C):
        lines.append("    {\n")
        for s in (s for s in sets if s.a == a):
            names = ", ".join("%s_%d_%d" % (name, s.a, s.b)
                              for name in ("primes", "roots", "inverse_primes", "multipliers", "limb_powers", "crt_factors",
                                           "crt_inverses"))
            lines.append("        {%d, %d, %d, %d, %s, recovery_%d_%d.vectors},\n"
                         % (s.a, s.b, s.max_c, s.input_power, names, s.a, s.b))
        lines.append("    },\n")
    lines.append("};\n")
    return "".join(lines)


def main():
    sets = [PrimeSet(a, b) for a in sorted(MAX_C) for b in (1, 3, 5, 7)]
    rng = random.Random(48)
    for s in sets:
        s.verify(rng)
    return write_or_check({"multiply/vst/prime_sets.inc": include_text(sets)})


if __name__ == "__main__":
    sys.exit(main())
