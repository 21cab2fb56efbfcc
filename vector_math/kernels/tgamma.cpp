// tgamma: elementwise Gamma(x), both precisions.
// SPDX-License-Identifier: MIT
//
// Method    x >= 2^-5: e^(log Gamma(x)), the logarithm from the tables of gamma_core_d.h; HA as a pair
//           |x| < 2^-5: 1/x + g(x)
//           x <= -2^-5: e^-(log Gamma(y) + log(sin(pi t)/(pi t)))/(y t), y = -x = n + t, in pairs
//           EP without pairs. Single precision is as double EP, but EP in float where x >= 2^-5.
// Bounds    HA 0.58 ulp in double, 0.53 in single precision; EP relative 2^-26, 2^-11; LA is HA
// Budget    HA  in ulp: log Gamma 2^-6, exponential 2^-7, last rounding 1/2;  EP log Gamma 2^-32, exponential 2^-31
// Special   NaN -> NaN, +inf -> +inf; -inf and negative integers -> NaN, status 1; +-0 -> +-inf, status 2; overflow ->
//           infinity, status 3; subnormal or zero, of the right sign and rounded once -> status 4
// Source    as gamma_core_d.h
#include <cfloat>
#include <cmath>
#include <limits>

#include "vector_math/data/pow_s_data.h"
#include "vector_math/kernels.h"
#include "vector_math/kernels/gamma_core_d.h"
#include "vector_math/kernels/gamma_core_s.h"
#include "vector_math/kernels/pow_core_d.h"
#include "vector_math/simd/elementwise.h"
#include "vector_math/simd/rounding.h"

namespace orin::vector_math {
namespace {

using namespace simd;

constexpr struct {
  Constant<double> least = gamma_d::least_in_table, one = 1.0, minus_zero = -0.0, below = 0x1p-6;
  Constant<double> g0 = gamma_d_data::near_0_0, g1 = gamma_d_data::near_0_1, g2 = gamma_d_data::near_0_2,
                   g3 = gamma_d_data::near_0_3, g4 = gamma_d_data::near_0_4, g5 = gamma_d_data::near_0_5,
                   g6 = gamma_d_data::near_0_6, g7 = gamma_d_data::near_0_7, g8 = gamma_d_data::near_0_8;
} constants_d{};
constexpr struct {
  Constant<float> least = 0x1p-5f, one = 1.0f, below = 0x1p-6f;
  Constant<float> inverse = 0x1.715476p+0f;  // 1/ln2, nearest
  Constant<float> to_integer = 0x1.8p23f;
  Constant<float> q1 = pow_s_data::power_1, q2 = pow_s_data::power_2, q3 = pow_s_data::power_3;
} constants_s{};

// Gamma(x) for x of the table with an ordinary result.
template <Grade grade>
ORIN_INLINE Vec2d from_table(Vec2d x) {
  if constexpr (grade == Grade::ep) {
    return pow_d::power_medium(gamma_d::log_gamma_ep(x));
  } else {
    const DoubleDouble e = gamma_d::log_gamma_pair(x);
    const pow_d::Power power = pow_d::power(fast_two_sum(e.high, e.low));
    return from_bits(bits(power.value) + shift_left<52>(power.k));
  }
}
template <Grade grade>
ORIN_INLINE Vec4f from_table(Vec4f x) {
  if constexpr (grade == Grade::ep) {
    const auto& c = in_memory(constants_s);
    const Vec4f e = gamma_s::log_gamma<grade>(x) * c.inverse;
    const Vec4f t = e + c.to_integer;
    const Vec4f u = e - (t - c.to_integer);
    const Vec4f q = (c.one + u * c.q1) + (u * u) * (c.q2 + u * c.q3);
    return from_bits(bits(q) + shift_left<23>(bits(t)));
  } else {
    const TwoVec2d wide = widen(x);
    return narrow({from_table<Grade::ep>(wide.low), from_table<Grade::ep>(wide.high)});
  }
}

// x < 2^-5: y = |x| = n + t, or where |x| < 2^-5 y = 1, t = 0 and Gamma(x) = 1/x + g.
struct Below {
  Vec2d size, near_0, y, t, sign, g;

