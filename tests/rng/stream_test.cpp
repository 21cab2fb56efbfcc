// stream_test: life of streams, their chunks and the data that chunks share.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "rng/stream_layout.h"
#include "service/late_binding.h"
#include "tests/rng/probe.h"
#include "tests/support/faulty_core.h"
#include "tests/support/threads.h"

namespace {

using orin::rng::header_of;
using orin::service::allocate;

struct DeleteStream {
  void operator()(void* stream) const { __junDeleteStream(&stream); }
};
using Stream = std::unique_ptr<void, DeleteStream>;

unsigned char* bytes_of(void* stream) { return static_cast<unsigned char*>(stream); }

int32_t state_bytes(int32_t brng) {
  JunBrngProperties row = {};
  __junGetBrngProperties(brng, &row);
  return row.StateBytes;
}

// A stream whose state bytes are start, start + 1, ...
Stream patterned(int32_t brng, int start = 0) {
  int32_t row = 0, sub_stream = 0;
  const JunBrngProperties* table = __junGetBrngBaseOffset(brng, &row, &sub_stream);
  void* stream = nullptr;
  EXPECT_EQ(__junAllocateStream(&stream, brng, table, row, sub_stream), 0);
  for (int32_t i = 16; i < state_bytes(brng); ++i) bytes_of(stream)[i] = static_cast<unsigned char>(start + i);
  return Stream(stream);
}

void* block(const char* text) {
  void* data = allocate(std::strlen(text) + 1, 32);
  std::strcpy(static_cast<char*>(data), text);
  return data;
}

int32_t add(const Stream& stream, int32_t id, const char* text, const uint64_t* key = nullptr) {
  void* data = block(text);
  const int32_t status = __junAddChunk(stream.get(), id, key, data, static_cast<int32_t>(std::strlen(text) + 1));
  if (status != 0 || __junSearchChunk(stream.get(), id) != data) orin::service::deallocate(data);
  return status;
}

const JunStreamChunk* chunks(const Stream& stream) {
  return reinterpret_cast<const JunStreamChunk*>(static_cast<uintptr_t>(header_of(stream.get()).chunks));
}

uint32_t references(const uint64_t* key) {
  JunGlobRODataEntry* entry = nullptr;
  return __junFindGlobRODataTableEntry(&entry, key) == 0 ? entry->references : 0;
}

// Every test ends with as many blocks as it began with.
class StreamTest : public ::testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(faulty_core::live_blocks(), blocks_); }
  long blocks_ = faulty_core::live_blocks();
};
using Chunks = StreamTest;
using SharedData = StreamTest;

}  // namespace

TEST_F(StreamTest, BeginsWithItsHeaderAndIsSeeded) {
  const uint32_t seeds[2] = {7, 8};
  for (const int32_t status : {0, -77}) {
    probe::status = status;
    void* stream = nullptr;
    EXPECT_EQ(__junNewStreamEx(&stream, probe::identifier(), 2, seeds), status);
    probe::status = 0;
    ASSERT_NE(stream, nullptr) << "a failing InitStream leaves the stream to the caller";
    EXPECT_EQ(reinterpret_cast<uintptr_t>(stream) % 64, 0u);
    unsigned char expected[48] = {};
    const int32_t brng = probe::identifier();
    std::memcpy(expected, &brng, 4);
    expected[4] = 1;
    EXPECT_EQ(std::memcmp(stream, expected, 48), 0);
    EXPECT_EQ(__junGetStreamStateBrng(stream), brng);
    EXPECT_EQ(probe::last_call.method, 0);
    EXPECT_EQ(probe::last_call.params, (std::vector<uint32_t>{7, 8}));
    EXPECT_EQ(__junDeleteStream(&stream), 0);
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(__junDeleteStream(&stream), 0);
  }
}

