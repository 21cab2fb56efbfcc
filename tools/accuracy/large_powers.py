# large_powers.py: complex powers with exponents as large as the promise goes, with their exact results.
# SPDX-License-Identifier: MIT
#
#   python3 tools/accuracy/large_powers.py
#
# z^w = e^(w log z) for |w log z| from 50 to 1700, where the error of log z weighs most: z in the usual square, far out,
# about the unit circle and next to 1. Writes tests/data/vector_math/vzPow.hard, in the format of the reference cases.
import os
import random
import struct
import sys

from mpmath import mp, mpc, mpf

mp.prec = 400


def code(value):
    return f"{struct.unpack('<Q', struct.pack('<d', float(value)))[0]:016x}"


def excess(exact):
    with mp.workprec(53):
        rounded = +exact
    ulp = mp.ldexp(1, mp.frexp(exact)[1] - 53)
    parts = int(mp.nint(4096 * (exact - rounded) / ulp))
    return code(rounded), f"{'-' if parts < 0 else '+'}{abs(parts):03x}"


def base(kind):
    if kind == 0:
        return complex(random.uniform(-10, 10), random.uniform(-10, 10))
    if kind == 3:
        return complex(1 + mp.expjpi(random.uniform(-1, 1)) * 2.0 ** -random.uniform(1, 40))
    radius = mp.exp(random.uniform(-200, 200)) if kind == 1 else 1 + random.uniform(-1, 1) * 2.0 ** -random.uniform(1, 40)
    return complex(mp.expjpi(random.uniform(-1, 1)) * radius)


random.seed(1)
lines = []
while len(lines) < 320:
    z = base(len(lines) % 4)
    logarithm = mp.log(mpc(z))
    w = complex(mp.expjpi(random.uniform(-1, 1)) * 50 * mpf(34) ** random.random() / abs(logarithm))
    exponent = mpc(w) * logarithm
    if abs(exponent.real) > 700 or abs(exponent) > 1700:
        continue
    power = mp.exp(exponent)
    (re, re_excess), (im, im_excess) = excess(power.real), excess(power.imag)
    arguments = " ".join(code(part) for part in (z.real, z.imag, w.real, w.imag))
    lines.append(f"{arguments} {re} {im} {re_excess} {im_excess} 0\n")
folder = os.path.join(os.path.dirname(sys.argv[0]), "../../tests/data/vector_math")
with open(f"{folder}/vzPow.hard", "w") as file:
    file.write("# vzPow: as in the .cases; by tools/accuracy/large_powers.py\n")
    file.writelines(lines)
