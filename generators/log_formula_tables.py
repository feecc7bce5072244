#!/usr/bin/env python3
"""Makes the tables from which formulas for Log(n) are built, and proves each row.

    generators/log_formula_tables.py            rewrites the files
    generators/log_formula_tables.py --check    says whether they are what it would write

    series/log_formula/base_formulas.inc    the logarithms of the first k primes, k from 4 to 8, over k ArcCoth
    series/log_formula/relations.inc        the logarithm of a further prime over those and one more ArcCoth

All rows come from 2 ArcCoth(x) = Log(x + 1) - Log(x - 1) with x + 1 and x - 1 over few primes, and are proved in
integers. A row is the cheaper the larger its x are: its weight is the sum of 1 / ln x.
"""
import math
import sys
from fractions import Fraction

from generated import write_or_check

BASE = (2, 3, 5, 7, 11, 13, 17, 19)
LEVELS = range(4, len(BASE) + 1)
LIMIT = 1 << 32  # of all x
ROWS = {"primary": 200, "secondary": 202}
# Those of the known formulas for the primes 3, 5 and 7, which are the rows of the base then.
SECONDARY_BASE_4 = (99, 449, 4801, 8749)
LARGEST_PRIME = 2000


def weight(xs):
    return sum(1 / math.log(x) for x in xs)


def smooth_numbers():
    """All below the limit + 2 over the base, with how many primes of the base they need."""
    level = {1: 0}
    for i, p in enumerate(BASE):
        for value in sorted(level):
            while value * p <= LIMIT + 1:
                value *= p
                level[value] = i + 1
    return level


def exponents(value, primes):
    """Of a value over exactly these primes."""
    result = []
    for p in primes:
        e = 0
        while value % p == 0:
            value //= p
            e += 1
        result.append(e)
    assert value == 1
    return result


def doubled_arc_coth(x, primes):
    """The exponents of (x + 1) / (x - 1), whose logarithm is 2 ArcCoth(x)."""
    return [a - b for a, b in zip(exponents(x + 1, primes), exponents(x - 1, primes))]


# ---- Base formulas


def inverse(rows):
    """Of a square matrix, exactly; None for a singular one."""
    n = len(rows)
    m = [[Fraction(v) for v in row] + [Fraction(int(i == j)) for j in range(n)] for i, row in enumerate(rows)]
    for c in range(n):
        pivot = next((r for r in range(c, n) if m[r][c] != 0), None)
        if pivot is None:
            return None
        m[c], m[pivot] = m[pivot], m[c]
        m[c] = [v / m[c][c] for v in m[c]]
        for r in range(n):
            if r != c and m[r][c] != 0:
                m[r] = [a - m[r][c] * b for a, b in zip(m[r], m[c])]
    return [row[n:] for row in m]


def base_coefficients(xs):
    """c with Log(p_i) = sum of c[i][j] ArcCoth(x_j), if they are integers."""
    primes = BASE[:len(xs)]
    result = inverse([doubled_arc_coth(x, primes) for x in xs])
    if result is None:
        return None
    doubled = [[2 * v for v in row] for row in result]
    if any(v.denominator != 1 for row in doubled for v in row):
        return None
    return [[int(v) for v in row] for row in doubled]


def cheapest_bases(level, k, count):
    """The sets of k arguments with the least weights that have integer coefficients, by branch and bound; the
    remainders modulo a prime decide what is independent, the inverse proves it."""
    modulus = (1 << 61) - 1
    xs = sorted((v + 1 for v, needed in level.items() if needed <= k and level.get(v + 2, 99) <= k and 1 < v + 1 < LIMIT),
                reverse=True)
    vectors = [[e % modulus for e in doubled_arc_coth(x, BASE[:k])] for x in xs]
    weights = [weight([x]) for x in xs]
    found = []

    def reduced(v, pivots):
        for at, row in pivots:
            v = [(a - v[at] * b) % modulus for a, b in zip(v, row)]
        return v

    def extend(start, pivots, chosen, total):
        left = k - len(chosen)
        if left == 0:
            if base_coefficients(chosen) is not None:
                found.append((total, chosen))
                found.sort()
                del found[count:]
            return
        for j in range(start, len(xs) - left + 1):
            if len(found) == count and total + sum(weights[j:j + left]) >= found[-1][0]:
                return
            v = reduced(vectors[j], pivots)
            at = next((i for i in range(k) if v[i]), None)
            if at is None:
                continue
            scale = pow(v[at], modulus - 2, modulus)
            extend(j + 1, pivots + [(at, [a * scale % modulus for a in v])], chosen + (xs[j],), total + weights[j])

    extend(0, [], (), 0.0)
    return [tuple(sorted(chosen)) for _, chosen in found]


def base_tables(level):
    tables = {"primary": [], "secondary": []}
    for k in LEVELS:
        first, second = cheapest_bases(level, k, 2)
        tables["primary"].append(first)
        tables["secondary"].append(SECONDARY_BASE_4 if k == 4 else second)
    return tables


