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

constexpr struct { Constant<double> one = 1.0, half = 0.5, quarter = 0.25, four = 4.0; } constants{};

// Of x + iy, x, y >= 0: four times the real part of atanh, and the point that has twice the imaginary part as its angle.
struct Half {
  Vec2d log;
  Vec2d re, im;
  ComplexD z;
};
template <Grade grade>
ORIN_INLINE Half first_half_in_quadrant(Vec2d x, Vec2d y, ComplexD z) {
  const auto& c = in_memory(constants);
  const Vec2d d = c.one - x;
  const Vec2d d2 = d * d, y2 = y * y;
  Vec2d rest = y2;
  if constexpr (grade == Grade::ha) rest = rest + (d + d) * ((c.one - d) - x);  // with what d lost
  const OnePlus<Vec2d> u = one_plus((x * c.four) / (d2 + rest));
  return {logarithm < grade == Grade::ha ? Grade::la : grade > (u.sum, u.rest), ((d + d) - d2) - y2, y + y, z};
}
template <Grade grade>
ORIN_INLINE ComplexD second_half_in_quadrant(const Half& half) {
  const auto& c = in_memory(constants);
  const Angle<Vec2d> angle = PointAngle<double, grade>::medium_in_parts(half.im, half.re);
  return {half.log * c.quarter, (angle.high + angle.low) * c.half};
}

// Both parts of it in floats.
template <Grade grade>
ORIN_INLINE ComplexS in_quadrant(Vec4f x, Vec4f y) {
  static constexpr struct { Constant<float> one = 1.0f, half = 0.5f, four = 4.0f; } floats{};
  const auto& c = in_memory(floats);
  const Vec4f d = c.one - x;
  const Vec4f d2 = d * d, y2 = y * y;
  const Vec4f re = fraction_of_logarithm_of_one_plus<grade, 4>((x * c.four) / (d2 + y2));
  return {re, PointAngle<float, grade>::in_half_plane(y + y, ((d + d) - d2) - y2) * c.half};
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
  const ComplexD value = second_half_in_quadrant<grade>(first_half_in_quadrant<grade>(x, y, {x, y}));
  return {{{first_lane(value.re), first_lane(value.im)}}, KOR_STATUS_OK};
}

// The elements with a part above `largest`, and those next to a pole: from the words of the larger part, of the part that
// has the poles, and of the other.
template <std::int32_t largest, std::int32_t one, std::int32_t little>
ORIN_INLINE Vec4i outside_or_polar(Vec4i larger, Complex<Vec4i> z) {
  static constexpr struct { Constant<std::int32_t> last = largest, pole = one, least = little; } words{};
  const auto& c = in_memory(words);
  return (larger > c.last) | ((magnitude(z.re) == c.pole) & (magnitude(z.im) < c.least));
}

// atanh z, and turned atan z: with the parts of argument and result exchanged.
template <bool turned>
struct ArcTangent {
  static constexpr const char* name_c = turned ? "vcAtan" : "vcAtanh";
  static constexpr const char* name_z = turned ? "vzAtan" : "vzAtanh";
  static constexpr double ordinary = 0;
  using Half = ::orin::vector_math::Half;

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
    return outside_or_polar<0x7f7fffff, 0x3f800000, 0x00800000>(
        larger, turn(z));  // finite; 0, with the subnormal numbers that may count as 0
  }
  static ORIN_INLINE Vec4i beyond_floats(Vec4i larger, Complex<Vec4i> z) {
    return outside_or_polar<0x5dffffff, 0x3f800000, 0x21800000>(larger, turn(z));  // 2^60; 2^-60
  }
  template <Grade grade>
  static ORIN_INLINE ComplexS of(ComplexS z) {
    z = turn(z);
    const ComplexS value = in_quadrant<grade>(abs(z.re), abs(z.im));
    return turn(ComplexS{with_sign_of(value.re, z.re), with_sign_of(value.im, z.im)});
  }
  template <Grade grade, class>
  static ORIN_INLINE Half first_half(ComplexD z) {
    z = turn(z);
    return first_half_in_quadrant<grade>(abs(z.re), abs(z.im), z);
  }
  template <Grade grade>
  static ORIN_INLINE ComplexD second_half(const Half& half) {
    const ComplexD value = second_half_in_quadrant<grade>(half);
    return turn(ComplexD{with_sign_of(value.re, half.z.re), with_sign_of(value.im, half.z.im)});
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
