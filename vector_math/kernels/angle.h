// angle.h: angles as sums, and pi.
// SPDX-License-Identifier: MIT
#ifndef ORIN_VECTOR_MATH_KERNELS_ANGLE_H
#define ORIN_VECTOR_MATH_KERNELS_ANGLE_H

#include "vector_math/grade.h"
#include "vector_math/simd/registers.h"

namespace orin::vector_math {

// The low part may reach 2^-5 of the high one, and is all of an angle near 0.
template <class V>
struct Angle {
  V high, low;
};

// pi/2 and pi, nearest, and what that leaves of pi.
template <class T>
inline constexpr T half_pi = T(0x1.921fb54442d18p+0);
template <class T>
inline constexpr T pi = 2 * half_pi<T>;
template <class T>
inline constexpr T pi_rest = T(0x1.1a62633145c07p-53);
template <>
inline constexpr float pi_rest<float> = -0x1.777a5cp-24f;

// The angle, less than pi, or pi less it where the mask is set.
template <Grade grade, class V>
ORIN_INLINE Angle<V> on_side_in_parts(Angle<V> angle, V mask) {
  using T = typename V::Element;
  static constexpr struct {
    simd::Constant<T> minus_zero = -T(0);
    simd::Constant<T> pi = vector_math::pi<T>, pi_rest = vector_math::pi_rest<T>;
  } constants{};
  const auto& c = simd::in_memory(constants);
  const V sign = mask & c.minus_zero;
  const V high = angle.high ^ sign;
  const V low = angle.low ^ sign;
  const V base = mask & c.pi;
  const V sum = base + high;
  if constexpr (grade != Grade::ha) return {sum, low};
  const V rest = ((base - sum) + high) + (mask & c.pi_rest);
  return {sum, rest + low};
}
// The same of an angle in one part.
template <class V>
ORIN_INLINE V on_side(V angle, V mask) {
  using T = typename V::Element;
  static constexpr struct { simd::Constant<T> minus_zero = -T(0), pi = vector_math::pi<T>; } constants{};
  const auto& c = simd::in_memory(constants);
  return (mask & c.pi) + (angle ^ (mask & c.minus_zero));
}
template <Grade grade, class V>
ORIN_INLINE V on_side(Angle<V> angle, V mask) {
  const Angle<V> parts = on_side_in_parts<grade>(angle, mask);
  return parts.high + parts.low;
}

}  // namespace orin::vector_math

#endif
