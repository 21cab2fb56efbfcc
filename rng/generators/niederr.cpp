// niederr: Niederreiter points of 1 to 318 dimensions in base 2, u = x / 2^32.
// SPDX-License-Identifier: MIT
//
// Source    H. Niederreiter, J. Number Theory 30 (1988) 51-70; P. Bratley, B. L. Fox, H. Niederreiter, ACM TOMACS 2
//           (1992) 195-213, Algorithm 738, ACM TOMS 20 (1994) 494-495. State, order of points, selection and skips:
//           quasi.h.
// Method    Dimension i belongs to the i-th irreducible polynomial p over GF(2), by degree e, then by value. For each
//           q the Laurent series g / p^(q+1) = sum V[r] x^(-r-1) gives e rows of the generator matrix: row q e + u has
//           V[r+u] in column r. g of degree e - 1 is free; here V[qe] = 1 and V[qe+1 .. qe+e-1] = 0, which makes 1/2
//           the first point in every dimension. From there on the series follows the recurrence of p^(q+1).
// Proof     tests/rng/generators/quasi_test.cpp: the series by long division; the elementary intervals of the net
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

// V[0 .. 63] as bits, for the power p^(q+1) of degree M with V[first] = 1 as the only one of V[0 .. M-1].
uint64_t series(uint64_t power, uint32_t first) {
  const auto degree = static_cast<uint32_t>(std::bit_width(power)) - 1;
  const uint64_t taps = power ^ (uint64_t{1} << degree);
  uint64_t v = uint64_t{1} << first;
  for (uint32_t r = degree; r < 64; ++r) v |= static_cast<uint64_t>(std::popcount(taps & (v >> (r - degree))) & 1) << r;
  return v;
}

struct Niederr {
  static constexpr uint32_t most_dimensions = dimensions;
  static constexpr int32_t columns_id = 10, patterns_id = 10;

  static void columns(uint32_t dimension, uint32_t* v) {
    std::fill_n(v, quasi_columns * dimension, 0);
    for (uint32_t j = 0; j < dimension; ++j) {
      const auto degree = static_cast<uint32_t>(std::bit_width(polynomials.p[j])) - 1;
      uint64_t power = 1, bits = 0;
      for (uint32_t row = 0; row < quasi_columns; ++row) {
        const uint32_t u = row % degree;
        if (u == 0) {
          power = times(power, polynomials.p[j]);
          bits = series(power, row);
        }
        for (uint32_t c = 0; c < quasi_columns; ++c)
          v[c * dimension + j] |= static_cast<uint32_t>(bits >> (c + u) & 1) << (31 - row);
      }
    }
  }
};

using Engine = Quasi<Niederr>;
static_assert(sizeof(Engine::State) <= 10498 * sizeof(uint32_t));  // what copying a state copies

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_BEGIN_DECLS

ORIN_API int32_t ORIN_CALL __junBRngNiederrInitStream(int32_t method, void* stream, int32_t n, const uint32_t* params) {
  return init_quasi<Engine>(method, stream, n, params);
}

ORIN_API int32_t ORIN_CALL __junsBRngNiederr(void* stream, int32_t n, float* r, float a, float b) {
  return uniforms<Engine>(stream, n, r, a, b);
}

ORIN_API int32_t ORIN_CALL __jundBRngNiederr(void* stream, int32_t n, double* r, double a, double b) {
  return uniforms<Engine>(stream, n, r, a, b);
}

ORIN_API int32_t ORIN_CALL __juniBRngNiederr(void* stream, int32_t n, uint32_t* r) {
  return raw_outputs<Engine>(stream, n, r);
}

ORIN_END_DECLS
