// persistence_test: images byte by byte, damaged ones, failing files and failing allocations.
// SPDX-License-Identifier: MIT
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "tests/rng/support.h"

// The linker leads the loader's and saver's calls of the C runtime here; each function fails at one chosen call.
namespace files {
int fail_write = -1, fail_read = -1;  // calls until the failing one, -1: none
bool fail_close = false;
bool has_rdrand = true;

bool fails(int& countdown) { return countdown >= 0 && countdown-- == 0; }
}  // namespace files

extern "C" {
std::size_t __real_fwrite(const void*, std::size_t, std::size_t, std::FILE*);
std::size_t __real_fread(void*, std::size_t, std::size_t, std::FILE*);
int __real_fclose(std::FILE*);

std::size_t __wrap_fwrite(const void* data, std::size_t size, std::size_t count, std::FILE* file) {
  return files::fails(files::fail_write) ? 0 : __real_fwrite(data, size, count, file);
}
std::size_t __wrap_fread(void* data, std::size_t size, std::size_t count, std::FILE* file) {
  return files::fails(files::fail_read) ? 0 : __real_fread(data, size, count, file);
}
int __wrap_fclose(std::FILE* file) {
  const int result = __real_fclose(file);
  return files::fail_close ? EOF : result;
}
int32_t __wrap___junCPUisRDRAND(void) { return files::has_rdrand; }
}

namespace {

using Bytes = std::vector<unsigned char>;
constexpr char file_name[] = "rng_persistence_test.img";

template <class T>
void append(Bytes& image, T value) {
  const auto* p = reinterpret_cast<const unsigned char*>(&value);
  image.insert(image.end(), p, p + sizeof value);
}

// An image by its format, independent of the saver.
struct Chunk {
  int32_t id;
  uint64_t key[2];
  std::string data;
};
Bytes image_of(int32_t brng, const Bytes& state, const std::vector<Chunk>& chunks, uint8_t version = 1) {
  Bytes image = {version, 0, 0, 0, 'R', 'N', 'G', 0, 20, 0};
  append(image, static_cast<uint16_t>(state.size()));
  append(image, static_cast<uint16_t>(chunks.size()));
  append(image, uint16_t{0});
  append(image, brng);
  image.insert(image.end(), state.begin(), state.end());
  for (const Chunk& chunk : chunks) {
    append(image, chunk.id);
    if (version == 1) append(image, chunk.key[0]), append(image, chunk.key[1]);
    append(image, static_cast<int32_t>(chunk.data.size()));
    image.insert(image.end(), chunk.data.begin(), chunk.data.end());
  }
  return image;
}

const Bytes state = {1, 2, 3, 4, 5, 6, 7, 8};
const std::vector<Chunk> two_chunks = {{-5, {0, 0}, "private"}, {9, {0x1122334455667788, 0x99}, "shared data"}};

void write_file(const Bytes& image) {
  std::FILE* file = std::fopen(file_name, "wb");
  ASSERT_EQ(__real_fwrite(image.data(), 1, image.size(), file), image.size());
  __real_fclose(file);
}

Bytes read_file(const char* name) {
  Bytes image(1 << 20);
  std::FILE* file = std::fopen(name, "rb");
  if (file == nullptr) return {};
  image.resize(__real_fread(image.data(), 1, image.size(), file));
  __real_fclose(file);
  return image;
}

int32_t load_file(void** stream, const Bytes& image) {
  write_file(image);
  return __junLoadStreamF(stream, file_name, -1);
}
int32_t load_memory(void** stream, const Bytes& image) { return __junLoadStreamM(stream, image.data()); }

// The stream of an image that is good, from file and from memory.
std::vector<Stream> loaded(const Bytes& image) {
  std::vector<Stream> streams;
  for (const auto& load : {load_file, load_memory}) {
    void* stream = nullptr;
    EXPECT_EQ(load(&stream, image), 0);
    streams.emplace_back(stream);
  }
  return streams;
}

Bytes saved(const Stream& stream) {
  Bytes image(static_cast<std::size_t>(__junGetStreamSize(stream.get())) + 1, 0xEE);
  EXPECT_EQ(__junSaveStreamM(stream.get(), image.data()), 0);
  EXPECT_EQ(image.back(), 0xEE) << "no byte too many";
  image.pop_back();
  return image;
}

class Persistence : public NoLeaks {
 protected:
  void TearDown() override {
    std::remove(file_name);
    NoLeaks::TearDown();
  }

