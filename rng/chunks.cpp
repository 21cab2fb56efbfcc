// chunks: the list of data blocks that hangs off a stream's header.
// SPDX-License-Identifier: MIT
//
// Owner     the stream owns the records; a chunk with a zero key owns its data, any other borrows the shared table's
// Order     new chunks go to the head, so a copied or loaded list comes out reversed
#include "rng/chunks.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "rng/shared_data.h"
#include "service/late_binding.h"

namespace orin::rng {
namespace {

static_assert(sizeof(void*) != 4 || (sizeof(JunStreamChunk) == 32 && offsetof(JunStreamChunk, next) == 12 &&
                                     offsetof(JunStreamChunk, key) == 16));

// A private chunk that is in no list; null if there is no memory.
JunStreamChunk* new_chunk(int32_t id, void* data, int32_t size) noexcept {
  auto* chunk = static_cast<JunStreamChunk*>(service::allocate(sizeof(JunStreamChunk), block_alignment));
  if (chunk != nullptr) *chunk = {id, size, data, nullptr, {0, 0}};
  return chunk;
}

void push(void* stream, JunStreamChunk* chunk) noexcept {
  chunk->next = first_chunk(stream);
  header_of(stream).chunks = reinterpret_cast<uintptr_t>(chunk);
}

void release(JunStreamChunk* chunk) noexcept {
  if (!leave_shared(chunk->key)) service::deallocate(chunk->data);
  service::deallocate(chunk);
}

// The data that a copy of the chunk starts with: the block itself where it is shared, else a block of the copy's own.
// False if there is no memory for it.
bool copy_data(const JunStreamChunk& source, void*& data) noexcept {
  data = source.data;
  if (data == nullptr || is_shared(source.key)) return true;
  data = allocate_data(source.size);
  if (data == nullptr) return false;
  std::memcpy(data, source.data, static_cast<std::size_t>(std::max(source.size, 0)));
  return true;
}

int32_t copy_chunk(void* stream, const JunStreamChunk& source) noexcept {
  void* data = nullptr;
  if (!copy_data(source, data)) return JUN_RNG_NO_MEMORY;
  Block block = Block::left;
  const int32_t status = attach(stream, source.id, source.key, data, source.size, block);
  if (block == Block::left && data != source.data) service::deallocate(data);
  return status;
}

}  // namespace

JunStreamChunk* find_chunk(const void* stream, int32_t id) noexcept {
  JunStreamChunk* chunk = first_chunk(stream);
  while (chunk != nullptr && chunk->id != id) chunk = chunk->next;
  return chunk;
}

void* allocate_data(int32_t size) noexcept {
  return service::allocate(static_cast<std::size_t>(std::max(size, 1)), block_alignment);
}

int32_t attach(void* stream, int32_t id, const uint64_t* key, void* data, int32_t size, Block& block,
               int32_t least) noexcept {
  block = Block::left;
  JunStreamChunk* chunk = new_chunk(id, data, size);
  if (chunk == nullptr) return JUN_RNG_NO_MEMORY;
  block = Block::taken;
  if (!is_zero_key(key)) {
    std::copy_n(key, 2, chunk->key);
    if (!join_shared(*chunk, least)) block = Block::left;
  }
  push(stream, chunk);
  return JUN_RNG_OK;
}

// Two threads may be given the same key within one tick of the time stamp: the second to enter takes another one.
const JunStreamChunk* attach_new(void* stream, int32_t id, void* data, int32_t size) noexcept {
  JunStreamChunk* chunk = new_chunk(id, data, size);
  if (chunk == nullptr) return nullptr;
  do {
    __junGenerateNewGlobalRODataTableEntryId(chunk->key, id);
  } while (!enter_shared(*chunk));
  push(stream, chunk);
  return chunk;
}

}  // namespace orin::rng

using namespace orin::rng;

ORIN_BEGIN_DECLS

ORIN_API int32_t ORIN_CALL __junAddChunk(void* stream, int32_t id, const uint64_t* key, void* data, int32_t size) {
  if (stream == nullptr) return JUN_RNG_NULL_POINTER;
  Block block;
  return attach(stream, id, key, data, size, block);
}

ORIN_API void* ORIN_CALL __junSearchChunk(const void* stream, int32_t id) {
  const JunStreamChunk* chunk = stream != nullptr ? find_chunk(stream, id) : nullptr;
  return chunk != nullptr ? chunk->data : nullptr;
}

ORIN_API int32_t ORIN_CALL __junGetNumChunks(const void* stream) {
  if (stream == nullptr) return 0;
  int32_t count = 0;
  for (const JunStreamChunk* chunk = first_chunk(stream); chunk != nullptr; chunk = chunk->next) ++count;
  return count;
}

ORIN_API void ORIN_CALL __junDeleteChunks(void* stream) {
  if (stream == nullptr) return;
  for (JunStreamChunk* chunk = first_chunk(stream); chunk != nullptr;) {
    JunStreamChunk* next = chunk->next;
    release(chunk);
    chunk = next;
  }
  header_of(stream).chunks = 0;
}

ORIN_API int32_t ORIN_CALL __junCopyChunks(void* stream, const void* source) {
  if (stream == nullptr || source == nullptr) return JUN_RNG_NULL_POINTER;
  for (const JunStreamChunk* chunk = first_chunk(source); chunk != nullptr; chunk = chunk->next) {
    const int32_t status = copy_chunk(stream, *chunk);
    if (status != JUN_RNG_OK) return status;
  }
  return JUN_RNG_OK;
}

ORIN_END_DECLS
