# asin.py: tables and polynomials of the arcsine and arccosine, both precisions.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/asin.py > vector_math/data/asin_data.h
from mpmath import mp, mpf

from minimax import FORMATS, NOTHING, R, Header, hex_double, to_double, write_fit

out = Header("asin", "tables and polynomials of the arcsine and arccosine", "tools/tables/asin.py")

# Bins: 16 to a power of two of w = 1 - y from 2^-15 on, and from row 256 on 32 to a power of two of y from 2^-7 on;
# each series begins at 0. They meet at y = split.
split = mpf(7) / 10
first_w, first_y = -15, -7


def in_bin(k, first, bins):
    return mpf(2) ** (first + k // bins) * (1 + (mpf(k % bins) + mpf(1) / 2) / bins) if k > 0 else mpf(0)


upper = [1 - w for w in (in_bin(k, first_w, 16) for k in range(256)) if w < 1 - split + mpf(1) / 64]
lower = [y for y in (in_bin(k, first_y, 32) for k in range(256)) if y < split + mpf(1) / 64]
out.comment("Bins of y up to 0.7, 32 to a power of two from 2^-7 on, and above of 1 - y, 16 to a power of two from 2^-15")
out.comment("on; the first ones from 0 on. Rows: those of 1 - y, a gap, from row 256 on those of y.")
out.constant("split", hex_double(to_double(split)))
out.constant("first_y", hex_double(mpf(2) ** first_y))
out.constant("first_w", hex_double(mpf(2) ** first_w))
sines = upper + [mpf(1) / 2] * (256 - len(upper)) + lower
for suffix, kind in (("d", "double"), ("s", "float")):
    nearest, hexadecimal = FORMATS[kind]
    assert all(nearest(s) == s for s in sines)
    points = [value for s in sines for value in (s, mp.sqrt(1 - s**2))]
    out.comment("The sine in the middle of each bin, exact, and its cosine.")
    out.table(f"points_{suffix}", [hexadecimal(value) for value in points], kind, per_line=6)
    for name, arc in (("asin", mp.asin), ("acos", mp.acos)):
        pairs = [value for s in sines for value in (nearest(arc(s)), arc(s) - nearest(arc(s)))]
        out.comment(f"{name} of that sine, and what rounding left of it.")
        out.table(f"{name}_{suffix}", [hexadecimal(value) for value in pairs], kind, per_line=6)

reach = mpf(1) / 83
write_fit(out, mp.asin, "asin", R, "ha_d", [3, 5, 7], 0, reach, "double")
write_fit(out, mp.asin, "asin", R, "ep_d", [3, 5, 7, 9, 11], 0, mpf(1) / 2, "double")
write_fit(out, mp.asin, "asin", R, "ha_s", [3], 0, reach, "float")
write_fit(out, mp.asin, "asin", R, "la_s", [3, 5, 7, 9, 11], 0, mpf(1) / 2, "float")
write_fit(out, mp.asin, "asin", NOTHING, "ep_s", [1, 3, 5], 0, mpf(1) / 2, "float")
out.write()
