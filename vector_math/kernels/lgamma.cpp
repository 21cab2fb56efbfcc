// lgamma: elementwise log |Gamma(x)|, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    2^-5 <= x < 2^10: the tables of gamma_core_d.h; x >= 2^10: Stirling's series
//           |x| < 2^-5: -log |x| + x l(x)
//           x <= -2^-5: reflection as in gamma_core_d.h, all in pairs; where that is below 2^-6 in magnitude, next to
//           one of the 29 zeros that have numbers so near, a series at the zero, which is known in three parts
//           LA below the table is HA; EP there, and single precision, without pairs but for the series at the zeros
//           Single precision is HA as double EP, LA and EP from tables in float; outside the tables all in double
// Bounds    HA 0.60 ulp in double, 0.53 in single precision; LA relative 2^-50, 2^-21; EP 2^-26, 2^-11
// Budget    HA  in ulp: terms beyond c0 + c1 t, at most 1/16 of the result, 1/16; by reflection absolute 2^-61, next to
//           2^-6 1/16; last rounding 1/2
// Special   NaN -> NaN; +-inf -> +inf; 0 and negative integers -> +inf, status 2; overflow -> +inf, status 3
// Source    as gamma_core_d.h
#include <cfloat>
#include <cmath>
#include <limits>

#include "vector_math/kernels.h"
#include "vector_math/kernels/gamma_core_d.h"
#include "vector_math/kernels/gamma_core_s.h"
#include "vector_math/simd/elementwise.h"

