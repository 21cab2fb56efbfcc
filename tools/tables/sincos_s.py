# sincos_s.py: parts of pi and polynomials of the single-precision sine, cosine and tangent.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/sincos_s.py > vector_math/data/sincos_s_data.h
from mpmath import mp, mpf

from minimax import Header, exponent_text, fit, hex_double, hex_float, max_error, to_bits, to_double, to_float

out = Header(
    "sincos_s", "parts of pi and polynomials of the single-precision sine, cosine and tangent", "tools/tables/sincos_s.py"
)
out.comment("pi in parts of 12 and 14 bits, whose products with n are exact, and what remains after each, all but the first")
out.comment("negative: 0 times one of them is -0, and +0 with that +0.")
rest = +mp.pi
pieces, rests = [], []
for k, count in enumerate((12, 14)):
    exponent = mp.frexp(rest)[1] - count
    piece = mp.ldexp(mp.ceil(mp.ldexp(rest, -exponent)), exponent)
    out.constant(f"pi_{k}", hex_float(piece), "float")
    rest -= piece
    assert rest < 0
    out.constant(f"rest_{k}", hex_float(rest), "float")
    pieces.append(piece)
    rests.append(rest)
out.constant("inverse", hex_float(1 / mp.pi), "float")
high = to_bits(mp.pi, 33)
out.comment("pi in two doubles, the first of 33 bits.")
out.constant("wide_high", hex_double(high))
out.constant("wide_low", hex_double(to_double(mp.pi - high)))
out.constant("wide_inverse", hex_double(to_double(1 / mp.pi)))
out.comment("The second over pi.")
out.constant("low_per_x", hex_float((mp.pi - high) / mp.pi), "float")


def tail(first):
    """Of sine for first = 3, of cosine for first = 2: x -> the Taylor series from x^first on, over x^first."""
    terms = [(-1) ** (n + 1) / mp.factorial(2 * n + first) for n in reversed(range(24))]
    return lambda x: mp.polyval(terms, x * x)


sine_tail, cosine_tail = tail(3), tail(2)


def write(name, c):
    for k, value in enumerate(c):
        out.constant(f"{name}{k}", hex_float(value), "float")


def polynomial(name, text, tail, count, divisions):
    """Coefficients of 1 + x^2 (c0 + c1 x^2 + ..), nearest in the relative error, for |x| <= pi/divisions."""
    h = mp.pi / divisions * (1 + mpf(2) ** -10)
    whole = lambda x: 1 + x * x * tail(x)
    weight = lambda x: x * x / whole(x)
    basis = [lambda x, m=m: weight(x) * x ** (2 * m) for m in range(count)]
    c, _ = fit(lambda x: weight(x) * tail(x), basis, h / 4, h, relative=False)
    c = [to_float(value) for value in c]
    error = max_error(lambda x: 1 + x * x * sum(value * x ** (2 * m) for m, value in enumerate(c)), whole, 0, h)
    out.comment(f"{text} = 1 + r^2 ({name}0 + {name}1 r^2 + ..), |r| <= pi/{divisions}, relative error below {exponent_text(error)}.")
    write(name, c)


def sine_in_floats(r, c):
    """r + r^3 (c0 + c1 r^2 + ..), every operation rounded."""
    r2 = to_float(r * r)
    p = c[-1]
    for value in reversed(c[:-1]):
        p = to_float(value + to_float(r2 * p))
    return to_float(r + to_float(to_float(r * r2) * p))


def half_turn_polynomial(name, c, r):
    """The coefficients c of (sin r)/r, with the last one changed as little as it takes for cos 0, the sine of a right
    angle reduced to r, to be 1."""
    c = [to_float(value) for value in c]
    last = c[-1]
    spacing = mp.ldexp(1, mp.frexp(last)[1] - 24)
    for k in range(1 << 16):
        c[-1] = last + spacing * (k // 2 + 1 if k % 2 else -(k // 2))
        if sine_in_floats(r, c) == 1:
            break
    else:
        raise ArithmeticError(f"no {name} has cos 0 = 1")
    approximation = lambda x: 1 + x * x * sum(value * x ** (2 * m) for m, value in enumerate(c))
    error = max_error(approximation, lambda x: 1 + x * x * sine_tail(x), 0, mp.pi / 2 * (1 + mpf(2) ** -10))
    out.comment(f"(sin r)/r = 1 + r^2 ({name}0 + {name}1 r^2 + ..), |r| <= pi/2, relative error below {exponent_text(error)}.")
    write(name, c)


h = mp.pi / 2 * (1 + mpf(2) ** -10)
weight = lambda x: x * x / (1 + x * x * sine_tail(x))
c, _ = fit(lambda x: weight(x) * sine_tail(x), [lambda x, m=m: weight(x) * x ** (2 * m) for m in range(4)], h / 4, h,
           relative=False)
half_turn_polynomial("la_half_s", c, to_float(to_float(pieces[0] / 2 + pieces[1] / 2) + to_float(rests[1]) / 2))
# The parabola in r^2 through the values at 0, pi/sqrt 8 and pi/2.
near, far = sine_tail(mp.pi / mp.sqrt(8)), sine_tail(mp.pi / 2)
slope = (far - near) / (mp.pi**2 / 8)
half_turn_polynomial("ep_half_s", [near - slope * mp.pi**2 / 8, slope], to_float(pieces[0] / 2 + to_float(rests[0]) / 2))
polynomial("la_s", "(sin r)/r", sine_tail, 3, 4)
polynomial("la_c", "cos r", cosine_tail, 3, 4)
polynomial("ep_s", "(sin r)/r", sine_tail, 2, 4)
polynomial("ep_c", "cos r", cosine_tail, 2, 4)


def quotient(name, above):
    """Coefficients of (tan r)/r = (1 + p r^2)/(1 + q0 r^2 + q1 r^4), p = 0 unless above; linear in them once the
    divisor in the weight is known, so found in a few rounds."""
    h = mp.pi / 4 * (1 + mpf(2) ** -10)
    ratio = lambda x: mp.tan(x) / x
    divisor = lambda x: mp.cos(x)
    for _ in range(5):
        weight = lambda x, d=divisor: 1 / (d(x) * ratio(x))
        basis = [lambda x: -weight(x) * x**2 * ratio(x), lambda x: -weight(x) * x**4 * ratio(x)]
        if above:
            basis.append(lambda x: weight(x) * x**2)
        c, _ = fit(lambda x: weight(x) * (ratio(x) - 1), basis, h / 4, h, relative=False)
        divisor = lambda x, c=c: 1 + c[0] * x**2 + c[1] * x**4
    c = [to_float(value) for value in c] + ([] if above else [mpf(0)])
    error = max_error(lambda x: (1 + c[2] * x**2) / (1 + c[0] * x**2 + c[1] * x**4), ratio, mpf(2) ** -20, h)
    formula = f"(1 + {name}p r^2)/(1 + {name}q0 r^2 + {name}q1 r^4)" if above else f"1/(1 + {name}q0 r^2 + {name}q1 r^4)"
    out.comment(f"(tan r)/r = {formula}, |r| <= pi/4, relative error below {exponent_text(error)}.")
    if above:
        out.constant(f"{name}p", hex_float(c[2]), "float")
    write(f"{name}q", c[:2])


quotient("la_t", True)
quotient("ep_t", False)
out.write()
