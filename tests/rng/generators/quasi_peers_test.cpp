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

}  // namespace
