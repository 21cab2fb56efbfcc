// complex_inverse_tangent: elementwise atanh z and atan z, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    in the first quadrant, z = x + iy, d = 1 - x: D = d^2 + y^2,
//           re atanh z = log(1 + 4x/D)/4,  im atanh z = atan2(2y, 2d - d^2 - y^2)/2
//           elsewhere by symmetry; atan z = -i atanh(iz)
//           single precision: LA and EP in floats, HA, parts from 2^60 and 1 + iy, y < 2^-60, in double by the EP grade
// Bounds    in ulp of the modulus: HA 3.2, LA 8; EP 2^-26, 2^-11
// Budget    HA  in units of rounding: d^2, D, 4x/D 1 each, logarithm as in LA 2 1/2; or 2d - d^2 - y^2 1 1/2, its angle 2
// Special   C Annex G; +-1 (atan: +-i) -> infinite, status 2; |z| >= 2^250: x/|z|^2 + i pi/2
// Source    W. Kahan, Branch cuts for complex elementary functions, in The State of the Art in Numerical
//           Analysis (1987)
#include "vector_math/kernels.h"
#include "vector_math/kernels/complex_in_floats.h"
#include "vector_math/kernels/log_core_d.h"
#include "vector_math/kernels/log_core_s.h"
#include "vector_math/kernels/point_angle.h"

namespace orin::vector_math {
namespace {

using namespace simd;

template <class T>
struct Constants {
  Constant<T> one = 1, half = T(0.5), quarter = T(0.25), four = 4;
};
template <class V>
constexpr Constants<typename V::Element> constants{};

// Of x + iy, x, y >= 0: the real part of atanh, and the point that has twice the imaginary part as its angle.
template <class V>
struct HalfOfArcTangent {
  V re;
  V point_re, point_im;
  Complex<V> z;
};
template <Grade grade, class V>
ORIN_INLINE HalfOfArcTangent<V> first_half_in_quadrant(V x, V y, Complex<V> z) {
  const auto& c = in_memory(constants<V>);
  const V d = c.one - x;
  const V d2 = d * d, y2 = y * y;
  V rest = y2;
  if constexpr (grade == Grade::ha) rest = rest + (d + d) * ((c.one - d) - x);  // with what d lost
  const V quotient = (x * c.four) / (d2 + rest);
  const V point_re = ((d + d) - d2) - y2, point_im = y + y;
  if constexpr (sizeof(typename V::Element) == 4) {
    return {fraction_of_logarithm_of_one_plus<grade, 4>(quotient), point_re, point_im, z};
  } else {
    const OnePlus<V> u = one_plus(quotient);
    const V log = logarithm < grade == Grade::ha ? Grade::la : grade > (u.sum, u.rest);
    return {log * c.quarter, point_re, point_im, z};
  }
}
template <Grade grade, class V>
ORIN_INLINE Complex<V> second_half_in_quadrant(const HalfOfArcTangent<V>& half) {
  const V angle = PointAngle<typename V::Element, grade>::in_half_plane(half.point_im, half.point_re);
  return {half.re, angle * in_memory(constants<V>).half};
}

// Arguments far from 0, next to 1 and not finite.
template <Grade grade>
ORIN_INLINE Outcome<KorComplex16> special_in_quadrant(double x, double y) {
  constexpr double quarter_turn = half_pi<double>;
  if (is_nan(x) || is_nan(y)) {
    if (is_infinite(x)) return {{{0.0, y}}, KOR_STATUS_OK};
    if (is_infinite(y)) return {{{0.0, quarter_turn}}, KOR_STATUS_OK};
    if (x == 0) return {{{0.0, y}}, KOR_STATUS_OK};
    return {{{not_a_number, not_a_number}}, KOR_STATUS_OK};
  }
  if (is_infinite(x) || is_infinite(y)) return {{{0.0, quarter_turn}}, KOR_STATUS_OK};
  if (x >= 0x1p250 || y >= 0x1p250) {
    // x/|z|^2 by the larger part.
    const double larger = x > y ? x : y, p = x / larger, q = y / larger;
    return {{{p / (p * p + q * q) / larger, quarter_turn}}, KOR_STATUS_OK};
  }
  if (x == 1 && y == 0) return {{{infinite, 0.0}}, KOR_STATUS_SING};
  if (x == 1) {
    // y^2 is lost beside it: log(4/y^2)/4 and half a right angle.
    const Vec2d log = y < 0x1p-1000 ? logarithm<grade, Base::e, 60>(Vec2d(y * 0x1p60)) : logarithm<grade>(Vec2d(y));
    return {{{(0x1.62e42fefa39efp-1 - first_lane(log)) / 2, quarter_turn / 2}}, KOR_STATUS_OK};
  }
  const ComplexD value = second_half_in_quadrant<grade>(first_half_in_quadrant<grade, Vec2d>(x, y, {x, y}));
  return {{{first_lane(value.re), first_lane(value.im)}}, KOR_STATUS_OK};
}

// atanh z, and turned atan z: with the parts of argument and result exchanged.
template <bool turned>
struct ArcTangent {
  static constexpr const char* name_c = turned ? "vcAtan" : "vcAtanh";
  static constexpr const char* name_z = turned ? "vzAtan" : "vzAtanh";
  static constexpr double ordinary = 0;
  template <class V>
  using Half = HalfOfArcTangent<V>;

  template <class Z>
  static ORIN_INLINE Z turn(Z z) {
    if constexpr (turned) return {z.im, z.re};
    return z;
  }
  template <class T>
  static ORIN_INLINE Vec4i special_lanes(Vec4i larger, Complex<Vec4i> z) {
    constexpr std::int32_t to_one = 0x3ff00000;  // to 1 + 2^-20
    if constexpr (sizeof(T) == 8)
      return outside_or_polar<0x4f8fffff, to_one, 0x20b00000>(larger, turn(z));  // 2^250; 2^-500
    else
      return outside_or_polar<0x47efffff, to_one, 1>(larger, turn(z));  // finite; 0
  }
  static ORIN_INLINE Vec4i special_floats(Vec4i larger, Complex<Vec4i> z) {
    // Subnormal numbers may count as 0.
    return outside_or_polar<0x7f7fffff, 0x3f800000, 0x00800000>(larger, turn(z));
  }
  static ORIN_INLINE Vec4i beyond_floats(Vec4i larger, Complex<Vec4i> z) {
    return outside_or_polar<0x5dffffff, 0x3f800000, 0x21800000>(larger, turn(z));  // 2^60; 2^-60
  }
  template <Grade grade, class, class V>
  static ORIN_INLINE Half<V> first_half(Complex<V> z) {
    z = turn(z);
    return first_half_in_quadrant<grade>(abs(z.re), abs(z.im), z);
  }
  template <Grade grade, class V>
  static ORIN_INLINE Complex<V> second_half(const Half<V>& half) {
    const Complex<V> value = second_half_in_quadrant<grade>(half);
    return turn(Complex<V>{with_sign_of(value.re, half.z.re), with_sign_of(value.im, half.z.im)});
  }
  template <Grade grade, class>
  static Outcome<KorComplex16> special(KorComplex16 z) {
    z = turn(z);
    const auto [value, status] = special_in_quadrant<grade>(std::fabs(z.re), std::fabs(z.im));
    return {{turn(KorComplex16{std::copysign(value[0].re, z.re), std::copysign(value[0].im, z.im)})}, status};
  }
};

}  // namespace

ORIN_COMPLEX_IN_FLOATS(atanh, ArcTangent<false>)
ORIN_COMPLEX_IN_FLOATS(atan, ArcTangent<true>)

}  // namespace orin::vector_math
