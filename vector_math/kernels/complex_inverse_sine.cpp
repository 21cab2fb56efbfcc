// complex_inverse_sine: elementwise asin z, acos z, asinh z and acosh z, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    in the first quadrant x + iy = sin(u + iv): sinh^2 v and -cos^2 u are the roots of t^2 - S t - y^2 = 0,
//           S = x^2 + y^2 - 1, so with H = sqrt(S^2 + 4 y^2) the root of (|S| + H)/2 is sinh v outside the unit circle
//           and cos u inside it, and the other of these is y over it; then
//           v = log(1 + w + w^2/(1 + a)), w = sinh v, a = cosh v;  u = atan2(x, a cos u), pi/2 - u = atan2(a cos u, x)
//           a = sqrt((S + 2 + H)/2). No difference cancels but S, and that only where y outweighs it
//           asinh z = -i asin(iz), acosh z = +-i acos z
//           single precision: LA and EP in floats, S = (x - 1)(x + 1) + y^2; HA, parts from 2^31 and 1 + iy, y < 2^-60,
//           in double by the EP grade
// Bounds    in ulp of the modulus: HA 3.8, which in double is LA; LA 8; EP 2^-26, 2^-11
// Budget    LA double in units of rounding: S, H 1 1/2 each, w or cos u 2 1/2, a cos u 1 1/2 more, angle 2; logarithm 2 1/2
// Special   C Annex G; no status; |z| >= 2^250: the angle of z and log 2|z|; next to +-1 on the axis, where the square of
//           the other part y would underflow: both distances sqrt y
// Source    T. E. Hull, T. F. Fairgrieve, P. T. P. Tang, Implementing the complex arcsine and arccosine functions using
//           exception handling, ACM TOMS 23 (1997), 299-335, for where the difficulties are
#include "vector_math/kernels.h"
#include "vector_math/kernels/complex_in_floats.h"
#include "vector_math/kernels/modulus_log.h"
#include "vector_math/kernels/point_angle.h"

