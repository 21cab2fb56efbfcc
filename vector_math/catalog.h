// catalog.h: the function list and the catalog as records, for the programs that iterate over them.
// SPDX-License-Identifier: MIT
//
// Not part of the module: tests, benchmark and accuracy scanner read it.
#ifndef ORIN_VECTOR_MATH_CATALOG_H
#define ORIN_VECTOR_MATH_CATALOG_H

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "vector_math/grade.h"
#include "vector_math/kernels.h"

namespace orin::vector_math {

// Where the quick references of the catalog are looked up; functions that the standard library lacks are added here.
namespace reference_function {
using std::exp;
}  // namespace reference_function

struct Promise {
  const char* function;
  double ha_ulp_s, ha_ulp_d;
  double low_s, high_s, low_d, high_d;
  double usual_low, usual_high;
  bool reports_underflow;
};

inline constexpr Promise promises[] = {
#define ORIN_CATALOG(F, reference, quick, ha_s, ha_d, low_s, high_s, low_d, high_d, usual_low, usual_high, underflow) \
  {#F, ha_s, ha_d, low_s, high_s, low_d, high_d, usual_low, usual_high, #underflow[0] == 'r'},
#include "vector_math/catalog.def"
#undef ORIN_CATALOG
};

// A function of one argument and one result, of element type T.
template <class T>
struct UnaryFunction {
  static constexpr bool is_single = sizeof(T) == 4;
  using Kernel = void ORIN_CALL(std::int32_t, const T*, T*);

  const char* name;      // as in reports: "vdExp"
  const char* function;  // "Exp"
  Kernel* kernels[grades];
  const Promise* promise;

  T low() const { return static_cast<T>(is_single ? promise->low_s : promise->low_d); }
  T high() const { return static_cast<T>(is_single ? promise->high_s : promise->high_d); }
  double ha_ulp() const { return is_single ? promise->ha_ulp_s : promise->ha_ulp_d; }

  // Largest relative error of LA and EP.
  static double relative_bound(Grade grade) {
    return std::ldexp(1.0, grade == Grade::la ? (is_single ? -21 : -50) : (is_single ? -11 : -26));
  }
};

// The rows of the function list that have this shape and type and stand in the catalog.
template <class T>
std::vector<UnaryFunction<T>> unary_functions() {
  std::vector<UnaryFunction<T>> rows;
  [[maybe_unused]] const auto add = [&](const char* name, const char* function, auto* la, auto* ha, auto* ep) {
    if constexpr (std::is_same_v<decltype(la), typename UnaryFunction<T>::Kernel*>)
      for (const Promise& promise : promises)
        if (std::strcmp(promise.function, function) == 0) rows.push_back({name, function, {la, ha, ep}, &promise});
  };
#define ORIN_FUNCTION(t, F, SHAPE, LA, HA, EP, cost_la, cost_ha, cost_ep) add("v" #t #F, #F, &LA, &HA, &EP);
#include "vector_math/functions.def"
#undef ORIN_FUNCTION
  return rows;
}

}  // namespace orin::vector_math

#endif
