// complex_hyperbolic: elementwise sinh, cosh, tanh, sin, cos and tan of complex numbers, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    z = x + i y, S = sinh x, C = cosh x by sinh_cosh_core_d.h, s = sin y, c = cos y by sincos_core_d.h, HA by
//           sincos_points_d.h
//           sinh z = S c + i C s,  cosh z = C c + i S s,  tanh z = (S C + i s c)/(S^2 + c^2)
//           with the parts of a number exchanged:  sin z' = (sinh z)',  cos z' = conj(cosh z),  tan z' = (tanh z)'
//           HA products of sums (A + A')(a + a') = A a + (A a' + A' (a + a')): nothing is rounded but these two terms
//           tanh HA  (sinh 2x + i sin 2y)/(cosh 2x + cos 2y), but next to the poles, where that sum is below 2^-6
//           single precision in floats by hyperbolic_core_s.h, sincos_core_s.h, tanh of |x| beyond 43 as of 43:
//           off by 2^-122; HA in double
// Bounds    in ulp of the modulus: HA sinh, cosh 2.1, tanh 2.8; LA 8; EP 2^-26, 2^-11 of it
// Budget    HA  in ulp: A 1/2, for |x| beyond 1.4; product and sum 1/2 each; what they lack 2^-4. Next to a zero of
//           s the first product is none and the second counts: rounding of a', of C, of their product 1/2 each
//           tanh: sinh 2x, cosh 2x + cos 2y 0.53 each, up to twice as heavy, quotient 1/2; next to the poles S, s, c
//           0.53 each;  LA single  in 2^-24: S, C, s, c 3 each, product 1
// Special   C Annex G; a part that overflows -> status 3; infinite y, but tanh +-inf -> NaN, status 1
#include "vector_math/kernels.h"
#include "vector_math/kernels/complex_periodic.h"
#include "vector_math/kernels/hyperbolic_core_s.h"
#include "vector_math/kernels/log_base.h"
#include "vector_math/kernels/sinh_cosh_core_d.h"

namespace orin::vector_math {

using namespace complex_periodic;

namespace {

using sinh_cosh_d::SinhCosh;

// The same in floats.
template <Grade grade>
struct SinhCoshSingle {
  Vec4f x;
  hyperbolic_s::Parts parts;

  explicit ORIN_INLINE SinhCoshSingle(Vec4f argument) : x(argument), parts(hyperbolic_s::parts<grade>(abs(argument))) {}
  ORIN_INLINE Vec4f sinh() const {
    return with_sign_of(parts.a + (parts.a * parts.less_one + parts.b * parts.sine), x);
  }
  ORIN_INLINE Vec4f cosh() const { return parts.b + (parts.b * parts.less_one + parts.a * parts.sine); }
};
template <class V, Grade grade>
using SinhCoshOf = std::conditional_t<V::lanes == 2, SinhCosh<grade>, SinhCoshSingle<grade>>;

// sinh x and cosh x times a part, without rounding the numbers first. Zeros are given their sign.
ORIN_INLINE Vec2d sinh_times(const SinhCosh<Grade::ha>& h, Vec2d x, const auto& part) {
  const Vec2d factor = part.sum();
  return with_sign_of((h.a_rest * factor - h.minus_a * part.rest()) - h.minus_a * part.leading, x ^ factor);
}
ORIN_INLINE Vec2d cosh_times(const SinhCosh<Grade::ha>& h, const auto& part) {
  const Vec2d factor = part.sum();
  return with_sign_of(h.b * part.leading + (h.b * part.rest() + h.b_rest * factor), factor);
}

// The status where the sine and cosine of z.im are none.
inline std::int32_t status_of_no_angle(KorComplex16 z) {
  return is_infinite(z.im) && !is_nan(z.re) ? KOR_STATUS_ERRDOM : KOR_STATUS_OK;
}

struct Sinh {
  static constexpr const char* name_c = "vcSinh";
  static constexpr const char* name_z = "vzSinh";
  static constexpr const char* turned_name_c = "vcSin";
  static constexpr const char* turned_name_z = "vzSin";
  template <class T>
  static constexpr std::int32_t last_word = sizeof(T) == 8 ? sinh_cosh_d::largest_word : 0x42afffff;  // below 88

  template <Grade grade, class V>
  static ORIN_INLINE Complex<V> of(V x, const auto& parts) {
    const SinhCoshOf<V, grade> h(x);
    if constexpr (grade == Grade::ha) {
      return {sinh_times(h, x, parts.cosine_part), cosh_times(h, parts.sine_part)};
    }
    return {h.sinh() * parts.cosine(), h.cosh() * parts.sine()};
  }
  template <class Z>
  static ORIN_INLINE Z turned_back(Z z) {
    return {z.im, z.re};
  }

