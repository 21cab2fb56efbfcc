// catalog.h: the function list and the catalog as records, for the programs that iterate over them.
// SPDX-License-Identifier: MIT
//
// Not part of the module: tests, benchmark and accuracy scanner read it.
#ifndef ORIN_VECTOR_MATH_CATALOG_H
#define ORIN_VECTOR_MATH_CATALOG_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "vector_math/grade.h"
#include "vector_math/kernels.h"

namespace orin::vector_math {

// Where the quick references of the catalog are looked up; functions that the standard library lacks are added here.
namespace reference_function {
using std::acos;
using std::acosh;
using std::asin;
using std::asinh;
using std::atan;
using std::atan2;
using std::atanh;
using std::cbrt;
using std::ceil;
using std::cos;
using std::cosh;
using std::erf;
using std::erfc;
using std::exp;
using std::expm1;
using std::fabs;
using std::floor;
using std::hypot;
using std::lgamma;
using std::log;
using std::log10;
using std::log1p;
using std::nearbyint;
using std::pow;
using std::round;
using std::sin;
using std::sinh;
using std::sqrt;
using std::tan;
using std::tanh;
using std::tgamma;
using std::trunc;

// z = -x/sqrt 2 as a sum with its rest: the inverse root in two parts, the first so short that its product is exact.
inline long double normal_distribution(long double x) {
  constexpr long double inverse_high = 0x1.6ap-1L, inverse_low = 0x1.3cccfe779921165f6p-14L;
  const long double high = -x * inverse_high, low = -x * inverse_low;
  const long double z = high + low, rest = (high - z) + low;
  constexpr long double two_over_root_pi = 1.128379167095512573896L;
  return (std::erfc(z) - (std::isfinite(x) ? rest * two_over_root_pi * std::exp(-z * z) : 0)) / 2;
}
inline double normal_distribution(double x) {
  return static_cast<double>(normal_distribution(static_cast<long double>(x)));
}

// x with erf(x) = 1 - v, |v - 1| <= 1; u = 1 - v is given too, exactly. Halley's method, through erf next to 0 and
// through erfc, whose relative error is small in the tail, from 1/2 on.
inline long double inverse_of_complement(long double v, long double u) {
  if (u < 0) return -inverse_of_complement(2 - v, -u);
  if (!(v > 0)) return v == 0 ? HUGE_VALL : std::numeric_limits<long double>::quiet_NaN();
  if (u < 0x1p-40L) return u * 0.886226925452758013649L;
  const bool small = u < 0.5L;
  const long double logarithm = -std::log(v);
  long double x = small      ? u * (0.886L + 0.232L * u * u)
                  : v > 0.1L ? u * (0.875L + 0.33L * u * u)
                             : std::sqrt(logarithm - std::log(3.14L * logarithm) / 2);
  for (int round = 0; round < 6; ++round) {
    const long double excess = small ? std::erf(x) - u : v - std::erfc(x);
    long double step = excess / (1.128379167095512573896L * std::exp(-x * x));
    step /= 1 + x * step;
    x -= step;
    if (std::fabs(step) < 0x1p-25L * x) break;  // the next step would be its cube
  }
  return x;
}
inline long double inverse_erf(long double x) {
  return std::signbit(x) ? -inverse_of_complement(1 + x, -x) : inverse_of_complement(1 - x, x);
}
inline long double inverse_erfc(long double x) { return inverse_of_complement(x, 1 - x); }
inline long double normal_quantile(long double x) {
  return -1.414213562373095048802L *
         (x < 0.5L ? inverse_of_complement(2 * x, 1 - 2 * x) : -inverse_of_complement(2 - 2 * x, 2 * x - 1));
}
inline double inverse_erf(double x) { return static_cast<double>(inverse_erf(static_cast<long double>(x))); }
inline double inverse_erfc(double x) { return static_cast<double>(inverse_erfc(static_cast<long double>(x))); }
inline double normal_quantile(double x) { return static_cast<double>(normal_quantile(static_cast<long double>(x))); }
template <class Real>
Real plus(Real a, Real b) {
  return a + b;
}
template <class Real>
Real minus(Real a, Real b) {
  return a - b;
}
template <class Real>
Real times(Real a, Real b) {
  return a * b;
}
template <class Real>
Real over(Real a, Real b) {
  return a / b;
}
template <class Real>
Real square(Real a) {
  return a * a;
}
template <class Real>
Real inverse(Real a) {
  return 1 / a;
}
template <class Real>
Real fraction(Real a) {
  return std::isinf(a) ? std::copysign(Real(0), a) : a - std::trunc(a);
}
template <class Real>
Real inverse_sqrt(Real a) {
  return 1 / std::sqrt(a);
}
template <class Real>
Real inverse_cbrt(Real a) {
  return 1 / std::cbrt(a);
}
template <class Real>
Real pow2o3(Real a) {
  return std::cbrt(a) * std::cbrt(a);
}
template <class Real>
Real pow3o2(Real a) {
  return a * std::sqrt(a);
}
}  // namespace reference_function

struct Promise {
  const char* function;
  int result;
  // The quick reference; one of a single argument ignores the second.
  double (*quick_d)(double, double);
  long double (*quick_l)(long double, long double);
  double ha_ulp_s, ha_ulp_d;
  double low_s, high_s, low_d, high_d;
  double usual_low, usual_high;
  double second_low, second_high;
  bool reports_underflow, reports_nothing;
};

template <class Real>
Real call_quick(auto function, Real a, [[maybe_unused]] Real b) {
  if constexpr (requires { function(a); })
    return function(a);
  else
    return function(a, b);
}

inline constexpr Promise promises[] = {
#define ORIN_CATALOG(F, result, truth, quick, ha_s, ha_d, low_s, high_s, low_d, high_d, usual_low, usual_high,      \
                     second_low, second_high, underflow)                                                            \
  {#F,                                                                                                              \
   result,                                                                                                          \
   [](double a, double b) {                                                                                         \
     return call_quick(                                                                                             \
         [](auto... x) -> decltype(reference_function::quick(x...)) { return reference_function::quick(x...); }, a, \
         b);                                                                                                        \
   },                                                                                                               \
   [](long double a, long double b) {                                                                               \
     return call_quick(                                                                                             \
         [](auto... x) -> decltype(reference_function::quick(x...)) { return reference_function::quick(x...); }, a, \
         b);                                                                                                        \
   },                                                                                                               \
   ha_s,                                                                                                            \
   ha_d,                                                                                                            \
   low_s,                                                                                                           \
   high_s,                                                                                                          \
   low_d,                                                                                                           \
   high_d,                                                                                                          \
   usual_low,                                                                                                       \
   usual_high,                                                                                                      \
   second_low,                                                                                                      \
   second_high,                                                                                                     \
   #underflow[0] == 'r',                                                                                            \
   #underflow[0] == 'n'},
#include "vector_math/catalog.def"
#undef ORIN_CATALOG
};

// One result of a function of element type T. Shapes differ in what a kernel takes; call() hides that.
template <class T>
class RealFunction {
 public:
  enum class Shape { unary, binary, scalar, two_results };
  static constexpr bool is_single = sizeof(T) == 4;

