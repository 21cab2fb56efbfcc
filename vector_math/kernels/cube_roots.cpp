// cube_roots: elementwise x^(1/3), x^(-1/3) and x^(2/3), both precisions.
// SPDX-License-Identifier: MIT
//
// Method    y near x^(-1/3) of x = |x|; e = 1 - x y^3. Then x^(-1/3) = y (1 - e)^(-1/3), x^(2/3) = x y (1 - e)^(-1/3),
//           x^(1/3) = x y^2 (1 - e)^(-2/3), the powers of 1 - e as polynomials. No root, no division.
//           EP single  y is the seed;  else y is seed times polynomial, |e| < 2^-12.6, and so many terms:
//           LA double 3, LA single 1
//           EP double  the bits of the seed, corrected by a table: y near s x^(-1/3), and z = x y^3 leads to the powers by
//           z^2 + c z + c';  HA single is the same with a cubic, rounded
//           HA double  h = x^(1/3) cut to 26 bits: h^2, and x - h^3 in two products, are exact; x^(1/3) = h + d + d^2/h,
//           d = (x - h^3) x^(-2/3)/3.  x^(-1/3): y cut to 26 bits and e exactly, by splitting its factors
// Bounds    HA 0.51 ulp double and single; LA relative 2^-50, 2^-21; EP relative 2^-26, 2^-11
// Budget    HA  in ulp: d 2^-10, last rounding 1/2;  LA double  relative: series 2^-52, roundings 2^-51.5
// Special   NaN -> NaN; x^(1/3) +-0 -> +-0, +-inf -> +-inf; x^(-1/3) +-0 -> +-inf, status 2, +-inf -> +-0;
//           x^(2/3) +-0 -> 0, +-inf -> inf; very small (x^(-1/3): and large) arguments scaled by a cube
// Data      data/roots_data.h from tools/tables/roots.py
#include <cmath>
#include <limits>
#include <type_traits>

#include "vector_math/kernels.h"
#include "vector_math/kernels/double_double.h"
#include "vector_math/kernels/log_base.h"
#include "vector_math/kernels/root_seeds.h"
#include "vector_math/simd/elementwise.h"
#include "vector_math/simd/table.h"

namespace orin::vector_math {
namespace {

using namespace simd;

enum class Power { third, inverse_third, two_thirds };

template <class T>
struct Constants {
  Constant<T> one = 1;
  Constant<T> p0 = T(roots_data::cube_1_0), p1 = T(roots_data::cube_1_1), p2 = T(roots_data::cube_1_2);
  Constant<T> q0 = T(roots_data::cube_2_0), q1 = T(roots_data::cube_2_1), q2 = T(roots_data::cube_2_2);
  // (1 - e)^(-1/3) = 1 + e/3 + 2/9 e^2 + 14/81 e^3 ..., (1 - e)^(-2/3) = 1 + 2/3 e + 5/9 e^2 + 40/81 e^3 ...
  Constant<T> third = T(1.0 / 3), a2 = T(2.0 / 9), a3 = T(14.0 / 81);
  Constant<T> two_thirds = T(2.0 / 3), b2 = T(5.0 / 9), b3 = T(40.0 / 81);
};
template <class T>
constexpr Constants<T> constants{};

template <class V>
ORIN_INLINE const auto& constants_of() {
  return in_memory(constants<typename V::Element>);
}

// y near x^(-1/3), z = x y^2, e = 1 - x y^3.
template <class V>
struct Approximation {
  V y, z, e;

