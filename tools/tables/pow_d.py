# pow_d.py: table and polynomial of the exponential inside the double power.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/pow_d.py > vector_math/data/pow_d_data.h
from mpmath import mp, mpf

from minimax import Header, exponent_text, fit, hex_double, max_error, to_bits, to_double

out = Header("pow_d", "table and polynomial of the exponential inside the double power", "tools/tables/pow_d.py")
step = mp.log(2) / 256
high = to_bits(step, 33)
out.comment("ln2/256 in two parts, the first of 33 bits: its products with n below 2^19 are exact.")
out.constant("step_high", hex_double(high))
out.constant("step_low", hex_double(to_double(step - high)))

pairs = []
for j in range(256):
    power = mpf(2) ** (mpf(j) / 256)
    pairs += [hex_double(to_double(power)), hex_double(to_double(power - to_double(power)))]
out.comment("2^(j/256): nearest, then the rest.")
out.table("powers", pairs)

h = step / 2 * mpf("1.25")  # the rest of the exponent, added after rounding, may reach 2^-11


def tail(x):
    """(e^x - 1 - x) / x^2"""
    return sum(x**n / mp.factorial(n + 2) for n in range(30))


c, _ = fit(tail, [lambda x, m=m: x**m for m in range(4)], -h, h)
c = [to_double(value) for value in c]
error = max_error(lambda x: 1 + x + x * x * (c[0] + x * (c[1] + x * (c[2] + x * c[3]))), mp.exp, -h, h)
out.comment(f"e^r = 1 + r + r^2 (c2 + c3 r + c4 r^2 + c5 r^3), |r| <= 1.25 ln2/512, relative error below {exponent_text(error)}.")
for k in range(4):
    out.constant(f"c{k + 2}", hex_double(c[k]))

# 2^(2u) = s (w^2 + b), w = u + 369/512, as in exp_d.py, with s 2^(j/256) made exactly 1/(w^2 + b) at u = j = 0: the
# power of 0 is 1.
h = mpf(2) ** -10 * (1 + mpf(2) ** -12)
shift = mpf(369) / 512
c, _ = fit(lambda x: mpf(4) ** x, [lambda x: mpf(1), lambda x: (x + shift) ** 2], -h, h)
square = float(shift) ** 2
b = next(
    b for b in (float(c[0] / c[1]) + k * 2.0**-53 for k in range(1000)) if 1 / (square + b) * (square + b) == 1
)
s = mpf(1 / (square + b))
error = max_error(lambda x: s * ((x + shift) ** 2 + mpf(b)), lambda x: mpf(4) ** x, -h, h)
out.comment(f"2^(2u) = s ((u + 369/512)^2 + ep_b), |u| <= 1/1024, relative error below {exponent_text(error)}; s 2^(j/256).")
out.constant("ep_b", hex_double(b))
out.constant("ep_shift", hex_double(shift))
out.table("ep_powers", [hex_double(to_double(s * mpf(2) ** (mpf(j) / 256))) for j in range(256)])
out.write()
