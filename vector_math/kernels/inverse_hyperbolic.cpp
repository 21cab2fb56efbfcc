// inverse_hyperbolic: elementwise asinh x, acosh x and atanh x, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    each is the logarithm of 1 + v, its sign that of x, y = |x|
//           asinh  v = y + y^2/(1 + sqrt(1 + y^2))
//           acosh  v = t + sqrt(t (t + 2)), t = x - 1
//           atanh  v = 2 y/(1 - y), and half the logarithm
//           LA, EP so in their own precision, HA single in double with the EP logarithm
//           HA double takes the argument of the logarithm as a pair: y + sqrt(y^2 +- 1), (1 + y)/(1 - y), with one
//           Newton step for the rest of root and quotient
// Bounds    HA 0.55 ulp, acosh double 0.6; LA relative 2^-50, 2^-21; EP relative 2^-26, 2^-11
// Budget    HA  in ulp: pair 2^-8 (acosh next to 1 1/16), logarithm 2^-7, last rounding 1/2
//           LA  in units of rounding: v 3, logarithm 3
// Special   NaN -> NaN; asinh +-inf -> +-inf; acosh +inf -> +inf, below 1 -> NaN, status 1; atanh +-1 -> +-inf, status
//           2, beyond -> NaN, status 1; arguments whose square would overflow as log 2x
// Source    T. J. Dekker (1971) for the pairs
#include <cfloat>
#include <cmath>
#include <limits>

#include "vector_math/kernels.h"
#include "vector_math/kernels/double_double.h"
#include "vector_math/kernels/log_core_d.h"
#include "vector_math/kernels/log_core_s.h"
#include "vector_math/simd/elementwise.h"

namespace orin::vector_math {
namespace {

using namespace simd;

constexpr struct {
  Constant<double> one = 1.0, two = 2.0, half = 0.5;
  Constant<double> linear_below = 0x1p-28;  // asinh x = atanh x = x (1 +- 2^-58)
  Constant<double> tiny = DBL_MIN;          // keeps 0/0 away
} constants_d{};
constexpr struct { Constant<float> one = 1.0f, two = 2.0f, half = 0.5f; } constants_s{};

template <class V>
ORIN_INLINE const auto& constants() {
  if constexpr (sizeof(typename V::Element) == 8)
    return in_memory(constants_d);
  else
    return in_memory(constants_s);
}

// The root of square + rest as a pair. s = s' + s'', s' of 26 bits: s'^2 and its difference from square are exact.
ORIN_INLINE DoubleDouble root(Vec2d square, Vec2d rest) {
  const auto& c = in_memory(constants_d);
  const Vec2d s = sqrt(square);
  const Vec2d half_inverse = c.half / max(s, c.tiny);
  const DoubleDouble parts = split(s);
  const Vec2d remainder = (square - parts.high * parts.high) - parts.low * (s + parts.high);
  return {s, (remainder + rest) * half_inverse};
}

struct Asinh {
  static constexpr const char* name_s = "vsAsinh";
  static constexpr const char* name_d = "vdAsinh";
  static constexpr float ordinary = 0;

  template <class V>
  static ORIN_INLINE V less_one(V y) {
    const V one = constants<V>().one;
    const V square = y * y;
    return y + square / (one + sqrt(one + square));
  }
  static ORIN_INLINE DoubleDouble pair(Vec2d y) {
    const DoubleDouble square = two_square(y);
    const OnePlus<Vec2d> sum = one_plus(square.high);
    const DoubleDouble s = root(sum.sum, sum.rest + square.low);
    const DoubleDouble u = fast_two_sum(s.high, y);
    return {u.high, u.low + s.low};
  }
  template <class V>
  static ORIN_INLINE V finish(V result) {
    return result;
  }
  template <class T>
  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    static constexpr Constant<std::int32_t> largest = sizeof(T) == 8 ? 0x5f2fffff : 0x5d7fffff;  // 2^499, 2^60
    return magnitude(words) > in_memory(largest);
  }
  template <class T, class Log>
  static Outcome<T> special(T x, Log log_of_twice) {
    if (x != x || std::fabs(x) > std::numeric_limits<T>::max()) return {{x + x}, KOR_STATUS_OK};
    return {{std::copysign(log_of_twice(std::fabs(x)), x)}, KOR_STATUS_OK};
  }
};

struct Acosh {
  static constexpr const char* name_s = "vsAcosh";
  static constexpr const char* name_d = "vdAcosh";
  static constexpr float ordinary = 1;

