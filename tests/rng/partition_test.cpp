// partition_test: modular powers against independent arithmetic, dispatch of leapfrog and skip-ahead.
// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <limits>
#include <random>
#include <vector>

#include "tests/rng/support.h"

namespace {

// a b mod m by doubling and adding, for m <= 2^63.
uint64_t times(uint64_t a, uint64_t b, uint64_t m) {
  uint64_t sum = 0;
  for (a %= m; b != 0; b >>= 1, a = (a + a) % m) {
    if (b & 1) sum = (sum + a) % m;
  }
  return sum;
}

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

Vector times(const Matrix& a, const Vector& v, uint64_t m) {
  Vector r = {};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t k = 0; k < 3; ++k) r[i] = (r[i] + times(a[i][k], v[k], m)) % m;
  }
  return r;
}

// The e-th power of the companion matrix of `row`, applied to v: by its columns, bit after bit.
Vector jump(Vector v, const Vector& row, uint64_t e, uint64_t m) {
  Matrix base = {{row, {1, 0, 0}, {0, 1, 0}}};
  for (; e != 0; e >>= 1) {
    if (e & 1) v = times(base, v, m);
    Matrix square = {};
    for (std::size_t j = 0; j < 3; ++j) {
      const Vector column = times(base, {base[0][j], base[1][j], base[2][j]}, m);
      for (std::size_t i = 0; i < 3; ++i) square[i][j] = column[i];
    }
    base = square;
  }
  return v;
}

std::vector<uint64_t> exponents() {
  std::mt19937_64 random(1);
  std::vector<uint64_t> e = {0, 1, 2, 3, 64, uint64_t{1} << 62, uint64_t{1} << 63, ~uint64_t{0}};
  for (int i = 0; i < 40; ++i) e.push_back(random() >> (random() % 64));
  return e;
}

constexpr uint32_t prime31 = 0x7FFFFFFF;

}  // namespace

TEST(Powers, AgreeWithIndependentArithmetic) {
  for (const uint64_t e : exponents()) {
    for (const uint32_t a : {0u, 1u, 2u, 1132489760u, prime31 - 1, prime31, prime31 + 1, ~0u}) {
      for (const uint32_t m : {1u, 2u, 3u, 16770647u, prime31, 0x80000000u, 4294967087u, ~0u}) {
        EXPECT_EQ(__juniPowMod(a, e, m), e == 0 ? 1 : power(a, e, m)) << a << ' ' << e << ' ' << m;
      }
      EXPECT_EQ(__juniPowMod2P31M1(a, e), power(a, e, prime31)) << a << ' ' << e;
      const uint64_t wide = a * 0x123456789ABCDEFull;
      EXPECT_EQ(__juniPowMod2P59(wide, e), power(wide, e, uint64_t{1} << 59)) << wide << ' ' << e;
    }
  }
}

TEST(Powers, MoveThirdOrderRecurrences) {
  struct Recurrence {
    uint32_t row[3], m;
  };
  for (const auto& [row, m] : {Recurrence{{0, 1403580, 4294156359u}, 4294967087u},
                               {{527612, 0, 4293573854u}, 4294944443u},
                               {{~0u, 5, ~0u}, 0xFFFFFFFFu},
                               {{1, 1, 1}, 2},
                               {{7, 8, 9}, 1}}) {
    const Vector start = {123456789 % m, 987654321 % m, (m - 1) % m};
    const auto moved = [&, &r = row, &modulus = m](uint64_t e) {
      uint32_t v[3];
      std::copy(start.begin(), start.end(), v);
      __juniVect3PowMod(v, r, modulus, e);
      return Vector{v[0], v[1], v[2]};
    };
    for (const uint64_t e : exponents())
      EXPECT_EQ(moved(e), jump(start, {row[0], row[1], row[2]}, e, m)) << m << ' ' << e;
    Vector x = start;  // the recurrence itself, latest value first
    for (int step = 0; step < 1000; ++step)
      x = {(times(row[0], x[0], m) + times(row[1], x[1], m) + times(row[2], x[2], m)) % m, x[0], x[1]};
    EXPECT_EQ(moved(1000), x) << m;
  }
}

TEST(Partition, CallsTheFamily) {
  const Stream stream = patterned(probe::identifier());
  probe::status = -55;
  EXPECT_EQ(__junLeapfrogStream(stream.get(), -2, 9), -55);
  EXPECT_TRUE(probe::method == 1 && probe::n == 9 && probe::params[0] == 0xFFFFFFFEu);
  EXPECT_EQ(__junSkipAheadStream(stream.get(), 0x123456789ABCDEF0), -55);
  EXPECT_TRUE(probe::method == 2 && probe::n == 2);
  EXPECT_EQ(probe::params, (std::vector<uint32_t>{0x9ABCDEF0u, 0x12345678u}));
  probe::status = 0;
  for (const int32_t s : {-1, std::numeric_limits<int32_t>::min()}) {
    EXPECT_EQ(__junLeapfrogStream(stream.get(), 0, s), JUN_RNG_BAD_STREAM_COUNT);
  }
  EXPECT_EQ(probe::method, 2) << "refused before the family is asked";
  *static_cast<int32_t*>(stream.get()) = 0x7FF00000;
  EXPECT_EQ(__junLeapfrogStream(stream.get(), 0, 1), JUN_RNG_BAD_IDENTIFIER);
  EXPECT_EQ(__junSkipAheadStream(stream.get(), 1), JUN_RNG_BAD_IDENTIFIER);
}

// What each family answers to the methods, by letters: l leapfrogs, s skips ahead.
TEST(Partition, IsRefusedByFamiliesThatCannot) {
  const char* const abilities[] = {"ls", "", "s", "ls", "ls", "s", "s", "", "", "", "", "", "", ""};
  for (int32_t family = 0; family < 14; ++family) {
    SCOPED_TRACE(family);
    const std::string can = abilities[family];
    const Stream stream = patterned((family + 1) << 20);
    if (can.find('l') == can.npos) {
      EXPECT_EQ(__junLeapfrogStream(stream.get(), 1, 4), JUN_RNG_NO_LEAPFROG);
    }
    if (can.find('s') == can.npos) {
      EXPECT_EQ(__junSkipAheadStream(stream.get(), 1), JUN_RNG_NO_SKIP_AHEAD);
    }
    const uint32_t params[2] = {1, 0};
    for (const int32_t method : {-1, 3, 100}) {
      EXPECT_EQ(__RegBrngsNew[family].InitStream(method, stream.get(), 2, params), JUN_RNG_BAD_METHOD) << method;
    }
  }
}
