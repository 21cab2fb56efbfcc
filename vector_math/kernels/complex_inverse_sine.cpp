// complex_inverse_sine: elementwise asin z, acos z, asinh z and acosh z, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    in the first quadrant x + iy = sin(u + iv): sinh^2 v and -cos^2 u are the roots of t^2 - S t - y^2 = 0,
//           S = x^2 + y^2 - 1, so with H = sqrt(S^2 + 4 y^2) the root of (|S| + H)/2 is sinh v outside the unit circle
//           and cos u inside it, and the other of these is y over it; then
//           v = log(1 + w + w^2/(1 + a)), w = sinh v, a = cosh v;  u = atan2(x, a cos u), pi/2 - u = atan2(a cos u, x)
//           No difference cancels but S, and that only where y outweighs it.
//           asinh z = -i asin(iz), acosh z = +-i acos z; HA takes S, the roots and the quotient as pairs;
//           single precision in double by the EP grade
// Bounds    in ulp of the modulus: HA 1, LA 8; EP 2^-26, 2^-11
// Special   C Annex G; no status; |z| >= 2^250: the angle of z and log 2|z|
// Source    T. E. Hull, T. F. Fairgrieve, P. T. P. Tang, Implementing the complex arcsine and arccosine functions using
//           exception handling, ACM TOMS 23 (1997), 299-335, for where the difficulties are
#include "vector_math/kernels.h"
#include "vector_math/kernels/complex_in_double.h"
#include "vector_math/kernels/modulus_log.h"
#include "vector_math/kernels/point_angle.h"