  template <class V>
  static ORIN_INLINE V less_one(V x) {
    const auto& c = constants<V>();
    const V t = x - c.one;
    return t + sqrt(t * (t + c.two));
  }
  static ORIN_INLINE DoubleDouble pair(Vec2d x) {
    const Vec2d one = constants<Vec2d>().one;
    // x = x' + x'', x' of 26 bits, nearest: x'^2 and 2 x' x'' are exact. Next to 1 they are of one size.
    static constexpr Constant<std::int64_t> half_last = INT64_C(1) << 26;
    const Vec2d leading = split(from_bits(bits(x) + in_memory(half_last))).high;
    const DoubleDouble parts{leading, x - leading};
    const Vec2d cross = (parts.high + parts.high) * parts.low;
    const DoubleDouble difference = fast_two_sum(parts.high * parts.high - one, cross);
    const DoubleDouble s = root(difference.high, difference.low + parts.low * parts.low);
    const DoubleDouble u = fast_two_sum(x, s.high);
    return {u.high, u.low + s.low};
  }
  template <class V>
  static ORIN_INLINE V finish(V result) {
    return result;
  }
  template <class T>
  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    if constexpr (sizeof(T) == 8)
      return outside<0x3ff00000, 0x5f2fffff>(words);  // 1, 2^499
    else
      return outside<0x3f800000, 0x5d7fffff>(words);  // 1, 2^60
  }
  template <class T, class Log>
  static Outcome<T> special(T x, Log log_of_twice) {
    if (x != x || x > std::numeric_limits<T>::max()) return {{x + x}, KOR_STATUS_OK};
    if (x < 1) return {{std::numeric_limits<T>::quiet_NaN()}, KOR_STATUS_ERRDOM};
    return {{log_of_twice(x)}, KOR_STATUS_OK};
  }
};

struct Atanh {
  static constexpr const char* name_s = "vsAtanh";
  static constexpr const char* name_d = "vdAtanh";
  static constexpr float ordinary = 0;

  template <class V>
  static ORIN_INLINE V less_one(V y) {
    return (y + y) / (constants<V>().one - y);
  }
  static ORIN_INLINE DoubleDouble pair(Vec2d y) {
    const Vec2d one = constants<Vec2d>().one;
    const DoubleDouble a = fast_two_sum(one, y);
    const Vec2d b = one - y;
    const Vec2d b_low = (one - b) - y;
    const Vec2d inverse = one / b;
    const Vec2d quotient = a.high * inverse;
    const DoubleDouble q = split(quotient);
    const DoubleDouble d = split(b);
    const Vec2d remainder = (((a.high - q.high * d.high) - q.high * d.low) - q.low * d.high) - q.low * d.low;
    return {quotient, (remainder + (a.low - quotient * b_low)) * inverse};
  }
  template <class V>
  static ORIN_INLINE V finish(V result) {
    return result * constants<V>().half;
  }
  template <class T>
  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    static constexpr Constant<std::int32_t> below_one = sizeof(T) == 8 ? 0x3fefffff : 0x3f7fffff;
    return magnitude(words) > in_memory(below_one);
  }
  template <class T, class Log>
  static Outcome<T> special(T x, Log) {
    using Limits = std::numeric_limits<T>;
    if (x != x) return {{x + x}, KOR_STATUS_OK};
    if (std::fabs(x) == 1) return {{std::copysign(Limits::infinity(), x)}, KOR_STATUS_SING};
    return {{Limits::quiet_NaN()}, KOR_STATUS_ERRDOM};
  }
};

