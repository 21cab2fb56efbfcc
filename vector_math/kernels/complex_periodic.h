// complex_periodic.h: complex functions made of a sine, a cosine and exponentials, as records for the loop.
// SPDX-License-Identifier: MIT
//
// A function is a record F, periodic along the imaginary axis, with
//   name_c, name_z          the names in reports
//   last_word<T>            high word of the largest |re| that `of` takes, in precision T
//   of<grade>(x, parts)     the value at x + i y, x in Vec2d or, in LA and EP, Vec4f; parts: Parts<V, grade> of y
//   special<T, grade>(z)    the Outcome of one special argument of precision T, in double
// and where HA of doubles is made of the functions of 2 x and 2 y
//   ha_of_twice             of_twice(x, y, angle), angle giving the Parts of 2 y
// Turned<F> is the function along the other axis: arguments have their parts exchanged, results are F::turned_back.
// Single precision: LA and EP in floats, HA in doubles of grade EP, for 2^-26 is an eighth of its ulp.
#ifndef ORIN_VECTOR_MATH_KERNELS_COMPLEX_PERIODIC_H
#define ORIN_VECTOR_MATH_KERNELS_COMPLEX_PERIODIC_H

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "vector_math/kernels/exp_core_d.h"
#include "vector_math/kernels/exponential.h"
#include "vector_math/kernels/sincos_core_s.h"
#include "vector_math/kernels/sincos_points_d.h"
#include "vector_math/kernels/sincos_points_s.h"
#include "vector_math/simd/complex.h"

namespace orin::vector_math::complex_periodic {

using namespace simd;
using ComplexD = Complex<Vec2d>;

inline constexpr double infinity = std::numeric_limits<double>::infinity();
inline constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();
inline bool is_nan(double x) { return x != x; }
inline bool is_infinite(double x) { return std::fabs(x) == infinity; }

// Sine and cosine of an angle in a register. HA of doubles has them as leading numbers and what these lack.
template <class V, Grade grade>
struct Angles {
  using Parts = sincos_d::Parts<grade>;
  static constexpr std::int32_t last_word = sincos_d::reduce_to_word;  // of `near`
  static ORIN_INLINE Parts near(Vec2d y) { return Parts(sincos_d::reduce<grade>(y)); }
  static ORIN_INLINE Parts any(Vec2d y) { return Parts(sincos_d::reduce_any<grade>(y)); }
};
template <>
struct Angles<Vec2d, Grade::ha> {
  using Parts = sincos_points_d::Parts;
  static constexpr std::int32_t last_word = sincos_d::reduce_to_word;
  static ORIN_INLINE Parts near(Vec2d y) { return Parts(sincos_points_d::reduce(y)); }
  static ORIN_INLINE Parts any(Vec2d y) { return Parts(sincos_points_d::reduce_any(y)); }
};
template <Grade grade>
struct Angles<Vec4f, grade> {
  class Parts {
   public:
    explicit ORIN_INLINE Parts(const sincos_s::Angle& angle) : both_(sincos_s::sine_and_cosine<grade>(angle)) {}
    ORIN_INLINE Vec4f sine() const { return both_.first; }
    ORIN_INLINE Vec4f cosine() const { return both_.second; }

