// sinh_cosh_core_d.h: sinh and cosh of doubles at once, for functions that take both.
// SPDX-License-Identifier: MIT
//
// Use       sinh_cosh<grade>(y), 0 <= y < 708
// Method    y = n ln2/64 + r;  E = 2^(n/64)/2, F = 2^(-n/64)/2 as pairs of short numbers;  D = E - F, S = E + F
//           sinh y = D + S sinh r + D (cosh r - 1),  cosh y = S + D sinh r + S (cosh r - 1)
//           HA sinh by its series below 1/4;  EP without the low parts of the pairs
// Budget    HA, LA  in ulp: sinh r next to 1/4 2^-4, low parts 2^-8, sum 1/2;  LA sinh from 0.005 to 0.05 2.5
//           EP  next term of cosh r 2^-34.7, of sinh r relative 2^-36
// Data      data/exp_d_data.h; the series have the coefficients of Taylor
#ifndef ORIN_VECTOR_MATH_KERNELS_SINH_COSH_CORE_D_H
#define ORIN_VECTOR_MATH_KERNELS_SINH_COSH_CORE_D_H

#include "vector_math/data/exp_d_data.h"
#include "vector_math/grade.h"
#include "vector_math/kernels/double_double.h"
#include "vector_math/simd/table.h"

namespace orin::vector_math::sinh_cosh_d {

using namespace simd;

inline constexpr struct {
  Constant<double> inverse = 0x1.71547652b82fep+6;    // 64/ln2, nearest
  Constant<double> to_integer = 0x1.8p52;             // x + to_integer: x rounded to an integer, in the low bits
  Constant<double> step_high = 0x1.62e42fefp-7;       // ln2/64 to 32 bits: n step_high is exact
  Constant<double> step_low = 0x1.473de6af278edp-40;  // the rest
  Constant<std::int64_t> half = INT64_C(1022) << 52;
  Constant<double> s3 = 1.0 / 6, s5 = 1.0 / 120, c2 = 0.5, c4 = 1.0 / 24, c6 = 1.0 / 720;
  Constant<double> series_below = 0.25;
  Constant<double> s7 = 1.0 / 5040, s9 = 1.0 / 362880, s11 = 1.0 / 39916800, s13 = 1.0 / 6227020800;
} constants{};

inline constexpr std::int32_t largest_word = 0x40861fff;  // the high word of y below 708

struct SinhCosh {
  Vec2d sinh, cosh;
};

// T at j as a pair, times a power of two.
ORIN_INLINE DoubleDouble scaled_pair(Vec2l n, Vec2d power) {
  const auto [high, low] = look_up_pairs(exp_d_data::ha_pairs, low_bits<6>(n));
  return {high * power, low * power};
}

template <Grade grade>
ORIN_INLINE SinhCosh sinh_cosh(Vec2d y) {
  const auto& c = in_memory(constants);
  const Vec2d t = y * c.inverse + c.to_integer;
  const Vec2d n = t - c.to_integer;
  const Vec2d r = (y - n * c.step_high) - n * c.step_low;
  const Vec2l minus = bits(c.to_integer - n);
  const Vec2l up = shift_left<52>(shift_right<6>(bits(t))) + c.half;
  const Vec2l down = shift_left<52>(shift_right<6>(minus)) + c.half;
  const DoubleDouble e = scaled_pair(bits(t), from_bits(up));
  const DoubleDouble f = scaled_pair(minus, from_bits(down));
  const Vec2d r2 = r * r;
  if constexpr (grade == Grade::ep) {
    const Vec2d difference = e.high - f.high, sum = e.high + f.high;
    const Vec2d odd = r + (r * r2) * c.s3;
    const Vec2d even = r2 * c.c2;
    return {difference + ((sum * odd + difference * even) + (e.low - f.low)), sum + (difference * odd + sum * even)};
  } else {
    const DoubleDouble difference = fast_two_sum(e.high, from_bits(bits(f.high) ^ bits(Vec2d(-0.0))));
    const DoubleDouble sum = fast_two_sum(e.high, f.high);
    const Vec2d odd = r + (r * r2) * (c.s3 + r2 * c.s5);
    const Vec2d even = r2 * (c.c2 + r2 * (c.c4 + r2 * c.c6));
    const Vec2d difference_low = difference.low + (e.low - f.low), sum_low = sum.low + (e.low + f.low);
    const Vec2d d = difference.high + difference_low, s = sum.high + sum_low;
    Vec2d sinh = difference.high + (s * odd + (d * even + difference_low));
    const Vec2d cosh = sum.high + (d * odd + (s * even + sum_low));
    if constexpr (grade == Grade::ha) {
      const Vec2d y2 = y * y;
      const Vec2d series = y + (y * y2) * (c.s3 + y2 * (c.s5 + y2 * (c.s7 + y2 * (c.s9 + y2 * (c.s11 + y2 * c.s13)))));
      sinh = select(y < c.series_below, series, sinh);
    }
    return {sinh, cosh};
  }
}

}  // namespace orin::vector_math::sinh_cosh_d

#endif
