// complex_sqrt: elementwise square root of complex numbers, both precisions, the one with a positive real part.
// SPDX-License-Identifier: MIT
//
// Method    z = x + iy, t = sqrt((|x| + |z|)/2), u = y/(2t): t + iu for x >= 0, |u| + it with the sign of y for x < 0
//           all grades in their own precision, but in double where squares of floats leave the range
// Bounds    2.5 ulp of the modulus
// Budget    in units of rounding: |z| 2.5, its sum 1, halved by the root 1.75, root 1, quotient and its t 2.75 and 1
// Special   C Annex G: +-0 +- i0 -> +0 +- i0; an infinite y -> +inf + iy; x = -inf -> 0 +- i inf, x = +inf -> +inf +- i0
//           (NaN for the part that y = NaN leaves open); NaN -> NaN. No statuses. Parts beyond the range of their squares
//           are scaled
#include <cmath>
#include <limits>

#include "vector_math/kernels.h"
#include "vector_math/kernels/complex_products.h"
#include "vector_math/kernels/hypot_core.h"
#include "vector_math/kernels/log_base.h"

namespace orin::vector_math {
namespace {

template <class V>
ORIN_INLINE Complex<V> root(Complex<V> z) {
  using T = typename V::Element;
  static constexpr struct { Constant<T> half = T(0.5), zero = 0; } constants{};
  const auto& c = in_memory(constants);
  const V t = sqrt((abs(z.re) + plain_length(z.re, z.im)) * c.half);
  const V u = z.im / (t + t);
  const V negative = z.re < c.zero;
  return {select(negative, abs(u), t), select(negative, with_sign_of(t, z.im), u)};
}

template <class T>
struct ComplexSqrt : OneToOne<ComplexOf<T>> {
  using Z = ComplexOf<T>;
  using V = typename RegisterOf<T>::type;
  static constexpr const char* name = sizeof(T) == 8 ? "vzSqrt" : "vcSqrt";
  static constexpr Z ordinary{1, 0};
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i special_lanes(Complex<Vec4i> w) {
    if constexpr (sizeof(T) == 8)
      return Length<T, false>::special_lanes(w.re, w.im);
    else
      return outside<0x00800000, 0x7f7fffff>(larger_magnitude(w));  // normal numbers: others may count as 0
  }
  static ORIN_INLINE Complex<V> fast(Complex<V> z) { return root(z); }
  static Outcome<Z> special(Z z) {
    constexpr T infinity = std::numeric_limits<T>::infinity(), nan = std::numeric_limits<T>::quiet_NaN();
    if (std::fabs(z.im) == infinity) return {{{infinity, z.im}}, KOR_STATUS_OK};
    if (std::fabs(z.re) == infinity) {
      const T rest = z.im != z.im ? nan : T(0);
      if (z.re > 0) return {{{infinity, rest != rest ? nan : std::copysign(rest, z.im)}}, KOR_STATUS_OK};
      return {{{rest, rest != rest ? infinity : std::copysign(infinity, z.im)}}, KOR_STATUS_OK};
    }
    if (is_nan(z)) return {{{nan, nan}}, KOR_STATUS_OK};
    if (z.re == 0 && z.im == 0) return {{{0, z.im + z.im}}, KOR_STATUS_OK};  // 0, also where subnormal numbers are
    if constexpr (sizeof(T) == 4) {
      const auto wide = root<Vec2d>({Vec2d(static_cast<double>(z.re)), Vec2d(static_cast<double>(z.im))});
      return {{{static_cast<T>(first_lane(wide.re)), static_cast<T>(first_lane(wide.im))}}, KOR_STATUS_OK};
    } else {
      const bool small = std::fabs(z.re) < 1 && std::fabs(z.im) < 1;
      const double up = small ? 0x1p700 : 0x1p-514, down = small ? 0x1p-350 : 0x1p257;
      const auto scaled = root<Vec2d>({z.re * up, z.im * up});
      return {{{first_lane(scaled.re) * down, first_lane(scaled.im) * down}}, KOR_STATUS_OK};
    }
  }
};

struct ComplexSqrtSingle : ComplexSqrt<float> {
  static ORIN_INLINE Vec4i beyond_fast(Complex<Vec4i> w) { return Length<float, false>::special_lanes(w.re, w.im); }
  static ORIN_INLINE Complex<Vec4f> wide(Complex<Vec4f> z) {
    static constexpr Constant<float> one = 1;
    const Vec4f far = from_bits(beyond_fast({bits(z.re), bits(z.im)}));
    const TwoVec2d x = widen(z.re), y = widen(z.im);
    const Complex<Vec2d> low = root<Vec2d>({x.low, y.low}), high = root<Vec2d>({x.high, y.high});
    const Complex<Vec4f> usual = root<Vec4f>({select(far, in_memory(one), z.re), and_not(far, z.im)});
    return {select(far, narrow({low.re, high.re}), usual.re), select(far, narrow({low.im, high.im}), usual.im)};
  }
};

}  // namespace

#define ORIN_COMPLEX_SQRT(name, Z, F) \
  void ORIN_CALL name(std::int32_t n, const Z* a, Z* r) { elementwise<F>({}, n, {a}, {r}); }
ORIN_COMPLEX_SQRT(sqrt_c, KorComplex8, ComplexSqrtSingle)
ORIN_COMPLEX_SQRT(sqrt_z, KorComplex16, ComplexSqrt<double>)
#undef ORIN_COMPLEX_SQRT

}  // namespace orin::vector_math
