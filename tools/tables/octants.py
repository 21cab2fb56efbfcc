# octants.py: the angles of the half-plane in steps, in each octant.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/octants.py > vector_math/data/octants_data.h
from mpmath import mp, mpf

from minimax import Header, hex_double, to_double

out = Header("octants", "angles of the half-plane in steps", "tools/tables/octants.py")

steps = 64
pairs = []
for base, sign in ((mpf(0), 1), (mp.pi / 2, -1), (mp.pi, -1), (mp.pi / 2, 1)):
    for j in range(steps + 1):
        angle = base + sign * mp.atan(mpf(j) / steps)
        high = to_double(angle)
        pairs += [hex_double(high), hex_double(to_double(angle - high))]
out.comment("atan c, pi/2 - atan c, pi - atan c and pi/2 + atan c for c = j/64, j = 0 .. 64: nearest, then the rest.")
out.table("angles", pairs)
out.write()