   private:
    Two<Vec4f> both_;
  };
  static constexpr std::int32_t last_word = sincos_s::last_word<grade>;
  static ORIN_INLINE Parts near(Vec4f y) { return Parts(sincos_s::QuarterTurns<grade>::reduce(y)); }
  static ORIN_INLINE Parts any(Vec4f y) { return Parts(sincos_s::QuarterTurns<grade>::reduce_any(y)); }
};
template <>
struct Angles<Vec4f, Grade::ha> {
  using Parts = sincos_points_s::Parts;
  static constexpr std::int32_t last_word = 0x497fffff;  // below 2^20
  static ORIN_INLINE Parts near(Vec4f y) { return Parts(sincos_points_s::reduce(y)); }
  static ORIN_INLINE Parts any(Vec4f y) { return Parts(sincos_points_s::reduce_any(y)); }
};
template <class V, Grade grade>
using Parts = typename Angles<V, grade>::Parts;

// The register and grade in which results of T are computed, and the bound of its angles' reduction.
template <class T, Grade grade>
struct Work {
  static constexpr bool widened = sizeof(T) == 4 && grade == Grade::ha;
  static constexpr Grade in_grade = widened ? Grade::ep : grade;
  using V = typename RegisterOf<T>::type;
  using Register = std::conditional_t<widened, Vec2d, V>;
  using Angle = Angles<Register, in_grade>;
  static constexpr std::int32_t last_word = widened ? 0x497fffff : Angle::last_word;  // below 2^20
};

// Sine and cosine of any finite number.
struct SineAndCosine {
  double sine, cosine;
};
template <Grade grade>
SineAndCosine sine_and_cosine(double y) {
  const auto parts = Angles<Vec2d, grade>::any(y);
  return {first_lane(parts.sine()), first_lane(parts.cosine())};
}

// e^x f 2^-halvings for |x| from 700 to 1500 (beyond, as there: 0 or an infinity unless f is 0), rounded to a subnormal
// once, and an infinity only where the result is, silently: e^x stays 2^1200 off, and a small f is drawn up first.
template <Grade grade, int halvings = 0>
double far_exponential_times(double x, double f) {
  if (x < 0) {
    const double v = first_lane(exp_d::Power<grade>::template of<1200 - halvings>(std::max(x, -1500.0)));
    return v * f * 0x1p-600 * 0x1p-600;
  }
  const double v = first_lane(exp_d::Power<grade>::template of<-1200 - halvings>(std::min(x, 1500.0)));
  if (std::fabs(f) >= 0x1p-100) {
    const double product = v * f;
    return std::fabs(product) >= 0x1p-176 ? std::copysign(infinity, f) : product * 0x1p600 * 0x1p600;
  }
  const double drawn = f * 0x1p1000;
  if (std::fabs(drawn) >= 0x1p900 / v) return std::copysign(infinity, f);
  const double product = drawn * v;
  return std::fabs(product) >= 0x1p824 ? std::copysign(infinity, f) : product * 0x1p200;
}

// The outcome in precision T: with its overflow, infinite where T is.
template <class T>
Outcome<KorComplex16> checked(double re, double im, std::int32_t status = KOR_STATUS_OK) {
  constexpr double half_past_largest = sizeof(T) == 8 ? infinity : 0x1.ffffffp127;  // rounds to infinity
  for (double* part : {&re, &im})
    if (std::fabs(*part) >= half_past_largest) {
      *part = std::copysign(infinity, *part);
      status = KOR_STATUS_OVERFLOW;
    }
  return {{{re, im}}, status};
}

template <class F>
struct Straight : F {
  template <class Z>
  static ORIN_INLINE Z turn(Z z) {
    return z;
  }
  template <class Z>
  static ORIN_INLINE Z turned_back(Z z) {
    return z;
  }
};
template <class F>
struct Turned : F {
  static constexpr const char* name_c = F::turned_name_c;
  static constexpr const char* name_z = F::turned_name_z;
  template <class Z>
  static ORIN_INLINE Z turn(Z z) {
    return {z.im, z.re};
  }
};

template <class F, class T, Grade grade>
struct Periodic : OneToOne<ComplexOf<T>> {
  using W = Work<T, grade>;
  using V = typename W::V;
  using Z = ComplexOf<T>;
  static constexpr bool is_double = sizeof(T) == 8;
  static constexpr bool of_twice = is_double && grade == Grade::ha && requires { F::ha_of_twice; };
  static constexpr std::int32_t doubling = of_twice ? 0x00100000 : 0;  // in words
  static constexpr const char* name = is_double ? F::name_z : F::name_c;
  static constexpr Z ordinary{T(0.5), T(0.5)};
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i special_lanes(Complex<Vec4i> w) {
    return outside(w, (is_double ? 0x7fefffff : 0x7f7fffff) - doubling);
  }
  static ORIN_INLINE Vec4i beyond_fast(Complex<Vec4i> w) { return outside(w, W::last_word - doubling); }
  static ORIN_INLINE Complex<V> fast(Complex<V> z) {
    return value(
        z, [](auto y) __attribute__((always_inline)) { return W::Angle::near(y); });
  }
  static ORIN_INLINE Complex<V> wide(Complex<V> z) {
    return value(
        z, [](auto y) __attribute__((always_inline)) { return W::Angle::any(y); });
  }
  static Outcome<Z> special(Z z) {
    constexpr Grade in_double = is_double ? grade : Grade::ep;
    const KorComplex16 turned = F::turn(KorComplex16{z.re, z.im});
    const Outcome<KorComplex16> outcome = F::template special<T, in_double>(turned);
    const KorComplex16 result = F::turned_back(outcome.value[0]);
    return {{{static_cast<T>(result.re), static_cast<T>(result.im)}}, outcome.status};
  }

 private:
  static ORIN_INLINE Vec4i outside(Complex<Vec4i> w, std::int32_t last_im) {
    w = F::turn(w);
    static constexpr Constant<std::int32_t> last = F::template last_word<T>;
    return (magnitude(w.re) > in_memory(last)) | (magnitude(w.im) > Vec4i(last_im));
  }
  template <class R>
  static ORIN_INLINE Complex<R> one(Complex<R> z, auto angle) {
    z = F::turn(z);
    if constexpr (of_twice) return F::turned_back(F::of_twice(z.re, z.im, angle));
    return F::turned_back(F::template of<W::in_grade>(z.re, angle(z.im)));
  }
  static ORIN_INLINE Complex<V> value(Complex<V> z, auto angle) {
    if constexpr (!W::widened) {
      return one(z, angle);
    } else {
      const TwoVec2d re = widen(z.re), im = widen(z.im);
      const ComplexD low = one(ComplexD{re.low, im.low}, angle), high = one(ComplexD{re.high, im.high}, angle);
      return {narrow({low.re, high.re}), narrow({low.im, high.im})};
    }
  }
};

#define ORIN_COMPLEX_PERIODIC_KERNEL(name, F, T, grade)                                   \
  void ORIN_CALL name##_##grade(std::int32_t n, const ComplexOf<T>* a, ComplexOf<T>* r) { \
    elementwise<Periodic<F, T, Grade::grade>>({}, n, {a}, {r});                           \
  }
#define ORIN_COMPLEX_PERIODIC(name, F)                  \
  ORIN_COMPLEX_PERIODIC_KERNEL(name##_c, F, float, la)  \
  ORIN_COMPLEX_PERIODIC_KERNEL(name##_c, F, float, ha)  \
  ORIN_COMPLEX_PERIODIC_KERNEL(name##_c, F, float, ep)  \
  ORIN_COMPLEX_PERIODIC_KERNEL(name##_z, F, double, la) \
  ORIN_COMPLEX_PERIODIC_KERNEL(name##_z, F, double, ha) \
  ORIN_COMPLEX_PERIODIC_KERNEL(name##_z, F, double, ep)

}  // namespace orin::vector_math::complex_periodic

#endif
