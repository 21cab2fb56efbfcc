// digest.h: one number for the bits of a kernel's results over arguments of all kinds.
// SPDX-License-Identifier: MIT
//
// Not part of the module: the accuracy scanner writes the digests, a test compares them on every target.
#ifndef ORIN_VECTOR_MATH_DIGEST_H
#define ORIN_VECTOR_MATH_DIGEST_H

#include <bit>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <type_traits>

#include "vector_math/catalog.h"
#include "vector_math/complex_catalog.h"

namespace orin::vector_math {

// FNV-1a, a word at a time, over the results of 2^20 arguments whose bit patterns step evenly through all of them;
// second arguments step at another pace.
template <class T>
std::uint64_t digest(const RealFunction<T>& function, int grade) {
  using Bits = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
  constexpr int count = 1 << 20, block = 1024;
  constexpr Bits step = static_cast<Bits>(static_cast<Bits>(-1) / count) | 1;  // odd: the low bits vary too
  std::uint64_t sum = UINT64_C(0xcbf29ce484222325);
  Bits argument = 0, second = 0;
  T a[block], b[block], r[block];
  for (int done = 0; done < count; done += block) {
    for (T& x : a) {
      x = std::bit_cast<T>(argument);
      argument = static_cast<Bits>(argument + step);
    }
    for (T& x : b) {
      x = std::bit_cast<T>(second);
      second = static_cast<Bits>(second + step * 1021);
    }
    function.call(grade, block, a, b, r);
    for (const T& y : r) sum = (sum ^ std::bit_cast<Bits>(y)) * UINT64_C(0x100000001b3);
  }
  return sum;
}

// The same over complex arguments, whose parts step at paces of their own.
template <class T>
std::uint64_t digest(const ComplexFunction<T>& function, int grade) {
  using Bits = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
  using Z = typename ComplexFunction<T>::Z;
  constexpr int count = 1 << 18, block = 1024;
  constexpr Bits step = static_cast<Bits>(static_cast<Bits>(-1) / count) | 1;
  std::uint64_t sum = UINT64_C(0xcbf29ce484222325);
  Bits places[4] = {0, 0, 0, 0};
  const auto next = [&](int k) {
    constexpr Bits paces[4] = {1, 1021, 4093, 16381};
    places[k] = static_cast<Bits>(places[k] + step * paces[k]);
    return std::bit_cast<T>(places[k]);
  };
  Z a[block], b[block];
  T real[block], r[2 * block];
  const bool from_real = function.shape == ComplexFunction<T>::Shape::from_real;
  const int results = block * static_cast<int>(function.result_size() / sizeof(T));
  for (int done = 0; done < count; done += block) {
    for (int i = 0; i < block; ++i) {
      a[i] = {next(0), next(1)};
      b[i] = {next(2), next(3)};
      real[i] = a[i].re;
    }
    function.call(grade, block, from_real ? static_cast<const void*>(real) : a, b, r);
    for (int i = 0; i < results; ++i) sum = (sum ^ std::bit_cast<Bits>(r[i])) * UINT64_C(0x100000001b3);
  }
  return sum;
}

// The stored digests by "name grade", from lines of these and a hexadecimal number.
inline std::map<std::string, std::uint64_t> read_digests(const char* path) {
  std::map<std::string, std::uint64_t> digests;
  if (std::FILE* file = std::fopen(path, "r")) {
    char name[80], grade[8];
    std::uint64_t value;
    while (std::fscanf(file, "%79s %7s %" SCNx64, name, grade, &value) == 3)
      digests[std::string(name) + " " + grade] = value;
    std::fclose(file);
  }
  return digests;
}

}  // namespace orin::vector_math

#endif
