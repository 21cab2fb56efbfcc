// log1p: elementwise log(1 + x), both precisions.
// SPDX-License-Identifier: MIT
//
// Method    log_core_d.h, log_core_s.h; HA and LA of double by 1 + x = u + rest exactly
// Bounds    HA 0.67 ulp double (next to 2^-53, else 0.51), 0.7 single; LA relative 2^-50, 2^-21; EP 2^-26, 2^-11
// Special   NaN -> NaN, +inf -> +inf, no status; below -1, -inf -> NaN, status 1; -1 -> -inf, status 2;
//           very large arguments as log x, which is the same
#include <limits>

#include "vector_math/kernels.h"
#include "vector_math/kernels/log_core_d.h"
#include "vector_math/kernels/log_core_s.h"
#include "vector_math/simd/elementwise.h"

namespace orin::vector_math {
namespace {

using namespace simd;

template <class T, Grade grade>
struct Log1p : OneToOne<T> {
  using Limits = std::numeric_limits<T>;
  using V = typename RegisterOf<T>::type;
  static constexpr const char* name = sizeof(T) == 8 ? "vdLog1p" : "vsLog1p";
  static constexpr T ordinary = 0;

  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    static constexpr struct {
      Constant<std::int32_t> all_but_sign = 0x7fffffff;
      Constant<std::int32_t> largest_positive = sizeof(T) == 8 ? 0x7e6fffff : 0x7bffffff;  // 2^999, 2^120
      // What is added to the limit of the negative ones, those above -1.
      Constant<std::int32_t> to_negative = sizeof(T) == 8 ? 0x3fefffff - 0x7e6fffff : 0x3f7fffff - 0x7bffffff;
    } range{};
    const auto& k = in_memory(range);
    return (words & k.all_but_sign) > k.largest_positive + (shift_right_signed<31>(words) & k.to_negative);
  }
  static ORIN_INLINE V fast(V x) { return with_sign_of(logarithm_of_one_plus<grade>(x), x); }
  static Outcome<T> special(T x) {
    if (x != x || x > Limits::max()) return {{x + x}, KOR_STATUS_OK};
    if (x == -1) return {{-Limits::infinity()}, KOR_STATUS_SING};
    if (x < -1) return {{Limits::quiet_NaN()}, KOR_STATUS_ERRDOM};
    return {{first_lane(logarithm<grade>(V(x)))}, KOR_STATUS_OK};
  }
};

}  // namespace

#define ORIN_LOG1P(name, T, grade)                                  \
  void ORIN_CALL name##_##grade(std::int32_t n, const T* a, T* r) { \
    elementwise<Log1p<T, Grade::grade>>({}, n, {a}, {r});           \
  }
ORIN_LOG1P(log1p_s, float, la)
ORIN_LOG1P(log1p_s, float, ha)
ORIN_LOG1P(log1p_s, float, ep)
ORIN_LOG1P(log1p_d, double, la)
ORIN_LOG1P(log1p_d, double, ha)
ORIN_LOG1P(log1p_d, double, ep)
#undef ORIN_LOG1P

}  // namespace orin::vector_math
