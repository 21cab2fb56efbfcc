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

# Bins of pairs for EP of double, by the difference of the bits of y and x, 32 to each power of two from 2^-7 to 2^7: at
# the fraction f that difference holds quotients from 2/(2 - f) to 1 + f. The first bin begins at 0, the last one ends at
# infinity, where c = 2^60 makes r = -x/y.
pairs, reaches = ["0.0", "0.0"], []
for k in range(1, 32 * 14):
    power = mpf(2) ** (first + k // 32)
    low, high = (mp.atan(power * t) for t in (2 / (2 - mpf(k % 32) / 32), 1 + mpf(k % 32 + 1) / 32))
    pairs += [hex_double(mp.tan((low + high) / 2)), hex_double((low + high) / 2)]
    reaches.append(((high - low) / 2, low))
pairs += [hex_double(mpf(2) ** 60), hex_double(mp.pi / 2)]
q = to_double(-mpf(1) / 3 + mpf(2) ** -13)
errors = [abs(mp.atan(r * s) - r * s - q * (r * s) ** 3) / angle for r, angle in reaches for s in (1, mpf(3) / 4)]
errors.append(max_error(lambda r: r + q * r**3, mp.atan, mpf(2) ** -30, mpf(2) ** first * (1 + mpf(1) / 32)))
out.comment("c and atan c for bins by the difference of the bits of y and x: 32 to a power of two from 2^-7 to 2^7.")
out.table("points", pairs, per_line=6)
out.comment(f"atan r = r + points_q r^3 for r from c to quotients of its bin, relative error of the angle below {exponent_text(max(errors))}.")
out.constant("points_q", hex_double(q))

reach = mpf(2) ** -7 * (1 + mpf(1) / 16)
write_fit(out, mp.atan, "atan", R, "ha_d", [3, 5, 7], 0, reach, "double")
write_fit(out, mp.atan, "atan", R, "ep_d", [3], 0, reach, "double")
write_fit(out, mp.atan, "atan", R, "ha_s", [3], 0, reach, "float")
write_fit(out, mp.atan, "atan", R, "la_s", [3, 5, 7, 9, 11, 13, 15], 0, mpf(1), "float")
write_fit(out, mp.atan, "atan", NOTHING, "ep_s", [1, 3, 5, 7], 0, mpf(1), "float")
out.write()
