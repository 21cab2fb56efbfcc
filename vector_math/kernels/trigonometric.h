// trigonometric.h: what the elementwise sine, cosine and tangent have in common beside their values.
// SPDX-License-Identifier: MIT
//
// Special   NaN -> NaN, no status; +-inf -> NaN, status 1
#ifndef ORIN_VECTOR_MATH_KERNELS_TRIGONOMETRIC_H
#define ORIN_VECTOR_MATH_KERNELS_TRIGONOMETRIC_H

#include <limits>

#include "vector_math/kernels.h"
#include "vector_math/kernels/sincos_core_d.h"
#include "vector_math/simd/elementwise.h"

namespace orin::vector_math {

// F as a record of the elementwise loop. F has Element, results, name; fast(x) for arguments up to the (high) word
// last_word, and wide(x) for all finite ones.
template <class F>
struct Trigonometric : simd::Shape<typename F::Element, 1, F::results> {
  using T = typename F::Element;
  static constexpr const char* name = F::name;
  static constexpr T ordinary = 0;

  static ORIN_INLINE simd::Vec4i beyond_fast(simd::Vec4i words) {
    static constexpr simd::Constant<std::int32_t> last = F::last_word;
    return magnitude(words) > simd::in_memory(last);
  }
  static ORIN_INLINE auto fast(auto x) { return F::fast(x); }
  static ORIN_INLINE auto wide(auto x) { return F::wide(x); }

  static ORIN_INLINE simd::Vec4i special_lanes(simd::Vec4i words) {
    static constexpr simd::Constant<std::int32_t> last = sizeof(T) == 8 ? 0x7fefffff : 0x7f7fffff;
    return magnitude(words) > simd::in_memory(last);
  }
  static simd::Outcome<T, F::results> special(T x) {
    simd::Outcome<T, F::results> outcome;
    const bool is_nan = x != x;
    for (T& value : outcome.value) value = is_nan ? x + x : std::numeric_limits<T>::quiet_NaN();
    outcome.status = is_nan ? KOR_STATUS_OK : KOR_STATUS_ERRDOM;
    return outcome;
  }
};

// A function of doubles, F::of(angle), by the reduction of its grade.
template <class F, Grade grade>
struct ByAngle : F {
  using Element = double;
  static constexpr std::int32_t last_word = sincos_d::reduce_to_word;
  static ORIN_INLINE auto fast(simd::Vec2d x) { return F::of(sincos_d::reduce<grade>(x)); }
  static ORIN_INLINE auto wide(simd::Vec2d x) { return F::of(sincos_d::reduce_any<grade>(x)); }
};

}  // namespace orin::vector_math

#endif
