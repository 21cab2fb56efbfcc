# erf_inverse.py: polynomials of the inverse error function and of the normal quantile.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/erf_inverse.py > vector_math/data/erf_inverse_data.h
from mpmath import mp, mpf

from minimax import Header, hex_double, to_double
from piecewise import Cells, double_rows, float_rows, leading_bits_cells, rows_with_rests

out = Header("erf_inverse", "polynomials of the inverse error function and of the normal quantile", "tools/tables/erf_inverse.py")
mp.prec = 140
seam = mpf(2) ** -10  # above: polynomials of v itself; below: of its logarithm's root


def inverse(v):
    """x with erfc(x) = v, by Halley's method; around v = 1 with erf(x) = 1 - v, exact there."""
    v = mpf(v)
    if v == 1:
        return mpf(0)
    if v > mpf(1) / 8:
        x = (1 - v) * (mpf(7) / 8 + (1 - v) ** 2 / 3)
    else:
        logarithm = -mp.log(v)
        x = mp.sqrt(logarithm - mp.log(mp.pi * logarithm) / 2)
    for _ in range(20):
        excess = mp.erf(x) - (1 - v) if v > mpf(1) / 8 else v - mp.erfc(x)
        step = excess / (2 / mp.sqrt(mp.pi) * mp.exp(-x * x))
        step /= 1 + x * step
        x -= step
        if abs(step) < abs(x) * mpf(2) ** -50:  # the next step would be its cube
            return x
    raise ArithmeticError("no convergence")


def tables(space, factor, text, ends):
    """factor inverse(v), for the error function and the normal distribution; `ends` the largest roots w."""
    f = lambda v: factor * inverse(v)
    out.lines += ["", f"namespace {space} {{"]

    def central(per_octave, degree):
        out.comment(f"{text} = erfc^-1(v), v = c + t, c of {per_octave} in an octave, 2^-10 <= v <= 1: degree {degree} in t;")
        cells = [(c, low, min(high, mpf(1))) for c, low, high in leading_bits_cells(seam, 1, per_octave)]
        return Cells(f, cells, degree)

    fine = central(32, 7)
    out.comment(f"{fine.error_text()}. At the end the rest of c0, and what the leading 26 bits leave of c1.")
    out.table("fine", rows_with_rests(fine.rows), "double", 10)
    for name, per_octave, degree, writer, kind in (
        ("medium", 32, 3, double_rows, "double"),
        ("single", 16, 3, float_rows, "float"),
        ("coarse", 16, 1, float_rows, "float"),
    ):
        polynomials = central(per_octave, degree)
        rows = polynomials.rows
        if degree == 1:
            centres = [cell[0] for cell in leading_bits_cells(seam, 1, per_octave)]
            rows = [[c0 + c1 * (1 - c), -c1] for c, (c0, c1) in zip(centres, rows)]
        out.comment(f"{polynomials.error_text()}{'; rewritten in powers of 1 - v' if degree == 1 else ''}.")
        out.table(name, writer(rows), kind, degree + 1)

    root_of = lambda w: f(mp.exp(-((w / factor) ** 2)))

    def tail(degree, last):
        out.comment(f"The same less w, w = {'sqrt(-log v)' if factor == 1 else 'sqrt(-2 log v)'} = c + t, c of 16 in an octave,")
        out.comment(f"2 <= w <= {last}: polynomials of degree {degree} in t;")
        return Cells(lambda w: root_of(w) - w, leading_bits_cells(2, last, 16), degree, root_of)

    polynomials = tail(8, ends[0])
    out.comment(f"{polynomials.error_text()}. At the end the rest of c0.")
    out.table("tail_fine", double_rows(row + [row[0] - to_double(row[0])] for row in polynomials.rows), "double", 10)
    for name, degree, last, writer, kind in (
        ("tail_medium", 3, ends[0], double_rows, "double"),
        ("tail_single", 3, ends[1], float_rows, "float"),
        ("tail_coarse", 1, ends[1], float_rows, "float"),
    ):
        polynomials = tail(degree, last)
        out.comment(f"{polynomials.error_text()}.")
        out.table(name, writer(polynomials.rows), kind, degree + 1)
    out.lines += ["", f"}}  // namespace {space}"]


tables("erfc_inverse", mpf(1), "y", (28, 12))
tables("normal_quantile", mp.sqrt(2), "y/sqrt 2", (40, 16))
out.write()
