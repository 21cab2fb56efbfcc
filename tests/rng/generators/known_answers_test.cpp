// known_answers_test: published outputs, seeding rules and the rules of the parameter sets.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <set>

#include "rng/data/wh_parameters.h"
#include "tests/rng/generators/references.h"

namespace {

using namespace references;

std::vector<uint32_t> first(int32_t brng, const std::vector<uint32_t>& seeds, std::size_t n, std::size_t words = 1) {
  return raw(new_stream(brng, seeds), n, words);
}

// mt19937ar.out of the authors: init_by_array({0x123, 0x234, 0x345, 0x456}).
TEST(Published, Mt19937) {
  EXPECT_EQ(first(JUN_BRNG_MT19937, {0x123, 0x234, 0x345, 0x456}, 5),
            (std::vector<uint32_t>{1067595299, 955945823, 477289528, 4107218783, 4228976476}));
  EXPECT_EQ(first(JUN_BRNG_MT19937, {5489}, 10000).back(), 4123659995);  // ISO C++, [rand.predef]
}

// SFMT.19937.out.txt of the authors: init_gen_rand(1234), then init_by_array({0x1234, 0x5678, 0x9abc, 0xdef0}).
TEST(Published, Sfmt19937) {
  EXPECT_EQ(first(JUN_BRNG_SFMT19937, {1234}, 3, 4),
            (std::vector<uint32_t>{3440181298, 1564997079, 1510669302, 2930277156, 1452439940, 3796268453, 423124208,
                                   2143818589, 3827219408, 2987036003, 2674978610, 1536842514}));
  EXPECT_EQ(first(JUN_BRNG_SFMT19937, {0x1234, 0x5678, 0x9abc, 0xdef0}, 2, 4),
            (std::vector<uint32_t>{2920711183, 3885745737, 3501893680, 856470934, 1421864068, 277361036, 1518638004,
                                   2328404353}));
}

// Keys longer than the tables, 1 to 1000: from plain transcriptions of the published initialisations.
TEST(Published, LongKeys) {
  std::vector<uint32_t> key(1000);
  std::iota(key.begin(), key.end(), 1U);
  EXPECT_EQ(first(JUN_BRNG_MT19937, key, 2), (std::vector<uint32_t>{54400238, 1485006970}));
  EXPECT_EQ(first(JUN_BRNG_MT2203 + 5, key, 2), (std::vector<uint32_t>{1889206675, 1398505583}));
  EXPECT_EQ(first(JUN_BRNG_SFMT19937, key, 1, 4),
            (std::vector<uint32_t>{920945170, 1012780389, 3026059089, 2901749189}));
}

// Seeds 12345: 0.127011122046577 is the first output of the author's packages, which divide by m1 + 1.
TEST(Published, Mrg32k3a) {
  const std::vector<uint32_t> z = first(JUN_BRNG_MRG32K3A, std::vector<uint32_t>(6, 12345), 2);
  EXPECT_NEAR(z[0] / 4294967088.0, 0.127011122046577, 1e-15);
  EXPECT_NEAR(z[1] / 4294967088.0, 0.318527565396795, 1e-15);
}

// A stream seeded with 1 begins at 1/(2^31 - 1); the doubles are a + ((b - a) c) x to the bit.
TEST(Published, Mcg31m1Formula) {
  const std::vector<double> r = uniforms<double>(new_stream(JUN_BRNG_MCG31M1, {1}), 1000, -1.25, 7.5);
  const std::vector<uint32_t> x = first(JUN_BRNG_MCG31M1, {1}, 1000);
  EXPECT_EQ(x[0], 1U);
  EXPECT_EQ(x[1], 1132489760U);
  const double scale = (7.5 - -1.25) * 4.656612875245797e-10;
  for (std::size_t k = 0; k < r.size(); ++k) {
    const double product = scale * x[k];
    ASSERT_EQ(r[k], -1.25 + product);
  }
}

TEST(Seeding, ShortZeroAndLargeSeeds) {
  EXPECT_EQ(first(JUN_BRNG_MCG31M1, {0}, 3), first(JUN_BRNG_MCG31M1, {1}, 3));
  EXPECT_EQ(first(JUN_BRNG_MCG31M1, {}, 3), first(JUN_BRNG_MCG31M1, {1}, 3));
  EXPECT_EQ(first(JUN_BRNG_MCG31M1, {2147483647}, 3), first(JUN_BRNG_MCG31M1, {1}, 3));
  EXPECT_EQ(first(JUN_BRNG_MCG31M1, {2147483650}, 1)[0], 3U);

  EXPECT_EQ(first(JUN_BRNG_MCG59, {5, 0xFFFFFFFF}, 1, 2), (std::vector<uint32_t>{5, 0x7FFFFFF}));
  EXPECT_EQ(first(JUN_BRNG_MCG59, {}, 2, 2), (std::vector<uint32_t>{1, 0, 0x9B23C5FD, 0x11376}));
  EXPECT_EQ(first(JUN_BRNG_MCG59, {0, 0x8000000}, 1, 2), (std::vector<uint32_t>{1, 0}));

  EXPECT_EQ(first(JUN_BRNG_WH, {}, 1, 4), (std::vector<uint32_t>{1, 1, 1, 1}));
  EXPECT_EQ(first(JUN_BRNG_WH, {16770647, 16770645, 0}, 2, 4), (std::vector<uint32_t>{1, 2, 1, 1, 125, 234, 127, 126}));

  EXPECT_EQ(first(JUN_BRNG_MRG32K3A, {4294967087, 0, 0, 4294944443, 0, 0}, 9),
            first(JUN_BRNG_MRG32K3A, {1, 0, 0, 1, 0, 0}, 9));
  EXPECT_EQ(first(JUN_BRNG_MRG32K3A, {7, 8}, 9), first(JUN_BRNG_MRG32K3A, {7, 8, 1, 1, 1, 1}, 9));
  EXPECT_EQ(first(JUN_BRNG_MRG32K3A, {4294967089}, 9), first(JUN_BRNG_MRG32K3A, {2}, 9));

  EXPECT_EQ(first(JUN_BRNG_R250, {0}, 300), first(JUN_BRNG_R250, {}, 300));
  std::vector<uint32_t> table(252);
  std::iota(table.begin(), table.end(), 1000U);
  EXPECT_EQ(first(JUN_BRNG_R250, table, 1)[0], (1000U + 147) ^ 1000U);  // the first 250 words, as they are
  for (const int32_t brng : {JUN_BRNG_MT19937, JUN_BRNG_MT2203 + 5, JUN_BRNG_SFMT19937})
    EXPECT_EQ(first(brng, {}, 5, 4 * 4), first(brng, {1}, 5, 4 * 4));
  for (const std::vector<uint32_t>& bad : {std::vector<uint32_t>{}, {0}, {319}, {0xFFFFFFFF}}) {
    EXPECT_EQ(first(JUN_BRNG_NIEDERR, bad, 9), first(JUN_BRNG_NIEDERR, {1}, 9));
    EXPECT_EQ(first(JUN_BRNG_SOBOL, bad, 9), first(JUN_BRNG_SOBOL, {1}, 9));
  }
  EXPECT_EQ(first(JUN_BRNG_SOBOL, {41}, 9), first(JUN_BRNG_SOBOL, {1}, 9));
}

std::set<uint32_t> prime_factors(uint32_t n) {
  std::set<uint32_t> factors;
  for (uint32_t p = 2; p * p <= n; ++p)
    for (; n % p == 0; n /= p) factors.insert(p);
  if (n > 1) factors.insert(n);
  return factors;
}

bool generates_all_residues(uint32_t a, uint32_t m) {
  for (const uint32_t p : prime_factors(m - 1))
    if (__juniPowMod(a, (m - 1) / p, m) == 1) return false;
  return true;
}

TEST(WichmannHill, SetsKeepTheRules) {
  std::set<uint32_t> seen;
  for (std::size_t set = 0; set < 273; ++set) {
    for (std::size_t i = 0; i < 4; ++i) {
      const uint32_t m = orin::rng::wh_moduli[set][i], a = orin::rng::wh_multipliers[set][i];
      EXPECT_TRUE(seen.insert(m).second) << m;
      EXPECT_TRUE(16718909 <= m && m <= 16776971 && prime_factors(m).contains(m)) << m;
      EXPECT_TRUE(112 <= a && a <= 127) << a;
      EXPECT_TRUE(generates_all_residues(a, m)) << a << " modulo " << m;
      for (std::size_t j = 0; j < i; ++j) EXPECT_EQ(std::gcd((m - 1) / 2, (orin::rng::wh_moduli[set][j] - 1) / 2), 1U);
    }
  }
}

}  // namespace
