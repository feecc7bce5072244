#!/usr/bin/env python3
"""Makes the size plans of the large transform.

    generators/vst_size_plan.py            rewrites multiply/vst/size_plan.inc
    generators/vst_size_plan.py --check    says whether it is what it would write

A row (a, b, c) is a transform of b 2^c points over a primes, which holds 24 (a - 1) b 2^c bits. The main plan has
159 rows with c from 9 to 28, the large one 296 rows with c from 11 to 43: all capacities that there are, each by its
fastest row, less, in the main plan, those that save least against the next row.

A row's time is that of a product of its capacity on one thread, from generators/vst_measurements.tsv (output of
bench/vst_sizes_bench: a, b, c, nanoseconds). Measurements come and go by some per cent: what counts is the median, over
a row and its neighbours of the same set, of the ratio to the model below. Longer rows than were measured follow the
model from the last ones. Fewer primes make larger images: a prime less must save a per cent.
"""
import os
import statistics
import sys

from generated import ROOT, write_or_check
from vst_prime_sets import MAX_C

MAIN_ROWS, LARGE_ROWS = 159, 296
MAIN_C, LARGE_C = (9, 28), (11, 43)
FIRST = [(4, 1, 10), (5, 1, 10), (4, 3, 9), (6, 1, 10), (7, 1, 10), (8, 1, 10), (6, 3, 9), (9, 1, 10)]
MAIN_LAST = (8, 1, 28)
LARGE_FIRST, LARGE_LAST = (4, 1, 12), (4, 1, 43)


def capacity(row):
    a, b, c = row
    return 24 * (a - 1) * b << c


def points(row):
    return row[1] << row[2]


def model(row):
    """Relative time: levels of butterflies and, worth so many levels more, the two ends."""
    a, b, c = row
    radix = {1: 0.0, 3: 1.9, 5: 3.0, 7: 3.9}[b]
    return a * points(row) * (c + radix + 0.7 * a + 4)


def read_measurements():
    times = {}
    with open(os.path.join(ROOT, "generators/vst_measurements.tsv"), encoding="ascii") as file:
        for line in file:
            if not line.startswith("#"):
                a, b, c, nanoseconds = line.split()
                times[int(a), int(b), int(c)] = float(nanoseconds)
    return times


def estimate(row, times):
    """The time that counts."""
    near = sorted((other for other in times if other[:2] == row[:2]), key=lambda other: (abs(other[2] - row[2]), other))
    ratio = statistics.median(times[other] / model(other) for other in near[:3])
    return model(row) * ratio * (1 + 0.01 * (9 - row[0]))


def all_rows(c_range, low, high):
    """Rows by capacity; blocks of 64 points for b = 1 and of 32 b points want four levels above them."""
    rows = {}
    for a, limits in MAX_C.items():
        for b in (1, 3, 5, 7):
            least = c_range[0] + (b == 1)
            for c in range(least, min(c_range[1], limits[b // 2]) + 1):
                if low <= capacity((a, b, c)) <= high:
                    rows.setdefault(capacity((a, b, c)), []).append((a, b, c))
    return rows


def fastest(rows, fixed, times):
    table = [min(same, key=lambda row: (row not in fixed, estimate(row, times), row)) for same in rows.values()]
    return sorted(table, key=capacity)


def main_table(times):
    table = fastest(all_rows(MAIN_C, capacity(FIRST[0]), capacity(MAIN_LAST)), set(FIRST + [MAIN_LAST]), times)
    assert table[:len(FIRST)] == FIRST and table[-1] == MAIN_LAST
    while len(table) > MAIN_ROWS:
        inner = range(len(FIRST), len(table) - 1)
        worst = min(inner, key=lambda i: estimate(table[i + 1], times) / estimate(table[i], times))
        del table[worst]
    return table


def large_table(times):
    table = fastest(all_rows(LARGE_C, capacity(LARGE_FIRST), capacity(LARGE_LAST)), set(), times)
    assert table[0] == LARGE_FIRST and table[-1] == LARGE_LAST and len(table) == LARGE_ROWS
    return table


def include_text(name, table):
    lines = ["constexpr SizePlanRow %s[%d] = {\n" % (name, len(table))]
    for i in range(0, len(table), 8):
        lines.append("    " + ", ".join("{%d, %d, %d}" % row for row in table[i:i + 8]) + ",\n")
    return "".join(lines) + "};\n"


def main():
    times = read_measurements()
    text = "// Made by generators/vst_size_plan.py: a, b, c by capacity.\n" + include_text(
        "main_rows", main_table(times)) + include_text("large_rows", large_table(times))
    return write_or_check({"multiply/vst/size_plan.inc": text})


if __name__ == "__main__":
    sys.exit(main())
