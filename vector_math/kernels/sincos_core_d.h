// sincos_core_d.h: sine and cosine of doubles, shared by every function that takes one.
// SPDX-License-Identifier: MIT
//
// Use       sine<grade>(reduce<grade>(x)), cosine, sine_and_cosine; |x| < 2^20. reduce_any takes any finite x and gives
//           the same bits below 2^20. HA also as pairs, for quotients and products that must stay accurate.
//           EP below 2^11: reduce_near, shorter and not of the same bits; reduce_wide goes with it. Floats, to EP:
//           reduce_single, reduce_any_single.
// Method    x = n a + r, a = 2 pi/128 in HA, 2 pi/512 in LA and EP; S, C = sin n a, cos n a from a table
//           sin x = S cos r + C sin r,  cos x = C cos r - S sin r
//           LA, EP  S + r (C (sin r)/r + S (cos r - 1)/r);  both together in EP as above
//           HA      S, C and r as pairs: S + C r with both high products exact, the rest beside it
// Reduction below 2^20: x - n a in parts of a, each product exact but the last (Cody and Waite); two parts where x is
//           less than 2^11, to 2^-28.8 of r for any double, or a float, to 2^-36.9. Beyond: x times the
//           digits of 64/pi that its exponent leaves between 128 and 2^-116, by exact products (Payne and Hanek); what
//           is near an integer there has up to 57 leading zeros.
// Budget    HA  in ulp: lower parts 2^-8, rounding 1/2;  r to 2^-57 relative wherever it is the result
//           LA  in 2^-53: table 1, r 2, its product 2, sum 1;  EP polynomial 2^-36
// Special   sin -0 = -0 and sin x = x for subnormal x come out by themselves: the table has sin 0 = -0
// Data      data/sincos_d_data.h from tools/tables/sincos_d.py
// Source    W. J. Cody, W. Waite, Software Manual for the Elementary Functions (1980);
//           M. H. Payne, R. N. Hanek, Radian reduction for trigonometric functions, SIGNUM 18 (1983), 19-24
#ifndef ORIN_VECTOR_MATH_KERNELS_SINCOS_CORE_D_H
#define ORIN_VECTOR_MATH_KERNELS_SINCOS_CORE_D_H

#include "vector_math/data/sincos_d_data.h"
#include "vector_math/grade.h"
#include "vector_math/kernels/double_double.h"
#include "vector_math/simd/elementwise.h"
#include "vector_math/simd/table.h"

