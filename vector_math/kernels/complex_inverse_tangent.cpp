// complex_inverse_tangent: elementwise atanh z and atan z, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    in the first quadrant, z = x + iy, d = 1 - x: D = d^2 + y^2,
//           re atanh z = log(1 + 4x/D)/4,  im atanh z = atan2(2y, 2d - d^2 - y^2)/2
//           elsewhere by symmetry; atan z = -i atanh(iz); single precision in double by the EP grade
// Bounds    in ulp of the modulus: HA 3.2, LA 8; EP 2^-26, 2^-11
// Budget    HA  in units of rounding: d^2, D, 4x/D 1 each, logarithm as in LA 2 1/2; or 2d - d^2 - y^2 1 1/2, its angle 2
// Special   C Annex G; +-1 (atan: +-i) -> infinite, status 2; |z| >= 2^250: x/|z|^2 + i pi/2
// Source    W. Kahan, Branch cuts for complex elementary functions, in The State of the Art in Numerical
//           Analysis (1987)
#include "vector_math/kernels.h"
#include "vector_math/kernels/complex_in_double.h"
#include "vector_math/kernels/log_core_d.h"
#include "vector_math/kernels/point_angle.h"

namespace orin::vector_math {
namespace {

using namespace simd;

constexpr struct { Constant<double> zero = 0.0, one = 1.0, half = 0.5, quarter = 0.25, four = 4.0; } constants{};

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

// By the high words of the larger part, of the part that has the poles, and of the other.
template <class T>
ORIN_INLINE Vec4i special_lanes_of(Vec4i larger, Vec4i polar, Vec4i other) {
  static constexpr struct {
    Constant<std::int32_t> largest = sizeof(T) == 8 ? 0x4f8fffff : 0x47efffff;  // 2^250
    Constant<std::int32_t> one = 0x3ff00000;                                    // to 1 + 2^-20
    Constant<std::int32_t> little = sizeof(T) == 8 ? 0x20b00000 : 1;            // 2^-500; 0 alone
  } words{};
  const auto& c = in_memory(words);
  return (larger > c.largest) | ((magnitude(polar) == c.one) & (magnitude(other) < c.little));
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
    z = turn(z);
    return special_lanes_of<T>(larger, z.re, z.im);
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

ORIN_COMPLEX_IN_HALVES(atanh, ArcTangent<false>)
ORIN_COMPLEX_IN_HALVES(atan, ArcTangent<true>)

}  // namespace orin::vector_math