  template <class T, Grade grade>
  static Outcome<KorComplex16> special(KorComplex16 z) {
    if (is_nan(z.im) || is_infinite(z.im))
      return {{{z.re == 0 || is_infinite(z.re) ? z.re : not_a_number, not_a_number}}, status_of_no_angle(z)};
    if (is_nan(z.re)) return {{{z.re + z.re, z.im == 0 ? z.im : not_a_number}}, KOR_STATUS_OK};
    const auto [sine, cosine] = sine_and_cosine<grade>(z.im);
    if (is_infinite(z.re)) return {{{z.re * cosine, z.im == 0 ? z.im : std::copysign(infinity, sine)}}, KOR_STATUS_OK};
    const double x = std::fabs(z.re), sign = std::copysign(1.0, z.re);
    if (x >= 700)
      return checked<T>(sign * far_exponential_times<grade, 1>(x, cosine), far_exponential_times<grade, 1>(x, sine));
    const SinhCosh<grade> of_x(z.re);
    return checked<T>(first_lane(of_x.sinh()) * cosine, first_lane(of_x.cosh()) * sine);
  }
};

struct Cosh {
  static constexpr const char* name_c = "vcCosh";
  static constexpr const char* name_z = "vzCosh";
  static constexpr const char* turned_name_c = "vcCos";
  static constexpr const char* turned_name_z = "vzCos";
  template <class T>
  static constexpr std::int32_t last_word = Sinh::last_word<T>;

  template <Grade grade, class V>
  static ORIN_INLINE Complex<V> of(V x, const auto& parts) {
    const SinhCoshOf<V, grade> h(x);
    if constexpr (grade == Grade::ha) {
      return {cosh_times(h, parts.cosine_part), sinh_times(h, x, parts.sine_part)};
    }
    return {h.cosh() * parts.cosine(), h.sinh() * parts.sine()};
  }
  template <class V>
  static ORIN_INLINE Complex<V> turned_back(Complex<V> z) {
    static constexpr Constant<typename V::Element> minus_zero = -typename V::Element(0);
    return {z.re, z.im ^ V(in_memory(minus_zero))};
  }
  static KorComplex16 turned_back(KorComplex16 z) { return {z.re, -z.im}; }

  template <class T, Grade grade>
  static Outcome<KorComplex16> special(KorComplex16 z) {
    const double zero = std::copysign(0.0, std::copysign(1.0, z.re) * std::copysign(1.0, z.im));
    if (is_nan(z.im) || is_infinite(z.im)) {
      if (z.re == 0) return {{{not_a_number, zero}}, status_of_no_angle(z)};
      return {{{is_infinite(z.re) ? infinity : not_a_number, not_a_number}}, status_of_no_angle(z)};
    }
    if (is_nan(z.re)) return {{{z.re + z.re, z.im == 0 ? z.im : not_a_number}}, KOR_STATUS_OK};
    const auto [sine, cosine] = sine_and_cosine<grade>(z.im);
    if (is_infinite(z.re)) return {{{std::copysign(infinity, cosine), z.im == 0 ? zero : z.re * sine}}, KOR_STATUS_OK};
    const double x = std::fabs(z.re), sign = std::copysign(1.0, z.re);
    if (x >= 700)
      return checked<T>(far_exponential_times<grade, 1>(x, cosine), sign * far_exponential_times<grade, 1>(x, sine));
    const SinhCosh<grade> of_x(z.re);
    return checked<T>(first_lane(of_x.cosh()) * cosine, first_lane(of_x.sinh()) * sine);
  }
};

struct Tanh {
  static constexpr bool ha_of_twice = true;
  static constexpr const char* name_c = "vcTanh";
  static constexpr const char* name_z = "vzTanh";
  static constexpr const char* turned_name_c = "vcTan";
  static constexpr const char* turned_name_z = "vzTan";
  template <class T>
  static constexpr std::int32_t last_word = sizeof(T) == 8 ? 0x4075dfff : 0x43aeffff;  // below 350

