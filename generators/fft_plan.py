#!/usr/bin/env python3
"""Makes the plan tables of the floating-point FFT and the table of their rounding errors.

    generators/fft_plan.py            rewrites the files
    generators/fft_plan.py --check    says whether they are what it would write

From generators/fft_measurements.tsv, the output of bench/fft_sizes_bench, it writes

    multiply/fft/fft_main_plan.inc    98 rows: the fastest size for a product of up to so many bits
    multiply/fft/fft_exact_plan.inc   261 rows: the sizes that can be asked for by exact capacity
    docs/FFT_ERRORS.md                the rounding of every row

A row is admitted if 2 w + log2 N is at most 48.6 and the largest error that was observed, of products that fill
all N points, is at most 0.3. The first ten and the last four rows of the main table are fixed.
"""
import math
import os
import sys

from generated import ROOT, write_or_check

LARGEST_SUM = 48.6
LARGEST_ERROR = 0.3
MAIN_ROWS, EXACT_ROWS = 98, 261
FIRST = [(1, 7, 16), (1, 7, 20), (1, 8, 16), (1, 8, 20), (3, 7, 16), (3, 7, 20), (1, 9, 16), (1, 9, 18), (1, 9, 19),
         (5, 7, 16)]
LAST = [(3, 21, 11), (3, 21, 12), (1, 23, 11), (1, 23, 12)]
EXACT_RANGE = (1152, 50331648)
# Transforms over rings modulo 2^(m 2^j) + 1 with m up to 15 rely on these capacities.
NEEDED_ODD_PARTS = 15


def N(row):
    return row[0] << row[1]


def capacity(row):
    return N(row) * row[2]


def width_sum(row):
    return 2 * row[2] + math.log2(N(row))


def narrowest(row):
    """The least width worth a row of its own: the longer the transform, the narrower."""
    return 16 if N(row) <= 1 << 15 else 12 if N(row) < 1 << 19 else 11


def odd_part(value):
    return value // (value & -value)


def read_measurements():
    times, errors = {}, {}
    with open(os.path.join(ROOT, "generators/fft_measurements.tsv"), encoding="ascii") as file:
        for line in file:
            field = line.rstrip("\n").split("\t")
            if field[0] == "time":
                times[int(field[1]), int(field[2])] = float(field[3])
            elif field[0] == "error":
                errors[tuple(int(x) for x in field[1:4])] = (float(field[4]), float(field[5]), field[6])
    return times, errors


def main_table(times, admitted):
    """The sizes that no other one with at least their capacity beats, then narrower widths in the widest gaps: such
    a row saves no time, but shorter products get a smaller rounding error."""
    low, high = capacity(FIRST[-1]), capacity(LAST[0])
    inner = sorted((row for row in admitted if low < capacity(row) < high), key=capacity)
    best, least = [], times[LAST[0][:2]]
    for row in reversed(inner):
        if times[row[:2]] < least:
            least = times[row[:2]]
            best.insert(0, row)
    table = FIRST + best + LAST
    assert len(table) <= MAIN_ROWS
    while len(table) < MAIN_ROWS:
        gaps = []
        for before, row in zip(table[len(FIRST) - 1:], table[len(FIRST):-len(LAST)]):
            narrower = (row[0], row[1], row[2] - 1)
            if narrower[2] >= narrowest(row) and capacity(narrower) > capacity(before):
                gaps.append((capacity(row) / capacity(before), capacity(row), narrower, row))
        _, _, narrower, row = max(gaps)
        table.insert(table.index(row), narrower)
    return table


def exact_table(times, errors, admitted):
    """Each capacity by its fastest size; of those that nobody relies on, the ones with the largest errors go."""
    fastest = {}
    for row in admitted:
        size = capacity(row)
        if EXACT_RANGE[0] <= size <= EXACT_RANGE[1]:
            key = (times[row[:2]], row)
            fastest[size] = min(fastest.get(size, key), key)
    rows = [row for _, row in fastest.values()]
    spare = sorted((row for row in rows if odd_part(capacity(row)) > NEEDED_ODD_PARTS),
                   key=lambda row: (errors[row][1], width_sum(row), row))
    dropped = set(spare[len(spare) - (len(rows) - EXACT_ROWS):])
    table = sorted((row for row in rows if row not in dropped), key=capacity)
    assert len(table) == EXACT_ROWS
    return table


def include_text(table, which):
    lines = [f"// Made by generators/fft_plan.py: the {which} plan. Capacity in bits, k, p, w.\n"]
    lines += ["{%d, %d, %d, %d, 0},\n" % (capacity(row), *row) for row in table]
    return "".join(lines)


def sigma(row):
    """Root mean square error of a point for operands of maximal digits that fill all points."""
    levels = math.log2(N(row) / 2)
    return 0.6 * 2.0**-53 * math.sqrt(levels) * N(row) * (2.0 ** row[2] - 1)**2


