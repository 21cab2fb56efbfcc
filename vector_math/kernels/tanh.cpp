// tanh: elementwise tanh x, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    double: y = |x| = c + r, c the middle of one of 361 bins;
//           tanh y = tanh c + (1 - tanh(c)^2) tanh r/(1 + tanh c tanh r);  HA single by EP double
//           LA, EP of single: e = e^2y - 1;  tanh y = e/(e + 2)
// Bounds    HA 0.56 ulp, single 0.51; LA relative 2^-50, 2^-21; EP relative 2^-26, 2^-11
// Budget    HA  in ulp: roundings of what is added to tanh c 3 2^-6, last rounding 1/2
//           LA  in units of rounding: tanh c 1, sum 1;  single e^2y - 1 4, sum 1, quotient 1
//           EP  next term of tanh r 2^-33, single 2^-14.7
// Special   NaN -> NaN, infinities -> +-1, no status
// Data      data/tanh_data.h from tools/tables/tanh.py
#include <cmath>

#include "vector_math/data/tanh_data.h"
#include "vector_math/kernels.h"
#include "vector_math/kernels/hyperbolic_core_s.h"
#include "vector_math/kernels/log_base.h"
#include "vector_math/simd/elementwise.h"
#include "vector_math/simd/table.h"

namespace orin::vector_math {
namespace {

using namespace simd;
namespace data = tanh_data;

constexpr struct {
  Constant<double> first_bin = data::first_bin, last_bin = data::last_bin;  // from the last bin on the result is 1
  Constant<double> one = 1.0;
  Constant<double> p0 = data::ha_0, p1 = data::ha_1, p2 = data::ha_2, p3 = data::ha_3;
  Constant<double> third = 1.0 / 3;
} constants_d{};
constexpr struct {
  Constant<float> two = 2.0f;
  Constant<float> largest = 10.0f;  // from here on the result is 1
} constants_s{};

template <Grade grade>
ORIN_INLINE Vec2d hyperbolic_tangent(Vec2d x) {
  const auto& c = in_memory(constants_d);
  const Vec2d y = min(abs(x), c.last_bin);
  constexpr auto first_index = static_cast<std::uint32_t>(__builtin_bit_cast(std::uint64_t, data::first_bin) >> 47);
  const auto bin = top_bits<47, first_index>(max(y, c.first_bin));
  const auto [middle, value] = look_up_pairs(data::points, bin);
  const Vec2d r = y - middle;
  const Vec2d r2 = r * r;
  if constexpr (grade == Grade::ha) {
    const auto [slope, rest] = look_up_pairs(data::slopes, bin);
    const Vec2d t = r + (r * r2) * ((c.p0 + r2 * c.p1) + (r2 * r2) * (c.p2 + r2 * c.p3));
    return with_sign_of(value + (slope * t / (c.one + value * t) + rest), x);
  } else {
    const Vec2d slope = look_up<2>(data::slopes, bin);
    if constexpr (grade == Grade::ep)  // tanh r = r/(1 + r^2/3)
      return with_sign_of(value + slope * r / (c.one + r * (value + r * c.third)), x);
    const Vec2d t = r + (r * r2) * ((c.p0 + r2 * c.p1) + (r2 * r2) * (c.p2 + r2 * c.p3));
    return with_sign_of(value + slope * t / (c.one + value * t), x);
  }
}

template <Grade grade>
ORIN_INLINE Vec4f hyperbolic_tangent(Vec4f x) {
  if constexpr (grade == Grade::ha) {
    const TwoVec2d wide = widen(x);
    return narrow({hyperbolic_tangent<Grade::ep>(wide.low), hyperbolic_tangent<Grade::ep>(wide.high)});
  } else {
    const auto& c = in_memory(constants_s);
    const Vec4f y = min(abs(x), c.largest);
    const Vec4f e = hyperbolic_s::exponential_less_one<grade>(y + y);
    return with_sign_of(e / (e + c.two), x);
  }
}

template <class T, Grade grade>
struct Tanh : OneToOne<T> {
  using V = typename RegisterOf<T>::type;
  static constexpr const char* name = sizeof(T) == 8 ? "vdTanh" : "vsTanh";
  static constexpr T ordinary = 0;
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    static constexpr Constant<std::int32_t> largest = sizeof(T) == 8 ? 0x7fefffff : 0x7f7fffff;  // of finite numbers
    return magnitude(words) > in_memory(largest);
  }
  static ORIN_INLINE V fast(V x) { return hyperbolic_tangent<grade>(x); }
  static Outcome<T> special(T x) {
    if (x != x) return {{x + x}, KOR_STATUS_OK};
    return {{std::copysign(T(1), x)}, KOR_STATUS_OK};
  }
};

}  // namespace

#define ORIN_TANH(T, t, grade)                                          \
  void ORIN_CALL tanh_##t##_##grade(std::int32_t n, const T* a, T* r) { \
    elementwise<Tanh<T, Grade::grade>>({}, n, {a}, {r});                \
  }
ORIN_TANH(float, s, la)
ORIN_TANH(float, s, ha)
ORIN_TANH(float, s, ep)
ORIN_TANH(double, d, la)
ORIN_TANH(double, d, ha)
ORIN_TANH(double, d, ep)
#undef ORIN_TANH

}  // namespace orin::vector_math
