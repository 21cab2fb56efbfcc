// sincos_points_d.h: sine and cosine of doubles as a leading number and what it lacks.
// SPDX-License-Identifier: MIT
//
// Use       Parts(reduce(x)), |x| < 2^20, for functions that multiply the numbers; reduce_any takes any finite x and
//           gives the same bits below 2^20
// Method    x = a + r;  S = sin a, C = cos a from a table whose 256 points a are chosen so that both are doubles but
//           for 2^-12 ulp;  sin x = S + (C sin r + S (cos r - 1)),  cos x = C + (C (cos r - 1) - S sin r)
//           Reductions as in sincos_core_d.h, the offset of a from n 2 pi/256 taken off before the third part.
//           n = +-1 have the point of the quarter turn next to them, so that what is left of it carries the result
// Budget    in ulp: sum 1/2; what the leading number lacks 2^-4, from n = +-2 on up to 1/3; polynomials 2^-60
// Special   sin -0 = -0: the table has sin 0 = -0
// Data      data/complex_periodic_data.h from tools/tables/complex_periodic.py
// Source    S. Gal, B. Bachelis, An accurate elementary mathematical library for the IEEE floating point standard, ACM
//           TOMS 17 (1991), 26-45
#ifndef ORIN_VECTOR_MATH_KERNELS_SINCOS_POINTS_D_H
#define ORIN_VECTOR_MATH_KERNELS_SINCOS_POINTS_D_H

#include "vector_math/data/complex_periodic_data.h"
#include "vector_math/kernels/sincos_core_d.h"

namespace orin::vector_math::sincos_points_d {

using namespace simd;
namespace data = complex_periodic_data;

// x less the point j: high - excess.
struct Angle {
  Vec2d high, excess;
  Vec2l n;
  LaneIndices<8, 2> j;
};

inline constexpr struct {
  Constant<double> inverse = data::turn_inverse, to_integer = 0x1.8p52, limit = 0x1p20, safe = 0x1p30;
  Constant<double> step_0 = data::turn_step_0, step_1 = data::turn_step_1, step_2 = data::turn_step_2,
                   step_3 = data::turn_step_3, excess = data::turn_excess;
  Constant<double> s0 = -data::sine_0, s1 = -data::sine_1, s2 = -data::sine_2;
  Constant<double> c0 = -data::cosine_0, c1 = -data::cosine_1, c2 = -data::cosine_2;
} constants{};

// |x| < 2^20.
ORIN_INLINE Angle reduce(Vec2d x) {
  const auto& c = in_memory(constants);
  const Vec2d t = x * c.inverse + c.to_integer;
  const Vec2d n = t - c.to_integer;
  const auto j = low_bits<8>(bits(t));
  // Exact next to quarter turns; elsewhere the last difference rounds.
  const Vec2d offset = look_up(data::sine_offsets, j);
  const Vec2d head = ((x - n * c.step_0) - n * c.step_1) - offset;
  const Vec2d part = n * c.step_2;
  const Vec2d high = head - part;
  return {high, (n * c.step_3 + offset * c.excess) + (part - (head - high)), bits(t), j};
}

// Any finite x; for |x| < 2^20 the bits of reduce.
ORIN_INLINE Angle reduce_any(Vec2d x) {
  const auto& c = in_memory(constants);
  const Vec2d huge = abs(x) >= c.limit;
  const Angle near = reduce(and_not(huge, x));
  const sincos_d::Angle turns = sincos_d::reduce_huge_pair<256>(select(huge, x, c.safe));
  const auto k = low_bits<8>(turns.n);
  const Vec2d offset = look_up(data::sine_offsets, k);
  const Vec2d high = turns.high - offset;
  const Vec2d excess = offset * c.excess + ((offset - (turns.high - high)) - turns.low);
  const Vec2l n = bits(select(huge, from_bits(turns.n), from_bits(near.n)));
  return {select(huge, high, near.high), select(huge, excess, near.excess), n, low_bits<8>(n)};
}

// A number as leading + sign (first - small): small is 2^-10 of the sum at most, or of first, which is all of the sum
// next to zeros.
template <int sign>
struct Part {
  Vec2d leading, first, small;

  ORIN_INLINE Vec2d rest() const { return sign > 0 ? first - small : small - first; }
  ORIN_INLINE Vec2d sum() const { return leading + rest(); }
};

struct Parts {
  Part<-1> cosine_part;
  Part<1> sine_part;

  explicit ORIN_INLINE Parts(const Angle& angle) {
    const auto& c = in_memory(constants);
    const auto [sine, cosine] = look_up_pairs(data::sines, angle.j);
    const Vec2d r = angle.high;
    const Vec2d r2 = r * r;
    // r - sin r; +0 at +-0, which keeps the sign.
    const Vec2d less = (r * r2) * (c.s0 + r2 * (c.s1 + r2 * c.s2)) + angle.excess;
    const Vec2d bend = r2 * (c.c0 + r2 * (c.c1 + r2 * c.c2));  // 1 - cos r
    sine_part = {sine, cosine * r, cosine * less + sine * bend};
    cosine_part = {cosine, sine * r, sine * less - cosine * bend};
  }
  ORIN_INLINE Vec2d sine() const { return sine_part.sum(); }
  ORIN_INLINE Vec2d cosine() const { return cosine_part.sum(); }
};

}  // namespace orin::vector_math::sincos_points_d

#endif
