// stats_task.h: a task for tests, the entries of either precision, data and exact sums to compare with.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TESTS_SUMMARY_STATS_STATS_TASK_H
#define ORIN_TESTS_SUMMARY_STATS_STATS_TASK_H

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <random>
#include <vector>

#include "orin/summary_stats.h"
#include "tests/support/faulty_core.h"

namespace stats {

// The entries of one precision: the first of each pair for double.
template <class T>
struct Entries {
  template <class D, class S>
  static constexpr auto choose(D d, S s) {
    if constexpr (sizeof(T) == 8) {
      return d;
    } else {
      return s;
    }
  }
  static constexpr auto create = choose(&__jundSSNewTask, &__junsSSNewTask);
  static constexpr auto edit = choose(&__jundSSEditTask, &__junsSSEditTask);
  static constexpr auto basic = choose(&_jundSSBasic, &_junsSSBasic);
  static constexpr auto min_max = choose(&_jundSSMinmax, &_junsSSMinmax);
  static constexpr auto quantiles = choose(&_jundSSQuantiles, &_junsSSQuantiles);
  static constexpr auto stream = choose(&_jundSSStreamQuantiles, &_junsSSStreamQuantiles);
  static constexpr auto sort = choose(&__jundQSort, &__junsQSort);
  static constexpr auto select = choose(&__jundQSortSelect, &__junsQSortSelect);
  static constexpr auto step = choose(&__jundQSortStep, &__junsQSortStep);
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
  ~Task() { __junSSDeleteTask(&task_); }
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;

  operator SSTask*() { return task_; }
  SSTask* operator->() { return task_; }

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

// Faults are mended one after the other: each status must be the one reported while its fault and all later ones stand.
struct Fault {
  int status;
  std::function<void()> mend;
};
using Faults = std::vector<Fault>;
template <class Call>
void expect_order(Call call, std::initializer_list<Faults> groups) {
  for (const Faults& faults : groups) {
    for (const Fault& fault : faults) {
      EXPECT_EQ(call(), fault.status);
      fault.mend();
    }
  }
  EXPECT_EQ(call(), 0);
}

// A storage slot: missing, with a bad value, good.
inline Faults storage_faults(const void*& slot) {
  static const int bad = 65535;
  return {{-4044, [&slot] { slot = &bad; }}, {-4003, [&slot] { slot = &observation_rows; }}};
}

// What every kernel asks of a data set of one variable, last of all: x, n, p.
template <class T>
Faults data_faults(SSTask* task, const std::vector<T>& x) {
  static const int zero = 0, one = 1;
  static int n;
  n = static_cast<int>(x.size());
  task->x = task->n = task->p = task->x_storage = nullptr;
  return {{-4032, [=, &x] { task->x = x.data(); }},
          {-4002, [=] { task->n = &zero; }},
          {-4002, [=] { task->n = &n; }},
          {-4001, [=] { task->p = &zero; }},
          {-4001, [=] { task->p = &one; }}};
}

// With each allocation failing in turn the call reports it and leaves nothing behind.
template <class Call>
void expect_no_leak(Call call, long least_sites) {
  const long before = faulty_core::live_blocks();
  const long sites = faulty_core::fail_each([&](bool) {
    const int status = call();
    EXPECT_TRUE(status == 0 || (status == -4000 && faulty_core::live_blocks() == before)) << status;
  });
  EXPECT_GE(sites, least_sites);
}

using Precisions = testing::Types<double, float>;

}  // namespace stats

#endif
