// uniform: the continuous uniform distribution, straight from the stream's generator.
// SPDX-License-Identifier: MIT
//
// Method    the family's own uniforms on [a, b); with the clamping bit every result is brought into [a, b] afterwards,
//           which takes effect for families that do not keep to the interval themselves
#include <cstdint>

#include "rng/generators/sinks.h"
#include "rng/registry.h"
#include "rng/stream_layout.h"

namespace orin::rng {
namespace {

template <class T>
using Generate = int32_t(ORIN_CALL*)(void*, int32_t, T*, T, T);

// r[i] = min(b, max(a, r[i])), in the operand order of the SSE2 instructions
template <class T>
void clamp_all(int32_t n, T* r, T a, T b) {
  const FloatingPointFrame frame;
  for (int32_t i = 0; i < n; ++i) {
    const T low = a > r[i] ? a : r[i];
    r[i] = b < low ? b : low;
  }
}

template <class T>
int32_t uniform(int32_t method, void* stream, int32_t n, T* r, T a, T b, Generate<T> JunBrngProperties::*slot) {
  if (stream == nullptr) return JUN_RNG_NULL_POINTER;
  const JunBrngProperties* row = row_of(stream);
  if (row == nullptr) return JUN_RNG_BAD_IDENTIFIER;
  const int32_t status = (row->*slot)(stream, n, r, a, b);
  if (status == JUN_RNG_OK && (method & JUN_RNG_CLAMP) != 0) clamp_all(n, r, a, b);
  return status;
}

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_BEGIN_DECLS

ORIN_API int32_t ORIN_CALL _jundRngUniform(int32_t method, void* stream, int32_t n, double* r, double a, double b) {
  return uniform(method, stream, n, r, a, b, &JunBrngProperties::dBRng);
}

ORIN_API int32_t ORIN_CALL _junsRngUniform(int32_t method, void* stream, int32_t n, float* r, float a, float b) {
  return uniform(method, stream, n, r, a, b, &JunBrngProperties::sBRng);
}

ORIN_END_DECLS
