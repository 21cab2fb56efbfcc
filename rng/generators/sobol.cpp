// sobol: Sobol' points of 1 to 40 dimensions in base 2, u = x / 2^32.
// SPDX-License-Identifier: MIT
//
// Source    I. M. Sobol', USSR Comp. Math. Math. Phys. 7 (1967) 86-112; direction numbers: P. Bratley, B. L. Fox,
//           Algorithm 659, ACM TOMS 14 (1988) 88-100. State, order of points, selection and skips: quasi.h.
// Method    With s the degree of the dimension's polynomial x^s + a[1] x^(s-1) + ... + 1 the columns satisfy
//               v[c] = a[1] v[c-1] ^ ... ^ a[s-1] v[c-s+1] ^ v[c-s] ^ (v[c-s] >> s),    v[c] = m[c] 2^(31-c) for c < s
// Proof     tests/rng/generators/quasi_peers_test.cpp: every dimension beside the GNU Scientific Library
#include "rng/data/sobol_directions.h"
#include "rng/generators/entries.h"
#include "rng/generators/quasi.h"

namespace orin::rng {
namespace {

struct Sobol {
  static constexpr uint32_t most_dimensions = 40;
  static constexpr int32_t columns_id = 9, patterns_id = 13;

  static void columns(uint32_t dimension, uint32_t* v) {
    for (uint32_t j = 0; j < dimension; ++j) {
      const SobolDimension& row = sobol_dimensions[j];
      const uint32_t degree = static_cast<uint32_t>(std::bit_width(row.polynomial)) - 1;
      const auto column = [=](uint32_t c) -> uint32_t& { return v[c * dimension + j]; };
      for (uint32_t c = 0; c < quasi_columns; ++c) {
        if (degree == 0 || c < degree) {
          column(c) = (degree == 0 ? 1U : row.first[c]) << (31 - c);
          continue;
        }
        uint32_t next = column(c - degree) ^ (column(c - degree) >> degree);
        for (uint32_t i = 1; i < degree; ++i)
          if (row.polynomial >> (degree - i) & 1) next ^= column(c - i);
        column(c) = next;
      }
    }
  }
};

using Engine = Quasi<Sobol>;
static_assert(sizeof(Engine::State) <= 2604 * sizeof(uint32_t));  // what copying a state copies

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_RNG_ENTRIES(Sobol, init_quasi<Engine>, uniforms<Engine>, raw_outputs<Engine>)