  ORIN_INLINE Approximation(V x, V y_) : y(y_), z((x * y_) * y_), e(constants_of<V>().one - z * y_) {}
};
template <class V>
ORIN_INLINE V inverse_third_of(const Approximation<V>& s) {  // (1 - e)^(-1/3) from the seed
  const auto& c = constants_of<V>();
  return c.p0 + s.e * (c.p1 + s.e * c.p2);
}
template <class V>
ORIN_INLINE Approximation<V> refined(V x) {
  const Approximation<V> seed(x, root_seeds::inverse_cube_root(x));
  return {x, seed.y * inverse_third_of(seed)};
}

// The power of x by `terms` terms; 0: from the seed.
template <Power power, int terms, class V>
ORIN_INLINE V series(V x) {
  const auto& c = constants_of<V>();
  constexpr bool root = power == Power::third;
  if constexpr (terms == 0) {
    const Approximation<V> s(x, root_seeds::inverse_cube_root(x));
    if constexpr (root) return s.z * (c.q0 + s.e * (c.q1 + s.e * c.q2));
    const V first = power == Power::inverse_third ? s.y : x * s.y;
    return first * inverse_third_of(s);
  } else {
    const Approximation<V> s = refined(x);
    const V first = root ? s.z : power == Power::inverse_third ? s.y : x * s.y;
    V p = root ? c.two_thirds : c.third;
    if constexpr (terms == 3) p = p + s.e * (V(root ? c.b2 : c.a2) + s.e * V(root ? c.b3 : c.a3));
    return first + (first * s.e) * p;
  }
}

struct InverseThird {
  static constexpr const long long* corrections = roots_data::cube_corrections_1;
  Constant<double> p0 = roots_data::enhanced_1_0, p1 = roots_data::enhanced_1_1;
  Constant<double> f0 = roots_data::fine_1_0, f1 = roots_data::fine_1_1, f2 = roots_data::fine_1_2,
                   f3 = roots_data::fine_1_3;
};
struct Third {
  static constexpr const long long* corrections = roots_data::cube_corrections_2;
  Constant<double> p0 = roots_data::enhanced_2_0, p1 = roots_data::enhanced_2_1;
  Constant<double> f0 = roots_data::fine_2_0, f1 = roots_data::fine_2_1, f2 = roots_data::fine_2_2,
                   f3 = roots_data::fine_2_3;
};
template <Power power>
using Enhanced = std::conditional_t<power == Power::third, Third, InverseThird>;
template <Power power>
constexpr Enhanced<power> enhanced_constants{};

// To the bound of EP, or fine enough for the rounding to single precision.
template <Power power, bool fine>
ORIN_INLINE Vec2d enhanced(Vec2d x) {
  const auto& c = in_memory(enhanced_constants<power>);
  const Vec2l seed = bits(root_seeds::inverse_cube_root(x));
  const Vec2d y = from_bits(seed + look_up(Enhanced<power>::corrections, low_bits<8>(shift_right<44>(seed))));
  const Vec2d product = x * y;
  const Vec2d square = product * y;
  const Vec2d z = square * y;
  const Vec2d first = power == Power::third ? square : power == Power::inverse_third ? y : product;
  if constexpr (fine) return first * ((c.f0 + z * c.f1) + (z * z) * (c.f2 + z * c.f3));
  return first * (c.p0 + z * (c.p1 + z));
}

template <Power power>
ORIN_INLINE Vec2d high_accuracy(Vec2d x) {
  const auto& c = constants_of<Vec2d>();
  const Approximation<Vec2d> s = refined(x);
  if constexpr (power == Power::inverse_third) {
    const Vec2d y = split(s.y).high;
    const DoubleDouble square = split(y * y);
    const DoubleDouble cube = split(square.high * y);  // less square.low y
    const DoubleDouble parts = split(x);
    const Vec2d e =
        ((((c.one - parts.high * cube.high) - parts.high * cube.low) - parts.low * cube.high) - parts.low * cube.low) -
        x * (square.low * y);
    static constexpr Constant<double> a4 = 35.0 / 243;
    return y + (y * e) * (c.third + e * (c.a2 + e * (c.a3 + e * in_memory(a4))));
  } else {
    const Vec2d square = s.y * s.y;
    const Vec2d inverse_square = square + (square * s.e) * (c.two_thirds + s.e * c.b2);  // x^(-2/3)
    const Vec2d h = split(x * inverse_square).high;
    const DoubleDouble h2 = split(h * h);
    const Vec2d d = ((x - h2.high * h) - h2.low * h) * (inverse_square * c.third);
    const Vec2d rest = d + (d * d) * s.y;
    if constexpr (power == Power::third) return h + rest;
    return h * h + ((h + h) * rest + rest * rest);
  }
}

template <Power power, class T, Grade grade>
struct CubeRoot : OneToOne<T> {
  using Limits = std::numeric_limits<T>;
  using V = typename RegisterOf<T>::type;
  static constexpr bool is_double = sizeof(T) == 8;
  static constexpr const char* name = is_double ? (power == Power::third        ? "vdCbrt"
                                                   : power == Power::two_thirds ? "vdPow2o3"
                                                                                : "vdInvCbrt")
                                                : (power == Power::third        ? "vsCbrt"
                                                   : power == Power::two_thirds ? "vsPow2o3"
                                                                                : "vsInvCbrt");
  static constexpr T ordinary = 1;
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    if constexpr (is_double && power == Power::inverse_third)
      return outside<0x03f00000, 0x783fffff>(magnitude(words));  // 2^-960, 2^901
    else if constexpr (is_double)
      return outside<0x03f00000, 0x7fefffff>(magnitude(words));  // 2^-960
    else
      return not_positive_normal<T>(magnitude(words));
  }
  static ORIN_INLINE V positive(V x) {
    if constexpr (is_double) {
      if constexpr (grade == Grade::ha) return high_accuracy<power>(x);
      if constexpr (grade == Grade::ep) return enhanced<power, false>(x);
      return series<power, 3>(x);
    } else {
      if constexpr (grade != Grade::ha) return series < power, grade == Grade::la ? 1 : 0 > (x);
      const TwoVec2d wide = widen(x);
      return narrow({enhanced<power, true>(wide.low), enhanced<power, true>(wide.high)});
    }
  }
  static ORIN_INLINE V fast(V x) {
    const V result = positive(abs(x));
    if constexpr (power == Power::two_thirds) return result;
    return with_sign_of(result, x);
  }

