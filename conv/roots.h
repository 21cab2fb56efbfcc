// roots.h: roots of unity, evaluated by the compiler in extended precision.
// SPDX-License-Identifier: MIT
//
// Method    the angle is an exact fraction of a turn; symmetries bring it into the first octant; Taylor series in the
//           80-bit format of x86, which both supported compilers evaluate alike on every target.
// Bounds    the truncation is below 2^-70; a double or float rounded from the result is the nearest one but for ties
//           closer than the last bits of the 80-bit format.
#ifndef ORIN_CONV_ROOTS_H
#define ORIN_CONV_ROOTS_H

#include <cstdint>

namespace orin::conv {

struct Root {
  long double re, im;
};

// e^(2 pi i numerator / denominator); the denominator is a multiple of 8.
constexpr Root root_of_unity(std::uint32_t numerator, std::uint32_t denominator) {
  const std::uint32_t eighth = denominator / 8;
  const std::uint32_t reduced = numerator % denominator;
  const std::uint32_t octant = reduced / eighth;
  const std::uint32_t rest = octant % 2 == 0 ? reduced % eighth : eighth - reduced % eighth;

  constexpr long double two_pi = 6.283185307179586476925286766559L;
  const long double x = two_pi * static_cast<long double>(rest) / static_cast<long double>(denominator);
  long double cosine = 0, sine = 0, term = 1;
  for (int k = 0; k < 24; k += 2) {
    cosine += term;
    term *= x / static_cast<long double>(k + 1);
    sine += term;
    term *= -x / static_cast<long double>(k + 2);
  }

  const bool swapped = (octant + 1) / 2 % 2 == 1;  // octants 1, 2, 5, 6: nearer to the imaginary axis
  const long double re = swapped ? sine : cosine;
  const long double im = swapped ? cosine : sine;
  return {octant >= 2 && octant < 6 ? -re : re, octant >= 4 ? -im : im};
}

}  // namespace orin::conv

#endif
