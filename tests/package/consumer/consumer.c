/* consumer: uses functions of each of the three DLLs and tables, as plain C, and checks what it gets.
 * SPDX-License-Identifier: MIT */
#include <math.h>
#include <stdio.h>

#include "orin/companions.h"
#include "orin/orin.h"

int main(void) {
  const int32_t n = 2;
  int32_t info = -1;
  double factor[4] = {4, 2, 2, 5}; /* its Cholesky factor: 2; 1 2 */
  double* x = (double*)orin_serv_allocate(2 * sizeof(double), 64);
  if (x == NULL || (uintptr_t)x % 64 != 0) return 1;
  x[0] = 0;
  x[1] = 1;
  _kordExp(n, x, x);
  orin_lapack_dpotrf("L", &n, factor, &n, &info);
  printf("exp 0 = %.17g, exp 1 = %.17g; factor %g %g %g\n", x[0], x[1], factor[0], factor[1], factor[3]);
  if (x[0] != 1 || fabs(x[1] - 2.718281828459045) > 1e-15) return 2;
  if (info != 0 || factor[0] != 2 || factor[1] != 1 || factor[3] != 2) return 3;
  if (orin_kor_kernel_dExp_ctab[1] <= 0 || __RegBrngsNew[0].WordBytes != 4) return 4;
  orin_serv_deallocate(x);
  return 0;
}
