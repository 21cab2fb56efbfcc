/* linked_test: a C program linked with the module reads and replaces a kernel through the tables it sees by name.
 * SPDX-License-Identifier: MIT
 */
#include <stdio.h>

#include "orin/orin.h"

static void ORIN_CALL of_my_own(int32_t n, const double* a, double* r) {
  while (n-- > 0) r[n] = -a[n];
}

static int check(int right, const char* what) {
  if (!right) printf("wrong: %s\n", what);
  return right;
}

int main(void) {
  const double x = 1;
  double y = 0;
  /* Where the program has a copy of the tables, the costs are in it, too. */
  const volatile float* behind = (const volatile float*)((uintptr_t)orin_kor_kernel_dExp_ttab + 3 * sizeof(void*));
  int right = 1;
  for (int grade = 0; grade < 3; ++grade)
    right &=
        check(behind[grade] > 0 && behind[grade] == orin_kor_kernel_dExp_ctab[grade], "the costs follow the kernels");

  void(ORIN_CALL* const kernel)(int32_t, const double*, double*) = orin_kor_kernel_dExp_ttab[KOR_HA - 1];
  kernel(1, &x, &y);
  right &= check(y == 0x1.5bf0a8b145769p+1, "the kernel of the table works");
  orin_kor_kernel_dExp_ttab[KOR_HA - 1] = of_my_own;
  _kordExp(1, &x, &y);
  right &= check(y == -1, "the entry calls the kernel that stands in the table");
  orin_kor_kernel_dExp_ttab[KOR_HA - 1] = kernel;
  _kordExp_HA(1, &x, &y);
  right &= check(y == 0x1.5bf0a8b145769p+1, "the entry calls the old kernel again");
  return right ? 0 : 1;
}
