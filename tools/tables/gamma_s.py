# gamma_s.py: tables of log Gamma in single precision.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/gamma_s.py > vector_math/data/gamma_s_data.h
from gamma_bins import centers, table, taylor
from minimax import Header, exponent_text, hex_float, mpf

out = Header("gamma_s", "tables of log Gamma in single precision", "tools/tables/gamma_s.py")
for name, steps, degree, text in (("la", 16, 4, "c0 .. c4, 0"), ("ep", 32, 2, "c0, c1, c2, 0")):
    rows, worst = table([taylor(c) for c in centers(steps)], steps, degree)
    out.comment(
        f"log Gamma(c + t) = c0 + c1 t + .. for c = 2^-5, 2^-5 (1 + 1/{steps}) .. 2^10: {text}. "
        f"Relative error below {exponent_text(worst)}."
    )
    entries = [hex_float(c) for row in rows for c in row + [mpf(0)]]
    out.table(f"{name}_rows", entries, kind="float", per_line=degree + 2)
out.write()
