# rational.py: best approximation by a quotient of polynomials.
# SPDX-License-Identifier: MIT
"""Remez' exchange for p - f q relative to f q, with q in the denominator from the round before."""

from mpmath import mp, mpf

from minimax import fit


def fit_quotient(f, top, bottom, low, high, rounds=6):
    """Coefficients of p and q (q's first is 1) of these degrees: p/q nearest to f on [low, high], relatively."""
    values = {}

    def cached(x):
        if x not in values:
            values[x] = f(x)
        return values[x]

    q = [mpf(1)]
    for _ in range(rounds):
        weight = lambda x, q=q: 1 / mp.polyval(q[::-1], x)
        basis = [lambda x, k=k: x**k * weight(x) / cached(x) for k in range(top + 1)]
        basis += [lambda x, k=k: -(x**k) * weight(x) for k in range(1, bottom + 1)]
        c, _ = fit(weight, basis, low, high, relative=False, rounds=8)
        p, q = c[: top + 1], [mpf(1)] + c[top + 1 :]
    return p, q
