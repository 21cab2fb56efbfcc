// hyperbolic: elementwise sinh x, cosh x and e^x - 1, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    hyperbolic_core_d.h, hyperbolic_core_s.h; sinh and cosh of |x|; HA single by EP double
// Bounds    HA 0.55 ulp, LA relative 2^-50, 2^-21, EP relative 2^-26, 2^-11
// Special   NaN -> NaN; infinities -> sinh themselves, cosh +inf, e^x - 1 +inf and -1, no status; overflow -> the
//           infinity of the result's sign, status 3; double results next to the largest number from their halves
#include <cfloat>
#include <cmath>
#include <limits>

#include "vector_math/kernels.h"
#include "vector_math/kernels/hyperbolic_core_d.h"
#include "vector_math/kernels/hyperbolic_core_s.h"
#include "vector_math/kernels/log_base.h"
#include "vector_math/simd/elementwise.h"

namespace orin::vector_math {
namespace {

using namespace simd;
using hyperbolic_d::exponential_less_one;
using hyperbolic_d::hyperbolic_cosine;
using hyperbolic_d::hyperbolic_sine;
using hyperbolic_s::exponential_less_one;
using hyperbolic_s::hyperbolic_cosine;
using hyperbolic_s::hyperbolic_sine;

// The least argument that overflows.
template <class T>
constexpr T hyperbolic_overflow = sizeof(T) == 8 ? T(0x1.633ce8fb9f87ep+9) : T(0x1.65a9fap+6);
template <class T>
constexpr T exponential_overflow = sizeof(T) == 8 ? T(0x1.62e42fefa39fp+9) : T(0x1.62e43p+6);

// Largest high words of ordinary arguments.
constexpr Constant<std::int32_t> up_to_710 = 0x40862fff, up_to_708 = 0x40861fff, up_to_88 = 0x42b00000;

struct Sinh {
  static constexpr const char* name_s = "vsSinh";
  static constexpr const char* name_d = "vdSinh";
  static constexpr const auto& largest_word = up_to_710;
  template <class T>
  static constexpr T overflow = hyperbolic_overflow<T>;

  template <Grade grade, class V>
  static ORIN_INLINE V of(V x) {
    return with_sign_of(hyperbolic_sine<grade>(abs(x)), x);
  }
  template <Grade grade>
  static Vec2d half_of_large(Vec2d y) {
    return hyperbolic_cosine<grade, 2>(y);
  }
  template <class T>
  static T limit(T x) {
    return x;
  }
};

struct Cosh {
  static constexpr const char* name_s = "vsCosh";
  static constexpr const char* name_d = "vdCosh";
  static constexpr const auto& largest_word = up_to_710;
  template <class T>
  static constexpr T overflow = hyperbolic_overflow<T>;

  template <Grade grade, class V>
  static ORIN_INLINE V of(V x) {
    return hyperbolic_cosine<grade>(abs(x));
  }
  template <Grade grade>
  static Vec2d half_of_large(Vec2d y) {
    return hyperbolic_cosine<grade, 2>(y);
  }
  template <class T>
  static T limit(T x) {
    return std::fabs(x);
  }
};

struct Expm1 {
  static constexpr const char* name_s = "vsExpm1";
  static constexpr const char* name_d = "vdExpm1";
  static constexpr const auto& largest_word = up_to_708;
  template <class T>
  static constexpr T overflow = exponential_overflow<T>;

  template <Grade grade, class V>
  static ORIN_INLINE V of(V x) {
    return with_sign_of(exponential_less_one<grade>(x), x);
  }
  template <Grade grade>
  static Vec2d half_of_large(Vec2d y) {
    return hyperbolic_cosine<grade>(y);
  }
  template <class T>
  static T limit(T x) {
    return x < 0 ? -1 : x;
  }
};

template <class F, class T, Grade grade>
struct Hyperbolic : OneToOne<T> {
  using V = typename RegisterOf<T>::type;
  using Limits = std::numeric_limits<T>;
  static constexpr const char* name = sizeof(T) == 8 ? F::name_d : F::name_s;
  static constexpr T ordinary = 0;
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    return magnitude(words) > in_memory(sizeof(T) == 8 ? F::largest_word : up_to_88);
  }
  static ORIN_INLINE V fast(V x) {
    if constexpr (sizeof(T) == 4 && grade == Grade::ha) {
      const TwoVec2d wide = widen(x);
      return narrow({F::template of<Grade::ep>(wide.low), F::template of<Grade::ep>(wide.high)});
    } else {
      return F::template of<grade>(x);
    }
  }
  static Outcome<T> special(T x) {
    if (x != x) return {{x + x}, KOR_STATUS_OK};
    const T limit = F::limit(x);  // at the infinity, and next to it
    if (std::fabs(x) > Limits::max() || std::fabs(limit) == 1) return {{limit}, KOR_STATUS_OK};
    const T y = std::fabs(x);
    if (y >= F::template overflow<T>) return {{std::copysign(Limits::infinity(), limit)}, KOR_STATUS_OVERFLOW};
    if constexpr (sizeof(T) == 4) {
      return {{static_cast<T>(first_lane(F::template of<Grade::ep>(Vec2d(double{x}))))}, KOR_STATUS_OK};
    } else {
      // The coarser grades may err past the largest number, next to whose logarithm the bound is.
      const Vec2d half = min(F::template half_of_large<grade>(y), DBL_MAX / 2);
      return {{std::copysign(first_lane(half) * 2.0, limit)}, KOR_STATUS_OK};
    }
  }
};

}  // namespace

#define ORIN_HYPERBOLIC(name, F, T, grade)                          \
  void ORIN_CALL name##_##grade(std::int32_t n, const T* a, T* r) { \
    elementwise<Hyperbolic<F, T, Grade::grade>>({}, n, {a}, {r});   \
  }
#define ORIN_HYPERBOLIC_GRADES(name, F, T) \
  ORIN_HYPERBOLIC(name, F, T, la)          \
  ORIN_HYPERBOLIC(name, F, T, ha)          \
  ORIN_HYPERBOLIC(name, F, T, ep)
ORIN_HYPERBOLIC_GRADES(sinh_s, Sinh, float)
ORIN_HYPERBOLIC_GRADES(sinh_d, Sinh, double)
ORIN_HYPERBOLIC_GRADES(cosh_s, Cosh, float)
ORIN_HYPERBOLIC_GRADES(cosh_d, Cosh, double)
ORIN_HYPERBOLIC_GRADES(expm1_s, Expm1, float)
ORIN_HYPERBOLIC_GRADES(expm1_d, Expm1, double)
#undef ORIN_HYPERBOLIC_GRADES
#undef ORIN_HYPERBOLIC

}  // namespace orin::vector_math
