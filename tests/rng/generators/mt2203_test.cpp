// mt2203_test: the twisters of period 2^2203 - 1, proven from their outputs with an independent library.
// SPDX-License-Identifier: MIT
#include <NTL/GF2XFactoring.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <set>
#include <utility>

#include "rng/data/mt2203_parameters.h"
#include "tests/rng/generators/references.h"
#include "tests/support/faulty_core.h"

namespace {

using namespace references;

constexpr int32_t sets = 6024;
constexpr long degree = 2203;

// Every bit of the output follows the characteristic polynomial: it is found from 2 * 2203 outputs by Berlekamp and
// Massey, has degree 2203 if it is irreducible and the bit is not constant, and then the period is the prime 2^2203
// - 1.
NTL::GF2X minimal_polynomial(int32_t set, int bit) {
  const std::vector<uint32_t> words = raw(new_stream(JUN_BRNG_MT2203 + set, {1234}), 2 * degree);
  NTL::vec_GF2 bits;
  bits.SetLength(2 * degree);
  for (long i = 0; i < 2 * degree; ++i) bits[i] = static_cast<long>(words[static_cast<std::size_t>(i)] >> bit & 1);
  return NTL::MinPolySeq(bits, degree);
}

// One set of each 32nd of the table, drawn anew in each run: --gtest_random_seed=SEED repeats it.
TEST(Mt2203, CharacteristicPolynomialsAreIrreducible) {
  const int32_t asked = GTEST_FLAG_GET(random_seed);
  const uint32_t seed = asked != 0 ? static_cast<uint32_t>(asked) : std::random_device{}() % 99999 + 1;
  std::printf("seed of the sample: %u\n", seed);
  std::mt19937 random(seed);
  std::set<std::string> seen;
  for (int32_t part = 0; part < 32; ++part) {
    const int32_t first = sets * part / 32, end = sets * (part + 1) / 32;
    const int32_t set = first + static_cast<int32_t>(random() % static_cast<uint32_t>(end - first));
    const NTL::GF2X p = minimal_polynomial(set, 31 - set % 32);
    EXPECT_EQ(NTL::deg(p), degree) << set;
    EXPECT_TRUE(NTL::IterIrredTest(p)) << set;
    EXPECT_EQ(p, minimal_polynomial(set, set % 32)) << set;
    std::string bits;
    for (long i = 0; i < degree; ++i) bits += NTL::IsOne(NTL::coeff(p, i)) ? '1' : '0';
    EXPECT_TRUE(seen.insert(bits).second) << set;
  }
  EXPECT_EQ(faulty_core::live_blocks(), 0);
}

// The polynomial is affine in the coefficient, with independent terms, so that different coefficients are enough.
TEST(Mt2203, SetsDiffer) {
  std::set<uint32_t> coefficients;
  for (const auto& set : orin::rng::mt2203_parameters) EXPECT_TRUE(coefficients.insert(set[0]).second) << set[0];
  EXPECT_EQ(coefficients.size(), std::size_t{sets});
}

}  // namespace