  // Both loads are refused and leave nothing; memory_status 0: memory has no such fault.
  void refused(const Bytes& image, int32_t file_status, int32_t memory_status) {
    const long blocks = faulty_core::live_blocks();
    void* stream = &stream;
    EXPECT_EQ(load_file(&stream, image), file_status);
    EXPECT_EQ(stream, nullptr);
    if (memory_status != 0) {
      stream = &stream;
      EXPECT_EQ(load_memory(&stream, image), memory_status);
      EXPECT_EQ(stream, nullptr);
    }
    EXPECT_EQ(faulty_core::live_blocks(), blocks);
  }
};

}  // namespace

// A stream loaded from an image saves to the same image, its chunks in reverse.
TEST_F(Persistence, ImagesAreAsTheFormatSays) {
  const Bytes image = image_of(JUN_BRNG_MCG31M1, state, two_chunks);
  const Bytes reversed = image_of(JUN_BRNG_MCG31M1, state, {two_chunks[1], two_chunks[0]});
  const std::string longer_name = std::string(file_name) + "XYZ";
  for (const Stream& stream : loaded(image)) {
    const unsigned char header[8] = {0, 0, 0x10, 0, 1, 0, 0, 0};
    EXPECT_EQ(std::memcmp(stream.get(), header, 8), 0);
    EXPECT_EQ(std::memcmp(bytes_of(stream) + 16, state.data(), 8), 0);
    EXPECT_EQ(std::memcmp(__junSearchChunk(stream.get(), 9), "shared data", 11), 0);
    EXPECT_EQ(saved(stream), reversed);
    EXPECT_EQ(__junSaveStreamF(stream.get(), longer_name.c_str(), 24), 0);
    EXPECT_EQ(read_file(file_name), reversed) << "a counted name ends where it says";
    void* place = nullptr;
    EXPECT_EQ(__junLoadStreamF(&place, longer_name.c_str(), 24), 0);
    const Stream again(place);
    EXPECT_EQ(saved(again), image);
    EXPECT_EQ(__junSearchChunk(place, 9), __junSearchChunk(stream.get(), 9)) << "data still in the table is shared";
  }
  for (const Stream& keyless : loaded(image_of(JUN_BRNG_MCG31M1, state, two_chunks, 0))) {
    EXPECT_EQ(saved(keyless), image_of(JUN_BRNG_MCG31M1, state, {{9, {0, 0}, "shared data"}, two_chunks[0]}));
  }
  for (const std::size_t ignored : {1u, 2u, 3u, 7u, 9u, 14u, 15u}) {  // 9: a longer header is accepted, not skipped
    Bytes odd = image;
    odd[ignored] = 1;
    for (const Stream& stream : loaded(odd)) EXPECT_EQ(saved(stream), reversed) << ignored;
  }
}

// Every family without chunks: StateBytes + 4 bytes, and all of the state comes back.
TEST_F(Persistence, EveryFamilyFits) {
  for (int32_t brng = 0x100000; brng <= 0xE00000; brng += 0x100000) {
    Bytes any(static_cast<std::size_t>(row_of(brng).StateBytes - 16));
    for (std::size_t i = 0; i < any.size(); ++i) any[i] = static_cast<unsigned char>(i * i + i / 251);
    for (const int32_t id : {brng, brng == JUN_BRNG_WH ? 276 : brng}) {
      const Bytes image = image_of(id, any, {});
      EXPECT_EQ(image.size(), any.size() + 20);
      for (const Stream& stream : loaded(image)) EXPECT_EQ(saved(stream), image) << std::hex << id;
    }
  }
}