  explicit ORIN_INLINE Below(Vec2d x) {
    const auto& c = in_memory(constants_d);
    size = abs(x);
    near_0 = size < c.least;
    y = select(near_0, c.one, size);
    const gamma_d::Nearest nearest = gamma_d::nearest(y);
    t = abs(nearest.t);
    // Negative where the integer below y is even: the nearest one where t >= 0, else the one before.
    const Vec2d parity = from_bits(shift_left<63>(nearest.n_bits)) ^ (nearest.t & c.minus_zero) ^ c.minus_zero;
    sign = select(near_0, x & c.minus_zero, parity);
    const Vec2d x2 = x * x;
    g = (((c.g0 + x * c.g1) + x2 * (c.g2 + x * c.g3)) +
         (x2 * x2) * ((c.g4 + x * c.g5) + x2 * ((c.g6 + x * c.g7) + x2 * c.g8))) &
        near_0;
  }
  ORIN_INLINE bool reflects() const { return lane_bits(near_0) != 3; }
};

// Gamma(x) = (high + rest) 2^k for -2^8 < x < 2^-5, |x| at least 2^-1020, x no pole.
ORIN_INLINE pow_d::PowerPair below_table_pair(Vec2d x) {
  const auto& c = in_memory(constants_d);
  const Below at(x);
  const DoubleDouble product = two_product(at.y, at.t);
  const Vec2d d = select(at.near_0, at.size, product.high);
  const Vec2d inverse = c.one / d;
  DoubleDouble numerator{c.one, Vec2d(0.0)};  // next to 0 it is that anyway
  Vec2l k = INT64_C(0);
  if (at.reflects()) {
    const DoubleDouble log = gamma_d::log_gamma_pair(at.y);
    const DoubleDouble ratio = gamma_d::log_sine_ratio(at.t);
    const DoubleDouble sum = two_sum(log.high, ratio.high);
    const DoubleDouble e = fast_two_sum(sum.high, sum.low + (log.low + ratio.low));
    const pow_d::PowerPair power = pow_d::power_pair({Vec2d(0.0) - e.high, Vec2d(0.0) - e.low});
    numerator = fast_two_sum(power.high, power.rest);
    k = power.k;
  }
  const Vec2d quotient = numerator.high * inverse;
  const DoubleDouble back = two_product(quotient, d);
  const Vec2d remainder = ((numerator.high - back.high) - back.low) + (numerator.low - quotient * product.low);
  return {quotient ^ at.sign, ((remainder * inverse) ^ at.sign) + at.g, k};
}
// The same as one number, for ordinary results.
template <Grade grade>
ORIN_INLINE Vec2d below_table(Vec2d x) {
  if constexpr (grade == Grade::ep) {
    const Below at(x);
    Vec2d numerator = in_memory(constants_d).one;
    if (at.reflects())
      numerator = pow_d::power_medium(Vec2d(0.0) - (gamma_d::log_gamma_ep(at.y) + gamma_d::log_sine_ratio_short(at.t)));
    return ((numerator / select(at.near_0, at.size, at.y * at.t)) ^ at.sign) + at.g;
  } else {
    const pow_d::PowerPair result = below_table_pair(x);
    return from_bits(bits(result.high + result.rest) + shift_left<52>(result.k));
  }
}
template <Grade grade>
ORIN_INLINE Vec4f below_table(Vec4f x) {
  const TwoVec2d wide = widen(x);
  return narrow({below_table<Grade::ep>(wide.low), below_table<Grade::ep>(wide.high)});
}

ORIN_INLINE double power_of_two(int k) { return __builtin_bit_cast(double, static_cast<std::int64_t>(k + 1023) << 52); }

// x < 0, no integer: the sign of Gamma(x).
ORIN_INLINE double sign_of_gamma(double x) {
  const double n = gamma_d::nearest_integer(-x);
  const double half = (n > -x ? n - 1 : n) * 0.5;  // of the integer below -x
  return gamma_d::nearest_integer(half) == half ? -1 : 1;
}

// 171 <= x < the overflow bound, where the power of 2 is the largest.
ORIN_INLINE double far_above(double x) {
  const DoubleDouble e = gamma_d::log_gamma_pair(x);
  const pow_d::Power power = pow_d::power(fast_two_sum(e.high, e.low));
  const int k = static_cast<std::int16_t>(_mm_cvtsi128_si32(power.k.raw));
  return first_lane(power.value) * power_of_two(k - 1) * 2;
}

// x <= -33, no integer.
Outcome<double> far_below(double x) {
  if (x < -200) return {{sign_of_gamma(x) * 0}, KOR_STATUS_UNDERFLOW};
  const pow_d::PowerPair result = below_table_pair(x);
  const int k = static_cast<std::int16_t>(_mm_cvtsi128_si32(result.k.raw));
  const double unit = power_of_two(k + 1022);  // results are multiples of DBL_MIN
  const double high = std::fabs(first_lane(result.high)) * unit;
  const double rest = first_lane(result.rest) * sign_of_gamma(x) * unit;
  if (high + rest >= 1) return {{sign_of_gamma(x) * (high + rest) * DBL_MIN}, KOR_STATUS_OK};
  return {{sign_of_gamma(x) * (sum_at_spacing_of_one(high, rest) * DBL_MIN)}, KOR_STATUS_UNDERFLOW};
}

// Arguments without an ordinary result by their kind; `rest` knows the others.
template <class T, class Rest>
Outcome<T> special_gamma(T x, Rest rest) {
  using Limits = std::numeric_limits<T>;
  if (x != x) return {{x + x}, KOR_STATUS_OK};
  if (x == 0) return {{std::copysign(Limits::infinity(), x)}, KOR_STATUS_SING};
  if (x > Limits::max()) return {{x}, KOR_STATUS_OK};
  if (x < -Limits::max() || gamma_d::is_pole(double{x})) return {{Limits::quiet_NaN()}, KOR_STATUS_ERRDOM};
  return rest();
}

// Groups with an argument below the table take the second path; each lane keeps the value of its own path.
template <class T, Grade grade>
struct TwoPaths : OneToOne<T> {
  using V = typename RegisterOf<T>::type;
  static constexpr T ordinary = 1;
  static constexpr int groups_per_step = 1;
  static constexpr unsigned all_lanes = (1u << V::lanes) - 1;

