// api: the entries of both precisions under one name, and a task with its arrays, as the tests use them.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TESTS_DATA_FITTING_API_H
#define ORIN_TESTS_DATA_FITTING_API_H

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "orin/data_fitting.h"

template <class T>
struct Api;

#define ORIN_TEST_API(T, t)                                                           \
  template <>                                                                         \
  struct Api<T> {                                                                     \
    static constexpr auto new_task = orin_df_kernel_##t##NewTask1D;                   \
    static constexpr auto edit_spline = orin_df_kernel_##t##EditPPSpline1D;           \
    static constexpr auto edit_ptr = orin_df_kernel_##t##EditPtr;                     \
    static constexpr auto edit_idx_ptr = orin_df_kernel_##t##EditIdxPtr;              \
    static constexpr auto linear = orin_df_kernel_##t##DFLinearSpline1D;              \
    static constexpr auto quadratic = orin_df_kernel_##t##DFQuadraticSpline1D;        \
    static constexpr auto natural = orin_df_kernel_##t##DFNaturalCubicSpline1D;       \
    static constexpr auto default_cubic = orin_df_kernel_##t##DFDefaultCubicSpline1D; \
    static constexpr auto hermite = orin_df_kernel_##t##DFHermiteCubicSpline1D;       \
    static constexpr auto bessel = orin_df_kernel_##t##DFBesselCubicSpline1D;         \
    static constexpr auto akima = orin_df_kernel_##t##DFAkimaCubicSpline1D;           \
    static constexpr auto search = orin_df_kernel_##t##DFSearch1D;                    \
    static constexpr auto uniform = orin_df_kernel_##t##DFUniformSearch1D;            \
    static constexpr auto quasi_uniform = orin_df_kernel_##t##DFQuasiUniformSearch1D; \
    static constexpr auto sorted = orin_df_kernel_##t##DFSortedSearch1D;              \
    static constexpr auto hybrid = orin_df_kernel_##t##DFHybridSearch1D;              \
    static constexpr auto peak = orin_df_kernel_##t##DFPeakSearch1D;                  \
    static constexpr auto user = orin_df_kernel_##t##DFUserDefSearch1D;               \
    static constexpr auto uniform_user = orin_df_kernel_##t##DFUniUserDefSearch1D;    \
    static constexpr auto interpolate = orin_df_kernel_##t##Interpolate1D;            \
    static constexpr auto integrate = orin_df_kernel_##t##Integrate1D;                \
  };
ORIN_TEST_API(double, d)
ORIN_TEST_API(float, s)
#undef ORIN_TEST_API

using Precisions = testing::Types<double, float>;

// A task over `x` and ny functions of random values; every array is as long as it must be and no longer.
template <class T>
struct Fit {
  using A = Api<T>;
  using Constructor = int32_t(ORIN_CALL*)(DfTask1D*, int64_t, int64_t, int64_t);

  std::vector<T> x, y, coefficients, bc, ic;
  int64_t ny, yhint;
  DfTask1D* task = nullptr;

  Fit(std::vector<T> points, int64_t functions, int64_t xhint = 0, int64_t storage = 0, unsigned seed = 1)
      : x(std::move(points)), y(x.size() * static_cast<std::size_t>(functions)), ny(functions), yhint(storage) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> value(-1, 1);
    for (T& v : y) v = static_cast<T>(value(random));
    EXPECT_EQ(A::new_task(&task, nx(), x.data(), xhint, ny, y.data(), yhint, 7), ORIN_DF_OK);
  }
  Fit(const Fit&) = delete;
  Fit& operator=(const Fit&) = delete;
  ~Fit() { orin_df_kernel_DeleteTask(&task); }

  int64_t nx() const { return static_cast<int64_t>(x.size()); }
  T& value(std::size_t f, std::size_t i) {
    return yhint == 32 ? y[i * static_cast<std::size_t>(ny) + f] : y[f * x.size() + i];
  }
  std::size_t pieces() const { return x.size() - (task->s_order == 3 && task->s_type == 1 ? 0 : 1); }
  const T* piece(std::size_t f, std::size_t i) const {
    return coefficients.data() + (f * pieces() + i) * static_cast<std::size_t>(task->s_order);
  }

  int32_t build(Constructor constructor, int64_t order, int64_t type, int64_t bc_type, std::vector<T> ends = {},
                int64_t ic_type = 0, std::vector<T> inner = {}) {
    bc = std::move(ends);
    ic = std::move(inner);
    coefficients.assign(static_cast<std::size_t>(order * ny * (nx() - (type == 1 ? 0 : 1))),
                        std::numeric_limits<T>::quiet_NaN());
    const int32_t status = A::edit_spline(task, order, type, bc_type, bc.empty() ? nullptr : bc.data(), ic_type,
                                          ic.empty() ? nullptr : ic.data(), coefficients.data(), 0);
    return status != ORIN_DF_OK ? status : constructor(task, 0, 0, 0);
  }
};

template <class T>
std::vector<T> random_partition(std::size_t n, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> gap(0.2, 1);
  std::vector<T> x(n);
  double at = -3;
  for (T& v : x) v = static_cast<T>(at += gap(random));
  return x;
}

template <class T>
std::vector<T> uniform_partition(std::size_t n, double first = -1.5, double step = 0.25) {
  std::vector<T> x(n);
  for (std::size_t i = 0; i < n; ++i) x[i] = static_cast<T>(first + step * static_cast<double>(i));
  return x;
}

#endif
