// modulus_log.h: log |x + iy| in double, shared by the complex functions that take one.
// SPDX-License-Identifier: MIT
//
// Method    M, m the larger and the smaller of |x|, |y|
//           HA      M^2 + m^2 = s + rest exactly but for 2^-105;  log |z| = log(s + rest)/2
//           LA, EP  M >= 1/2: 1 + t, t = (M - 1)(M + 1) + m^2, whose error is small beside |z - 1| wherever log |z| is;
//                   below, M^2 + m^2 as it is
// Arguments M within 2^-450 .. 2^400; far_modulus_log takes all others
#ifndef ORIN_VECTOR_MATH_KERNELS_MODULUS_LOG_H
#define ORIN_VECTOR_MATH_KERNELS_MODULUS_LOG_H

#include <cmath>

#include "vector_math/kernels/log_core_d.h"

namespace orin::vector_math {

inline constexpr struct { simd::Constant<double> half = 0.5, one = 1.0; } modulus_constants{};

// |z|^2 and what rounding left of it.
template <Grade grade>
ORIN_INLINE simd::DoubleDouble modulus_squared(simd::Vec2d x, simd::Vec2d y) {
  using namespace simd;
  const auto& c = in_memory(modulus_constants);
  const Vec2d a = abs(x), b = abs(y);
  const Vec2d larger = max(a, b), smaller = min(a, b);
  if constexpr (grade == Grade::ha) {
    const DoubleDouble square = two_square(larger), other = two_square(smaller);
    const DoubleDouble sum = fast_two_sum(square.high, other.high);
    return {sum.high, sum.low + (square.low + other.low)};
  } else {
    const Vec2d other = smaller * smaller;
    const OnePlus<Vec2d> near = one_plus((larger - c.one) * (larger + c.one) + other);
    const Vec2d inside = larger < c.half;
    return {select(inside, larger * larger + other, near.sum), and_not(inside, near.rest)};
  }
}

// log |z|.
template <Grade grade>
ORIN_INLINE simd::Vec2d modulus_log(simd::Vec2d x, simd::Vec2d y) {
  const simd::DoubleDouble square = modulus_squared<grade>(x, y);
  return logarithm<grade>(square.high, square.low) * simd::in_memory(modulus_constants).half;
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