  static Outcome<T> special(T x) {
    if (x != x) return {{x + x}, KOR_STATUS_OK};
    const T y = std::fabs(x);
    const auto signed_as_x = [&](T value) { return power == Power::two_thirds ? value : std::copysign(value, x); };
    if (y == 0 || y > Limits::max()) {
      if constexpr (power != Power::inverse_third)
        return {{signed_as_x(y + y)}, KOR_STATUS_OK};  // 0, also of a y flushed
      if (y != 0) return {{signed_as_x(T(0))}, KOR_STATUS_OK};
      return {{signed_as_x(Limits::infinity())}, KOR_STATUS_SING};
    }
    constexpr T scale = is_double ? T(0x1p200) : T(0x1p16);
    // What y is multiplied by is the cube of `up`.
    const T up = y < 1 ? scale : 1 / scale;
    const T down = power == Power::third ? 1 / up : power == Power::inverse_third ? up : 1 / (up * up);
    return {{signed_as_x(first_lane(positive(V(y * (up * up * up)))) * down)}, KOR_STATUS_OK};
  }
};

}  // namespace

#define ORIN_CUBE_ROOT(name, power, T, grade)                              \
  void ORIN_CALL name##_##grade(std::int32_t n, const T* a, T* r) {        \
    elementwise<CubeRoot<Power::power, T, Grade::grade>>({}, n, {a}, {r}); \
  }
#define ORIN_CUBE_ROOTS(name, power)          \
  ORIN_CUBE_ROOT(name##_s, power, float, la)  \
  ORIN_CUBE_ROOT(name##_s, power, float, ha)  \
  ORIN_CUBE_ROOT(name##_s, power, float, ep)  \
  ORIN_CUBE_ROOT(name##_d, power, double, la) \
  ORIN_CUBE_ROOT(name##_d, power, double, ha) \
  ORIN_CUBE_ROOT(name##_d, power, double, ep)
ORIN_CUBE_ROOTS(cbrt, third)
ORIN_CUBE_ROOTS(inv_cbrt, inverse_third)
ORIN_CUBE_ROOTS(pow2o3, two_thirds)
#undef ORIN_CUBE_ROOTS
#undef ORIN_CUBE_ROOT

}  // namespace orin::vector_math
