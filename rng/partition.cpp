// partition: leapfrog and skip-ahead of streams, and the modular powers that they rest on.
// SPDX-License-Identifier: MIT
//
// Method    the families jump in their InitStream; a jump by e steps is a power with exponent e, by square and multiply
//           in at most 64 rounds
#include <cstdint>

#include "rng/registry.h"
#include "rng/stream_layout.h"

namespace orin::rng {
namespace {

// base^e for an associative product, over the bits of e from the lowest; `one` for e = 0.
template <class T, class Product>
T power(T base, uint64_t e, T one, Product product) {
  T result = one;
  for (; e != 0; e >>= 1) {
    if (e & 1) result = product(result, base);
    base = product(base, base);
  }
  return result;
}

// Residues modulo m.
struct Ring {
  uint32_t m;

  uint32_t product(uint32_t a, uint32_t b) const { return static_cast<uint32_t>(uint64_t{a} * b % m); }
  uint32_t sum(uint32_t a, uint32_t b) const {
    const uint64_t s = uint64_t{a} + b;
    return static_cast<uint32_t>(s >= m ? s - m : s);
  }
};

// q0 + q1 t + q2 t^2 modulo t^3 - row[0] t^2 - row[1] t - row[2], the characteristic polynomial of the recurrence's
// companion matrix M. M is a root of it, so t^e stands for M^e, at a third of the products that matrices take.
struct Polynomial {
  uint32_t q[3];
};

struct PolynomialRing {
  Ring ring;
  uint32_t row[3];

  // t p(t) = q0 t + q1 t^2 + q2 (row[0] t^2 + row[1] t + row[2])
  Polynomial times_t(const Polynomial& p) const {
    return {{ring.product(p.q[2], row[2]), ring.sum(p.q[0], ring.product(p.q[2], row[1])),
             ring.sum(p.q[1], ring.product(p.q[2], row[0]))}};
  }
  // a(t) b(t) by Horner's rule in b
  Polynomial product(const Polynomial& a, const Polynomial& b) const {
    Polynomial p = scaled(a, b.q[2]);
    p = sum(times_t(p), scaled(a, b.q[1]));
    return sum(times_t(p), scaled(a, b.q[0]));
  }

 private:
  Polynomial scaled(const Polynomial& p, uint32_t c) const {
    return {{ring.product(p.q[0], c), ring.product(p.q[1], c), ring.product(p.q[2], c)}};
  }
  Polynomial sum(const Polynomial& a, const Polynomial& b) const {
    return {{ring.sum(a.q[0], b.q[0]), ring.sum(a.q[1], b.q[1]), ring.sum(a.q[2], b.q[2])}};
  }
};

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_BEGIN_DECLS

ORIN_API int32_t ORIN_CALL __junLeapfrogStream(void* stream, int32_t k, int32_t s) {
  if (s < 0) return JUN_RNG_BAD_STREAM_COUNT;
  if (stream == nullptr) return JUN_RNG_NULL_POINTER;
  const JunBrngProperties* row = row_of(stream);
  if (row == nullptr) return JUN_RNG_BAD_IDENTIFIER;
  const auto index = static_cast<uint32_t>(k);
  return row->InitStream(JUN_RNG_LEAPFROG, stream, s, &index);
}

ORIN_API int32_t ORIN_CALL __junSkipAheadStream(void* stream, uint64_t nskip) {
  if (stream == nullptr) return JUN_RNG_NULL_POINTER;
  const JunBrngProperties* row = row_of(stream);
  if (row == nullptr) return JUN_RNG_BAD_IDENTIFIER;
  const uint32_t words[2] = {static_cast<uint32_t>(nskip), static_cast<uint32_t>(nskip >> 32)};
  return row->InitStream(JUN_RNG_SKIP_AHEAD, stream, 2, words);
}

ORIN_API uint32_t ORIN_CALL __juniPowMod(uint32_t a, uint64_t e, uint32_t m) {
  if (m == 0) return 0;
  const Ring ring{m};
  return power(a, e, uint32_t{1}, [ring](uint32_t x, uint32_t y) { return ring.product(x, y); });
}

ORIN_API uint32_t ORIN_CALL __juniPowMod2P31M1(uint32_t a, uint64_t e) {
  constexpr uint32_t m = 0x7FFFFFFF;
  // 2^31 = 1 (mod m), so the product's high and low parts add up; x, y < m give a sum below 2m.
  return power(a % m, e, uint32_t{1}, [](uint32_t x, uint32_t y) {
    const uint64_t p = uint64_t{x} * y;
    const auto s = static_cast<uint32_t>((p & m) + (p >> 31));
    return s >= m ? s - m : s;
  });
}

ORIN_API uint64_t ORIN_CALL __juniPowMod2P59(uint64_t a, uint64_t e) {
  constexpr uint64_t mask = (uint64_t{1} << 59) - 1;
  return power(a, e, uint64_t{1}, [](uint64_t x, uint64_t y) { return x * y & mask; });
}

ORIN_API void ORIN_CALL __juniVect3PowMod(uint32_t v[3], const uint32_t row[3], uint32_t m, uint64_t e) {
  if (m == 0 || e == 0) return;
  const Ring ring{m};
  const PolynomialRing polynomials{ring, {row[0] % m, row[1] % m, row[2] % m}};
  const Polynomial one{{1 % m, 0, 0}}, t{{0, 1 % m, 0}};
  const Polynomial p =
      power(t, e, one, [&](const Polynomial& a, const Polynomial& b) { return polynomials.product(a, b); });
  // M^e v = q0 v + q1 M v + q2 M^2 v; M prepends the next value of the recurrence.
  uint32_t window[3] = {v[0] % m, v[1] % m, v[2] % m};
  uint32_t result[3] = {0, 0, 0};
  for (const uint32_t q : p.q) {
    for (int i = 0; i < 3; ++i) result[i] = ring.sum(result[i], ring.product(q, window[i]));
    uint32_t next = 0;
    for (int i = 0; i < 3; ++i) next = ring.sum(next, ring.product(polynomials.row[i], window[i]));
    window[2] = window[1];
    window[1] = window[0];
    window[0] = next;
  }
  for (int i = 0; i < 3; ++i) v[i] = result[i];
}

ORIN_END_DECLS
