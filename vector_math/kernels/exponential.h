// exponential.h: e^x around the powers of one precision and grade: which arguments are special, and what they give.
// SPDX-License-Identifier: MIT
#ifndef ORIN_VECTOR_MATH_KERNELS_EXPONENTIAL_H
#define ORIN_VECTOR_MATH_KERNELS_EXPONENTIAL_H

#include <cmath>
#include <limits>

#include "vector_math/simd/elementwise.h"

namespace orin::vector_math {

// Where e^x leaves the normal numbers.
template <class T>
struct ExponentialRange;
template <>
struct ExponentialRange<double> {
  static constexpr const char* name = "vdExp";
  static constexpr double overflow = 0x1.62e42fefa39fp+9;     // at or above: +inf
  static constexpr double subnormal = -0x1.6232bdd7abcd2p+9;  // below: subnormal
  static constexpr double underflow = -0x1.74910d52d3052p+9;  // at or below: +0
};
template <>
struct ExponentialRange<float> {
  static constexpr const char* name = "vsExp";
  static constexpr float overflow = 0x1.62e43p+6f;
  static constexpr float subnormal = -0x1.5d589ep+6f;
  static constexpr float underflow = -0x1.9fe36ap+6f;
};

// Power::of<extra>(x) is e^x 2^extra where that is a normal number; it is told silently and within the grade's bound
// for extra = 0 up to the high word Power::constants.largest_word.
template <class T, class Power>
struct Exponential : simd::OneToOne<T> {
  using Range = ExponentialRange<T>;
  static constexpr const char* name = Range::name;
  static constexpr T ordinary = 0;

  static ORIN_INLINE simd::Vec4i special_lanes(simd::Vec4i high) {
    return simd::magnitude(high) > simd::in_memory(Power::constants).largest_word;
  }
  template <class V>
  static ORIN_INLINE V fast(V x) {
    return Power::template of<0>(x);
  }

  // Past the range of 2^k the way is in two steps: a normal number, then its product with the rest, which alone rounds
  // to a subnormal.
  static simd::Outcome<T> special(T x) {
    using Limits = std::numeric_limits<T>;
    constexpr int least = 1 - Limits::min_exponent;  // 2^-least is the least normal number
    if (x != x) return {{x + x}, KOR_STATUS_OK};
    if (x >= Range::overflow) return {{Limits::infinity()}, x > Limits::max() ? KOR_STATUS_OK : KOR_STATUS_OVERFLOW};
    if (x <= Range::underflow) return {{T(0)}, x < Limits::lowest() ? KOR_STATUS_OK : KOR_STATUS_UNDERFLOW};
    if (x < 0)
      return {{first_lane(Power::template of<least>(x)) * Limits::min()},
              x < Range::subnormal ? KOR_STATUS_UNDERFLOW : KOR_STATUS_OK};
    // The coarser grades may err past the largest number, whose logarithm the bound is.
    return {{first_lane(min(Power::template of<-1>(x), Limits::max() / 2)) * 2}, KOR_STATUS_OK};
  }
};

}  // namespace orin::vector_math

#endif