  template <Grade grade, class V>
  static ORIN_INLINE Complex<V> of(V x, const auto& parts) {
    const V sine = parts.sine(), cosine = parts.cosine();
    if constexpr (V::lanes == 4) {
      static constexpr Constant<float> largest = 43.0f;  // its square is finite; from 9 on the modulus is 1
      x = with_sign_of(min(abs(x), in_memory(largest)), x);
    }
    const SinhCoshOf<V, grade> h(x);
    const V sinh = h.sinh();
    const V below = sinh * sinh + cosine * cosine;
    return {sinh * h.cosh() / below, sine * cosine / below};
  }
  static ORIN_INLINE ComplexD of_twice(Vec2d x, Vec2d y, auto angle) {
    static constexpr Constant<double> visible = 0x1p-6;
    const Vec2d size = abs(x);
    const SinhCosh<Grade::ha, true> h(size + size);
    const sincos_points_d::Parts parts = angle(y + y);
    const auto& cosine = parts.cosine_part;
    // Where S is large, what rounding took from a it took from b, too, and the quotient does not notice.
    const DoubleDouble sum = fast_two_sum(h.b, cosine.leading);
    const Vec2d below = sum.high + (sum.low + (h.b_rest + cosine.rest()));
    const ComplexD value{with_sign_of(h.sinh() / below, x), parts.sine() / below};
    // The error of the sum is 2^-61.
    const Vec2d lost = below < in_memory(visible);
    if (lane_bits(lost) == 0) [[likely]]
      return value;
    const ComplexD again = next_to_pole(x, y);
    return {select(lost, again.re, value.re), select(lost, again.im, value.im)};
  }
  template <class Z>
  static ORIN_INLINE Z turned_back(Z z) {
    return {z.im, z.re};
  }

  template <class T, Grade grade>
  static Outcome<KorComplex16> special(KorComplex16 z) {
    const double one = std::copysign(1.0, z.re);
    if (is_nan(z.im) || is_infinite(z.im)) {
      if (is_infinite(z.re)) return {{{one, std::copysign(0.0, z.im)}}, KOR_STATUS_OK};
      return {{{z.re == 0 ? z.re : not_a_number, not_a_number}}, status_of_no_angle(z)};
    }
    if (is_nan(z.re)) return {{{z.re + z.re, z.im == 0 ? z.im : not_a_number}}, KOR_STATUS_OK};
    if (grade == Grade::ha && std::fabs(z.re) < 350) {
      const ComplexD value = next_to_pole(Vec2d(z.re), Vec2d(z.im));
      return {{{first_lane(value.re), first_lane(value.im)}}, KOR_STATUS_OK};
    }
    // |x| is large: tanh z = +-1 + 4 i s c e^(-2 |x|).
    const auto [sine, cosine] = sine_and_cosine<grade>(z.im);
    const double e = first_lane(exp_d::Power<grade>::template of<0>(-std::min(std::fabs(z.re), 700.0)));
    return {{{one, sine * cosine * 4 * e * e}}, KOR_STATUS_OK};
  }

 private:
  // HA for any y, by S and c themselves, which keep their digits next to the poles.
  [[gnu::noinline]] static ComplexD next_to_pole(Vec2d x, Vec2d y) {
    const SinhCosh<Grade::ha> h(x);
    const sincos_points_d::Parts parts = Angles<Vec2d, Grade::ha>::any(y);
    const Vec2d sinh = h.sinh(), cosine = parts.cosine();
    const DoubleDouble larger = two_square(max(abs(sinh), abs(cosine)));
    const Vec2d smaller = min(abs(sinh), abs(cosine));
    const DoubleDouble below = fast_two_sum(larger.high, larger.low + smaller * smaller);
    return {quotient(two_product(sinh, h.cosh()), below), quotient(two_product(parts.sine(), cosine), below)};
  }
  // a/b, b > 0; a zero keeps its sign.
  static ORIN_INLINE Vec2d quotient(DoubleDouble a, DoubleDouble b) {
    const Vec2d q = a.high / b.high;
    const DoubleDouble product = two_product(q, b.high);
    return with_sign_of(q + (((a.high - product.high) - product.low) + (a.low - q * b.low)) / b.high, a.high);
  }
};

}  // namespace

ORIN_COMPLEX_PERIODIC(sinh, Straight<Sinh>)
ORIN_COMPLEX_PERIODIC(cosh, Straight<Cosh>)
ORIN_COMPLEX_PERIODIC(tanh, Straight<Tanh>)
ORIN_COMPLEX_PERIODIC(sin, Turned<Sinh>)
ORIN_COMPLEX_PERIODIC(cos, Turned<Cosh>)
ORIN_COMPLEX_PERIODIC(tan, Turned<Tanh>)

}  // namespace orin::vector_math
