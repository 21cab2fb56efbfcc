// log_base.h: what the logarithms of both precisions share.
// SPDX-License-Identifier: MIT
#ifndef ORIN_VECTOR_MATH_KERNELS_LOG_BASE_H
#define ORIN_VECTOR_MATH_KERNELS_LOG_BASE_H

#include <cstdint>

#include "vector_math/simd/registers.h"

namespace orin::vector_math {

enum class Base { e, ten };

// first..last, which have one sign, moved by INT32_MIN - first: then these are at the lower end of the signed integers, in
// order.
template <std::int32_t first, std::int32_t last>
struct RangeAtBottom {
  simd::Constant<std::int32_t> to_bottom = static_cast<std::int32_t>(0x80000000u - static_cast<std::uint32_t>(first));
  simd::Constant<std::int32_t> largest = INT32_MIN + (last - first);
};
// The lanes outside first..last.
template <std::int32_t first, std::int32_t last>
ORIN_INLINE simd::Vec4i outside(simd::Vec4i words) {
  static constexpr RangeAtBottom<first, last> range{};
  const auto& k = simd::in_memory(range);
  return words + k.to_bottom > k.largest;
}
// The lanes where either is outside, by their upper halves.
template <std::int32_t first, std::int32_t last>
ORIN_INLINE simd::Vec4i outside(simd::Vec4i a, simd::Vec4i b) {
  static_assert((first & 0xffff) == 0 && (last & 0xffff) == 0xffff);
  static constexpr RangeAtBottom<first, last> range{};
  const auto& k = simd::in_memory(range);
  return larger_upper_halves(a + k.to_bottom, b + k.to_bottom) > k.largest;
}

// The lanes whose high words (of float: words) are not those of a positive normal number.
template <class T>
ORIN_INLINE simd::Vec4i not_positive_normal(simd::Vec4i words) {
  if constexpr (sizeof(T) == 8)
    return outside<0x00100000, 0x7fefffff>(words);
  else
    return outside<0x00800000, 0x7f7fffff>(words);
}

// 1 + x as a sum and what rounding took from it, for x >= -1.
template <class V>
struct OnePlus {
  V sum, rest;
};
template <class V>
ORIN_INLINE OnePlus<V> one_plus(V x) {
  static constexpr simd::Constant<typename V::Element> one = 1;
  const V larger = max(x, simd::in_memory(one));
  const V smaller = min(x, simd::in_memory(one));
  const V sum = larger + smaller;
  return {sum, smaller - (sum - larger)};
}

// The result of an odd function, or of one that has the sign of its argument: given for |x| or with its sign, -0 not
// yet.
template <class V>
ORIN_INLINE V with_sign_of(V result, V x) {
  static constexpr simd::Constant<typename V::Element> minus_zero = -typename V::Element(0);
  return result | (x & V(simd::in_memory(minus_zero)));
}

}  // namespace orin::vector_math

#endif
