// shifted_stack: the one place that breaks the alignment of the stack.
// SPDX-License-Identifier: MIT
#include "tests/companions/shifted_stack.h"

#if defined(__i386__)

void on_shifted_stack(int words, void (*body)(void*), void* context) {
  asm volatile(
      "movl %%esp, %%ebx\n\t"
      "andl $-16, %%esp\n\t"
      "subl %[shift], %%esp\n\t"
      "pushl %[context]\n\t"
      "call *%[body]\n\t"
      "movl %%ebx, %%esp"
      :
      : [shift] "r"(4 * words + 12), [context] "r"(context), [body] "r"(body)
      : "ebx", "eax", "ecx", "edx", "memory", "cc");
}

#else

void on_shifted_stack(int, void (*body)(void*), void* context) { body(context); }

#endif
