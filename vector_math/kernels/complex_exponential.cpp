// complex_exponential: elementwise e^z and cos a + i sin a, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    e^(x + i y) = e^x cos y + i e^x sin y, by exp_core_d.h, sincos_core_d.h; in single precision by their
//           twins, HA in double
//           HA double  e^x = 2^k T (1 + p), cos y = c + c' by sincos_points_d.h:
//           e^x cos y = 2^k T (c + (c' + p (c + c')))
// Bounds    e^z HA each part 2 ulp; LA 8 ulp of the modulus, EP 2^-26, 2^-11 of it; CIS HA each part 1.1 ulp, single 1.3
// Budget    HA  in ulp: last sum 1/2, up to twice as heavy, last product 1/2; c' and p 2^-5; but where the point is
//           next to one of a part's zeros, c' and its sum up to twice 1/4
// Special   C Annex G; a part that overflows -> status 3; e^x below the least normal number -> status 4; finite x with
//           infinite y, and +inf with it -> NaN, status 1. CIS of +-inf -> NaN, status 1
#include "vector_math/kernels.h"
#include "vector_math/kernels/complex_periodic.h"
#include "vector_math/kernels/exp_core_s.h"

namespace orin::vector_math {

using namespace complex_periodic;

namespace {

// e^x = scale leading (1 + rest), scale a power of two.
struct Exponential {
  Vec2d scale, leading, rest;

  explicit ORIN_INLINE Exponential(Vec2d x) {
    static constexpr Constant<std::int64_t> one = INT64_C(1023) << 52;
    const auto& c = in_memory(exp_d::ha_constants);
    const Vec2d t = x * c.inverse + c.to_integer;
    const Vec2d n = t - c.to_integer;
    const auto [power, tail] = look_up_pairs(complex_periodic_data::tailed_powers, low_bits<6>(bits(t)));
    const Vec2d r = (x - n * c.step_high) - n * c.step_low;
    scale = from_bits(shift_left<52>(shift_right<6>(bits(t))) + in_memory(one));
    leading = power;
    rest = r + (tail + (r * r) * (c.c2 + r * (c.c3 + r * (c.c4 + r * c.c5))));
  }
};

struct Exp {
  static constexpr const char* name_c = "vcExp";
  static constexpr const char* name_z = "vzExp";
  template <class T>
  static constexpr std::int32_t last_word = sizeof(T) == 8 ? 0x40860fff : 0x42acffff;  // below 706, 86.5

  template <Grade grade>
  static ORIN_INLINE Complex<Vec4f> of(Vec4f x, const Parts<Vec4f, grade>& parts) {
    const Vec4f e = exp_s::Power<grade>::template of<0>(x);
    return {e * parts.cosine(), e * parts.sine()};
  }
  template <Grade grade>
  static ORIN_INLINE ComplexD of(Vec2d x, const Parts<Vec2d, grade>& parts) {
    if constexpr (grade == Grade::ha) {
      const Exponential e(x);
      static constexpr Constant<double> one = 1.0;
      const auto& [c, s] = parts;
      // The sine may be subnormal: what makes it larger comes before anything is rounded, what makes it smaller after.
      const Vec2d up = max(e.scale, in_memory(one)), down = min(e.scale, in_memory(one));
      const Vec2d lost = up * s.small - (up * e.rest) * s.sum();
      const Vec2d sine = up * s.leading + (up * s.first - lost);
      return {(e.scale * e.leading) * (c.leading + ((c.small + e.rest * c.sum()) - c.first)),
              (down * e.leading) * sine};
    }
    const Vec2d e = exp_d::Power<grade>::template of<0>(x);
    return {e * parts.cosine(), e * parts.sine()};
  }

  template <class T, Grade grade>
  static Outcome<KorComplex16> special(KorComplex16 z) {
    if (is_nan(z.im) || is_infinite(z.im)) {
      const std::int32_t status = is_infinite(z.im) && !is_nan(z.re) ? KOR_STATUS_ERRDOM : KOR_STATUS_OK;
      if (z.re == -infinity) return {{{0.0, std::copysign(0.0, z.im)}}, KOR_STATUS_OK};
      return {{{z.re == infinity ? infinity : not_a_number, not_a_number}}, status};
    }
    if (is_nan(z.re)) return {{{z.re + z.re, z.im == 0 ? z.im : not_a_number}}, KOR_STATUS_OK};
    const auto [sine, cosine] = sine_and_cosine<grade>(z.im);
    if (is_infinite(z.re)) {
      const double modulus = z.re > 0 ? infinity : 0.0;
      return {{{std::copysign(modulus, cosine), z.im == 0 ? z.im : std::copysign(modulus, sine)}}, KOR_STATUS_OK};
    }
    const std::int32_t status = z.re < double{ExponentialRange<T>::subnormal} ? KOR_STATUS_UNDERFLOW : KOR_STATUS_OK;
    if (std::fabs(z.re) >= 700)
      return checked<T>(far_exponential_times<grade>(z.re, cosine), far_exponential_times<grade>(z.re, sine), status);
    const double modulus = first_lane(exp_d::Power<grade>::template of<0>(z.re));
    return checked<T>(modulus * cosine, modulus * sine, status);
  }
};

template <class T, Grade grade>
struct Cis : OneToOther<T, ComplexOf<T>> {
  using V = typename RegisterOf<T>::type;
  using Angle = Angles<V, grade>;
  using Z = ComplexOf<T>;
  static constexpr const char* name = sizeof(T) == 8 ? "vzCIS" : "vcCIS";
  static constexpr T ordinary = 0;
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    static constexpr Constant<std::int32_t> last = sizeof(T) == 8 ? 0x7fefffff : 0x7f7fffff;
    return magnitude(words) > in_memory(last);
  }
  static ORIN_INLINE Vec4i beyond_fast(Vec4i words) {
    static constexpr Constant<std::int32_t> last = Angle::last_word;
    return magnitude(words) > in_memory(last);
  }
  static ORIN_INLINE Complex<V> fast(V a) { return value(Angle::near(a)); }
  static ORIN_INLINE Complex<V> wide(V a) { return value(Angle::any(a)); }
  static Outcome<Z> special(T a) {
    constexpr T nan = std::numeric_limits<T>::quiet_NaN();
    if (a != a) return {{{a + a, a + a}}, KOR_STATUS_OK};
    return {{{nan, nan}}, KOR_STATUS_ERRDOM};
  }

 private:
  static ORIN_INLINE Complex<V> value(const auto& parts) { return {parts.cosine(), parts.sine()}; }
};

}  // namespace

ORIN_COMPLEX_PERIODIC(exp, Straight<Exp>)

#define ORIN_CIS(name, T, grade)                                               \
  void ORIN_CALL name##_##grade(std::int32_t n, const T* a, ComplexOf<T>* r) { \
    elementwise<Cis<T, Grade::grade>>({}, n, {a}, {r});                        \
  }
ORIN_CIS(cis_c, float, la)
ORIN_CIS(cis_c, float, ha)
ORIN_CIS(cis_c, float, ep)
ORIN_CIS(cis_z, double, la)
ORIN_CIS(cis_z, double, ha)
ORIN_CIS(cis_z, double, ep)
#undef ORIN_CIS

}  // namespace orin::vector_math
