# log_d.py: tables and polynomials of the double logarithm.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/log_d.py > vector_math/data/log_d_data.h
from fractions import Fraction

from mpmath import mp, mpf

from minimax import Header, exponent_text, fit, hex_double, to_bits, to_double

out = Header("log_d", "tables and polynomials of the double logarithm", "tools/tables/log_d.py")
steps = [Fraction(j, 256) for j in range(192, 385)]  # the arguments a of the tables, 3/4 to 3/2


def exact(fraction):
    return mpf(fraction.numerator) / fraction.denominator


def on_grid(x, exponent):
    """x rounded to a multiple of 2^exponent."""
    return mp.ldexp(mp.nint(mp.ldexp(x, -exponent)), exponent)


def short_inverse(a):
    """The c of nine bits nearest to 1/a: |a c - 1| is least, and (m - a) c and m c - 1 are exact for all m near a."""
    unit = 256 if a < 1 else 512
    c = Fraction(round(unit / a), unit)
    reach = max(abs((a + s * Fraction(1, 512)) * c - 1) for s in (-1, 1))
    assert reach < Fraction(1, 256) and (c * unit).numerator <= 512
    return c


inverses = [short_inverse(a) for a in steps]
reach = max(abs((a + s * Fraction(1, 512)) * c - 1) for a, c in zip(steps, inverses) for s in (-1, 1))
pairs = []
for a, c in zip(steps, inverses):
    pairs += [hex_double(exact(c)), hex_double(exact(a * c - 1))]
out.comment("For a = 3/4, 3/4 + 1/256 .. 3/2: c near 1/a, of nine bits, and a c - 1, exact.")
out.table("inverses", pairs, per_line=4)

for name, log, text in (("", mp.log, "log"), ("10", mp.log10, "log10")):
    pairs, short = [], []
    for a, c in zip(steps, inverses):
        value = -log(exact(c))
        high = on_grid(value, -42)
        pairs += [hex_double(high), hex_double(to_double(value - high))]
        scale = 1 / mp.log(10) if name else mpf(1)
        short += [hex_double(to_double(scale / exact(a))), hex_double(to_double(log(exact(a))))]
    out.comment(f"-{text} c for each c: high, a multiple of 2^-42, and the rest.")
    out.table(f"logarithms{name}", pairs, per_line=4)
    out.comment(f"{'1/(a ln 10)' if name else '1/a'} and {text} a for each a, nearest.")
    out.table(f"short_pairs{name}", short, per_line=4)
    high = on_grid(log(mpf(2)), -42)
    out.comment(f"{text} 2 in two parts: the multiples of the high one up to 2^11 are exact, multiples of 2^-42.")
    out.constant(f"two_high{name}", hex_double(high))
    out.constant(f"two_low{name}", hex_double(to_double(log(mpf(2)) - high)))
    out.constant(f"two{name}", hex_double(to_double(log(mpf(2)))))

high = to_bits(1 / mp.log(10), 27)
out.comment("1/ln 10 in two parts, the first of 27 bits.")
out.constant("inverse_ln10_high", hex_double(high))
out.constant("inverse_ln10_low", hex_double(to_double(1 / mp.log(10) - high)))

# The cells of EP: steps of 2^44 in the bits of a double, from 3/4 to 3/2; cell 128 is at 1.
cells = [mpf(3) / 4 + mpf(j) / 512 if j < 128 else 1 + mpf(j - 128) / 256 for j in range(256)]
for name, scale in (("", mpf(1)), ("10", 1 / mp.log(10))):
    pairs = []
    for j, a in enumerate(cells):
        c = to_double(1 / a)
        pairs += [hex_double(mp.ldexp(c, 64)), hex_double(to_double(scale * (-mp.log(c) - (j - 128) * mp.log(2) / 256)))]
    text = "log10" if name else "log"
    out.comment(f"2^64 c, c = 1/m for the m whose bits are those of 1 and (j - 128) 2^44, and -{text} c - (j - 128) {text}(2)/256.")
    out.table(f"ep_pairs{name}", pairs, per_line=4)
    out.constant(f"ep_step{name}", hex_double(to_double(scale * mp.log(2) / 256)))

# Relative errors below are those of the whole logarithm next to 1, where |r| <= 2^-9.
near_one = mpf(2) ** -9
bound = exact(reach)



def log_tail(power):
    def value(x):
        total, term = mpf(0), mpf(1)
        for n in range(40):
            total += (-1) ** (n + power + 1) * term / (n + power)
            term *= x
        return total

    return value


def polynomial(name, power, degree, bound):
    """Fits, writes and returns the coefficients."""
    c, _ = fit(log_tail(power), [lambda x, m=m: x**m for m in range(degree + 1)], -bound, bound)
    c = [to_double(value) for value in c]
    worst = max(
        abs(sum(value * x**m for m, value in enumerate(c)) - log_tail(power)(x)) * abs(x) ** (power - 1)
        for x in (near_one * k / 200 for k in range(-200, 201))
    )
    first = "r" if power == 2 else "r - r^2/2"
    out.comment(
        f"log(1 + r) = {first} + r^{power} ({name}_0 + {name}_1 r + ..), |r| <= {mp.nstr(bound, 4)}, "
        f"relative error below {exponent_text(worst)} where |r| <= 2^-9."
    )
    coefficients(name, c)
    return c


def coefficients(name, c):
    for k, value in enumerate(c):
        out.constant(f"{name}_{k}", hex_double(to_double(value)))


ln10 = mp.log(10)
polynomial("pair", 3, 5, bound)
ha = polynomial("ha", 3, 4, bound)
la = polynomial("la", 2, 4, near_one * 4 / 3)
polynomial("mid", 2, 2, near_one * 4 / 3)
ep = polynomial("ep", 2, 1, near_one)
out.comment("log10(1 + r) = r/ln 10 + r^2 (ha10_0 + ha10_1 r + ..), the same polynomial.")
coefficients("ha10", [value / ln10 for value in [mpf(-1) / 2] + ha])
out.comment("log10(1 + ln 10 s) = s + s^2 (la10_0 + la10_1 s + ..): the same polynomial.")
coefficients("la10", [value * ln10 ** (k + 1) for k, value in enumerate(la)])
out.comment("log10(1 + r) = r (ep10_0 + ep10_1 r + ..), the same polynomial.")
coefficients("ep10", [value / ln10 for value in [mpf(1)] + ep])
out.write()
