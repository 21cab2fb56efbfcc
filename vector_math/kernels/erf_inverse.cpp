// erf_inverse: elementwise inverses of erf and erfc, and of the normal distribution function, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    v = erfc of |result| (with sqrt 2 for the quantile): 1 - |x|, min(x, 2 - x), 2 min(x, 1 - x)
//           v >= 2^-10  v = c + t, c of six significant bits (single LA, EP five): a polynomial in t for each c; t is exact,
//                       next to v = 1 too, where the result vanishes with it
//           below       w = sqrt(-log v) (quantile: sqrt(-2 log v)), the result is w + h(w), h a polynomial for each c near
//                       w, c of five significant bits; groups with such an argument take the longer path
//           HA  c0 + c1 t and w + c0 as sums with their rests, log v and its root as pairs
//           HA single is EP double, rounded
// Bounds    HA 0.55 ulp double  LA relative 2^-50, 2^-21; EP relative 2^-26, 2^-11
// Budget    HA  in ulp: polynomials 2^-6, their roundings 2^-6, pairs 2^-10, last rounding 1/2
//           LA  in units of rounding: polynomial 3;  logarithm 2, root and sum 2
//           EP  polynomial 2^-29.7, half the logarithm 2^-31;  single: polynomial 2^-12.6
// Special   NaN -> NaN; the ends of the domain -> infinite, status 2; beyond -> NaN, status 1; subnormal arguments of
//           ErfcInv and CdfNormInv as normal ones
// Data      data/erf_inverse_data.h from tools/tables/erf_inverse.py
#include <cmath>
#include <limits>

#include "vector_math/data/erf_inverse_data.h"
#include "vector_math/kernels.h"
#include "vector_math/kernels/log_core_d.h"
#include "vector_math/kernels/log_core_s.h"
#include "vector_math/kernels/piecewise.h"
#include "vector_math/simd/elementwise.h"

