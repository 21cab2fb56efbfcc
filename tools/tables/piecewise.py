# piecewise.py: one polynomial for each cell of an axis.
# SPDX-License-Identifier: MIT
"""Interpolation at Chebyshev's points of every cell, nearly the best, and the rows of coefficients for the headers."""

from mpmath import mp, mpf

from minimax import exponent_text, hex_double, hex_float, to_bits, to_double

mp.prec = 140


def interpolate(f, centre, low, high, degree):
    """Coefficients of the powers of x - centre. Where f is 0 at the centre, so is the polynomial."""
    zero = f(centre) == 0
    count = degree + (0 if zero else 1)
    middle, half = (low + high) / 2, (high - low) / 2
    nodes = [middle - half * mp.cos(mp.pi * (2 * k + 1) / (2 * count)) - centre for k in range(count)]
    values = [f(centre + t) / t if zero else f(centre + t) for t in nodes]
    # Newton's divided differences, then the powers.
    for step in range(1, count):
        for k in range(count - 1, step - 1, -1):
            values[k] = (values[k] - values[k - 1]) / (nodes[k] - nodes[k - step])
    powers = [mpf(0)] * count
    for k in range(count - 1, -1, -1):
        powers = [(powers[m - 1] if m > 0 else mpf(0)) - nodes[k] * powers[m] for m in range(count)]
        powers[0] += values[k]
    return ([mpf(0)] if zero else []) + powers


def cell_error(f, centre, low, high, coefficients, scale=None):
    """Largest error between and beside the nodes, relative to f, or to `scale` where it is given."""
    count = 2 * len(coefficients) + 1
    worst = mpf(0)
    for k in range(count + 1):
        x = low + (high - low) * k / count
        value = f(x)
        if value == 0:
            continue
        error = mp.polyval(coefficients[::-1], x - centre) - value
        worst = max(worst, abs(error / (value if scale is None else scale(x))))
    return worst


def leading_bits_cells(first, last, per_octave):
    """(centre, low, high) of the numbers that round to the same leading bits, from `first` to `last`, both centres."""
    cells, centre = [], mpf(first)
    while centre <= last:
        exponent = mp.floor(mp.log(centre, 2) + mpf(2) ** -40)
        step = mpf(2) ** exponent / per_octave
        below = step / 2 if centre == mpf(2) ** exponent else step
        cells.append((centre, centre - below / 2, centre + step / 2))
        centre += step
    return cells


class Cells:
    """The polynomials of all cells, with their error relative to f or `scale`."""

    def __init__(self, f, cells, degree, scale=None):
        self.rows, self.error = [], mpf(0)
        for centre, low, high in cells:
            row = interpolate(f, centre, low, high, degree)
            self.rows.append(row)
            self.error = max(self.error, cell_error(f, centre, low, high, row, scale))

    def error_text(self):
        return f"relative error below {exponent_text(self.error)}"


def cut(x):
    """The leading 26 bits of a double."""
    x = to_double(x)
    if x == 0:
        return x
    unit = mpf(2) ** (mp.floor(mp.log(abs(x), 2) + mpf(2) ** -70) - 25)
    return mp.sign(x) * mp.floor(abs(x) / unit) * unit


def double_rows(rows):
    return [hex_double(to_double(c)) for row in rows for c in row]


def float_rows(rows):
    return [hex_float(c) for row in rows for c in row]


def rows_with_rests(rows):
    """Each row, then the rest of c0, and of c1 what its leading 26 bits leave."""
    return double_rows(row + [row[0] - to_double(row[0]), row[1] - cut(row[1])] for row in rows)
