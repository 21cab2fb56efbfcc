// sincos_core_s.h: sine, cosine and tangent of floats, shared by every function that takes one in LA or EP.
// SPDX-License-Identifier: MIT
//
// Use       sine<grade>(HalfTurns<grade, 0>::reduce(x)), cosine<grade>(HalfTurns<grade, 1>::reduce(x));
//           QuarterTurns<grade>::reduce for sine_and_cosine and tangent. reduce takes |x| up to last_word<grade>, reduce_any
//           every finite x with the same bits. Single HA computes in doubles with sincos_core_d.h; reduce_any_single is its
//           reduction.
// Method    x = n pi - r, for the cosine x = (n - 1/2) pi - r;  (-1)^(n+1) sin r = (-1)^(n+1) r (1 + r^2 p(r^2))
//           x = n pi/2 - r;  sin r, cos r, exchanged where n is odd;  tan r = r (1 + p r^2)/(1 + q r^2 + q' r^4)
// Reduction in floats up to 1536: x - n pi in three parts of pi, two in EP up to 248, each product exact but the last (Cody
//           and Waite); in doubles below 2^20, and by the digits of 64/pi beyond, as in sincos_core_d.h. r is the opposite
//           of the usual one, so that zero keeps its sign: the first part of pi is above pi, the others are negative.
// Budget    LA  in 2^-24: r 2, polynomial 1/2, its product 1, last two 2;  EP polynomial 2^-12.3
// Special   sin -0 = -0, tan -0 = -0, cos 0 = 1 and f(x) = x for subnormal x come out by themselves
// Data      data/sincos_s_data.h from tools/tables/sincos_s.py
#ifndef ORIN_VECTOR_MATH_KERNELS_SINCOS_CORE_S_H
#define ORIN_VECTOR_MATH_KERNELS_SINCOS_CORE_S_H

#include "vector_math/data/sincos_s_data.h"
#include "vector_math/kernels/log_base.h"
#include "vector_math/kernels/sincos_core_d.h"

namespace orin::vector_math::sincos_s {

using namespace simd;
namespace data = sincos_s_data;

// A multiple n of the unit less x, which is +-0 where x is -+0; n + 3 in the low bits of m.
struct Angle {
  Vec4f r;
  Vec4i m;
};

template <Grade grade>
inline constexpr std::int32_t last_word = grade == Grade::la ? 0x44bfffff : 0x4377ffff;  // below 1536, below 248

// Reduction by units of pi/per_pi. `ahead` quarter turns are added to x first, and taken from n.
template <Grade grade, int per_pi, int ahead>
struct Turns {
  static constexpr float turned = 0.5f * ahead * per_pi;

  static constexpr struct {
    Constant<std::int32_t> near_limit = last_word<grade> + 1, first_medium = 0x44c00000, last_medium = 0x497fffff;
    Constant<float> inverse = data::inverse * per_pi, to_integer = 0x1.8p23f + 3, turned = Turns::turned;
    Constant<float> step_0 = data::pi_0 / per_pi;
    Constant<float> rest_0 = data::rest_0 / per_pi, step_1 = data::pi_1 / per_pi, rest_1 = data::rest_1 / per_pi;
    Constant<float> low_per_x = data::low_per_x, safe = 0x1p30f;
  } constants{};
  static constexpr struct {
    Constant<double> inverse = data::wide_inverse * per_pi, to_integer = 0x1.8p52 + 3, turned = Turns::turned;
    Constant<double> high = data::wide_high / per_pi, low = data::wide_low / per_pi;
  } wide_constants{};

  static ORIN_INLINE Angle reduce(Vec4f x) { return reduce_in_floats<grade == Grade::la>(x); }

  // 1536 <= |x| < 2^20.
  static ORIN_INLINE Angle reduce_medium(Vec4f x) {
    Angle angle = in_doubles(
        x, [](Vec2d y) __attribute__((always_inline)) { return medium(y); });
    if constexpr (grade == Grade::ep) angle.r = angle.r + x * in_memory(constants).low_per_x;
    return angle;
  }
  static ORIN_INLINE Vec4i beyond_medium(Vec4i words) { return outside<0x44c00000, 0x497fffff>(magnitude(words)); }

