# exp_s.py: tables and polynomials of the single-precision exponential.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/exp_s.py > vector_math/data/exp_s_data.h
from mpmath import mp, mpf

from minimax import Header, exponent_text, fit, hex_float, max_error, to_bits, to_float

ln2 = mp.log(2)
slack = 1 + mpf(2) ** -10  # reduction may leave the interval by its own rounding
out = Header("exp_s", "tables and polynomials of the single-precision exponential", "tools/tables/exp_s.py")

step = ln2 / 256
high = to_bits(step, 9)
low = step - high
out.comment("ln2/256 in two parts. The first has 9 bits, so its product with n is exact for |n| < 2^15; the second happens to")
out.comment(f"be {exponent_text(abs(low) / step)} of it, so the rounding of its product is that small, too.")
out.constant("step_high", hex_float(high), "float")
out.constant("step_low", hex_float(low), "float")

pairs = []
for j in range(256):
    power = mpf(2) ** (mpf(j) / 256)
    pairs += [hex_float(power), hex_float((power - to_float(power)) / to_float(power))]
out.comment("2^(j/256) = T (1 + tail): T nearest, then the tail.")
out.table("ha_pairs", pairs, "float")

h = step / 2 * slack
# Even part r^2/2; odd part r + r^3/6, whose nearest multiple of r on the interval is r (1 + h^2/8) by Chebyshev's cubic.
ha = [to_float(1 + h**2 / 8), to_float(mpf(1) / 2)]
error = max_error(lambda x: 1 + x * (ha[0] + ha[1] * x), mp.exp, -h, h)
out.comment(f"e^r - 1 = r (ha_1 + ha_2 r), |r| <= ln2/512, error below {exponent_text(error)}.")
for k in range(2):
    out.constant(f"ha_{k + 1}", hex_float(ha[k]), "float")

# e^r = s (w^2 + b), w = r + shift: Taylor's parabola asks for a shift of 1; 368 steps, the next below 369, keep
# w below 1, where its roundings are half as large.
shift = 368 * step
c, _ = fit(mp.exp, [lambda x: mpf(1), lambda x: (x + shift) ** 2], -h, h)
b = to_float(c[0] / c[1])
error = max_error(lambda x: c[1] * ((x + shift) ** 2 + b), mp.exp, -h, h)
out.comment(f"e^r = s ((r + 368 ln2/256)^2 + la_0), |r| <= ln2/512, relative error below {exponent_text(error)}.")
out.constant("la_0", hex_float(b), "float")
out.comment("s 2^(j/256), nearest.")
out.table("la_powers", [hex_float(c[1] * mpf(2) ** (mpf(j) / 256)) for j in range(256)], "float")

h = slack / 2
power = lambda x: mpf(2) ** x
# 2^0 is 1. Odd part by Chebyshev's polynomial of degree 5, even part by the nearest multiple of y^2 to y^4, y = f ln2.
y2 = (h * ln2) ** 2
c = [1, 1 - 5 * y2**2 / 16 / 120, mpf(1) / 2 + (mp.sqrt(2) - 1) * y2 / 12, mpf(1) / 6 + 5 * y2 / 4 / 120]
ep = [to_float(value * ln2**m) for m, value in enumerate(c)]
error = max_error(lambda x: sum(value * x**m for m, value in enumerate(ep)), power, -h, h)
out.comment(f"2^f = ep_0 + ep_1 f + ep_2 f^2 + ep_3 f^3, |f| <= 1/2, relative error below {exponent_text(error)}.")
for k in range(4):
    out.constant(f"ep_{k}", hex_float(ep[k]), "float")
out.write()