  static ORIN_INLINE const auto& constants() {
    if constexpr (sizeof(T) == 8)
      return in_memory(constants_d);
    else
      return in_memory(constants_s);
  }
  static ORIN_INLINE V fast(V x) {
    const V in_table = x >= constants().least;
    if (lane_bits(in_table) == all_lanes) [[likely]]
      return from_table<grade>(x);
    V result;
    second_path(x, in_table, result);
    return result;
  }

 private:
  [[gnu::noinline]] static void second_path(const V& x, const V& in_table, V& result) {
    const auto& c = constants();
    const V below = below_table<grade>(select(in_table, c.below, x));
    if (lane_bits(in_table) == 0)
      result = below;
    else
      result = select(in_table, from_table<grade>(select(in_table, x, c.one)), below);
  }
};

template <Grade grade>
struct TGammaD : TwoPaths<double, grade> {
  static constexpr const char* name = "vdTGamma";
  static constexpr double overflow = 0x1.573fae561f648p+7;  // at or above: +inf

  // Ordinary: 2^-1020 <= x < 171, and the fractions of -170 < x <= -2^-1020.
  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    return gamma_d::special_lanes<0x00300000, 0x40655fff>(words, gamma_d::negative_fractions<0x00300000, 0x40653fff>);
  }
  static Outcome<double> special(double x) {
    return special_gamma(x, [x]() -> Outcome<double> {
      if (std::fabs(x) <= 0x1p-1024) return {{std::copysign(HUGE_VAL, x)}, KOR_STATUS_OVERFLOW};
      if (std::fabs(x) < 0x1p-1020) return {{1 / x}, KOR_STATUS_OK};
      if (x >= overflow) return {{HUGE_VAL}, KOR_STATUS_OVERFLOW};
      if (x >= 171) return {{far_above(x)}, KOR_STATUS_OK};
      if (x <= -170) return far_below(x);
      return {{first_lane(TGammaD::fast(x))}, KOR_STATUS_OK};
    });
  }
};

template <Grade grade>
struct TGammaS : TwoPaths<float, grade> {
  static constexpr const char* name = "vsTGamma";
  static constexpr float overflow = 0x1.18522p+5f;  // at or above: +inf

  // Ordinary: normal x < 35, and the fractions of x > -33.
  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    return gamma_d::special_lanes<0x00800000, 0x420bffff>(words, gamma_s::negative_fractions<0x00800000, 0x4203ffff>);
  }
  static Outcome<float> special(float x) {
    return special_gamma(x, [x]() -> Outcome<float> {
      if (std::fabs(x) <= 0x1p-128f) return {{std::copysign(HUGE_VALF, x)}, KOR_STATUS_OVERFLOW};
      if (std::fabs(x) < FLT_MIN) return {{static_cast<float>(1 / double{x})}, KOR_STATUS_OK};
      if (x >= overflow) return {{HUGE_VALF}, KOR_STATUS_OVERFLOW};
      if (x >= 35) return {{static_cast<float>(first_lane(from_table<Grade::ha>(Vec2d(double{x}))))}, KOR_STATUS_OK};
      if (x > -33) return {{first_lane(TGammaS::fast(x))}, KOR_STATUS_OK};
      const double value = far_below(x).value[0];
      return {{static_cast<float>(value)}, std::fabs(value) < double{FLT_MIN} ? KOR_STATUS_UNDERFLOW : KOR_STATUS_OK};
    });
  }
};

}  // namespace

void ORIN_CALL tgamma_d_ha(std::int32_t n, const double* a, double* r) {
  elementwise<TGammaD<Grade::ha>>({}, n, {a}, {r});
}
void ORIN_CALL tgamma_d_ep(std::int32_t n, const double* a, double* r) {
  elementwise<TGammaD<Grade::ep>>({}, n, {a}, {r});
}
void ORIN_CALL tgamma_s_ha(std::int32_t n, const float* a, float* r) {
  elementwise<TGammaS<Grade::ha>>({}, n, {a}, {r});
}
void ORIN_CALL tgamma_s_ep(std::int32_t n, const float* a, float* r) {
  elementwise<TGammaS<Grade::ep>>({}, n, {a}, {r});
}

}  // namespace orin::vector_math