TEST_F(StreamTest, RefusedCreationLeavesANullPointer) {
  const int32_t tiny = probe::identifier<15>(), least = probe::identifier<16>();
  const uint32_t seed = 1;
  for (const int32_t brng : {0xA00000, 0xB00000, 0xC00000, 0xA00001, -1, 279, 0x500000 + 273, 0x900000 + 6024, tiny,
                             std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()}) {
    void* stream = &stream;
    EXPECT_EQ(__junNewStreamEx(&stream, brng, 1, &seed), JUN_RNG_BAD_IDENTIFIER) << brng;
    EXPECT_EQ(stream, nullptr) << brng;
  }
  void* stream = &stream;
  EXPECT_EQ(__junAllocateStream(&stream, 0x500000, __RegBrngsNew, 4, 273), JUN_RNG_BAD_IDENTIFIER);
  EXPECT_EQ(stream, nullptr);
  faulty_core::fail_at(0);
  stream = &stream;
  EXPECT_EQ(__junNewStreamEx(&stream, least, 1, &seed), JUN_RNG_NO_MEMORY);
  EXPECT_EQ(stream, nullptr);
  EXPECT_EQ(__junNewStreamEx(&stream, least, 1, &seed), 0);
  EXPECT_EQ(__junNewStreamEx(nullptr, least, 1, &seed), JUN_RNG_NULL_POINTER);
  __junDeleteStream(&stream);
}

TEST_F(StreamTest, CopyHasStateAndChunks) {
  const uint64_t key[2] = {5, 1ull << 63};
  Stream source = patterned(0x800000);
  EXPECT_EQ(add(source, 1, "first"), 0);
  EXPECT_EQ(add(source, 2, "shared", key), 0);
  EXPECT_EQ(add(source, 3, "third"), 0);
  void* place = nullptr;
  ASSERT_EQ(__junCopyStream(&place, source.get()), 0);
  Stream copy(place);
  EXPECT_EQ(std::memcmp(bytes_of(place) + 16, bytes_of(source.get()) + 16, 2504), 0);
  EXPECT_EQ(std::memcmp(place, source.get(), 8), 0);
  EXPECT_EQ(references(key), 2u);
  const JunStreamChunk* chunk = chunks(copy);
  for (int32_t id = 1; id <= 3; ++id, chunk = chunk->next) {
    ASSERT_NE(chunk, nullptr);
    EXPECT_EQ(chunk->id, id) << "a copied list is reversed";
    EXPECT_STREQ(static_cast<char*>(chunk->data), static_cast<char*>(__junSearchChunk(source.get(), id)));
    EXPECT_EQ(chunk->data == __junSearchChunk(source.get(), id), id == 2) << "only shared data is not copied";
    EXPECT_EQ(reinterpret_cast<uintptr_t>(chunk) % 64, 0u);
  }
  EXPECT_EQ(chunk, nullptr);
  source.reset();
  EXPECT_STREQ(static_cast<char*>(__junSearchChunk(copy.get(), 2)), "shared");

  header_of(copy.get()).brng = 0x500000 + 273;
  place = &place;
  EXPECT_EQ(__junCopyStream(&place, copy.get()), JUN_RNG_BAD_IDENTIFIER);
  EXPECT_EQ(place, nullptr);
}

// Bytes moved: WordBytes * SeedWords, never past the end of either state.
TEST_F(StreamTest, CopiesStatesAsFarAsSeedWordsSay) {
  struct Case {
    int32_t from, to, bytes;
  };
  for (const auto& [from, to, bytes] : {Case{0x100000, 0x100000, 4},
                                        {0x200000, 0x200000, 1008},
                                        {0x300000, 0x300000, 24},
                                        {0x400000, 0x400000, 8},
                                        {0x500000, 0x500000, 32},
                                        {0x600000, 0x600000, 10416},
                                        {0x700000, 0x700000, 41992},
                                        {0x800000, 0x800000, 2500},
                                        {0x900000 + 6023, 0x900000, 280},
                                        {0xB00000, 0xB00000, 0},
                                        {0xD00000, 0xD00000, 2520},
                                        {0xE00000, 0xE00000, 4},
                                        {5, 0x500000, 32},
                                        {0xD00000, 0x100000, 8},
                                        {0x100000, 0xD00000, 4},
                                        {0xD00000, 0x800000, 2504}}) {
    Stream source = patterned(from, 1), destination = patterned(to, 101), before = patterned(to, 101);
    EXPECT_EQ(__junCopyStreamState(destination.get(), source.get()), 0);
    std::memcpy(bytes_of(before.get()) + 16, bytes_of(source.get()) + 16, static_cast<std::size_t>(bytes));
    EXPECT_EQ(std::memcmp(destination.get(), before.get(), static_cast<std::size_t>(state_bytes(to))), 0)
        << std::hex << from;
  }
}

