// complex_catalog.h: the complex functions and their catalog as records, for the programs that iterate over them.
// SPDX-License-Identifier: MIT
//
// Not part of the module: tests, benchmark and accuracy scanner read it.
#ifndef ORIN_VECTOR_MATH_COMPLEX_CATALOG_H
#define ORIN_VECTOR_MATH_COMPLEX_CATALOG_H

#include <complex>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "vector_math/grade.h"
#include "vector_math/kernels.h"

namespace orin::vector_math {

// Where the quick references of the catalog are looked up; what the standard library lacks is added here.
namespace complex_reference {
using std::acos;
using std::acosh;
using std::asin;
using std::asinh;
using std::atan;
using std::atanh;
using std::conj;
using std::cos;
using std::cosh;
using std::exp;
using std::log;
using std::log10;
using std::pow;
using std::sin;
using std::sinh;
using std::sqrt;
using std::tan;
using std::tanh;
template <class T>
std::complex<T> plus(std::complex<T> a, std::complex<T> b) {
  return a + b;
}
template <class T>
std::complex<T> minus(std::complex<T> a, std::complex<T> b) {
  return a - b;
}
template <class T>
std::complex<T> times(std::complex<T> a, std::complex<T> b) {
  return a * b;
}
template <class T>
std::complex<T> times_conj(std::complex<T> a, std::complex<T> b) {
  return a * std::conj(b);
}
template <class T>
std::complex<T> over(std::complex<T> a, std::complex<T> b) {
  return a / b;
}
template <class T>
std::complex<T> argument(std::complex<T> a) {
  return std::arg(a);
}
template <class T>
std::complex<T> modulus(std::complex<T> a) {
  return std::abs(a);
}
template <class T>
std::complex<T> cis(std::complex<T> a) {
  return std::polar(T(1), a.real());
}
}  // namespace complex_reference

enum class Measure { by_modulus, by_part };

struct ComplexPromise {
  const char* function;
  double ha_ulp_c, ha_ulp_z, la_ulp;
  Measure measure;
  double low_c, high_c, low_z, high_z;
  double usual;
  bool is_silent, reports_underflow;
};

inline constexpr ComplexPromise complex_promises[] = {
#define ORIN_COMPLEX_CATALOG(F, truth, quick, ha_c, ha_z, la, measure, low_c, high_c, low_z, high_z, usual, silence) \
  {#F, ha_c, ha_z, la, Measure::measure, low_c, high_c, low_z, high_z, usual, #silence[0] == 's', #silence[0] == 'a'},
#include "vector_math/complex_catalog.def"
#undef ORIN_COMPLEX_CATALOG
};

// A complex function over parts of type T.
template <class T>
class ComplexFunction {
 public:
  using Z = std::conditional_t<sizeof(T) == 8, KorComplex16, KorComplex8>;
  enum class Shape { unary, binary, scalar, to_real, from_real };
  static constexpr bool is_single = sizeof(T) == 4;

  const char* name;      // as in reports: "vzExp"
  const char* function;  // "Exp"
  Shape shape;
  const ComplexPromise* promise;

  template <class Kernel>
  ComplexFunction(const char* name_, const char* function_, Shape shape_, const ComplexPromise* promise_, Kernel* la,
                  Kernel* ha, Kernel* ep)
      : name(name_),
        function(function_),
        shape(shape_),
        promise(promise_),
        kernels_{reinterpret_cast<Any*>(la), reinterpret_cast<Any*>(ha), reinterpret_cast<Any*>(ep)} {}

  std::string label() const { return name; }
  bool has_second() const { return shape == Shape::binary || shape == Shape::scalar; }
  std::size_t argument_size() const { return shape == Shape::from_real ? sizeof(T) : sizeof(Z); }
  std::size_t result_size() const { return shape == Shape::to_real ? sizeof(T) : sizeof(Z); }
  double low() const { return is_single ? promise->low_c : promise->low_z; }
  double high() const { return is_single ? promise->high_c : promise->high_z; }
  // In ulp of the modulus.
  double bound(Grade grade) const {
    if (grade == Grade::ha) return is_single ? promise->ha_ulp_c : promise->ha_ulp_z;
    return grade == Grade::la ? promise->la_ulp : is_single ? 0x1p12 : 0x1p26;
  }

  // n elements as they lie in memory; of `b` a scalar is read as the one element, and without a second argument nothing.
  void call(int grade, std::int32_t n, const void* a, const void* b, void* r) const {
    Any* kernel = kernels_[grade];
    const Z *za = static_cast<const Z*>(a), *zb = static_cast<const Z*>(b);
    switch (shape) {
      case Shape::unary:
        return reinterpret_cast<Unary*>(kernel)(n, za, static_cast<Z*>(r));
      case Shape::binary:
        return reinterpret_cast<Binary*>(kernel)(n, za, zb, static_cast<Z*>(r));
      case Shape::scalar:
        return reinterpret_cast<Scalar*>(kernel)(n, za, *zb, static_cast<Z*>(r));
      case Shape::to_real:
        return reinterpret_cast<ToReal*>(kernel)(n, za, static_cast<T*>(r));
      case Shape::from_real:
        return reinterpret_cast<FromReal*>(kernel)(n, static_cast<const T*>(a), static_cast<Z*>(r));
    }
  }
  // One element; what is real in it has an imaginary part of 0.
  Z call(int grade, Z a, Z b) const {
    Z r{0, 0};
    call(grade, 1, &a, &b, &r);
    return r;
  }

  using Any = void();
  using Unary = void ORIN_CALL(std::int32_t, const Z*, Z*);
  using Binary = void ORIN_CALL(std::int32_t, const Z*, const Z*, Z*);
  using Scalar = void ORIN_CALL(std::int32_t, const Z*, Z, Z*);
  using ToReal = void ORIN_CALL(std::int32_t, const Z*, T*);
  using FromReal = void ORIN_CALL(std::int32_t, const T*, Z*);

 private:
  Any* kernels_[grades];
};

// The rows of the function list that have these parts and stand in the complex catalog.
template <class T>
std::vector<ComplexFunction<T>> complex_functions() {
  using Row = ComplexFunction<T>;
  std::vector<Row> rows;
  const auto add = [&](const char* name, const char* function, auto* la, auto* ha, auto* ep) {
    using Kernel = std::remove_pointer_t<decltype(la)>;
    const auto add_as = [&](typename Row::Shape shape) {
      for (const ComplexPromise& promise : complex_promises)
        if (std::strcmp(promise.function, function) == 0)
          rows.emplace_back(name, function, shape, &promise, la, ha, ep);
    };
    if constexpr (std::is_same_v<Kernel, typename Row::Unary>) add_as(Row::Shape::unary);
    if constexpr (std::is_same_v<Kernel, typename Row::Binary>) add_as(Row::Shape::binary);
    if constexpr (std::is_same_v<Kernel, typename Row::Scalar>) add_as(Row::Shape::scalar);
    if constexpr (std::is_same_v<Kernel, typename Row::ToReal>) add_as(Row::Shape::to_real);
    if constexpr (std::is_same_v<Kernel, typename Row::FromReal>) add_as(Row::Shape::from_real);
  };
#define ORIN_FUNCTION(t, F, SHAPE, LA, HA, EP, cost_la, cost_ha, cost_ep) add("v" #t #F, #F, &LA, &HA, &EP);
#include "vector_math/functions.def"
#undef ORIN_FUNCTION
  return rows;
}

}  // namespace orin::vector_math

#endif
