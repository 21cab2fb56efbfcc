// partition_test: modular powers against independent arithmetic, dispatch of leapfrog and skip-ahead.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <random>
#include <vector>

#include "tests/rng/probe.h"

namespace {

// a b mod m by doubling and adding, for m <= 2^63.
uint64_t times(uint64_t a, uint64_t b, uint64_t m) {
  uint64_t sum = 0;
  for (a %= m; b != 0; b >>= 1, a = (a + a) % m) {
    if (b & 1) sum = (sum + a) % m;
  }
  return sum;
}

// a^e mod m over the bits of e from the highest.
uint64_t power(uint64_t a, uint64_t e, uint64_t m) {
  uint64_t result = 1;
  for (int bit = 63; bit >= 0; --bit) {
    result = times(result, result, m);
    if (e >> bit & 1) result = times(result, a, m);
  }
  return result;
}

using Vector = std::array<uint64_t, 3>;
using Matrix = std::array<Vector, 3>;

Matrix times(const Matrix& a, const Matrix& b, uint64_t m) {
  Matrix c = {};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      for (std::size_t k = 0; k < 3; ++k) c[i][j] = (c[i][j] + times(a[i][k], b[k][j], m)) % m;
    }
  }
  return c;
}

// Companion matrix to the power e, applied to v.
Vector jump(Vector v, const Vector& row, uint64_t e, uint64_t m) {
  Matrix result = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, base = {{row, {1, 0, 0}, {0, 1, 0}}};
  for (; e != 0; e >>= 1, base = times(base, base, m)) {
    if (e & 1) result = times(base, result, m);
  }
  Vector moved = {};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t k = 0; k < 3; ++k) moved[i] = (moved[i] + times(result[i][k], v[k], m)) % m;
  }
  return moved;
}

constexpr uint32_t prime31 = 0x7FFFFFFF;

std::vector<uint64_t> exponents(std::mt19937_64& random) {
  std::vector<uint64_t> e = {0, 1, 2, 3, 64, uint64_t{1} << 62, uint64_t{1} << 63, ~uint64_t{0}};
  for (int i = 0; i < 40; ++i) e.push_back(random() >> (random() % 64));
  return e;
}

void* stream_of(int32_t brng) {
  int32_t row = 0, sub_stream = 0;
  const JunBrngProperties* table = __junGetBrngBaseOffset(brng, &row, &sub_stream);
  void* stream = nullptr;
  EXPECT_EQ(__junAllocateStream(&stream, brng, table, row, sub_stream), 0);
  return stream;
}

}  // namespace

TEST(Powers, AgreeWithIndependentArithmetic) {
  std::mt19937_64 random(1);
  const std::vector<uint32_t> moduli = {1, 2, 3, 16770647, prime31, 0x80000000u, 4294967087u, 0xFFFFFFFFu};
  for (const uint64_t e : exponents(random)) {
    for (const uint32_t a :
         {0u, 1u, 2u, 1132489760u, prime31 - 1, prime31, prime31 + 1, ~0u, static_cast<uint32_t>(random())}) {
      for (const uint32_t m : moduli) {
        EXPECT_EQ(__juniPowMod(a, e, m), e == 0 ? 1 : power(a, e, m)) << a << ' ' << e << ' ' << m;
      }
      EXPECT_EQ(__juniPowMod2P31M1(a, e), power(a, e, prime31)) << a << ' ' << e;
      const uint64_t wide = a * 0x123456789ABCDEFull;
      EXPECT_EQ(__juniPowMod2P59(wide, e), power(wide, e, uint64_t{1} << 59)) << wide << ' ' << e;
    }
  }
  EXPECT_EQ(__juniPowMod(5, 3, 0), 0u);
}

