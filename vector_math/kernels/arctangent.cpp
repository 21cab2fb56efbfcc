// arctangent: elementwise atan x and the angle of a point, atan2(y, x) and arg(x + iy), both precisions.
// SPDX-License-Identifier: MIT
//
// Method    atan_core.h for |x|, point_angle.h for points
// Bounds    HA 0.56 ulp, arg of double 2.6; LA relative 2^-50, 2^-21, EP relative 2^-26, 2^-11
// Special   no status. NaN -> NaN; atan of very large arguments +-pi/2; points as point_angle.h says
#include <cmath>
#include <limits>

#include "vector_math/kernels.h"
#include "vector_math/kernels/atan_core.h"
#include "vector_math/kernels/log_base.h"
#include "vector_math/kernels/point_angle.h"
#include "vector_math/simd/complex.h"

namespace orin::vector_math {
namespace {

using namespace simd;

template <class T, Grade grade>
struct Atan : OneToOne<T> {
  using V = typename RegisterOf<T>::type;
  static constexpr const char* name = sizeof(T) == 8 ? "vdAtan" : "vsAtan";
  static constexpr T ordinary = 1;
  static constexpr T largest = sizeof(T) == 8 ? T(0x1p100) : T(0x1p50);  // from here on the angle is pi/2

  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    static constexpr Constant<std::int32_t> largest_word = sizeof(T) == 8 ? 0x463fffff : 0x587fffff;
    return magnitude(words) > in_memory(largest_word);
  }
  static ORIN_INLINE V fast(V x) {
    const Angle<V> angle = atan_core::arctangent<grade>(abs(x));
    return with_sign_of(angle.high + angle.low, x);
  }
  static Outcome<T> special(T x) {
    if (x != x) return {{x + x}, KOR_STATUS_OK};
    return {{first_lane(fast(V(std::copysign(largest, x))))}, KOR_STATUS_OK};
  }
};

template <class T, Grade grade>
struct Atan2 : TwoToOne<T> {
  using Angle = PointAngle<T, grade>;
  using V = typename Angle::V;
  static constexpr const char* name = sizeof(T) == 8 ? "vdAtan2" : "vsAtan2";
  static constexpr T ordinary = 1;
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i special_lanes(Vec4i y, Vec4i x) { return Angle::special_lanes(y, x); }
  static ORIN_INLINE V fast(V y, V x) { return Angle::fast(y, x); }
  static Outcome<T> special(T y, T x) { return {{Angle::special(y, x)}, KOR_STATUS_OK}; }
};

template <class T, Grade grade>
struct Arg : OneToOther<ComplexOf<T>, T> {
  using Angle = PointAngle<T, grade>;
  using V = typename Angle::V;
  static constexpr const char* name = sizeof(T) == 8 ? "vzArg" : "vcArg";
  static constexpr ComplexOf<T> ordinary{1, 1};
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i special_lanes(Complex<Vec4i> z) { return Angle::special_lanes(z.im, z.re); }
  static ORIN_INLINE V fast(Complex<V> z) { return Angle::medium(z.im, z.re); }
  static Outcome<T> special(ComplexOf<T> z) { return {{Angle::special(z.im, z.re)}, KOR_STATUS_OK}; }
};

}  // namespace

#define ORIN_ARCTANGENT(T, t, Z, z, grade)                                           \
  void ORIN_CALL atan_##t##_##grade(std::int32_t n, const T* a, T* r) {              \
    elementwise<Atan<T, Grade::grade>>({}, n, {a}, {r});                             \
  }                                                                                  \
  void ORIN_CALL atan2_##t##_##grade(std::int32_t n, const T* a, const T* b, T* r) { \
    elementwise<Atan2<T, Grade::grade>>({}, n, {a, b}, {r});                         \
  }                                                                                  \
  void ORIN_CALL arg_##z##_##grade(std::int32_t n, const Z* a, T* r) {               \
    elementwise<Arg<T, Grade::grade>>({}, n, {a}, {r});                              \
  }
ORIN_ARCTANGENT(float, s, KorComplex8, c, la)
ORIN_ARCTANGENT(float, s, KorComplex8, c, ha)
ORIN_ARCTANGENT(float, s, KorComplex8, c, ep)
ORIN_ARCTANGENT(double, d, KorComplex16, z, la)
ORIN_ARCTANGENT(double, d, KorComplex16, z, ha)
ORIN_ARCTANGENT(double, d, KorComplex16, z, ep)
#undef ORIN_ARCTANGENT

}  // namespace orin::vector_math
