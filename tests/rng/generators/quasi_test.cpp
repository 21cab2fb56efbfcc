// quasi_test: points, nets, selection of a coordinate, skips and tables of the quasi-random families.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <map>

#include "rng/chunks.h"
#include "service/late_binding.h"
#include "tests/rng/generators/references.h"
#include "tests/support/faulty_core.h"

// The linker leads the makers of tables here for their keys.
static std::vector<uint64_t> key_in_use;  // handed out once, as a second thread gets it within the same tick

extern "C" {
int32_t __real___junGenerateNewGlobalRODataTableEntryId(uint64_t*, int32_t);
int32_t __wrap___junGenerateNewGlobalRODataTableEntryId(uint64_t* key, int32_t tag) {
  if (key_in_use.empty()) return __real___junGenerateNewGlobalRODataTableEntryId(key, tag);
  std::copy(key_in_use.begin(), key_in_use.end(), key);
  key_in_use.clear();
  return JUN_RNG_OK;
}
}

namespace {

using namespace references;

struct Sequence {
  int32_t brng;
  uint32_t most;
  std::array<uint32_t, 32> (*columns)(uint32_t);
};
constexpr Sequence sequences[] = {{JUN_BRNG_SOBOL, 40, sobol_columns}, {JUN_BRNG_NIEDERR, 318, niederreiter_columns}};

uint32_t point(const std::array<uint32_t, 32>& columns, uint32_t i) {
  uint32_t x = 0;
  for (uint32_t gray = i ^ i >> 1; gray != 0; gray &= gray - 1)
    x ^= columns[static_cast<std::size_t>(std::countr_zero(gray))];
  return x;
}

// Each coordinate alone is a (0, 1)-sequence after the first block of its degree; two or three together are a (t,
// s)-sequence with t the sum of degree - 1: each elementary interval of volume 2^(t-m) holds 2^t of 2^m points. The
// first 2^m points are the zero point and what the stream delivers.
TEST(Quasi, NiederreiterPointsFormNets) {
  const uint32_t m = 12;
  const Stream stream = new_stream(JUN_BRNG_NIEDERR, {318});
  std::vector<uint32_t> points(318);
  const std::vector<uint32_t> delivered = raw(stream, 318 * ((1U << m) - 1));
  points.insert(points.end(), delivered.begin(), delivered.end());
  const auto degree = [](uint32_t j) { return static_cast<uint32_t>(std::bit_width(irreducible_polynomial(j))) - 1; };
  const std::vector<std::vector<uint32_t>> choices = {{0},    {1},    {5},       {40},     {0, 1},
                                                      {2, 4}, {3, 7}, {0, 1, 2}, {1, 3, 4}};
  for (const std::vector<uint32_t>& dimensions : choices) {
    uint32_t t = 0;
    for (const uint32_t j : dimensions) t += degree(j) - 1;
    const uint32_t bits = m - t;
    for (uint32_t split = 0; split <= bits;
         ++split) {  // bits of the first and second coordinate, the rest of the third
      const uint32_t second = dimensions.size() == 1 ? 0 : dimensions.size() == 2 ? bits - split : (bits - split) / 2;
      const uint32_t first = dimensions.size() == 1 ? bits : split;
      const uint32_t share[3] = {first, second, bits - first - second};
      std::map<uint32_t, uint32_t> intervals;
      for (uint32_t i = 0; i < 1U << m; ++i) {
        uint32_t cell = 0;
        for (std::size_t k = 0; k < dimensions.size(); ++k)
          cell = cell << share[k] | static_cast<uint32_t>(uint64_t{points[318 * i + dimensions[k]]} >> (32 - share[k]));
        ++intervals[cell];
      }
      ASSERT_EQ(intervals.size(), std::size_t{1} << bits);
      for (const auto& [cell, count] : intervals) ASSERT_EQ(count, 1U << t);
    }
  }
}

TEST(Quasi, LeapfrogSelectsACoordinateFromTheNextPointOn) {
  for (const Sequence& s : sequences) {
    for (const uint32_t delivered : {0U, 1U, 6U, 7U, 12U, 448U, 461U, 3000U}) {
      const Stream stream = new_stream(s.brng, {7});
      raw(stream, delivered);
      for (const int32_t bad : {7, 8, -1})
        EXPECT_EQ(__junLeapfrogStream(stream.get(), bad, JUN_RNG_SELECT_COORDINATE), JUN_RNG_NO_LEAPFROG);
      EXPECT_EQ(__junLeapfrogStream(stream.get(), 2, 7), JUN_RNG_NO_LEAPFROG);
      uint32_t i = (delivered + 6) / 7 + 1;
      for (const uint32_t k : {5U, 0U, 6U}) {  // each time anew
        ASSERT_EQ(__junLeapfrogStream(stream.get(), static_cast<int32_t>(k), JUN_RNG_SELECT_COORDINATE), JUN_RNG_OK);
        const auto columns = s.columns(k);
        for (const uint32_t x : raw(stream, 301)) ASSERT_EQ(x, point(columns, i++));
        ASSERT_EQ(__junSkipAheadStream(stream.get(), 1000), JUN_RNG_OK);
        i += 1000;
        for (const uint32_t x : raw(copy_of(stream), 200)) ASSERT_EQ(x, point(columns, i++));
        i -= 200;
      }
    }
  }
}

// Skips count outputs; after 2^32 points, the zero point included, the sequence repeats. Floats are rounded once on
// both sides of the end, with all 32 bits set before it and few after.
TEST(Quasi, FarSkipsAndTheEndOfThePeriod) {
  for (const Sequence& s : sequences) {
    for (const uint32_t d : {1U, 3U, 10U, 33U, s.most}) {
      const Stream stream = new_stream(s.brng, {d});
      const uint64_t period = d * (uint64_t{1} << 32);
      const uint64_t to = period - 200 * uint64_t{d} + 2 % d;
      ASSERT_EQ(__junSkipAheadStream(stream.get(), to - d), JUN_RNG_OK);  // the zero point was never delivered
      const Stream same = copy_of(stream);
      const std::vector<uint32_t> x = raw(stream, 400 * std::size_t{d});
      const std::vector<float> u = uniforms<float>(same, x.size());
      for (std::size_t k = 0; k < x.size(); ++k)
        ASSERT_EQ(u[k], std::min(static_cast<float>(x[k] * 0x1p-32), 1 - 0x1p-24f)) << d << ' ' << k;
      for (std::size_t k = 0; k < x.size(); k += 37) {
        const uint64_t output = (to + k) % period;
        ASSERT_EQ(x[k], point(s.columns(static_cast<uint32_t>(output % d)), static_cast<uint32_t>(output / d)))
            << d << ' ' << k;
      }
      ASSERT_EQ(__junSkipAheadStream(stream.get(), uint64_t{1} << 62), JUN_RNG_OK);
      const uint64_t output = (to + x.size() + (uint64_t{1} << 62)) % period;
      ASSERT_EQ(raw(stream, 1)[0],
                point(s.columns(static_cast<uint32_t>(output % d)), static_cast<uint32_t>(output / d)));
    }
    const uint32_t words[2] = {1, 0};
    JunBrngProperties row = {};
    __junGetBrngProperties(s.brng, &row);
    const Stream stream = new_stream(s.brng, {3});
    for (const int32_t n : {0, -1})
      EXPECT_EQ(row.InitStream(JUN_RNG_SKIP_AHEAD, stream.get(), n, words), JUN_RNG_NO_SKIP_AHEAD);
  }
}

// A distribution may throw the stream's chunks away, and a saved image may bring wrong ones.
TEST(Quasi, TablesAreSharedAndBuiltAgain) {
  for (const Sequence& s : sequences) {
    const Stream whole = new_stream(s.brng, {12}), stream = new_stream(s.brng, {12});
    EXPECT_EQ(__junGetNumChunks(stream.get()), s.brng == JUN_BRNG_SOBOL ? 2 : 1);
    const int32_t id = s.brng == JUN_BRNG_SOBOL ? 9 : 10;
    const Stream copy = copy_of(stream);
    EXPECT_EQ(__junSearchChunk(copy.get(), id), __junSearchChunk(stream.get(), id));
    const std::vector<uint32_t> expected = raw(whole, 2000);
    EXPECT_EQ(raw(copy, 2000), expected);
    std::vector<uint32_t> r = raw(stream, 1000);
    __junDeleteChunks(stream.get());
    const std::vector<uint32_t> more = raw(stream, 500);
    __junDeleteChunks(stream.get());
    void* wrong = orin::service::allocate(64, 64);
    ASSERT_EQ(__junAddChunk(stream.get(), id, nullptr, wrong, 64), JUN_RNG_OK);
    const std::vector<uint32_t> rest = raw(stream, 500);
    r.insert(r.end(), more.begin(), more.end());
    r.insert(r.end(), rest.begin(), rest.end());
    EXPECT_EQ(r, expected);
  }
}

// An image may give a table the key of another chunk's data, which is too small for it.
TEST(Quasi, SharedDataOfAnotherSizeIsNotTaken) {
  const Stream stream = new_stream(JUN_BRNG_NIEDERR, {12});
  std::vector<unsigned char> image(static_cast<std::size_t>(__junGetStreamSize(stream.get())));
  ASSERT_EQ(__junSaveStreamM(stream.get(), image.data()), JUN_RNG_OK);
  const std::size_t first_chunk = 20 + 43280 - 16;
  const uint32_t chunk[7] = {77, 0x1234, 1, 2, 3, 4, 0};  // identifier, key, size, data
  image[12] = 2;
  image.insert(image.begin() + first_chunk, reinterpret_cast<const unsigned char*>(chunk),
               reinterpret_cast<const unsigned char*>(chunk + 7));
  image[first_chunk + 20] = 4;
  std::memcpy(&image[first_chunk + 28 + 4], chunk + 1, 16);
  void* loaded = nullptr;
  ASSERT_EQ(__junLoadStreamM(&loaded, image.data()), JUN_RNG_OK);
  EXPECT_EQ(__junGetNumChunks(loaded), 2);
  EXPECT_EQ(raw(Stream(loaded), 1000), raw(stream, 1000));
}

TEST(Quasi, TablesNeverTakeAKeyInUse) {
  for (const Sequence& s : sequences) {
    const Stream small = new_stream(s.brng, {3});
    const std::vector<uint32_t> expected = raw(new_stream(s.brng, {12}), 1000);
    const JunStreamChunk* chunk = orin::rng::first_chunk(small.get());
    key_in_use.assign(chunk->key, chunk->key + 2);
    const Stream large = new_stream(s.brng, {12});
    EXPECT_TRUE(key_in_use.empty());
    EXPECT_NE(__junSearchChunk(large.get(), chunk->id), chunk->data);
    EXPECT_EQ(raw(large, 1000), expected);
  }
}

TEST(Quasi, FailedAllocationsAreReportedAndNothingIsLost) {
  for (const Sequence& s : sequences) {
    const uint32_t dimension = 20;
    const std::vector<uint32_t> expected = raw(new_stream(s.brng, {dimension}), 100);
    const long live = faulty_core::live_blocks();
    const long failures = faulty_core::fail_each([&](bool) {
      void* stream = nullptr;
      const int32_t status = __junNewStreamEx(&stream, s.brng, 1, &dimension);
      const bool failed = status != JUN_RNG_OK;
      EXPECT_EQ(status, failed ? JUN_RNG_NO_MEMORY : JUN_RNG_OK);
      const Stream owner(stream);
      if (failed && stream != nullptr) {
        EXPECT_EQ(raw(owner, 100), expected);  // the tables come when memory does
      }
    });
    EXPECT_EQ(failures, s.brng == JUN_BRNG_SOBOL ? 5 : 3);  // stream, and record and data of each table
    EXPECT_EQ(faulty_core::live_blocks(), live);
  }
}

}  // namespace