namespace orin::vector_math {
namespace {

using namespace simd;
namespace data = erf_inverse_data;

constexpr double seam = 0x1p-10;  // of the two ways

template <class T>
struct Common {
  Constant<T> one = 1, two = 2, half = T(0.5), seam = T(::orin::vector_math::seam), zero = 0, minus_zero = -T(0);
};
constexpr Common<double> common_d{};
constexpr Common<float> common_s{};
template <class V>
ORIN_INLINE const auto& common() {
  if constexpr (sizeof(typename V::Element) == 8)
    return in_memory(common_d);
  else
    return in_memory(common_s);
}

// The tables of the two scales: erfc^-1(v), and sqrt 2 times it.
struct Plain {
  static constexpr int log_factor = 1;  // w^2 = -log_factor log v
  static constexpr RowTable<10, double> fine{data::erfc_inverse::fine};
  static constexpr RowTable<4, double> medium{data::erfc_inverse::medium};
  static constexpr RowTable<4, float> single{data::erfc_inverse::single};
  static constexpr RowTable<2, float> coarse{data::erfc_inverse::coarse};
  static constexpr RowTable<10, double> tail_fine{data::erfc_inverse::tail_fine};
  static constexpr RowTable<4, double> tail_medium{data::erfc_inverse::tail_medium};
  static constexpr RowTable<4, float> tail_single{data::erfc_inverse::tail_single};
  static constexpr RowTable<2, float> tail_coarse{data::erfc_inverse::tail_coarse};
};
struct Quantile {
  static constexpr int log_factor = 2;
  static constexpr RowTable<10, double> fine{data::normal_quantile::fine};
  static constexpr RowTable<4, double> medium{data::normal_quantile::medium};
  static constexpr RowTable<4, float> single{data::normal_quantile::single};
  static constexpr RowTable<2, float> coarse{data::normal_quantile::coarse};
  static constexpr RowTable<10, double> tail_fine{data::normal_quantile::tail_fine};
  static constexpr RowTable<4, double> tail_medium{data::normal_quantile::tail_medium};
  static constexpr RowTable<4, float> tail_single{data::normal_quantile::tail_single};
  static constexpr RowTable<2, float> tail_coarse{data::normal_quantile::tail_coarse};
};
// |result| from v = c + t.
template <class S, Grade grade>
ORIN_INLINE Vec2d central(CellIndices<Vec2d> number, Vec2d t) {
  if constexpr (grade == Grade::ha)
    return accurate_polynomial(S::fine, number, t);
  else if constexpr (grade == Grade::la)
    return plain_polynomial(S::fine, number, t);
  else
    return polynomial(S::medium, number, t);
}
template <class S, Grade grade>
ORIN_INLINE Vec4f central(CellIndices<Vec4f> number, Vec4f t) {
  return polynomial(S::single, number, t);
}
template <class V>
constexpr int central_cells = sizeof(typename V::Element) == 8 ? 32 : 16;

// |result| from v; v stands for v 2^-scaled.
template <class S, Grade grade, int scaled, class V>
ORIN_INLINE V tail(V v) {
  using T = typename V::Element;
  const auto& c = common<V>();
  if constexpr (grade == Grade::ha) {
    const DoubleDouble log = log_d::logarithm_pair<scaled>(v);
    DoubleDouble square = fast_two_sum(c.zero - log.high, c.zero - log.low);
    if constexpr (S::log_factor == 2) square = {square.high + square.high, square.low + square.low};
    // w^2 from two parts of w: the first one's square and what it leaves of square.high are exact.
    const Vec2d w = max(sqrt(square.high), c.two);
    const DoubleDouble parts = split(w);
    const Vec2d remainder = (square.high - parts.high * parts.high) - parts.low * (w + parts.high);
    const Vec2d w_rest = (remainder + square.low) * (c.half / w);
    const Cell<Vec2d> cell = leading_bits<16, 1>(w);
    const Vec2d t = (w - cell.centre) + w_rest;
    const Vec2d t2 = t * t;
    const Rows<10, Vec2d> rows(S::tail_fine, cell.number);
    const auto [c8, c0_rest] = pair<4>(rows);
    const auto [c6, c7] = pair<3>(rows);
    const Vec2d top = (c6 + t * c7) + t2 * c8;
    const auto [c4, c5] = pair<2>(rows);
    const auto [c2, c3] = pair<1>(rows);
    const Vec2d high_terms = t2 * ((c2 + t * c3) + t2 * ((c4 + t * c5) + t2 * top));
    const auto [c0, c1] = pair<0>(rows);
    const DoubleDouble sum = fast_two_sum(w, c0);
    return sum.high + (sum.low + ((w_rest + c0_rest) + (t * c1 + high_terms)));
  } else {
    V square = c.zero - logarithm<grade, Base::e, scaled>(v);
    if constexpr (S::log_factor == 2) square = square + square;
    const V w = max(sqrt(square), c.two);
    const Cell<V> cell = leading_bits<16, 1>(w);
    const V t = w - cell.centre;
    if constexpr (sizeof(T) == 8 && grade == Grade::la) {
      const Rows<10, Vec2d> rows(S::tail_fine, cell.number);
      const Vec2d t2 = t * t;
      const Vec2d c8 = pair<4>(rows).first;
      return w + (sum_of_pairs<0, 3>(rows, t, t2) + (t2 * t2) * ((t2 * t2) * c8));
    } else if constexpr (sizeof(T) == 8) {
      return w + polynomial(S::tail_medium, cell.number, t);
    } else if constexpr (grade == Grade::la) {
      return w + polynomial(S::tail_single, cell.number, t);
    } else {
      return w + polynomial(S::tail_coarse, cell.number, t);
    }
  }
}

// What the functions make of an argument: v and the sign of the result.
template <class V>
struct Argument {
  V v, sign;
};

struct InverseErf : Plain {
  static constexpr const char* name_s = "vsErfInv";
  static constexpr const char* name_d = "vdErfInv";
  static constexpr float ordinary = 0.5f;