TEST(Powers, MoveThirdOrderRecurrences) {
  std::mt19937_64 random(2);
  struct Recurrence {
    uint32_t row[3], m;
  };
  for (const auto& [row, m] : {Recurrence{{0, 1403580, 4294156359u}, 4294967087u},
                               {{527612, 0, 4293573854u}, 4294944443u},
                               {{~0u, 5, ~0u}, 0xFFFFFFFFu},
                               {{1, 1, 1}, 2},
                               {{7, 8, 9}, 1}}) {
    uint32_t v[3], start[3];
    for (uint32_t& x : start) x = static_cast<uint32_t>(random() % m);
    for (const uint64_t e : exponents(random)) {
      std::copy_n(start, 3, v);
      __juniVect3PowMod(v, row, m, e);
      const Vector expected = jump({start[0], start[1], start[2]}, {row[0] % m, row[1] % m, row[2] % m}, e, m);
      EXPECT_TRUE(v[0] == expected[0] && v[1] == expected[1] && v[2] == expected[2]) << m << ' ' << e;
    }
    std::copy_n(start, 3, v);
    uint64_t x[3] = {start[0], start[1], start[2]};
    for (int step = 0; step < 1000; ++step) {  // the recurrence itself, latest value first
      const uint64_t next = (times(row[0], x[0], m) + times(row[1], x[1], m) + times(row[2], x[2], m)) % m;
      x[2] = x[1], x[1] = x[0], x[0] = next;
    }
    __juniVect3PowMod(v, row, m, 1000);
    EXPECT_TRUE(v[0] == x[0] && v[1] == x[1] && v[2] == x[2]) << m;
  }
}

TEST(Partition, CallsTheFamily) {
  void* stream = stream_of(probe::identifier());
  probe::status = -55;
  EXPECT_EQ(__junLeapfrogStream(stream, -2, 9), -55);
  EXPECT_EQ(probe::last_call.method, 1);
  EXPECT_EQ(probe::last_call.n, 9);
  EXPECT_EQ(probe::last_call.params[0], 0xFFFFFFFEu);
  EXPECT_EQ(__junSkipAheadStream(stream, 0x123456789ABCDEF0), -55);
  EXPECT_EQ(probe::last_call.method, 2);
  EXPECT_EQ(probe::last_call.n, 2);
  EXPECT_EQ(probe::last_call.params, (std::vector<uint32_t>{0x9ABCDEF0u, 0x12345678u}));
  probe::status = 0;
  probe::last_call.method = -1;
  for (const int32_t s : {-1, std::numeric_limits<int32_t>::min()}) {
    EXPECT_EQ(__junLeapfrogStream(stream, 0, s), JUN_RNG_BAD_STREAM_COUNT);
  }
  EXPECT_EQ(probe::last_call.method, -1) << "refused before the family is asked";
  *static_cast<int32_t*>(stream) = 0x7FF00000;
  EXPECT_EQ(__junLeapfrogStream(stream, 0, 1), JUN_RNG_BAD_IDENTIFIER);
  EXPECT_EQ(__junSkipAheadStream(stream, 1), JUN_RNG_BAD_IDENTIFIER);
  EXPECT_EQ(__junSkipAheadStream(nullptr, 1), JUN_RNG_NULL_POINTER);
  __junDeleteStream(&stream);
}

// What each family answers, and that no family knows a fourth method.
TEST(Partition, IsRefusedByFamiliesThatCannot) {
  for (const int32_t brng : {1, 2, 277, 278, 0x200000, 0x300000, 0x600000, 0x700000, 0x800000, 0x900000 + 5, 0xA00000,
                             0xB00000, 0xC00000, 0xD00000, 0xE00000, 0x100000, 0x400000, 0x500000, 276}) {
    void* stream = stream_of(brng);
    const bool congruential = brng == 0x100000 || brng == 0x400000 || brng == 0x500000 || brng == 276;
    const bool skips = congruential || brng == 2 || brng == 277 || brng == 278 || brng == 0x300000 ||
                       brng == 0x600000 || brng == 0x700000;
    SCOPED_TRACE(brng);
    if (!congruential) {
      EXPECT_EQ(__junLeapfrogStream(stream, 1, 4), JUN_RNG_NO_LEAPFROG);
    }
    if (!skips) {
      EXPECT_EQ(__junSkipAheadStream(stream, 1), JUN_RNG_NO_SKIP_AHEAD);
    }
    JunBrngProperties row = {};
    __junGetBrngProperties(brng, &row);
    const uint32_t params[2] = {1, 0};
    for (const int32_t method : {-1, 3, 100}) {
      EXPECT_EQ(row.InitStream(method, stream, 2, params), JUN_RNG_BAD_METHOD) << method;
    }
    __junDeleteStream(&stream);
  }
}