TEST_F(StreamTest, CopiedStateReplacesTheChunks) {
  Stream source = patterned(0x100000), destination = patterned(0x100000);
  EXPECT_EQ(add(source, 1, "new"), 0);
  EXPECT_EQ(add(destination, 2, "old"), 0);
  EXPECT_EQ(__junCopyStreamState(destination.get(), destination.get()), 0);
  EXPECT_STREQ(static_cast<char*>(__junSearchChunk(destination.get(), 2)), "old") << "onto itself changes nothing";
  EXPECT_EQ(__junCopyStreamState(destination.get(), source.get()), 0);
  EXPECT_EQ(__junGetNumChunks(destination.get()), 1);
  EXPECT_STREQ(static_cast<char*>(__junSearchChunk(destination.get(), 1)), "new");
  header_of(source.get()).brng = -3;
  EXPECT_EQ(__junCopyStreamState(destination.get(), source.get()), JUN_RNG_BAD_IDENTIFIER);
}

// Each allocation of a copy fails in turn: the status is told, what was made so far stays with the stream, nothing
// leaks.
TEST_F(StreamTest, CopiesSurviveFailingAllocations) {
  const uint64_t key[2] = {77, 0};
  Stream source = patterned(0x100000);
  EXPECT_EQ(add(source, 1, "one"), 0);
  EXPECT_EQ(add(source, 2, "two", key), 0);
  EXPECT_EQ(add(source, 3, "three"), 0);
  long run = 0;
  const long failures = faulty_core::fail_each([&](bool) {
    void* place = &place;
    const int32_t status = __junCopyStream(&place, source.get());
    const bool failed = run < 6;  // stream, data 3, record 3, record 2, data 1, record 1
    EXPECT_EQ(status, failed ? JUN_RNG_NO_MEMORY : 0) << run;
    EXPECT_EQ(place == nullptr, run == 0) << "only the stream's own block clears the pointer";
    const int32_t copied[] = {0, 0, 0, 1, 2, 2, 3};
    EXPECT_EQ(__junGetNumChunks(place), copied[run]) << run;
    EXPECT_EQ(references(key), copied[run] >= 2 ? 2u : 1u);
    __junDeleteStream(&place);
    ++run;
  });
  EXPECT_EQ(failures, 6);

  for (long n = 0; n < 6; ++n) {
    Stream destination = patterned(0x100000);
    EXPECT_EQ(add(destination, 9, "old"), 0);
    faulty_core::fail_at(n);
    EXPECT_EQ(__junCopyStreamState(destination.get(), source.get()), n < 5 ? JUN_RNG_NO_MEMORY : 0) << n;
    EXPECT_EQ(__junSearchChunk(destination.get(), 9), nullptr) << n;
  }
  faulty_core::fail_at(0);
  char data[] = "the caller's";
  EXPECT_EQ(__junAddChunk(source.get(), 4, key, data, 12), JUN_RNG_NO_MEMORY);
  EXPECT_EQ(__junGetNumChunks(source.get()), 3);
  EXPECT_EQ(references(key), 1u);
}

