// double_double.h: unevaluated sums of two doubles, lane by lane.
// SPDX-License-Identifier: MIT
//
// Notation  u = 2^-53. A pair is high + low with |low| at most a few units of high's last place.
// Source    T. J. Dekker, A floating-point technique for extending the available precision, Numer. Math. 18 (1971);
//           D. E. Knuth, The Art of Computer Programming 2, section 4.2.2
#ifndef ORIN_VECTOR_MATH_KERNELS_DOUBLE_DOUBLE_H
#define ORIN_VECTOR_MATH_KERNELS_DOUBLE_DOUBLE_H

#include "vector_math/simd/registers.h"

namespace orin::vector_math::simd {

struct DoubleDouble {
  Vec2d high, low;
};

// a + b exactly, where |a| >= |b| or a = 0.
ORIN_INLINE DoubleDouble fast_two_sum(Vec2d a, Vec2d b) {
  const Vec2d sum = a + b;
  return {sum, (a - sum) + b};
}

// a + b exactly.
ORIN_INLINE DoubleDouble two_sum(Vec2d a, Vec2d b) {
  const Vec2d sum = a + b;
  const Vec2d from_b = sum - a;
  return {sum, (a - (sum - from_b)) + (b - from_b)};
}

// a - b exactly.
ORIN_INLINE DoubleDouble two_difference(Vec2d a, Vec2d b) {
  const Vec2d difference = a - b;
  const Vec2d from_b = difference - a;
  return {difference, (a - (difference - from_b)) - (b + from_b)};
}

// a as a high part of 26 bits, cut, and the rest of at most 27: products of a high part with either are exact.
ORIN_INLINE DoubleDouble split(Vec2d a) {
  static constexpr Constant<std::int64_t> leading = -(INT64_C(1) << 27);
  const Vec2d high = a & from_bits(in_memory(leading));
  return {high, a - high};
}

// a as 26 bits, rounded, and the rest of at most 26 with a sign: all products of such parts are exact.
ORIN_INLINE DoubleDouble split_evenly(Vec2d a) {
  static constexpr struct { Constant<std::int64_t> leading = -(INT64_C(1) << 27), half = INT64_C(1) << 26; } bits_of{};
  const auto& c = in_memory(bits_of);
  const Vec2d high = from_bits((bits(a) + c.half) & c.leading);
  return {high, a - high};
}

// a b exactly, unless the low part underflows. The low part is exact but for the product of the two rests, which has
// up to 54 bits: off by at most u^2 |a b|.
ORIN_INLINE DoubleDouble two_product(Vec2d a, Vec2d b) {
  const DoubleDouble x = split(a);
  const DoubleDouble y = split(b);
  const Vec2d product = a * b;
  return {product, ((x.high * y.high - product) + x.high * y.low + x.low * y.high) + x.low * y.low};
}
// a^2, a given in halves, too; with even ones exactly.
ORIN_INLINE DoubleDouble two_square(Vec2d a, DoubleDouble x) {
  const Vec2d square = a * a;
  return {square, ((x.high * x.high - square) + (x.high + x.high) * x.low) + x.low * x.low};
}
ORIN_INLINE DoubleDouble two_square(Vec2d a) { return two_square(a, split(a)); }

}  // namespace orin::vector_math::simd

#endif
