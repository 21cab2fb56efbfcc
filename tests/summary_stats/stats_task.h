// stats_task.h: a task for tests, the entries of either precision, data and exact sums to compare with.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TESTS_SUMMARY_STATS_STATS_TASK_H
#define ORIN_TESTS_SUMMARY_STATS_STATS_TASK_H

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "orin/summary_stats.h"

namespace stats {

template <class T>
struct Entries;

template <>
struct Entries<double> {
  static constexpr auto create = &__jundSSNewTask;
  static constexpr auto edit = &__jundSSEditTask;
  static constexpr auto basic = &_jundSSBasic;
  static constexpr auto min_max = &_jundSSMinmax;
  static constexpr auto quantiles = &_jundSSQuantiles;
  static constexpr auto stream = &_jundSSStreamQuantiles;
  static constexpr auto sort = &__jundQSort;
  static constexpr auto select = &__jundQSortSelect;
  static constexpr auto step = &__jundQSortStep;
};

template <>
struct Entries<float> {
  static constexpr auto create = &__junsSSNewTask;
  static constexpr auto edit = &__junsSSEditTask;
  static constexpr auto basic = &_junsSSBasic;
  static constexpr auto min_max = &_junsSSMinmax;
  static constexpr auto quantiles = &_junsSSQuantiles;
  static constexpr auto stream = &_junsSSStreamQuantiles;
  static constexpr auto sort = &__junsQSort;
  static constexpr auto select = &__junsQSortSelect;
  static constexpr auto step = &__junsQSortStep;
};

inline constexpr int variable_rows = 65536, observation_rows = 131072;

// A task over data that somebody else keeps; integers are 32-bit unless `Integer` says otherwise.
template <class T, class Integer = std::int32_t>
class Task {
 public:
  Task(Integer p, Integer n, int storage, const T* x, const T* weights = nullptr, const Integer* subset = nullptr)
      : p_(p), n_(n), storage_(storage) {
    EXPECT_EQ(Entries<T>::create(&task_, &p_, &n_, &storage_, x, weights, subset, sizeof(Integer) == 8), 0);
  }
  ~Task() {
    if (task_ != nullptr) __junSSDeleteTask(&task_);
  }
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;

  operator SSTask*() { return task_; }
  SSTask* operator->() { return task_; }
  SSTask** place() { return &task_; }

  void set(std::int64_t parameter, const T* array) { EXPECT_EQ(Entries<T>::edit(task_, parameter, array), 0); }
  void set_integer(std::int64_t parameter, const Integer* value) {
    EXPECT_EQ(__juniSSEditTask(task_, parameter, value), 0);
  }

 private:
  SSTask* task_ = nullptr;
  Integer p_, n_, storage_;
};

// p variables of n observations, by variable; `transposed` gives the other storage.
template <class T>
std::vector<T> normal_data(int p, int n, unsigned seed, double mean = 0, double deviation = 1) {
  std::mt19937 generator(seed);
  std::normal_distribution<double> normal(mean, deviation);
  std::vector<T> x(static_cast<std::size_t>(p) * static_cast<std::size_t>(n));
  for (T& value : x) value = static_cast<T>(normal(generator));
  return x;
}

template <class T>
std::vector<T> transposed(const std::vector<T>& x, int p, int n) {
  std::vector<T> y(x.size());
  for (int v = 0; v < p; ++v) {
    for (int i = 0; i < n; ++i) y[static_cast<std::size_t>(i * p + v)] = x[static_cast<std::size_t>(v * n + i)];
  }
  return y;
}

template <class T>
inline const T nan_of = std::numeric_limits<T>::quiet_NaN();
template <class T>
inline const T infinity_of = std::numeric_limits<T>::infinity();

using Precisions = testing::Types<double, float>;

}  // namespace stats

#endif
