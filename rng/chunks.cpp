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

int32_t attach(void* stream, int32_t id, const uint64_t* key, void* data, int32_t size, Block& block) noexcept {
  block = Block::left;
  auto* chunk = static_cast<JunStreamChunk*>(service::allocate(sizeof(JunStreamChunk), block_alignment));
  if (chunk == nullptr) return JUN_RNG_NO_MEMORY;
  *chunk = {id, size, data, first_chunk(stream), {0, 0}};
  block = Block::taken;
  if (!is_zero_key(key)) {
    std::copy_n(key, 2, chunk->key);
    if (!join_shared(*chunk)) block = Block::left;
  }
  header_of(stream).chunks = reinterpret_cast<uintptr_t>(chunk);
  return JUN_RNG_OK;
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