def check_base(xs, coefficients):
    """Each prime's row gives twice its exponent vector."""
    primes = BASE[:len(xs)]
    for i, row in enumerate(coefficients):
        total = [0] * len(primes)
        for x, c in zip(xs, row):
            total = [t + c * e for t, e in zip(total, doubled_arc_coth(x, primes))]
        assert total == [2 * (i == j) for j in range(len(primes))]


# ---- Relations


def primes_up_to(n):
    return [p for p in range(2, n + 1) if all(p % d for d in range(2, math.isqrt(p) + 1))]


def relation_arguments(q, level, smooth):
    """(x, the primes of the base that x - 1 and x + 1 need besides one factor q), by x."""
    result = []
    for s in smooth:
        if q * s > LIMIT:
            break
        for side in (-1, 1):
            x = q * s + side
            needed = level.get(x + side)
            if needed is not None and 1 < x < LIMIT:
                result.append((x, max(level[s], needed)))
    return sorted(result)


def relation(q, x):
    """Log(q) = c ArcCoth(x) + sum of e_i Log(p_i): x, the primes, c, the exponents."""
    above = (x + 1) % q == 0
    c = 2 if above else -2
    smooth_side, q_side = (x - 1, (x + 1) // q) if above else (x + 1, (x - 1) // q)
    exponent = [a - b for a, b in zip(exponents(smooth_side, BASE), exponents(q_side, BASE))]
    primes = [p for p, e in zip(BASE, exponent) if e]
    return primes, c, [e for e in exponent if e]


def check_relation(q, x, primes, c, es):
    """q^2 = ((x + 1) / (x - 1))^c * product of p^2e."""
    left, right = q * q * (x - 1)**max(c, 0) * (x + 1)**max(-c, 0), (x + 1)**max(c, 0) * (x - 1)**max(-c, 0)
    for p, e in zip(primes, es):
        left, right = left * p**(2 * max(-e, 0)), right * p**(2 * max(e, 0))
    assert left == right and 1 < x < LIMIT and primes == sorted(primes) and len(primes) < 10


def relation_tables(level):
    """For each prime and each base without it the cheapest argument, and the second cheapest, where it is cheaper
    than with a smaller base, and not one of the neighbours that a search tries anyway. The rows of the smallest
    bases go first, for they make the cheapest formulas."""
    smooth = sorted(level)
    candidates = {"primary": [], "secondary": []}
    for q in primes_up_to(LARGEST_PRIME):
        arguments = relation_arguments(q, level, smooth)
        last = {"primary": 0, "secondary": 0}
        for k in LEVELS:
            xs = [x for x, needed in arguments if needed <= k]
            if q in BASE[:k] or not xs:
                continue
            for which, x in ("primary", xs[-1]), ("secondary", xs[-2] if len(xs) > 1 else xs[-1]):
                if x <= last[which]:
                    continue
                last[which] = x
                if x not in (q - 1, q + 1, 2 * q - 1, 2 * q + 1):
                    candidates[which].append((k, q, x))
    return {which: sorted((q, x) for _, q, x in sorted(rows)[:ROWS[which]]) for which, rows in candidates.items()}


# ---- Texts


def joined(values):
    return ", ".join(str(v) for v in values)


def base_text(level):
    lines = ["// Made by generators/log_formula_tables.py, which proves it: x, and of each prime the coefficients.\n"]
    for which, tables in base_tables(level).items():
        for xs in tables:
            coefficients = base_coefficients(xs)
            check_base(xs, coefficients)
            lines.append(f"constexpr u64_t {which}_arguments_{len(xs)}[] = {{{joined(xs)}}};\n")
            lines.append(f"constexpr s64_t {which}_coefficients_{len(xs)}[] = {{\n")
            lines += [f"    {joined(row)},\n" for row in coefficients]
            lines.append("};\n")
    return "".join(lines)


def relation_text(level):
    lines = ["// Made by generators/log_formula_tables.py, which proves it: n, count, x and the primes, c and their\n"
             "// exponents, weight.\n"]
    for which, rows in relation_tables(level).items():
        assert len(rows) == ROWS[which] and len(set(rows)) == len(rows)
        lines.append(f"constexpr FormulaRow {which}_relations[{len(rows)}] = {{\n")
        for q, x in rows:
            primes, c, es = relation(q, x)
            check_relation(q, x, primes, c, es)
            lines.append(f"    {{{q}, {1 + len(primes)}, {{{joined([x] + primes)}}}, {{{joined([c] + es)}}}, "
                         f"{weight([x]):.6f}}},\n")
        lines.append("};\n")
    return "".join(lines)


def main():
    level = smooth_numbers()
    return write_or_check({
        "series/log_formula/base_formulas.inc": base_text(level),
        "series/log_formula/relations.inc": relation_text(level),
    })


if __name__ == "__main__":
    sys.exit(main())