def proven(row, fill):
    """Bound of any error, for operands that fill this part of the points."""
    n = math.ceil(math.log2(N(row) / 2))
    e, beta = 2.0**-53, 2.0**-52
    norms = fill * N(row) * (2.0 ** row[2] - 1)**2
    return norms * math.expm1(3 * n * math.log1p(e) + (3 * n + 1) * math.log1p(e * math.sqrt(5)) +
                              3 * n * math.log1p(beta))


def limit(row):
    """The distance from an integer at which the transform's check fires (distance_limit of fft_check.cpp)."""
    return min(max(10 * sigma(row), 1 / 8), 29 / 64)


ERRORS_HEAD = """# Rounding errors of the floating-point FFT

Made by `generators/fft_plan.py` from `generators/fft_measurements.tsv`, which `bench/fft_sizes_bench` measured. Right
digits rest on this table; what goes wrong all the same, by hardware or by operands that nobody tried, is seen by the
transform's own check and by the residues above it.

A result's point is right if it lies less than 0.5 from its integer before it is rounded. For each row of the plans:

- **sum**: 2 w + log2 N. Own rows are at most {sum}.
- **product**: largest distance from an integer over ordinary products, whose operands fill half of the points.
- **ring**: the same over products modulo 2^(N w) + 1 whose operands fill all points. The rounding errors scale with
  the norms of both operands, so this is twice the former. Own rows are at most {error} here as well, which leaves
  room for every partly wrapped product.
- **limit**: a product fails if a point lies farther than this from an integer: 10 sigma, at least 1/8, at most 29/64. It
  is at least {room:.2f} times the error in the ring. `FftLimits.NoAlarmForExtremeOperands` (label long) tries
  millions of products of nearly all ones in the widest rows, in the ring: the largest error is 0.3125, row (1, 10, 19).
  One row is an exception: of nearly-all-ones products in the ring of (3, 7, 20) one in two million reaches 0.5. The row
  serves ordinary products, with half of the error, and Newton's steps, where one operand fills half of the points (0.28125
  in two million); beyond that a product of this row can fail, and the check and the residues are what guards it.
- **operands**: those of the largest error. Tried were random digits (up to 200 pairs for each size, fewer for long
  ones), random maximal or zero digits, nearly maximal digits, all ones, all ones by random, alternating maximal
  digits, alternating pairs, blocks of maximal digits, single spikes, and spikes by all ones and by random.
- **sigma**: the root mean square error for all ones in the ring by the statistical estimate of a Fourier transform's
  rounding, 0.6 u sqrt(n) relative to the norm with u = 2^-53 and n = log2(N/2) levels (Schatzman, Accuracy of the
  discrete Fourier transform and the fast Fourier transform, SIAM J. Sci. Comput. 17, 1996): three transforms give
  sqrt(3) times that, and the product of all ones, whose points rise evenly from -N to N, has a norm of 1/sqrt(3) of
  its largest point at each point; so sigma = 0.6 u sqrt(n) N (2^w - 1)^2. A quarter of it holds for random digits,
  whose mean is half as large. The largest of N normal deviates is 3 to 5 sigma, which is what was observed.
- **proven**: the bound that no operands can exceed, |x| |y| ((1 + u)^3n (1 + u sqrt 5)^(3n+1) (1 + b)^3n - 1) with
  b = 2^-52 for the twiddle factors (Percival, Math. Comp. 72, 2003; in this form Brent and Zimmermann, Modern Computer
  Arithmetic, 2010, theorem 3.7), for ordinary products; twice that in the ring. It adds all errors with one sign. The
  wide rows exceed 0.5 in it: they rest on the estimate and on the observation. 0.5 is at least {margin:.1f} sigma in the
  ring, and four times as many for random digits.

Largest error of ordinary products in any row: {product:.4f}, row (k {p[0]}, p {p[1]}, w {p[2]}). Largest in the ring:
{ring:.4f}, row (k {r[0]}, p {r[1]}, w {r[2]}); among own rows {own:.4f}, row (k {o[0]}, p {o[1]}, w {o[2]}). The row
(3, 7, 20) is fixed and serves short products only.

## What guards a product

Every inverse, of a product, a square, a window or a checked product, ends in the same last pass, and so the check guards
every use alike (`multiply/fft/fft_check.hpp`). The last pass looks at three of eight points; if one lies more than 1/8
from an integer or is beyond 2^49, all points are examined and compared with the row's limit. Behind a failed check the
product is an error, never a result.

| use | rows | rounding | hardware |
| --- | --- | --- | --- |
| products of exact numbers (series, powers of the conversion) | main plan, to 655,360 bits | proven where the bound is at most 0.5; else by the estimate, with the check | check; the residue that the number carries |
| checked products (Newton steps) | the same | the same | check; the residue of the whole result |
| truncated products (sums of series, closing formulas, conversion) | the same | the same | check; residues where the caller compares them |
| stress test | the same | the same | check; the residue of each product |

What the check sees: a fault in an image, in the tables or in a step before the last pass adds a wave to all points of the
result, or to those of a part of them. One that moves a point by 1/2 or more moves others by a fraction. What it does not
see moves points by integers: a wrong digit of an operand or of the result, and some faults right before the last pass,
which reach eight points only. Those change the value by a few powers of two: no residue misses them. The other way round,
a wave that turns into digits of period 61 escapes the residue modulo 2^61 - 1, and the check sees it. Of 100,000,000 single
flips in images and tables, before and between the steps of all transforms of a product (`FftFaults.AHundredMillionFlips`,
seed 22112026), the check saw 59,393,806 (1,124,505 of them would have left the right product), residues alone 2,275,197,
38,330,997 left the right product, and none was wrong and unnoticed; 200 wrong products had the right residue modulo
2^61 - 1, all of them seen by the check.

### Rows whose proven bound exceeds 0.5

{wide} of the {used} rows of the main plan that serve products in memory (to 655,360 bits). For each the fastest size with
the same capacity whose bound is at most 0.5 for ordinary products, and its time over the row's, from the measurements.
Over all lengths from 59 words on (evenly by their logarithms) such a plan would take {mean:.0f} % longer, for products that
fill the ring {mean_ring:.0f} %. Three are cheap: for (5, 8, 18), (5, 10, 17) and (5, 12, 16), alternating runs on another machine
gave 0.96, 0.98 and 1.02 (60 pairs each, where the measurements below say 1.04 to 1.06); for (1, 10, 19) and (1, 13, 17)
they gave 1.75 and 1.34. So the rows stay, under the check.

| k | p | w | proven | safe k | safe p | safe w | time |
| --- | --- | --- | --- | --- | --- | --- | --- |
{safe_rows}
## All rows

| k | p | w | capacity | plan | sum | product | ring | limit | operands | sigma | proven |
| --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- |
"""

