// arcsine: elementwise asin x and acos x, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    HA, and LA of double: y = |x|, q = sqrt(1 - y^2); s the middle of y's bin, c = sqrt(1 - s^2);
//           asin y = asin s + asin r, acos y = acos s - asin r, |r| < 1/83
//           HA  r = (y - s)(y + s)/(y c + q s), y - s exact;  LA  r = y c - q s
//           HA, acos next to 1: acos y = asin(q + d), d = (1 - y^2 - q^2)/2q, what rounding left of q
//           EP, and LA of single: t = y or, beyond 1/2, sqrt((1 - y)/2);  asin t = t p(t^2), asin y = pi/2 - 2 asin t
// Bounds    HA 0.56 ulp, LA relative 2^-50, 2^-21, EP relative 2^-26, 2^-11
// Budget    HA  in ulp: roundings of r 4 2^-6, last rounding 1/2
//           LA  in units of rounding: q 1, products 2, asin s 1/2, sum 1/2; single t 1, p 1, sums 2
//           EP  polynomial 2^-27.4, single 2^-14.9, twice that next to 1/2
// Special   NaN -> NaN; |x| > 1 -> NaN, status 1
// Data      data/asin_data.h from tools/tables/asin.py
#include <cmath>
#include <limits>
#include <type_traits>

#include "vector_math/data/asin_data.h"
#include "vector_math/kernels.h"
#include "vector_math/kernels/angle.h"
#include "vector_math/kernels/log_base.h"
#include "vector_math/simd/elementwise.h"
#include "vector_math/simd/table.h"

