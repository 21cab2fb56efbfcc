// moments_test: minimum and maximum, moments, covariance and correlation against sums in quadruple precision.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "nist_univariate.h"
#include "stats_task.h"
#include "tests/support/guard_pages.h"

namespace {

using namespace stats;
using Quad = __float128;

constexpr std::uint64_t every_vector = 1023, covariance_bit = 4096, correlation_bit = 8192;
constexpr std::uint64_t minimum_bit = 1024, maximum_bit = 2048;

template <class T>
class Moments : public testing::Test {};
TYPED_TEST_SUITE(Moments, Precisions);

// The ten vector results and both matrices of a task.
template <class T>
struct Results {
  explicit Results(int variables)
      : p(static_cast<std::size_t>(variables)),
        vectors(10 * p, T(-77)),
        covariance(p * p, T(-77)),
        correlation(p * p, T(-77)) {}

  void attach(SSTask* task) {
    T* v = vectors.data();
    __jundSSEditMoments(task, v, v + p, v + 2 * p, v + 3 * p, v + 4 * p, v + 5 * p, v + 6 * p);
    Entries<T>::edit(task, 14, v + 7 * p);
    Entries<T>::edit(task, 15, v + 8 * p);
    Entries<T>::edit(task, 18, v + 9 * p);
    __jundSSEditCovCor(task, nullptr, covariance.data(), &variable_rows, correlation.data(), &observation_rows);
    Entries<T>::edit(task, 23, weights);
  }
  T at(std::size_t result, std::size_t variable = 0) const { return vectors[result * p + variable]; }

