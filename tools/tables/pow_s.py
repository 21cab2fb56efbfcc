# pow_s.py: table and polynomial of the logarithm inside the single-precision power.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/pow_s.py > vector_math/data/pow_s_data.h
from mpmath import mp, mpf

from minimax import Header, exponent_text, fit, hex_double, hex_float, max_error, to_double, to_float

out = Header("pow_s", "table and polynomial of the logarithm inside the single-precision power", "tools/tables/pow_s.py")
scale = 1 / (2 * mp.log(2))

pairs = []
for j in range(96, 193):
    a = mpf(j) / 128
    pairs += [hex_double(to_double(scale / a)), hex_double(to_double(scale * mp.log(a)))]
out.comment("For a = 3/4, 3/4 + 1/128 .. 3/2: 1/(2 a ln 2) and log2(a)/2.")
out.table("logarithms", pairs)


def tail(x):
    """(log(1 + x) - x) / x^2"""
    return sum((-1) ** (n + 1) * x**n / (n + 2) for n in range(60))


h = mpf(4) / 3 / 256
c, _ = fit(tail, [lambda x, m=m: x**m for m in range(3)], -h, h)
q = [to_double(value / scale ** (m + 1)) for m, value in enumerate(c)]
near_one = mpf(2) ** -8
points = [near_one * k / 200 for k in range(-200, 201) if k]
error = max(
    abs(sum(q[m] * (scale * x) ** (m + 2) for m in range(3)) / scale + x - mp.log1p(x)) / abs(mp.log1p(x)) for x in points
)
out.comment(
    f"log2(1 + 2 r ln 2)/2 = r + r^2 (q0 + q1 r + q2 r^2), relative error below {exponent_text(error)} next to 1."
)
for k in range(3):
    out.constant(f"q{k}", hex_double(q[k]))

root = mp.sqrt(mpf(1) / 2)
low, high = root - 1, 2 * root - 1


def ratio(x):
    return mp.log1p(x) / x / mp.log(2) if abs(x) > mpf(2) ** -40 else (1 - x / 2) / mp.log(2)


c, error = fit(ratio, [lambda x, m=m: x**m for m in range(7)], low, high)
out.comment(f"log2(1 + f) = f (ep_0 + ep_1 f + ..), sqrt 1/2 <= 1 + f <= sqrt 2, relative error below {exponent_text(error)}.")
for k, value in enumerate(c):
    out.constant(f"ep_{k}", hex_float(value), "float")


def slope(x):
    return (mpf(2) ** x - 1) / x if abs(x) > mpf(2) ** -40 else mp.log(2)


c, _ = fit(slope, [lambda x, m=m: x**m for m in range(3)], mpf(-1) / 2, mpf(1) / 2)
c = [to_float(value) for value in c]
error = max_error(lambda x: 1 + x * (c[0] + x * (c[1] + x * c[2])), lambda x: mpf(2) ** x, mpf(-1) / 2, mpf(1) / 2)
out.comment(f"2^f = 1 + f (power_1 + power_2 f + power_3 f^2), |f| <= 1/2, relative error below {exponent_text(error)}.")
for k in range(3):
    out.constant(f"power_{k + 1}", hex_float(c[k]), "float")
out.write()
