// stream_quantiles_test: the promised distance in rank, on streams in every order and cut, and the life of the buffers.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>

#include "stats_task.h"
#include "tests/support/faulty_core.h"

namespace {

using namespace stats;

constexpr std::uint64_t stream_bit = 16777216;
const int one = 1;

template <class T>
class StreamQuantiles : public testing::Test {};
TYPED_TEST_SUITE(StreamQuantiles, Precisions);

// How far the ranks that `value` has in the sorted numbers are from b (n - 1).
template <class T>
double rank_distance(const std::vector<T>& sorted, T value, double order) {
  const double h = order * static_cast<double>(sorted.size() - 1);
  const auto low = static_cast<double>(std::lower_bound(sorted.begin(), sorted.end(), value) - sorted.begin());
  const auto high = static_cast<double>(std::upper_bound(sorted.begin(), sorted.end(), value) - sorted.begin()) - 1;
  return std::max({0.0, low - h, h - high});
}

// Streams in orders that stress the summary in different places.
template <class T>
std::vector<std::vector<T>> streams(int n) {
  std::vector<std::vector<T>> all{normal_data<T>(1, n, 1)};
  std::mt19937 generator(2);
  const auto add = [&](auto value) {
    std::vector<T> x;
    for (int i = 0; i < n; ++i) x.push_back(static_cast<T>(value(i)));
    all.push_back(x);
  };
  add([](int i) { return i; });
  add([](int i) { return -i; });
  add([&](int) { return static_cast<int>(generator() % 10); });
  add([](int i) { return i % 2 == 0 ? i : -i; });
  add([n](int i) { return i % 2 == 0 ? n - i : i - n; });
  add([](int i) { return i % 1000; });
  add([](int i) { return std::ldexp(1.0, i % 61 - 30) * (i % 3 - 1); });
  add([](int) { return 4; });
  add([](int i) { return i % 64 == 0 ? i % 7 : 3; });
  return all;
}

// After every block the reported values have the promised ranks.
TYPED_TEST(StreamQuantiles, KeepTheirRankOnEveryStream) {
  using T = TypeParam;
  const int n = 60000, count = 21;
  std::vector<T> orders, results(count);
  for (int k = 0; k < count; ++k) orders.push_back(static_cast<T>(k) / (count - 1));
  for (const T eps : {T(0.1), T(0.01), T(0.001)}) {
    int stream = 0;
    for (const std::vector<T>& x : streams<T>(n)) {
      int block = 1;
      Task<T> task(1, 1, variable_rows, x.data());
      task->n = &block;
      __jundSSEditStreamQuantiles(task, &count, orders.data(), results.data(), &one, &eps);
      std::vector<T> sorted;
      for (int taken = 0; taken < n; taken += block) {
        block = std::min(taken + 1, n - taken);  // 1, 2, 4, 8 ...
        task.set(3, x.data() + taken);
        ASSERT_EQ(Entries<T>::stream(task, stream_bit, 1), 0);
        sorted.insert(sorted.end(), x.begin() + taken, x.begin() + taken + block);
        std::sort(sorted.begin(), sorted.end());
        const double bound = static_cast<double>(eps) * static_cast<double>(sorted.size());
        for (int k = 0; k < count; ++k) {
          const auto i = static_cast<std::size_t>(k);
          if (bound >= 0.5) {
            EXPECT_TRUE(std::binary_search(sorted.begin(), sorted.end(), results[i]));
            EXPECT_LE(rank_distance(sorted, results[i], orders[i]), bound) << stream << " " << eps << " " << k;
          } else {
            const double h = static_cast<double>(orders[i]) * static_cast<double>(sorted.size() - 1);
            const auto j = static_cast<std::size_t>(h);
            const double f = h - static_cast<double>(j);
            const double exact = f == 0 ? sorted[j] : (1 - f) * sorted[j] + f * sorted[j + 1];
            EXPECT_EQ(results[i], static_cast<T>(exact)) << stream << " " << eps << " " << k;
          }
        }
      }
      ++stream;
    }
  }
}

// A million numbers at eps = 1/1000 take less than 100 kB at any time, in the usual orders.
TYPED_TEST(StreamQuantiles, MemoryStaysSmall) {
  using T = TypeParam;
  const int n = 1000000;
  const T order = T(0.5), eps = T(0.001);
  T result;
  for (const std::vector<T>& x : streams<T>(n)) {
    if (x[0] == n) continue;  // two runs that close in on the middle are beyond it
    Task<T> task(1, n, variable_rows, x.data());
    __jundSSEditStreamQuantiles(task, &one, &order, &result, &one, &eps);
    faulty_core::fail_at(-1);
    ASSERT_EQ(Entries<T>::stream(task, stream_bit, 0), 0);
    EXPECT_LT(faulty_core::peak_bytes(), 100000);
  }
}

// Variables are independent, in both storages; a subset and NaN are respected.
TYPED_TEST(StreamQuantiles, VariablesStorageAndNan) {
  using T = TypeParam;
  const int p = 3, n = 5000, count = 3, subset[] = {1, 0, 1};
  const T orders[] = {T(0.25), T(0.5), 1}, eps = T(0.01);
  std::vector<T> x = normal_data<T>(p, n, 3);
  for (int i = 0; i < n; i += 2) x[static_cast<std::size_t>(2 * n + i)] = nan_of<T>;
  for (const int storage : {variable_rows, observation_rows}) {
    const auto data = storage == variable_rows ? x : transposed(x, p, n);
    std::vector<T> results(p * count, T(-77));
    Task<T> task(p, n, storage, data.data(), nullptr, subset);
    __jundSSEditStreamQuantiles(task, &count, orders, results.data(), &one, &eps);
    ASSERT_EQ(Entries<T>::stream(task, stream_bit, 0), 0);
    std::vector<T> first(x.begin(), x.begin() + n), numbers;
    std::copy_if(x.begin() + 2 * n, x.end(), std::back_inserter(numbers), [](T value) { return value == value; });
    std::sort(first.begin(), first.end());
    std::sort(numbers.begin(), numbers.end());
    for (std::size_t k = 0; k < 3; ++k) {
      EXPECT_LE(rank_distance(first, results[k], orders[k]), eps * n);
      EXPECT_EQ(results[3 + k], T(-77));
    }
    EXPECT_LE(rank_distance(numbers, results[6], 2 * orders[0]), eps * n);
    EXPECT_TRUE(std::isnan(results[8]));
  }
}

TYPED_TEST(StreamQuantiles, BuffersLiveUntilFreedOrDeleted) {
  using T = TypeParam;
  const T orders[] = {T(0.5)}, eps = T(0.125), other_eps = T(0.25);
  const int two = 2;
  T result = 0;
  const std::vector<T> x = normal_data<T>(2, 100, 4);
  const long before = faulty_core::live_blocks();
  {
    Task<T> task(1, 100, variable_rows, x.data());
    __jundSSEditStreamQuantiles(task, &one, orders, &result, &one, &eps);
    const long with_task = faulty_core::live_blocks();
    EXPECT_EQ(__junSQuantilesFreeBuffers(nullptr), -4031);
    EXPECT_EQ(__junSQuantilesFreeBuffers(task), 0);
    for (int round = 0; round < 3; ++round) {
      ASSERT_EQ(Entries<T>::stream(task, stream_bit, 0), 0);
      EXPECT_GT(faulty_core::live_blocks(), with_task);
      task.set(63, &other_eps);
      EXPECT_EQ(Entries<T>::stream(task, stream_bit, 0), -4065);
      task.set(63, &eps);
      task.set_integer(1, &two);
      EXPECT_EQ(Entries<T>::stream(task, stream_bit, 0), -4001);
      task.set_integer(1, &one);
      EXPECT_EQ(__junSQuantilesFreeBuffers(task), 0);
      EXPECT_EQ(faulty_core::live_blocks(), with_task);
      EXPECT_EQ(task->release_count, 1);
    }
    // A new stream knows nothing of the old ones.
    const std::vector<T> nines(100, T(9));
    task.set(3, nines.data());
    ASSERT_EQ(Entries<T>::stream(task, stream_bit, 0), 0);
    EXPECT_EQ(result, 9);
  }
  EXPECT_EQ(faulty_core::live_blocks(), before);
}

TYPED_TEST(StreamQuantiles, ChecksInOrder) {
  using T = TypeParam;
  const std::vector<T> x = normal_data<T>(1, 9000, 5);
  T result;
  const T good_order = 1, bad_order = T(-0.001), eps = T(0.0001), wrong[] = {0, T(-0.1), 1, nan_of<T>};
  const int negative = -1, zero = 0, two = 2;
  Task<T> task(1, 9000, variable_rows, x.data());
  const auto call = [&] { return Entries<T>::stream(task, stream_bit, 0); };
  EXPECT_EQ(Entries<T>::stream(nullptr, stream_bit, 0), -4031);
  Faults parameters{
      {-4070, [&] { task->stream_quantiles = &result; }},    {-4068, [&] { task->stream_orders = &bad_order; }},
      {-4069, [&] { task->stream_count = &negative; }},      {-4069, [&] { task->stream_count = &one; }},
      {-4069, [&] { task->stream_orders = &good_order; }},   {-4066, [&] { task->stream_parameter_count = &zero; }},
      {-4066, [&] { task->stream_parameter_count = &two; }}, {-4066, [&] { task->stream_parameter_count = &one; }}};
  for (const T& parameter : wrong) parameters.push_back({-4065, [&] { task->stream_parameters = &parameter; }});
  parameters.push_back({-4065, [&] { task->stream_parameters = &eps; }});
  expect_order(call, {storage_faults(task->x_storage), parameters, data_faults(task, x)});
  // The allocations of a growing summary are among those that fail; the stream is forgotten then.
  __junSQuantilesFreeBuffers(task);
  const auto fresh = [&] { return __junSQuantilesFreeBuffers(task) + call(); };
  expect_no_leak(fresh, 6);
  EXPECT_EQ(result, *std::max_element(x.begin(), x.end()));
}

}  // namespace
