// pow_core_d.h: x^y in double, for ordinary results.
// SPDX-License-Identifier: MIT
//
// Method    x^y = e^(y log x), the exponent as a pair: log x = l + l', y = y' + y'', l and y' of 26 bits;
//           main = y' l exactly, rest = y'' l + y l'
//           HA  main = n ln2/256 + r', r = r' + rest;  e^(main + rest) = 2^(n/256) (1 + p(r)), 2^(n/256) as a pair
//           EP  the exponent as one double; times 256/ln2 = n + 512 u, 2^(n/256) near T (w^2 + b), w = u + 369/512
// Budget    HA  in ulp: exponent 2^-6, p 2^-8, last rounding 1/2;  EP logarithm 2^-39 times 708, exponential 2^-31
// Data      data/log_d_data.h, data/pow_d_data.h from tools/tables/pow_d.py
// Source    P. T. P. Tang, ACM TOMS 15 (1989) and 16 (1990); Dekker's splitting for the product
#ifndef ORIN_VECTOR_MATH_KERNELS_POW_CORE_D_H
#define ORIN_VECTOR_MATH_KERNELS_POW_CORE_D_H

#include "vector_math/data/pow_d_data.h"
#include "vector_math/kernels/log_core_d.h"

namespace orin::vector_math::pow_d {

using namespace simd;

inline constexpr struct {
  Constant<double> limit = 708.0;                   // e^+-708 is normal
  Constant<double> inverse = 0x1.71547652b82fep+8;  // 256/ln2, nearest
  Constant<double> to_integer = 0x1.8p52;           // x + to_integer: x rounded to an integer, in the low bits
  Constant<double> step_high = pow_d_data::step_high, step_low = pow_d_data::step_low;
  Constant<double> c2 = pow_d_data::c2, c3 = pow_d_data::c3, c4 = pow_d_data::c4, c5 = pow_d_data::c5;
  Constant<double> ep_inverse = 0x1.71547652b82fep-1;  // 256/ln2 in units of 2^-9
  Constant<double> ep_to_step = 0x1.8p43;              // x + ep_to_step: x rounded to a multiple of 2^-9
  Constant<double> ep_to_step_shifted = 0x1.8p43 + pow_d_data::ep_shift;
  Constant<double> ep_b = pow_d_data::ep_b;
} constants{};

inline constexpr PowersOfTwo<Vec2d, 8> ep_powers{pow_d_data::ep_powers};

// y log x: main exactly, and the rest.
template <int scaled = 0>
ORIN_INLINE DoubleDouble exponent(Vec2d x, Vec2d y) {
  const DoubleDouble log = log_d::logarithm_pair<scaled>(x);
  const DoubleDouble l = split(log.high);
  const DoubleDouble factor = split(y);
  return {factor.high * l.high, factor.low * l.high + y * (l.low + log.low)};
}

// e^e = (high + rest) 2^k, high + rest in [1/2, 2).
struct PowerPair {
  Vec2d high, rest;
  Vec2l k;
};
ORIN_INLINE PowerPair power_pair(DoubleDouble e) {
  const auto& c = in_memory(constants);
  const Vec2d t = e.high * c.inverse + c.to_integer;
  const Vec2d n = t - c.to_integer;
  const Vec2d r = (e.high - n * c.step_high) + (e.low - n * c.step_low);
  const auto [high, low] = look_up_pairs(pow_d_data::powers, low_bits<8>(bits(t)));
  const Vec2d p = r + (r * r) * ((c.c2 + r * c.c3) + (r * r) * (c.c4 + r * c.c5));
  return {high, low + high * p, shift_right<8>(bits(t))};
}

// e^e = value 2^k.
struct Power {
  Vec2d value;
  Vec2l k;
};
ORIN_INLINE Power power(DoubleDouble e) {
  const PowerPair pair = power_pair(e);
  return {pair.high + pair.rest, pair.k};
}

// e^e to a relative 2^-31, for |e| < 708.
ORIN_INLINE Vec2d power_medium(Vec2d e) {
  const auto& c = in_memory(constants);
  const Vec2d scaled = e * c.ep_inverse;
  const Vec2d t = scaled + c.ep_to_step;
  const Vec2d w = scaled - (t - c.ep_to_step_shifted);
  return ep_powers.of(bits(t)) * (w * w + c.ep_b);
}

// x^y for x positive and normal, |y| < 2^61; a negative NaN where y log x is beyond +-708.
template <Grade grade>
ORIN_INLINE Vec2d power_function(Vec2d x, Vec2d y) {
  const auto& c = in_memory(constants);
  if constexpr (grade == Grade::ep) {
    const Vec2d e = y * log_d::logarithm_medium(x);
    const Vec2d beyond = abs(e) >= c.limit;
    return power_medium(and_not(beyond, e)) | beyond;  // an odd exponent must not meet the product
  } else {
    const DoubleDouble e = exponent(x, y);
    const Power result = power(e);
    return from_bits(bits(result.value) + shift_left<52>(result.k)) | (abs(e.high) >= c.limit);
  }
}

}  // namespace orin::vector_math::pow_d

#endif