namespace orin::vector_math::sincos_d {

using namespace simd;
namespace data = sincos_d_data;

// x less a multiple n a: high, and in HA low beside it; n in the low bits.
struct Angle {
  Vec2d high, low;
  Vec2l n;
};

struct HighAccuracy {
  Constant<double> inverse = data::ha_inverse, to_integer = 0x1.8p52;
  Constant<double> step_0 = data::ha_step_0, step_1 = data::ha_step_1, step_2 = data::ha_step_2,
                   step_3 = data::ha_step_3;
  Constant<double> s0 = data::ha_s0, s1 = data::ha_s1, s2 = data::ha_s2;
  Constant<double> c0 = data::ha_c0, c1 = data::ha_c1, c2 = data::ha_c2;
};
struct LowAccuracy {
  Constant<double> inverse = data::la_inverse, to_integer = 0x1.8p52;
  Constant<double> step_0 = data::la_step_0, step_1 = data::la_step_1, step_2 = data::la_step_2,
                   step_3 = data::la_step_3;
  Constant<double> one = 1.0, s0 = data::la_s0, s1 = data::la_s1, c0 = data::la_c0, c1 = data::la_c1;
};
struct Enhanced {
  Constant<double> inverse = data::ep_inverse, to_integer = 0x1.8p52;
  Constant<double> near_0 = data::near_step_0, near_1 = data::near_step_1;
  Constant<double> one = 1.0, s0 = data::ep_s0, c0 = data::ep_c0;
  Constant<double> step_0 = data::ep_step_0, step_1 = data::ep_step_1, step_2 = data::ep_step_2;
  Constant<double> single_0 = data::single_step_0, single_1 = data::single_step_1;
};
template <Grade grade>
inline constexpr HighAccuracy constants{};
template <>
inline constexpr LowAccuracy constants<Grade::la>{};
template <>
inline constexpr Enhanced constants<Grade::ep>{};

// |x| < 2^20.
template <Grade grade>
ORIN_INLINE Angle reduce(Vec2d x) {
  const auto& c = in_memory(constants<grade>);
  const Vec2d t = x * c.inverse + c.to_integer;
  const Vec2d n = t - c.to_integer;
  const Vec2d r = (x - n * c.step_0) - n * c.step_1;  // exact
  if constexpr (grade == Grade::ep) {
    return {r - n * c.step_2, 0.0, bits(t)};
  } else if constexpr (grade == Grade::la) {
    return {(r - n * c.step_2) - n * c.step_3, 0.0, bits(t)};
  } else {
    const Vec2d part = n * c.step_2;
    const Vec2d high = r - part;
    return {high, ((r - high) - part) - n * c.step_3, bits(t)};
  }
}

inline constexpr std::int32_t reduce_to_word = 0x412fffff;  // the high word of the largest |x| that reduce takes
inline constexpr std::int32_t near_to_word = 0x409fffff;    // .. that reduce_near takes: below 2^11

// The multiple n of the step next to x, |x| < 2^20; EP.
struct Nearest {
  Vec2d n;
  Vec2l bits;
};
ORIN_INLINE Nearest nearest(Vec2d x) {
  const auto& c = in_memory(constants<Grade::ep>);
  const Vec2d t = x * c.inverse + c.to_integer;
  return {t - c.to_integer, bits(t)};
}
// |x| < 2^11.
ORIN_INLINE Angle reduce_near(Vec2d x) {
  const auto& c = in_memory(constants<Grade::ep>);
  const Nearest m = nearest(x);
  return {(x - m.n * c.near_0) - m.n * c.near_1, 0.0, m.bits};
}
// Floats, |x| < 2^20.
ORIN_INLINE Angle reduce_single(Vec2d x) {
  const auto& c = in_memory(constants<Grade::ep>);
  const Nearest m = nearest(x);
  return {(x - m.n * c.single_0) - m.n * c.single_1, 0.0, m.bits};
}

struct Huge {
  Constant<double> near_limit = 0x1p11, limit = 0x1p20, safe = 0x1p30, scale = 0x1p-300;
  Constant<double> to_256 = 0x1.8p60, to_128 = 0x1.8p59;  // x + to_256: x rounded to a multiple of 256
};
inline constexpr Huge huge_constants{};

// Digits of 64/pi, from one on that the exponent e of x decides, the (e + to_first)/25th of the table.
template <int to_first>
class Digits {
 public:
  explicit ORIN_INLINE Digits(Vec2d x) {
    const auto exponent = low_bits<11>(shift_right<52>(bits(abs(x))));
    for (int lane = 0; lane < 2; ++lane) from_[lane] = data::digits + (exponent.of[lane] - (1023 - to_first)) / 25;
  }
  // Digits k and k + 1.
  ORIN_INLINE PairsOfVec2d pair(int k) const {
    const __m128d low = _mm_loadu_pd(from_[0] + k), high = _mm_loadu_pd(from_[1] + k);
    return {_mm_unpacklo_pd(low, high), _mm_unpackhi_pd(low, high)};
  }

