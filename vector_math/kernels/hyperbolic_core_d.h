// hyperbolic_core_d.h: sinh, cosh and e^x - 1 of doubles with ordinary results.
// SPDX-License-Identifier: MIT
//
// Method    x = n ln2/256 + r, |r| <= ln2/512;  s = 2^(n/256), s' = 2^(-n/256)
//           with A = (s - s')/2, B = (s + s')/2:  sinh x = A cosh r + B sinh r,  cosh x = B cosh r + A sinh r
//           e^x - 1 = (s - 1) + s (e^r - 1)
//           HA  r, s, s' as pairs; of sinh x the sum A + r is exact, so is (s - 1) + r of e^x - 1: what follows them is
//               2^-7 of the result at most
//           LA  s, s' as pairs, of cosh not;  EP  none;  cosh x from e^x and 1/e^x
// Arguments of sinh and cosh from 0 to 710, of e^x - 1 up to 708 on both sides.
// Budget    HA  in ulp: what follows the exact sums 2^-6, last rounding 1/2
//           LA  in 2^-53: A 1, r 1, sinh r 1, B and its product 2, sum 1, some twice as heavy where A and r have
//               different signs;  EP  polynomials 2^-34, 2^(n/256) next to 1 2^-44
// Data      data/hyperbolic_data.h from tools/tables/hyperbolic.py, powers of 2 from data/pow_d_data.h
// Source    P. T. P. Tang, Table-driven implementation of the expm1 function, ACM TOMS 18 (1992), 211-222
#ifndef ORIN_VECTOR_MATH_KERNELS_HYPERBOLIC_CORE_D_H
#define ORIN_VECTOR_MATH_KERNELS_HYPERBOLIC_CORE_D_H

#include "vector_math/data/hyperbolic_data.h"
#include "vector_math/data/pow_d_data.h"
#include "vector_math/grade.h"
#include "vector_math/kernels/double_double.h"
#include "vector_math/kernels/exp_core_d.h"
#include "vector_math/simd/table.h"

