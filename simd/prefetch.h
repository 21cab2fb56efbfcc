// prefetch.h: asks for what a loop will read some lines later.
// SPDX-License-Identifier: MIT
#ifndef ORIN_SIMD_PREFETCH_H
#define ORIN_SIMD_PREFETCH_H

#include <xmmintrin.h>

#include <cstddef>
#include <cstdint>

namespace orin::simd {

// The lines of `bytes` bytes that begin `ahead` bytes past `at`; there need not be anything.
template <std::uintptr_t ahead, std::size_t bytes>
void prefetch(const void* at) {
  constexpr std::uintptr_t line = 64;
  const auto first = reinterpret_cast<std::uintptr_t>(at) + ahead;
  for (std::uintptr_t next = first; next < first + bytes; next += line)
    _mm_prefetch(reinterpret_cast<const char*>(next), _MM_HINT_T0);
}

}  // namespace orin::simd

#endif
