# sincos_d.py: tables and polynomials of the double sine and cosine, and the digits of 64/pi.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/sincos_d.py > vector_math/data/sincos_d_data.h
from mpmath import mp, mpf

from minimax import Header, exponent_text, fit, hex_double, max_error, to_bits, to_double

mp.prec = 1400
out = Header("sincos_d", "tables and polynomials of the double sine and cosine", "tools/tables/sincos_d.py")


def sine(turns, of):
    """sin(2 pi turns/of) exactly where it is 0, for there the table's sign of zero counts."""
    return mpf(0) if 2 * turns % of == 0 else mp.sin(2 * mp.pi * turns / of)


def text(x):
    return hex_double(x) if x != 0 else "-0.0"


def parts(value, counts):
    """The leading parts of value with so many bits each, cut, and the rest to double. All are positive: 0 times one of
    them is +0, and -0 less that -0."""
    pieces = []
    for count in counts:
        exponent = mp.frexp(value)[1] - count
        pieces.append(mp.ldexp(mp.floor(mp.ldexp(value, -exponent)), exponent))
        value -= pieces[-1]
    return pieces + [to_double(value)]


def step(name, size, counts, limit=20, inverse=True):
    """Constants of the reduction by 2 pi/size below 2^limit; the inverse is the same for all of one size."""
    unit = 2 * mp.pi / size
    sizes = ", ".join(str(count) for count in counts)
    out.comment(f"{size}/(2 pi); 2 pi/{size} in parts of {sizes} bits, whose products with n are exact below 2^{limit}, and the rest.")
    if inverse:
        out.constant(f"{name}_inverse", hex_double(to_double(1 / unit)))
    for k, piece in enumerate(parts(unit, counts)):
        out.constant(f"{name}_step_{k}", hex_double(piece))


step("ha", 128, [27, 24, 27])
step("la", 512, [25, 26, 26])
step("ep", 512, [25, 26])
step("near", 512, [35], limit=11, inverse=False)
step("single", 512, [26], inverse=False)
unit = mp.pi / 64
out.comment("pi/64 as one number, and as its first 27 bits and the rest.")
out.constant("unit", hex_double(to_double(unit)))
out.constant("unit_high", hex_double(to_bits(unit, 27)))
out.constant("unit_low", hex_double(to_double(unit - to_bits(unit, 27))))

entries = []
for j in range(128):
    for value in (sine(j, 128), sine(j + 32, 128)):
        high = to_bits(value, 27)
        entries += [text(high), hex_double(to_double(value - high))]
out.comment("sin a and cos a for a = 2 pi j/128, each as its first 27 bits and the rest. sin 0 is -0: -0 + x = x.")
out.table("ha_table", entries)

entries = []
for j in range(512):
    entries += [text(to_double(sine(j, 512))), text(to_double(sine(j + 128, 512)))]
out.comment("sin a and cos a for a = 2 pi j/512, nearest.")
out.table("la_table", entries)


def sine_tail(x):
    """(sin x - x)/x^3"""
    return sum((-1) ** (n + 1) * x ** (2 * n) / mp.factorial(2 * n + 3) for n in range(12))


def cosine_tail(x):
    """(cos x - 1)/x^2"""
    return sum((-1) ** (n + 1) * x ** (2 * n) / mp.factorial(2 * n + 2) for n in range(12))


def polynomials(name, size, terms):
    h = mp.pi / size * (1 + mpf(2) ** -20)
    with mp.workprec(240):
        for letter, count, tail in (("s", terms[0], sine_tail), ("c", terms[1], cosine_tail)):
            # Nearest in the error relative to the function, which the tail enters with the square of x.
            weight = lambda x: x * x / (1 + x * x * tail(x))
            basis = [lambda x, m=m: weight(x) * x ** (2 * m) for m in range(count)]
            c, _ = fit(lambda x: weight(x) * tail(x), basis, h / 4, h, relative=False)
            c = [to_double(value) for value in c]
            p = lambda x: sum(value * x ** (2 * m) for m, value in enumerate(c))
            if letter == "s":
                error = max_error(lambda x: 1 + x * x * p(x), lambda x: 1 + x * x * tail(x), 0, h)
                formula = "sin r = r + r^3 ({0}_s0 + {0}_s1 r^2 + ..)"
            else:
                error = max_error(lambda x: 1 + x * x * p(x), mp.cos, 0, h)
                formula = "cos r = 1 + r^2 ({0}_c0 + {0}_c1 r^2 + ..)"
            out.comment(f"{formula.format(name)}, |r| <= pi/{size}, relative error below {exponent_text(error)}.")
            for k, value in enumerate(c):
                out.constant(f"{name}_{letter}{k}", hex_double(value))


polynomials("ha", 128, (3, 3))
polynomials("la", 512, (2, 2))
polynomials("ep", 512, (1, 1))

# 64/pi = sum c_k, c_k a multiple of 2^(5 - 25 (k+1)) and for k > 0 at most 2^(4 - 25 k): the products of a number of 27
# bits with any c_k are exact.
digits = []
rest = 64 / mp.pi
for k in range(46):
    digit = mp.ldexp(mp.nint(mp.ldexp(rest, 25 * (k + 1) - 5)), 5 - 25 * (k + 1))
    rest -= digit
    digits.append(digit)
out.comment("64/pi in digits of 25 bits, nearest, after two zeros; times 2^300, so that none is subnormal.")
out.table("digits", ["0.0", "0.0"] + [hex_double(mp.ldexp(digit, 300)) for digit in digits])
out.write()
