# roots.py: the polynomials of inverse square and cube roots.
# SPDX-License-Identifier: MIT
"""Prints vector_math/data/roots_data.h.

The seed y of x^(-1/n) comes from the bits of x taken as a logarithm: bits y = seed - (bits x)/n. e = 1 - x y^n then
lies in a range that this program finds, and x^(-1/n) = y (1 - e)^(-1/n).

    python3 tools/tables/roots.py > vector_math/data/roots_data.h
"""

import math

from minimax import Header, exponent_text, fit, hex_double, mp, mpf, to_double


def seed_value(n, offset, x):
    """y for 1 <= x < 2^n, the logarithm taken as exponent + fraction."""
    exponent = math.floor(math.log2(x))
    v = offset - (exponent + x / 2.0**exponent - 1) / n
    whole = math.floor(v)
    return 2.0**whole * (1 + v - whole)


def seed_errors(n, offset, points=3000):
    xs = [2 ** (n * k / points) for k in range(points)] + [2.0**k for k in range(n)]
    errors = [1 - x * seed_value(n, offset, x) ** n for x in xs]
    return min(errors), max(errors)


def best_offset(n):
    """The offset with the smallest largest |e|, by ternary search."""
    low, high = -0.2, 0.1
    for _ in range(40):
        first, second = low + (high - low) / 3, high - (high - low) / 3
        if max(map(abs, seed_errors(n, first))) < max(map(abs, seed_errors(n, second))):
            high = second
        else:
            low = first
    return (low + high) / 2


def main():
    header = Header("roots", "seeds and polynomials of inverse square and cube roots", "tools/tables/roots.py")
    for n, name in ((2, "square"), (3, "cube")):
        offset = best_offset(n)
        low, high = seed_errors(n, offset)
        low, high = 1.01 * low, 1.01 * high
        header.comment(f"bits y = seed - (bits x)/{n}: then e = 1 - x y^{n} lies in [{low:.4f}, {high:.4f}].")
        for kind in "sd":
            bias, fraction = (127, 23) if kind == "s" else (1023, 52)
            seed = int(mp.nint((mpf(offset) + bias * (1 + mpf(1) / n)) * 2**fraction))
            header.constant(f"{name}_seed_{kind}", hex(seed), "int" if kind == "s" else "long long")

        def polynomial(numerator):
            coefficients, error = fit(lambda e: (1 - e) ** (-mpf(numerator) / n), powers, low, high)
            header.comment(f"(1 - e)^(-{numerator}/{n}) there, relative error {exponent_text(error)}.")
            for k, c in enumerate(coefficients):
                header.constant(f"{name}_{numerator}_{k}", hex_double(to_double(c)))

        polynomial(1)
        if n == 3:
            polynomial(2)
    header.write()


powers = [lambda e, k=k: mpf(e) ** k for k in range(3)]
main()
