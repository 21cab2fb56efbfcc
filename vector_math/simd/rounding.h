// rounding.h: what special paths need to round a result once.
// SPDX-License-Identifier: MIT
#ifndef ORIN_VECTOR_MATH_SIMD_ROUNDING_H
#define ORIN_VECTOR_MATH_SIMD_ROUNDING_H

namespace orin::vector_math::simd {

// high + rest rounded to the spacing of the numbers just above 1, for 0 <= high + rest < 1 and |rest| <= high. Times
// the least normal number the result is exact: so a subnormal result is rounded once, where high + rest in working
// precision and then the product would round twice. (1 + high loses digits of high; they are recovered and added to the
// rest.)
template <class T>
T sum_at_spacing_of_one(T high, T rest) {
  const T shifted = 1 + high;
  const T lost = high - (shifted - 1);
  return (shifted + (lost + rest)) - 1;
}

}  // namespace orin::vector_math::simd

#endif
