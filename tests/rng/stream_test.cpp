// stream_test: life of streams, their chunks and the data that chunks share.
// SPDX-License-Identifier: MIT
#include <atomic>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "rng/chunks.h"
#include "service/late_binding.h"
#include "tests/rng/support.h"
#include "tests/support/threads.h"

namespace {

using orin::rng::header_of;
using Chunks = NoLeaks;
using SharedData = NoLeaks;
using Streams = NoLeaks;

void* block(const char* text) {
  void* data = orin::service::allocate(std::strlen(text) + 1, 32);
  std::strcpy(static_cast<char*>(data), text);
  return data;
}

// The block passed goes back unless the chunk or the table has taken it.
void add(const Stream& stream, int32_t id, const char* text, const uint64_t* key = nullptr) {
  void* data = block(text);
  EXPECT_EQ(__junAddChunk(stream.get(), id, key, data, static_cast<int32_t>(std::strlen(text) + 1)), 0);
  if (__junSearchChunk(stream.get(), id) != data) orin::service::deallocate(data);
}

uint32_t references(const uint64_t* key) {
  JunGlobRODataEntry* entry = nullptr;
  return __junFindGlobRODataTableEntry(&entry, key) == 0 ? entry->references : 0;
}

// Both halves at once; 0 for a private chunk.
uint64_t key_of_latest(const Stream& stream) {
  const JunStreamChunk* chunk = orin::rng::first_chunk(stream.get());
  return chunk->key[0] | chunk->key[1];
}

const char* text(const Stream& stream, int32_t id) {
  return static_cast<const char*>(__junSearchChunk(stream.get(), id));
}

}  // namespace

TEST_F(Streams, BeginWithTheirHeaderAndAreSeeded) {
  const uint32_t seeds[2] = {7, 8};
  const int32_t brng = probe::identifier();
  unsigned char expected[48] = {};
  std::memcpy(expected, &brng, 4);
  expected[4] = 1;
  for (const int32_t status : {0, -77}) {
    probe::status = status;
    void* stream = nullptr;
    EXPECT_EQ(__junNewStreamEx(&stream, brng, 2, seeds), status);
    ASSERT_NE(stream, nullptr) << "a failing InitStream leaves the stream to the caller";
    EXPECT_EQ(reinterpret_cast<uintptr_t>(stream) % 64, 0u);
    EXPECT_EQ(std::memcmp(stream, expected, 48), 0);
    EXPECT_EQ(__junGetStreamStateBrng(stream), brng);
    EXPECT_TRUE(probe::method == 0 && probe::params == (std::vector<uint32_t>{7, 8}));
    EXPECT_EQ(__junDeleteStream(&stream), 0);
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(__junDeleteStream(&stream), 0);
  }
  probe::status = 0;
}

TEST_F(Streams, RefusedLeaveANullPointer) {
  void* stream = nullptr;
  for (const int32_t brng :
       {0xA00000, 0xB00000, 0xC00000, -1, 279, 0x500000 + 273, 0x900000 + 6024, probe::identifier<15>(),
        std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()}) {
    stream = &stream;
    EXPECT_EQ(__junNewStreamEx(&stream, brng, 0, nullptr), JUN_RNG_BAD_IDENTIFIER) << brng;
    EXPECT_EQ(stream, nullptr) << brng;
  }
  stream = &stream;
  EXPECT_EQ(__junAllocateStream(&stream, 0x500000, __RegBrngsNew, 4, 273), JUN_RNG_BAD_IDENTIFIER);
  EXPECT_EQ(stream, nullptr);
  faulty_core::fail_at(0);
  stream = &stream;
  EXPECT_EQ(__junNewStreamEx(&stream, probe::identifier<16>(), 0, nullptr), JUN_RNG_NO_MEMORY);
  EXPECT_EQ(stream, nullptr);
  EXPECT_EQ(__junNewStreamEx(&stream, probe::identifier<16>(), 0, nullptr), 0) << "a header is enough";
  __junDeleteStream(&stream);
  for (const int32_t brng : {JUN_BRNG_WH, JUN_BRNG_MT19937, JUN_BRNG_SOBOL}) {
    stream = &stream;
    EXPECT_EQ(__junNewStreamEx(&stream, brng, 1, nullptr), JUN_RNG_NULL_POINTER) << "seeds promised and not given";
    EXPECT_EQ(stream, nullptr);
  }
}

TEST_F(Streams, CopyHasStateAndChunks) {
  const uint64_t key[2] = {5, 1ull << 63};
  Stream source = patterned(0x800000);
  add(source, 1, "first");
  add(source, 2, "shared", key);
  add(source, 3, "third");
  void* place = nullptr;
  ASSERT_EQ(__junCopyStream(&place, source.get()), 0);
  Stream copy(place);
  EXPECT_EQ(std::memcmp(place, source.get(), 8), 0);
  EXPECT_EQ(std::memcmp(bytes_of(copy) + 16, bytes_of(source) + 16, 2504), 0);
  EXPECT_EQ(references(key), 2u);
  const JunStreamChunk* chunk = orin::rng::first_chunk(copy.get());
  for (int32_t id = 1; id <= 3; ++id, chunk = chunk->next) {
    ASSERT_NE(chunk, nullptr);
    EXPECT_EQ(chunk->id, id) << "a copied list is reversed";
    EXPECT_STREQ(static_cast<char*>(chunk->data), text(source, id));
    EXPECT_EQ(chunk->data == __junSearchChunk(source.get(), id), id == 2) << "only shared data is not copied";
    EXPECT_EQ(reinterpret_cast<uintptr_t>(chunk) % 64, 0u);
  }
  EXPECT_EQ(chunk, nullptr);
  source.reset();
  EXPECT_STREQ(text(copy, 2), "shared");

  header_of(copy.get()).brng = 0x500000 + 273;
  place = &place;
  EXPECT_EQ(__junCopyStream(&place, copy.get()), JUN_RNG_BAD_IDENTIFIER);
  EXPECT_EQ(place, nullptr);
}

