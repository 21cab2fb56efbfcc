// modulus_log.h: log |x + iy|, shared by the complex functions that take one.
// SPDX-License-Identifier: MIT
//
// Method    M, m the larger and the smaller of |x|, |y|
//           log |z| = log(s + rest)/2, s + rest = M'^2 + (2 M' (M - M') + ((M - M')^2 + m^2)), M' the first bits of M;
//           HA the logarithm as LA, next to |z| = 1 s + rest to 2^-105
//           floats  s = c + ((M - c)(M + c) + m^2), c 1 for M >= 1/2, else 0: next to z = 1 as accurate as z - 1
// Arguments M within 2^-450 .. 2^400, of floats 2^-62 .. 2^62; far_modulus_log takes all others
#ifndef ORIN_VECTOR_MATH_KERNELS_MODULUS_LOG_H
#define ORIN_VECTOR_MATH_KERNELS_MODULUS_LOG_H

#include <cmath>

#include "vector_math/kernels/log_core_d.h"
#include "vector_math/kernels/log_core_s.h"

namespace orin::vector_math {

inline constexpr struct {
  simd::Constant<double> half = 0.5, one = 1.0;
  simd::Constant<double> near = 0.25, very_near = 0x1p-8;  // of |z|^2 to 1
} modulus_constants{};

// |z|^2 and what rounding left of it, to 2^-105.
ORIN_INLINE simd::DoubleDouble modulus_squared_pair(simd::Vec2d x, simd::Vec2d y) {
  using namespace simd;
  const Vec2d a = abs(x), b = abs(y);
  const Vec2d larger = max(a, b), smaller = min(a, b);
  const DoubleDouble square = two_square(larger, split_evenly(larger));
  const DoubleDouble other = two_square(smaller, split_evenly(smaller));
  const DoubleDouble sum = fast_two_sum(square.high, other.high);
  return {sum.high, sum.low + (square.low + other.low)};
}

// |z|^2 as an exact leading part and the rest, rounded: what that loses may show beside 1, but not beside z - 1.
ORIN_INLINE simd::DoubleDouble modulus_squared(simd::Vec2d x, simd::Vec2d y) {
  using namespace simd;
  const Vec2d a = abs(x), b = abs(y);
  const Vec2d larger = max(a, b), smaller = min(a, b);
  const auto [leading, last] = split_evenly(larger);  // of a number next to 1 it is 1
  return {leading * leading, (leading + leading) * last + (last * last + smaller * smaller)};
}

// |z|^2 and what rounding left of it, to 2^-78; next to 1 to 2^-105.
ORIN_INLINE simd::DoubleDouble modulus_squared_medium(simd::Vec2d x, simd::Vec2d y) {
  using namespace simd;
  const auto& c = in_memory(modulus_constants);
  const Vec2d a = abs(x), b = abs(y);
  const Vec2d larger = max(a, b), smaller = min(a, b);
  const Vec2d a_high = split(larger).high, b_high = split(smaller).high;
  const DoubleDouble squares = fast_two_sum(a_high * a_high, b_high * b_high);
  const Vec2d rest = (larger - a_high) * (larger + a_high) + (smaller - b_high) * (smaller + b_high);
  const DoubleDouble square = fast_two_sum(squares.high, squares.low + rest);
  const Vec2d near = abs(square.high - c.one) < c.very_near;
  if (lane_bits(near) == 0) [[likely]]
    return square;
  const DoubleDouble pair = modulus_squared_pair(x, y);
  return {select(near, pair.high, square.high), select(near, pair.low, square.low)};
}

// log |z|, HA accurate next to |z| = 1, too; of floats T, whose squares are exact in double, all grades.
template <Grade grade, Base base = Base::e, class T = double>
ORIN_INLINE simd::Vec2d modulus_log(simd::Vec2d x, simd::Vec2d y) {
  using namespace simd;
  const auto& c = in_memory(modulus_constants);
  if constexpr (sizeof(T) == 4) {
    const Vec2d x2 = x * x, y2 = y * y;
    const DoubleDouble sum = fast_two_sum(max(x2, y2), min(x2, y2));
    return logarithm<grade, base>(sum.high, sum.low) * c.half;
  }
  const DoubleDouble parts = modulus_squared(x, y);
  DoubleDouble square = fast_two_sum(parts.high, parts.low);
  if constexpr (grade == Grade::ha) {
    const Vec2d near = abs(square.high - c.one) < c.near;
    if (lane_bits(near) != 0) [[unlikely]] {
      const DoubleDouble pair = modulus_squared_pair(x, y);
      square = {select(near, pair.high, square.high), select(near, pair.low, square.low)};
    }
  }
  return logarithm < grade == Grade::ha ? Grade::la : grade, base > (square.high, square.low) * c.half;
}

// The same in floats, LA and EP.
template <Grade grade, Base base, class>
ORIN_INLINE simd::Vec4f modulus_log(simd::Vec4f x, simd::Vec4f y) {
  using namespace simd;
  static constexpr struct { Constant<float> half = 0.5f, one = 1.0f; } constants{};
  const auto& c = in_memory(constants);
  const Vec4f a = abs(x), b = abs(y);
  const Vec4f larger = max(a, b), smaller = min(a, b);
  const Vec4f large = larger >= c.half;
  const Vec4f near = large & c.one;
  return fraction_of_logarithm<grade, base, 2>(large, (larger - near) * (larger + near) + smaller * smaller);
}

// log(2^doubled |z|) of any finite z but 0 that is far from 2^-doubled.
template <Grade grade, int doubled = 0>
ORIN_INLINE double far_modulus_log(double x, double y) {
  using simd::Vec2d;
  const auto half_log_of_square = [](double a, double b, auto log_of) __attribute__((always_inline)) {
    return first_lane(log_of(Vec2d(a * a + b * b))) / 2;
  };
  const double size = std::fmax(std::fabs(x), std::fabs(y));
  if (size < 0x1p-400)
    return half_log_of_square(x * 0x1p600, y * 0x1p600,
                              [](Vec2d s) { return logarithm<grade, Base::e, 1200 - 2 * doubled>(s); });
  if (size >= 0x1p400)
    return half_log_of_square(x * 0x1p-600, y * 0x1p-600,
                              [](Vec2d s) { return logarithm<grade, Base::e, -1200 - 2 * doubled>(s); });
  return half_log_of_square(x, y, [](Vec2d s) { return logarithm<grade, Base::e, -2 * doubled>(s); });
}

}  // namespace orin::vector_math

#endif
