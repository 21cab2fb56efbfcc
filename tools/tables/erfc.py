# erfc.py: polynomials of the tails of the error function and of the normal distribution.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/erfc.py > vector_math/data/erfc_data.h
from mpmath import mp, mpf

from minimax import Header, exponent_text, fit, hex_double, hex_float, max_error, to_bits, to_double
from piecewise import Cells, double_rows, leading_bits_cells

out = Header("erfc", "polynomials of the tails of the error function and of the normal distribution", "tools/tables/erfc.py")
mp.prec = 140


def scaled_erfc(y):
    return mp.exp(y * y) * mp.erfc(y)


def scaled_normal(y):
    return scaled_erfc(y / mp.sqrt(2)) / 2


def least(f, bound, digits, low, high):
    """The least number of so many bits with f < bound, f decreasing."""
    low, high = mpf(low), mpf(high)
    unit = mpf(2) ** (mp.floor(mp.log(low, 2)) - digits + 1)
    a, b = int(low / unit), int(high / unit)
    while b - a > 1:
        middle = (a + b) // 2
        a, b = (a, middle) if f(middle * unit) < bound else (middle, b)
    return b * unit


def tail(space, name, text, factor, ends):
    """Tables of g, g e^(-factor y^2) being the tail; `ends` the largest y of double and of float."""
    f = lambda u: name(u - 1)

    def polynomials(per_octave, degree, last):
        cells = [(c, max(low, mpf(1)), high) for c, low, high in leading_bits_cells(1, last + 1, per_octave)]
        out.comment(f"{text}, 1 + y = c + t, c of {per_octave} in an octave, y up to {last}: polynomials of degree {degree} in t;")
        return Cells(f, cells, degree)

    out.lines += ["", f"namespace {space} {{"]
    fine = polynomials(32, 8, ends[0])
    out.comment(f"{fine.error_text()}. c0 in two parts, the first of 26 bits.")
    rows = [[to_bits(row[0], 26), row[0] - to_bits(row[0], 26)] + row[1:] for row in fine.rows]
    out.table("fine", double_rows(rows), "double", 10)
    medium = polynomials(64, 3, ends[0])
    out.comment(f"{medium.error_text()}.")
    out.table("medium", double_rows(medium.rows), "double", 4)
    whole = lambda y: name(y) * mp.exp(-factor * y * y)
    pairs = []
    for k in range(int(64 * ends[1]) + 1):
        y = mpf(k) / 64
        density = 2 * factor * name(0) * mp.exp(-factor * y * y) / mp.sqrt(mp.pi * factor)
        pairs += [hex_float(whole(y)), hex_float(density)]
    out.comment(f"The tail and its decrease, at the multiples of 1/64 up to {ends[1]}.")
    out.table("single_pairs", pairs, "float", 6)
    out.comment("From here on the tail is subnormal, in double and in float.")
    out.constant("subnormal_d", hex_double(least(whole, mpf(2) ** -1022, 53, 16.5 if factor == 1 else 32.5, ends[0])))
    out.constant("subnormal_s", hex_float(least(whole, mpf(2) ** -126, 24, 8.5, 15)), "float")
    out.lines += ["", f"}}  // namespace {space}"]


step = mp.log(2) / 128
high = to_bits(step, 34)
out.comment("ln2/128 in two parts. The first has 34 bits, so its product with n is exact for |n| < 2^19.")
out.constant("step_high", hex_double(high))
out.constant("step_low", hex_double(to_double(step - high)))
high = to_bits(step / 8, 31)
out.comment("ln2/1024 in two parts. The first has 31 bits, so its product with n is exact for |n| < 2^22.")
out.constant("la_step_high", hex_double(high))
out.constant("la_step_low", hex_double(to_double(step / 8 - high)))
h = step / 2 * (1 + mpf(2) ** -20)
c, _ = fit(lambda r: (mp.exp(r) - 1 - r) / r**2 if abs(r) > mpf(2) ** -40 else 1 / mpf(2) + r / 6, [lambda r, m=m: r**m for m in range(4)], -h, h)
c = [to_double(value) for value in c]
error = max_error(lambda r: 1 + r + r**2 * mp.polyval(c[::-1], r), mp.exp, -h, h)
out.comment(f"e^r = 1 + r + r^2 (p2 + .. p5 r^3), |r| <= ln2/256, relative error below {exponent_text(error)}.")
for k in range(4):
    out.constant(f"p{k + 2}", hex_double(c[k]))
pairs = []
for j in range(128):
    power = mpf(2) ** (mpf(j) / 128)
    high = to_bits(power, 26)
    pairs += [hex_double(high), hex_double(to_double(power - high))]
out.comment("2^(j/128) = high + low, high of 26 bits.")
out.table("powers", pairs, per_line=4)

tail("erfc_tail", scaled_erfc, "erfc(y) e^(y^2)", 1, (28, mpf(9)))
tail("normal_tail", scaled_normal, "cdf(-y) e^(y^2/2)", mpf(1) / 2, (39, mpf(25) / 2))
out.write()
