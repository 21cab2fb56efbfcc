// registry: from a stream to the row of its generator.
// SPDX-License-Identifier: MIT
#ifndef ORIN_RNG_REGISTRY_H
#define ORIN_RNG_REGISTRY_H

#include <cstdint>

#include "orin/rng.h"
#include "rng/stream_layout.h"

namespace orin::rng {

// The row of a valid identifier, the identifier's sub-stream included; null for any other.
const JunBrngProperties* valid_row(int32_t brng) noexcept;

// The row of the stream's family; the sub-stream is not looked at. Null if the header holds no family's identifier.
const JunBrngProperties* row_of(const void* stream) noexcept;

// Bytes of the state after the header; 0 for a row too small for a stream.
inline int32_t state_bytes(const JunBrngProperties& row) noexcept {
  constexpr int32_t header_bytes = sizeof(StreamHeader);
  return row.StateBytes > header_bytes ? row.StateBytes - header_bytes : 0;
}

}  // namespace orin::rng

#endif
