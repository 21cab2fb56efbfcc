// persistence: streams saved to and loaded from files and memory.
// SPDX-License-Identifier: MIT
//
// Image     header 20 bytes | state | per chunk: id 4, key 16 (version 1 only), size 4, data; all little-endian
// Loading   checks the header before anything is allocated and a chunk's size before its data is; on any failure the
//           new stream goes with all its chunks. The state starts at byte 20 whatever header size the image declares.
// Chunks    are written from the head of the list and pushed at the head when read
#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "rng/chunks.h"
#include "rng/registry.h"
#include "rng/shared_data.h"
#include "rng/stream_layout.h"
#include "service/late_binding.h"
#include "service/work_buffer.h"

namespace orin::rng {
namespace {

constexpr uint8_t written_version = 1, first_version_with_keys = 1;
constexpr char image_marker[3] = {'R', 'N', 'G'};
constexpr int32_t max_u16 = 0xFFFF;

struct ImageHeader {
  uint8_t version;
  uint8_t reserved_1[3];
  char marker[3];
  uint8_t reserved_7;
  uint16_t header_size;
  uint16_t state_size;
  uint16_t chunk_count;
  uint16_t reserved_14;
  int32_t brng;
};
static_assert(sizeof(ImageHeader) == 20 && offsetof(ImageHeader, marker) == 4 &&
              offsetof(ImageHeader, state_size) == 10 && offsetof(ImageHeader, brng) == 16);

constexpr int32_t chunk_head_bytes = 4 + 16 + 4;  // identifier, key, size

// Bytes of a chunk's data as they stand in an image; zeros if the chunk has a size and no data.
int32_t data_bytes(const JunStreamChunk& chunk) noexcept { return std::max(chunk.size, 0); }

// True if the 16-bit fields of the header can describe the stream.
bool fits_image(const JunBrngProperties& row, const void* stream) noexcept {
  return state_bytes(row) <= max_u16 && __junGetNumChunks(stream) <= max_u16;
}

// ---- Sinks and sources ----------------------------------------------------------------------------------------------

// Both move whole items; an item of no bytes always succeeds.
class MemorySink {
 public:
  explicit MemorySink(void* place) : position_(static_cast<unsigned char*>(place)) {}
  bool put(const void* item, std::size_t bytes) {
    if (bytes != 0) std::memcpy(position_, item, bytes);
    position_ += bytes;
    return true;
  }

 private:
  unsigned char* position_;
};

class MemorySource {
 public:
  static constexpr int32_t bad_header = JUN_RNG_MEMORY_FORMAT, bad_version = JUN_RNG_MEMORY_FORMAT;
  static constexpr int32_t bad_size = JUN_RNG_MEMORY_FORMAT;

  explicit MemorySource(const void* place) : position_(static_cast<const unsigned char*>(place)) {}
  bool get(void* item, std::size_t bytes) {
    if (bytes != 0) std::memcpy(item, position_, bytes);
    position_ += bytes;
    return true;
  }
  bool can_hold(int32_t bytes) const { return bytes >= 0; }

 private:
  const unsigned char* position_;
};

// A file of the C runtime under a name that is either terminated or counted.
class File {
 public:
  static constexpr int32_t bad_header = JUN_RNG_FILE_FORMAT, bad_version = JUN_RNG_FILE_VERSION;
  static constexpr int32_t bad_size = JUN_RNG_FILE_READ;

  int32_t open(const char* name, int32_t name_length, const char* mode) noexcept {
    service::WorkBuffer<char, block_alignment> terminated;
    if (name_length >= 0) {
      const auto length = static_cast<std::size_t>(name_length);
      if (!terminated.allocate(length + 1)) return JUN_RNG_NO_MEMORY;
      std::memcpy(terminated.data(), name, length);
      terminated[length] = '\0';
      name = terminated.data();
    }
    file_ = std::fopen(name, mode);
    return file_ != nullptr ? JUN_RNG_OK : JUN_RNG_FILE_OPEN;
  }

  // The status of closing the file stands before `status`, that of its use.
  int32_t close(int32_t status) noexcept { return std::fclose(file_) == 0 ? status : JUN_RNG_FILE_CLOSE; }

