// reference_cases.h: arguments with their exact results, as text that needs no multiprecision library to use.
// SPDX-License-Identifier: MIT
//
// A line of tests/data/vector_math/<name>.cases:
//   argument bits, bits of the correctly rounded result, what the exact result exceeds it by in 1/4096 ulp (signed
//   hexadecimal), status
// The accuracy scanner writes the files.
#ifndef ORIN_TESTS_VECTOR_MATH_REFERENCE_CASES_H
#define ORIN_TESTS_VECTOR_MATH_REFERENCE_CASES_H

#include <bit>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

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
  T argument;
  T rounded;      // the correctly rounded result
  double excess;  // exact result less `rounded`, in ulp
  int status;

  // Error of `result` in ulp.
  double error(T result) const {
    if (std::isnan(rounded) || std::isnan(result))
      return std::isnan(rounded) == std::isnan(result) ? 0 : std::numeric_limits<double>::infinity();
    return std::fabs(static_cast<double>(ordinal(result) - ordinal(rounded)) - excess);
  }
};

template <class T>
std::vector<ReferenceCase<T>> read_cases(const char* name) {
  std::vector<ReferenceCase<T>> cases;
  const std::string path = std::string(ORIN_TEST_DATA) + "/vector_math/" + name + ".cases";
  if (std::FILE* file = std::fopen(path.c_str(), "r")) {
    char line[200];
    while (std::fgets(line, sizeof line, file) != nullptr) {
      std::uint64_t argument, rounded;
      char sign;
      unsigned excess;
      int status;
      if (std::sscanf(line, "%" SCNx64 " %" SCNx64 " %c%x %d", &argument, &rounded, &sign, &excess, &status) != 5)
        continue;
      cases.push_back({std::bit_cast<T>(static_cast<BitsOf<T>>(argument)),
                       std::bit_cast<T>(static_cast<BitsOf<T>>(rounded)), (sign == '-' ? -1 : 1) * (excess / 4096.0),
                       status});
    }
    std::fclose(file);
  }
  return cases;
}

#endif