namespace orin::vector_math {
namespace {

using namespace simd;
namespace data = asin_data;

struct BinsD {
  static constexpr const double* points = data::points_d;
  static constexpr const double* asin_pairs = data::asin_d;
  static constexpr const double* acos_pairs = data::acos_d;
  static constexpr int bin_shift = 47;   // leaves five bits of the fraction
  static constexpr int sign_shift = 54;  // takes the sign to 512
  Constant<double> split = data::split, first_y = data::first_y, first_w = data::first_w;
  Constant<std::int64_t> upper_rows = INT64_C(1) << 55;  // adds 256 to a row
  Constant<double> zero = 0.0, minus_zero = -0.0, half = 0.5, one = 1.0;
  Constant<double> tiny = 0x1p-1000;                     // keeps 0/0 away
  Constant<std::int64_t> leading = -(INT64_C(1) << 27);  // the first 26 bits
  Constant<double> q0 = data::ha_d_0, q1 = data::ha_d_1, q2 = data::ha_d_2;
};
struct BinsS {
  static constexpr const float* points = data::points_s;
  static constexpr const float* asin_pairs = data::asin_s;
  static constexpr const float* acos_pairs = data::acos_s;
  static constexpr int bin_shift = 18;
  static constexpr int sign_shift = 22;
  Constant<float> split = static_cast<float>(data::split), first_y = static_cast<float>(data::first_y),
                  first_w = static_cast<float>(data::first_w);
  Constant<std::int32_t> upper_rows = 1 << 26;  // adds 256 to a row
  Constant<float> zero = 0.0f, minus_zero = -0.0f, half = 0.5f, one = 1.0f;
  Constant<float> tiny = 0x1p-120f;
  Constant<std::int32_t> leading = -(1 << 12);  // the first 12 bits
  Constant<float> q0 = data::ha_s_0;
};
constexpr BinsD bins_d{};
constexpr BinsS bins_s{};
template <class V>
ORIN_INLINE const auto& bins_of() {
  if constexpr (sizeof(typename V::Element) == 8)
    return in_memory(bins_d);
  else
    return in_memory(bins_s);
}

// What turns a into b by exclusive or.
template <class T>
constexpr auto flip(T a, T b) {
  using Bits = typename Constant<T>::Register::Integer::Element;
  return __builtin_bit_cast(Bits, a) ^ __builtin_bit_cast(Bits, b);
}
template <class T>
struct Halves {
  using Bits = typename Constant<T>::Register::Integer::Element;
  Constant<T> half = T(0.5), one = T(1), minus_one = T(-1), zero = T(0), three = T(3),
              half_pi = vector_math::half_pi<T>;
  Constant<Bits> one_to_minus_two = flip(T(1), T(-2)), minus_one_to_two = flip(T(-1), T(2));
};
constexpr struct : Halves<double> {
  Constant<double> p0 = data::ep_d_0, p1 = data::ep_d_1, p2 = data::ep_d_2, p3 = data::ep_d_3, p4 = data::ep_d_4;
} halves_d{};
constexpr struct : Halves<float> {
  Constant<float> p0 = data::la_s_0, p1 = data::la_s_1, p2 = data::la_s_2, p3 = data::la_s_3, p4 = data::la_s_4;
  Constant<float> ep_p0 = data::ep_s_0, ep_p1 = data::ep_s_1, ep_p2 = data::ep_s_2;
} halves_s{};
template <class V>
ORIN_INLINE const auto& halves() {
  if constexpr (sizeof(typename V::Element) == 8)
    return in_memory(halves_d);
  else
    return in_memory(halves_s);
}

// The row of y in the low nine bits; the next bit is set.
template <class Bins, class V>
ORIN_INLINE auto row_of(const Bins& c, V y) {
  const V in_w = from_bits(shift_right<1>(bits(max(c.one - y, c.first_w))) ^ c.upper_rows);
  return shift_right<Bins::bin_shift>(bits(select(y > c.split, in_w, max(y, c.first_y))));
}
template <class V>
ORIN_INLINE V cosine_of(const auto& c, V y) {
  return sqrt((c.one - y) * (c.one + y));
}

// 1 - y^2 - q^2 where q is the root of 1 - y^2, rounded. 1 - y^2 = w (2 - w), w = 1 - y; 2 w less the square of q's
// leading bits is exact.
template <class V>
ORIN_INLINE V left_by_root(const auto& c, V y, V q) {
  const V w = c.one - y;
  const V leading = q & from_bits(c.leading);
  return (((w + w) - leading * leading) - (q - leading) * (q + leading)) - w * w;
}

// asin r - r.
template <class V>
ORIN_INLINE V bend(const auto& c, V r) {
  const V r2 = r * r;
  if constexpr (sizeof(typename V::Element) == 4)
    return (r * r2) * c.q0;
  else
    return (r * r2) * (c.q0 + r2 * (c.q1 + r2 * c.q2));
}

// asin t for the t of y, and a mask of the y beyond 1/2.
template <class V>
struct Half {
  V asin, beyond;
};
template <Grade grade, class V>
ORIN_INLINE Half<V> half_of(const auto& c, V y) {
  const V square = (c.one - y) * c.half;
  const V t = min(y, sqrt(square));
  const V t2 = min(y * y, square);  // need not wait for the root
  if constexpr (grade == Grade::ep && sizeof(typename V::Element) == 4)
    return {t * (c.ep_p0 + t2 * (c.ep_p1 + t2 * c.ep_p2)), y > c.half};
  else
    return {t + (t * t2) * ((c.p0 + t2 * c.p1) + (t2 * t2) * ((c.p2 + t2 * c.p3) + (t2 * t2) * c.p4)), y > c.half};
}

struct Asin {
  static constexpr const char* name_s = "vsAsin";
  static constexpr const char* name_d = "vdAsin";

  template <Grade grade, class V>
  static ORIN_INLINE V by_table(V x) {
    const auto& c = bins_of<V>();
    const V y = abs(x);
    const V q = cosine_of(c, y);
    const auto row = low_bits<9>(row_of(c, y));
    const auto [sine, cosine] = look_up_pairs(c.points, row);
    if constexpr (grade == Grade::ha) {
      const V positive = max(y, c.tiny);  // in the first bin the quotient is 1
      const V twice = positive * cosine + q * sine;
      const V r = (y - sine) * ((positive + sine) / max(twice, c.tiny));
      const auto [arc, rest] = look_up_pairs(c.asin_pairs, row);
      return with_sign_of(arc + (r + (rest + bend(c, r))), x);
    } else {
      const V r = y * cosine - q * sine;
      return with_sign_of(look_up<2>(c.asin_pairs, row) + (r + bend(c, r)), x);
    }
  }
  template <Grade grade, class V>
  static ORIN_INLINE V by_halves(V x) {
    const auto& c = halves<V>();
    const auto [asin, beyond] = half_of<grade>(c, abs(x));
    if constexpr (grade == Grade::ep && sizeof(typename V::Element) == 4)
      return with_sign_of(asin + (beyond & (c.half_pi - asin * c.three)), x);
    const V factor = c.one ^ (beyond & from_bits(c.one_to_minus_two));
    return with_sign_of((beyond & c.half_pi) + asin * factor, x);
  }
};

struct Acos {
  static constexpr const char* name_s = "vsAcos";
  static constexpr const char* name_d = "vdAcos";