IN_MEMORY = 655360  # bits: longer products go to the large transform
SHORTEST = 59 * 64  # shorter ones are done by schoolbook and Karatsuba


def fastest_safe(times, errors, bits, fill):
    """Of the sizes whose proven bound is at most 0.5 for operands that fill this part of the points."""
    return min((times[row[:2]], row) for row in errors if capacity(row) >= bits and proven(row, fill) <= 0.5)


def safe_plan_cost(times, errors, main, fill):
    """The mean ratio of times, all rows with a proven bound against the plan, in per cent beyond 100."""
    steps = 2000
    ratios = []
    for i in range(steps):
        bits = SHORTEST * (IN_MEMORY / SHORTEST)**(i / (steps - 1))
        planned = next(row for row in main if capacity(row) >= bits)
        ratios.append(fastest_safe(times, errors, bits, fill)[0] / times[planned[:2]])
    return 100 * (sum(ratios) / steps - 1)


def errors_text(main, exact, times, errors):
    rows = sorted(set(main) | set(exact), key=lambda row: (capacity(row), row))
    own = [row for row in rows if row not in FIRST + LAST]
    product = max(rows, key=lambda row: errors[row][0])
    ring = max(rows, key=lambda row: errors[row][1])
    worst_own = max(own, key=lambda row: errors[row][1])
    room = min(limit(row) / errors[row][1] for row in rows if errors[row][1] > 0)
    assert room >= 1.4
    used = [row for row in main if capacity(row) <= IN_MEMORY]
    wide = [row for row in used if proven(row, 0.5) > 0.5]
    safe_rows = ""
    for row in wide:
        time, safe = fastest_safe(times, errors, capacity(row), 0.5)
        safe_rows += "| %d | %d | %d | %.3f | %d | %d | %d | %.2f |\n" % (*row, proven(row, 0.5), *safe,
                                                                         time / times[row[:2]])
    text = ERRORS_HEAD.format(room=room, used=len(used), wide=len(wide), safe_rows=safe_rows,
                              mean=safe_plan_cost(times, errors, main, 0.5),
                              mean_ring=safe_plan_cost(times, errors, main, 1.0),
                              sum=LARGEST_SUM, error=LARGEST_ERROR, margin=min(0.5 / sigma(row) for row in rows),
                              product=errors[product][0], p=product, ring=errors[ring][1], r=ring,
                              own=errors[worst_own][1], o=worst_own)
    for row in rows:
        plans = "both" if row in main and row in exact else "main" if row in main else "exact"
        text += "| %d | %d | %d | %d | %s | %.2f | %.5f | %.5f | %.5f | %s | %.5f | %.3f |\n" % (
            *row, capacity(row), plans, width_sum(row), *errors[row][:2], limit(row), errors[row][2], sigma(row),
            proven(row, 0.5))
    return text


def main():
    times, errors = read_measurements()
    admitted = [row for row, (_, ring, _) in errors.items() if width_sum(row) <= LARGEST_SUM and ring <= LARGEST_ERROR]
    main_rows = main_table(times, admitted)
    exact_rows = exact_table(times, errors, admitted)
    files = {
        "multiply/fft/fft_main_plan.inc": include_text(main_rows, "main"),
        "multiply/fft/fft_exact_plan.inc": include_text(exact_rows, "exact"),
        "docs/FFT_ERRORS.md": errors_text(main_rows, exact_rows, times, errors),
    }
    return write_or_check(files)


if __name__ == "__main__":
    sys.exit(main())
