// shared_data: the process-wide table of read-only blocks that the chunks of several streams use.
// SPDX-License-Identifier: MIT
#ifndef ORIN_RNG_SHARED_DATA_H
#define ORIN_RNG_SHARED_DATA_H

#include <cstdint>

#include "orin/rng.h"

namespace orin::rng {

// A null key names nothing, as an all-zero one does.
inline bool is_zero_key(const uint64_t* key) noexcept { return key == nullptr || (key[0] | key[1]) == 0; }

// True if the table has an entry with this key.
bool is_shared(const uint64_t* key) noexcept;

// Makes a chunk with a nonzero key a user of the table. Its key has an entry with at least `least` bytes: one more
// reference, and the chunk points at the entry's data. It has none: the table takes the chunk's data over. The entry is
// too small or the table has no room: the key is cleared, and the chunk owns its data. Returns whether the chunk's own
// data block is still in use.
bool join_shared(JunStreamChunk& chunk, int32_t least) noexcept;

// The same for a key that must be new. False, with nothing changed, if it has an entry.
bool enter_shared(JunStreamChunk& chunk) noexcept;

// Drops one reference, and with the last one the entry and its data. False if the key has no entry.
bool leave_shared(const uint64_t* key) noexcept;

}  // namespace orin::rng

#endif
