// shifted_stack.h: a caller whose stack is aligned to 4 bytes only.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TESTS_COMPANIONS_SHIFTED_STACK_H
#define ORIN_TESTS_COMPANIONS_SHIFTED_STACK_H

// Calls body(context) with the stack pointer `words` 32-bit words off a multiple of 16; where the platform's convention
// forbids that, on the stack as it is.
void on_shifted_stack(int words, void (*body)(void*), void* context);

#endif