  std::size_t p;
  std::vector<T> vectors, covariance, correlation;
  T weights[2] = {};
};

// A value and what its rounding errors are measured by.
struct Exact {
  double value, scale;
};

// Mean, raw moments 2 to 4, central moments 2 to 4, sums of weights and of their squares, by the definitions.
template <class T>
std::vector<Exact> exact_moments(const T* x, const T* w, int n) {
  Quad W = 0, W2 = 0, raw[5] = {}, raw_scale[5] = {};
  for (int i = 0; i < n; ++i) {
    const Quad weight = w != nullptr ? w[i] : T(1);
    if (weight == 0) continue;
    W += weight;
    W2 += weight * weight;
    Quad power = weight;
    for (int k = 1; k <= 4; ++k) {
      power *= x[i];
      raw[k] += power;
      raw_scale[k] += power < 0 ? -power : power;
    }
  }
  const Quad m = raw[1] / W;
  Quad central[5] = {}, central_scale[5] = {};
  for (int i = 0; i < n; ++i) {
    const Quad weight = w != nullptr ? w[i] : T(1);
    if (weight == 0) continue;
    Quad power = weight;
    for (int k = 1; k <= 4; ++k) {
      power *= x[i] - m;
      central[k] += power;
      central_scale[k] += power < 0 ? -power : power;
    }
  }
  std::vector<Exact> all;
  for (int k = 1; k <= 4; ++k) all.push_back({double(raw[k] / W), double(raw_scale[k] / W)});
  for (int k = 2; k <= 4; ++k) {
    const Quad divisor = k == 2 ? W - W2 / W : W;
    all.push_back({double(central[k] / divisor), double(central_scale[k] / divisor)});
  }
  for (const Quad sum : {W, W2}) all.push_back({double(sum), double(sum)});
  return all;
}

template <class T>
constexpr double tolerance = sizeof(T) == 8 ? 1e-13 : 6e-8;

// Data that make careless formulas lose digits.
template <class T>
std::vector<std::vector<T>> hard_data(int n) {
  std::vector<std::vector<T>> all;
  all.push_back(normal_data<T>(1, n, 1));
  all.push_back(normal_data<T>(1, n, 2, sizeof(T) == 8 ? 1e7 : 1e4, 0.1));
  all.push_back(normal_data<T>(1, n, 3, -3, 1e-3));
  const auto add = [&](auto value) {
    std::vector<T> x;
    for (int i = 0; i < n; ++i) x.push_back(static_cast<T>(value(i)));
    all.push_back(x);
  };
  add([](int i) { return 0.1 * i; });
  add([](int i) { return i == 0 ? 1e6 : 0.1 * (i % 7); });
  add([](int i) { return i < 512 ? 1e6 + i % 3 : 0.1 * (i % 7); });
  add([](int i) { return i % 2 == 0 ? 1e5 : -1e5 - i % 11; });
  add([](int i) { return std::ldexp(1.0 + i % 5, i % 40 - 20); });
  return all;
}

TYPED_TEST(Moments, StayWithinTheirBoundOnHardData) {
  using T = TypeParam;
  for (const int n : {2, 3, 4, 5, 511, 512, 513, 1500, 20000}) {
    std::vector<T> weights;
    std::mt19937 generator(9);
    for (int i = 0; i < n; ++i)
      weights.push_back(static_cast<T>(static_cast<int>(generator() % 5) * 0.3 + (i < 2 ? 0.1 : 0.0)));
    int set = 0;
    for (std::vector<T> x : hard_data<T>(n)) {
      for (const T* w : {static_cast<const T*>(nullptr), static_cast<const T*>(weights.data())}) {
        // Nothing about an observation without weight may show.
        for (int i = 0; w != nullptr && i < n; ++i) {
          if (w[i] == 0) x[static_cast<std::size_t>(i)] = i % 2 == 0 ? nan_of<T> : T(1e30);
        }
        const auto exact = exact_moments(x.data(), w, n);
        Results<T> results(1);
        Task<T> task(1, n, variable_rows, x.data(), w);
        results.attach(task);
        for (const std::uint64_t asked : {std::uint64_t{1}, std::uint64_t{3}, std::uint64_t{7}, every_vector}) {
          ASSERT_EQ(Entries<T>::basic(task, asked, 1), 0);
          for (std::size_t k = 0; k < exact.size(); ++k) {
            if (k < 7 && (asked >> k) % 2 == 0) continue;
            const T result = k < 7 ? results.at(k) : results.weights[k - 7];
            EXPECT_NEAR(result, exact[k].value, tolerance<T> * exact[k].scale) << n << " set " << set << " " << k;
          }
        }
        const double m2 = exact[4].value, m3 = exact[5].value, m4 = exact[6].value;
        EXPECT_NEAR(results.at(7), m4 / (m2 * m2) - 3, 1e2 * tolerance<T> * (m4 / (m2 * m2))) << n << " set " << set;
        EXPECT_NEAR(results.at(8), m3 / std::pow(m2, 1.5), 1e2 * tolerance<T> * exact[5].scale / std::pow(m2, 1.5));
        const double variation = std::sqrt(m2) / exact[0].value;
        EXPECT_NEAR(results.at(9), variation,
                    1e2 * tolerance<T> * std::fabs(variation) * exact[0].scale / std::fabs(exact[0].value));
      }
      ++set;
    }
  }
}

// The number of correct decimal digits, as the reference data sets count them.
double digits(double got, double certified) {
  return got == certified ? 15 : -std::log10(std::fabs(got - certified) / std::fabs(certified));
}

TEST(MomentsNist, CertifiedValues) {
  for (const nist::Set& set : nist::sets()) {
    const int n = static_cast<int>(set.x.size());
    Results<double> results(1);
    Task<double> task(1, n, variable_rows, set.x.data());
    results.attach(task);
    ASSERT_EQ(_jundSSBasic(task, every_vector, 2), 0);
    EXPECT_GE(digits(results.at(0), set.mean), std::min(set.mean_digits, 14.9)) << set.name;
    EXPECT_GE(digits(std::sqrt(results.at(4)), set.deviation), set.deviation_digits - 0.2) << set.name;
    // Against the exact variance of the stored doubles the digits are all there.
    const auto exact = exact_moments(set.x.data(), static_cast<const double*>(nullptr), n);
    EXPECT_GE(digits(results.at(4), exact[4].value), 13) << set.name;
  }
}

// Both storages to the bit, skipped variables untouched, arrays at 4-byte addresses.
TYPED_TEST(Moments, StorageAndSubset) {
  using T = TypeParam;
  const int p = 5, subset[] = {1, 0, 2, 1, 0};
  for (const int n : {1, 2, 7, 513, 1200}) {
    const std::vector<T> x = normal_data<T>(p, n, 4, 3, 2), w = normal_data<T>(1, n, 5, 2, 0.1);
    for (const T* weights : {static_cast<const T*>(nullptr), std::as_const(w).data()}) {
      Results<T> by_variable(p), by_observation(p), whole(p);
      const auto compute = [&](const std::vector<T>& data, int storage, Results<T>& results, const int* chosen) {
        GuardedArray<T> moved(data.size(), GuardedArray<T>::at_end, 4);
        std::memcpy(moved.data(), data.data(), data.size() * sizeof(T));
        Task<T> task(p, n, storage, moved.data(), weights, chosen);
        results.attach(task);
        ASSERT_EQ(Entries<T>::basic(task, every_vector | covariance_bit | correlation_bit, 1), 0);
      };
      compute(x, variable_rows, by_variable, subset);
      compute(transposed(x, p, n), observation_rows, by_observation, subset);
      compute(x, variable_rows, whole, nullptr);
      EXPECT_EQ(0, std::memcmp(by_variable.vectors.data(), by_observation.vectors.data(),
                               by_variable.vectors.size() * sizeof(T)));
      for (std::size_t v = 0; v < p; ++v) {
        for (std::size_t k = 0; k < 10; ++k) {
          const T a = by_variable.at(k, v), b = subset[v] != 0 ? whole.at(k, v) : T(-77);
          EXPECT_TRUE(a == b || (a != a && b != b)) << n << " " << v << " " << k;
        }
        for (std::size_t u = 0; u < p; ++u) {
          if (subset[u] != 0 && subset[v] != 0) continue;
          EXPECT_EQ(by_variable.covariance[u * p + v], T(-77));
          EXPECT_EQ(by_observation.correlation[u * p + v], T(-77));
        }
      }
    }
  }
}

// Nobody takes part: every kernel succeeds and writes nothing.
TYPED_TEST(Moments, EmptySubset) {
  using T = TypeParam;
  const T x[] = {1, 2, 3, 4}, half = T(0.5);
  const int nobody[] = {0, 0}, one = 1;
  T results[4] = {-77, -77, -77, -77};
  Task<T> task(2, 2, variable_rows, x, nullptr, nobody);
  for (const int slot : {7, 16, 17}) task.set(slot, results);
  __jundSSEditCovCor(task, nullptr, results, &variable_rows, results, &variable_rows);
  __jundSSEditQuantiles(task, &one, &half, results, nullptr, nullptr);
  __jundSSEditStreamQuantiles(task, &one, &half, results, &one, &half);
  EXPECT_EQ(Entries<T>::basic(task, correlation_bit, 1), 0);
  EXPECT_EQ(Entries<T>::min_max(task, minimum_bit | maximum_bit, 1), 0);
  EXPECT_EQ(Entries<T>::quantiles(task, ORIN_SS_QUANTILES, 1), 0);
  EXPECT_EQ(Entries<T>::stream(task, ORIN_SS_STREAM_QUANTILES, 1), 0);
  EXPECT_TRUE(std::ranges::all_of(results, [](T value) { return value == T(-77); }));
}

TYPED_TEST(Moments, CovarianceAndCorrelation) {
  using T = TypeParam;
  const int p = 4, n = 1300;
  // Beside 10^9 the rounding of the mean alone would show in the products.
  std::vector<T> x = sizeof(T) == 8 ? normal_data<T>(p, n, 6, 1e9, 0.01) : normal_data<T>(p, n, 6, 1e3, 1);
  for (std::size_t i = 0; i < n; ++i) {
    x[n + i] = T(2) * x[i] + T(0.01) * x[n + i];  // nearly collinear
    x[3 * n + i] = -x[i];                         // exactly so
  }
  std::vector<T> w = normal_data<T>(1, n, 7, 2, 0.3);
  w[17] = 0;
  for (const int storage : {variable_rows, observation_rows}) {
    for (const T* weights : {static_cast<const T*>(nullptr), std::as_const(w).data()}) {
      std::vector<T> shown = x;
      for (std::size_t a = 0; a < p && weights != nullptr; ++a) shown[a * n + 17] = nan_of<T>;  // without weight
      const auto data = storage == variable_rows ? shown : transposed(shown, p, n);
      Results<T> results(p);
      Task<T> task(p, n, storage, data.data(), weights);
      results.attach(task);
      ASSERT_EQ(Entries<T>::basic(task, correlation_bit, 1), 0);
      for (std::size_t a = 0; a < p; ++a) {
        for (std::size_t b = 0; b < p; ++b) {
          Quad W = 0, W2 = 0, sum_a = 0, sum_b = 0, products = 0, scale = 0;
          const auto weight = [&](std::size_t i) { return Quad(weights != nullptr ? weights[i] : T(1)); };
          for (std::size_t i = 0; i < n; ++i) {
            W += weight(i);
            W2 += weight(i) * weight(i);
            sum_a += weight(i) * x[a * n + i];
            sum_b += weight(i) * x[b * n + i];
          }
          for (std::size_t i = 0; i < n; ++i) {
            const Quad product = weight(i) * (x[a * n + i] - sum_a / W) * (x[b * n + i] - sum_b / W);
            products += product;
            scale += product < 0 ? -product : product;
          }
          const Quad divisor = W - W2 / W;
          const T got = results.covariance[a * p + b], r = results.correlation[a * p + b];
          EXPECT_NEAR(got, double(products / divisor), tolerance<T> * double(scale / divisor)) << a << b;
          EXPECT_EQ(got, results.covariance[b * p + a]);
          EXPECT_NEAR(
              r, double(got) / std::sqrt(double(results.covariance[a * p + a]) * double(results.covariance[b * p + b])),
              4 * tolerance<T>);
          EXPECT_TRUE(r >= -1 && r <= 1);
          EXPECT_TRUE(a != b || r == 1);
        }
      }
      EXPECT_NEAR(results.correlation[3], -1, tolerance<T>);
    }
  }
}

TYPED_TEST(Moments, ConstantsSingletonsAndTheInfinite) {
  using T = TypeParam;
  Results<T> results(1);
  const auto compute = [&](const std::vector<T>& x) {
    Task<T> task(1, static_cast<int>(x.size()), variable_rows, x.data());
    results.attach(task);
    ASSERT_EQ(Entries<T>::basic(task, every_vector | correlation_bit, 1), 0);
  };
  compute(std::vector<T>(1777, T(0.1)));
  EXPECT_EQ(results.at(0), T(0.1));
  for (std::size_t k : {4u, 5u, 6u, 9u}) EXPECT_EQ(results.at(k), 0);
  EXPECT_TRUE(std::isnan(results.at(7)) && std::isnan(results.at(8)) && std::isnan(results.correlation[0]));
  // No weight at all: nothing is known, infinities included.
  const T none[3] = {}, data[3] = {1, infinity_of<T>, 3};
  Task<T> weightless(1, 3, variable_rows, data, none);
  results.attach(weightless);
  ASSERT_EQ(Entries<T>::basic(weightless, every_vector | correlation_bit, 1), 0);
  for (std::size_t k = 0; k < 10; ++k) EXPECT_TRUE(std::isnan(results.at(k))) << k;
  EXPECT_TRUE(std::isnan(results.covariance[0]) && results.weights[0] == 0);
  compute({T(3)});
  EXPECT_EQ(results.at(0), 3);
  EXPECT_EQ(results.at(1), 9);
  EXPECT_TRUE(std::isnan(results.at(4)) && std::isnan(results.covariance[0]));
  EXPECT_EQ(results.at(5), 0);
  // Infinite in the first block, in a later one, both signs, NaN.
  for (const std::size_t place : {0u, 700u}) {
    std::vector<T> x = normal_data<T>(1, 1300, 8);
    x[place] = -infinity_of<T>;
    compute(x);
    EXPECT_EQ(results.at(0), -infinity_of<T>);
    EXPECT_EQ(results.at(1), infinity_of<T>);
    EXPECT_EQ(results.at(2), -infinity_of<T>);
    EXPECT_EQ(results.at(3), infinity_of<T>);
    for (std::size_t k = 4; k < 9; ++k) EXPECT_TRUE(std::isnan(results.at(k))) << k;
    x[place + 1] = infinity_of<T>;
    compute(x);
    EXPECT_TRUE(std::isnan(results.at(0)));
    EXPECT_EQ(results.at(1), infinity_of<T>);
    x[place + 2] = nan_of<T>;
    compute(x);
    for (std::size_t k = 0; k < 10; ++k) EXPECT_TRUE(std::isnan(results.at(k))) << k;
  }
}

// Powers that overflow leave the mean alone.
TEST(MomentsOverflow, PowersOverflowOneByOne) {
  std::vector<double> x = normal_data<double>(1, 700, 10, 1e100, 1e98);
  Results<double> results(1);
  Task<double> task(1, 700, variable_rows, x.data());
  results.attach(task);
  ASSERT_EQ(_jundSSBasic(task, every_vector, 1), 0);
  const auto exact = exact_moments(x.data(), static_cast<const double*>(nullptr), 700);
  for (std::size_t k : {0u, 1u, 2u, 4u, 5u}) EXPECT_NEAR(results.at(k), exact[k].value, 1e-13 * exact[k].scale) << k;
  EXPECT_EQ(results.at(3), infinity_of<double>);
}

// Bit and the slots it needs, in their order: typed from the description.
struct Needs {
  std::uint64_t bit;
  std::vector<int> slots;
};
const Needs needs[] = {{1, {7}},
                       {2, {8}},
                       {4, {9}},
                       {8, {10}},
                       {16, {7, 11}},
                       {32, {7, 12}},
                       {64, {7, 13}},
                       {128, {7, 11, 13, 14}},
                       {256, {7, 11, 12, 15}},
                       {512, {7, 11, 18}},
                       {4096, {7, 19}},
                       {8192, {7, 19, 21}}};
constexpr int null_status(int slot) { return slot == 21 ? -4019 : -3999 - slot; }

TYPED_TEST(Moments, EstimatesBringWhatTheyAreComputedFrom) {
  using T = TypeParam;
  const T x[] = {1, 2, 4};
  for (const Needs& row : needs) {
    T results[24];
    Task<T> task(1, 3, variable_rows, x);
    task->covariance_storage = task->correlation_storage = &observation_rows;
    for (const int slot : row.slots) {  // in slot order: the first missing one is reported
      EXPECT_EQ(Entries<T>::basic(task, row.bit, 1), null_status(slot)) << row.bit;
      task.set(slot, results + slot);
    }
    for (const int present : row.slots) results[present] = T(-77);
    results[20] = T(-77);
    EXPECT_EQ(Entries<T>::basic(task, row.bit | (std::uint64_t{1} << 40), 1), 0) << row.bit;
    for (const int present : row.slots) EXPECT_NE(results[present], T(-77)) << row.bit << " " << present;
    EXPECT_EQ(results[20], T(-77));
  }
}

TYPED_TEST(Moments, ChecksInOrder) {
  using T = TypeParam;
  const std::vector<T> x{1, 2, 3};
  T out[3];
  int method = 0;
  {
    Task<T> task(1, 3, variable_rows, x.data());
    const auto call = [&] { return Entries<T>::basic(task, correlation_bit, method); };
    EXPECT_EQ(Entries<T>::basic(nullptr, correlation_bit, 0), -4031);
    expect_order(call, {{{-4029, [&] { method = 4; }},
                         {-4029, [&] { method = 6; }},
                         {-4006, [&] { task->mean = out; }},
                         {-4018, [&] { task->covariance = out + 1; }},
                         {-4019, [&] { task->correlation = out + 2; }}},
                        storage_faults(task->x_storage),
                        storage_faults(task->covariance_storage),
                        storage_faults(task->correlation_storage),
                        data_faults(task, x)});
    expect_no_leak(call, 6);
  }
  Task<T> task(1, 3, variable_rows, x.data());
  const auto call = [&] { return Entries<T>::min_max(task, minimum_bit | maximum_bit, method); };
  EXPECT_EQ(Entries<T>::min_max(nullptr, minimum_bit, 0), -4031);
  method = -4;
  expect_order(
      call,
      {{{-4029, [&] { method = 5; }}, {-4015, [&] { task->minimum = out; }}, {-4016, [&] { task->maximum = out + 1; }}},
       storage_faults(task->x_storage),
       data_faults(task, x)});
  expect_no_leak(call, 2);
}

// Every n around the vector groups, NaN anywhere, infinities, both zeros: the plain loop's answer.
TYPED_TEST(Moments, MinimumAndMaximum) {
  using T = TypeParam;
  const int p = 2;
  std::mt19937 generator(3);
  // Zeros of both signs are the extremes of the first two.
  const std::vector<T> pools[] = {{0, T(-0.0), 1, 2},
                                  {0, T(-0.0), -1, -2},
                                  {nan_of<T>, -9, 7, 3, 5, -4, 8},
                                  {infinity_of<T>, -infinity_of<T>, nan_of<T>, 3},
                                  {nan_of<T>}};
  for (int n = 1; n <= 40; ++n) {
    for (int round = 0; round < 30; ++round) {
      const std::vector<T>& pool = pools[round % std::ssize(pools)];
      std::vector<T> x(static_cast<std::size_t>(p * n));
      for (T& value : x) value = pool[generator() % pool.size()];
      for (const int storage : {variable_rows, observation_rows}) {
        const auto stored = storage == variable_rows ? x : transposed(x, p, n);
        GuardedArray<T> data(stored.size(), GuardedArray<T>::at_end, 4);
        std::memcpy(data.data(), stored.data(), stored.size() * sizeof(T));
        T low[p], high[p];
        Task<T> task(p, n, storage, data.data());
        task.set(16, low);
        task.set(17, high);
        ASSERT_EQ(Entries<T>::min_max(task, minimum_bit | maximum_bit, 1), 0);
        for (int v = 0; v < p; ++v) {
          T expected_low = nan_of<T>, expected_high = nan_of<T>;
          for (int i = 0; i < n; ++i) {
            const T value = x[static_cast<std::size_t>(v * n + i)];
            if (value < expected_low || expected_low != expected_low) expected_low = value;
            if (value > expected_high || expected_high != expected_high) expected_high = value;
          }
          const auto bits = [](T a, T b) { return (a != a && b != b) || std::memcmp(&a, &b, sizeof a) == 0; };
          EXPECT_TRUE(bits(low[v], expected_low)) << n << " " << round << " " << low[v] << " " << expected_low;
          EXPECT_TRUE(bits(high[v], expected_high)) << n << " " << round << " " << high[v] << " " << expected_high;
        }
      }
    }
  }
}

}  // namespace
