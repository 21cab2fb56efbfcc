// root_truths.h: the exact values of roots and fixed powers that MPFR has not by itself.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TOOLS_ACCURACY_ROOT_TRUTHS_H
#define ORIN_TOOLS_ACCURACY_ROOT_TRUTHS_H

#include <mpfr.h>

namespace accuracy {

inline int inverse(mpfr_t r, mpfr_srcptr a, mpfr_rnd_t rounding) { return mpfr_ui_div(r, 1, a, rounding); }

// One operation on top of another: to 300 bits, more than any power of a double needs that is not irrational.
inline int in_two_steps(mpfr_t r, auto first, auto second) {
  mpfr_t wide;
  mpfr_init2(wide, 300);
  first(wide);
  const int inexact = second(r, wide);
  mpfr_clear(wide);
  return inexact;
}
inline int inverse_sqrt(mpfr_t r, mpfr_srcptr a, mpfr_rnd_t rounding) {
  return in_two_steps(
      r, [&](mpfr_t root) { mpfr_sqrt(root, a, rounding); },
      [&](mpfr_t result, mpfr_t root) { return mpfr_ui_div(result, 1, root, rounding); });
}
inline int inverse_cbrt(mpfr_t r, mpfr_srcptr a, mpfr_rnd_t rounding) {
  return in_two_steps(
      r, [&](mpfr_t root) { mpfr_cbrt(root, a, rounding); },
      [&](mpfr_t result, mpfr_t root) { return mpfr_ui_div(result, 1, root, rounding); });
}
inline int pow2o3(mpfr_t r, mpfr_srcptr a, mpfr_rnd_t rounding) {
  return in_two_steps(
      r, [&](mpfr_t square) { mpfr_sqr(square, a, rounding); },
      [&](mpfr_t result, mpfr_t square) { return mpfr_cbrt(result, square, rounding); });
}
inline int pow3o2(mpfr_t r, mpfr_srcptr a, mpfr_rnd_t rounding) {
  if (mpfr_zero_p(a)) return mpfr_set(r, a, rounding);
  return in_two_steps(
      r, [&](mpfr_t cube) { mpfr_pow_ui(cube, a, 3, rounding); },
      [&](mpfr_t result, mpfr_t cube) { return mpfr_sqrt(result, cube, rounding); });
}

}  // namespace accuracy

#endif