namespace orin::vector_math::hyperbolic_d {

using namespace simd;
namespace data = hyperbolic_data;

inline constexpr struct {
  Constant<double> inverse = 0x1.71547652b82fep+8;  // 256/ln2, nearest
  Constant<double> to_integer = 0x1.8p52;           // x + to_integer: x rounded to an integer, in the low bits
  Constant<double> least = 0x1.8p52 - 16384;        // 2^-64 is nothing beside 2^64
  Constant<double> step_high = pow_d_data::step_high, step_low = pow_d_data::step_low, step = 0x1.62e42fefa39efp-9;
  Constant<double> half = 0.5, one = 1.0, minus_one = -1.0;
  Constant<double> s0 = data::sinh_d_0, s1 = data::sinh_d_1, c0 = data::cosh_d_0, c1 = data::cosh_d_1;
  Constant<double> e0 = data::expm1_d_0, e1 = data::expm1_d_1, e2 = data::expm1_d_2, e3 = data::expm1_d_3;
  Constant<double> ep_s0 = data::sinh_ep_d_0, ep_e0 = data::expm1_ep_d_0, ep_e1 = data::expm1_ep_d_1;
} constants{};

// 2^(j/256), nearest: the first ones of the pairs.
inline constexpr PowersOfTwo<Vec2d, 8> powers{[] {
  struct {
    double of[256];
  } highs{};
  for (int j = 0; j < 256; ++j) highs.of[j] = pow_d_data::powers[2 * j];
  return highs;
}()
                                                  .of};

// x = n ln2/256 + r + r_low, t = n + to_integer.
struct Reduced {
  Vec2d t, r, r_low;
};
template <Grade grade>
ORIN_INLINE Reduced reduce(const auto& c, Vec2d x) {
  const Vec2d t = x * c.inverse + c.to_integer;
  const Vec2d n = t - c.to_integer;
  if constexpr (grade == Grade::ep) return {t, x - n * c.step, x};
  const Vec2d head = x - n * c.step_high;  // exact
  const Vec2d tail = n * c.step_low;
  const Vec2d r = head - tail;
  return {t, r, (head - r) - tail};
}

// 2^(n/256 - halvings) as a pair.
template <int halvings>
ORIN_INLINE DoubleDouble power(Vec2d t) {
  const auto [high, low] = look_up_pairs(pow_d_data::powers, low_bits<8>(bits(t)));
  const Vec2d factor = from_bits(shift_left<52>(shift_right<8>(bits(t)) + Vec2l(std::int64_t{1023 - halvings})));
  return {high * factor, low * factor};
}

// -n for n, but not below -16384.
ORIN_INLINE Vec2d opposite(const auto& c, Vec2d t) { return max(c.to_integer - (t - c.to_integer), c.least); }

// cosh x 2^(1 - halvings).
template <Grade grade, int halvings = 1>
ORIN_INLINE Vec2d hyperbolic_cosine(Vec2d x) {
  if constexpr (grade == Grade::ep) {
    static constexpr Constant<double> product = 1.0 / (1 << 2 * halvings);  // of e^x and e^-x, so scaled
    const Vec2d e = exp_d::Power<Grade::ep>::of<-halvings>(x);
    return e + in_memory(product) / e;
  }
  const auto& c = in_memory(constants);
  const auto [t, r, r_low] = reduce<grade>(c, x);
  const Vec2d r2 = r * r;
  if constexpr (grade == Grade::ha) {
    const DoubleDouble s = power<halvings>(t), inverse = power<halvings>(opposite(c, t));
    const DoubleDouble b = fast_two_sum(s.high, inverse.high);
    const Vec2d a = s.high - inverse.high;
    const Vec2d sine = r + (r * r2) * (c.s0 + r2 * c.s1);
    const Vec2d less_one = r2 * (c.c0 + r2 * c.c1);
    return b.high + ((b.low + (s.low + inverse.low)) + (b.high * less_one + a * sine));
  } else {
    const Vec2d s = powers.of<-halvings>(bits(t)), inverse = powers.of<-halvings>(bits(opposite(c, t)));
    const Vec2d a = s - inverse, b = s + inverse;
    return b + (b * (r2 * (c.c0 + r2 * c.c1)) + a * (r + (r * r2) * (c.s0 + r2 * c.s1)));
  }
}

template <Grade grade>
ORIN_INLINE Vec2d hyperbolic_sine(Vec2d x) {
  const auto& c = in_memory(constants);
  const auto [t, r, r_low] = reduce<grade>(c, x);
  const Vec2d r2 = r * r;
  if constexpr (grade == Grade::ep) {
    const Vec2d s = powers.of<-1>(bits(t)), inverse = powers.of<-1>(bits(opposite(c, t)));
    const Vec2d a = s - inverse;
    return a + (a * (r2 * c.half) + (s + inverse) * (r + (r * r2) * c.ep_s0));
  } else {
    const DoubleDouble s = power<1>(t), inverse = power<1>(opposite(c, t));
    const Vec2d cubic = (r * r2) * (c.s0 + r2 * c.s1);
    const Vec2d less_one = r2 * (c.c0 + r2 * c.c1);
    if constexpr (grade == Grade::la) {
      const Vec2d a = (s.high - inverse.high) + (s.low - inverse.low);
      return a + (a * less_one + (s.high + inverse.high) * (r + cubic));
    } else {
      const Vec2d a = s.high - inverse.high;
      const Vec2d a_low = ((s.high - a) - inverse.high) + (s.low - inverse.low);
      const Vec2d b_less_one = ((s.high - c.half) + (inverse.high - c.half)) + (s.low + inverse.low);
      const DoubleDouble sum = fast_two_sum(a, r);
      const Vec2d rest = (a * less_one + b_less_one * r) + (c.one + b_less_one) * (cubic + r_low);
      return sum.high + (sum.low + (a_low + rest));
    }
  }
}

// e^x - 1; +0 for -0.
template <Grade grade>
ORIN_INLINE Vec2d exponential_less_one(Vec2d x) {
  const auto& c = in_memory(constants);
  const auto [t, r, r_low] = reduce<grade>(c, x);
  const Vec2d r2 = r * r;
  if constexpr (grade == Grade::ep) {
    const Vec2d s = powers.of<0>(bits(t));
    return (s - c.one) + s * (r + r2 * (c.ep_e0 + r * c.ep_e1));
  } else {
    const DoubleDouble s = power<0>(t);
    const Vec2d bent = r2 * ((c.e0 + r * c.e1) + r2 * (c.e2 + r * c.e3));
    if constexpr (grade == Grade::la) return ((s.high - c.one) + s.low) + s.high * (r + bent);
    const DoubleDouble m = two_sum(s.high, c.minus_one);
    const DoubleDouble sum = fast_two_sum(m.high, r);
    const Vec2d m_low = m.low + s.low;
    return sum.high + (sum.low + (m_low + ((m.high + m_low) * r + s.high * (bent + r_low))));
  }
}

}  // namespace orin::vector_math::hyperbolic_d

#endif
