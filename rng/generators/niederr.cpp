// niederr: Niederreiter points of 1 to 318 dimensions in base 2, u = x / 2^32.
// SPDX-License-Identifier: MIT
//
// Source    H. Niederreiter, J. Number Theory 30 (1988) 51-70; P. Bratley, B. L. Fox, H. Niederreiter, ACM TOMACS 2
//           (1992) 195-213, Algorithm 738, ACM TOMS 20 (1994) 494-495. State, order of points, selection and skips:
//           quasi.h.
// Method    Dimension i belongs to the i-th irreducible polynomial p over GF(2), by degree e, then by value. For each
//           q the Laurent series g / p^(q+1) = sum V[r] x^(-r-1) gives e rows of the generator matrix: row q e + u has
//           V[r+u] in column r. g of degree e - 1 is free; here V[qe] = 1 and V[qe+1 .. qe+e-1] = 0, which makes 1/2
//           the first point in every dimension.
// Proof     tests/rng/generators/sequence_test.cpp: the series by its recurrence; quasi_test.cpp: the elementary
//           intervals
#include "rng/generators/entries.h"
#include "rng/generators/quasi.h"

namespace orin::rng {
namespace {

constexpr uint32_t dimensions = 318;

constexpr uint64_t times(uint64_t x, uint64_t y) {  // polynomials over GF(2)
  uint64_t product = 0;
  for (; y != 0; y >>= 1, x <<= 1)
    if (y & 1) product ^= x;
  return product;
}

struct Polynomials {
  uint16_t p[dimensions];
};

// Sieve in the order of the numbers that the polynomials are as bits.
constexpr Polynomials irreducible_polynomials() {
  constexpr uint32_t end = 4096;
  bool reducible[end] = {};
  Polynomials list{};
  uint32_t count = 0;
  for (uint32_t p = 2; count < dimensions; ++p) {
    if (reducible[p]) continue;
    list.p[count++] = static_cast<uint16_t>(p);
    for (uint32_t q = p; std::bit_width(p) + std::bit_width(q) <= std::bit_width(end); ++q)
      reducible[times(q, p)] = true;
  }
  return list;
}

constexpr Polynomials polynomials = irreducible_polynomials();

// V[0 .. 63] from the top bit down: g / p^(q+1) by long division, where p^(q+1) = power and g is the polynomial part of
// power x^(-first-1), first = q e.
uint64_t series(uint64_t power, uint32_t first) {
  const auto degree = std::bit_width(power) - 1;
  uint64_t remainder = power >> (first + 1), v = 0;
  for (int r = 0; r < 64; ++r) {
    remainder <<= 1;
    const uint64_t bit = remainder >> degree & 1;
    remainder ^= power & (0 - bit);
    v = v << 1 | bit;
  }
  return v;
}

struct Niederr {
  static constexpr uint32_t most_dimensions = dimensions;
  static constexpr int32_t columns_id = 10, patterns_id = 10;

  static void columns(uint32_t dimension, uint32_t* v) {
    for (uint32_t j = 0; j < dimension; ++j) {
      const auto degree = static_cast<uint32_t>(std::bit_width(polynomials.p[j])) - 1;
      uint32_t column[quasi_columns] = {};
      uint64_t power = 1;
      for (uint32_t row = 0; row < quasi_columns; row += degree) {  // rows row .. row + degree - 1: V[c ..] in column c
        power = times(power, polynomials.p[j]);
        const uint64_t bits = series(power, row);
        const uint32_t rows = ~(0xffffffffU >> degree);
        for (uint32_t c = 0; c < quasi_columns; ++c)
          column[c] |= (static_cast<uint32_t>(bits << c >> 32) & rows) >> row;
      }
      for (uint32_t c = 0; c < quasi_columns; ++c) v[c * dimension + j] = column[c];
    }
  }
};

using Engine = Quasi<Niederr>;
static_assert(sizeof(Engine::State) <= 10498 * sizeof(uint32_t));  // what copying a state copies

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_RNG_ENTRIES(Niederr, init_quasi<Engine>, uniforms<Engine>, raw_outputs<Engine>)
