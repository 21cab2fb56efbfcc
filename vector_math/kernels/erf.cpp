// erf: elementwise error function, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    HA  |x| = c + t, c the nearest multiple of 1/32: a polynomial in t for each c, c0 + c1 t as a sum with its
//               rest;  LA the same, plainly
//           EP  c of 1/64, cubics;  HA single is this one, rounded
//           LA single  c of 1/32, cubics;  EP single  x p(x^2)/q(x^2)
// Bounds    HA 0.52 ulp; LA relative 2^-50, 2^-21; EP relative 2^-26, 2^-11
// Budget    HA  in ulp: polynomial 2^-6, its rounding 2^-7, last rounding 1/2
//           LA  in units of rounding: c0 and products 2, sums 2
//           EP  polynomial 2^-31, p/q 2^-15.8, erf x - 1 from 2.6 on 2^-12
// Special   NaN -> NaN, +-inf -> +-1; no status
// Data      data/erf_data.h from tools/tables/erf.py
#include <cmath>

#include "vector_math/data/erf_data.h"
#include "vector_math/kernels.h"
#include "vector_math/kernels/log_base.h"
#include "vector_math/kernels/piecewise.h"
#include "vector_math/simd/elementwise.h"

namespace orin::vector_math {
namespace {

using namespace simd;
namespace data = erf_data;

constexpr struct {
  Constant<float> last = 2.6f;  // erf 2.6 = 1 - 2^-12
  Constant<float> one = 1.0f;
  Constant<float> p0 = data::ep_p0, p1 = data::ep_p1, p2 = data::ep_p2;
  Constant<float> q1 = data::ep_q1, q2 = data::ep_q2, q3 = data::ep_q3;
} ep_constants{};

template <Grade grade>
ORIN_INLINE Vec2d error_function(Vec2d x) {
  static constexpr Constant<double> last = 6.0;  // erf 6 rounds to 1
  Vec2d y = abs(x);
  [[maybe_unused]] Vec2d lowered;
  if constexpr (grade == Grade::ha) {
    const Lifted lifted = lift(y);
    y = lifted.value;
    lowered = lifted.inverse_factor;
  }
  y = min(y, in_memory(last));
  const Cell<Vec2d> cell = nearest_multiple < grade == Grade::ep ? 64 : 32 > (y);
  const Vec2d t = y - cell.centre;
  if constexpr (grade == Grade::ha)
    return with_sign_of(accurate_polynomial({data::fine}, cell.number, t) * lowered, x);
  else if constexpr (grade == Grade::la)
    return with_sign_of(plain_polynomial({data::fine}, cell.number, t), x);
  else
    return with_sign_of(polynomial(RowTable<4, double>{data::medium}, cell.number, t), x);
}

template <Grade grade>
ORIN_INLINE Vec4f error_function(Vec4f x) {
  if constexpr (grade == Grade::ha) {
    const TwoVec2d wide = widen(x);
    return narrow({error_function<Grade::ep>(wide.low), error_function<Grade::ep>(wide.high)});
  } else if constexpr (grade == Grade::la) {
    static constexpr Constant<float> last = 4.0f;  // erf 4 rounds to 1
    const Vec4f y = min(abs(x), in_memory(last));
    const Cell<Vec4f> cell = nearest_multiple<32>(y);
    return with_sign_of(polynomial(RowTable<4, float>{data::single}, cell.number, y - cell.centre), x);
  } else {
    const auto& k = in_memory(ep_constants);
    const Vec4f y = min(abs(x), k.last);
    const Vec4f z = y * y;
    const Vec4f p = k.p0 + z * (k.p1 + z * k.p2);
    const Vec4f q = k.one + z * (k.q1 + z * (k.q2 + z * k.q3));
    return with_sign_of(y * (p / q), x);
  }
}

template <class T, Grade grade>
struct Erf : OneToOne<T> {
  using V = typename RegisterOf<T>::type;
  static constexpr const char* name = sizeof(T) == 8 ? "vdErf" : "vsErf";
  static constexpr T ordinary = 1;

  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    static constexpr Constant<std::int32_t> largest = sizeof(T) == 8 ? 0x7fefffff : 0x7f7fffff;
    return magnitude(words) > in_memory(largest);
  }
  static ORIN_INLINE V fast(V x) { return error_function<grade>(x); }
  static Outcome<T> special(T x) { return {{x != x ? x + x : std::copysign(T(1), x)}, KOR_STATUS_OK}; }
};

}  // namespace

void ORIN_CALL erf_s_la(std::int32_t n, const float* a, float* r) {
  elementwise<Erf<float, Grade::la>>({}, n, {a}, {r});
}
void ORIN_CALL erf_s_ha(std::int32_t n, const float* a, float* r) {
  elementwise<Erf<float, Grade::ha>>({}, n, {a}, {r});
}
void ORIN_CALL erf_s_ep(std::int32_t n, const float* a, float* r) {
  elementwise<Erf<float, Grade::ep>>({}, n, {a}, {r});
}
void ORIN_CALL erf_d_la(std::int32_t n, const double* a, double* r) {
  elementwise<Erf<double, Grade::la>>({}, n, {a}, {r});
}
void ORIN_CALL erf_d_ha(std::int32_t n, const double* a, double* r) {
  elementwise<Erf<double, Grade::ha>>({}, n, {a}, {r});
}
void ORIN_CALL erf_d_ep(std::int32_t n, const double* a, double* r) {
  elementwise<Erf<double, Grade::ep>>({}, n, {a}, {r});
}

}  // namespace orin::vector_math