// f(|x|) by the formula for v, to the accuracy of the logarithm's grade.
template <class F, Grade grade, class V>
ORIN_INLINE V plain(V y) {
  return F::finish(logarithm_of_one_plus<grade>(F::less_one(y)));
}

template <class F, class T, Grade grade>
struct InverseHyperbolic : OneToOne<T> {
  using V = typename RegisterOf<T>::type;
  static constexpr const char* name = sizeof(T) == 8 ? F::name_d : F::name_s;
  static constexpr T ordinary = F::ordinary;
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i special_lanes(Vec4i words) { return F::template special_lanes<T>(words); }

  static ORIN_INLINE V fast(V x) {
    const V y = abs(x);
    if constexpr (grade != Grade::ha) {
      return with_sign_of(plain<F, grade>(y), x);
    } else if constexpr (sizeof(T) == 4) {
      const TwoVec2d wide = widen(y);
      return with_sign_of(narrow({plain<F, Grade::ep>(wide.low), plain<F, Grade::ep>(wide.high)}), x);
    } else {
      const DoubleDouble u = F::pair(y);
      const Vec2d result = F::finish(logarithm<grade>(u.high, u.low));
      const auto& c = constants<V>();
      // A product, for subnormal arguments to be flushed where the mode asks.
      return with_sign_of(select(y < c.linear_below, y * c.one, result), x);
    }
  }

  static Outcome<T> special(T x) {
    return F::special(x, [](T y) { return first_lane(logarithm<grade, Base::e, -1>(V(y))); });
  }
};

}  // namespace

#define ORIN_INVERSE_HYPERBOLIC(name, F, T, grade)                       \
  void ORIN_CALL name##_##grade(std::int32_t n, const T* a, T* r) {      \
    elementwise<InverseHyperbolic<F, T, Grade::grade>>({}, n, {a}, {r}); \
  }
ORIN_INVERSE_HYPERBOLIC(asinh_s, Asinh, float, la)
ORIN_INVERSE_HYPERBOLIC(asinh_s, Asinh, float, ha)
ORIN_INVERSE_HYPERBOLIC(asinh_s, Asinh, float, ep)
ORIN_INVERSE_HYPERBOLIC(asinh_d, Asinh, double, la)
ORIN_INVERSE_HYPERBOLIC(asinh_d, Asinh, double, ha)
ORIN_INVERSE_HYPERBOLIC(asinh_d, Asinh, double, ep)
ORIN_INVERSE_HYPERBOLIC(acosh_s, Acosh, float, la)
ORIN_INVERSE_HYPERBOLIC(acosh_s, Acosh, float, ha)
ORIN_INVERSE_HYPERBOLIC(acosh_s, Acosh, float, ep)
ORIN_INVERSE_HYPERBOLIC(acosh_d, Acosh, double, la)
ORIN_INVERSE_HYPERBOLIC(acosh_d, Acosh, double, ha)
ORIN_INVERSE_HYPERBOLIC(acosh_d, Acosh, double, ep)
ORIN_INVERSE_HYPERBOLIC(atanh_s, Atanh, float, la)
ORIN_INVERSE_HYPERBOLIC(atanh_s, Atanh, float, ha)
ORIN_INVERSE_HYPERBOLIC(atanh_s, Atanh, float, ep)
ORIN_INVERSE_HYPERBOLIC(atanh_d, Atanh, double, la)
ORIN_INVERSE_HYPERBOLIC(atanh_d, Atanh, double, ha)
ORIN_INVERSE_HYPERBOLIC(atanh_d, Atanh, double, ep)
#undef ORIN_INVERSE_HYPERBOLIC

}  // namespace orin::vector_math