TEST_F(Persistence, RefusesDamagedHeaders) {
  const auto set = [](std::size_t at, int value) {
    return [=](Bytes& image) { image[at] = static_cast<unsigned char>(value); };
  };
  const auto brng = [](int32_t value) { return [=](Bytes& image) { std::memcpy(&image[16], &value, 4); }; };
  const struct {
    const char* name;
    std::function<void(Bytes&)> change;
    int32_t status;
  } cases[] = {{"version 2", set(0, 2), -1111},
               {"version 255", set(0, 255), -1111},
               {"marker", set(6, 'g'), -1110},
               {"marker before version", [](Bytes& i) { i[0] = 2, i[4] = 0; }, -1110},
               {"version before identifier", [](Bytes& i) { i[0] = 2, i[18] = 0xFF; }, -1111},
               {"state size one more", set(10, 9), -1110},
               {"state size one less", set(10, 7), -1110},
               {"header size 19", set(8, 19), -1110},
               {"negative identifier", brng(-1), -1110},
               {"legacy identifier past the last", brng(279), -1110},
               {"sub-stream past the last", brng(0x100001), -1110},
               {"family past the last", brng(0x7FF00000), -1110},
               {"family with less than a header", brng(probe::identifier<15>()), -1110}};
  for (const auto& [name, change, status] : cases) {
    SCOPED_TRACE(name);
    Bytes image = image_of(JUN_BRNG_MCG31M1, state, two_chunks);
    change(image);
    faulty_core::fail_at(-1);
    refused(image, status, JUN_RNG_MEMORY_FORMAT);
    EXPECT_EQ(faulty_core::allocations(), 0);
  }
}

TEST_F(Persistence, RefusesTruncatedFilesAndImplausibleSizes) {
  const Bytes good = image_of(JUN_BRNG_MCG31M1, state, two_chunks);
  for (std::size_t length = 0; length < good.size(); ++length) {
    SCOPED_TRACE(length);
    refused(Bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length)), JUN_RNG_FILE_READ, 0);
  }
  for (const int32_t size : {-1, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max(), 43}) {
    SCOPED_TRACE(size);
    Bytes image = good;
    std::memcpy(&image[20 + 8 + 4 + 16], &size, 4);  // of the first chunk; 42 bytes follow
    faulty_core::fail_at(-1);
    refused(image, JUN_RNG_FILE_READ, size < 0 ? JUN_RNG_MEMORY_FORMAT : 0);
    EXPECT_EQ(faulty_core::allocations(), size < 0 ? 2 : 1) << "the stream, and nothing for the chunk";
  }
}

TEST_F(Persistence, HardwareStreamsNeedTheirHardware) {
  const Bytes image = image_of(JUN_BRNG_TRNG, state, two_chunks);
  files::has_rdrand = false;
  refused(image, JUN_RNG_NO_TRUE_RANDOM, JUN_RNG_NO_TRUE_RANDOM);
  refused(Bytes(image.begin(), image.begin() + 22), JUN_RNG_NO_TRUE_RANDOM, 0);
  files::has_rdrand = true;
}

// A chunk that has a size and no data is saved as zeros, however many; its data is the last 5000 bytes.
TEST_F(Persistence, ChunksWithoutDataAreZeros) {
  const Stream stream = patterned(JUN_BRNG_MCG31M1);
  ASSERT_EQ(__junAddChunk(stream.get(), 3, nullptr, nullptr, 5000), 0);
  const Bytes state_bytes(bytes_of(stream) + 16, bytes_of(stream) + 24);
  const Bytes image = image_of(JUN_BRNG_MCG31M1, state_bytes, {{3, {0, 0}, std::string(5000, '\0')}});
  EXPECT_EQ(saved(stream), image);
  EXPECT_EQ(__junSaveStreamF(stream.get(), file_name, -1), 0);
  EXPECT_EQ(read_file(file_name), image);
}

