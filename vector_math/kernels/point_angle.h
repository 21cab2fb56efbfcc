// point_angle.h: the angle of a point of the plane, any point, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    atan_core.h for |y|, |x|; pi less that angle where x < 0; double LA and medium HA by octant_angle.h
// Special   NaN -> NaN; zeros and infinities as atan2 in C Annex F; points far out or near 0 are scaled, quotients next
//           to 0 rounded once
#ifndef ORIN_VECTOR_MATH_KERNELS_POINT_ANGLE_H
#define ORIN_VECTOR_MATH_KERNELS_POINT_ANGLE_H

#include <cmath>
#include <limits>

#include "vector_math/kernels/atan_core.h"
#include "vector_math/kernels/log_base.h"
#include "vector_math/kernels/octant_angle.h"

namespace orin::vector_math {

template <class T, Grade grade>
struct PointAngle {
  using V = typename simd::RegisterOf<T>::type;

  static constexpr bool by_octants = sizeof(T) == 8 && grade != Grade::ep;

  // By the high words of the magnitudes.
  static ORIN_INLINE simd::Vec4i special_lanes(simd::Vec4i larger) {
    if constexpr (sizeof(T) == 8)
      return outside<0x1d900000, 0x58efffff>(larger);  // 2^-550, 2^400
    else
      return outside<0x1a000000, 0x557fffff>(larger);  // 2^-75, 2^44
  }
  static ORIN_INLINE simd::Vec4i special_lanes(simd::Vec4i y, simd::Vec4i x) {
    const simd::Vec4i first = magnitude(y), second = magnitude(x);
    if constexpr (sizeof(T) == 4 && grade == Grade::ha) return special_lanes(select(first > second, first, second));
    return special_lanes(larger_upper_halves(first, second));  // the limits look at no more
  }

  static ORIN_INLINE V fast(V y, V x) {
    if constexpr (by_octants && grade == Grade::la) return medium(y, x);
    static constexpr simd::Constant<T> zero = 0;
    const Angle<V> angle = atan_core::angle<grade>(abs(y), abs(x));
    const V left = x < in_memory(zero);
    if constexpr (grade == Grade::ha) return with_sign_of(on_side<grade>(angle, left), y);
    return with_sign_of(on_side(angle.high + angle.low, left), y);
  }
  // HA double to 2.1 ulp, most of it next to 1/128, where arc and r nearly cancel.
  static ORIN_INLINE V medium(V y, V x) {
    if constexpr (!by_octants) return fast(y, x);
    const Angle<V> angle = medium_in_parts(y, x);
    return with_sign_of(angle.high + angle.low, y);
  }
  // Medium, for y not negative.
  static ORIN_INLINE V in_half_plane(V y, V x) {
    static constexpr simd::Constant<T> zero = 0;
    if constexpr (sizeof(T) == 8) {
      const Angle<V> parts = medium_in_parts(y, x);
      return parts.high + parts.low;
    }
    const Angle<V> angle = atan_core::angle<grade>(y, abs(x));
    return on_side(angle.high + angle.low, x < in_memory(zero));
  }
  // For y and x not negative.
  static ORIN_INLINE V medium_in_quadrant(V y, V x) {
    Angle<V> angle;
    if constexpr (by_octants)
      angle = octant_angle::angle<grade, true>(y, x);
    else
      angle = atan_core::angle<grade>(y, x);
    return angle.high + angle.low;
  }
  // The magnitude.
  static ORIN_INLINE Angle<V> medium_in_parts(V y, V x) {
    static constexpr simd::Constant<T> zero = 0;
    if constexpr (by_octants) return octant_angle::angle<grade>(abs(y), x);
    return on_side_in_parts<grade>(atan_core::angle<grade>(abs(y), abs(x)), x < in_memory(zero));
  }

  // Of any point.
  static ORIN_INLINE T special(T y, T x) {
    constexpr T large = sizeof(T) == 8 ? T(0x1p400) : T(0x1p44), small = sizeof(T) == 8 ? T(0x1p-550) : T(0x1p-75);
    constexpr T scale = sizeof(T) == 8 ? T(0x1p700) : T(0x1p84);
    constexpr T negligible = sizeof(T) == 8 ? T(0x1p-60) : T(0x1p-40);
    if (y != y) return y + y;  // of two, the first one on every target
    if (x != x) return x + x;
    const T size_y = std::fabs(y), size_x = std::fabs(x);
    if (size_y > std::numeric_limits<T>::max() || size_x > std::numeric_limits<T>::max()) {
      y = std::copysign(size_y > std::numeric_limits<T>::max() ? T(1) : T(0), y);
      x = std::copysign(size_x > std::numeric_limits<T>::max() ? T(1) : T(0), x);
    } else if (size_y == 0 && size_x == 0) {
      x = std::copysign(T(1), x);
    } else if (x > 0 && size_y < x * negligible) {
      return y / x;
    } else {
      // What one of the two loses here does not show in the angle.
      const T size = size_y > size_x ? size_y : size_x;
      const T factor = size >= large ? 1 / scale : size < small ? scale : T(1);
      y *= factor;
      x *= factor;
    }
    return first_lane(fast(V(y), V(x)));
  }
};

}  // namespace orin::vector_math

#endif