// Bytes moved: WordBytes * SeedWords, never past the end of either state.
TEST_F(Streams, CopiesStatesAsFarAsSeedWordsSay) {
  constexpr int32_t cases[][3] = {
      {0x100000, 0x100000, 4},   {0x200000, 0x200000, 1008},  {0x300000, 0x300000, 24},    {0x400000, 0x400000, 8},
      {0x500000, 0x500000, 32},  {0x600000, 0x600000, 10416}, {0x700000, 0x700000, 41992}, {0x800000, 0x800000, 2500},
      {0x900000, 0x901787, 280}, {0xB00000, 0xB00000, 0},     {0xD00000, 0xD00000, 2520},  {0xE00000, 0xE00000, 4},
      {5, 0x500000, 32},         {0xD00000, 0x100000, 8},     {0x100000, 0xD00000, 4},     {0xD00000, 0x800000, 2504}};
  for (const auto& [from, to, bytes] : cases) {
    Stream source = patterned(from, 1), destination = patterned(to, 101), before = patterned(to, 101);
    EXPECT_EQ(__junCopyStreamState(destination.get(), source.get()), 0);
    std::memcpy(bytes_of(before) + 16, bytes_of(source) + 16, static_cast<std::size_t>(bytes));
    EXPECT_EQ(std::memcmp(destination.get(), before.get(), static_cast<std::size_t>(row_of(to).StateBytes)), 0)
        << std::hex << from;
  }
}

TEST_F(Streams, CopiedStateReplacesTheChunks) {
  Stream source = patterned(0x100000), destination = patterned(0x100000);
  add(source, 1, "new");
  add(destination, 2, "old");
  EXPECT_EQ(__junCopyStreamState(destination.get(), destination.get()), 0);
  EXPECT_STREQ(text(destination, 2), "old") << "onto itself changes nothing";
  EXPECT_EQ(__junCopyStreamState(destination.get(), source.get()), 0);
  EXPECT_EQ(__junGetNumChunks(destination.get()), 1);
  EXPECT_STREQ(text(destination, 1), "new");
  header_of(source.get()).brng = -3;
  EXPECT_EQ(__junCopyStreamState(destination.get(), source.get()), JUN_RNG_BAD_IDENTIFIER);
}

// Each allocation of a copy fails in turn: the status is told, what was made so far stays with the stream, nothing
// leaks.
TEST_F(Streams, CopiesSurviveFailingAllocations) {
  const uint64_t key[2] = {77, 0};
  Stream source = patterned(0x100000);
  add(source, 1, "one");
  add(source, 2, "two", key);
  add(source, 3, "three");
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
    add(destination, 9, "old");
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
  const Stream stream = patterned(0x100000);
  EXPECT_EQ(__junGetNumChunks(stream.get()), 0);
  add(stream, 5, "old");
  add(stream, 5, "new");
  EXPECT_EQ(__junGetNumChunks(stream.get()), 2);
  EXPECT_STREQ(text(stream, 5), "new");
  EXPECT_EQ(__junSearchChunk(stream.get(), 6), nullptr);
  __junDeleteChunks(stream.get());
  EXPECT_EQ(header_of(stream.get()).chunks, 0u);
}

TEST_F(SharedData, IsOneBlockForAllItsUsers) {
  const uint64_t key[2] = {0, 9}, zero[2] = {0, 0}, other[2] = {9, 0};
  Stream one = patterned(0x100000), two = patterned(0x100000);
  add(one, 1, "kept", key);
  add(two, 2, "not needed", key);
  EXPECT_EQ(__junSearchChunk(one.get(), 1), __junSearchChunk(two.get(), 2));
  EXPECT_EQ(references(key), 2u);
  add(one, 3, "private", zero);
  EXPECT_EQ(key_of_latest(one), 0u);
  one.reset();
  EXPECT_EQ(references(key), 1u);
  EXPECT_STREQ(text(two, 2), "kept");

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
  for (key[0] = 1; key[0] <= 127; ++key[0]) add(stream, static_cast<int32_t>(key[0]), "entry", key);
  add(stream, 128, "private", key);
  EXPECT_EQ(key_of_latest(stream), 0u);
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
  add(stream, 129, "again private", one_more);
  EXPECT_EQ(references(one_more), 0u) << "127 are in use still";
  __junUnregisterGlobRODataReference(last);
  __junUnregisterGlobRODataReference(last);
  orin::rng::find_chunk(stream.get(), 1)->data = nullptr;  // its block went with the reference dropped above
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
  constexpr uint64_t rounds = 3000, key_count = 3;
  std::atomic<int> all_wrong{0};
  run_threads(4, [&](int thread) {
    int wrong = 0;  // an atomic counter here would order the threads' accesses
    for (uint64_t round = 0; round < rounds; ++round) {
      const uint64_t key[2] = {(round + static_cast<uint64_t>(thread)) % key_count, 1000}, direct[2] = {key[0], 2000};
      const std::string expected = "table " + std::to_string(key[0]);
      Stream stream = patterned(0x100000);
      add(stream, 1, expected.c_str(), key);
      void* place = nullptr;
      wrong += __junCopyStream(&place, stream.get()) != 0;
      const Stream copy(place);
      stream.reset();
      wrong += text(copy, 1) != expected;

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
  for (uint64_t key[2] = {0, 1000}; key[0] < key_count; ++key[0]) {
    const uint64_t direct[2] = {key[0], 2000};
    EXPECT_EQ(references(key) + references(direct), 0u);
  }
}
