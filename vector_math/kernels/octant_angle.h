// octant_angle.h: the angle of a point of the upper half-plane by octants, double.
// SPDX-License-Identifier: MIT
//
// Method    M, m the larger and the smaller of y and |x|, c = m/M in steps of 1/64;  angle = arc +- (r + bend), arc = base
//           +- atan c, base one of 0, pi/2, pi by the octant, r = (m - c M)/(M + c m), |r| <= 2^-7, bend = atan r - r
// Arguments as in atan_core.h, y not negative, x of any sign; not the origin
// Budget    HA  in units of rounding: r 1 1/2 and one sum 1/2, where r is as large as the angle; the result 1/2
//           LA  in units of rounding: r 1, m - c M 1/2 of 1, arc and sum 1/2 each
// Data      data/octants_data.h from tools/tables/octants.py, data/atan_data.h
#ifndef ORIN_VECTOR_MATH_KERNELS_OCTANT_ANGLE_H
#define ORIN_VECTOR_MATH_KERNELS_OCTANT_ANGLE_H

#include "vector_math/data/octants_data.h"
#include "vector_math/kernels/atan_core.h"
#include "vector_math/kernels/double_double.h"

namespace orin::vector_math::octant_angle {

using namespace simd;

inline constexpr struct {
  Constant<double> to_step = 0x1.8p46;  // t + to_step: t rounded to a multiple of 1/64, 64 t in the low bits
  Constant<std::int64_t> swapped = 65, opposite = 130;  // steps of the octants
  Constant<double> zero = 0.0, minus_zero = -0.0;
} constants{};

struct Place {
  Vec2d larger, smaller, c;
  Vec2d arc, arc_rest;
  Vec2d sign;  // of what is added to the arc
};
// `quadrant`: x is not negative.
template <bool quadrant = false>
ORIN_INLINE Place place_of(Vec2d y, Vec2d signed_x) {
  const auto& k = in_memory(constants);
  const Vec2d x = quadrant ? signed_x : abs(signed_x);
  const Vec2d swapped = y > x;
  const Vec2d larger = max(x, y), smaller = min(x, y);
  const Vec2d step = smaller / larger + k.to_step;
  if constexpr (quadrant) {
    const auto [arc, arc_rest] =
        look_up_pairs(octants_data::angles, low_bits<32>(bits(step) + (bits(swapped) & Vec2l(k.swapped))));
    return {larger, smaller, step - k.to_step, arc, arc_rest, swapped & k.minus_zero};
  }
  const Vec2d opposite = signed_x < k.zero;
  const auto index =
      low_bits<32>(bits(step) + (bits(swapped) & Vec2l(k.swapped)) + (bits(opposite) & Vec2l(k.opposite)));
  const auto [arc, arc_rest] = look_up_pairs(octants_data::angles, index);
  return {larger, smaller, step - k.to_step, arc, arc_rest, (swapped ^ opposite) & k.minus_zero};
}

// m - c M, exactly: it has no bits below those of its terms, and at most 2^-7 of their size.
ORIN_INLINE Vec2d exact_numerator(const Place& p) {
  const DoubleDouble m = split(p.larger);
  return (p.smaller - p.c * m.high) - p.c * m.low;
}

ORIN_INLINE Vec2d bend(Vec2d r) {
  const auto& bins = in_memory(atan_core::bins<Vec2d>);
  const Vec2d r2 = r * r;
  return (r * r2) * (bins.q0 + r2 * (bins.q1 + r2 * bins.q2));
}

template <Grade grade, bool quadrant = false>
ORIN_INLINE Angle<Vec2d> angle(Vec2d y, Vec2d signed_x) {
  const Place p = place_of<quadrant>(y, signed_x);
  const Vec2d numerator = grade == Grade::ha ? exact_numerator(p) : p.smaller - p.c * p.larger;
  const Vec2d r = numerator / (p.larger + p.c * p.smaller);
  Vec2d beside = bend(r);
  if constexpr (grade == Grade::ha) beside = beside + (p.arc_rest ^ p.sign);
  return {p.arc, (r + beside) ^ p.sign};
}

}  // namespace orin::vector_math::octant_angle

#endif
