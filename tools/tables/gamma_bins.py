# gamma_bins.py: expansions of log Gamma at the centres of intervals, for the programs that make its tables.
# SPDX-License-Identifier: MIT
"""Centres are 2^e (1 + j/steps), from 2^-5 to 2^10. An interval reaches half way to the neighbouring centres."""

from minimax import mp, mpf

least_exponent, end_exponent = -5, 10
orders = 24  # of Taylor series; what is cut off is below 2^-110 of the whole


def centers(steps):
    middles = [mpf(2) ** e * (1 + mpf(j) / steps) for e in range(least_exponent, end_exponent) for j in range(steps)]
    return middles + [mpf(2) ** end_exponent]


def half_width(center, steps):
    """The larger half: below a power of two the centres are twice as dense."""
    return mpf(2) ** (mp.frexp(center)[1] - 1) / (2 * steps)


def taylor(x):
    """Coefficients of log|Gamma(x + t)| in powers of t, for any x that is no pole."""
    shift = max(0, int(mp.ceil(1 - x)))
    a = [mpf(0) if x in (1, 2) else mp.log(abs(mp.gamma(x))), mp.psi(0, x)]
    for k in range(2, orders):
        a.append((-1) ** k * (mp.zeta(k, x + shift) + sum((x + j) ** -k for j in range(shift))) / k)
    return a


def _residues(degree):
    """For each power k above the degree: coefficients of the interpolant of u^k in the Chebyshev points of [-1, 1]."""
    nodes = [mp.cos(mp.pi * (j + mpf(1) / 2) / (degree + 1)) for j in range(degree + 1)]
    system = mp.matrix([[u**i for i in range(degree + 1)] for u in nodes])
    inverse = system**-1
    return {k: inverse * mp.matrix([u**k for u in nodes]) for k in range(degree + 1, orders)}


_known = {}


def shorten(series, half, degree):
    """The series as a polynomial of the degree, its constant and linear terms kept: what follows is the nearly best
    approximation of the rest over t^2 on |t| <= half. Returns coefficients and the largest error over t^2."""
    short = degree - 2
    if short not in _known:
        _known[short] = _residues(short)
    residues = _known[short]
    scaled = [value * half**k for k, value in enumerate(series[2:])]
    out = []
    for i in range(short + 1):
        value = scaled[i] + sum(scaled[k] * residues[k][i] for k in range(short + 1, len(scaled)))
        out.append(value / half**i)
    error = max(
        abs(sum(c * t**i for i, c in enumerate(out)) - sum(c * t**i for i, c in enumerate(series[2:])))
        for t in (half * mpf(j) / 20 for j in range(-20, 21))
    )
    return series[:2] + out, error


def table(expansions, steps, degree):
    """The rows of coefficients for the expansions at all centres, and the largest error relative to log Gamma."""
    rows, worst = [], mpf(0)
    for center, series in zip(centers(steps), expansions):
        half = half_width(center, steps)
        row, error = shorten(series, half, degree)
        least = abs(row[1]) * half if row[0] == 0 else abs(row[0]) - abs(row[1]) * half  # of log Gamma where |t| = half
        rows.append(row)
        worst = max(worst, error * half**2 / least)
    return rows, worst
