// erfc: elementwise complementary error function and normal distribution function, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    the tail at y = |x| is g(y) e^(-f y^2), f = 1 or 1/2; on the other side of 0 the result is 2 or 1 less it
//           g   1 + y = c + t, c of six significant bits (EP seven): a polynomial in t for each c
//           e^  f y^2 = h + l, h exact; -h - l = n ln2/128 + r;  2^(n/128) (1 + p(r)), 2^(n/128) as a pair
//               LA  n of ln2/1024;  T q(r), q a monic cubic, T near 2^(n/1024)
//               EP  f y^2 256/ln2 = n + 512 u;  T (w^2 + b), w = u + 369/512, T near 2^(n/256)
//           HA  both factors have a part of 26 bits and a rest: the parts' product is exact
//           HA single is EP double, rounded
//           LA, EP single  y = c + t, c a multiple of 1/64: the tail at c less its decrease there times t times the average
//           of e^(-f s (2c + s)) for s from 0 to t, a polynomial in c t and t^2
// Bounds    HA 0.6 ulp double, 0.55 single; LA relative 2^-50, 2^-21; EP relative 2^-26, 2^-11; subnormal results one
//           spacing more in LA and EP
// Budget    HA  in ulp: rests of g 2^-4, of e^ 2^-6, last rounding 1/2
//           LA  in 2^-53: e^ 4, g 2, products 1;  single, in 2^-24: table 1/2, what is taken from it 1/2, sum 1/2
//           EP  g 2^-30, e^ 2^-31;  single: average 2^-9.2, of a seventh of the tail at most
// Special   NaN -> NaN, infinite -> 0 or 2 (1), no status; subnormal and vanishing results, status 4
// Data      data/erfc_data.h from tools/tables/erfc.py; exponentials of data/exp_d_data.h
// Source    W. J. Cody, Rational Chebyshev approximations for the error function, Math. Comp. 23 (1969), for the split
#include <cfloat>
#include <cmath>
#include <limits>

#include "vector_math/data/erfc_data.h"
#include "vector_math/data/exp_d_data.h"
#include "vector_math/kernels.h"
#include "vector_math/kernels/piecewise.h"
#include "vector_math/simd/elementwise.h"