 private:
  const double* from_[2];
};

// 64 x/pi modulo 128, for 2^20 <= |x|: less n 128/size, the rest as a pair.
template <int size>
ORIN_INLINE Angle reduce_huge_turns(Vec2d x) {
  static constexpr Constant<double> to_step = 0x1.8p52 * 128 / size;
  const auto& c = in_memory(huge_constants);
  // A term is the leading part of x times a digit and the rest times the digit before: exact, 2^-25 of the term before.
  // What comes before the first one is a multiple of 128.
  const DoubleDouble parts = split(x * c.scale);
  const Digits<-4> digits(x);
  const auto [d0, d1] = digits.pair(0);
  const auto [d2, d3] = digits.pair(2);
  const auto [d4, d5] = digits.pair(4);
  const auto [d6, d7] = digits.pair(6);
  const auto term = [&](Vec2d digit, Vec2d before) __attribute__((always_inline)) {
    return parts.high * digit + parts.low * before;
  };
  const Vec2d t1 = term(d1, d0), t2 = term(d2, d1);
  const Vec2d whole = (t1 - ((t1 + c.to_256) - c.to_256)) + (t2 - ((t2 + c.to_128) - c.to_128));  // exact
  // The sum of all terms, from the small end; the rounding errors add up beside.
  const DoubleDouble sum5 = fast_two_sum(term(d5, d4), term(d6, d5) + term(d7, d6));
  const DoubleDouble sum4 = fast_two_sum(term(d4, d3), sum5.high);
  const DoubleDouble sum3 = fast_two_sum(term(d3, d2), sum4.high);
  const Vec2d t = (whole + sum3.high) + in_memory(to_step);
  const Vec2d n = t - in_memory(to_step);
  const DoubleDouble sum2 = fast_two_sum(whole - n, sum3.high);
  const DoubleDouble sum1 = fast_two_sum(sum2.high, sum2.low + sum3.low);
  const DoubleDouble f = fast_two_sum(sum1.high, sum1.low + (sum4.low + sum5.low));
  return {f.high, f.low, bits(t)};
}

// x, a float beyond 2^20, less n 2 pi/size: five digits, whose products with x are exact. `ahead` quarter turns are
// added to x first, and taken from n. `opposite`: n 2 pi/size less x, and n + 3.
template <int size, int ahead = 0, bool opposite = false>
ORIN_INLINE Angle reduce_huge_single(Vec2d x) {
  static constexpr struct {
    Constant<double> to_step = (0x1.8p52 + (opposite ? 3 : 0)) * 128 / size;
    Constant<double> turned = 32.0 * ahead, unit = opposite ? -data::unit : data::unit;
  } step{};
  const auto& c = in_memory(huge_constants);
  const auto& k = in_memory(step);
  const Vec2d scaled = x * c.scale;
  const Digits<25> digits(x);
  const auto [d1, d2] = digits.pair(0);
  const auto [d3, d4] = digits.pair(2);
  const Vec2d d5 = digits.pair(4).first;
  const Vec2d t1 = scaled * d1, t2 = scaled * d2, t3 = scaled * d3;
  const Vec2d whole = (t1 - ((t1 + c.to_128) - c.to_128)) + (t2 - ((t2 + c.to_128) - c.to_128));  // exact
  Vec2d v = whole + t3;
  if constexpr (ahead != 0) v = v + k.turned;
  const Vec2d t = v + k.to_step;
  Vec2d n = t - k.to_step;
  if constexpr (ahead != 0) n = n - k.turned;
  return {(((whole - n) + t3) + (scaled * d4 + scaled * d5)) * k.unit, 0.0, bits(t)};
}

// x less n 2 pi/size as a pair, for 2^20 <= |x|.
template <int size>
ORIN_INLINE Angle reduce_huge_pair(Vec2d x) {
  static constexpr struct { Constant<double> unit, high, low; } unit = {data::unit, data::unit_high, data::unit_low};
  const auto& c = in_memory(unit);
  const Angle f = reduce_huge_turns<size>(x);
  const DoubleDouble parts = split(f.high);
  const DoubleDouble r = fast_two_sum(parts.high * c.high, parts.high * c.low + (parts.low + f.low) * c.unit);
  return {r.high, r.low, f.n};
}

// As reduce, for 2^20 <= |x|.
template <Grade grade>
ORIN_INLINE Angle reduce_huge(Vec2d x) {
  if constexpr (grade == Grade::ha) {
    return reduce_huge_pair<128>(x);
  } else {
    static constexpr Constant<double> unit = data::unit;
    const Angle f = reduce_huge_turns<512>(x);
    return {f.high * in_memory(unit), 0.0, f.n};
  }
}

// a where the mask is set, b elsewhere.
ORIN_INLINE Angle select(Vec2d mask, const Angle& a, const Angle& b) {
  return {select(mask, a.high, b.high), select(mask, a.low, b.low), bits(select(mask, from_bits(a.n), from_bits(b.n)))};
}

// Any finite x; for |x| < 2^20 the bits of reduce.
template <Grade grade>
ORIN_INLINE Angle reduce_any(Vec2d x) {
  const auto& c = in_memory(huge_constants);
  const Vec2d huge = abs(x) >= c.limit;
  return select(huge, reduce_huge<grade>(select(huge, x, c.safe)), reduce<grade>(and_not(huge, x)));
}
// Any finite floats; for |x| < 2^20 the bits of reduce_single.
ORIN_INLINE Angle reduce_any_single(Vec2d x) {
  const auto& c = in_memory(huge_constants);
  const Vec2d huge = abs(x) >= c.limit;
  return select(huge, reduce_huge_single<512>(select(huge, x, c.safe)), reduce_single(and_not(huge, x)));
}
// Any finite x, to EP; for |x| < 2^11 the bits of reduce_near, from there on to 2^20 those of reduce.
ORIN_INLINE Angle reduce_wide(Vec2d x) {
  const auto& c = in_memory(huge_constants);
  const Vec2d size = abs(x);
  const Vec2d huge = size >= c.limit, near = size < c.near_limit;
  const Vec2d usual = and_not(huge, x);
  const Angle near_angle = reduce_near(usual), far_angle = reduce<Grade::ep>(usual);  // n is the same
  const Angle angle{select(near, near_angle.high, far_angle.high), 0.0, far_angle.n};
  if (lane_bits(huge) == 0) return angle;
  return select(huge, reduce_huge<Grade::ep>(select(huge, x, c.safe)), angle);
}

// What sine and cosine of one angle share.
template <Grade grade>
class Parts;

template <>
class Parts<Grade::ep> {
 public:
  explicit ORIN_INLINE Parts(const Angle& angle) : r_(angle.high) {
    const auto [sine, cosine] = look_up_pairs(data::la_table, low_bits<9>(angle.n));
    sine_ = sine;
    cosine_ = cosine;
    cube_ = r_ * k_.s0;
  }
  ORIN_INLINE Vec2d sine() const { return sine_ + r_ * (cosine_ + r_ * (cosine_ * cube_ + sine_ * k_.c0)); }
  ORIN_INLINE Vec2d cosine() const { return cosine_ - r_ * (sine_ + r_ * (sine_ * cube_ - cosine_ * k_.c0)); }