  template <Grade grade, class V>
  static ORIN_INLINE V by_table(V x) {
    const auto& c = bins_of<V>();
    using Bins = std::remove_cvref_t<decltype(c)>;
    const V y = abs(x);
    const V q = cosine_of(c, y);
    // The angle of a negative x has rows of its own and r with the opposite sign.
    const V sign = x & c.minus_zero;
    const auto signed_row = row_of(c, y) ^ shift_right<Bins::sign_shift>(bits(sign));
    const auto row = low_bits<10>(signed_row);
    const auto [sine, cosine] = look_up_pairs(c.points, low_bits<9>(signed_row));
    if constexpr (grade == Grade::ha) {
      const auto [arc, rest] = look_up_pairs(c.acos_pairs, row);
      const V numerator = (sine - y) * (sine + y);
      const V denominator = max(y * cosine + q * sine, c.tiny);
      const V next_to_one = cosine == c.zero;
      if (lane_bits(next_to_one) != 0) [[unlikely]] {
        const V root = next_to_one & (q ^ sign);
        const V left = left_by_root(c, y, next_to_one & q) * c.half;
        const V r = (select(next_to_one, left, numerator) / denominator) ^ sign;
        return arc + (root + (r + (rest + bend(c, select(next_to_one, root, r)))));
      }
      const V r = (numerator / denominator) ^ sign;
      return arc + (r + (rest + bend(c, r)));
    } else {
      const V r = (q * sine - y * cosine) ^ sign;
      return look_up<2>(c.acos_pairs, row) + (r + bend(c, r));
    }
  }
  template <Grade grade, class V>
  static ORIN_INLINE V by_halves(V x) {
    const auto& c = halves<V>();
    const V y = abs(x);
    const auto [asin, beyond] = half_of<grade>(c, y);
    const V factor = c.minus_one ^ (beyond & from_bits(c.minus_one_to_two));
    return on_side<grade, V>({and_not(beyond, c.half_pi), asin * factor}, x < c.zero);
  }
};

template <class F, class T, Grade grade>
struct InverseCircular : OneToOne<T> {
  using V = typename RegisterOf<T>::type;
  static constexpr const char* name = sizeof(T) == 8 ? F::name_d : F::name_s;
  static constexpr T ordinary = 0;
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    static constexpr Constant<std::int32_t> largest = sizeof(T) == 8 ? 0x3fefffff : 0x3f800000;  // double: below 1
    return magnitude(words) > in_memory(largest);
  }
  static ORIN_INLINE V fast(V x) {
    if constexpr (grade == Grade::ha || (grade == Grade::la && sizeof(T) == 8))
      return F::template by_table<grade>(x);
    else
      return F::template by_halves<grade>(x);
  }
  static Outcome<T> special(T x) {
    if (x != x) return {{x + x}, KOR_STATUS_OK};
    if (std::fabs(x) > 1) return {{std::numeric_limits<T>::quiet_NaN()}, KOR_STATUS_ERRDOM};
    return {{first_lane(fast(V(x)))}, KOR_STATUS_OK};
  }
};

}  // namespace

#define ORIN_ARCSINE(T, t, grade)                                         \
  void ORIN_CALL asin_##t##_##grade(std::int32_t n, const T* a, T* r) {   \
    elementwise<InverseCircular<Asin, T, Grade::grade>>({}, n, {a}, {r}); \
  }                                                                       \
  void ORIN_CALL acos_##t##_##grade(std::int32_t n, const T* a, T* r) {   \
    elementwise<InverseCircular<Acos, T, Grade::grade>>({}, n, {a}, {r}); \
  }
ORIN_ARCSINE(float, s, la)
ORIN_ARCSINE(float, s, ha)
ORIN_ARCSINE(float, s, ep)
ORIN_ARCSINE(double, d, la)
ORIN_ARCSINE(double, d, ha)
ORIN_ARCSINE(double, d, ep)
#undef ORIN_ARCSINE

}  // namespace orin::vector_math
