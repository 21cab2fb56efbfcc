// jumps_test: leapfrog and skip-ahead against steps, and the powers that they rest on against arithmetic of another kind.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>

#include "rng/data/wh_parameters.h"
#include "rng/stream_layout.h"
#include "tests/rng/generators/references.h"
#include "tests/rng/support.h"

namespace {

using namespace references;

// ---- Every family ---------------------------------------------------------------------------------------------------

class Jumps : public testing::TestWithParam<Family> {
 protected:
  Stream stream() const { return new_stream(GetParam().brng, GetParam().seeds); }
};

INSTANTIATE_TEST_SUITE_P(Families, Jumps, testing::ValuesIn(families()),
                         [](const auto& family) { return family.param.name; });

// The numbers, and the state to the last byte, are those after as many outputs; a coordinate alone is a stream, too.
TEST_P(Jumps, SkippingIsStepping) {
  if (!GetParam().skips) return;
  const bool quasi = GetParam().brng == JUN_BRNG_SOBOL || GetParam().brng == JUN_BRNG_NIEDERR;
  for (int selected = 0; selected <= (quasi ? 1 : 0); ++selected) {
    for (const int32_t n : {0, 1, 2, 9, 10, 57, 63, 64, 632, 639, 640, 1001, 20345, 20352, 29000}) {
      const Stream skipped = stream(), stepped = stream();
      for (const Stream* s : {&skipped, &stepped}) {
        EXPECT_EQ(selected != 0 ? __junLeapfrogStream(s->get(), 0, JUN_RNG_SELECT_COORDINATE) : 0, JUN_RNG_OK);
        uniforms<double>(*s, 7);  // not from the start
      }
      ASSERT_EQ(__junSkipAheadStream(skipped.get(), static_cast<uint64_t>(n)), JUN_RNG_OK);
      uniforms<double>(stepped, static_cast<std::size_t>(n));
      const std::size_t bytes = static_cast<std::size_t>(row_of(GetParam().brng).StateBytes) - 16;
      EXPECT_EQ(std::memcmp(bytes_of(skipped) + 16, bytes_of(stepped) + 16, bytes), 0) << n;
      EXPECT_EQ(uniforms<double>(skipped, 900), uniforms<double>(stepped, 900)) << n;
    }
  }
}

// After a leapfrog a skip counts outputs of the leapfrogged sequence.
TEST_P(Jumps, LeapfrogKeepsEveryKth) {
  if (!GetParam().leapfrogs) return;
  const std::vector<double> whole = uniforms<double>(stream(), 12000);
  for (const int32_t s : {1, 2, 7, 100}) {
    for (const int32_t k : {0, s / 2, s - 1, s + 3}) {
      const Stream frog = stream();
      ASSERT_EQ(__junLeapfrogStream(frog.get(), k, s), JUN_RNG_OK);
      std::vector<double> r = uniforms<double>(frog, 50);
      EXPECT_EQ(__junSkipAheadStream(frog.get(), 10), JUN_RNG_OK);
      const std::vector<double> rest = uniforms<double>(frog, 40);
      const auto at = [&](std::size_t i) {
        return whole[static_cast<std::size_t>(k) + i * static_cast<std::size_t>(s)];
      };
      for (std::size_t i = 0; i < 50; ++i) ASSERT_EQ(r[i], at(i));
      for (std::size_t i = 0; i < 40; ++i) ASSERT_EQ(rest[i], at(i + 60));
    }
  }
}

// ---- Dispatch -------------------------------------------------------------------------------------------------------

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

// What each of the fourteen answers to the methods, by letters: l leapfrogs, s skips ahead.
TEST(Partition, IsRefusedByFamiliesThatCannot) {
  const std::string abilities[] = {"ls", "", "s", "ls", "ls", "s", "s", "", "", "", "", "", "", ""};
  for (int32_t family = 0; family < 14; ++family) {
    SCOPED_TRACE(family);
    const Stream stream = patterned((family + 1) << 20);
    const auto can = [&](char what) { return abilities[family].find(what) != std::string::npos; };
    EXPECT_EQ(__junLeapfrogStream(stream.get(), 1, 4), can('l') ? JUN_RNG_OK : JUN_RNG_NO_LEAPFROG);
    EXPECT_EQ(__junSkipAheadStream(stream.get(), 1), can('s') ? JUN_RNG_OK : JUN_RNG_NO_SKIP_AHEAD);
    const uint32_t params[2] = {1, 0};
    for (const int32_t method : {-1, 3, 100}) {
      EXPECT_EQ(__RegBrngsNew[family].InitStream(method, stream.get(), 2, params), JUN_RNG_BAD_METHOD) << method;
    }
    if (family < 9 || family == 12) {
      double r = 0;
      EXPECT_EQ(__RegBrngsNew[family].dBRng(nullptr, 1, &r, 0, 1), JUN_RNG_NULL_POINTER);
      EXPECT_EQ(__RegBrngsNew[family].iBRng(stream.get(), 1, nullptr), JUN_RNG_NULL_POINTER);
    }
    const int32_t refusal[] = {0, can('l') ? 0 : JUN_RNG_NO_LEAPFROG, can('s') ? 0 : JUN_RNG_NO_SKIP_AHEAD};
    for (int32_t method = 0; method <= 2; ++method) {
      const int32_t expected = refusal[method] != 0 ? refusal[method] : JUN_RNG_NULL_POINTER;
      EXPECT_EQ(__RegBrngsNew[family].InitStream(method, nullptr, 2, params), expected) << method;
      EXPECT_EQ(__RegBrngsNew[family].InitStream(method, stream.get(), 2, nullptr), expected) << method;
    }
  }
}

// ---- Powers ---------------------------------------------------------------------------------------------------------

// a b mod m by doubling and adding, for m <= 2^63.
uint64_t times(uint64_t a, uint64_t b, uint64_t m) {
  uint64_t sum = 0;
  for (a %= m; b != 0; b >>= 1, a = (a + a) % m) {
    if (b & 1) sum = (sum + a) % m;
  }
  return sum;
}

using Vector = std::array<uint64_t, 3>;
using Matrix = std::array<Vector, 3>;

Matrix times(const Matrix& a, const Matrix& b, uint64_t m) {
  Matrix r{};
  for (std::size_t i = 0; i < 3; ++i)
    for (std::size_t j = 0; j < 3; ++j)
      for (std::size_t k = 0; k < 3; ++k) r[i][j] = (r[i][j] + times(a[i][k], b[k][j], m)) % m;
  return r;
}

// a^e mod m, from the top bit down.
template <class T>
T power(const T& a, uint64_t e, uint64_t m, const T& one) {
  T result = one;
  for (int bit = 63; bit >= 0; --bit) {
    result = times(result, result, m);
    if (e >> bit & 1) result = times(result, a, m);
  }
  return result;
}
uint64_t power(uint64_t a, uint64_t e, uint64_t m) { return power<uint64_t>(a, e, m, 1); }

struct Recurrence {
  uint32_t row[3], m;  // coefficients of the latest value first