namespace orin::vector_math {
namespace {

using namespace simd;

template <class T>
struct Constants {
  Constant<T> zero = 0, one = 1, two = 2, half = T(0.5), minus_zero = -T(0);
};
template <class V>
constexpr Constants<typename V::Element> constants{};

// e^v - 1, and the side of the triangle with the angle u beside x.
template <class V>
struct Quadrant {
  V growth, other;
};
// From a, w, cos u.
template <class V>
ORIN_INLINE Quadrant<V> quadrant_of(V a, V w, V cosine) {
  const auto& c = in_memory(constants<V>);
  const V bend = w * w * (c.one / (c.one + a));  // cosh v - 1
  return {w + bend, cosine + cosine * bend};
}

template <Grade grade, class T>
ORIN_INLINE Quadrant<Vec2d> in_quadrant(Vec2d x, Vec2d y) {
  const auto& c = in_memory(constants<Vec2d>);
  // Of floats the squares are exact.
  const DoubleDouble square = sizeof(T) == 4 ? DoubleDouble{x * x, y * y} : modulus_squared(x, y);
  const Vec2d excess = square.high - c.one;
  const Vec2d s = excess + square.low;
  const Vec2d twice_y = y + y;
  const Vec2d h = sqrt(s * s + twice_y * twice_y);
  const Vec2d root = sqrt((abs(s) + h) * c.half);
  const Vec2d a = sqrt(((s + c.two) + h) * c.half);
  const Vec2d quotient = y / root;
  const Vec2d outside = s >= c.zero;
  return quadrant_of(a, select(outside, root, quotient), select(outside, quotient, root));
}
// The same in floats, with S/2 and H/2.
template <Grade, class>
ORIN_INLINE Quadrant<Vec4f> in_quadrant(Vec4f x, Vec4f y) {
  const auto& c = in_memory(constants<Vec4f>);
  const Vec4f y2 = y * y;
  const Vec4f s = ((x - c.one) * (x + c.one) + y2) * c.half;
  const Vec4f h = sqrt(s * s + y2);
  const Vec4f root = sqrt(abs(s) + h);
  const Vec4f a = sqrt((s + c.one) + h);
  const Vec4f quotient = y / root;
  const Vec4f outside = s >= c.zero;
  return quadrant_of(a, select(outside, root, quotient), select(outside, quotient, root));
}

template <Grade grade>
ORIN_INLINE Vec2d logarithm_of_growth(Vec2d growth) {
  const OnePlus<Vec2d> u = one_plus(growth);
  return logarithm<grade>(u.sum, u.rest);
}
template <Grade grade>
ORIN_INLINE Vec4f logarithm_of_growth(Vec4f growth) {
  return fraction_of_logarithm_of_one_plus<grade, 1>(growth);
}

// sqrt(2 (1 - z)) for z = 1 + iy so near that y^2 underflows: the distance from there of both parts.
inline double from_branch_point(double y) { return first_lane(sqrt(Vec2d(y))); }
inline bool is_branch_point(double x, double y) { return x == 1 && y < 0x1p-400; }

// What the second half needs of the first.
template <class V>
struct HalfOfArcSine {
  Quadrant<V> at;
  Complex<V> z;
};

// asin z, and turned asinh z: with the parts of argument and result exchanged.
template <bool turned_>
struct ArcSine {
  static constexpr bool turned = turned_;
  static constexpr const char* name_c = turned ? "vcAsinh" : "vcAsin";
  static constexpr const char* name_z = turned ? "vzAsinh" : "vzAsin";
  template <class Z>
  static ORIN_INLINE Z turn(Z z) {
    if constexpr (turned) return {z.im, z.re};
    return z;
  }
  template <Grade grade, class V>
  static ORIN_INLINE Complex<V> second_half(const HalfOfArcSine<V>& half) {
    const Complex<V> z = turn(half.z);
    const V angle = PointAngle<typename V::Element, grade>::medium_in_quadrant(abs(z.re), half.at.other);
    return turn(Complex<V>{with_sign_of(angle, z.re), with_sign_of(logarithm_of_growth<grade>(half.at.growth), z.im)});
  }
  template <Grade grade>
  static ORIN_INLINE KorComplex16 special(KorComplex16 given) {
    const KorComplex16 z = turn(given);
    const KorComplex16 value = in_quadrant<grade>(std::fabs(z.re), std::fabs(z.im));
    return turn(KorComplex16{std::copysign(value.re, z.re), std::copysign(value.im, z.im)});
  }

 private:
  template <Grade grade>
  static ORIN_INLINE KorComplex16 in_quadrant(double x, double y) {
    if (is_branch_point(x, y)) return {half_pi<double> - from_branch_point(y), from_branch_point(y)};
    if (is_nan(x)) return {not_a_number, is_infinite(y) ? infinite : not_a_number};
    if (is_nan(y)) return {x == 0 ? 0.0 : not_a_number, is_infinite(x) ? infinite : not_a_number};
    const double angle = PointAngle<double, grade>::special(x, y);
    if (is_infinite(x) || is_infinite(y)) return {angle, infinite};
    return {angle, far_modulus_log<grade, 1>(x, y)};
  }
};

// acos z = angle - i v, and acosh z = v + i angle, where Im z is not negative; conjugate below.
template <bool hyperbolic>
struct ArcCosine {
  static constexpr bool turned = false;
  static constexpr const char* name_c = hyperbolic ? "vcAcosh" : "vcAcos";
  static constexpr const char* name_z = hyperbolic ? "vzAcosh" : "vzAcos";
  template <Grade grade, class V>
  static ORIN_INLINE Complex<V> second_half(const HalfOfArcSine<V>& half) {
    const auto& c = in_memory(constants<V>);
    const V angle = PointAngle<typename V::Element, grade>::in_half_plane(half.at.other, half.z.re);
    const V v = logarithm_of_growth<grade>(half.at.growth);
    if constexpr (hyperbolic) return {v, with_sign_of(angle, half.z.im)};
    return {angle, with_sign_of(v, half.z.im ^ c.minus_zero)};
  }
  template <Grade grade>
  static ORIN_INLINE KorComplex16 special(KorComplex16 z) {
    const KorComplex16 value = in_half_plane<grade>(z.re, std::fabs(z.im));
    if constexpr (hyperbolic) return {value.im, std::copysign(value.re, z.im)};
    return {value.re, std::copysign(value.im, -z.im)};
  }

