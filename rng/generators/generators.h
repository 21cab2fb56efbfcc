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

// Answer of a family that can only be seeded to a method other than 0.
inline int32_t refuse_partition(int32_t method) {
  return method == JUN_RNG_LEAPFROG     ? JUN_RNG_NO_LEAPFROG
         : method == JUN_RNG_SKIP_AHEAD ? JUN_RNG_NO_SKIP_AHEAD
                                        : JUN_RNG_BAD_METHOD;
}

// Count of outputs that the params of method 2 hold, low word first.
inline uint64_t skip_count(const uint32_t* params) { return params[0] | uint64_t{params[1]} << 32; }

}  // namespace orin::rng

#endif