  template <class V>
  static ORIN_INLINE Argument<V> argument(V x) {
    return {common<V>().one - abs(x), x & V(common<V>().minus_zero)};
  }
  // 1 - |x| may be rounded, c not: t is exact.
  template <class V>
  static ORIN_INLINE V distance(V x, V, V centre) {
    return (common<V>().one - centre) - abs(x);
  }
  static ORIN_INLINE Vec4f complement(Vec4f x, Vec4f) { return abs(x); }
  template <class T>
  static ORIN_INLINE Vec4i beyond_fast(Vec4i words) {
    static constexpr Constant<std::int32_t> largest = sizeof(T) == 8 ? 0x3feff7ff : 0x3f7fbfff;  // below 1 - 2^-10
    return magnitude(words) > in_memory(largest);
  }
  template <class T>
  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    static constexpr Constant<std::int32_t> largest = sizeof(T) == 8 ? 0x3fefffff : 0x3f7fffff;  // below 1
    return magnitude(words) > in_memory(largest);
  }
  template <class T>
  static Outcome<T> outside_domain(T x) {
    using Limits = std::numeric_limits<T>;
    if (std::fabs(x) == 1) return {{std::copysign(Limits::infinity(), x)}, KOR_STATUS_SING};
    return {{Limits::quiet_NaN()}, KOR_STATUS_ERRDOM};
  }
};

// Functions of v: the argument or its complement.
struct OfSmaller {
  template <class V>
  static ORIN_INLINE V distance(V, V v, V centre) {
    return v - centre;
  }
  static ORIN_INLINE Vec4f complement(Vec4f, Vec4f v) { return common<Vec4f>().one - v; }
};

struct InverseErfc : Plain, OfSmaller {
  static constexpr const char* name_s = "vsErfcInv";
  static constexpr const char* name_d = "vdErfcInv";
  static constexpr float ordinary = 0.5f;

  template <class V>
  static ORIN_INLINE Argument<V> argument(V x) {
    const auto& c = common<V>();
    return {min(x, c.two - x), (x > c.one) & c.minus_zero};
  }
  template <class T>
  static ORIN_INLINE Vec4i beyond_fast(Vec4i words) {  // 2^-10, 2 - 2^-10
    return sizeof(T) == 8 ? outside<0x3f500000, 0x3ffffbff>(words) : outside<0x3a800000, 0x3fffdfff>(words);
  }
  template <class T>
  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {  // the least normal number, 2
    return sizeof(T) == 8 ? outside<0x00100000, 0x3fffffff>(words) : outside<0x00800000, 0x3fffffff>(words);
  }
  template <class T>
  static Outcome<T> outside_domain(T x) {
    using Limits = std::numeric_limits<T>;
    if (x == 0) return {{Limits::infinity()}, KOR_STATUS_SING};
    if (x == 2) return {{-Limits::infinity()}, KOR_STATUS_SING};
    return {{Limits::quiet_NaN()}, KOR_STATUS_ERRDOM};
  }
};

struct InverseNormal : Quantile, OfSmaller {
  static constexpr const char* name_s = "vsCdfNormInv";
  static constexpr const char* name_d = "vdCdfNormInv";
  static constexpr float ordinary = 0.25f;