 private:
  // The angle and v.
  template <Grade grade>
  static ORIN_INLINE KorComplex16 in_half_plane(double x, double y) {
    if (is_branch_point(std::fabs(x), y)) {
      const double root = from_branch_point(y);
      return {x < 0 ? pi<double> - root : root, root};
    }
    if (is_nan(x)) return {not_a_number, is_infinite(y) ? infinite : not_a_number};
    if (is_nan(y)) return {x == 0 ? half_pi<double> : not_a_number, is_infinite(x) ? infinite : not_a_number};
    const double angle = PointAngle<double, grade>::special(y, x);
    if (is_infinite(x) || is_infinite(y)) return {angle, infinite};
    return {angle, far_modulus_log<grade, 1>(x, y)};
  }
};

template <class F>
struct InverseSine : F {
  static constexpr double ordinary = 0.5;
  template <class V>
  using Half = HalfOfArcSine<V>;

  template <class Z>
  static ORIN_INLINE Z branching(Z z) {
    if constexpr (F::turned) return {z.im, z.re};
    return z;
  }
  template <class T>
  static ORIN_INLINE Vec4i special_lanes(Vec4i larger, Complex<Vec4i> z) {
    // Next to a branch point the squares of the other part may underflow.
    constexpr std::int32_t to_one = 0x3ff00000;  // to 1 + 2^-20
    if constexpr (sizeof(T) == 8)
      return outside_or_polar<0x4f8fffff, to_one, 0x26f00000>(larger, branching(z));  // 2^250; 2^-400
    else
      return outside_or_polar<0x47efffff, to_one, 1>(larger, branching(z));  // finite; 0
  }
  static ORIN_INLINE Vec4i special_floats(Vec4i larger, Complex<Vec4i> z) {
    // Subnormal numbers may count as 0.
    return outside_or_polar<0x7f7fffff, 0x3f800000, 0x00800000>(larger, branching(z));
  }
  static ORIN_INLINE Vec4i beyond_floats(Vec4i larger, Complex<Vec4i> z) {
    return outside_or_polar<0x4effffff, 0x3f800000, 0x21800000>(larger, branching(z));  // 2^31; 2^-60
  }
  template <Grade grade, class T, class V>
  static ORIN_INLINE Half<V> first_half(Complex<V> z) {
    const Complex<V> at = branching(Complex<V>{abs(z.re), abs(z.im)});
    return {in_quadrant<grade, T>(at.re, at.im), z};
  }
  template <Grade grade, class T>
  static Outcome<KorComplex16> special(KorComplex16 z) {
    const double x = std::fabs(F::turned ? z.im : z.re), y = std::fabs(F::turned ? z.re : z.im);
    if (is_branch_point(x, y) || !(x < 0x1p250 && y < 0x1p250)) return {{F::template special<grade>(z)}, KOR_STATUS_OK};
    const ComplexD value = F::template second_half<grade>(first_half<grade, T>(ComplexD{z.re, z.im}));
    return {{{first_lane(value.re), first_lane(value.im)}}, KOR_STATUS_OK};
  }
};

}  // namespace

ORIN_COMPLEX_IN_FLOATS_WITHOUT_HA(asin, InverseSine<ArcSine<false>>)
ORIN_COMPLEX_IN_FLOATS_WITHOUT_HA(asinh, InverseSine<ArcSine<true>>)
ORIN_COMPLEX_IN_FLOATS_WITHOUT_HA(acos, InverseSine<ArcCosine<false>>)
ORIN_COMPLEX_IN_FLOATS_WITHOUT_HA(acosh, InverseSine<ArcCosine<true>>)

}  // namespace orin::vector_math