  const char* name;      // as in reports: "vdExp"
  const char* function;  // "Exp"
  Shape shape;
  const Promise* promise;

  template <class Kernel>
  RealFunction(const char* name_, const char* function_, Shape shape_, const Promise* promise_, Kernel* la, Kernel* ha,
               Kernel* ep)
      : name(name_),
        function(function_),
        shape(shape_),
        promise(promise_),
        kernels_{reinterpret_cast<Any*>(la), reinterpret_cast<Any*>(ha), reinterpret_cast<Any*>(ep)} {}

  // The name of this result: "vdExp", "vdSinCos1".
  std::string label() const {
    return shape == Shape::two_results ? name + std::to_string(promise->result) : std::string(name);
  }
  int inputs() const { return shape == Shape::binary || shape == Shape::scalar ? 2 : 1; }
  T low() const { return static_cast<T>(is_single ? promise->low_s : promise->low_d); }
  T high() const { return static_cast<T>(is_single ? promise->high_s : promise->high_d); }
  double ha_ulp() const { return is_single ? promise->ha_ulp_s : promise->ha_ulp_d; }
  // The last product that makes a result subnormal halves the error so far, at least, and adds a rounding.
  double ha_ulp_of_subnormals() const { return 0.5 + ha_ulp() / 2; }
  double quick(double a, double b) const { return promise->quick_d(a, b); }
  long double quick(long double a, long double b) const { return promise->quick_l(a, b); }

