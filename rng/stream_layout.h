// stream_layout: the bytes every stream begins with, and the way from a stream to its generator's state.
// SPDX-License-Identifier: MIT
//
// Layout    bytes 0..15 header, from byte 16 on the generator's state (StateBytes - 16 bytes, 16-byte aligned)
// Trust     a state may have been loaded from a file: generators use it without leaving their tables whatever its bytes
//           say (a position outside the table counts as the table's end)
#ifndef ORIN_RNG_STREAM_LAYOUT_H
#define ORIN_RNG_STREAM_LAYOUT_H

#include <cstddef>
#include <cstdint>

#include "orin/rng.h"

namespace orin::rng {

struct StreamHeader {
  int32_t brng;         // generator identifier, current or legacy scheme
  uint8_t created;      // 1 from creation on
  uint8_t reserved[3];  // not interpreted
  uint64_t chunks;      // address of the first JunStreamChunk, 0 for none
};
static_assert(sizeof(StreamHeader) == 16 && offsetof(StreamHeader, created) == 4 &&
              offsetof(StreamHeader, chunks) == 8);

inline StreamHeader& header_of(void* stream) { return *static_cast<StreamHeader*>(stream); }
inline const StreamHeader& header_of(const void* stream) { return *static_cast<const StreamHeader*>(stream); }

// The generator's state. State is a trivially copyable record; each family asserts that it fits its StateBytes.
template <class State>
State& state_of(void* stream) {
  return *reinterpret_cast<State*>(static_cast<unsigned char*>(stream) + sizeof(StreamHeader));
}
template <class State>
const State& state_of(const void* stream) {
  return *reinterpret_cast<const State*>(static_cast<const unsigned char*>(stream) + sizeof(StreamHeader));
}

// Sub-stream (parameter set) that the identifier in the header names, in both identifier schemes.
inline int32_t sub_stream_of(const void* stream) {
  int32_t row = 0, sub_stream = 0;
  __junGetBrngBaseOffset(header_of(stream).brng, &row, &sub_stream);
  return sub_stream;
}

}  // namespace orin::rng

#endif
