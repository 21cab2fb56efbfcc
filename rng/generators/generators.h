// generators: what a generator family gives to the registry.
// SPDX-License-Identifier: MIT
//
// Each family defines, at the foot of its own file, the four functions that orin/rng.h declares for it:
//   __junBRng<Family>InitStream (method, stream, n, params)   method 0 seed, 1 leapfrog, 2 skip ahead, others -2
//   __junsBRng<Family>, __jundBRng<Family> (stream, n, r, a, b)   n uniforms on [a, b)
//   __juniBRng<Family> (stream, n, r)   n raw outputs of WordBytes bytes each, as 32-bit words
// All return a status; n <= 0 writes nothing and returns 0. Rows stand in registry.cpp, in one table.
//
// The functions below fill the generation slots of rows that cannot generate. One function serves slots of three types:
// it reads none of its arguments, and the caller removes them (cdecl).
#ifndef ORIN_RNG_GENERATORS_GENERATORS_H
#define ORIN_RNG_GENERATORS_GENERATORS_H

#include "orin/rng.h"
#include "rng/stream_layout.h"

ORIN_BEGIN_DECLS
int32_t ORIN_CALL __junBRngAbstractNotSupported(void);  // JUN_RNG_WRONG_ABSTRACT
int32_t ORIN_CALL __junBRngTRNGNotSupported(void);      // JUN_RNG_NO_TRUE_RANDOM
ORIN_END_DECLS

namespace orin::rng {

// The InitStream of a family. Family::seed (stream, n, seeds) is defined for every n; leapfrog (stream, count, k) and skip
// (stream, n) are there if the family can. All return a status.
template <class Family>
int32_t init_stream(int32_t method, void* stream, int32_t n, const uint32_t* params) {
  constexpr bool leapfrogs = requires { &Family::leapfrog; }
  , skips = requires { &Family::skip; };
  if (method < JUN_RNG_SEED || method > JUN_RNG_SKIP_AHEAD) return JUN_RNG_BAD_METHOD;
  if (method == JUN_RNG_LEAPFROG && !leapfrogs) return JUN_RNG_NO_LEAPFROG;
  if (method == JUN_RNG_SKIP_AHEAD && !skips) return JUN_RNG_NO_SKIP_AHEAD;
  const bool reads_params = method != JUN_RNG_SEED || n > 0;
  if (stream == nullptr || (params == nullptr && reads_params)) return JUN_RNG_NULL_POINTER;
  if constexpr (leapfrogs) {
    if (method == JUN_RNG_LEAPFROG) return Family::leapfrog(stream, n, params[0]);
  }
  if constexpr (skips) {
    if (method == JUN_RNG_SKIP_AHEAD) return Family::skip(stream, params[0] | uint64_t{params[1]} << 32);
  }
  return Family::seed(stream, n, params);
}

}  // namespace orin::rng

#endif