  bool put(const void* item, std::size_t bytes) noexcept {
    return bytes == 0 || std::fwrite(item, bytes, 1, file_) == 1;
  }
  bool get(void* item, std::size_t bytes) noexcept { return bytes == 0 || std::fread(item, bytes, 1, file_) == 1; }

  // True unless the rest of the file is known to be shorter; a pipe has no length to know.
  bool can_hold(int32_t bytes) noexcept {
    if (end_ < 0) measure();
    return bytes >= 0 && bytes <= end_ - std::ftell(file_);
  }

 private:
  void measure() noexcept {
    const long here = std::ftell(file_);
    const bool seekable = here >= 0 && std::fseek(file_, 0, SEEK_END) == 0;
    end_ = seekable ? std::ftell(file_) : LONG_MAX;
    if (seekable) std::fseek(file_, here, SEEK_SET);
  }

  std::FILE* file_ = nullptr;
  long end_ = -1;
};

// ---- Writing --------------------------------------------------------------------------------------------------------

template <class Sink>
bool put_zeros(Sink& sink, std::size_t bytes) noexcept {
  static constexpr unsigned char zeros[4096] = {};
  bool written = true;
  for (; written && bytes > sizeof zeros; bytes -= sizeof zeros) written = sink.put(zeros, sizeof zeros);
  return written && sink.put(zeros, bytes);
}

// The status is that of the last data written: header, state, or the last chunk's data.
template <class Sink>
int32_t write_image(const void* stream, const JunBrngProperties& row, Sink& sink) noexcept {
  ImageHeader header = {};
  header.version = written_version;
  std::copy_n(image_marker, 3, header.marker);
  header.header_size = sizeof(ImageHeader);
  header.state_size = static_cast<uint16_t>(state_bytes(row));
  header.chunk_count = static_cast<uint16_t>(__junGetNumChunks(stream));
  header.brng = header_of(stream).brng;
  if (!sink.put(&header, sizeof header)) return JUN_RNG_FILE_WRITE;
  if (!sink.put(&state_of<unsigned char>(stream), header.state_size)) return JUN_RNG_FILE_WRITE;

  int32_t status = JUN_RNG_OK;
  for (const JunStreamChunk* chunk = first_chunk(stream); chunk != nullptr; chunk = chunk->next) {
    const int32_t size = data_bytes(*chunk);
    sink.put(&chunk->id, sizeof chunk->id);
    sink.put(chunk->key, sizeof chunk->key);
    sink.put(&size, sizeof size);
    const bool written = chunk->data != nullptr ? sink.put(chunk->data, static_cast<std::size_t>(size))
                                                : put_zeros(sink, static_cast<std::size_t>(size));
    status = written ? JUN_RNG_OK : JUN_RNG_FILE_WRITE;
  }
  return status;
}

// ---- Reading --------------------------------------------------------------------------------------------------------

template <class Source>
int32_t check_header(const ImageHeader& header) noexcept {
  if (!std::equal(image_marker, image_marker + 3, header.marker)) return Source::bad_header;
  if (header.version > written_version) return Source::bad_version;
  const JunBrngProperties* row = valid_row(header.brng);
  if (row == nullptr || header.state_size != row->StateBytes - static_cast<int32_t>(sizeof(StreamHeader)) ||
      header.header_size < sizeof(ImageHeader)) {
    return Source::bad_header;
  }
  return JUN_RNG_OK;
}

template <class Source>
int32_t read_chunk(void* stream, bool with_key, Source& source) noexcept {
  int32_t id = 0, size = 0;
  uint64_t key[2] = {0, 0};
  if (!source.get(&id, sizeof id)) return JUN_RNG_FILE_READ;
  if (with_key && !source.get(key, sizeof key)) return JUN_RNG_FILE_READ;
  if (!source.get(&size, sizeof size)) return JUN_RNG_FILE_READ;
  if (!source.can_hold(size)) return Source::bad_size;
  void* data = allocate_data(size);
  if (data == nullptr) return JUN_RNG_NO_MEMORY;
  Block block = Block::left;
  int32_t status = JUN_RNG_FILE_READ;
  // Only a damaged image claims more data than the process holds under the key: its chunk keeps a block of its own.
  if (source.get(data, static_cast<std::size_t>(size))) status = attach(stream, id, key, data, size, block, size);
  if (block == Block::left) service::deallocate(data);
  return status;
}

template <class Source>
int32_t read_body(void* stream, const ImageHeader& header, Source& source) noexcept {
  int32_t status = source.get(&state_of<unsigned char>(stream), header.state_size) ? JUN_RNG_OK : JUN_RNG_FILE_READ;
  if (header.brng == JUN_BRNG_TRNG && __junCPUisRDRAND() == 0) status = JUN_RNG_NO_TRUE_RANDOM;
  const bool with_keys = header.version >= first_version_with_keys;
  for (int i = 0; i < header.chunk_count && status == JUN_RNG_OK; ++i) status = read_chunk(stream, with_keys, source);
  return status;
}

template <class Source>
int32_t read_image(void** stream, Source& source) noexcept {
  ImageHeader header;
  if (!source.get(&header, sizeof header)) return JUN_RNG_FILE_READ;
  int32_t status = check_header<Source>(header);
  if (status != JUN_RNG_OK) return status;
  int32_t row = 0, sub_stream = 0;
  const JunBrngProperties* table = __junGetBrngBaseOffset(header.brng, &row, &sub_stream);
  status = __junAllocateStream(stream, header.brng, table, row, sub_stream);
  return status == JUN_RNG_OK ? read_body(*stream, header, source) : status;
}

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_BEGIN_DECLS

ORIN_API int32_t ORIN_CALL __junGetStreamSize(const void* stream) {
  if (stream == nullptr) return 0;
  const JunBrngProperties* row = row_of(stream);
  if (row == nullptr || !fits_image(*row, stream)) return 0;
  int64_t bytes = int64_t{sizeof(ImageHeader)} + state_bytes(*row);
  for (const JunStreamChunk* chunk = first_chunk(stream); chunk != nullptr; chunk = chunk->next) {
    bytes += chunk_head_bytes + data_bytes(*chunk);
  }
  return bytes <= INT32_MAX ? static_cast<int32_t>(bytes) : 0;
}

ORIN_API int32_t ORIN_CALL __junSaveStreamF(const void* stream, const char* name, int32_t name_length) {
  if (stream == nullptr || name == nullptr) return JUN_RNG_NULL_POINTER;
  const JunBrngProperties* row = row_of(stream);
  if (row == nullptr) return JUN_RNG_BAD_IDENTIFIER;
  if (!fits_image(*row, stream)) return JUN_RNG_FILE_WRITE;
  File file;
  const int32_t status = file.open(name, name_length, "wb");
  return status == JUN_RNG_OK ? file.close(write_image(stream, *row, file)) : status;
}

ORIN_API int32_t ORIN_CALL __junLoadStreamF(void** stream, const char* name, int32_t name_length) {
  if (stream == nullptr) return JUN_RNG_NULL_POINTER;
  *stream = nullptr;
  if (name == nullptr) return JUN_RNG_NULL_POINTER;
  File file;
  int32_t status = file.open(name, name_length, "rb");
  if (status != JUN_RNG_OK) return status;
  status = file.close(read_image(stream, file));
  if (status != JUN_RNG_OK) __junDeleteStream(stream);
  return status;
}

ORIN_API int32_t ORIN_CALL __junSaveStreamM(const void* stream, void* image) {
  if (stream == nullptr || image == nullptr) return JUN_RNG_NULL_POINTER;
  if (__junGetStreamSize(stream) == 0) return JUN_RNG_OK;
  MemorySink sink(image);
  return write_image(stream, *row_of(stream), sink);
}

ORIN_API int32_t ORIN_CALL __junLoadStreamM(void** stream, const void* image) {
  if (stream == nullptr) return JUN_RNG_NULL_POINTER;
  *stream = nullptr;
  if (image == nullptr) return JUN_RNG_NULL_POINTER;
  MemorySource source(image);
  const int32_t status = read_image(stream, source);
  if (status != JUN_RNG_OK) __junDeleteStream(stream);
  return status;
}

ORIN_END_DECLS