namespace orin::vector_math {
namespace {

using namespace simd;

constexpr struct {
  Constant<double> least = gamma_d::least_in_table, end = gamma_d::end_of_table, one = 1.0, below = 0x1p-6;
  Constant<double> near_zero = 0x1p-6;
  Constant<double> to_zero_index = 0x1p52 - 4;  // 2 n + to_zero_index: 2 n - 4 in the low bits
  Constant<double> l0 = gamma_d_data::log_near_0_0, l1 = gamma_d_data::log_near_0_1, l2 = gamma_d_data::log_near_0_2,
                   l3 = gamma_d_data::log_near_0_3, l4 = gamma_d_data::log_near_0_4, l5 = gamma_d_data::log_near_0_5,
                   l6 = gamma_d_data::log_near_0_6, l7 = gamma_d_data::log_near_0_7, l8 = gamma_d_data::log_near_0_8;
} constants_d{};
constexpr struct { Constant<float> least = 0x1p-5f, end = 0x1p10f, one = 1.0f, below = 0x1p-6f; } constants_s{};

template <Grade grade>
ORIN_INLINE Vec2d from_table(Vec2d x) {
  if constexpr (grade == Grade::la) return gamma_d::log_gamma_la(x);
  if constexpr (grade == Grade::ep) return gamma_d::log_gamma_ep(x);
  const DoubleDouble sum = gamma_d::log_gamma_pair(x);
  return sum.high + sum.low;
}
template <Grade grade>
ORIN_INLINE Vec4f from_table(Vec4f x) {
  if constexpr (grade != Grade::ha) return gamma_s::log_gamma<grade>(x);
  const TwoVec2d wide = widen(x);
  return narrow({gamma_d::log_gamma_ep(wide.low), gamma_d::log_gamma_ep(wide.high)});
}

template <Grade grade>
ORIN_INLINE Vec2d above_table(Vec2d x) {
  return gamma_d::stirling<grade>(x);
}
template <Grade grade>
ORIN_INLINE Vec4f above_table(Vec4f x) {
  constexpr Grade enough = grade == Grade::ha ? Grade::la : Grade::ep;
  const TwoVec2d wide = widen(x);
  return narrow({gamma_d::stirling<enough>(wide.low), gamma_d::stirling<enough>(wide.high)});
}

// log |Gamma(-y)| = d (c1 + c2 d + d^2 q(d)), d = y - z, y = n + t, where it is below 2^-6 in magnitude; elsewhere
// anything.
ORIN_INLINE Vec2d at_zero(Vec2d is_near, Vec2d y, Vec2d n, Vec2d t) {
  const auto& c = in_memory(constants_d);
  // The zero above n = 2 is the first of the table; then come those below and above 3, 4 ..
  const Vec2l zero = bits((n + n) + c.to_zero_index) + bits(t < Vec2d(0.0));
  const auto index = low_bits<8>(zero & bits(is_near));
  const gamma_d::Rows<4> place(gamma_d_data::zeros, index);
  const auto [first, second] = place.pair(0);
  const DoubleDouble sum = two_sum(y - first, Vec2d(0.0) - second);
  const Vec2d d = sum.high;
  const Vec2d d_low = sum.low - place.pair(1).first;

  const gamma_d::Rows<14> row(gamma_d_data::zero_rows, index);
  const auto [c1, c1_low] = row.pair(0);
  const auto [c2, c2_low] = row.pair(1);
  const auto [c3, c4] = row.pair(2);
  const auto [c5, c6] = row.pair(3);
  const auto [c7, c8] = row.pair(4);
  const auto [c9, c10] = row.pair(5);
  const Vec2d c11 = row.pair(6).first;
  const Vec2d d2 = d * d;
  const Vec2d q = ((c3 + d * c4) + d2 * (c5 + d * c6)) + (d2 * d2) * ((c7 + d * c8) + d2 * ((c9 + d * c10) + d2 * c11));
  const DoubleDouble linear = two_product(c2, d);
  const DoubleDouble factor = fast_two_sum(c1, linear.high);
  const Vec2d factor_low = factor.low + (linear.low + ((c1_low + d * c2_low) + d2 * q));
  const DoubleDouble product = two_product(d, factor.high);
  return product.high + (product.low + (d * factor_low + d_low * factor.high));
}

// log Gamma(y), y >= 2^-5: as a pair, and to 2^-50.
ORIN_INLINE DoubleDouble on_positive_axis_pair(Vec2d y) {
  const auto& c = in_memory(constants_d);
  const Vec2d above = y >= c.end;
  const DoubleDouble inner = gamma_d::log_gamma_pair(select(above, c.one, y));
  if (lane_bits(above) == 0) [[likely]]
    return inner;
  const DoubleDouble outer = gamma_d::stirling_pair(max(y, c.end));
  return {select(above, outer.high, inner.high), select(above, outer.low, inner.low)};
}
ORIN_INLINE Vec2d on_positive_axis(Vec2d y) {
  const auto& c = in_memory(constants_d);
  const Vec2d above = y >= c.end;
  const Vec2d inner = gamma_d::log_gamma_la(select(above, c.one, y));
  if (lane_bits(above) == 0) [[likely]]
    return inner;
  return select(above, gamma_d::stirling<Grade::la>(max(y, c.end)), inner);
}

// log |Gamma(x)| for x < 2^-5 normal and no pole: as HA, or to a relative 2^-40 for EP and single precision.
template <Grade grade>
ORIN_INLINE Vec2d below_table(Vec2d x) {
  const auto& c = in_memory(constants_d);
  const Vec2d size = abs(x);
  const Vec2d near_0 = size < c.least;
  const Vec2d y = select(near_0, c.one, size);
  const auto [n, t, n_bits] = gamma_d::nearest(y);
  const Vec2d distance = abs(t);
  const bool reflects = lane_bits(near_0) != 3;
  // Next to 0 y and t are 1 and 0, log Gamma(y) and the ratio vanish, and the logarithm wanted is that of |x|.
  const Vec2d x2 = x * x;
  const Vec2d series = x * (((c.l0 + x * c.l1) + x2 * (c.l2 + x * c.l3)) +
                            (x2 * x2) * ((c.l4 + x * c.l5) + x2 * ((c.l6 + x * c.l7) + x2 * c.l8)));
  Vec2d result;
  if constexpr (grade == Grade::ha) {
    const DoubleDouble product = two_product(y, distance);
    const Vec2d argument = select(near_0, size, product.high);
    const DoubleDouble log = log_d::logarithm_pair(argument);
    Vec2d high = log.high;
    Vec2d low = log.low - (series & near_0);
    if (reflects) {
      const DoubleDouble gamma = on_positive_axis_pair(y);
      const DoubleDouble ratio = gamma_d::log_sine_ratio(distance);
      const DoubleDouble partial = two_sum(high, gamma.high);
      const DoubleDouble sum = two_sum(partial.high, ratio.high);
      high = sum.high;
      low = low + ((partial.low + sum.low) + ((gamma.low + ratio.low) + product.low / argument));
    }
    result = Vec2d(0.0) - (high + low);
  } else {
    result = (series & near_0) - logarithm<Grade::la>(select(near_0, size, y * distance));
    if (reflects) result = result - (on_positive_axis(y) + gamma_d::log_sine_ratio_short(distance));
  }
  const Vec2d near_zero = abs(result) < c.near_zero;
  if (lane_bits(near_zero) != 0) [[unlikely]]
    return select(near_zero, at_zero(near_zero, y, n, t), result);
  return result;
}
template <Grade grade>
ORIN_INLINE Vec4f below_table(Vec4f x) {
  const TwoVec2d wide = widen(x);
  return narrow({below_table<Grade::ep>(wide.low), below_table<Grade::ep>(wide.high)});
}

// Arguments without an ordinary result by their kind; `rest` knows the others.
template <class T, class Rest>
Outcome<T> special_log_gamma(T x, T overflow, Rest rest) {
  using Limits = std::numeric_limits<T>;
  if (x != x) return {{x + x}, KOR_STATUS_OK};
  if (std::fabs(x) > Limits::max()) return {{Limits::infinity()}, KOR_STATUS_OK};
  if (gamma_d::is_pole(double{x})) return {{Limits::infinity()}, KOR_STATUS_SING};
  if (x >= overflow) return {{Limits::infinity()}, KOR_STATUS_OVERFLOW};
  return rest();
}

// Each range has a path of its own. Groups of one range take it alone, the others take several.
template <class T, Grade grade>
struct ThreePaths : OneToOne<T> {
  using V = typename RegisterOf<T>::type;
  static constexpr T ordinary = 3;
  static constexpr int groups_per_step = 1;
  static constexpr unsigned all_lanes = (1u << V::lanes) - 1;

