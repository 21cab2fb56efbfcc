// atan_core.h: the angle of a quotient, shared by every function that takes one, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    HA, LA of double, EP of its quotients: c the middle of one of 417 bins, near t;  atan t = atan c + atan r,
//           r = (t - c)/(1 + c t), |r| < 2^-6.9;  HA for t = y/x  r = (y - c x)/(x + c y), and y/x itself only picks c
//           EP of double for pairs: c from the difference of the bits of y and x, a piecewise linear logarithm;
//           r = (y - c x)/(x + c y), |r| < 2^-4.9
//           LA, EP of single: t = smaller/larger of y and x, the angle is atan t, or pi/2 less that;  atan t = t p(t^2)
// Arguments not negative, no NaN; t below 2^500 (single 2^60); of a pair the larger one within 2^-550 .. 2^400 (single
//           2^-75 .. 2^44).
// Budget    HA  in ulp: t - c and y - c x with their products exact; other roundings of r 3 2^-6, last rounding 1/2
//           LA  in units of rounding: y/x 1, atan c 1, sum 1;  single y/x 1, polynomial 2, sum 2
//           EP  polynomial 2^-32, of pairs 2^-27.0, single 2^-12.2
// Data      data/atan_data.h from tools/tables/atan.py
// Source    J.-M. Muller, Elementary Functions, 3rd ed. (2016), section 4.3, for the reduction by a table
#ifndef ORIN_VECTOR_MATH_KERNELS_ATAN_CORE_H
#define ORIN_VECTOR_MATH_KERNELS_ATAN_CORE_H

#include "vector_math/data/atan_data.h"
#include "vector_math/grade.h"
#include "vector_math/kernels/angle.h"
#include "vector_math/simd/table.h"

