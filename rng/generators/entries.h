// entries.h: the exported functions of a generator family, one line at the foot of its file.
// SPDX-License-Identifier: MIT
#ifndef ORIN_RNG_GENERATORS_ENTRIES_H
#define ORIN_RNG_GENERATORS_ENTRIES_H

#include "orin/rng.h"

#define ORIN_RNG_INIT(name, init)                                                                 \
  ORIN_API int32_t ORIN_CALL __junBRng##name##InitStream(int32_t method, void* stream, int32_t n, \
                                                         const uint32_t* params) {                \
    return (init)(method, stream, n, params);                                                     \
  }
#define ORIN_RNG_UNIFORMS(type, name, T, uniforms)                                              \
  ORIN_API int32_t ORIN_CALL __jun##type##BRng##name(void* stream, int32_t n, T* r, T a, T b) { \
    return (uniforms)(stream, n, r, a, b);                                                      \
  }
#define ORIN_RNG_RAW(name, raw) \
  ORIN_API int32_t ORIN_CALL __juniBRng##name(void* stream, int32_t n, uint32_t* r) { return (raw)(stream, n, r); }

// All four; a template with a comma in its list stands in brackets.
#define ORIN_RNG_ENTRIES(name, init, uniforms, raw) \
  ORIN_BEGIN_DECLS                                  \
  ORIN_RNG_INIT(name, init)                         \
  ORIN_RNG_UNIFORMS(s, name, float, uniforms)       \
  ORIN_RNG_UNIFORMS(d, name, double, uniforms)      \
  ORIN_RNG_RAW(name, raw)                           \
  ORIN_END_DECLS

#endif
