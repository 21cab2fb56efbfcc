// reference_cases.h: arguments with their exact results, as text that needs no multiprecision library to use.
// SPDX-License-Identifier: MIT
//
// A line of tests/data/vector_math/<name>.cases:
//   argument bits (of two arguments where the function has them), bits of the correctly rounded result, what the exact
//   result exceeds it by in 1/4096 ulp (signed hexadecimal), status
// The accuracy scanner writes the files, programs beside it those of a kind: <name>.<kind>.cases.
#ifndef ORIN_TESTS_VECTOR_MATH_REFERENCE_CASES_H
#define ORIN_TESTS_VECTOR_MATH_REFERENCE_CASES_H

#include <algorithm>
#include <bit>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "vector_math/catalog.h"

template <class T>
using BitsOf = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;

template <class T>
BitsOf<T> bits_of(T x) {
  return std::bit_cast<BitsOf<T>>(x);
}

// Order-preserving integer of a finite or infinite number: neighbours differ by one.
template <class T>
std::int64_t ordinal(T x) {
  const auto bits = static_cast<std::int64_t>(bits_of(std::fabs(x)));
  return std::signbit(x) ? -bits : bits;
}

template <class T>
struct ReferenceCase {
  T a, b;         // the arguments; b is 0 for a function of one
  T rounded;      // the correctly rounded result
  double excess;  // exact result less `rounded`, in ulp
  int status;

  // Spacing of the numbers at the exact result: below a power of two it is half of what it is above.
  double spacing() const {
    using Limits = std::numeric_limits<T>;
    const double magnitude = std::fabs(static_cast<double>(rounded));
    if (magnitude < static_cast<double>(Limits::min())) return static_cast<double>(Limits::denorm_min());
    const int exponent = std::ilogb(magnitude);
    const bool below = magnitude == std::ldexp(1.0, exponent) && (std::signbit(rounded) ? excess > 0 : excess < 0);
    return std::ldexp(1.0, std::max(exponent - (below ? 1 : 0), Limits::min_exponent - 1) + 1 - Limits::digits);
  }

  // Error of `result` in ulp.
  double error(T result) const {
    if (std::isnan(rounded) || std::isnan(result))
      return std::isnan(rounded) == std::isnan(result) ? 0 : std::numeric_limits<double>::infinity();
    if (std::isinf(rounded) || std::isinf(result))
      return rounded == result ? 0 : std::numeric_limits<double>::infinity();
    return std::fabs((static_cast<double>(result) - static_cast<double>(rounded)) / spacing() - excess);
  }
};

// The lines of <name>.cases, and of <name>.hard where that exists: arguments that a function's own program found.
template <class T>
std::vector<ReferenceCase<T>> read_cases(const orin::vector_math::RealFunction<T>& function) {
  std::vector<ReferenceCase<T>> cases;
  for (const char* kind : {".cases", ".hard"}) {
    const std::string path = std::string(ORIN_TEST_DATA) + "/vector_math/" + function.label() + kind;
    std::FILE* file = std::fopen(path.c_str(), "r");
    if (file == nullptr) continue;
    const auto number = [](std::uint64_t bits) { return std::bit_cast<T>(static_cast<BitsOf<T>>(bits)); };
    char line[200];
    while (std::fgets(line, sizeof line, file) != nullptr) {
      if (line[0] == '#') continue;
      std::uint64_t a, b = 0, rounded;
      char sign;
      unsigned excess;
      int status;
      const int fields = function.inputs() == 2 ? std::sscanf(line, "%" SCNx64 " %" SCNx64 " %" SCNx64 " %c%x %d", &a,
                                                              &b, &rounded, &sign, &excess, &status) -
                                                      1
                                                : std::sscanf(line, "%" SCNx64 " %" SCNx64 " %c%x %d", &a, &rounded,
                                                              &sign, &excess, &status);
      if (fields == 5)
        cases.push_back({number(a), number(b), number(rounded), (sign == '-' ? -1 : 1) * (excess / 4096.0), status});
    }
    std::fclose(file);
  }
  return cases;
}

// LA and EP promise a relative error: in ulp that is up to 2^52 (2^23) times the significand, and one spacing more on
// subnormal results. Infinities and NaN have no error.
template <class T>
double bound_in_ulp(const orin::vector_math::RealFunction<T>& function, orin::vector_math::Grade grade,
                    const ReferenceCase<T>& line) {
  if (!std::isfinite(line.rounded)) return 0;
  const double relative = function.relative_bound(grade);
  const double magnitude = std::fabs(static_cast<double>(line.rounded));
  const bool subnormal = magnitude < static_cast<double>(std::numeric_limits<T>::min());
  if (grade == orin::vector_math::Grade::ha) return subnormal ? function.ha_ulp_of_subnormals() : function.ha_ulp();
  if (subnormal) return 1 + relative * static_cast<double>(ordinal(static_cast<T>(magnitude)));
  return relative * (magnitude / line.spacing());
}

#endif
