// complex_truths.h: the exact values of complex functions that MPC has not by itself.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TOOLS_ACCURACY_COMPLEX_TRUTHS_H
#define ORIN_TOOLS_ACCURACY_COMPLEX_TRUTHS_H

#include <mpc.h>

namespace accuracy {

inline int mul_by_conj(mpc_t r, mpc_srcptr a, mpc_srcptr b, mpc_rnd_t rounding) {
  mpc_t conjugate;
  mpc_init2(conjugate, 160);
  mpc_conj(conjugate, b, MPC_RNDNN);
  const int inexact = mpc_mul(r, a, conjugate, rounding);
  mpc_clear(conjugate);
  return inexact;
}

// cos a + i sin a of a real number.
inline int cis(mpc_t r, mpc_srcptr a, mpc_rnd_t) {
  return mpfr_sin_cos(mpc_imagref(r), mpc_realref(r), mpc_realref(a), MPFR_RNDN);
}

}  // namespace accuracy

#endif
