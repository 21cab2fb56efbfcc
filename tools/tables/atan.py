# atan.py: tables and polynomials of the arctangent, both precisions.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/atan.py > vector_math/data/atan_data.h
from mpmath import mp, mpf

from minimax import Header, exponent_text, fit, hex_double, hex_float, max_error, to_double, to_float

out = Header("atan", "tables and polynomials of the arctangent", "tools/tables/atan.py")

# Bins: 32 to each power of two from 2^-7 to 2^6; the first one begins at 0, the last one ends at infinity.
first, last = -7, 6
bins = 32 * (last - first) + 1


def middle(k):
    if k == 0:
        return mpf(0)
    if k == bins - 1:
        return mpf(2) ** (last + 1)
    return mpf(2) ** (first + k // 32) * (1 + (mpf(k % 32) + mpf(1) / 2) / 32)


out.comment("Bins of quotients, 32 to a power of two from 2^-7 to 2^6, the first one from 0 on, the last one to infinity.")
out.constant("first_bin", hex_double(mpf(2) ** first))
out.constant("last_bin", hex_double(mpf(2) ** last))
for suffix, kind, nearest, hexadecimal in (("d", "double", to_double, hex_double), ("s", "float", to_float, hex_float)):
    pairs, rests = [], []
    for k in range(bins):
        c = middle(k)
        high = nearest(mp.atan(c))
        pairs += [hexadecimal(c), hexadecimal(high)]
        rests.append(hexadecimal(nearest(mp.atan(c) - high)))
    out.comment("The middle c of each bin (0 and 128 of the outer ones), of six bits, and atan c.")
    out.table(f"arcs_{suffix}", pairs, kind, per_line=6)
    out.comment("What that leaves of atan c.")
    out.table(f"rests_{suffix}", rests, kind, per_line=6)
    high = nearest(mp.pi)
    out.comment("pi and pi/2 in two parts.")
    for name, value in (("pi", mp.pi), ("half_pi", mp.pi / 2)):
        out.constant(f"{name}_{suffix}", hexadecimal(value), kind)
        out.constant(f"{name}_rest_{suffix}", hexadecimal(value - nearest(value)), kind)


def polynomial(name, powers, bound, nearest, hexadecimal, kind):
    """Fits atan r by r times these even powers of r; where they begin with 2, r alone stands before them."""
    lead = 0 if powers[0] == 0 else 1
    c, _ = fit(
        lambda r: 1 - lead * r / mp.atan(r),
        [lambda r, m=m: r ** (m + 1) / mp.atan(r) for m in powers],
        mpf(2) ** -20,
        bound,
        relative=False,
    )
    c = [nearest(value) for value in c]
    value = lambda r: lead * r + sum(v * r ** (m + 1) for v, m in zip(c, powers))
    error = max_error(value, mp.atan, mpf(2) ** -20, bound, points=1000)
    text = f"r + r^3 ({name}_0 + {name}_1 r^2 + ..)" if lead else f"r ({name}_0 + {name}_1 r^2 + ..)"
    out.comment(f"atan r = {text}, |r| <= {mp.nstr(bound, 4)}, relative error below {exponent_text(error)}.")
    for k, v in enumerate(c):
        out.constant(f"{name}_{k}", hexadecimal(v), kind)


reach = mpf(2) ** -7 * (1 + mpf(1) / 16)
polynomial("ha_d", [2, 4, 6], reach, to_double, hex_double, "double")
polynomial("ep_d", [2], reach, to_double, hex_double, "double")
polynomial("ha_s", [2], reach, to_float, hex_float, "float")
polynomial("la_s", [2, 4, 6, 8, 10, 12, 14], mpf(1), to_float, hex_float, "float")
polynomial("ep_s", [0, 2, 4, 6], mpf(1), to_float, hex_float, "float")
out.write()