namespace orin::vector_math::atan_core {

using namespace simd;
namespace data = atan_data;

struct BinsD {
  static constexpr const double* arcs = data::arcs_d;
  static constexpr const double* rests = data::rests_d;
  static constexpr int bin_shift = 47;  // leaves five bits of the fraction
  static constexpr auto first_index =
      static_cast<std::uint32_t>(__builtin_bit_cast(std::uint64_t, data::first_bin) >> bin_shift);
  Constant<double> first_bin = data::first_bin, last_bin = data::last_bin;
  Constant<double> least = 0x1p-610;        // stands in for denominators next to 0
  Constant<double> linear_below = 0x1p-30;  // atan t = t (1 - 2^-61)
  Constant<double> zero = 0.0, one = 1.0;
  Constant<std::int64_t> leading = -(INT64_C(1) << 27);  // the first 26 bits
  Constant<double> q0 = data::ha_d_0, q1 = data::ha_d_1, q2 = data::ha_d_2;
  Constant<double> ep_q0 = data::ep_d_0;
};
struct BinsS {
  static constexpr const float* arcs = data::arcs_s;
  static constexpr const float* rests = data::rests_s;
  static constexpr int bin_shift = 18;
  static constexpr auto first_index =
      __builtin_bit_cast(std::uint32_t, static_cast<float>(data::first_bin)) >> bin_shift;
  Constant<float> first_bin = static_cast<float>(data::first_bin), last_bin = static_cast<float>(data::last_bin);
  Constant<float> least = 0x1p-82f, linear_below = 0x1p-14f;
  Constant<float> zero = 0.0f, one = 1.0f;
  Constant<std::int32_t> leading = -(1 << 12);  // the first 12 bits
  Constant<float> q0 = data::ha_s_0;
};
struct LowAccuracyS {
  Constant<float> one = 1.0f, half_pi = vector_math::half_pi<float>, minus_zero = -0.0f;
  Constant<float> p0 = data::la_s_0, p1 = data::la_s_1, p2 = data::la_s_2, p3 = data::la_s_3, p4 = data::la_s_4,
                  p5 = data::la_s_5, p6 = data::la_s_6;
};
struct EnhancedS {
  Constant<float> one = 1.0f, half_pi = vector_math::half_pi<float>, minus_zero = -0.0f;
  Constant<float> p0 = data::ep_s_0, p1 = data::ep_s_1, p2 = data::ep_s_2, p3 = data::ep_s_3;
};
struct Points {
  static constexpr std::int64_t bias_bits = INT64_C(0x2000000000000000);  // the sum is no NaN or subnormal
  static constexpr std::int64_t first_bits = bias_bits - 7 * (INT64_C(1) << 52);
  static constexpr std::int64_t last_bits = bias_bits + 7 * (INT64_C(1) << 52);
  static constexpr auto first_index = static_cast<std::uint32_t>(first_bits >> BinsD::bin_shift);
  Constant<std::int64_t> bias = bias_bits;
  Constant<double> first_place = __builtin_bit_cast(double, first_bits);
  Constant<double> last_place = __builtin_bit_cast(double, last_bits);
  Constant<double> q = data::points_q;
};
template <class V>
inline constexpr BinsD bins{};
template <>
inline constexpr BinsS bins<Vec4f>{};
inline constexpr LowAccuracyS la_s{};
inline constexpr EnhancedS ep_s{};
inline constexpr Points points{};

template <Grade grade, class V>
inline constexpr bool uses_bins = sizeof(typename V::Element) == 8 || grade == Grade::ha;

// The bin of a quotient.
template <class V>
struct Bin {
  LaneIndices<32, V::lanes> index;
  V middle, arc;
};
template <class Bins, class V>
ORIN_INLINE Bin<V> bin_of(const Bins& c, V quotient) {
  const V clamped = min(max(quotient, c.first_bin), c.last_bin);
  const auto index = top_bits<Bins::bin_shift, Bins::first_index>(clamped);
  const auto [middle, arc] = look_up_pairs(c.arcs, index);
  return {index, middle, arc};
}

// What an angle has beyond the bin's arc and r: atan r - r, and the rest of the arc.
template <Grade grade, class V>
ORIN_INLINE V bend(const auto& c, const Bin<V>& bin, V r) {
  const V r2 = r * r;
  if constexpr (sizeof(typename V::Element) == 4)
    return look_up(c.rests, bin.index) + (r * r2) * c.q0;
  else if constexpr (grade == Grade::ep)
    return (r * r2) * c.ep_q0;
  else if constexpr (grade == Grade::la)
    return (r * r2) * (c.q0 + r2 * (c.q1 + r2 * c.q2));
  else
    return look_up(c.rests, bin.index) + (r * r2) * (c.q0 + r2 * (c.q1 + r2 * c.q2));
}

// atan(smaller/larger) or, where these are x and y, pi/2 less that. atan t = arc(c, t), 0 <= t <= 1.
template <class V>
ORIN_INLINE Angle<V> in_octants(const auto& c, auto arc, V y, V x) {
  const V swapped = y > x;
  return {swapped & c.half_pi, arc(c, min(x, y) / max(x, y)) ^ (swapped & c.minus_zero)};
}
template <Grade grade>
ORIN_INLINE Angle<Vec4f> in_octants(Vec4f y, Vec4f x) {
  if constexpr (grade == Grade::la)
    return in_octants(
        in_memory(la_s), [](const auto& c, Vec4f t) __attribute__((always_inline)) {
          const Vec4f t2 = t * t, t4 = t2 * t2;
          const Vec4f p = ((c.p0 + t2 * c.p1) + t4 * (c.p2 + t2 * c.p3)) + (t4 * t4) * ((c.p4 + t2 * c.p5) + t4 * c.p6);
          return t + (t * t2) * p;
        },
        y, x);
  else
    return in_octants(
        in_memory(ep_s), [](const auto& c, Vec4f t) __attribute__((always_inline)) {
          const Vec4f t2 = t * t;
          return t * ((c.p0 + t2 * c.p1) + (t2 * t2) * (c.p2 + t2 * c.p3));
        },
        y, x);
}
// c from the bits of y and x, atan c + atan r.
ORIN_INLINE Angle<Vec2d> from_points(Vec2d y, Vec2d x) {
  const auto& c = in_memory(points);
  const Vec2d place = min(max(from_bits((bits(y) + c.bias) - bits(x)), c.first_place), c.last_place);
  const auto [middle, arc] = look_up_pairs(data::points, top_bits<BinsD::bin_shift, Points::first_index>(place));
  const Vec2d r = (y - middle * x) / (x + middle * y);
  return {arc, r + (r * (r * r)) * c.q};
}

// atan t.
template <Grade grade, class V>
ORIN_INLINE Angle<V> arctangent(V t) {
  if constexpr (uses_bins<grade, V>) {
    const auto& c = in_memory(bins<V>);
    const Bin<V> bin = bin_of(c, t);
    const V r = (t - bin.middle) / (c.one + bin.middle * t);
    return {bin.arc, r + bend<grade>(c, bin, r)};
  } else {
    return in_octants<grade>(t, in_memory(la_s).one);
  }
}

// The angle of the point (x, y).
template <Grade grade, class V>
ORIN_INLINE Angle<V> angle(V y, V x) {
  if constexpr (grade == Grade::ha) {
    // In the first bin the leading bits of y/x are c, and r adds the others; a quotient next to 0 is c as it is.
    const auto& c = in_memory(bins<V>);
    const V quotient = y / max(x, c.least);
    Bin<V> bin = bin_of(c, quotient);
    const V first = bin.middle == c.zero;
    const V tiny = quotient < c.linear_below;
    const V short_quotient = first & (quotient & (from_bits(c.leading) | tiny));
    bin.middle = bin.middle | short_quotient;
    bin.arc = bin.arc | short_quotient;
    const V x_high = x & from_bits(c.leading);
    const V numerator = (y - bin.middle * x_high) - bin.middle * (x - x_high);
    const V r = and_not(tiny, numerator / (x + bin.middle * y));
    const V curved = select(first, short_quotient, r);
    return {bin.arc, r + bend<grade>(c, bin, curved)};
  } else if constexpr (grade == Grade::la && uses_bins<grade, V>) {
    return arctangent<grade>(y / max(x, in_memory(bins<V>).least));
  } else if constexpr (uses_bins<grade, V>) {
    return from_points(y, x);
  } else {
    return in_octants<grade>(y, x);
  }
}

}  // namespace orin::vector_math::atan_core

#endif
