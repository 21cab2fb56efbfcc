// half_open: results that stay below the end of a half-open interval, whatever the rounding.
// SPDX-License-Identifier: MIT
#ifndef ORIN_RNG_HALF_OPEN_H
#define ORIN_RNG_HALF_OPEN_H

#include <bit>
#include <cstdint>
#include <type_traits>

namespace orin::rng {

// The largest value below b, for finite b.
template <class T>
T value_below(T b) noexcept {
  using Bits = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;
  constexpr Bits sign = Bits{1} << (8 * sizeof(T) - 1);
  if (b == 0) return std::bit_cast<T>(Bits{sign | 1});
  const Bits bits = std::bit_cast<Bits>(b);
  return std::bit_cast<T>(b > 0 ? Bits{bits - 1} : Bits{bits + 1});
}

}  // namespace orin::rng

#endif
