// power.h: x^y as records for the loop, y a vector or one number; its special arguments. Both precisions.
// SPDX-License-Identifier: MIT
#ifndef ORIN_VECTOR_MATH_KERNELS_POWER_H
#define ORIN_VECTOR_MATH_KERNELS_POWER_H

#include <cmath>
#include <limits>
#include <type_traits>

#include "vector_math/kernels/log_base.h"
#include "vector_math/simd/elementwise.h"

namespace orin::vector_math {

using simd::Outcome;

enum class Parity { fraction, even, odd };

template <class T>
Parity parity(T y) {
  const T magnitude = std::fabs(y);
  if (magnitude >= 2 / std::numeric_limits<T>::epsilon()) return Parity::even;
  const auto whole = static_cast<std::int64_t>(magnitude);
  if (static_cast<T>(whole) != magnitude) return Parity::fraction;
  return whole % 2 != 0 ? Parity::odd : Parity::even;
}

template <class T>
struct WidePower {
  T rounded;
  bool below_normal;  // before the last rounding, which may lead to the least normal number
};

// x^y where fast does not give it: `wide` knows the powers of finite positive x != 1 to finite y != 0, in and out of
// range. As C Annex F; statuses 1 to 4.
template <class T, class Wide>
Outcome<T> special_power(T x, T y, Wide wide) {
  using Limits = std::numeric_limits<T>;
  if (y == 0 || x == 1) return {{T(1)}, KOR_STATUS_OK};
  if (x != x) return {{x + x}, KOR_STATUS_OK};
  if (y != y) return {{y + y}, KOR_STATUS_OK};
  const T magnitude = std::fabs(x);
  if (std::fabs(y) > Limits::max()) {
    if (magnitude == 1) return {{T(1)}, KOR_STATUS_OK};
    return {{(magnitude > 1) == (y > 0) ? Limits::infinity() : T(0)}, KOR_STATUS_OK};
  }
  const Parity kind = parity(y);
  const T sign = std::signbit(x) && kind == Parity::odd ? T(-1) : T(1);
  if (magnitude == 0) return {{y < 0 ? sign * Limits::infinity() : sign * 0}, y < 0 ? KOR_STATUS_SING : KOR_STATUS_OK};
  if (magnitude > Limits::max()) return {{y < 0 ? sign * 0 : sign * Limits::infinity()}, KOR_STATUS_OK};
  if (x < 0 && kind == Parity::fraction) return {{Limits::quiet_NaN()}, KOR_STATUS_ERRDOM};
  if (magnitude == 1) return {{sign}, KOR_STATUS_OK};
  const WidePower<T> power = wide(magnitude, y);
  const std::int32_t status = power.rounded > Limits::max() ? KOR_STATUS_OVERFLOW
                              : power.below_normal          ? KOR_STATUS_UNDERFLOW
                                                            : KOR_STATUS_OK;
  return {{sign * power.rounded}, status};
}

// The records. Core::power(x, y) is x^y on registers for positive normal x and |y| < Core::limit, a power of two, or a
// negative NaN where the result may leave the normal range; Core::wide is what special_power asks for.
template <class Core>
struct PowerOfVectors : simd::TwoToOne<typename Core::Element> {
  using T = typename Core::Element;
  static constexpr const char* name = sizeof(T) == 8 ? "vdPow" : "vsPow";
  static constexpr T ordinary = 1;
  static constexpr int groups_per_step = 1;
  static constexpr bool marks_results = true;

  static ORIN_INLINE simd::Vec4i special_lanes(simd::Vec4i x, simd::Vec4i y) {
    using Bits = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
    static constexpr simd::Constant<std::int32_t> largest =
        static_cast<std::int32_t>(__builtin_bit_cast(Bits, Core::limit) >> (8 * sizeof(T) - 32)) - 1;
    return not_positive_normal<T>(x) | (simd::magnitude(y) > simd::in_memory(largest));
  }
  template <class V>
  static ORIN_INLINE V fast(V x, V y) {
    return Core::power(x, y);
  }
  static Outcome<T> special(T x, T y) { return special_power(x, y, Core::wide); }
};

template <class Core>
struct PowerOfScalar : simd::OneToOne<typename Core::Element> {
  using T = typename Core::Element;
  static constexpr const char* name = sizeof(T) == 8 ? "vdPowx" : "vsPowx";
  static constexpr T ordinary = 1;
  static constexpr int groups_per_step = 1;
  static constexpr bool marks_results = true;

  T y;
  // Beyond the limit every lane is special; 1 then stands in, for fast to see nothing odd.
  T ordinary_y = __builtin_isless(std::fabs(y), Core::limit) ? y : 1;

  ORIN_INLINE simd::Vec4i special_lanes(simd::Vec4i x) const {
    return not_positive_normal<T>(x) | (y == ordinary_y ? 0 : -1);
  }
  template <class V>
  ORIN_INLINE V fast(V x) const {
    return Core::power(x, V(ordinary_y));
  }
  Outcome<T> special(T x) const { return special_power(x, y, Core::wide); }
};

}  // namespace orin::vector_math

#endif