  template <class V>
  static ORIN_INLINE Argument<V> argument(V x) {
    const auto& c = common<V>();
    const V smaller = min(x, c.one - x);
    return {smaller + smaller, (x < c.half) & c.minus_zero};
  }
  template <class T>
  static ORIN_INLINE Vec4i beyond_fast(Vec4i words) {  // 2^-11, 1 - 2^-11
    return sizeof(T) == 8 ? outside<0x3f400000, 0x3feffbff>(words) : outside<0x3a000000, 0x3f7fdfff>(words);
  }
  template <class T>
  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {  // the least normal number, 1
    return sizeof(T) == 8 ? outside<0x00100000, 0x3fefffff>(words) : outside<0x00800000, 0x3f7fffff>(words);
  }
  template <class T>
  static Outcome<T> outside_domain(T x) {
    using Limits = std::numeric_limits<T>;
    if (x == 0) return {{-Limits::infinity()}, KOR_STATUS_SING};
    if (x == 1) return {{Limits::infinity()}, KOR_STATUS_SING};
    return {{Limits::quiet_NaN()}, KOR_STATUS_ERRDOM};
  }
};

template <class F, Grade grade, class V>
ORIN_INLINE V near_result(V x, V v) {
  if constexpr (std::is_same_v<V, Vec4f> && grade == Grade::ep) {
    return polynomial(F::coarse, leading_bits_number<16, -10>(v), F::complement(x, v));
  } else {
    const Cell<V> cell = leading_bits<central_cells<V>, -10>(v);
    return central<F, grade>(cell.number, F::distance(x, v, cell.centre));
  }
}
template <class F, Grade grade, class V>
ORIN_INLINE V fast_inverse(V x) {
  if constexpr (std::is_same_v<F, InverseErf> && std::is_same_v<V, Vec2d> && grade == Grade::ha) {
    const auto [y, lowered] = lift(abs(x));
    return with_sign_of(near_result<F, grade>(y, F::argument(y).v) * lowered, x);
  } else {
    const auto [v, sign] = F::argument(x);
    return near_result<F, grade>(x, v) | sign;
  }
}
template <class F, Grade grade, class V>
ORIN_INLINE V wide_inverse(V x) {
  const auto& c = common<V>();
  const auto [v, sign] = F::argument(x);
  const V far = v < c.seam;
  const unsigned far_lanes = lane_bits(far);
  if (far_lanes == 0) return fast_inverse<F, grade>(x);
  const V result = tail<F, grade, 0>(min(v, c.seam)) | sign;
  if (far_lanes == (1u << V::lanes) - 1) return result;
  // An ordinary argument stands in where the tail is taken.
  const V near = select(far, V(static_cast<typename V::Element>(F::ordinary)), x);
  return select(far, result, fast_inverse<F, grade>(near));
}

// HA single: the double EP of both halves.
template <class F, bool wide>
ORIN_INLINE Vec4f by_double(Vec4f x) {
  const TwoVec2d parts = widen(x);
  if constexpr (wide)
    return narrow({wide_inverse<F, Grade::ep>(parts.low), wide_inverse<F, Grade::ep>(parts.high)});
  else
    return narrow({fast_inverse<F, Grade::ep>(parts.low), fast_inverse<F, Grade::ep>(parts.high)});
}

template <class F, class T, Grade grade>
struct Inverse : OneToOne<T> {
  using V = typename RegisterOf<T>::type;
  static constexpr bool through_double = sizeof(T) == 4 && grade == Grade::ha;
  static constexpr const char* name = sizeof(T) == 4 ? F::name_s : F::name_d;
  static constexpr T ordinary = F::ordinary;
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i beyond_fast(Vec4i words) { return F::template beyond_fast<T>(words); }
  static ORIN_INLINE Vec4i special_lanes(Vec4i words) { return F::template special_lanes<T>(words); }
  static ORIN_INLINE V fast(V x) {
    if constexpr (through_double)
      return by_double<F, false>(x);
    else
      return fast_inverse<F, grade>(x);
  }
  static ORIN_INLINE V wide(V x) {
    if constexpr (through_double)
      return by_double<F, true>(x);
    else
      return wide_inverse<F, grade>(x);
  }

  static Outcome<T> special(T x) {
    using Limits = std::numeric_limits<T>;
    if (x != x) return {{x + x}, KOR_STATUS_OK};
    if constexpr (!std::is_same_v<F, InverseErf>)
      if (x > 0 && x < Limits::min()) return {{subnormal(x)}, KOR_STATUS_OK};
    return F::outside_domain(x);
  }

 private:
  // v = x, or 2 x; floats are normal as doubles.
  static ORIN_INLINE T subnormal(T x) {
    constexpr int up = sizeof(T) == 8 ? 53 : 0;
    const double v = static_cast<double>(x) * F::log_factor * static_cast<double>(INT64_C(1) << up);
    const double sign = first_lane(F::argument(Vec2d(0x1p-20)).sign);
    return static_cast<T>(first_lane(tail < F, sizeof(T) == 8 ? grade : Grade::ep, up > (Vec2d(v)) | Vec2d(sign)));
  }
};

}  // namespace

#define ORIN_INVERSE(name, F, T, grade)                             \
  void ORIN_CALL name##_##grade(std::int32_t n, const T* a, T* r) { \
    elementwise<Inverse<F, T, Grade::grade>>({}, n, {a}, {r});      \
  }
#define ORIN_INVERSES(name, F)          \
  ORIN_INVERSE(name##_s, F, float, la)  \
  ORIN_INVERSE(name##_s, F, float, ha)  \
  ORIN_INVERSE(name##_s, F, float, ep)  \
  ORIN_INVERSE(name##_d, F, double, la) \
  ORIN_INVERSE(name##_d, F, double, ha) \
  ORIN_INVERSE(name##_d, F, double, ep)
ORIN_INVERSES(erf_inv, InverseErf)
ORIN_INVERSES(erfc_inv, InverseErfc)
ORIN_INVERSES(cdf_norm_inv, InverseNormal)
#undef ORIN_INVERSES
#undef ORIN_INVERSE

}  // namespace orin::vector_math
