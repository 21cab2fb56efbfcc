# tangent_d.py: tables and polynomials of the double tangent.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/tangent_d.py > vector_math/data/tangent_d_data.h
from mpmath import mp, mpf

from minimax import Header, exponent_text, fit, hex_double, max_error, to_bits, to_double

out = Header("tangent_d", "tables and polynomials of the double tangent", "tools/tables/tangent_d.py")


def quotient(j, size):
    """tan a = s/c, a = pi j/size, the larger of the two 1."""
    if 4 * j <= size:
        return (mp.tan(mp.pi * j / size) if j else mpf(0)), mpf(1)
    if 4 * j < 3 * size:
        return mpf(1), (mp.cot(mp.pi * j / size) if 2 * j != size else mpf(0))
    return mp.tan(mp.pi * j / size), mpf(1)


def text(x):
    return hex_double(x) if x != 0 else "-0.0"


entries = []
for j in range(64):
    for value in quotient(j, 64):
        high = to_bits(value, 27)
        entries += [text(high), hex_double(to_double(value - high))]
out.comment("tan a = S/C for a = pi j/64, the larger of the two 1; each as its first 27 bits and the rest. 0 is -0: -0 + x = x.")
out.table("ha_table", entries)

entries = [text(to_double(mp.tan(mp.pi * j / 256))) for j in range(256)]
entries[0], entries[128] = "-0.0", hex_double(mpf(2) ** 200)
out.comment("T = tan a for a = pi j/256, nearest. 0 is -0. At the pole T = 2^200: (T + t)/(1 - T t) = -1/t there for all t from")
out.comment("2^-62 on, where no double's is smaller.")
out.table("tangents", entries)


TAYLOR = mp.taylor(mp.tan, 0, 41)


def tail(x):
    """(tan x - x)/x^3"""
    return sum(TAYLOR[n] * x ** (n - 3) for n in range(3, 42, 2))


for name, size, count in (("ha", 128, 4), ("la", 512, 2), ("ep", 512, 1)):
    h = mp.pi / size * (1 + mpf(2) ** -20)
    weight = lambda x: x * x / (1 + x * x * tail(x))
    basis = [lambda x, m=m: weight(x) * x ** (2 * m) for m in range(count)]
    c, _ = fit(lambda x: weight(x) * tail(x), basis, h / 4, h, relative=False)
    c = [to_double(value) for value in c]
    error = max_error(
        lambda x: 1 + x * x * sum(value * x ** (2 * m) for m, value in enumerate(c)),
        lambda x: 1 + x * x * tail(x), 0, h,
    )
    out.comment(f"tan r = r + r^3 ({name}_0 + {name}_1 r^2 + ..), |r| <= pi/{size}, relative error below {exponent_text(error)}.")
    for k, value in enumerate(c):
        out.constant(f"{name}_{k}", hex_double(value))
out.write()
