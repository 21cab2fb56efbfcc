# near_quarter_turns.py: hard arguments of the trigonometric functions, with their exact results.
# SPDX-License-Identifier: MIT
#
#   python3 tools/accuracy/near_quarter_turns.py
#
# For each power of two the argument below its double that is nearest to a multiple of pi/2, found by continued
# fractions (W. Kahan, Minimizing q m - n, 1983), and the neighbours of the places where the kernels change their
# reduction. Writes tests/data/vector_math/<label>.hard, in the format of the reference cases.
import os
import struct
import sys

from mpmath import mp, mpf

mp.prec = 1400
FORMATS = {"s": ("<f", "<I", 24, 128), "d": ("<d", "<Q", 53, 1024)}
SEAMS = {"s": [248.0, 1536.0, 2.0**20], "d": [2.0**20]}
FUNCTIONS = {"Sin": mp.sin, "Cos": mp.cos, "Tan": mp.tan, "SinCos1": mp.sin, "SinCos2": mp.cos}


def nearest_to_quarter_turn(exponent, bits):
    """The x of so many bits in [2^exponent, 2^(exponent + 1)) nearest to a multiple of pi/2, but 0."""
    ratio = mp.ldexp(2 / mp.pi, exponent - bits + 1)
    candidates = []
    p0, q0, p1, q1 = 0, 1, 1, 0
    rest = ratio
    while q1 < 2 ** (bits + 1):
        a = int(mp.floor(rest))
        candidates += [t * q1 + q0 for t in {a, a - 1, max(a // 2, 1)}]
        p0, q0, p1, q1 = p1, q1, a * p1 + p0, a * q1 + q0
        rest = 1 / (rest - a)
    best = None
    for q in candidates:
        for multiple in range(1, 8):
            m = q * multiple
            while 0 < m < 2 ** (bits - 1):
                m *= 2
            if 0 < m < 2**bits and mp.nint(m * ratio) != 0:
                distance = abs(m * ratio - mp.nint(m * ratio))
                if best is None or distance < best[0]:
                    best = (distance, m)
    return best and mp.ldexp(best[1], exponent - bits + 1)


def line(x, function, letter):
    real, integer, bits, _ = FORMATS[letter]
    code = lambda value: struct.unpack(integer, struct.pack(real, float(value)))[0]
    exact = function(x)
    with mp.workprec(bits):
        rounded = +exact
    ulp = mp.ldexp(1, mp.frexp(exact)[1] - bits)
    excess = int(mp.nint(4096 * (exact - rounded) / ulp))
    digits = struct.calcsize(real) * 2
    return f"{code(x):0{digits}x} {code(rounded):0{digits}x} {'-' if excess < 0 else '+'}{abs(excess):03x} 0\n"


folder = os.path.join(os.path.dirname(sys.argv[0]), "../../tests/data/vector_math")
for letter, (real, integer, bits, top) in FORMATS.items():
    arguments = [x for x in (nearest_to_quarter_turn(e, bits) for e in range(top)) if x is not None]
    seams = []
    for seam in SEAMS[letter]:
        step = mp.ldexp(1, mp.frexp(seam)[1] - bits)
        below = step / 2 if mp.frexp(seam)[0] == 0.5 else step
        seams += [seam + k * (below if k < 0 else step) for k in range(-4, 5)]
    for name, function in FUNCTIONS.items():
        if letter == "d" and name.startswith("SinCos"):
            continue  # the bits of Sin and Cos
        with open(f"{folder}/v{letter}{name}.hard", "w") as file:
            file.write(f"# v{letter}{name}: as in the .cases; by tools/accuracy/near_quarter_turns.py\n")
            file.write("# nearest to a multiple of pi/2 below each power of two\n")
            file.writelines(line(x * (-1) ** k, function, letter) for k, x in enumerate(arguments))
            file.write("# neighbours of the changes of reduction\n")
            file.writelines(line(x, function, letter) for x in seams)
