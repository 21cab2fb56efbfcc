# complex_periodic.py: points whose sine and cosine, or whose exponentials of both signs, are all but doubles or floats.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/complex_periodic.py > vector_math/data/complex_periodic_data.h
#
# The points lie next to even ones, after S. Gal, B. Bachelis, An accurate elementary mathematical library for the IEEE
# floating point standard, ACM TOMS 17 (1991), 26-45.
from math import isqrt

from mpmath import mp, mpf

from minimax import ONE, R, Header, hex_double, hex_float, to_double, to_float, write_fit

mp.prec = 400
out = Header("complex_periodic", "accurate points and polynomials of the complex periodic functions",
             "tools/tables/complex_periodic.py")
slack = 1 + mpf(2) ** -19  # points and reductions lie off the even steps


class Double:
    suffix, kind = "", "double"
    digits = 53
    closeness = 12  # the second number of a point lies within 2^-12 of the spacing there of a double
    far = 1 << 12  # next to 1/sqrt 2 sine and cosine change by whole spacings: only curvature helps, a long way off
    nearest, text, minus_zero = staticmethod(to_double), staticmethod(hex_double), "-0.0"


class Single:
    suffix, kind = "_s", "float"
    digits = 24
    closeness = 7
    far = 1 << 5
    nearest, text, minus_zero = staticmethod(to_float), staticmethod(hex_float), "-0.0f"


