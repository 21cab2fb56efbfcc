// persistence_test: images byte by byte, damaged ones, failing files and failing allocations.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "rng/stream_layout.h"
#include "service/late_binding.h"
#include "tests/rng/probe.h"
#include "tests/support/faulty_core.h"

// The linker leads the loader's and saver's calls of the C runtime here; each function fails at one chosen call.
namespace files {
int fail_write = -1, fail_read = -1;  // calls until the failing one, -1: none
bool fail_close = false;
int open_files = 0;
bool has_rdrand = true;

bool fails(int& countdown) { return countdown >= 0 && countdown-- == 0; }
}  // namespace files

extern "C" {
std::FILE* __real_fopen(const char*, const char*);
std::size_t __real_fwrite(const void*, std::size_t, std::size_t, std::FILE*);
std::size_t __real_fread(void*, std::size_t, std::size_t, std::FILE*);
int __real_fclose(std::FILE*);

std::FILE* __wrap_fopen(const char* name, const char* mode) {
  std::FILE* file = __real_fopen(name, mode);
  files::open_files += file != nullptr;
  return file;
}
std::size_t __wrap_fwrite(const void* data, std::size_t size, std::size_t count, std::FILE* file) {
  return files::fails(files::fail_write) ? 0 : __real_fwrite(data, size, count, file);
}
std::size_t __wrap_fread(void* data, std::size_t size, std::size_t count, std::FILE* file) {
  return files::fails(files::fail_read) ? 0 : __real_fread(data, size, count, file);
}
int __wrap_fclose(std::FILE* file) {
  --files::open_files;
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
  std::FILE* file = __real_fopen(file_name, "wb");
  ASSERT_EQ(__real_fwrite(image.data(), 1, image.size(), file), image.size());
  __real_fclose(file);
}

Bytes read_file(const char* name) {
  Bytes image(1 << 20);
  std::FILE* file = __real_fopen(name, "rb");
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

Bytes saved(const void* stream) {
  Bytes image(static_cast<std::size_t>(__junGetStreamSize(stream)) + 1, 0xEE);
  EXPECT_EQ(__junSaveStreamM(stream, image.data()), 0);
  EXPECT_EQ(image.back(), 0xEE) << "no byte too many";
  image.pop_back();
  return image;
}

class Persistence : public ::testing::Test {
 protected:
  void TearDown() override {
    EXPECT_EQ(faulty_core::live_blocks(), blocks_);
    EXPECT_EQ(files::open_files, 0);
    std::remove(file_name);
  }

  // The load is refused with these statuses, nothing is left of it, and with `unread` nothing was allocated for it.
  void refused(const Bytes& image, int32_t file_status, int32_t memory_status) {
    void* stream = &stream;
    EXPECT_EQ(load_file(&stream, image), file_status);
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(faulty_core::live_blocks(), blocks_);
    if (memory_status == 0) return;
    stream = &stream;
    EXPECT_EQ(load_memory(&stream, image), memory_status);
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(faulty_core::live_blocks(), blocks_);
  }

  long blocks_ = faulty_core::live_blocks();
};

}  // namespace

// A stream loaded from an image saves to the same image (with its chunks in reverse), through memory and file.
TEST_F(Persistence, ImagesAreAsTheFormatSays) {
  const Bytes image = image_of(JUN_BRNG_MCG31M1, state, two_chunks);
  for (const auto& load : {load_file, load_memory}) {
    void* stream = nullptr;
    ASSERT_EQ(load(&stream, image), 0);
    unsigned char header[8] = {0, 0, 0x10, 0, 1, 0, 0, 0};
    EXPECT_EQ(std::memcmp(stream, header, 8), 0);
    EXPECT_EQ(std::memcmp(static_cast<char*>(stream) + 16, state.data(), 8), 0);
    EXPECT_EQ(__junGetNumChunks(stream), 2);
    EXPECT_EQ(std::memcmp(__junSearchChunk(stream, 9), "shared data", 11), 0);

    const Bytes reversed = image_of(JUN_BRNG_MCG31M1, state, {two_chunks[1], two_chunks[0]});
    EXPECT_EQ(__junGetStreamSize(stream), static_cast<int32_t>(24 + 4 + 24 + 7 + 24 + 11));
    EXPECT_EQ(saved(stream), reversed);
    ASSERT_EQ(__junSaveStreamF(stream, file_name, -1), 0);
    EXPECT_EQ(read_file(file_name), reversed);
    EXPECT_EQ(__junSaveStreamF(stream, "rng_persistence_test.imgXYZ", 24), 0);
    EXPECT_EQ(read_file(file_name), reversed) << "a counted name ends where it says";

    void* again = nullptr;
    ASSERT_EQ(__junLoadStreamF(&again, "rng_persistence_test.imgXYZ", 24), 0);
    EXPECT_EQ(__junSearchChunk(again, 9), __junSearchChunk(stream, 9)) << "data still in the table is shared again";
    EXPECT_EQ(saved(again), image);
    __junDeleteStream(&again);
    __junDeleteStream(&stream);
  }
}

TEST_F(Persistence, OldImagesHaveNoKeys) {
  for (const auto& load : {load_file, load_memory}) {
    void* stream = nullptr;
    ASSERT_EQ(load(&stream, image_of(JUN_BRNG_MCG31M1, state, two_chunks, 0)), 0);
    const Bytes keyless = image_of(JUN_BRNG_MCG31M1, state, {{9, {0, 0}, "shared data"}, {-5, {0, 0}, "private"}});
    EXPECT_EQ(saved(stream), keyless);
    __junDeleteStream(&stream);
  }
}

// Every family without chunks: StateBytes + 4 bytes, and all of the state comes back.
TEST_F(Persistence, EveryFamilyFits) {
  for (const int32_t brng : {0, 4, 276, 278, 0x100000, 0x200000, 0x300000, 0x400000, 0x500000 + 272, 0x600000, 0x700000,
                             0x800000, 0x900000 + 6023, 0xA00000, 0xB00000, 0xC00000, 0xD00000, 0xE00000}) {
    JunBrngProperties row = {};
    ASSERT_EQ(__junGetBrngProperties(brng, &row), 0);
    Bytes any(static_cast<std::size_t>(row.StateBytes - 16));
    for (std::size_t i = 0; i < any.size(); ++i) any[i] = static_cast<unsigned char>(i * i + i / 251);
    const Bytes image = image_of(brng, any, {});
    EXPECT_EQ(image.size(), static_cast<std::size_t>(row.StateBytes + 4));
    for (const auto& load : {load_file, load_memory}) {
      void* stream = nullptr;
      ASSERT_EQ(load(&stream, image), 0) << std::hex << brng;
      EXPECT_EQ(saved(stream), image) << std::hex << brng;
      __junDeleteStream(&stream);
    }
  }
}

TEST_F(Persistence, RefusesDamagedHeaders) {
  const Bytes good = image_of(JUN_BRNG_MCG31M1, state, two_chunks);
  using Change = std::function<void(Bytes&)>;
  const auto brng = [](int32_t value) { return Change([=](Bytes& image) { std::memcpy(&image[16], &value, 4); }); };
  const struct {
    const char* name;
    Change change;
    int32_t status;
  } cases[] = {
      {"version 2", [](Bytes& i) { i[0] = 2; }, -1111},
      {"version 255", [](Bytes& i) { i[0] = 255; }, -1111},
      {"marker", [](Bytes& i) { i[6] = 'g'; }, -1110},
      {"marker before version", [](Bytes& i) { i[0] = 2, i[4] = 0; }, -1110},
      {"version before identifier", [](Bytes& i) { i[0] = 2, i[18] = 0xFF; }, -1111},
      {"state size one more", [](Bytes& i) { i[10] = 9; }, -1110},
      {"state size one less", [](Bytes& i) { i[10] = 7; }, -1110},
      {"header size 19", [](Bytes& i) { i[8] = 19; }, -1110},
      {"negative identifier", brng(-1), -1110},
      {"legacy identifier past the last", brng(279), -1110},
      {"sub-stream past the last", brng(0x100001), -1110},
      {"family past the last", brng(0x7FF00000), -1110},
      {"family with less than a header", brng(probe::identifier<15>()), -1110},
  };
  for (const auto& [name, change, status] : cases) {
    SCOPED_TRACE(name);
    Bytes image = good;
    change(image);
    faulty_core::fail_at(-1);
    refused(image, status, -1200);
    EXPECT_EQ(faulty_core::allocations(), 0);
  }
  for (const std::size_t ignored : {1u, 2u, 3u, 7u, 9u, 14u, 15u}) {  // 9: a longer header is accepted and not skipped
    Bytes image = good;
    image[ignored] = 1;
    void* stream = nullptr;
    EXPECT_EQ(load_file(&stream, image), 0);
    EXPECT_EQ(std::memcmp(static_cast<char*>(stream) + 16, state.data(), 8), 0);
    __junDeleteStream(&stream);
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
  Bytes image = good;
  image[12] = image[13] = 0xFF;
  refused(image, JUN_RNG_FILE_READ, 0);
}

TEST_F(Persistence, HardwareStreamsNeedTheirHardware) {
  const Bytes image = image_of(JUN_BRNG_TRNG, state, two_chunks);
  files::has_rdrand = false;
  refused(image, JUN_RNG_NO_TRUE_RANDOM, JUN_RNG_NO_TRUE_RANDOM);
  refused(Bytes(image.begin(), image.begin() + 22), JUN_RNG_NO_TRUE_RANDOM, 0);
  files::has_rdrand = true;
}

// Each write, read and close fails in turn.
TEST_F(Persistence, FailingFiles) {
  void* stream = nullptr;
  const Bytes image = image_of(JUN_BRNG_MCG31M1, state, two_chunks);
  ASSERT_EQ(load_memory(&stream, image), 0);
  // header, state, then identifier, key, size, data of two chunks; of the chunks' writes the last one tells
  const int32_t status_of_write[] = {-1102, -1102, 0, 0, 0, 0, 0, 0, 0, -1102, 0};
  for (int n = 0; n < 11; ++n) {
    files::fail_write = n;
    EXPECT_EQ(__junSaveStreamF(stream, file_name, -1), status_of_write[n]) << n;
    files::fail_write = n;
    files::fail_close = true;
    EXPECT_EQ(__junSaveStreamF(stream, file_name, -1), -1100) << n;
    files::fail_close = false;
  }
  files::fail_write = -1;
  EXPECT_EQ(__junSaveStreamF(stream, "no such folder/x", -1), -1101);
  faulty_core::fail_at(0);
  EXPECT_EQ(__junSaveStreamF(stream, file_name, 5), -4);
  __junDeleteStream(&stream);

  for (int n = 0; n < 11; ++n) {
    files::fail_read = n;
    stream = &stream;
    EXPECT_EQ(load_file(&stream, image), n < 10 ? -1103 : 0) << n;
    EXPECT_EQ(stream == nullptr, n < 10);
    __junDeleteStream(&stream);
  }
  files::fail_read = -1;
  files::fail_close = true;
  refused(image, -1100, 0);
  files::fail_close = false;
  stream = &stream;
  EXPECT_EQ(__junLoadStreamF(&stream, "no such file", -1), -1101);
  EXPECT_EQ(stream, nullptr);
}

TEST_F(Persistence, SurvivesFailingAllocations) {
  const Bytes image = image_of(JUN_BRNG_MCG31M1, state, two_chunks);
  write_file(image);
  for (const bool from_file : {true, false}) {
    long run = 0;
    const long failures = faulty_core::fail_each([&](bool) {
      void* stream = &stream;
      const int32_t status = from_file
                                 ? __junLoadStreamF(&stream, file_name, static_cast<int32_t>(sizeof file_name - 1))
                                 : __junLoadStreamM(&stream, image.data());
      const long sites = from_file ? 6 : 5;  // name, stream, data and record of each chunk
      EXPECT_EQ(status, run < sites ? JUN_RNG_NO_MEMORY : 0) << run;
      EXPECT_EQ(stream == nullptr, run < sites);
      __junDeleteStream(&stream);
      EXPECT_EQ(faulty_core::live_blocks(), blocks_);
      ++run;
    });
    EXPECT_EQ(failures, from_file ? 6 : 5);
  }
}

// A state of 65535 bytes is the largest that an image holds, 65535 chunks the most.
TEST_F(Persistence, RefusesWhatTheFormatCannotHold) {
  const uint32_t seed = 0;
  void* stream = nullptr;
  ASSERT_EQ(__junNewStreamEx(&stream, probe::identifier<16 + 65535>(), 1, &seed), 0);
  EXPECT_EQ(saved(stream).size(), 20u + 65535u);
  EXPECT_EQ(__junSaveStreamF(stream, file_name, -1), 0);
  for (int i = 0; i < 65535; ++i) ASSERT_EQ(__junAddChunk(stream, i, nullptr, nullptr, 4), 0);
  EXPECT_EQ(__junGetStreamSize(stream), 20 + 65535 + 65535 * 24) << "a chunk without data takes no room for it";
  ASSERT_EQ(__junAddChunk(stream, 1, nullptr, nullptr, 0), 0);
  for (const int32_t brng : {probe::identifier<16 + 65535>(), probe::identifier<16 + 65536>()}) {
    EXPECT_EQ(__junGetStreamSize(stream), 0) << std::hex << brng;
    EXPECT_EQ(__junSaveStreamF(stream, "rng_persistence_test.not", -1), JUN_RNG_FILE_WRITE);
    EXPECT_EQ(read_file("rng_persistence_test.not"), Bytes{});
    unsigned char untouched = 0xEE;
    EXPECT_EQ(__junSaveStreamM(stream, &untouched), 0);
    EXPECT_EQ(untouched, 0xEE);
    __junDeleteStream(&stream);
    ASSERT_EQ(__junNewStreamEx(&stream, probe::identifier<16 + 65536>(), 1, &seed), 0);
  }
  __junDeleteStream(&stream);
  EXPECT_EQ(__junGetStreamSize(nullptr), 0);
  EXPECT_EQ(__junSaveStreamM(nullptr, &stream), JUN_RNG_NULL_POINTER);
  EXPECT_EQ(__junLoadStreamM(&stream, nullptr), JUN_RNG_NULL_POINTER);
  EXPECT_EQ(__junLoadStreamF(&stream, nullptr, 3), JUN_RNG_NULL_POINTER);
}
