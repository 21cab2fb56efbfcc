# roots.py: the polynomials of inverse square and cube roots.
# SPDX-License-Identifier: MIT
"""Prints vector_math/data/roots_data.h.

The seed y of x^(-1/n) comes from the bits of x taken as a logarithm: bits y = seed - (bits x)/n. e = 1 - x y^n then
lies in a range that this program finds, and x^(-1/n) = y (1 - e)^(-1/n).

    python3 tools/tables/roots.py > vector_math/data/roots_data.h
"""

import math
import struct

from minimax import Header, exponent_text, fit, hex_double, max_error, mp, mpf, to_double


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


def monic_square(header):
    """The seed y of x^(-1/2), some way off, from which z^2 + c z + c', z = x y^2, leads to it: no coefficient before z^2."""

    def cubic_fit(offset):
        errors = seed_errors(2, offset)
        low, high = mpf(0.999 * (1 - errors[1])), mpf(1.001 * (1 - errors[0]))
        return fit(lambda z: z ** (-mpf(1) / 2), powers[:3], low, high) + (low, high)

    below, above = -0.5, -0.2
    for _ in range(30):
        offset = (below + above) / 2
        if cubic_fit(offset)[0][2] > 1:
            below = offset
        else:
            above = offset
    (c0, c1, c2), error, low, high = cubic_fit(offset)
    assert abs(c2 - 1) < 1e-8
    header.comment(f"bits y = seed - (bits x)/2: then z = x y^2 lies in [{mp.nstr(low, 4)}, {mp.nstr(high, 4)}], and")
    header.comment(f"z^(-1/2) = monic_0 + monic_1 z + z^2, relative error {exponent_text(error)}.")
    for kind, bias, fraction in (("s", 127, 23), ("d", 1023, 52)):
        seed = int(mp.nint((mpf(offset) + bias * mpf(3) / 2) * 2**fraction))
        header.constant(f"monic_seed_{kind}", hex(seed), "int" if kind == "s" else "long long")
    header.constant("monic_0", hex_double(to_double(c0)))
    header.constant("monic_1", hex_double(to_double(c1)))


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
            coefficients, error = fit(lambda e: (1 - e) ** (-mpf(numerator) / n), powers[:3], low, high)
            header.comment(f"(1 - e)^(-{numerator}/{n}) there, relative error {exponent_text(error)}.")
            for k, c in enumerate(coefficients):
                header.constant(f"{name}_{numerator}_{k}", hex_double(to_double(c)))

        if n == 2:
            monic_square(header)
        else:
            polynomial(1)
            polynomial(2)
            for numerator in (1, 2):
                enhanced(header, numerator, seed)
    header.write()


def enhanced(header, numerator, seed):
    """The corrections by which a seed of x^(-1/3) comes near s x^(-1/3), and the polynomial in z = x y^3 that takes it from
    there; s is such that the leading coefficient of the polynomial is 1."""
    power = -mpf(numerator) / 3
    middle = (power * (power - 1) / 2) ** (1 / (2 - power))
    cells = [[] for _ in range(256)]
    for k in range(24000):
        x = 8 ** (1 + k / 24000)
        bits = seed - (double_bits(x) >> 32) * 0x55555556
        cells[bits >> 44 & 255].append((x, bits))
    corrections, reach = [], 0
    for cell in cells:
        errors = lambda correction: [x * double_of(bits + correction) ** 3 / float(middle) - 1 for x, bits in cell]
        correction = 0
        for _ in range(12):
            error = (min(errors(correction)) + max(errors(correction))) / 2
            y = double_of(cell[0][1] + correction)
            correction += double_bits(y * (1 - error / 3)) - double_bits(y)
        corrections.append(correction)
        reach = max([reach] + [abs(error) for error in errors(correction)])
    reach = mpf(1.002 * reach)
    low, high = middle * (1 - reach), middle * (1 + reach)
    # z^power - z^2 has no curvature in the middle: the straight line through its values next to the ends, at the outer
    # zeros of Chebyshev's third polynomial, is the nearest one.
    left, right = (middle * (1 + sign * reach * mp.sqrt(3) / 2) for sign in (-1, 1))
    rest = lambda z: z**power - z * z
    slope = (rest(right) - rest(left)) / (right - left)
    coefficients = [to_double(rest(left) - slope * left), to_double(slope)]
    error = max_error(lambda z: coefficients[0] + z * (coefficients[1] + z), lambda z: z**power, low, high)
    header.comment(
        f"What is added to the bits y, by bits 44 to 51 of these: then z = x y^3 is within {mp.nstr(reach, 3)} of "
        f"{mp.nstr(middle, 6)}, relative."
    )
    header.comment(f"z^(-{numerator}/3) = enhanced_{numerator}_0 + enhanced_{numerator}_1 z + z^2, relative error {exponent_text(error)}.")
    header.table(f"cube_corrections_{numerator}", [str(correction) for correction in corrections], per_line=6, kind="long long")
    for k, c in enumerate(coefficients):
        header.constant(f"enhanced_{numerator}_{k}", hex_double(c))
    coefficients, error = fit(lambda z: z**power, powers, low, high)
    header.comment(f"z^(-{numerator}/3) = fine_{numerator}_0 + .. + fine_{numerator}_3 z^3 there, relative error {exponent_text(error)}.")
    for k, c in enumerate(coefficients):
        header.constant(f"fine_{numerator}_{k}", hex_double(to_double(c)))


def double_bits(x):
    return struct.unpack("<q", struct.pack("<d", x))[0]


def double_of(bits):
    return struct.unpack("<d", struct.pack("<q", bits))[0]


powers = [lambda e, k=k: mpf(e) ** k for k in range(4)]
main()