TEST_F(Chunks, AreFoundLatestFirst) {
  Stream stream = patterned(0x100000);
  EXPECT_EQ(__junGetNumChunks(stream.get()), 0);
  EXPECT_EQ(__junSearchChunk(stream.get(), 5), nullptr);
  EXPECT_EQ(add(stream, 5, "old"), 0);
  EXPECT_EQ(add(stream, 5, "new"), 0);
  EXPECT_EQ(__junGetNumChunks(stream.get()), 2);
  EXPECT_STREQ(static_cast<char*>(__junSearchChunk(stream.get(), 5)), "new");
  EXPECT_EQ(__junSearchChunk(stream.get(), 6), nullptr);
  EXPECT_EQ(__junAddChunk(stream.get(), 7, nullptr, nullptr, 0), 0);
  void* copy = nullptr;
  EXPECT_EQ(__junCopyStream(&copy, stream.get()), 0) << "a chunk without data is copied as one";
  EXPECT_EQ(__junGetNumChunks(copy), 3);
  __junDeleteStream(&copy);
  __junDeleteChunks(stream.get());
  EXPECT_EQ(header_of(stream.get()).chunks, 0u);
}

TEST_F(SharedData, IsOneBlockForAllItsUsers) {
  const uint64_t key[2] = {0, 9}, zero[2] = {0, 0}, other[2] = {9, 0};
  Stream one = patterned(0x100000), two = patterned(0x100000);
  EXPECT_EQ(add(one, 1, "kept", key), 0);
  EXPECT_EQ(add(two, 2, "not needed", key), 0);
  EXPECT_EQ(__junSearchChunk(one.get(), 1), __junSearchChunk(two.get(), 2));
  EXPECT_EQ(references(key), 2u);
  EXPECT_EQ(add(one, 3, "private", zero), 0);
  EXPECT_EQ(chunks(one)->key[0] | chunks(one)->key[1], 0u);
  one.reset();
  EXPECT_EQ(references(key), 1u);
  EXPECT_STREQ(static_cast<char*>(__junSearchChunk(two.get(), 2)), "kept");

  JunStreamChunk chunk = {};
  __junRegisterGlobRODataReference(&chunk, other);
  EXPECT_EQ(chunk.data, nullptr);
  __junRegisterGlobRODataReference(&chunk, key);
  EXPECT_EQ(chunk.data, __junSearchChunk(two.get(), 2));
  EXPECT_EQ(references(key), 2u);
  __junUnregisterGlobRODataReference(key);
  __junUnregisterGlobRODataReference(other);
  __junUnregisterGlobRODataReference(nullptr);
  EXPECT_EQ(references(key), 1u);
  two.reset();
  EXPECT_EQ(references(key), 0u);

  JunGlobRODataEntry* entry = nullptr;
  for (const uint64_t* absent : {static_cast<const uint64_t*>(nullptr), zero, key}) {
    EXPECT_EQ(__junFindGlobRODataTableEntry(&entry, absent), JUN_RNG_NO_ENTRY);
    EXPECT_EQ(entry, nullptr);
  }
}

