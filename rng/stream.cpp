// stream: creation, copying and deletion.
// SPDX-License-Identifier: MIT
//
// Place     the caller's pointer is null after every refusal that leaves no stream
// State     a new stream's state starts as zeros, so that saved images hold nothing but the stream
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "rng/chunks.h"
#include "rng/registry.h"
#include "rng/stream_layout.h"
#include "service/late_binding.h"

namespace orin::rng {
namespace {

bool is_abstract(int32_t brng) noexcept {
  return brng == JUN_BRNG_IABSTRACT || brng == JUN_BRNG_DABSTRACT || brng == JUN_BRNG_SABSTRACT;
}

// A stream of the row with its header written and all else zero; null if there is no memory.
void* allocate_stream(int32_t brng, const JunBrngProperties& row) noexcept {
  const auto bytes = static_cast<std::size_t>(row.StateBytes);
  void* stream = service::allocate(bytes, block_alignment);
  if (stream == nullptr) return nullptr;
  std::memset(stream, 0, bytes);
  header_of(stream) = {brng, 1, {}, 0};
  return stream;
}

bool holds_header(const JunBrngProperties& row) noexcept {
  return row.StateBytes >= static_cast<int32_t>(sizeof(StreamHeader));
}

// Bytes that copying a state moves: by the seed words of the source's family, within both state areas. More than the
// value alone (the multipliers of a leapfrogged congruential generator) does not come along.
std::size_t copied_state_bytes(const JunBrngProperties& source, const JunBrngProperties& destination) noexcept {
  const int64_t wanted = int64_t{source.WordBytes} * source.SeedWords;
  return static_cast<std::size_t>(std::min({wanted, int64_t{state_bytes(source)}, int64_t{state_bytes(destination)}}));
}

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_BEGIN_DECLS

ORIN_API int32_t ORIN_CALL __junAllocateStream(void** stream, int32_t brng, const JunBrngProperties* table, int32_t row,
                                               int32_t sub_stream) {
  if (stream == nullptr) return JUN_RNG_NULL_POINTER;
  *stream = nullptr;
  const int32_t status = __junIsBrngValid(table, row, sub_stream);
  if (status != JUN_RNG_OK) return status;
  if (!holds_header(table[row])) return JUN_RNG_BAD_IDENTIFIER;
  *stream = allocate_stream(brng, table[row]);
  return *stream != nullptr ? JUN_RNG_OK : JUN_RNG_NO_MEMORY;
}

ORIN_API int32_t ORIN_CALL __junNewStreamEx(void** stream, int32_t brng, int32_t n, const uint32_t* seeds) {
  if (stream == nullptr) return JUN_RNG_NULL_POINTER;
  *stream = nullptr;
  if (is_abstract(brng)) return JUN_RNG_BAD_IDENTIFIER;
  int32_t row = 0, sub_stream = 0;
  const JunBrngProperties* table = __junGetBrngBaseOffset(brng, &row, &sub_stream);
  int32_t status = __junIsBrngValid(table, row, sub_stream);
  if (status != JUN_RNG_OK) return status;
  if (n > 0 && seeds == nullptr) return JUN_RNG_NULL_POINTER;
  status = __junAllocateStream(stream, brng, table, row, sub_stream);
  return status == JUN_RNG_OK ? table[row].InitStream(JUN_RNG_SEED, *stream, n, seeds) : status;
}

ORIN_API int32_t ORIN_CALL __junCopyStream(void** stream, const void* source) {
  if (stream == nullptr || source == nullptr) return JUN_RNG_NULL_POINTER;
  *stream = nullptr;
  const int32_t brng = header_of(source).brng;
  const JunBrngProperties* row = valid_row(brng);
  if (row == nullptr || !holds_header(*row)) return JUN_RNG_BAD_IDENTIFIER;
  void* copy = allocate_stream(brng, *row);
  if (copy == nullptr) return JUN_RNG_NO_MEMORY;
  std::memcpy(copy, source, static_cast<std::size_t>(row->StateBytes));
  header_of(copy).chunks = 0;
  *stream = copy;
  return __junCopyChunks(copy, source);
}

ORIN_API int32_t ORIN_CALL __junCopyStreamState(void* stream, const void* source) {
  if (stream == nullptr || source == nullptr) return JUN_RNG_NULL_POINTER;
  if (stream == source) return JUN_RNG_OK;
  const JunBrngProperties* from = row_of(source);
  const JunBrngProperties* to = row_of(stream);
  if (from == nullptr || to == nullptr) return JUN_RNG_BAD_IDENTIFIER;
  std::memcpy(&state_of<unsigned char>(stream), &state_of<unsigned char>(source), copied_state_bytes(*from, *to));
  __junDeleteChunks(stream);
  return __junCopyChunks(stream, source);
}

ORIN_API int32_t ORIN_CALL __junDeleteStream(void** stream) {
  if (stream == nullptr || *stream == nullptr) return JUN_RNG_OK;
  __junDeleteChunks(*stream);
  orin::service::deallocate(*stream);
  *stream = nullptr;
  return JUN_RNG_OK;
}

ORIN_API int32_t ORIN_CALL __junGetStreamStateBrng(const void* stream) {
  return stream != nullptr ? header_of(stream).brng : JUN_RNG_NULL_POINTER;
}

ORIN_END_DECLS
