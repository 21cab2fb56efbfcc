# erf.py: polynomials of the error function.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/erf.py > vector_math/data/erf_data.h
from mpmath import mp, mpf

from minimax import Header, exponent_text, hex_float, max_error, to_float
from piecewise import Cells, double_rows, float_rows, rows_with_rests
from rational import fit_quotient

out = Header("erf", "polynomials of the error function", "tools/tables/erf.py")


def cells(steps, last):
    """(centre, low, high) for the centres 0, 1/steps .. last; the function is odd."""
    width = mpf(1) / steps
    return [(k * width, max(k - mpf(1) / 2, 0) * width, (k + mpf(1) / 2) * width) for k in range(steps * last + 1)]


def polynomials(steps, degree, last):
    out.comment(f"erf(j/{steps} + t) = c0 + .. c{degree} t^{degree}, |t| <= 1/{2 * steps}, for j/{steps} up to {last};")
    return Cells(mp.erf, cells(steps, last), degree)


fine = polynomials(32, 7, 6)
out.comment(f"{fine.error_text()}. At the end the rest of c0, and what the leading 26 bits leave of c1.")
out.table("fine", rows_with_rests(fine.rows), per_line=10)
medium = polynomials(64, 3, 6)
out.comment(f"{medium.error_text()}.")
out.table("medium", double_rows(medium.rows))

single = polynomials(32, 3, 4)
out.comment(f"{single.error_text()}.")
out.table("single", float_rows(single.rows), "float")

def slope(z):
    """erf(sqrt z)/sqrt z."""
    root = mp.sqrt(z)
    return mp.erf(root) / root if z > mpf(2) ** -100 else 2 / mp.sqrt(mp.pi)


p, q = ([to_float(c) for c in part] for part in fit_quotient(slope, 2, 3, mpf(0), mpf(2.6) ** 2))
error = max_error(lambda z: mp.polyval(p[::-1], z) / mp.polyval(q[::-1], z), slope, mpf(0), mpf(2.6) ** 2, 400)
out.comment(f"erf x = x p(x^2)/q(x^2), |x| <= 2.6: relative error below {exponent_text(error)}.")
for letter, part in (("p", p), ("q", q)):
    for k, c in enumerate(part):
        if (letter, k) != ("q", 0):
            out.constant(f"ep_{letter}{k}", hex_float(c), "float")
out.write()
