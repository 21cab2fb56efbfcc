// quantiles_test: quantiles and order statistics against a sorted copy, and every refusal in its order.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>

#include "stats_task.h"
#include "tests/support/guard_pages.h"

namespace {

using namespace stats;

constexpr std::uint64_t quantile_bit = 65536, order_bit = 131072;

template <class T>
class Quantiles : public testing::Test {};
TYPED_TEST_SUITE(Quantiles, Precisions);

// (1 - f) x(j) + f x(j2) from the sorted observations of a variable.
template <class T>
T expected_quantile(std::vector<T> x, T order) {
  const auto numbers = std::stable_partition(x.begin(), x.end(), [](T value) { return value == value; });
  std::sort(x.begin(), numbers);
  const double h = static_cast<double>(order) * static_cast<double>(x.size() - 1);
  const auto j = static_cast<std::size_t>(h), j2 = std::min(j + 1, x.size() - 1);
  const double f = h - static_cast<double>(j);
  return f == 0 ? x[j] : static_cast<T>((1 - f) * x[j] + f * x[j2]);
}

// Both storages, a subset, doubles at 4-byte addresses between guard pages, quantiles alone and with the sorted data.
TYPED_TEST(Quantiles, AgreeWithSortedData) {
  using T = TypeParam;
  const int p = 3;
  const std::vector<T> orders = {T(0.5), 0, 1, T(0.1), T(0.9), T(0.25), T(1) / 3};
  const int count = static_cast<int>(orders.size());
  const int subset[] = {1, 0, -5};
  for (const int n : {1, 2, 3, 5, 16, 17, 100, 1001, 20000}) {
    std::vector<T> x = normal_data<T>(p, n, static_cast<unsigned>(n));
    for (int i = 0; i < n; i += 3) x[static_cast<std::size_t>(2 * n + i)] = T(i % 5);  // ties
    for (const int storage : {variable_rows, observation_rows}) {
      const std::vector<T> stored = storage == variable_rows ? x : transposed(x, p, n);
      const std::size_t size = stored.size();
      GuardedArray<T> data(size, GuardedArray<T>::at_end, 4),
          quantiles(static_cast<std::size_t>(p * count), GuardedArray<T>::at_start, 4),
          sorted(size, GuardedArray<T>::at_end, 4);
      std::memcpy(data.data(), stored.data(), size * sizeof(T));
      for (const std::uint64_t wanted : {quantile_bit, order_bit, quantile_bit | order_bit}) {
        const std::vector<T> marks(static_cast<std::size_t>(p * count), T(-77));
        std::memcpy(quantiles.data(), marks.data(), marks.size() * sizeof(T));
        Task<T> task(p, n, storage, data.data(), nullptr, subset);
        __jundSSEditQuantiles(task, &count, orders.data(), quantiles.data(), sorted.data(), &storage);
        ASSERT_EQ(Entries<T>::quantiles(task, wanted, 0), 0);
        std::vector<T> got(marks.size()), all(size);
        std::memcpy(got.data(), quantiles.data(), got.size() * sizeof(T));
        std::memcpy(all.data(), sorted.data(), size * sizeof(T));
        for (int v = 0; v < p; ++v) {
          std::vector<T> row(x.begin() + v * n, x.begin() + (v + 1) * n);
          for (int k = 0; k < count; ++k) {
            const bool asked = subset[v] != 0 && (wanted & quantile_bit) != 0;
            const T expected = asked ? expected_quantile(row, orders[static_cast<std::size_t>(k)]) : T(-77);
            EXPECT_EQ(got[static_cast<std::size_t>(v * count + k)], expected) << n << " " << v << " " << k;
          }
          if (subset[v] == 0 || (wanted & order_bit) == 0) continue;
          std::sort(row.begin(), row.end());
          for (int i = 0; i < n; ++i) {
            ASSERT_EQ(all[static_cast<std::size_t>(storage == variable_rows ? v * n + i : i * p + v)],
                      row[static_cast<std::size_t>(i)]);
          }
        }
        EXPECT_TRUE(data.surroundings_intact() && quantiles.surroundings_intact() && sorted.surroundings_intact());
      }
    }
  }
}

// Thousands of orders take the same way as one.
TYPED_TEST(Quantiles, ManyOrders) {
  using T = TypeParam;
  const int n = 3000, count = 5000;
  const std::vector<T> x = normal_data<T>(1, n, 5);
  std::vector<T> orders, results(count);
  for (int k = 0; k < count; ++k) orders.push_back(static_cast<T>((k * 7919 % count) / double(count - 1)));
  Task<T> task(1, n, variable_rows, x.data());
  __jundSSEditQuantiles(task, &count, orders.data(), results.data(), nullptr, nullptr);
  ASSERT_EQ(Entries<T>::quantiles(task, quantile_bit, 0), 0);
  auto sorted = x;
  std::sort(sorted.begin(), sorted.end());
  for (int k = 0; k < count; k += 37) {
    EXPECT_EQ(results[static_cast<std::size_t>(k)], expected_quantile(sorted, orders[static_cast<std::size_t>(k)]))
        << k;
  }
}

// NaN count as larger than every number.
TYPED_TEST(Quantiles, NanStandAtTheEnd) {
  using T = TypeParam;
  const T x[] = {nan_of<T>, 3, nan_of<T>, 1, infinity_of<T>};  // 1 3 inf NaN NaN
  const T orders[] = {0, T(0.25), T(0.5), T(0.625), T(0.75), 1};
  const int count = 6, n = 5;
  T results[6], sorted[5];
  Task<T> task(1, n, variable_rows, x);
  __jundSSEditQuantiles(task, &count, orders, results, sorted, &variable_rows);
  for (const std::uint64_t wanted : {quantile_bit, quantile_bit | order_bit}) {
    ASSERT_EQ(Entries<T>::quantiles(task, wanted, 0), 0);
    EXPECT_EQ(results[0], 1);
    EXPECT_EQ(results[1], 3);
    EXPECT_EQ(results[2], infinity_of<T>);
    EXPECT_TRUE(std::isnan(results[3]) && std::isnan(results[4]) && std::isnan(results[5]));
  }
  EXPECT_TRUE(sorted[0] == 1 && sorted[1] == 3 && sorted[2] == infinity_of<T> && std::isnan(sorted[3]) &&
              std::isnan(sorted[4]));
}

TYPED_TEST(Quantiles, ChecksInOrder) {
  using T = TypeParam;
  const std::vector<T> x{1, 2};
  const T good_orders[] = {0, 1}, bad_orders[] = {0, T(1.0000001)}, nan_orders[] = {nan_of<T>, 0};
  T results[4], sorted[2];
  const int two = 2, negative = -1, zero = 0;
  Task<T> task(1, 2, variable_rows, x.data());
  const auto call = [&] { return Entries<T>::quantiles(task, quantile_bit | order_bit, 0); };
  EXPECT_EQ(Entries<T>::quantiles(nullptr, quantile_bit, 0), -4031);
  expect_order(call, {storage_faults(task->x_storage),
                      {{-4023, [&] { task->quantiles = results; }},
                       {-4021, [&] { task->quantile_orders = bad_orders; }},
                       {-4022, [&] { task->quantile_count = &negative; }},
                       {-4022, [&] { task->quantile_count = &two; }},
                       {-4022, [&] { task->quantile_orders = nan_orders; }},
                       {-4022, [&] { task->quantile_count = &zero; }},
                       {-4024, [&] { task->order_statistics = sorted; }}},
                      storage_faults(task->order_statistics_storage),
                      data_faults(task, x)});
  task->quantile_orders = good_orders;
  task->quantile_count = &two;
  expect_no_leak(call, 1);
  EXPECT_EQ(call(), 0);
  EXPECT_TRUE(results[0] == 1 && results[1] == 2);
  task->quantiles = task->order_statistics = nullptr;
  EXPECT_EQ(Entries<T>::quantiles(task, 0, 0), 0);
}

}  // namespace