  // The first grade that has the kernel of this one.
  int first_with_kernel_of(int grade) const {
    return static_cast<int>(std::find(kernels_, kernels_ + grade, kernels_[grade]) - kernels_);
  }

  // Largest relative error of LA and EP.
  static double relative_bound(Grade grade) {
    return std::ldexp(1.0, grade == Grade::la ? (is_single ? -21 : -50) : (is_single ? -11 : -26));
  }

  // n elements; `b` is not read by functions of one argument, and as b[0] by those with a scalar. The other result of
  // a function with two goes to a vector of its own.
  void call(int grade, std::int32_t n, const T* a, const T* b, T* r) const {
    Any* kernel = kernels_[grade];
    switch (shape) {
      case Shape::unary:
        return reinterpret_cast<Unary*>(kernel)(n, a, r);
      case Shape::binary:
        return reinterpret_cast<Binary*>(kernel)(n, a, b, r);
      case Shape::scalar:
        return reinterpret_cast<Scalar*>(kernel)(n, a, *b, r);
      case Shape::two_results: {
        thread_local std::vector<T> other;
        other.resize(static_cast<std::size_t>(std::clamp(n, 1, 1 << 20)));
        return promise->result == 1 ? reinterpret_cast<TwoResults*>(kernel)(n, a, r, other.data())
                                    : reinterpret_cast<TwoResults*>(kernel)(n, a, other.data(), r);
      }
    }
  }
  T call(int grade, T a, T b) const {
    T r;
    call(grade, 1, &a, &b, &r);
    return r;
  }

  using Any = void();
  using Unary = void ORIN_CALL(std::int32_t, const T*, T*);
  using Binary = void ORIN_CALL(std::int32_t, const T*, const T*, T*);
  using Scalar = void ORIN_CALL(std::int32_t, const T*, T, T*);
  using TwoResults = void ORIN_CALL(std::int32_t, const T*, T*, T*);

 private:
  Any* kernels_[grades];
};

// The rows of the function list that have this element type and stand in the catalog.
template <class T>
std::vector<RealFunction<T>> real_functions() {
  using Row = RealFunction<T>;
  std::vector<Row> rows;
  const auto add = [&](const char* name, const char* function, auto* la, auto* ha, auto* ep) {
    using Kernel = std::remove_pointer_t<decltype(la)>;
    const auto add_as = [&](typename Row::Shape shape) {
      for (const Promise& promise : promises)
        if (std::strcmp(promise.function, function) == 0)
          rows.emplace_back(name, function, shape, &promise, la, ha, ep);
    };
    if constexpr (std::is_same_v<Kernel, typename Row::Unary>) add_as(Row::Shape::unary);
    if constexpr (std::is_same_v<Kernel, typename Row::Binary>) add_as(Row::Shape::binary);
    if constexpr (std::is_same_v<Kernel, typename Row::Scalar>) add_as(Row::Shape::scalar);
    if constexpr (std::is_same_v<Kernel, typename Row::TwoResults>) add_as(Row::Shape::two_results);
  };
#define ORIN_FUNCTION(t, F, SHAPE, LA, HA, EP, cost_la, cost_ha, cost_ep) add("v" #t #F, #F, &LA, &HA, &EP);
#include "vector_math/functions.def"
#undef ORIN_FUNCTION
  return rows;
}

}  // namespace orin::vector_math

#endif