  static ORIN_INLINE const auto& constants() {
    if constexpr (sizeof(T) == 8)
      return in_memory(constants_d);
    else
      return in_memory(constants_s);
  }
  static ORIN_INLINE V fast(V x) {
    const auto& c = constants();
    const V above = x >= c.end;
    const V in_table = (x >= c.least) & (x < c.end);
    if (lane_bits(in_table) == all_lanes) [[likely]]
      return from_table<grade>(x);
    if (lane_bits(above) == all_lanes) return above_table<grade>(x);
    V result;
    several(x, in_table, above, result);
    return result;
  }

 private:
  [[gnu::noinline]] static void several(const V& x, const V& in_table, const V& above, V& result) {
    const auto& c = constants();
    V value = x;
    if (lane_bits(in_table) != 0) value = from_table<grade>(select(in_table, x, c.one));
    if (lane_bits(above) != 0) value = select(above, above_table<grade>(max(x, c.end)), value);
    const V others = in_table | above;
    if (lane_bits(others) != all_lanes) {
      // LA needs what HA has next to the zeros.
      constexpr Grade as = grade == Grade::ep ? Grade::ep : Grade::ha;
      value = select(others, value, below_table<as>(select(others, c.below, x)));
    }
    result = value;
  }
};

template <Grade grade>
struct LGammaD : ThreePaths<double, grade> {
  static constexpr const char* name = "vdLGamma";
  static constexpr double overflow = 0x1.754d9278b51a8p+1014;  // at or above: +inf

  // Ordinary: normal x < 2^1000, and the fractions of -2^20 < x <= -2^-1022.
  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    return gamma_d::special_lanes<0x00100000, 0x7e6fffff>(words, gamma_d::negative_fractions<0x00100000, 0x412fffff>);
  }
  static Outcome<double> special(double x) {
    return special_log_gamma(x, overflow, [x]() -> Outcome<double> {
      if (std::fabs(x) < DBL_MIN) {
        const DoubleDouble log = log_d::logarithm_pair<54>(Vec2d(std::fabs(x) * 0x1p54));
        return {{-first_lane(log.high + log.low)}, KOR_STATUS_OK};
      }
      if (x >= 0x1p1000) {
        const DoubleDouble scaled = gamma_d::stirling_pair<64>(Vec2d(x * 0x1p-64));
        return {{first_lane(scaled.high + scaled.low) * 0x1p64}, KOR_STATUS_OK};
      }
      return {{first_lane(LGammaD::fast(x))}, KOR_STATUS_OK};
    });
  }
};

template <Grade grade>
struct LGammaS : ThreePaths<float, grade> {
  static constexpr const char* name = "vsLGamma";
  static constexpr float overflow = 0x1.895f1cp+121f;  // at or above: +inf

  // Ordinary: normal x < 2^121, and the fractions of -2^22 < x <= -2^-126.
  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    return gamma_d::special_lanes<0x00800000, 0x7bffffff>(words, gamma_s::negative_fractions<0x00800000, 0x4a7fffff>);
  }
  static Outcome<float> special(float x) {
    return special_log_gamma(x, overflow, [x]() -> Outcome<float> {
      return {{first_lane(LGammaS::fast(x))}, KOR_STATUS_OK};
    });
  }
};

}  // namespace

#define ORIN_LGAMMA(kernel, T, Function, grade)                       \
  void ORIN_CALL kernel##_##grade(std::int32_t n, const T* a, T* r) { \
    elementwise<Function<Grade::grade>>({}, n, {a}, {r});             \
  }
ORIN_LGAMMA(lgamma_d, double, LGammaD, la)
ORIN_LGAMMA(lgamma_d, double, LGammaD, ha)
ORIN_LGAMMA(lgamma_d, double, LGammaD, ep)
ORIN_LGAMMA(lgamma_s, float, LGammaS, la)
ORIN_LGAMMA(lgamma_s, float, LGammaS, ha)
ORIN_LGAMMA(lgamma_s, float, LGammaS, ep)
#undef ORIN_LGAMMA

}  // namespace orin::vector_math
