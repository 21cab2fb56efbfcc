# log_s.py: polynomials of the single-precision logarithm.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/log_s.py > vector_math/data/log_s_data.h
from mpmath import mp, mpf

from minimax import Header, exponent_text, fit, hex_float, to_bits, to_float

out = Header("log_s", "polynomials of the single-precision logarithm", "tools/tables/log_s.py")
third = mpf(1) / 3
ln10 = mp.log(10)


def log_tail(power):
    """(log(1 + x) - (its Taylor polynomial below x^power)) / x^power."""

    def value(x):
        if abs(x) < mpf(2) ** -40:
            return mpf((-1) ** (power + 1)) / power
        return (mp.log1p(x) - sum((-1) ** (n + 1) * x**n / n for n in range(1, power))) / x**power

    return value


def polynomial(name, power, degree, low, high, interval):
    target = log_tail(power)
    c, _ = fit(target, [lambda x, m=m: x**m for m in range(degree + 1)], low, high)
    c = [to_float(value) for value in c]
    points = [low + (high - low) * k / 600 for k in range(601)]
    worst = max(
        abs((sum(value * x**m for m, value in enumerate(c)) - target(x)) * x**power / mp.log1p(x)) for x in points if x
    )
    first = {1: "", 2: "f + ", 3: "f - f^2/2 + "}[power]
    out.comment(
        f"log(1 + f) = {first}f^{power} ({name}_0 + {name}_1 f + ..), {interval}, "
        f"relative error below {exponent_text(worst)}."
    )
    for base, scale in (("", mpf(1)),) if power == 3 else (("", mpf(1)), ("10", 1 / ln10)):
        if base:
            out.comment("The same over ln 10.")
        for k, value in enumerate(c):
            out.constant(f"{name}{base}_{k}", hex_float(value * scale), "float")


polynomial("ha", 3, 8, -third, third, "|f| <= 1/3")
root = mp.sqrt(mpf(1) / 2)
polynomial("la", 2, 7, root - 1, 2 * root - 1, "sqrt 1/2 <= 1 + f <= sqrt 2")
polynomial("ep", 1, 3, root - 1, 2 * root - 1, "sqrt 1/2 <= 1 + f <= sqrt 2")
polynomial("part", 1, 4, root - 1, 2 * root - 1, "sqrt 1/2 <= 1 + f <= sqrt 2")

for base, value in (("", mp.log(2)), ("10", mp.log10(2))):
    high = to_bits(value, 14)
    out.comment(f"log{base} 2, nearest, and in two parts, the first of 14 bits: its products with k are exact.")
    out.constant(f"two{base}", hex_float(value), "float")
    out.constant(f"two_high{base}", hex_float(high), "float")
    out.constant(f"two_low{base}", hex_float(value - high), "float")
high = to_bits(1 / ln10, 12)
out.comment("1/ln 10, nearest, and in two parts, the first of 12 bits.")
out.constant("inverse_ln10", hex_float(1 / ln10), "float")
out.constant("inverse_ln10_high", hex_float(high), "float")
out.constant("inverse_ln10_low", hex_float(1 / ln10 - high), "float")
out.write()