// 127 entries fill the table for chunks, 128 for entries made directly; removals leave no holes.
TEST_F(SharedData, KeepsItsLastEntryFree) {
  Stream stream = patterned(0x100000);
  uint64_t key[2] = {0, 3};
  for (key[0] = 1; key[0] <= 127; ++key[0]) ASSERT_EQ(add(stream, static_cast<int32_t>(key[0]), "entry", key), 0);
  ASSERT_EQ(add(stream, 128, "private", key), 0);
  EXPECT_EQ(chunks(stream)->key[0] | chunks(stream)->key[1], 0u);
  EXPECT_EQ(references(key), 0u);

  JunGlobRODataEntry* entry = nullptr;
  void* data = block("direct");
  EXPECT_EQ(__junCreateGlobRODataTableEntry(&entry, key, data), 0);
  EXPECT_TRUE(entry->data == data && entry->references == 1 && entry->key[0] == 128 && entry->key[1] == 3);
  EXPECT_EQ(__junCreateGlobRODataTableEntry(&entry, key, nullptr), 0) << "one key never has two entries";
  EXPECT_TRUE(entry->data == data && entry->references == 2);
  const uint64_t one_more[2] = {129, 3};
  EXPECT_EQ(__junCreateGlobRODataTableEntry(&entry, one_more, nullptr), JUN_RNG_TABLE_FULL);
  EXPECT_EQ(entry, nullptr);
  EXPECT_EQ(__junCreateGlobRODataTableEntry(&entry, nullptr, nullptr), JUN_RNG_NO_ENTRY);

  key[0] = 1;  // the last entry takes its place
  __junUnregisterGlobRODataReference(key);
  const uint64_t last[2] = {128, 3};
  EXPECT_EQ(references(key), 0u);
  EXPECT_EQ(references(last), 2u);
  EXPECT_EQ(add(stream, 129, "again private", one_more), 0);
  EXPECT_EQ(references(one_more), 0u) << "127 are in use still";
  __junUnregisterGlobRODataReference(last);
  __junUnregisterGlobRODataReference(last);
  for (JunStreamChunk* chunk = const_cast<JunStreamChunk*>(chunks(stream)); chunk != nullptr; chunk = chunk->next) {
    if (chunk->id == 1) chunk->data = nullptr;  // its block went with the reference dropped above
  }
}

TEST_F(SharedData, MakesNewKeys) {
  uint64_t keys[100][2];
  for (int i = 0; i < 100; ++i) {
    JunGlobRODataEntry* entry = nullptr;
    ASSERT_EQ(__junGenerateNewGlobalRODataTableEntryId(keys[i], -13), 0);
    EXPECT_EQ(keys[i][1], ~uint64_t{12});
    ASSERT_EQ(__junFindGlobRODataTableEntry(&entry, keys[i]), JUN_RNG_NO_ENTRY);
    ASSERT_EQ(__junCreateGlobRODataTableEntry(&entry, keys[i], nullptr), 0);
  }
  for (auto& key : keys) __junUnregisterGlobRODataReference(key);
}

// Threads share, copy and drop the same few keys; at the end nothing is left of any of them.
TEST_F(SharedData, IsSafeUnderThreads) {
  constexpr int thread_count = 4, rounds = 3000, key_count = 3;
  std::atomic<int> all_wrong{0};
  run_threads(thread_count, [&](int thread) {
    int wrong = 0;  // an atomic counter here would order the threads' accesses
    for (int round = 0; round < rounds; ++round) {
      const uint64_t key[2] = {static_cast<uint64_t>((round + thread) % key_count), 1000};
      Stream stream = patterned(0x100000);
      const std::string text = "table " + std::to_string(key[0]);
      wrong += add(stream, 1, text.c_str(), key) != 0;
      void* copy = nullptr;
      wrong += __junCopyStream(&copy, stream.get()) != 0;
      stream.reset();
      wrong += text != static_cast<const char*>(__junSearchChunk(copy, 1));
      __junDeleteStream(&copy);

      const uint64_t direct[2] = {key[0], 2000};
      JunGlobRODataEntry* entry = nullptr;
      JunStreamChunk chunk = {};
      wrong += __junCreateGlobRODataTableEntry(&entry, direct, nullptr) != 0;
      __junRegisterGlobRODataReference(&chunk, direct);
      wrong += __junFindGlobRODataTableEntry(&entry, direct) != 0;
      __junUnregisterGlobRODataReference(direct);
      __junUnregisterGlobRODataReference(direct);
    }
    all_wrong += wrong;
  });
  EXPECT_EQ(all_wrong, 0);
  for (uint64_t i = 0; i < key_count; ++i) {
    for (const uint64_t family : {1000u, 2000u}) {
      const uint64_t key[2] = {i, family};
      EXPECT_EQ(references(key), 0u);
    }
  }
}
