# exp_d.py: tables and polynomials of the double exponential.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/exp_d.py > vector_math/data/exp_d_data.h
from mpmath import mpf, mp

from minimax import Header, exponent_text, hex_double, max_error, to_bits, to_double

ln2 = mp.log(2)
slack = 1 + mpf(2) ** -20  # reduction may leave the interval by its own rounding
out = Header("exp_d", "tables and polynomials of the double exponential", "tools/tables/exp_d.py")

pairs = []
for j in range(64):
    high = to_bits(mpf(2) ** (mpf(j) / 64), 38)
    pairs += [hex_double(high), hex_double(to_double(mpf(2) ** (mpf(j) / 64) - high))]
out.comment("2^(j/64) = high + low: high rounded to 38 bits, low the remainder rounded to double.")
out.table("ha_pairs", pairs, per_line=2)

# e^r as a monic cubic: one multiplication less than with a coefficient of its own, which the table takes over. Taylor's,
# but with the nearest multiple of r^2 in the place of r^4/24; e^0 is 1.
h = ln2 / 2048 * slack
la = [mpf(6), mpf(6), to_double(3 + (mp.sqrt(2) - 1) * h**2 / 2)]
s = mpf(1) / 6
assert float(to_double(s)) * 6.0 == 1.0
error = max_error(lambda x: s * (((x + la[2]) * x + la[1]) * x + la[0]), mp.exp, -h, h)
out.comment(f"e^r = (((r + la_2) r + la_1) r + la_0)/6, |r| <= ln2/2048, relative error below {exponent_text(error)}.")
for k in range(3):
    out.constant(f"la_{k}", hex_double(la[k]))
out.comment("2^(j/1024)/6, nearest.")
out.table("la_powers", [hex_double(to_double(s * mpf(2) ** (mpf(j) / 1024))) for j in range(1024)])

# 2^(2u) = s (w^2 + b) with w = u + 369/512: the square of e^(r/2) sqrt 2 would ask for the shift 1/(2 ln2), of which
# 369/512 is the nearest that the shifter can carry. 2^0 is 1.
h = mpf(2) ** -10 * slack
shift = mpf(369) / 512
power = lambda x: mpf(2) ** (2 * x)
a = 2 * ln2
s = to_double((a + a**3 * h**2 / 8) / (2 * shift))  # a u + (a u)^3/6 by Chebyshev's cubic; what remains is even
while float(s) * (1 / float(s)) != 1:
    s += mpf(2) ** -53
b = mpf(1 / float(s)) - shift**2
assert float(s) * (float(shift) ** 2 + float(b)) == 1
error = max_error(lambda x: s * ((x + shift) ** 2 + b), power, -h, h)
out.comment(f"2^(2u) = s ((u + 369/512)^2 + ep_0), |u| <= 1/1024, relative error below {exponent_text(error)}.")
out.constant("ep_0", hex_double(b))
out.constant("ep_shift", hex_double(shift))
out.comment("s 2^(j/256), nearest.")
out.table("ep_powers", [hex_double(to_double(s * mpf(2) ** (mpf(j) / 256))) for j in range(256)])
out.write()