 private:
  const Enhanced& k_ = in_memory(constants<Grade::ep>);
  Vec2d r_, sine_, cosine_;
  Vec2d cube_;  // (sin r - r)/r^2
};

template <>
class Parts<Grade::la> {
 public:
  explicit ORIN_INLINE Parts(const Angle& angle) : r_(angle.high) {
    const auto& c = in_memory(constants<Grade::la>);
    const auto [sine, cosine] = look_up_pairs(data::la_table, low_bits<9>(angle.n));
    sine_ = sine;
    cosine_ = cosine;
    const Vec2d r2 = r_ * r_;
    ratio_ = c.one + r2 * (c.s0 + r2 * c.s1);
    bend_ = r_ * (c.c0 + r2 * c.c1);
  }
  ORIN_INLINE Vec2d sine() const { return sine_ + r_ * (cosine_ * ratio_ + sine_ * bend_); }
  ORIN_INLINE Vec2d cosine() const { return cosine_ - r_ * (sine_ * ratio_ - cosine_ * bend_); }

 private:
  Vec2d r_, sine_, cosine_;
  Vec2d ratio_, bend_;  // (sin r)/r, (cos r - 1)/r
};

template <>
class Parts<Grade::ha> {
 public:
  explicit ORIN_INLINE Parts(const Angle& angle) {
    const auto& c = in_memory(constants<Grade::ha>);
    const auto j = low_bits<7>(angle.n);
    const auto [sine_high, sine_low] = look_up_pairs<4>(data::ha_table, j);
    const auto [cosine_high, cosine_low] = look_up_pairs<4>(data::ha_table + 2, j);
    sine_ = {sine_high, sine_low};
    cosine_ = {cosine_high, cosine_low};
    const Vec2d r = angle.high;
    const Vec2d r2 = r * r;
    const DoubleDouble parts = split(r);
    r_high_ = parts.high;
    r_rest_ = (parts.low + angle.low) + (r * r2) * (c.s0 + r2 * (c.s1 + r2 * c.s2));
    bend_ = r2 * (c.c0 + r2 * (c.c1 + r2 * c.c2));
  }
  // high - low; at +-0 low is +0, which keeps the sign.
  ORIN_INLINE DoubleDouble sine_pair() const {
    const Vec2d product = cosine_.high * r_high_;  // exact
    const Vec2d sum = sine_.high + product;
    const Vec2d lost = (sum - sine_.high) - product;
    const Vec2d rest = (cosine_.high + cosine_.low) * r_rest_ +
                       ((sine_.low + cosine_.low * r_high_) + (sine_.high + sine_.low) * bend_);
    return {sum, lost - rest};
  }
  ORIN_INLINE DoubleDouble cosine_pair() const {
    const Vec2d product = sine_.high * r_high_;  // exact
    const Vec2d sum = cosine_.high - product;
    const Vec2d lost = (sum - cosine_.high) + product;
    const Vec2d rest = ((cosine_.low - sine_.low * r_high_) + (cosine_.high + cosine_.low) * bend_) -
                       (sine_.high + sine_.low) * r_rest_;
    return {sum, lost - rest};
  }
  ORIN_INLINE Vec2d sine() const {
    const DoubleDouble pair = sine_pair();
    return pair.high - pair.low;
  }
  ORIN_INLINE Vec2d cosine() const {
    const DoubleDouble pair = cosine_pair();
    return pair.high - pair.low;
  }