namespace orin::vector_math {
namespace {

using namespace simd;
namespace data = erfc_data;

constexpr struct {
  Constant<double> one = 1.0;
  Constant<double> inverse = 0x1.71547652b82fep+7;  // 128/ln2, nearest
  Constant<double> to_integer = 0x1.8p52;           // x + to_integer: x rounded to an integer, in the low bits
  Constant<double> step_high = data::step_high, step_low = data::step_low;
  Constant<double> p2 = data::p2, p3 = data::p3, p4 = data::p4, p5 = data::p5;
  Constant<double> la_inverse = 0x1.71547652b82fep+10;  // 1024/ln2, nearest
  Constant<double> la_step_high = data::la_step_high, la_step_low = data::la_step_low;
  Constant<double> la_0 = exp_d_data::la_0, la_1 = exp_d_data::la_1, la_2 = exp_d_data::la_2;
  Constant<double> ep_to_step = 0x1.8p43;  // x + ep_to_step: x rounded to a multiple of 2^-9
  Constant<double> ep_to_step_shifted = 0x1.8p43 + exp_d_data::ep_shift;
  Constant<double> ep_b = exp_d_data::ep_0;
} constants_d{};
constexpr PowersOfTwo<Vec2d, 10> la_powers{exp_d_data::la_powers};
constexpr PowersOfTwo<Vec2d, 8> ep_powers{exp_d_data::ep_powers};

// The two functions: where their tail is, its factor f, the value at the other end; the largest y whose tail is far from
// subnormal, and the largest that the tables have.
struct Complement {
  static constexpr const char* name_s = "vsErfc";
  static constexpr const char* name_d = "vdErfc";
  static constexpr double minus_f = -1, whole = 2, largest_d = 26, last_d = 28;
  static constexpr float largest_s = 9;
  static constexpr double subnormal_d = data::erfc_tail::subnormal_d;
  static constexpr float subnormal_s = data::erfc_tail::subnormal_s;
  static constexpr RowTable<10, double> fine{data::erfc_tail::fine};
  static constexpr RowTable<4, double> medium{data::erfc_tail::medium};
  static constexpr const float* single_pairs = data::erfc_tail::single_pairs;
  static constexpr bool tail_is_positive = true;
};
struct Normal {
  static constexpr const char* name_s = "vsCdfNorm";
  static constexpr const char* name_d = "vdCdfNorm";
  static constexpr double minus_f = -0.5, whole = 1, largest_d = 37, last_d = 39;
  static constexpr float largest_s = 12.5f;
  static constexpr double subnormal_d = data::normal_tail::subnormal_d;
  static constexpr float subnormal_s = data::normal_tail::subnormal_s;
  static constexpr RowTable<10, double> fine{data::normal_tail::fine};
  static constexpr RowTable<4, double> medium{data::normal_tail::medium};
  static constexpr const float* single_pairs = data::normal_tail::single_pairs;
  static constexpr bool tail_is_positive = false;
};

template <class F>
struct Factors {
  Constant<double> minus_f = F::minus_f, whole = F::whole, largest = F::largest_d;
  Constant<double> ep_inverse = F::minus_f * 0x1.71547652b82fep-1;  // -f 256/ln2 in units of 2^-9
  Constant<float> whole_s = static_cast<float>(F::whole), largest_s = F::largest_s;
  // Of the average of e^(-f s (2c + s)), s from 0 to t: a series in c t and t^2.
  static constexpr double f = -F::minus_f, largest_ct = F::largest_s / 128.0;
  static constexpr double fourth = 2 * f * f * f * f / 15, u2 = largest_ct * largest_ct;  // u^4 near u2 (u^2 - u2/8)
  Constant<float> k0 = static_cast<float>(1 - fourth * u2 * u2 / 8), k1 = static_cast<float>(f);
  Constant<float> k2 = static_cast<float>(2 * f * f / 3 + fourth * u2), k3 = static_cast<float>(f * f * f / 3);
  Constant<float> m0 = static_cast<float>(f / 3), m1 = static_cast<float>(f * f / 2);
  Constant<float> ep_k0 = static_cast<float>(1 + f * f * u2 / 3);
};
template <class F>
constexpr Factors<F> factors{};

// 1 + y = c + t.
template <class V>
struct Place {
  V t;
  CellIndices<V> number;
};
template <int per_octave, class V>
ORIN_INLINE Place<V> place_of(V y, V one) {
  const Cell<V> cell = leading_bits<per_octave, 0>(y + one);
  return {y - (cell.centre - one), cell.number};
}

// -f y^2 as a sum, its high part exact.
template <class F>
ORIN_INLINE DoubleDouble scaled_square(Vec2d y) {
  const auto& f = in_memory(factors<F>);
  const DoubleDouble parts = split(y);
  return {(parts.high * f.minus_f) * parts.high, (parts.low * f.minus_f) * (y + parts.high)};
}

// g as a part of 26 bits and a rest.
struct FactorG {
  Vec2d head, rest;
};
template <class F>
ORIN_INLINE FactorG factor_g(Vec2d y) {
  const auto [t, number] = place_of<32, Vec2d>(y, in_memory(constants_d).one);
  const Rows<10, Vec2d> rows(F::fine, number);
  const Vec2d slope = sum_of_pairs<1, 4>(rows, t, t * t);
  const auto [head, head_rest] = pair<0>(rows);
  return {head, head_rest + t * slope};
}

// g and e^(-f y^2), each as a part of 26 bits and a rest; the exponential less its factor 2^k, k above the lowest seven
// bits of n.
struct TailFactors {
  FactorG g;
  Vec2d power, power_rest;
  Vec2l n;
};
template <class F>
ORIN_INLINE TailFactors tail_factors(Vec2d y) {
  const auto& c = in_memory(constants_d);
  const DoubleDouble square = scaled_square<F>(y);
  const Vec2d shifted = square.high * c.inverse + c.to_integer;
  const Vec2d n = shifted - c.to_integer;
  const Vec2d r = (square.high - n * c.step_high) + (square.low - n * c.step_low);
  const Vec2d p = r + (r * r) * ((c.p2 + r * c.p3) + (r * r) * (c.p4 + r * c.p5));
  const auto [power, power_low] = look_up_pairs(data::powers, low_bits<7>(bits(shifted)));
  return {factor_g<F>(y), power, power_low + (power + power_low) * p, bits(shifted)};
}
// 2^(k + extra).
template <int extra>
ORIN_INLINE Vec2d power_of_two(Vec2l n) {
  static constexpr Constant<std::int64_t> bias = 1023 + extra;
  return from_bits(shift_left<52>(shift_right<7>(n) + in_memory(bias)));
}

// The tail times 2^extra, to the bound of HA.
template <class F, int extra>
ORIN_INLINE Vec2d scaled_tail(Vec2d y) {
  const TailFactors x = tail_factors<F>(y);
  const Vec2d rest = x.power * x.g.rest + x.power_rest * (x.g.head + x.g.rest);
  return (x.power * x.g.head + rest) * power_of_two<extra>(x.n);
}

template <class F, Grade grade>
ORIN_INLINE Vec2d tail_function(Vec2d x) {
  static constexpr Constant<double> zero = 0.0, minus_zero = -0.0;
  const auto& c = in_memory(constants_d);
  const auto& f = in_memory(factors<F>);
  const Vec2d y = min(abs(x), f.largest);
  // Where the tail is taken from the whole: its negative is added.
  const Vec2d other = F::tail_is_positive ? x < in_memory(zero) : x > in_memory(zero);
  const Vec2d whole = other & f.whole;
  const Vec2d sign = other & in_memory(minus_zero);
  if constexpr (grade == Grade::ep) {
    const Vec2d scaled = (y * y) * f.ep_inverse;
    const Vec2d shifted = scaled + c.ep_to_step;
    const Vec2d w = scaled - (shifted - c.ep_to_step_shifted);
    const Vec2d power = ep_powers.of(bits(shifted)) * (w * w + c.ep_b);
    const auto [t, number] = place_of<64, Vec2d>(y, c.one);
    return whole + ((power * polynomial(F::medium, number, t)) ^ sign);
  } else if constexpr (grade == Grade::la) {
    const DoubleDouble square = scaled_square<F>(y);
    const Vec2d shifted = square.high * c.la_inverse + c.to_integer;
    const Vec2d n = shifted - c.to_integer;
    const Vec2d r = (square.high - n * c.la_step_high) + (square.low - n * c.la_step_low);
    const Vec2d q = ((r + c.la_2) * r + c.la_1) * r + c.la_0;
    const FactorG g = factor_g<F>(y);
    return whole + (((la_powers.of(bits(shifted)) * q) * (g.head + g.rest)) ^ sign);
  } else {
    const TailFactors tail = tail_factors<F>(y);
    const Vec2d scale = power_of_two<0>(tail.n) ^ sign;
    const Vec2d rest = tail.power * tail.g.rest + tail.power_rest * (tail.g.head + tail.g.rest);
    const DoubleDouble sum = fast_two_sum(whole, (tail.power * tail.g.head) * scale);
    return sum.high + (sum.low + rest * scale);
  }
}

template <class F, Grade grade>
ORIN_INLINE Vec4f tail_function(Vec4f x) {
  if constexpr (grade == Grade::ha) {
    const TwoVec2d wide = widen(x);
    return narrow({tail_function<F, Grade::ep>(wide.low), tail_function<F, Grade::ep>(wide.high)});
  } else {
    static constexpr Constant<float> zero = 0.0f, minus_zero = -0.0f;
    const auto& f = in_memory(factors<F>);
    const Vec4f y = min(abs(x), f.largest_s);
    const Vec4f other = F::tail_is_positive ? x < in_memory(zero) : x > in_memory(zero);
    const Cell<Vec4f> cell = nearest_multiple<64>(y);
    const Vec4f t = y - cell.centre;
    const auto [value, decrease] = look_up_pairs(F::single_pairs, cell.number);
    const Vec4f u = cell.centre * t;
    Vec4f average;
    if constexpr (grade == Grade::la)
      average = ((f.k0 - u * f.k1) + (u * u) * (f.k2 - u * f.k3)) - (t * t) * (f.m0 - u * f.m1);
    else
      average = f.ep_k0 - u * f.k1;
    const Vec4f tail = value - (decrease * t) * average;
    return (other & f.whole_s) + (tail ^ (other & in_memory(minus_zero)));
  }
}

template <class F, class T, Grade grade>
struct TailFunction : OneToOne<T> {
  using V = typename RegisterOf<T>::type;
  static constexpr bool is_single = sizeof(T) == 4;
  static constexpr const char* name = is_single ? F::name_s : F::name_d;
  static constexpr T ordinary = 0;

