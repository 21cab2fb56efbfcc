// atan_core.h: the angle of a quotient, shared by every function that takes one, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    HA, LA of double, EP of its quotients: c the middle of one of 417 bins, near t;  atan t = atan c + atan r,
//           r = (t - c)/(1 + c t), |r| < 2^-6.9;  HA for t = y/x  r = (y - c x)/(x + c y), and y/x itself only picks c
//           LA, EP of single, EP of double for pairs: t = smaller/larger of y and x, the angle is atan t, or pi/2 less
//           that;  single atan t = t p(t^2), double a cubic in the distance of t from a multiple of 1/64
// Arguments not negative, no NaN; t below 2^500 (single 2^60); of a pair the larger one within 2^-550 .. 2^400 (single
//           2^-75 .. 2^44).
// Budget    HA  in ulp: t - c and y - c x with their products exact; other roundings of r 3 2^-6, last rounding 1/2
//           LA  in units of rounding: y/x 1, atan c 1, sum 1;  single y/x 1, polynomial 2, sum 2
//           EP  polynomial 2^-32, cubics 2^-30, single 2^-12.2
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
struct EnhancedD {
  Constant<double> to_step = 0x1.8p46;  // t + to_step: t rounded to a multiple of 1/64, 64 t in the low bits
  Constant<double> half_pi = vector_math::half_pi<double>, minus_zero = -0.0;
};
template <class V>
inline constexpr BinsD bins{};
template <>
inline constexpr BinsS bins<Vec4f>{};
inline constexpr LowAccuracyS la_s{};
inline constexpr EnhancedS ep_s{};
inline constexpr EnhancedD ep_d{};

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
template <Grade grade>
ORIN_INLINE Angle<Vec2d> in_octants(Vec2d y, Vec2d x) {
  return in_octants(
      in_memory(ep_d), [](const auto& c, Vec2d t) __attribute__((always_inline)) {
        const Vec2d step = t + c.to_step;
        const Vec2d d = t - (step - c.to_step);
        const auto j = low_bits<8>(bits(step));
        const auto [a, b] = look_up_pairs(data::cubics_linear, j);
        const auto [p, q] = look_up_pairs(data::cubics_bent, j);
        return a + d * (b + d * (p + d * q));
      },
      y, x);
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
  } else {
    return in_octants<grade>(y, x);
  }
}

}  // namespace orin::vector_math::atan_core

#endif
