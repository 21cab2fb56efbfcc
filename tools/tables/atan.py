# atan.py: tables and polynomials of the arctangent, both precisions.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/atan.py > vector_math/data/atan_data.h
from mpmath import mp, mpf

from minimax import FORMATS, NOTHING, R, Header, exponent_text, hex_double, max_error, to_double, write_fit

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


out.comment("Bins of quotients, 32 to a power of two from 2^-7 to 2^6; the first one from 0 on, the last one to infinity.")
out.constant("first_bin", hex_double(mpf(2) ** first))
out.constant("last_bin", hex_double(mpf(2) ** last))
for suffix, kind in (("d", "double"), ("s", "float")):
    nearest, hexadecimal = FORMATS[kind]
    pairs, rests = [], []
    for k in range(bins):
        c = middle(k)
        high = nearest(mp.atan(c))
        pairs += [hexadecimal(c), hexadecimal(high)]
        rests.append(hexadecimal(nearest(mp.atan(c) - high)))
    out.comment("The middle c of each bin (0 and 128 of the outer ones), of seven bits, and atan c.")
    out.table(f"arcs_{suffix}", pairs, kind, per_line=6)
    out.comment("What that leaves of atan c.")
    out.table(f"rests_{suffix}", rests, kind, per_line=6)

# Cubics for EP of double, on both sides of the multiples of 1/64, through the values at Chebyshev's points; the one at
# 0 is odd.
linear, bent, errors = [], [], []
h = mpf(1) / 128
for j in range(65):
    c = mpf(j) / 64
    powers = [0, 1, 2, 3] if j > 0 else [1, 3]
    nodes = [h * mp.cos(mp.pi * (2 * k + 1) / 8) for k in range(len(powers))]
    solution = mp.lu_solve(
        mp.matrix([[d**m for m in powers] for d in nodes]), mp.matrix([mp.atan(c + d) for d in nodes])
    )
    a = [mpf(0)] * 4
    for m, value in zip(powers, solution):
        a[m] = to_double(value)
    cubic = lambda d: sum(v * d**m for m, v in enumerate(a))
    errors.append(max_error(cubic, lambda d: mp.atan(c + d), -h if j > 0 else mpf(2) ** -30, h, 200))
    linear += [hex_double(value) for value in a[:2]]
    bent += [hex_double(value) for value in a[2:]]
out.comment("atan(j/64 + d) = a + b d + p d^2 + q d^3 for j = 0 .. 64, |d| <= 1/128: a and b, and p and q.")
out.comment(f"Relative error below {exponent_text(max(errors))}.")
out.table("cubics_linear", linear)
out.table("cubics_bent", bent)

reach = mpf(2) ** -7 * (1 + mpf(1) / 16)
write_fit(out, mp.atan, "atan", R, "ha_d", [3, 5, 7], 0, reach, "double")
write_fit(out, mp.atan, "atan", R, "ep_d", [3], 0, reach, "double")
write_fit(out, mp.atan, "atan", R, "ha_s", [3], 0, reach, "float")
write_fit(out, mp.atan, "atan", R, "la_s", [3, 5, 7, 9, 11, 13, 15], 0, mpf(1), "float")
write_fit(out, mp.atan, "atan", NOTHING, "ep_s", [1, 3, 5, 7], 0, mpf(1), "float")
out.write()
