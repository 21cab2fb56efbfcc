# tanh.py: table and polynomials of the double hyperbolic tangent.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/tanh.py > vector_math/data/tanh_data.h
from mpmath import mp, mpf

from minimax import R, Header, hex_double, to_double, write_fit

out = Header("tanh", "table and polynomials of the double hyperbolic tangent", "tools/tables/tanh.py")

# Bins: 32 to each power of two from 2^-7 to the last one, which begins at 20; the first one begins at 0.
first, last = -7, mpf(20)


def middle(k):
    return mpf(2) ** (first + k // 32) * (1 + (mpf(k % 32) + mpf(1) / 2) / 32) if k > 0 else mpf(0)


middles = [middle(k) for k in range(512) if middle(k) < last * (1 + mpf(1) / 64)]
points, slopes = [], []
for c in middles:
    value = mp.tanh(c)
    points += [hex_double(c), hex_double(to_double(value))]
    slopes += [hex_double(to_double(1 - value**2)), hex_double(to_double(value - to_double(value)))]
out.comment("Bins of arguments, 32 to a power of two from 2^-7 to 20, the first one from 0 on.")
out.constant("first_bin", hex_double(mpf(2) ** first))
out.constant("last_bin", hex_double(last))
out.comment("The middle c of each bin, of seven bits, and tanh c.")
out.table("points", points)
out.comment("1 - tanh(c)^2, and what rounding left of tanh c.")
out.table("slopes", slopes)

# Next to 0 r is the argument; where r is larger tanh c hardly changes.
write_fit(out, mp.tanh, "tanh", R, "ha", [3, 5, 7, 9], 0, mpf(1) / 60, "double")
out.write()
