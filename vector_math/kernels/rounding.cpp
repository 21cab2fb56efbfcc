// rounding: elementwise floor, ceil, trunc, round, rint, nearbyint and the two parts of modf, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    t = |x| where that is below 2^52 (2^23), else 0; w = (t + 2^52) - 2^52 is t rounded to the nearest integer,
//           ties to even. Trunc is w - [w > t], round w + [t - w = 1/2], floor and ceil w -+ [..] with the sign of x.
//           Whatever is not in t, the sign or the whole of x, is put back with a bitwise or.
//           Single precision cuts by a conversion to integers and back: Trunc is the cut t, floor and ceil start from it
//           with the sign of x.
// Bounds    exact
// Special   none: infinities, NaN and large numbers are their own integer parts and signs are kept, also that of a
//           zero; the fraction of an infinity is a zero of its sign, that of a NaN is NaN. No statuses.
#include "vector_math/kernels.h"
#include "vector_math/simd/elementwise.h"

namespace orin::vector_math {
namespace {

using namespace simd;

template <class T>
using Register = typename RegisterOf<T>::type;

enum class Rounding { floor, ceil, trunc, round, rint, nearby_int };

constexpr const char* names_s[] = {"vsFloor", "vsCeil", "vsTrunc", "vsRound", "vsRint", "vsNearbyInt"};
constexpr const char* names_d[] = {"vdFloor", "vdCeil", "vdTrunc", "vdRound", "vdRint", "vdNearbyInt"};

template <class T>
struct Constants {
  static constexpr bool is_double = sizeof(T) == 8;
  Constant<T> integers_from = is_double ? 0x1p52 : 0x1p23f;  // all numbers from here on are integers
  Constant<T> one = 1, half = T(0.5), minus_zero = -T(0);
  Constant<std::int32_t> word_of_integers = is_double ? 0x43300000 : 0x4b000000;
};
template <class T>
constexpr Constants<T> constants{};

// All bits set where |x| < 2^52.
ORIN_INLINE Vec2d has_fraction(Vec2d x) {
  const Vec4i words = _mm_castpd_si128(x.raw);
  const Vec4i below = magnitude(words) < in_memory(constants<double>).word_of_integers;
  return _mm_castsi128_pd(_mm_shuffle_epi32(below.raw, _MM_SHUFFLE(3, 3, 1, 1)));
}
ORIN_INLINE Vec4f has_fraction(Vec4f x) {
  return from_bits(magnitude(bits(x)) < in_memory(constants<float>).word_of_integers);
}

// x as t and the bits that are not in it.
template <class V>
struct Magnitude {
  V t, rest;

  explicit ORIN_INLINE Magnitude(V x) {
    const V mask = and_not(V(in_memory(constants<typename V::Element>).minus_zero), has_fraction(x));
    t = mask & x;
    rest = and_not(mask, x);
  }
  ORIN_INLINE V nearest() const {
    const V shift = in_memory(constants<typename V::Element>).integers_from;
    return (t + shift) - shift;
  }
  ORIN_INLINE V trunc() const {
    if constexpr (V::lanes == 4) {
      return to_float(to_int_cut(t));
    } else {
      const V w = nearest();
      return w - ((w > t) & V(in_memory(constants<typename V::Element>).one));
    }
  }
};

// Down or up from an integer w next to t: from the nearest or the cut one.
template <Rounding rounding, class V>
ORIN_INLINE V directed(V w, V t) {
  const V one = in_memory(constants<typename V::Element>).one;
  return rounding == Rounding::floor ? w - ((w > t) & one) : w + ((w < t) & one);
}

template <Rounding rounding, class V>
ORIN_INLINE V rounded(V x) {
  const auto& c = in_memory(constants<typename V::Element>);
  const Magnitude<V> m(x);
  if constexpr (rounding == Rounding::trunc) {
    return m.trunc() | m.rest;
  } else if constexpr (rounding == Rounding::round) {
    const V w = m.nearest();
    return (w + ((m.t - w == V(c.half)) & V(c.one))) | m.rest;
  } else if constexpr (rounding == Rounding::rint || rounding == Rounding::nearby_int) {
    return m.nearest() | m.rest;
  } else if constexpr (V::lanes == 4) {
    const V t = has_fraction(x) & x;  // with the sign of x
    return directed<rounding>(to_float(to_int_cut(t)), t) | m.rest;
  } else {
    const V sign = x & V(c.minus_zero);
    return directed<rounding>(m.nearest() ^ sign, m.t ^ sign) | m.rest;
  }
}

template <class T, Rounding rounding>
struct ToInteger : OneToOne<T> {
  static constexpr const char* name = (sizeof(T) == 8 ? names_d : names_s)[static_cast<int>(rounding)];
  static ORIN_INLINE Register<T> fast(Register<T> x) { return rounded<rounding>(x); }
};

template <class T>
struct Modf : OneToTwo<T> {
  static constexpr const char* name = sizeof(T) == 8 ? "vdModf" : "vsModf";
  static ORIN_INLINE Two<Register<T>> fast(Register<T> x) {
    const Magnitude<Register<T>> m(x);
    const Register<T> integer = m.trunc();
    const Register<T> sign = x & Register<T>(in_memory(constants<T>).minus_zero);
    return {integer | m.rest, ((m.t - integer) | sign) | and_not(x == x, x)};
  }
};

}  // namespace

#define ORIN_ROUNDING(name)                                             \
  void ORIN_CALL name##_s(std::int32_t n, const float* a, float* r) {   \
    elementwise<ToInteger<float, Rounding::name>>({}, n, {a}, {r});     \
  }                                                                     \
  void ORIN_CALL name##_d(std::int32_t n, const double* a, double* r) { \
    elementwise<ToInteger<double, Rounding::name>>({}, n, {a}, {r});    \
  }
ORIN_ROUNDING(floor)
ORIN_ROUNDING(ceil)
ORIN_ROUNDING(trunc)
ORIN_ROUNDING(round)
ORIN_ROUNDING(rint)
ORIN_ROUNDING(nearby_int)
#undef ORIN_ROUNDING

void ORIN_CALL modf_s(std::int32_t n, const float* a, float* r1, float* r2) {
  elementwise<Modf<float>>({}, n, {a}, {r1, r2});
}
void ORIN_CALL modf_d(std::int32_t n, const double* a, double* r1, double* r2) {
  elementwise<Modf<double>>({}, n, {a}, {r1, r2});
}

}  // namespace orin::vector_math