def nearby(number, first, second, stride=1, spare=0):
    """The number near `first`, found from there outwards in steps of `stride`, of which second(number, mantissa,
    exponent) is nearly a number, too, and one with `spare` zeros at the end."""
    exponent = mp.frexp(first)[1] - number.digits
    start = int(mp.nint(mp.ldexp(first, -exponent) / stride)) * stride
    half = 1 << (number.closeness + 3 + spare)
    for k in range(1 << 22):
        mantissa = start + stride * (k // 2 + 1 if k % 2 else -(k // 2))
        scaled = second(number, mantissa, exponent)  # with closeness + 4 bits behind the digits
        if abs((scaled + half) % (2 * half) - half) <= 16:
            return mp.ldexp(mantissa, exponent)
    raise ArithmeticError(f"no point found near {mp.nstr(first, 20)}")


def cosine_of(number, mantissa, exponent):
    """sqrt(1 - s^2), from 1/2 to 1."""
    bits = number.digits + number.closeness + 4
    return isqrt(((1 << -2 * exponent) - mantissa * mantissa) << 2 * bits >> -2 * exponent)


def reciprocal_of(number, mantissa, exponent):
    """1/(4 t), from 1/4 to 1/2."""
    return (1 << number.digits + 1 + number.closeness + 4 - 2 - exponent) // mantissa


def sine_points(number, first):
    """sin a, cos a and a - 2 pi j/256 for every j; `first` is the offset of the point of j = 1."""
    octant = [(mpf(0), mpf(1), j * first) for j in range(2)]
    for j in range(2, size // 8 + 1):
        s = nearby(number, mp.sin(j * unit), cosine_of, number.far if j == size // 8 else 1)
        octant.append((s, number.nearest(mp.sqrt(1 - s * s)), to_double(mp.asin(s) - j * unit)))
    points = octant + [(c, s, -offset) for s, c, offset in octant[-2:0:-1]]
    points += [(c, -s, offset) for s, c, offset in points]
    return points + [(mpf(0), mpf(-1), mpf(0))] + [(-s, c, -offset) for s, c, offset in points[:0:-1]]  # so f(-x) = -f(x)


def write_sines(number, points):
    out.comment("sin a and cos a for a next to 2 pi j/256; sin 0 is -0.")
    text = lambda x: number.text(x) if x != 0 else number.minus_zero
    out.table("sines" + number.suffix, [text(value) for s, c, _ in points for value in (s, c)], number.kind)
    out.comment("a - 2 pi j/256.")
    out.table("sine_offsets" + number.suffix, [hex_double(offset) for _, _, offset in points])


size = 256
unit = 2 * mp.pi / size
pieces = []
rest = unit
for count in (26, 26, 26):
    exponent = mp.frexp(rest)[1] - count
    pieces.append(mp.ldexp(mp.floor(mp.ldexp(rest, -exponent)), exponent))
    rest -= pieces[-1]
out.comment("256/(2 pi); 2 pi/256 in parts of 26, 26, 26 bits, whose products with n are exact, and the rest.")
out.constant("turn_inverse", hex_double(to_double(1 / unit)))
for k, piece in enumerate(pieces + [to_double(rest)]):
    out.constant(f"turn_step_{k}", hex_double(piece))
out.comment("2 pi/256 less its first part, which is enough for floats.")
out.constant("turn_rest", hex_double(to_double(unit - pieces[0])))

# Next to a quarter turn the rest would be as large as the result: the quarter turn itself is the point, and its offset
# the first two parts of the step and their product with the excess of the whole step.
offset = -(pieces[0] + pieces[1])
out.comment("2 pi/256 over its first two parts, less 1.")
out.constant("turn_excess", hex_double(to_double(-unit / offset - 1)))
write_sines(Double, sine_points(Double, offset))
write_sines(Single, sine_points(Single, -to_double(unit)))

h = unit * 3 / 2 * slack
write_fit(out, mp.sin, "sin", R, "sine", [3, 5, 7], 0, h, "double")
write_fit(out, mp.cos, "cos", ONE, "cosine", [2, 4, 6], 0, h, "double")
write_fit(out, mp.sin, "sin", R, "sine_s", [3], 0, h, "float")
write_fit(out, mp.cos, "cos", ONE, "cosine_s", [2, 4], 0, h, "float")

ln2 = mp.log(2)
size = 128
step = ln2 / size
powers = [(mpf(1) / 2, mpf(1) / 2, mpf(0)), (mpf(1) / 2, mpf(1) / 2, -step)]  # as with the sines
for j in range(2, size // 2):
    # With three zeros at the end of both: their sums and differences are exact, with one power of two between them, too.
    t = nearby(Double, mpf(2) ** (mpf(j) / size - 1), reciprocal_of, 8, 3)
    powers.append((t, to_double(1 / (4 * t)), mp.log(2 * t) - j * step))
root = to_double(mp.sqrt(mpf(1) / 2))
powers.append((root, root / 2, mpf(0)))  # 0.43 ulp; a point that lay closer would not be its own mirror image
powers += [(2 * inverse, t / 2, -offset) for t, inverse, offset in powers[-2:0:-1]]
out.comment("e^b/2 and e^-b/2 for b next to j ln2/128.")
out.table("powers", [hex_double(value) for t, inverse, _ in powers for value in (t, inverse)])
out.comment("b - j ln2/128.")
out.table("power_offsets", [hex_double(to_double(offset)) for _, _, offset in powers])
half_root = root / 2  # the sinh of j = 64, as it is computed, and twice the smaller power; in doubles
cosh = float(half_root) + float(root)
computed = mpf(cosh) + mpf(float(root) - (cosh - float(half_root)))
out.comment("What a sum of the two in two parts lacks of cosh b, where that is not 2^-12 ulp.")
lacks = [mp.cosh(ln2 / 2) - computed if j == size // 2 else mpf(0) for j in range(size)]
out.table("cosh_lacks", [hex_double(to_double(lack)) for lack in lacks])
h = step * 3 / 2 * slack
write_fit(out, mp.sinh, "sinh", R, "sinh", [3, 5], 0, h, "double")
write_fit(out, mp.cosh, "cosh", ONE, "cosh", [2, 4], 0, h, "double")
write_fit(out, mp.cosh, "cosh", ONE, "whole_cosh", [2, 4, 6], 0, h, "double")

size = 64
powers = [mpf(2) ** (mpf(j) / size) for j in range(size)]
out.comment("2^(j/64)/2 and 2^(-j/64)/2, nearest.")
out.table("ep_powers", [hex_double(to_double(value)) for p in powers for value in (p / 2, 1 / (2 * p))])
out.comment("2^(j/64) = power (1 + tail): power nearest.")
tailed = [(to_double(p), to_double(p / to_double(p) - 1)) for p in powers]
out.table("tailed_powers", [hex_double(value) for pair in tailed for value in pair])
h = ln2 / size / 2 * slack
write_fit(out, mp.sinh, "sinh", R, "ep_sinh", [3], 0, h, "double")
write_fit(out, mp.cosh, "cosh", ONE, "ep_cosh", [2], 0, h, "double")
out.write()
