# hyperbolic.py: polynomials of sinh, cosh and e^x - 1, both precisions. The powers of 2 are those of pow_d.py.
# SPDX-License-Identifier: MIT
#
#   python3 tools/tables/hyperbolic.py > vector_math/data/hyperbolic_data.h
from mpmath import mp, mpf

from minimax import NOTHING, ONE, R, Header, hex_float, to_bits, write_fit

out = Header("hyperbolic", "polynomials of sinh, cosh and e^x - 1", "tools/tables/hyperbolic.py")
slack = 1 + mpf(2) ** -10  # reduction may leave the interval by its own rounding
ln2 = mp.log(2)

h = ln2 / 512 * slack
write_fit(out, mp.sinh, "sinh", R, "sinh_d", [3, 5], 0, h, "double")
write_fit(out, mp.cosh, "cosh", ONE, "cosh_d", [2, 4], 0, h, "double")
write_fit(out, mp.expm1, "e^r - 1,", R, "expm1_d", [2, 3, 4, 5], -h, h, "double")
write_fit(out, mp.sinh, "sinh", R, "sinh_ep_d", [3], 0, h, "double")
write_fit(out, mp.expm1, "e^r - 1,", R, "expm1_ep_d", [2, 3], -h, h, "double")

h = ln2 / 2 * slack
high = to_bits(ln2, 15)
out.comment("log 2 in two parts, the first of 15 bits: its products with n below 2^9 are exact.")
out.constant("ln2_high", hex_float(high), "float")
out.constant("ln2_low", hex_float(ln2 - high), "float")
write_fit(out, mp.sinh, "sinh", R, "sinh_la_s", [3, 5], 0, h, "float")
write_fit(out, mp.cosh, "cosh", ONE, "cosh_la_s", [2, 4], 0, h, "float")
write_fit(out, mp.expm1, "e^r - 1,", R, "expm1_la_s", [2, 3, 4, 5, 6], -h, h, "float")

# EP counts in powers of 2: f = x/ln2 less its nearest integer.
h = mpf(1) / 2 * slack
write_fit(out, lambda x: mp.sinh(x * ln2), "sinh ln2", NOTHING, "sinh_ep_s", [1, 3], 0, h, "float")
write_fit(out, lambda x: mp.cosh(x * ln2), "cosh ln2", ONE, "cosh_ep_s", [2], 0, h, "float")
write_fit(out, lambda x: mp.expm1(x * ln2), "2^r - 1,", NOTHING, "expm1_ep_s", [1, 2, 3, 4], -h, h, "float")
out.write()