  // On the tail's side beyond `largest`; NaN.
  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    static constexpr struct {
      Constant<std::int32_t> sign = INT32_MIN;
      Constant<std::int32_t> largest =
          is_single ? __builtin_bit_cast(std::int32_t, F::largest_s) - 1
                    : static_cast<std::int32_t>(__builtin_bit_cast(std::int64_t, F::largest_d) >> 32) - 1;
      Constant<std::int32_t> largest_finite = is_single ? 0x7f7fffff : 0x7fefffff;
    } constants{};
    const auto& c = in_memory(constants);
    const Vec4i towards_tail = F::tail_is_positive ? words : words ^ c.sign;
    return (towards_tail > c.largest) | (magnitude(words) > c.largest_finite);
  }
  static ORIN_INLINE V fast(V x) { return tail_function<F, grade>(x); }

  static Outcome<T> special(T x) {
    if (x != x) return {{x + x}, KOR_STATUS_OK};
    const T y = F::tail_is_positive ? x : -x;
    if (y < 0) return {{static_cast<T>(F::whole)}, KOR_STATUS_OK};
    const T subnormal = is_single ? static_cast<T>(F::subnormal_s) : static_cast<T>(F::subnormal_d);
    const std::int32_t status =
        y >= subnormal && y <= std::numeric_limits<T>::max() ? KOR_STATUS_UNDERFLOW : KOR_STATUS_OK;
    // A normal number, then its product with the rest, which alone rounds to a subnormal.
    const Vec2d end = min(Vec2d(static_cast<double>(y)), F::last_d);
    if constexpr (is_single)
      return {{static_cast<T>(first_lane(scaled_tail<F, 126>(end)) * FLT_MIN)}, status};
    else
      return {{first_lane(scaled_tail<F, 1022>(end)) * DBL_MIN}, status};
  }
};

}  // namespace

