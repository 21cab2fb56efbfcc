// chunks: the data blocks attached to a stream.
// SPDX-License-Identifier: MIT
#ifndef ORIN_RNG_CHUNKS_H
#define ORIN_RNG_CHUNKS_H

#include <cstdint>

#include "orin/rng.h"
#include "rng/stream_layout.h"

namespace orin::rng {

constexpr int block_alignment = 64;  // streams, chunk records, private chunk data

inline JunStreamChunk* first_chunk(const void* stream) noexcept {
  return reinterpret_cast<JunStreamChunk*>(static_cast<uintptr_t>(header_of(stream).chunks));
}

// The first chunk with this identifier, or null. A chunk may have been loaded from a file: whoever reads a table from
// it looks at its size first.
JunStreamChunk* find_chunk(const void* stream, int32_t id) noexcept;

// A block for chunk data, never null for want of bytes: an empty block has an address, too.
void* allocate_data(int32_t size) noexcept;

// What becomes of the data block given to attach.
enum class Block { taken, left };  // in use by the chunk or the shared table; still the caller's

// Attaches a chunk at the head of the stream's list. A failure leaves everything as it was, the block to the caller.
// Shared data of less than `least` bytes is not used: the chunk owns its block then.
int32_t attach(void* stream, int32_t id, const uint64_t* key, void* data, int32_t size, Block& block,
               int32_t least = 0) noexcept;

// Attaches data under a key of its own, which copies of the stream will share. Null, and the block still the caller's, if
// there is no memory.
const JunStreamChunk* attach_new(void* stream, int32_t id, void* data, int32_t size) noexcept;

}  // namespace orin::rng

#endif
