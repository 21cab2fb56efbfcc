# minimax.py: best approximation by a linear combination of functions, and the text of the data headers.
# SPDX-License-Identifier: MIT
"""Remez' exchange in multiple precision, for any linear basis, and writers for the headers under vector_math/data."""

import struct
import sys

from mpmath import mp, mpf

mp.prec = 240


def fit(target, basis, low, high, relative=True, rounds=12):
    """Coefficients of the combination of `basis` nearest to `target` on [low, high], and the error reached.

    The error is relative to the target unless told otherwise. The basis must satisfy Haar's condition there.
    """
    low, high = mpf(low), mpf(high)
    count = len(basis)
    weight = (lambda x: 1 / target(x)) if relative else (lambda x: mpf(1))
    middle, half = (low + high) / 2, (high - low) / 2
    grid = [middle - half * mp.cos(mp.pi * k / (24 * count)) for k in range(24 * count + 1)]
    weights = [weight(x) for x in grid]
    rows = [[function(x) * w for function in basis] for x, w in zip(grid, weights)]
    right = [target(x) * w for x, w in zip(grid, weights)]
    nodes = range(0, 24 * count + 1, 24)
    coefficients = None
    for _ in range(rounds):
        system = mp.matrix(count + 1, count + 1)
        for k, place in enumerate(nodes):
            for m, value in enumerate(rows[place]):
                system[k, m] = value
            system[k, count] = (-1) ** k
        solution = mp.lu_solve(system, mp.matrix([right[place] for place in nodes]))
        coefficients = [solution[m] for m in range(count)]

        extrema = []  # the place of the largest error of each run of one sign, and that error
        for place, row in enumerate(rows):
            value = sum(c * v for c, v in zip(coefficients, row)) - right[place]
            if extrema and (value > 0) == (extrema[-1][1] > 0):
                if abs(value) > abs(extrema[-1][1]):
                    extrema[-1] = (place, value)
            else:
                extrema.append((place, value))
        if len(extrema) != count + 1:
            raise ArithmeticError(f"{len(extrema)} alternations where {count + 1} are due")
        if nodes == [place for place, _ in extrema]:
            break
        nodes = [place for place, _ in extrema]

    return coefficients, max(abs(value) for _, value in extrema)


def max_error(approximation, exact, low, high, points=1000):
    """Largest relative error over an even grid of [low, high]."""
    step = (mpf(high) - mpf(low)) / points
    return max(abs(approximation(low + k * step) / exact(low + k * step) - 1) for k in range(points + 1))


def exponent_text(error):
    """An error as a power of two, rounded up: '2^-52.3'."""
    return f"2^{float(mp.ceil(mp.log(error, 2) * 10) / 10):.1f}"


def to_double(x):
    return mpf(struct.unpack("<d", struct.pack("<d", float(x)))[0])


def to_bits(x, significant):
    """x rounded to nearest with so many significant bits."""
    with mp.workprec(significant):
        return +mpf(x)


def to_float(x):
    return to_bits(x, 24)  # for values in the normal range of float


def hex_double(x):
    return float(x).hex().replace(".0000000000000p", "p")


def hex_float(x):
    return hex_double(to_float(x)) + "f"


FORMATS = {"double": (to_double, hex_double), "float": (to_float, hex_float)}  # nearest number, its text


def write_fit(out, function, text, lead, name, powers, low, high, kind):
    """Fits a function of r by lead(r), given with its text, and multiples of these powers; writes the coefficients.

    The error is relative; on both sides of 0, where that has no best fit, the polynomial alone is fitted absolutely. No
    argument is 0: that end is moved, and an interval around 0 made uneven.
    """
    nearest, hexadecimal = FORMATS[kind]
    low = max(mpf(low), mpf(2) ** -20) if low >= 0 else mpf(low) * (1 + mpf(2) ** -20)
    lead_text, leading = lead
    weight = function if low > 0 else lambda x: x ** powers[0]
    basis = [lambda x, m=m: x**m / weight(x) for m in powers]
    c, _ = fit(lambda x: (function(x) - leading(x)) / weight(x), basis, low, high, relative=False)
    c = [nearest(value) for value in c]
    error = max_error(lambda x: leading(x) + sum(v * x**m for v, m in zip(c, powers)), function, low, high, points=1000)
    terms = [f"{name}_{k}" + (" r" if m == 1 else f" r^{m}") for k, m in enumerate(powers)]
    if len(terms) > 3:
        terms[2:-1] = [".."]
    formula = " + ".join([lead_text] * (lead_text != "") + terms)
    interval = f"{mp.nstr(low, 4)} <= r <= {mp.nstr(high, 4)}" if low < 0 else f"|r| <= {mp.nstr(mpf(high), 4)}"
    out.comment(f"{text} r = {formula}, {interval}, relative error below {exponent_text(error)}.")
    for k, v in enumerate(c):
        out.constant(f"{name}_{k}", hexadecimal(v), kind)


NOTHING = ("", lambda x: mpf(0))
ONE = ("1", lambda x: mpf(1))
R = ("r", lambda x: x)


class Header:
    """One header of generated data, written to standard output."""

    def __init__(self, name, purpose, program):
        self.guard = f"ORIN_VECTOR_MATH_DATA_{name.upper()}_DATA_H"
        self.space = f"orin::vector_math::{name}_data"
        self.lines = [
            f"// {name}_data.h: {purpose}, made by {program}.",
            "// SPDX-License-Identifier: MIT",
            "// clang-format off",
            f"#ifndef {self.guard}",
            f"#define {self.guard}",
            "",
            f"namespace {self.space} {{",
        ]

    def comment(self, text):
        if not self.lines[-1].startswith("// "):
            self.lines.append("")
        self.lines.append(f"// {text}")

    def constant(self, name, text, kind="double"):
        self.lines.append(f"inline constexpr {kind} {name} = {text};")

    def table(self, name, entries, kind="double", per_line=4):
        self.lines.append(f"alignas(64) inline constexpr {kind} {name}[{len(entries)}] = {{")
        for k in range(0, len(entries), per_line):
            self.lines.append("    " + ", ".join(entries[k : k + per_line]) + ",")
        self.lines.append("};")

    def write(self):
        self.lines += ["", f"}}  // namespace {self.space}", "", "#endif"]
        sys.stdout.write("\n".join(self.lines) + "\n")
