// pow_special.h: x^y at special arguments, both precisions.
// SPDX-License-Identifier: MIT
#ifndef ORIN_VECTOR_MATH_KERNELS_POW_SPECIAL_H
#define ORIN_VECTOR_MATH_KERNELS_POW_SPECIAL_H

#include <cmath>
#include <limits>

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

}  // namespace orin::vector_math

#endif
