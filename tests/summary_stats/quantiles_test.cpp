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
T expected_quantile(const std::vector<T>& x, T order) {
  const double h = static_cast<double>(order) * static_cast<double>(x.size() - 1);
  const auto j = static_cast<std::size_t>(h), j2 = std::min(j + 1, x.size() - 1);
  const double f = h - static_cast<double>(j);
  return f == 0 ? x[j] : static_cast<T>((1 - f) * x[j] + f * x[j2]);
}

// Both storages, a subset, doubles at 4-byte addresses between guard pages, quantiles alone and with the sorted data, few
// orders and thousands. NaN count as larger than every number.
TYPED_TEST(Quantiles, AgreeWithSortedData) {
  using T = TypeParam;
  const int p = 3;
  const int subset[] = {1, 0, -5};
  const auto same = [](T a, T b) { return a == b || (a != a && b != b); };
  for (const int n : {1, 2, 3, 5, 16, 17, 100, 1001, 20000}) {
    std::vector<T> x = normal_data<T>(p, n, static_cast<unsigned>(n)), orders = {T(0.5), 0, 1, T(0.1), T(0.25)};
    for (int k = 0; n == 1001 && k < 3000; ++k) orders.push_back(static_cast<T>((k * 7919 % 3000) / 2999.0));
    const int count = static_cast<int>(orders.size());
    for (int i = 0; i < n; i += 3) x[static_cast<std::size_t>(2 * n + i)] = T(i % 5);  // ties
    for (int i = 1; i < n; i += 7) x[static_cast<std::size_t>(2 * n + i)] = i % 2 == 0 ? nan_of<T> : infinity_of<T>;
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
          std::sort(row.begin(), std::stable_partition(row.begin(), row.end(), [](T value) { return value == value; }));
          for (int k = 0; k < count; ++k) {
            const bool asked = subset[v] != 0 && (wanted & quantile_bit) != 0;
            const T expected = asked ? expected_quantile(row, orders[static_cast<std::size_t>(k)]) : T(-77);
            EXPECT_PRED2(same, got[static_cast<std::size_t>(v * count + k)], expected) << n << " " << v << " " << k;
          }
          if (subset[v] == 0 || (wanted & order_bit) == 0) continue;
          for (int i = 0; i < n; ++i) {
            ASSERT_PRED2(same, all[static_cast<std::size_t>(storage == variable_rows ? v * n + i : i * p + v)],
                         row[static_cast<std::size_t>(i)]);
          }
        }
        EXPECT_TRUE(data.surroundings_intact() && quantiles.surroundings_intact() && sorted.surroundings_intact());
      }
    }
  }
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