namespace orin::vector_math {
namespace {

using namespace simd;

constexpr struct {
  Constant<double> zero = 0.0, one = 1.0, half = 0.5, minus_zero = -0.0;
  Constant<double> negligible = 0x1p-30;    // S below it times y does not show in H
  Constant<double> tiny = 0x1p-1000;        // keeps 0/0 away
  Constant<double> no_rest = 0x1p-900;      // rests of squares below it would be lost
  Constant<double> linear_below = 0x1p-28;  // asinh w = w (1 - 2^-58)
} constants{};

// v, and the angle u in the triangle with the sides x and `other`, or what it still lacks beyond rounded sides.
struct Quadrant {
  Vec2d v, other, lacks;
};

// H, where S and y are known.
ORIN_INLINE Vec2d distance(const auto& c, Vec2d s, Vec2d y) {
  const Vec2d twice_y = y + y;
  return select(abs(s) < y * c.negligible, twice_y, sqrt(s * s + twice_y * twice_y));
}

ORIN_INLINE Quadrant accurate_quadrant(Vec2d x, Vec2d y) {
  const auto& c = in_memory(constants);
  // S as a pair, the square next to 1 first.
  const DoubleDouble x2 = two_square(x), y2 = two_square(y);
  const Vec2d x_larger = x > y;
  const DoubleDouble first = two_sum(select(x_larger, x2.high, y2.high), Vec2d(c.zero) - c.one);
  const DoubleDouble second = two_sum(first.high, select(x_larger, y2.high, x2.high));
  const DoubleDouble s = fast_two_sum(second.high, (first.low + second.low) + (x2.low + y2.low));
  const Vec2d outside = s.high >= c.zero;
  const Vec2d turned = s.high & c.minus_zero;
  const Vec2d size = abs(s.high), size_low = s.low ^ turned;
  // t = (|S| + H)/2 and, by one Newton step for t (t - |S|) = y^2, its rest.
  const Vec2d h = distance(c, s.high, y);
  const Vec2d t = (size + h) * c.half;
  const DoubleDouble difference = two_sum(t, size ^ c.minus_zero);
  const DoubleDouble product = two_product(t, difference.high);
  const Vec2d residue = (((y2.high - product.high) - product.low) + y2.low) - t * (difference.low - size_low);
  const Vec2d t_low = residue / max(h, c.tiny);
  // Its root, and y over that.
  const Vec2d root = sqrt(t);
  const Vec2d inverse = c.one / max(root, c.tiny);
  const DoubleDouble square = two_square(root);
  const Vec2d lost = t < c.no_rest;
  const Vec2d root_low = and_not(lost, (((t - square.high) - square.low) + t_low) * (inverse * c.half));
  const Vec2d quotient = y * inverse;
  const DoubleDouble back = two_product(quotient, root);
  const Vec2d quotient_low = and_not(lost, (((y - back.high) - back.low) - quotient * root_low) * inverse);
  const DoubleDouble w{select(outside, root, quotient), select(outside, root_low, quotient_low)};
  const DoubleDouble cosine{select(outside, quotient, root), select(outside, quotient_low, root_low)};
  // a = sqrt(1 + w^2)
  const DoubleDouble w2 = two_square(w.high);
  const DoubleDouble a2 = two_sum(w2.high, c.one);
  const Vec2d a = sqrt(a2.high);
  const Vec2d inverse_a = c.one / a;
  const DoubleDouble a_square = two_square(a);
  const Vec2d a_low = (((a2.high - a_square.high) - a_square.low) + (a2.low + (w2.low + (w.high + w.high) * w.low))) *
                      (inverse_a * c.half);
  const DoubleDouble sum = fast_two_sum(a, w.high);
  const Vec2d v = logarithm<Grade::ha>(sum.high, sum.low + (a_low + w.low));
  const DoubleDouble other = two_product(cosine.high, a);
  const Vec2d other_low = other.low + (cosine.high * a_low + cosine.low * a);
  return {select(w.high < c.linear_below, w.high + w.low, v), other.high, other_low * inverse_a * (x * inverse_a)};
}

template <Grade grade>
ORIN_INLINE Quadrant in_quadrant(Vec2d x, Vec2d y) {
  if constexpr (grade == Grade::ha) return accurate_quadrant(x, y);
  const auto& c = in_memory(constants);
  const Vec2d larger = max(x, y), smaller = min(x, y);
  const Vec2d s = (larger - c.one) * (larger + c.one) + smaller * smaller;
  const Vec2d root = sqrt((abs(s) + distance(c, s, y)) * c.half);
  const Vec2d quotient = y / max(root, c.tiny);
  const Vec2d outside = s >= c.zero;
  const Vec2d w = select(outside, root, quotient);
  const Vec2d cosine = select(outside, quotient, root);
  const Vec2d w2 = w * w;
  const Vec2d a = sqrt(c.one + w2);
  const OnePlus<Vec2d> u = one_plus(w + w2 / (c.one + a));
  return {logarithm<grade>(u.sum, u.rest), cosine * a, c.zero};
}

template <class T>
ORIN_INLINE Vec4i special_lanes_of(Vec4i larger) {
  static constexpr Constant<std::int32_t> largest = sizeof(T) == 8 ? 0x4f8fffff : 0x7f7fffff;  // 2^250
  return larger > in_memory(largest);
}

// asin z for z in the first quadrant.
struct Sine {
  template <Grade grade>
  static ORIN_INLINE ComplexD of(Vec2d x, Vec2d y) {
    const Quadrant at = in_quadrant<grade>(x, y);
    const Angle<Vec2d> angle = atan_core::angle<grade>(x, at.other);
    return {angle.high + (angle.low - at.lacks), at.v};
  }
  template <Grade grade>
  static ORIN_INLINE KorComplex16 special(double x, double y) {
    if (is_nan(x)) return {not_a_number, is_infinite(y) ? infinite : not_a_number};
    if (is_nan(y)) return {x == 0 ? 0.0 : not_a_number, is_infinite(x) ? infinite : not_a_number};
    const double angle = PointAngle<double, grade>::special(x, y);
    if (is_infinite(x) || is_infinite(y)) return {angle, infinite};
    return {angle, far_modulus_log<grade, 1>(x, y)};
  }
};
// acos z for z in the upper half plane, the sign of the imaginary part turned.
struct Cosine {
  template <Grade grade>
  static ORIN_INLINE ComplexD of(Vec2d x, Vec2d y) {
    const Quadrant at = in_quadrant<grade>(abs(x), y);
    Angle<Vec2d> angle = atan_core::angle<grade>(at.other, abs(x));
    angle.low = angle.low + at.lacks;
    return {on_side<grade>(angle, x < in_memory(constants).zero), at.v};
  }
  template <Grade grade>
  static ORIN_INLINE KorComplex16 special(double x, double y) {
    if (is_nan(x)) return {not_a_number, is_infinite(y) ? infinite : not_a_number};
    if (is_nan(y)) return {x == 0 ? half_pi<double> : not_a_number, is_infinite(x) ? infinite : not_a_number};
    const double angle = PointAngle<double, grade>::special(y, x);
    if (is_infinite(x) || is_infinite(y)) return {angle, infinite};
    return {angle, far_modulus_log<grade, 1>(x, y)};
  }
};

struct ComplexAsin {
  static constexpr const char* name_c = "vcAsin";
  static constexpr const char* name_z = "vzAsin";
  template <Grade grade>
  static ORIN_INLINE ComplexD of(ComplexD z) {
    const ComplexD value = Sine::of<grade>(abs(z.re), abs(z.im));
    return {with_sign_of(value.re, z.re), with_sign_of(value.im, z.im)};
  }
  template <Grade grade>
  static ORIN_INLINE KorComplex16 outside(KorComplex16 z) {
    const KorComplex16 value = Sine::special<grade>(std::fabs(z.re), std::fabs(z.im));
    return {std::copysign(value.re, z.re), std::copysign(value.im, z.im)};
  }
};

struct ComplexAsinh {
  static constexpr const char* name_c = "vcAsinh";
  static constexpr const char* name_z = "vzAsinh";
  template <Grade grade>
  static ORIN_INLINE ComplexD of(ComplexD z) {
    const ComplexD value = Sine::of<grade>(abs(z.im), abs(z.re));
    return {with_sign_of(value.im, z.re), with_sign_of(value.re, z.im)};
  }
  template <Grade grade>
  static ORIN_INLINE KorComplex16 outside(KorComplex16 z) {
    const KorComplex16 value = Sine::special<grade>(std::fabs(z.im), std::fabs(z.re));
    return {std::copysign(value.im, z.re), std::copysign(value.re, z.im)};
  }
};

struct ComplexAcos {
  static constexpr const char* name_c = "vcAcos";
  static constexpr const char* name_z = "vzAcos";
  template <Grade grade>
  static ORIN_INLINE ComplexD of(ComplexD z) {
    static constexpr Constant<double> minus_zero = -0.0;
    const ComplexD value = Cosine::of<grade>(z.re, abs(z.im));
    return {value.re, with_sign_of(value.im, z.im ^ in_memory(minus_zero))};
  }
  template <Grade grade>
  static ORIN_INLINE KorComplex16 outside(KorComplex16 z) {
    const KorComplex16 value = Cosine::special<grade>(z.re, std::fabs(z.im));
    return {value.re, std::copysign(value.im, -z.im)};
  }
};

struct ComplexAcosh {
  static constexpr const char* name_c = "vcAcosh";
  static constexpr const char* name_z = "vzAcosh";
  template <Grade grade>
  static ORIN_INLINE ComplexD of(ComplexD z) {
    const ComplexD value = Cosine::of<grade>(z.re, abs(z.im));
    return {value.im, with_sign_of(value.re, z.im)};
  }
  template <Grade grade>
  static ORIN_INLINE KorComplex16 outside(KorComplex16 z) {
    const KorComplex16 value = Cosine::special<grade>(z.re, std::fabs(z.im));
    return {value.im, std::copysign(value.re, z.im)};
  }
};

template <class F>
struct InverseSine : F {
  static constexpr double ordinary = 0.5;

  template <class T>
  static ORIN_INLINE Vec4i special_lanes(Vec4i larger, Complex<Vec4i>) {
    return special_lanes_of<T>(larger);
  }
  template <Grade grade>
  static Outcome<KorComplex16> special(KorComplex16 z) {
    return {{F::template outside<grade>(z)}, KOR_STATUS_OK};
  }
};

}  // namespace

ORIN_COMPLEX_IN_DOUBLE(asin, InverseSine<ComplexAsin>)
ORIN_COMPLEX_IN_DOUBLE(acos, InverseSine<ComplexAcos>)
ORIN_COMPLEX_IN_DOUBLE(asinh, InverseSine<ComplexAsinh>)
ORIN_COMPLEX_IN_DOUBLE(acosh, InverseSine<ComplexAcosh>)

}  // namespace orin::vector_math
