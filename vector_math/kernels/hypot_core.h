// hypot_core.h: the length of a vector of two, shared by hypot and by the modulus of complex numbers.
// SPDX-License-Identifier: MIT
//
// Method    LA, EP in their own precision, HA single in double
//           HA double  a >= b >= 0, cut to 26 bits a' and b' with exact squares, a^2 - a'^2 = (a - a')(a + a'). The sum
//           as a pair s + t; the root as r = sqrt s and (s - r^2 + t) y/2, y the seed of s^(-1/2)
// Bounds    HA 0.52 ulp double, 0.51 single; LA and EP relative 2^-50, 2^-21
// Budget    HA double in ulp: seed 3.5 % of the root's low part 0.02, last rounding 1/2
// Special   an infinity -> +inf, also beside NaN; NaN -> NaN; overflow -> +inf, status 3; arguments whose squares would
//           leave the range are scaled
#ifndef ORIN_VECTOR_MATH_KERNELS_HYPOT_CORE_H
#define ORIN_VECTOR_MATH_KERNELS_HYPOT_CORE_H

#include <cmath>
#include <limits>

#include "vector_math/kernels/double_double.h"
#include "vector_math/kernels/log_base.h"
#include "vector_math/kernels/root_seeds.h"
#include "vector_math/simd/elementwise.h"

namespace orin::vector_math {

using namespace simd;

template <class V>
ORIN_INLINE V plain_length(V a, V b) {
  return sqrt(a * a + b * b);
}

ORIN_INLINE Vec2d accurate_length(Vec2d a, Vec2d b) {
  static constexpr Constant<double> half = 0.5;
  const Vec2d larger = max(abs(a), abs(b)), smaller = min(abs(a), abs(b));
  const Vec2d a_high = split(larger).high, b_high = split(smaller).high;
  const DoubleDouble squares = fast_two_sum(a_high * a_high, b_high * b_high);
  const Vec2d rest = (larger - a_high) * (larger + a_high) + (smaller - b_high) * (smaller + b_high);
  const DoubleDouble sum = fast_two_sum(squares.high, squares.low + rest);
  const Vec2d root = sqrt(sum.high);
  const DoubleDouble parts = split(root);
  const Vec2d remainder = ((sum.high - parts.high * parts.high) - parts.low * (root + parts.high)) + sum.low;
  return root + remainder * (root_seeds::inverse_square_root(sum.high) * in_memory(half));
}

// sqrt(a^2 + b^2), to 0.52 ulp or the plain formula.
template <class T, bool accurate>
struct Length {
  using V = typename RegisterOf<T>::type;

  // Where a square overflows; and where both are so small that digits of them are lost.
  static ORIN_INLINE Vec4i special_lanes(Vec4i a, Vec4i b) {
    constexpr std::int32_t largest = sizeof(T) == 8 ? 0x5fdfffff : accurate ? 0x7effffff : 0x5effffff;
    constexpr std::int32_t least = sizeof(T) == 8 ? 0x23d00000 : accurate ? 0 : 0x26800000;  // 2^-450, 2^-50
    return outside<least, largest>(larger_magnitude(a, b));
  }
  static ORIN_INLINE V fast(V a, V b) {
    if constexpr (!accurate) {
      return plain_length(a, b);
    } else if constexpr (sizeof(T) == 8) {
      return accurate_length(a, b);
    } else {
      const TwoVec2d x = widen(a), y = widen(b);
      return narrow({plain_length(x.low, y.low), plain_length(x.high, y.high)});
    }
  }
  static Outcome<T> special(T a, T b) {
    constexpr T infinity = std::numeric_limits<T>::infinity();
    const T x = std::fabs(a), y = std::fabs(b);
    if (x == infinity || y == infinity) return {{infinity}, KOR_STATUS_OK};
    if (a != a) return {{a + a}, KOR_STATUS_OK};
    if (b != b) return {{b + b}, KOR_STATUS_OK};
    constexpr Outcome<T> overflow{{infinity}, KOR_STATUS_OVERFLOW};
    if constexpr (sizeof(T) == 4) {
      const double result = first_lane(plain_length(Vec2d(static_cast<double>(x)), Vec2d(static_cast<double>(y))));
      if (result >= 0x1.ffffffp+127) return overflow;  // what rounds to an infinity
      return {{static_cast<T>(result)}, KOR_STATUS_OK};
    } else {
      const bool small = x < 1 && y < 1;
      const double up = small ? 0x1p700 : 0x1p-700;
      const double result = first_lane(fast(V(x * up), V(y * up)));
      if (!small && result > std::numeric_limits<T>::max() * 0x1p-700) return overflow;
      return {{result / up}, KOR_STATUS_OK};
    }
  }
};

// The plain length of floats, with a path in double where their squares would leave the range.
struct WidePlainLength : Length<float, true> {
  using Plain = Length<float, false>;

  static ORIN_INLINE Vec4i beyond_fast(Vec4i a, Vec4i b) { return Plain::special_lanes(a, b); }
  static ORIN_INLINE Vec4f fast(Vec4f a, Vec4f b) { return Plain::fast(a, b); }
  static ORIN_INLINE Vec4f wide(Vec4f a, Vec4f b) {
    const Vec4f far = from_bits(beyond_fast(bits(a), bits(b)));
    return select(far, Length::fast(a, b), fast(and_not(far, a), and_not(far, b)));
  }
};

}  // namespace orin::vector_math

#endif
