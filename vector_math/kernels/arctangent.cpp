// arctangent: elementwise atan x and the angle atan2(y, x) of a point, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    atan_core.h for |x| and for |y|, |x|; atan2 is pi less that angle where x < 0
// Bounds    HA 0.56 ulp, LA relative 2^-50, 2^-21, EP relative 2^-26, 2^-11
// Special   no status. NaN -> NaN; atan of very large arguments +-pi/2; atan2 of zeros, infinities as in C Annex F;
//           points far out or near 0 are scaled, quotients next to 0 rounded once
#include <cmath>
#include <limits>

#include "vector_math/kernels.h"
#include "vector_math/kernels/atan_core.h"
#include "vector_math/kernels/log_base.h"
#include "vector_math/simd/elementwise.h"

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
  using V = typename RegisterOf<T>::type;
  static constexpr const char* name = sizeof(T) == 8 ? "vdAtan2" : "vsAtan2";
  static constexpr T ordinary = 1;
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i special_lanes(Vec4i y, Vec4i x) {
    const Vec4i first = magnitude(y), second = magnitude(x);
    const Vec4i larger = select(first > second, first, second);
    if constexpr (sizeof(T) == 8)
      return outside<0x1d900000, 0x58efffff>(larger);  // 2^-550, 2^400
    else
      return outside<0x1a000000, 0x557fffff>(larger);  // 2^-75, 2^44
  }

  static ORIN_INLINE V fast(V y, V x) {
    static constexpr Constant<T> zero = 0;
    return with_sign_of(on_side<grade>(atan_core::angle<grade>(abs(y), abs(x)), x < in_memory(zero)), y);
  }

  static Outcome<T> special(T y, T x) {
    constexpr T large = sizeof(T) == 8 ? T(0x1p400) : T(0x1p44), scale = sizeof(T) == 8 ? T(0x1p700) : T(0x1p84);
    constexpr T negligible = sizeof(T) == 8 ? T(0x1p-60) : T(0x1p-40);
    if (y != y) return {{y + y}, KOR_STATUS_OK};  // of two, the first one on every target
    if (x != x) return {{x + x}, KOR_STATUS_OK};
    const T size_y = std::fabs(y), size_x = std::fabs(x);
    if (size_y > std::numeric_limits<T>::max() || size_x > std::numeric_limits<T>::max()) {
      y = std::copysign(size_y > std::numeric_limits<T>::max() ? T(1) : T(0), y);
      x = std::copysign(size_x > std::numeric_limits<T>::max() ? T(1) : T(0), x);
    } else if (size_y == 0 && size_x == 0) {
      x = std::copysign(T(1), x);
    } else if (x > 0 && size_y < x * negligible) {
      return {{y / x}, KOR_STATUS_OK};
    } else {
      // What one of the two loses here does not show in the angle.
      const T factor = size_y >= large || size_x >= large ? 1 / scale : scale;
      y *= factor;
      x *= factor;
    }
    return {{first_lane(fast(V(y), V(x)))}, KOR_STATUS_OK};
  }
};

}  // namespace

#define ORIN_ARCTANGENT(T, t, grade)                                                 \
  void ORIN_CALL atan_##t##_##grade(std::int32_t n, const T* a, T* r) {              \
    elementwise<Atan<T, Grade::grade>>({}, n, {a}, {r});                             \
  }                                                                                  \
  void ORIN_CALL atan2_##t##_##grade(std::int32_t n, const T* a, const T* b, T* r) { \
    elementwise<Atan2<T, Grade::grade>>({}, n, {a, b}, {r});                         \
  }
ORIN_ARCTANGENT(float, s, la)
ORIN_ARCTANGENT(float, s, ha)
ORIN_ARCTANGENT(float, s, ep)
ORIN_ARCTANGENT(double, d, la)
ORIN_ARCTANGENT(double, d, ha)
ORIN_ARCTANGENT(double, d, ep)
#undef ORIN_ARCTANGENT

}  // namespace orin::vector_math
