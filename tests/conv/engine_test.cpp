// engine_test: the engine's choices and failures, the accuracy of its transform and of the factors under it.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>
#include <random>
#include <vector>

#include "conv/engine.h"
#include "conv/transform.h"
#include "tests/support/faulty_core.h"

namespace {

using orin::conv::full_convolution;

template <class T>
class Engine : public testing::Test {};
using Scalars = testing::Types<float, double>;
TYPED_TEST_SUITE(Engine, Scalars);

TYPED_TEST(Engine, RefusesNullPointersBeforeLengths) {
  using T = TypeParam;
  T value = 1;
  EXPECT_EQ((full_convolution<T, 1>(nullptr, 0, &value, 1, &value)), -8);
  EXPECT_EQ((full_convolution<T, 1>(&value, 1, nullptr, 1, &value)), -8);
  EXPECT_EQ((full_convolution<T, 2>(&value, 0, &value, 0, nullptr)), -8);
  EXPECT_EQ((full_convolution<T, 1>(&value, 0, &value, 1, &value)), -6);
  EXPECT_EQ((full_convolution<T, 2>(&value, 1, &value, 0, &value)), -6);
}

// Direct sums need no memory; transforms need one block, and report it missing.
TYPED_TEST(Engine, TakesTransformsFromTheThresholdsOn) {
  using T = TypeParam;
  const std::vector<T> a(20000, T(1)), b(20000, T(1));
  std::vector<T> out(40000);
  const auto needs_memory = [&](std::size_t na, std::size_t nb) {
    faulty_core::fail_at(0);
    const std::int32_t status = full_convolution<T, 1>(a.data(), na, b.data(), nb, out.data());
    const long asked = faulty_core::allocations();
    faulty_core::fail_at(-1);
    EXPECT_EQ(status, asked > 0 ? -9 : 0) << na << " x " << nb;
    EXPECT_LE(asked, 1);
    return asked > 0;
  };
  EXPECT_FALSE(needs_memory(300, 200));  // F = 499
  EXPECT_FALSE(needs_memory(256, 256));  // F = 511
  EXPECT_TRUE(needs_memory(257, 256));   // F = 512
  EXPECT_TRUE(needs_memory(256, 257));
  EXPECT_FALSE(needs_memory(448, 64));  // F = 511
  EXPECT_TRUE(needs_memory(449, 64));
  EXPECT_FALSE(needs_memory(20000, 63));
  EXPECT_FALSE(needs_memory(63, 20000));
  EXPECT_TRUE(needs_memory(64, 20000));
}

// The norm of the error at sampled outputs against extended precision, real and complex, up to memory-sized transforms.
template <class T, std::size_t Parts>
double error_in_units(std::size_t na, std::size_t nb) {
  std::mt19937 random(static_cast<unsigned>(na + nb));
  std::normal_distribution<double> normal;
  std::vector<T> a(na * Parts), b(nb * Parts), out((na + nb - 1) * Parts);
  for (T& v : a) v = static_cast<T>(normal(random));
  for (T& v : b) v = static_cast<T>(normal(random));
  EXPECT_EQ((full_convolution<T, Parts>(a.data(), na, b.data(), nb, out.data())), 0);
  const auto element = [](const std::vector<T>& v, std::size_t i) {
    return std::complex<long double>(v[Parts * i], Parts == 2 ? v[Parts * i + 1] : T(0));
  };
  long double difference = 0, norm = 0;
  const std::size_t samples = std::min<std::size_t>(na + nb - 1, 400);
  for (std::size_t s = 0; s < samples; ++s) {
    const std::size_t j = s * (na + nb - 2) / (samples - 1);
    std::complex<long double> sum = 0;
    for (std::size_t k = j >= nb ? j - nb + 1 : 0; k <= std::min(j, na - 1); ++k)
      sum += element(a, k) * element(b, j - k);
    difference += std::norm(element(out, j) - sum);
    norm += std::norm(sum);
  }
  return static_cast<double>(std::sqrt(difference / norm)) * 2 / static_cast<double>(std::numeric_limits<T>::epsilon());
}

TYPED_TEST(Engine, ErrorStaysWithinItsBound) {
  using T = TypeParam;
  for (const auto& [na, nb] : {std::pair{449, 64},
                               {1000, 100},
                               {600, 400},
                               {1024, 1024},
                               {2500, 1500},
                               {10000, 8000},
                               {40000, 30000},
                               {100000, 1000},
                               {70000, 65000}}) {
    const auto a = static_cast<std::size_t>(na), b = static_cast<std::size_t>(nb);
    const double real = error_in_units<T, 1>(a, b), complex = error_in_units<T, 2>(a / 2, b / 2 + 32);
    const double bound = 10 * std::log2(static_cast<double>(na + nb));
    std::printf("%7d x %-6d error / u: real %.2f, complex %.2f, bound %.0f\n", na, nb, real, complex, bound);
    EXPECT_LE(real, bound);
    EXPECT_LE(complex, bound);
  }
}

// Every factor of a deep transform beside the extended sine and cosine: constants to the nearest, later ones within 1.1
// u.
TYPED_TEST(Engine, TwiddlesAreAccurate) {
  using T = TypeParam;
  using Block = orin::conv::TwiddleBlock<T>;
  constexpr std::size_t lanes = orin::conv::Simd<T>::lanes;
  constexpr unsigned levels = 7;
  std::vector<Block> memory(orin::conv::Twiddles<T>::generated_count(levels));
  orin::conv::Twiddles<T> twiddles;
  twiddles.generate(memory.data(), levels);
  const long double pi = std::acos(-1.0L);
  long double worst[levels + 1] = {};
  for (unsigned l = 1; l <= levels; ++l)
    for (std::size_t c = 0; c < orin::conv::Twiddles<T>::first_vectors << (2 * (l - 1)); ++c)
      for (std::size_t lane = 0; lane < lanes; ++lane) {
        // theta by the definition: a quarter at the root, then a quarter of the parent's plus 0, 1/2, 1/4 or 3/4.
        const std::size_t digits = 2 * (l - 1), rest = c & ((std::size_t{1} << digits) - 1);
        const std::size_t path = (((c >> digits) * lanes + lane) << digits) | rest;
        long double theta = 0.25L;
        for (unsigned d = l; d-- > 0;) {
          const std::size_t digit = (path >> (2 * d)) & 3;
          theta = theta / 4 + (digit & 1 ? 0.5L : 0) + (digit & 2 ? 0.25L : 0);
        }
        for (std::size_t k = 0; k < 3; ++k) {
          const auto& w = twiddles.level(l)[c].power[k];
          const long double angle = 2 * pi * static_cast<long double>(k + 1) * (theta / 4);
          const long double re = static_cast<long double>(w.re[lane]) - std::cos(angle);
          const long double im = static_cast<long double>(w.im[lane]) - std::sin(angle);
          worst[l] = std::max(worst[l], std::max(std::abs(re), std::abs(im)));
        }
      }
  const long double unit = std::numeric_limits<T>::epsilon() / 2;
  for (unsigned l = 1; l <= levels; ++l) EXPECT_LE(worst[l], (l <= 3 ? 0.5001L : 1.1L) * unit) << "level " << l;
}

}  // namespace
