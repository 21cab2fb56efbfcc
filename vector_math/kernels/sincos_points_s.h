// sincos_points_s.h: sine and cosine of floats at once.
// SPDX-License-Identifier: MIT
//
// Use       Parts(reduce(x)), |x| < 2^20; reduce_any takes any finite x and gives the same bits below 2^20
// Method    that of sincos_points_d.h with floats: x - a in doubles, rounded to a float once; S and C are floats but for
//           2^-7 ulp
// Budget    in ulp: sum 1/2; the rest 2^-3, from n = +-2 on up to 1/3; r 1/2 next to multiples of the quarter turn, where
//           it carries the result
// Special   sin -0 = -0: the table has sin 0 = -0
// Data      data/complex_periodic_data.h from tools/tables/complex_periodic.py
#ifndef ORIN_VECTOR_MATH_KERNELS_SINCOS_POINTS_S_H
#define ORIN_VECTOR_MATH_KERNELS_SINCOS_POINTS_S_H

#include "vector_math/data/complex_periodic_data.h"
#include "vector_math/kernels/sincos_core_d.h"

namespace orin::vector_math::sincos_points_s {

using namespace simd;
namespace data = complex_periodic_data;

// x less the point j.
struct Angle {
  Vec4f r;
  LaneIndices<8, 4> j;
};

inline constexpr struct {
  Constant<double> inverse = data::turn_inverse, to_integer = 0x1.8p52, limit = 0x1p20, safe = 0x1p30;
  Constant<double> step = data::turn_step_0, rest = data::turn_rest;
  Constant<float> zero = 0.0f, s0 = -data::sine_s_0, c0 = -data::cosine_s_0, c1 = -data::cosine_s_1;
} constants{};

// The same for two floats in doubles.
struct Reduced {
  Vec2d r;
  LaneIndices<8, 2> j;
};
ORIN_INLINE Reduced reduce(Vec2d x) {
  const auto& c = in_memory(constants);
  const Vec2d t = x * c.inverse + c.to_integer;
  const Vec2d n = t - c.to_integer;
  const auto j = low_bits<8>(bits(t));
  return {(x - n * c.step) - (n * c.rest + look_up(data::sine_offsets_s, j)), j};
}
ORIN_INLINE Reduced reduce_any(Vec2d x) {
  const auto& c = in_memory(constants);
  const Vec2d huge = abs(x) >= c.limit;
  const Vec2d usual = and_not(huge, x);
  const sincos_d::Angle turns = sincos_d::reduce_huge_single<256>(select(huge, x, c.safe));
  const Vec2l n = bits(usual * c.inverse + c.to_integer);
  const auto j = low_bits<8>(bits(select(huge, from_bits(turns.n), from_bits(n))));
  return {select(huge, turns.high - look_up(data::sine_offsets_s, j), reduce(usual).r), j};
}
ORIN_INLINE Angle narrow(const Reduced& low, const Reduced& high) {
  LaneIndices<8, 4> j;
  for (int lane = 0; lane < 2; ++lane) {
    j.of[lane] = low.j.of[lane];
    j.of[lane + 2] = high.j.of[lane];
  }
  return {simd::narrow({low.r, high.r}), j};
}

// |x| < 2^20.
ORIN_INLINE Angle reduce(Vec4f x) {
  const TwoVec2d wide = widen_through_memory(x);
  return narrow(reduce(wide.low), reduce(wide.high));
}
// Any finite x; for |x| < 2^20 the bits of reduce.
ORIN_INLINE Angle reduce_any(Vec4f x) {
  const TwoVec2d wide = widen_through_memory(x);
  return narrow(reduce_any(wide.low), reduce_any(wide.high));
}

class Parts {
 public:
  explicit ORIN_INLINE Parts(const Angle& angle) {
    const auto& c = in_memory(constants);
    const auto [sine, cosine] = look_up_pairs(data::sines_s, angle.j);
    const Vec4f r = angle.r;
    const Vec4f r2 = r * r;
    const Vec4f less = (r * r2) * c.s0 + c.zero;  // r - sin r; +0 at +-0, which keeps the sign
    const Vec4f bend = r2 * (c.c0 + r2 * c.c1);   // 1 - cos r
    sine_ = sine + (cosine * r - (cosine * less + sine * bend));
    cosine_ = cosine - (sine * (r - less) + cosine * bend);
  }
  ORIN_INLINE Vec4f sine() const { return sine_; }
  ORIN_INLINE Vec4f cosine() const { return cosine_; }

 private:
  Vec4f sine_, cosine_;
};

}  // namespace orin::vector_math::sincos_points_s

#endif
