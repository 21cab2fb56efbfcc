# gamma_d.py: tables and polynomials of the gamma functions in double.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/gamma_d.py > vector_math/data/gamma_d_data.h
from mpmath import mp, mpf

from gamma_bins import centers, shorten, table, taylor
from minimax import Header, exponent_text, hex_double, to_bits, to_double

out = Header("gamma_d", "tables and polynomials of the gamma functions in double", "tools/tables/gamma_d.py")


def pair_row(c):
    """c0 and c1 in two parts each, the first part of c1 of 26 bits; then c2 and so on."""
    short = to_bits(c[1], 26)
    row = [to_double(c[0]), to_double(c[0] - to_double(c[0])), short, to_double(c[1] - short)]
    return [hex_double(value) for value in row + [to_double(value) for value in c[2:]]]


expansions = [taylor(c) for c in centers(32)]
rows, worst = table(expansions, 32, 9)
out.comment("log Gamma(c + t) = c0 + c1 t + .. for c = 2^-5, 2^-5 (1 + 1/32) .. 2^10: c0 and c1 as pairs, c1 high of")
out.comment(f"26 bits, then c2 .. c9. Relative error below {exponent_text(worst)}.")
out.table("ha_rows", [text for row in rows for text in pair_row(row)], per_line=12)
for name, degree in (("la", 9), ("ep", 5)):
    rows, worst = table(expansions[::2], 16, degree)
    out.comment(
        f"The same for c = 2^-5, 2^-5 (1 + 1/16) .. 2^10: c0 .. c{degree}. Relative error below {exponent_text(worst)}."
    )
    out.table(f"{name}_rows", [hex_double(to_double(c)) for row in rows for c in row], per_line=degree + 1)

half = mpf(1) / 128
ratios = []
for k in range(33):
    above, below = taylor(1 + mpf(k) / 64), taylor(1 - mpf(k) / 64)
    ratios.append([-a - (-1) ** i * b for i, (a, b) in enumerate(zip(above, below))])
for name, degree, text in (("sine", 9, "as the first table"), ("short_sine", 5, "c0 .. c5")):
    rows, worst = [], mpf(0)
    for k, series in enumerate(ratios):
        c, error = shorten(series, half, degree)
        c = [value if k > 0 or i % 2 == 0 else mpf(0) for i, value in enumerate(c)]  # at 0 it is even
        worst = max(worst, error * half**2)
        rows += pair_row(c) if name == "sine" else [hex_double(to_double(value)) for value in c]
    out.comment(f"log(sin(pi t)/(pi t)) at t = k/64 + u: {text}. Absolute error below {exponent_text(worst)}.")
    out.table(f"{name}_rows", rows, per_line=len(rows) // 33)

# The zeros of log Gamma(-y) next to the poles: n + t for n = 2, n - t and n + t for n = 3 .. 16.
near = mpf(2) ** -6


def log_abs_gamma(x):
    return mp.log(abs(mp.gamma(x)))


places, rows, worst = [], [], mpf(0)
for n, side in [(2, 1)] + [(n, side) for n in range(3, 17) for side in (-1, 1)]:
    guess = mp.log("0.457") if n == 2 else -mp.log(mp.factorial(n))
    zero = n + side * mp.exp(mp.findroot(lambda u: log_abs_gamma(-(n + side * mp.exp(u))), (guess, guess + 0.01)))
    assert n - mpf(1) / 2 < zero < n + mpf(1) / 2 and abs(log_abs_gamma(-zero)) < mpf(2) ** -150
    series = [(-1) ** k * value for k, value in enumerate(taylor(-zero))]
    series[0] = mpf(0)
    reach = mpf("1.1") * near / abs(series[1])
    assert min(abs(log_abs_gamma(-zero - reach)), abs(log_abs_gamma(-zero + reach))) > near
    c, error = shorten(series, reach, 11)
    worst = max(worst, error * reach / abs(c[1]))
    first = to_double(zero)
    second = to_double(zero - first)
    places += [hex_double(value) for value in (first, second, to_double(zero - first - second), mpf(0))]
    leading = [value for k in (1, 2) for value in (to_double(c[k]), to_double(c[k] - to_double(c[k])))]
    rows += [hex_double(value) for value in leading + [to_double(value) for value in c[3:]] + [mpf(0)]]
out.comment("The zeros z of log Gamma(-y) next to n + t, n = 2, and n - t, n + t, n = 3 .. 16: three parts, 0.")
out.table("zeros", places, per_line=4)
out.comment("log Gamma(-(z + d)) = c1 d + c2 d^2 + .., valid where it is below 2^-6 in magnitude: c1 and c2 as pairs, c3 .. c11, 0.")
out.comment(f"Relative error below {exponent_text(worst)}.")
out.table("zero_rows", rows, per_line=14)

h = mpf(2) ** -5


def short_series(series, first, degree, name, text):
    """Writes the polynomial of the degree nearest to series[first:]."""
    c, error = shorten([mpf(0), mpf(0)] + series[first:], h, degree + 2)
    out.comment(f"{text}, |x| <= 2^-5, absolute error below {exponent_text(error * h)}.")
    for k, value in enumerate(c[2:]):
        out.constant(f"{name}_{k}", hex_double(to_double(value)))


at_one = taylor(mpf(1))
short_series(at_one, 1, 8, "log_near_0", "log Gamma(1 + x) = x (log_near_0_0 + log_near_0_1 x + ..)")
gamma = [mpf(1)]  # by the equation Gamma' = Gamma (log Gamma)'
for k in range(1, len(at_one)):
    gamma.append(sum(j * at_one[j] * gamma[k - j] for j in range(1, k + 1)) / k)
short_series(gamma, 1, 8, "near_0", "Gamma(1 + x) = 1 + x (near_0_0 + near_0_1 x + ..)")

half_log_two_pi = mp.log(2 * mp.pi) / 2
out.comment("log(2 pi)/2.")
out.constant("half_log_two_pi", hex_double(to_double(half_log_two_pi)))
out.write()
