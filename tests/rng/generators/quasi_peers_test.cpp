// quasi_peers_test: quasi-random points beside those of the GNU Scientific Library.
// SPDX-License-Identifier: MIT
#include <gsl/gsl_qrng.h>
#include <gtest/gtest.h>

#include <cmath>

#include "tests/rng/generators/references.h"

namespace {

using namespace references;

// The library keeps 30 bits and the same order of points.
TEST(QuasiPeers, SobolInAllDimensions) {
  for (const unsigned dimension : {1U, 2U, 7U, 40U}) {
    gsl_qrng* peer = gsl_qrng_alloc(gsl_qrng_sobol, dimension);
    const std::size_t points = 70000;
    const std::vector<double> r = uniforms<double>(new_stream(JUN_BRNG_SOBOL, {dimension}), points * dimension);
    std::vector<double> expected(dimension);
    for (std::size_t i = 0; i < points; ++i) {
      gsl_qrng_get(peer, expected.data());
      for (std::size_t j = 0; j < dimension; ++j)
        ASSERT_EQ(std::ldexp(std::floor(std::ldexp(r[i * dimension + j], 30)), -30), expected[j]);
    }
    gsl_qrng_free(peer);
  }
}

// Niederreiter's g is free: the library's starts every row block with ones. Dimensions of degree one know no choice.
TEST(QuasiPeers, NiederreiterInTheDimensionsWithoutChoice) {
  gsl_qrng* peer = gsl_qrng_alloc(gsl_qrng_niederreiter_2, 2);
  const std::vector<double> r = uniforms<double>(new_stream(JUN_BRNG_NIEDERR, {2}), 2 * 50000);
  double expected[2];
  gsl_qrng_get(peer, expected);  // the zero point
  for (std::size_t i = 0; i < 50000; ++i) {
    gsl_qrng_get(peer, expected);
    for (std::size_t j = 0; j < 2; ++j) ASSERT_NEAR(r[2 * i + j], expected[j], 0x1p-29) << i;
  }
  gsl_qrng_free(peer);
}

}  // namespace
