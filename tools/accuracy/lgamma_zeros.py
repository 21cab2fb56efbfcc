# lgamma_zeros.py: reference cases of log |Gamma(x)| next to its zeros, where random arguments do not come.
# SPDX-License-Identifier: MIT
#
#   python3 tools/accuracy/lgamma_zeros.py d > tests/data/vector_math/vdLGamma.hard
#   python3 tools/accuracy/lgamma_zeros.py s > tests/data/vector_math/vsLGamma.hard
"""The zeros 1, 2 and the two next to each pole -3 .. -17 (one next to -2), as far as numbers of the type come near:
the numbers next to each and those at distances of 2^k units."""

import struct
import sys

from mpmath import mp, mpf

mp.prec = 400
kind = sys.argv[1]
number, integer, digits, least = ("<d", "<q", 53, -1074) if kind == "d" else ("<f", "<i", 24, -149)


def value(x):
    return mp.log(abs(mp.gamma(mpf(x)))) if x not in (1, 2) else mpf(0)


def from_ordinal(k):
    x = struct.unpack(number, struct.pack(integer, abs(k)))[0]
    return -x if k < 0 else x


def ordinal(x):
    bits = struct.unpack(integer, struct.pack(number, abs(x)))[0]
    return -bits if x < 0 else bits


def pattern(x):
    return struct.pack(number.replace("<", ">"), x).hex()


def write(k):
    x = from_ordinal(k)
    exact = value(x)
    if exact == 0:
        print(pattern(x), pattern(0.0), "+000 0")
        return
    spacing = mpf(2) ** max(mp.frexp(exact)[1] - digits, least)
    rounded = mp.nint(exact / spacing) * spacing
    excess = int(mp.nint((exact - rounded) / spacing * 4096))
    print(pattern(x), pattern(float(rounded)), f"{'-' if excess < 0 else '+'}{abs(excess):03x} 0")


print(f"# v{kind}LGamma: arguments, rounded result, excess in 1/4096 ulp, status; by tools/accuracy/lgamma_zeros.py")
zeros = [ordinal(1.0), ordinal(2.0)]
for n in range(2, 18):
    for side in (1, -1):  # right and left of -n
        pole = ordinal(float(-n))
        near, far = pole + side, ordinal(-n + 0.499 * side)
        if value(from_ordinal(near)) * value(from_ordinal(far)) > 0:
            continue  # none, or nearer to the pole than the next number
        positive = value(from_ordinal(near)) > 0
        while abs(far - near) > 1:
            middle = near + (far - near) // 2
            if (value(from_ordinal(middle)) > 0) == positive:
                near = middle
            else:
                far = middle
        zeros.append(near)
for zero in zeros:
    print(f"# next to {from_ordinal(zero)!r}")
    reach = [1, 2, 3] + [2**k for k in range(2, digits - 6, 3)]
    for k in sorted({zero} | {zero + step for step in reach} | {zero - step for step in reach}):
        x = from_ordinal(k)
        if x != int(x) or x in (1, 2):
            write(k)
