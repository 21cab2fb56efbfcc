// trigonometric.h: sine, cosine and tangent as records of the elementwise loop.
// SPDX-License-Identifier: MIT
//
// Special   NaN -> NaN, no status; +-inf -> NaN, status 1
#ifndef ORIN_VECTOR_MATH_KERNELS_TRIGONOMETRIC_H
#define ORIN_VECTOR_MATH_KERNELS_TRIGONOMETRIC_H

#include <limits>

#include "vector_math/kernels.h"
#include "vector_math/kernels/sincos_core_s.h"
#include "vector_math/simd/elementwise.h"

namespace orin::vector_math {

// How a function F<grade> of T is evaluated: fast(x) for arguments up to the (high) word last_word, wide(x) for all
// finite ones; where fast is short, medium(x) for those beyond it and below 2^20. F<grade> has results, and of(angle), the
// value(s) at a reduced argument. Doubles:
template <template <Grade> class F, class T, Grade grade>
struct Evaluation {
  static constexpr std::int32_t last_word = sincos_d::reduce_to_word;
  static ORIN_INLINE auto fast(simd::Vec2d x) { return F<grade>::of(sincos_d::reduce<grade>(x)); }
  static ORIN_INLINE auto wide(simd::Vec2d x) { return F<grade>::of(sincos_d::reduce_any<grade>(x)); }
};

// Doubles in EP, the shortest way up to near_to_word.
template <template <Grade> class F>
struct Evaluation<F, double, Grade::ep> {
  using Way = F<Grade::ep>;
  static constexpr std::int32_t last_word = sincos_d::near_to_word;
  static ORIN_INLINE auto fast(simd::Vec2d x) { return Way::of(sincos_d::reduce_near(x)); }
  static ORIN_INLINE auto wide(simd::Vec2d x) { return Way::of(sincos_d::reduce_wide(x)); }
  static ORIN_INLINE auto medium(simd::Vec2d x) { return Way::of(sincos_d::reduce<Grade::ep>(x)); }
  static ORIN_INLINE simd::Vec4i beyond_medium(simd::Vec4i words) {
    return outside<last_word + 1, sincos_d::reduce_to_word>(magnitude(words));
  }
};

// Floats in LA and EP, with a reduction of their own, F<grade>::Reduction.
template <template <Grade> class F, Grade grade>
struct Evaluation<F, float, grade> {
  using Reduction = typename F<grade>::Reduction;
  static constexpr std::int32_t last_word = sincos_s::last_word<grade>;
  static ORIN_INLINE auto fast(simd::Vec4f x) { return F<grade>::of(Reduction::reduce(x)); }
  static ORIN_INLINE auto wide(simd::Vec4f x) { return F<grade>::of(Reduction::reduce_any(x)); }
  static ORIN_INLINE auto medium(simd::Vec4f x) { return F<grade>::of(Reduction::reduce_medium(x)); }
  static ORIN_INLINE simd::Vec4i beyond_medium(simd::Vec4i words) { return Reduction::beyond_medium(words); }
};

// Floats in HA: in doubles of grade EP.
template <template <Grade> class F>
struct Evaluation<F, float, Grade::ha> {
  static constexpr std::int32_t last_word = 0x497fffff;  // below 2^20

  static ORIN_INLINE auto fast(simd::Vec4f x) {
    const auto [low, high] = widen(x);
    return both(F<Grade::ep>::of(sincos_d::reduce_single(low)), F<Grade::ep>::of(sincos_d::reduce_single(high)));
  }
  static ORIN_INLINE auto wide(simd::Vec4f x) {
    const auto [low, high] = widen(x);
    return both(F<Grade::ep>::of(sincos_d::reduce_any_single(low)),
                F<Grade::ep>::of(sincos_d::reduce_any_single(high)));
  }

 private:
  static ORIN_INLINE simd::Vec4f both(simd::Vec2d low, simd::Vec2d high) { return simd::narrow({low, high}); }
  static ORIN_INLINE simd::Two<simd::Vec4f> both(simd::Two<simd::Vec2d> low, simd::Two<simd::Vec2d> high) {
    return {simd::narrow({low.first, high.first}), simd::narrow({low.second, high.second})};
  }
};

// F<grade> of T as a record of the elementwise loop.
template <template <Grade> class F, class T, Grade grade>
struct Trigonometric : simd::Shape<T, 1, F<grade>::results> {
  using Way = Evaluation<F, T, grade>;
  static constexpr int results = F<grade>::results;
  static constexpr const char* name = sizeof(T) == 8 ? F<grade>::name_d : F<grade>::name_s;
  static constexpr T ordinary = 0;

  static ORIN_INLINE simd::Vec4i beyond_fast(simd::Vec4i words) {
    static constexpr simd::Constant<std::int32_t> last = Way::last_word;
    return magnitude(words) > simd::in_memory(last);
  }
  static ORIN_INLINE auto fast(auto x) { return Way::fast(x); }
  static ORIN_INLINE auto wide(auto x) { return Way::wide(x); }
  static ORIN_INLINE simd::Vec4i beyond_medium(simd::Vec4i words) requires requires { &Way::beyond_medium; }
  { return Way::beyond_medium(words); }
  static ORIN_INLINE auto medium(auto x) { return Way::medium(x); }

  static ORIN_INLINE simd::Vec4i special_lanes(simd::Vec4i words) {
    static constexpr simd::Constant<std::int32_t> last = sizeof(T) == 8 ? 0x7fefffff : 0x7f7fffff;
    return magnitude(words) > simd::in_memory(last);
  }
  static simd::Outcome<T, results> special(T x) {
    simd::Outcome<T, results> outcome;
    const bool is_nan = x != x;
    for (T& value : outcome.value) value = is_nan ? x + x : std::numeric_limits<T>::quiet_NaN();
    outcome.status = is_nan ? KOR_STATUS_OK : KOR_STATUS_ERRDOM;
    return outcome;
  }
};

}  // namespace orin::vector_math

#endif
