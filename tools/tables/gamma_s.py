# gamma_s.py: tables of log Gamma in single precision.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/gamma_s.py > vector_math/data/gamma_s_data.h
from gamma_bins import centers, table, taylor
from minimax import Header, exponent_text, hex_float, mpf

out = Header("gamma_s", "tables of log Gamma in single precision", "tools/tables/gamma_s.py")
expansions = [taylor(c) for c in centers(16)]
for name, degree, text in (("la", 4, "c0 .. c4, 0"), ("ep", 3, "c0 .. c3")):
    rows, worst = table(expansions, 16, degree)
    padding = [mpf(0)] * ((degree + 1) % 2)
    out.comment(
        f"log Gamma(c + t) = c0 + c1 t + .. for c = 2^-5, 2^-5 (1 + 1/16) .. 2^8: {text}. "
        f"Relative error below {exponent_text(worst)}."
    )
    entries = [hex_float(c) for row in rows for c in row + padding]
    out.table(f"{name}_rows", entries, kind="float", per_line=len(entries) // len(rows))
out.write()