#define ORIN_TAIL_FUNCTION(name, F, T, grade)                       \
  void ORIN_CALL name##_##grade(std::int32_t n, const T* a, T* r) { \
    elementwise<TailFunction<F, T, Grade::grade>>({}, n, {a}, {r}); \
  }
ORIN_TAIL_FUNCTION(erfc_s, Complement, float, la)
ORIN_TAIL_FUNCTION(erfc_s, Complement, float, ha)
ORIN_TAIL_FUNCTION(erfc_s, Complement, float, ep)
ORIN_TAIL_FUNCTION(erfc_d, Complement, double, la)
ORIN_TAIL_FUNCTION(erfc_d, Complement, double, ha)
ORIN_TAIL_FUNCTION(erfc_d, Complement, double, ep)
ORIN_TAIL_FUNCTION(cdf_norm_s, Normal, float, la)
ORIN_TAIL_FUNCTION(cdf_norm_s, Normal, float, ha)
ORIN_TAIL_FUNCTION(cdf_norm_s, Normal, float, ep)
ORIN_TAIL_FUNCTION(cdf_norm_d, Normal, double, la)
ORIN_TAIL_FUNCTION(cdf_norm_d, Normal, double, ha)
ORIN_TAIL_FUNCTION(cdf_norm_d, Normal, double, ep)
#undef ORIN_TAIL_FUNCTION

}  // namespace orin::vector_math
