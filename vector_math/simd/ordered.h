// ordered.h: sums and products whose NaN is the first operand's.
// SPDX-License-Identifier: MIT
//
// Of two NaN the processor passes on the first operand. A compiler may exchange the operands of a sum; here it cannot.
#ifndef ORIN_VECTOR_MATH_SIMD_ORDERED_H
#define ORIN_VECTOR_MATH_SIMD_ORDERED_H

#include "vector_math/simd/registers.h"

namespace orin::vector_math::simd {

ORIN_INLINE Vec2d sum(Vec2d a, Vec2d b) {
  asm("addpd %1, %0" : "+x"(a.raw) : "x"(b.raw));
  return a;
}
ORIN_INLINE Vec4f sum(Vec4f a, Vec4f b) {
  asm("addps %1, %0" : "+x"(a.raw) : "x"(b.raw));
  return a;
}
ORIN_INLINE Vec2d product(Vec2d a, Vec2d b) {
  asm("mulpd %1, %0" : "+x"(a.raw) : "x"(b.raw));
  return a;
}
ORIN_INLINE Vec4f product(Vec4f a, Vec4f b) {
  asm("mulps %1, %0" : "+x"(a.raw) : "x"(b.raw));
  return a;
}

}  // namespace orin::vector_math::simd

#endif