 private:
  DoubleDouble sine_, cosine_;
  Vec2d r_high_, r_rest_, bend_;  // r_rest: sin r - r_high; bend: cos r - 1
};

template <Grade grade>
ORIN_INLINE Vec2d sine(const Angle& angle) {
  return Parts<grade>(angle).sine();
}
template <Grade grade>
ORIN_INLINE Vec2d cosine(const Angle& angle) {
  return Parts<grade>(angle).cosine();
}
template <Grade grade>
ORIN_INLINE Two<Vec2d> sine_and_cosine(const Angle& angle) {
  const Parts<grade> parts(angle);
  return {parts.sine(), parts.cosine()};
}
template <>
ORIN_INLINE Two<Vec2d> sine_and_cosine<Grade::ep>(const Angle& angle) {
  const auto& c = in_memory(constants<Grade::ep>);
  const auto [sine, cosine] = look_up_pairs(data::la_table, low_bits<9>(angle.n));
  const Vec2d r2 = angle.high * angle.high;
  const Vec2d sine_r = angle.high * (c.one + r2 * c.s0), cosine_r = c.one + r2 * c.c0;
  return {sine * cosine_r + cosine * sine_r, cosine * cosine_r - sine * sine_r};
}

}  // namespace orin::vector_math::sincos_d

#endif