  Vector jump(const Vector& latest_first, uint64_t e) const {
    const Matrix companion{{{row[0], row[1], row[2]}, {1, 0, 0}, {0, 1, 0}}};
    const Matrix p = power<Matrix>(companion, e, m, {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}});
    Vector r{};
    for (std::size_t i = 0; i < 3; ++i)
      for (std::size_t k = 0; k < 3; ++k) r[i] = (r[i] + times(p[i][k], latest_first[k], m)) % m;
    return r;
  }
};
constexpr Recurrence recurrences[] = {{{0, 1403580, 4294156359u}, 4294967087u},
                                      {{527612, 0, 4293573854u}, 4294944443u},
                                      {{~0u, 5, ~0u}, 0xFFFFFFFFu},
                                      {{1, 1, 1}, 2},
                                      {{7, 8, 9}, 1}};

std::vector<uint64_t> exponents() {
  std::mt19937_64 random(1);
  std::vector<uint64_t> e = {0, 1, 2, 3, 64, 1000, uint64_t{1} << 62, uint64_t{1} << 63, ~uint64_t{0}};
  for (int i = 0; i < 30; ++i) e.push_back(random() >> (random() % 64));
  return e;
}

constexpr uint32_t prime31 = 0x7FFFFFFF;

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
    for (const Recurrence& r : recurrences) {
      const Vector start = {123456789 % r.m, 987654321 % r.m, (r.m - 1) % r.m};
      uint32_t v[3];
      std::copy(start.begin(), start.end(), v);
      __juniVect3PowMod(v, r.row, r.m, e);
      EXPECT_EQ((Vector{v[0], v[1], v[2]}), r.jump(start, e)) << r.m << ' ' << e;
    }
  }
}

// Skips of any length bring the streams where the powers say.
TEST(Powers, MoveTheStreams) {
  for (const uint64_t e : exponents()) {
    const Stream mcg31 = new_stream(JUN_BRNG_MCG31M1, {12345}), mcg59 = new_stream(JUN_BRNG_MCG59, {12345});
    const Stream wh = new_stream(JUN_BRNG_WH + 100, {1, 2, 3, 4}),
                 mrg = new_stream(JUN_BRNG_MRG32K3A, {1, 2, 3, 4, 5, 6});
    for (const Stream* s : {&mcg31, &mcg59, &wh, &mrg}) ASSERT_EQ(__junSkipAheadStream(s->get(), e), JUN_RNG_OK);
    EXPECT_EQ(raw(mcg31, 1)[0], times(12345, power(1132489760, e, prime31), prime31));
    const std::vector<uint32_t> x = raw(mcg59, 1, 2), y = raw(wh, 1, 4);
    const uint64_t m59 = uint64_t{1} << 59;
    EXPECT_EQ(x[0] | uint64_t{x[1]} << 32, times(12345, power(302875106592253, e, m59), m59));
    for (std::size_t i = 0; i < 4; ++i) {
      const uint64_t m = orin::rng::wh_moduli[100][i];
      EXPECT_EQ(y[i], times(i + 1, power(orin::rng::wh_multipliers[100][i], e, m), m));
    }
    const auto* z = reinterpret_cast<const uint32_t*>(bytes_of(mrg) + 16);  // oldest first
    EXPECT_EQ((Vector{z[2], z[1], z[0]}), recurrences[0].jump({3, 2, 1}, e));
    EXPECT_EQ((Vector{z[5], z[4], z[3]}), recurrences[1].jump({6, 5, 4}, e));
  }
}

}  // namespace