// Each write, read and close fails in turn.
TEST_F(Persistence, FailingFiles) {
  const Bytes image = image_of(JUN_BRNG_MCG31M1, state, two_chunks);
  const Stream stream = std::move(loaded(image)[1]);
  // header, state, then identifier, key, size, data of two chunks; of the chunks' writes the last one tells
  const int32_t status_of_write[] = {-1102, -1102, 0, 0, 0, 0, 0, 0, 0, -1102, 0};
  for (int n = 0; n < 11; ++n) {
    files::fail_write = n;
    EXPECT_EQ(__junSaveStreamF(stream.get(), file_name, -1), status_of_write[n]) << n;
    files::fail_write = n;
    files::fail_close = true;
    EXPECT_EQ(__junSaveStreamF(stream.get(), file_name, -1), -1100) << n;
    files::fail_close = false;
  }
  files::fail_write = -1;
  EXPECT_EQ(__junSaveStreamF(stream.get(), "no such folder/x", -1), -1101);
  for (int n = 0; n < 10; ++n) {
    files::fail_read = n;
    refused(image, -1103, 0);
  }
  files::fail_read = -1;
  files::fail_close = true;
  refused(image, -1100, 0);
  files::fail_close = false;
  void* place = &place;
  EXPECT_EQ(__junLoadStreamF(&place, "no such file", -1), -1101);
  EXPECT_EQ(place, nullptr);
}

TEST_F(Persistence, SurvivesFailingAllocations) {
  const Bytes image = image_of(JUN_BRNG_MCG31M1, state, two_chunks);
  write_file(image);
  for (const bool from_file : {true, false}) {
    const long sites = from_file ? 6 : 5;  // name, stream, data and record of each chunk
    long run = 0;
    const long failures = faulty_core::fail_each([&](bool) {
      void* place = &place;
      const int32_t status = from_file ? __junLoadStreamF(&place, file_name, static_cast<int32_t>(sizeof file_name - 1))
                                       : __junLoadStreamM(&place, image.data());
      const Stream stream(place);
      EXPECT_EQ(status, run < sites ? JUN_RNG_NO_MEMORY : 0) << run;
      EXPECT_EQ(stream == nullptr, run < sites);
      ++run;
    });
    EXPECT_EQ(failures, sites);
  }
  const Stream stream = patterned(0x100000);
  faulty_core::fail_at(0);
  EXPECT_EQ(__junSaveStreamF(stream.get(), file_name, 5), JUN_RNG_NO_MEMORY);
}

// A state of 65535 bytes is the largest that an image holds, 65535 chunks the most.
TEST_F(Persistence, RefusesWhatTheFormatCannotHold) {
  const Stream most = patterned(probe::identifier<16 + 65535>()), more = patterned(probe::identifier<16 + 65536>());
  EXPECT_EQ(saved(most).size(), 20u + 65535u);
  for (int i = 0; i < 65535; ++i) ASSERT_EQ(__junAddChunk(most.get(), i, nullptr, nullptr, 4), 0);
  EXPECT_EQ(saved(most).size(), 20u + 65535u + 65535u * 28) << "a chunk counts with its size, data or not";
  ASSERT_EQ(__junAddChunk(most.get(), 1, nullptr, nullptr, 0), 0);
  for (const Stream* stream : {&most, &more}) {
    EXPECT_EQ(saved(*stream), Bytes{});
    EXPECT_EQ(__junSaveStreamF(stream->get(), file_name, -1), JUN_RNG_FILE_WRITE);
    EXPECT_EQ(read_file(file_name), Bytes{});
  }
}
