// jumps_test: leapfrog and skip-ahead against steps, and against powers computed in another way.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <random>

#include "rng/data/wh_parameters.h"
#include "rng/stream_layout.h"
#include "tests/rng/generators/references.h"

namespace {

using namespace references;

class Jumps : public testing::TestWithParam<Family> {
 protected:
  Stream stream() const { return new_stream(GetParam().brng, GetParam().seeds); }
};

INSTANTIATE_TEST_SUITE_P(Families, Jumps, testing::ValuesIn(families()),
                         [](const auto& family) { return family.param.name; });

TEST_P(Jumps, SkippingIsStepping) {
  const std::vector<double> whole = uniforms<double>(stream(), 30000);
  for (const uint64_t n : {0U, 1U, 2U, 9U, 10U, 63U, 64U, 639U, 640U, 1001U, 20352U, 29000U}) {
    const Stream s = stream();
    if (!GetParam().skips) {
      EXPECT_EQ(__junSkipAheadStream(s.get(), n), JUN_RNG_NO_SKIP_AHEAD);
      continue;
    }
    uniforms<double>(s, 7);  // not from the start
    EXPECT_EQ(__junSkipAheadStream(s.get(), n), JUN_RNG_OK);
    const std::vector<double> r = uniforms<double>(s, 900);
    EXPECT_TRUE(std::equal(r.begin(), r.end(), whole.begin() + static_cast<std::ptrdiff_t>(n + 7))) << n;
  }
}

TEST_P(Jumps, SkipsAddUp) {
  if (!GetParam().skips) return;
  const Stream one = stream(), two = stream();
  EXPECT_EQ(__junSkipAheadStream(one.get(), (uint64_t{1} << 62) + 12345), JUN_RNG_OK);
  for (const uint64_t n : {uint64_t{12000}, uint64_t{1} << 61, uint64_t{345}, uint64_t{1} << 61})
    EXPECT_EQ(__junSkipAheadStream(two.get(), n), JUN_RNG_OK);
  EXPECT_EQ(uniforms<double>(one, 100), uniforms<double>(two, 100));
}

TEST_P(Jumps, LeapfrogKeepsEveryKth) {
  const std::vector<double> whole = uniforms<double>(stream(), 12000);
  for (const int32_t s : {1, 2, 7, 100}) {
    for (const int32_t k : {0, s / 2, s - 1, s + 3}) {
      const Stream frog = stream();
      if (!GetParam().leapfrogs) {
        EXPECT_EQ(__junLeapfrogStream(frog.get(), k, s), JUN_RNG_NO_LEAPFROG);
        continue;
      }
      EXPECT_EQ(__junLeapfrogStream(frog.get(), k, s), JUN_RNG_OK);
      std::vector<double> r = uniforms<double>(frog, 50);
      EXPECT_EQ(__junSkipAheadStream(frog.get(), 10), JUN_RNG_OK);  // ten steps of s
      const std::vector<double> rest = uniforms<double>(frog, 40);
      for (std::size_t i = 0; i < 50; ++i)
        ASSERT_EQ(r[i], whole[static_cast<std::size_t>(k) + i * static_cast<std::size_t>(s)]);
      for (std::size_t i = 0; i < 40; ++i)
        ASSERT_EQ(rest[i], whole[static_cast<std::size_t>(k) + (i + 60) * static_cast<std::size_t>(s)]);
    }
  }
  const Stream s = stream();
  EXPECT_EQ(__junLeapfrogStream(s.get(), 0, -1), JUN_RNG_BAD_STREAM_COUNT);
  JunBrngProperties row = {};
  __junGetBrngProperties(GetParam().brng, &row);
  const uint32_t words[2] = {0, 0};
  for (const int32_t method : {-1, 3, 100}) EXPECT_EQ(row.InitStream(method, s.get(), 2, words), JUN_RNG_BAD_METHOD);
}

// Repeated squaring with additions only: a b mod m without any product.
uint64_t slow_product(uint64_t a, uint64_t b, uint64_t m) {
  uint64_t r = 0;
  for (a %= m; b != 0; b >>= 1, a = (a + a) % m)
    if (b & 1) r = (r + a) % m;
  return r;
}
uint64_t slow_power(uint64_t a, uint64_t e, uint64_t m) {
  uint64_t r = 1;
  for (int bit = 63; bit >= 0; --bit) {  // from the top
    r = slow_product(r, r, m);
    if (e >> bit & 1) r = slow_product(r, a, m);
  }
  return r;
}

using Matrix = std::array<std::array<uint64_t, 3>, 3>;
Matrix slow_power(const Matrix& a, uint64_t e, uint64_t m) {
  const auto times = [m](const Matrix& x, const Matrix& y) {
    Matrix r{};
    for (std::size_t i = 0; i < 3; ++i)
      for (std::size_t j = 0; j < 3; ++j)
        for (std::size_t k = 0; k < 3; ++k) r[i][j] = (r[i][j] + slow_product(x[i][k], y[k][j], m)) % m;
    return r;
  };
  Matrix r{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  for (int bit = 63; bit >= 0; --bit) {
    r = times(r, r);
    if (e >> bit & 1) r = times(r, a);
  }
  return r;
}

constexpr uint64_t far[] = {uint64_t{1} << 62, 0xFFFFFFFFFFFFFFFF, 0x123456789ABCDEF1, 1000003};

TEST(FarSkips, CongruentialFamilies) {
  for (const uint64_t e : far) {
    const Stream mcg31 = new_stream(JUN_BRNG_MCG31M1, {12345}), mcg59 = new_stream(JUN_BRNG_MCG59, {12345});
    const Stream wh = new_stream(JUN_BRNG_WH + 100, {1, 2, 3, 4});
    for (const Stream* s : {&mcg31, &mcg59, &wh}) ASSERT_EQ(__junSkipAheadStream(s->get(), e), JUN_RNG_OK);
    const uint64_t m31 = 2147483647, m59 = uint64_t{1} << 59;
    EXPECT_EQ(raw(mcg31, 1)[0], slow_product(12345, slow_power(1132489760, e, m31), m31));
    const std::vector<uint32_t> x = raw(mcg59, 1, 2);
    EXPECT_EQ(x[0] | uint64_t{x[1]} << 32, slow_product(12345, slow_power(302875106592253, e, m59), m59));
    const std::vector<uint32_t> y = raw(wh, 1, 4);
    for (std::size_t i = 0; i < 4; ++i) {
      const uint64_t m = orin::rng::wh_moduli[100][i];
      EXPECT_EQ(y[i], slow_product(i + 1, slow_power(orin::rng::wh_multipliers[100][i], e, m), m));
    }
  }
}

TEST(FarSkips, Mrg32k3aByMatrixPowers) {
  const uint64_t m1 = 4294967087, m2 = 4294944443;
  const Matrix a1{{{0, 1, 0}, {0, 0, 1}, {m1 - 810728, 1403580, 0}}},
      a2{{{0, 1, 0}, {0, 0, 1}, {m2 - 1370589, 0, 527612}}};
  for (const uint64_t e : far) {
    const Stream s = new_stream(JUN_BRNG_MRG32K3A, {1, 2, 3, 4, 5, 6});
    ASSERT_EQ(__junSkipAheadStream(s.get(), e), JUN_RNG_OK);
    const auto* words = reinterpret_cast<const uint32_t*>(static_cast<const char*>(s.get()) + 16);
    const Matrix p1 = slow_power(a1, e, m1), p2 = slow_power(a2, e, m2);
    for (std::size_t i = 0; i < 3; ++i) {
      EXPECT_EQ(words[i], (p1[i][0] * 1 + slow_product(p1[i][1], 2, m1) + slow_product(p1[i][2], 3, m1)) % m1);
      EXPECT_EQ(words[3 + i],
                (slow_product(p2[i][0], 4, m2) + slow_product(p2[i][1], 5, m2) + slow_product(p2[i][2], 6, m2)) % m2);
    }
  }
}

}  // namespace