  // Any finite x; up to last_word the bits of reduce.
  static ORIN_INLINE Angle reduce_any(Vec4f x) {
    const auto& c = in_memory(constants);
    const Vec4i size = magnitude(bits(x));
    const Vec4i is_huge = size > c.last_medium, is_small = size < c.first_medium;
    if (lane_bits(is_small) == 15) return reduce_small(x);
    Angle angle = reduce_medium(and_not(from_bits(is_huge | is_small), x));
    if (lane_bits(is_huge) != 0) {
      const Angle huge = in_doubles(
          select(from_bits(is_huge), x, c.safe), [](Vec2d y) __attribute__((always_inline)) {
            return sincos_d::reduce_huge_single<2 * per_pi, ahead, true>(y);
          });
      angle = select(is_huge, huge, angle);
    }
    if (lane_bits(is_small) != 0) angle = select(is_small, reduce_small(x & from_bits(is_small)), angle);
    return angle;
  }

 private:
  struct Nearest {
    Vec4f n;
    Vec4i bits;
  };
  static ORIN_INLINE Nearest nearest(Vec4f x) {
    const auto& c = in_memory(constants);
    Vec4f turns = x * c.inverse;
    if constexpr (ahead != 0) turns = turns + c.turned;
    const Vec4f t = turns + c.to_integer;
    Vec4f n = t - c.to_integer;
    if constexpr (ahead != 0) n = n - c.turned;
    return {n, bits(t)};
  }
  // In two parts of the unit below 248, in three below 1536.
  template <bool three_parts>
  static ORIN_INLINE Angle reduce_in_floats(Vec4f x) {
    const auto& c = in_memory(constants);
    const Nearest m = nearest(x);
    if constexpr (three_parts) return {(m.n * c.step_1 - (x - m.n * c.step_0)) + m.n * c.rest_1, m.bits};
    return {m.n * c.rest_0 - (x - m.n * c.step_0), m.bits};
  }
  static ORIN_INLINE Angle reduce_small(Vec4f x) {
    Angle angle = reduce_in_floats<true>(x);
    if constexpr (grade == Grade::ep) {
      const Vec4i is_near = magnitude(bits(x)) < in_memory(constants).near_limit;
      angle.r = select(from_bits(is_near), reduce(x).r, angle.r);
    }
    return angle;
  }
  static ORIN_INLINE Angle select(Vec4i mask, const Angle& a, const Angle& b) {
    return {simd::select(from_bits(mask), a.r, b.r), simd::select(mask, a.m, b.m)};
  }
  static ORIN_INLINE Vec4f select(Vec4f mask, Vec4f a, Vec4f b) { return simd::select(mask, a, b); }
  static ORIN_INLINE Angle in_doubles(Vec4f x, auto reduction) {
    const TwoVec2d wide = widen_through_memory(x);
    const sincos_d::Angle low = reduction(wide.low), high = reduction(wide.high);
    return {narrow({low.high, high.high}), low_words(low.n, high.n)};
  }
  // |x| < 2^20; in EP without n times the low part of pi, which is x times that of 1, but for r times it.
  static ORIN_INLINE sincos_d::Angle medium(Vec2d x) {
    const auto& c = in_memory(wide_constants);
    Vec2d turns = x * c.inverse;
    if constexpr (ahead != 0) turns = turns + c.turned;
    const Vec2d t = turns + c.to_integer;
    Vec2d n = t - c.to_integer;
    if constexpr (ahead != 0) n = n - c.turned;
    Vec2d r = n * c.high - x;
    if constexpr (grade != Grade::ep) r = r + n * c.low;
    return {r, 0.0, bits(t)};
  }
};
template <Grade grade, int ahead>
using HalfTurns = Turns<grade, 1, ahead>;
template <Grade grade>
using QuarterTurns = Turns<grade, 2, 0>;

struct LowAccuracy {
  Constant<float> one = 1.0f;
  Constant<float> half_s0 = data::la_half_s0, half_s1 = data::la_half_s1, half_s2 = data::la_half_s2,
                  half_s3 = data::la_half_s3;
  Constant<float> s0 = data::la_s0, s1 = data::la_s1, s2 = data::la_s2;
  Constant<float> c0 = data::la_c0, c1 = data::la_c1, c2 = data::la_c2;
  Constant<float> tp = data::la_tp, tq0 = data::la_tq0, tq1 = data::la_tq1;
};
struct Enhanced {
  Constant<float> one = 1.0f;
  Constant<float> half_s0 = data::ep_half_s0, half_s1 = data::ep_half_s1;
  Constant<float> s0 = data::ep_s0, s1 = data::ep_s1, c0 = data::ep_c0, c1 = data::ep_c1;
  Constant<float> tq0 = data::ep_tq0, tq1 = data::ep_tq1;
};
template <Grade grade>
inline constexpr LowAccuracy constants{};
template <>
inline constexpr Enhanced constants<Grade::ep>{};

// ((sin r)/r - 1)/r^2, |r| <= pi/2.
template <Grade grade>
ORIN_INLINE Vec4f bend(const auto& c, Vec4f r2) {
  if constexpr (grade == Grade::la)
    return c.half_s0 + r2 * (c.half_s1 + r2 * (c.half_s2 + r2 * c.half_s3));
  else
    return c.half_s0 + r2 * c.half_s1;
}
// Of an angle in half turns.
template <Grade grade>
ORIN_INLINE Vec4f sine(const Angle& angle) {
  const auto& c = in_memory(constants<grade>);
  const Vec4f r = angle.r;
  const Vec4f r2 = r * r;
  return (r * (c.one + r2 * bend<grade>(c, r2))) ^ from_bits(shift_left<31>(angle.m));
}
// Of an angle in half turns, of x + pi/2: cos 0 is 1. A zero would lose its sign.
template <Grade grade>
ORIN_INLINE Vec4f cosine(const Angle& angle) {
  const Vec4f r = angle.r;
  const Vec4f r2 = r * r;
  const Vec4f p = bend<grade>(in_memory(constants<grade>), r2);
  return (r + (r * r2) * p) ^ from_bits(shift_left<31>(angle.m));
}

// first and second, exchanged in the lanes where m is odd.
ORIN_INLINE Two<Vec4f> exchange_if_odd(Vec4i m, Vec4f first, Vec4f second) {
  const Vec4f difference = (first ^ second) & from_bits(shift_right_signed<31>(shift_left<31>(m)));
  return {first ^ difference, second ^ difference};
}

// Of an angle in quarter turns.
template <Grade grade>
ORIN_INLINE Two<Vec4f> sine_and_cosine(const Angle& angle) {
  static constexpr struct { Constant<std::int32_t> one = 1, sign = INT32_MIN; } integers{};
  const auto& c = in_memory(constants<grade>);
  const auto& k = in_memory(integers);
  const Vec4f r = angle.r;
  const Vec4f r2 = r * r;
  Vec4f s, t;
  if constexpr (grade == Grade::la) {
    s = c.s0 + r2 * (c.s1 + r2 * c.s2);
    t = c.c0 + r2 * (c.c1 + r2 * c.c2);
  } else {
    s = c.s0 + r2 * c.s1;
    t = c.c0 + r2 * c.c1;
  }
  const auto [cosine, sine] = exchange_if_odd(angle.m, r * (c.one + r2 * s), c.one + r2 * t);
  return {sine ^ from_bits(shift_left<30>(angle.m) & k.sign),
          cosine ^ from_bits(shift_left<30>(angle.m + k.one) & k.sign)};
}
template <Grade grade>
ORIN_INLINE Vec4f tangent(const Angle& angle) {
  const auto& c = in_memory(constants<grade>);
  const Vec4f r = angle.r;
  const Vec4f r2 = r * r;
  Vec4f dividend = r;
  if constexpr (grade == Grade::la) dividend = r * (c.one + r2 * c.tp);
  const auto [t, s] = exchange_if_odd(angle.m, dividend, c.one + r2 * (c.tq0 + r2 * c.tq1));
  return (s / t) ^ from_bits(shift_left<31>(angle.m));
}

}  // namespace orin::vector_math::sincos_s

#endif
