// basic: mean, raw and central moments, kurtosis, skewness, variation, covariance, correlation.
// SPDX-License-Identifier: MIT
//
// The table of estimates tells which result slot each one fills, which others it is computed from, and how many power
// sums it takes. What is asked for, completed by that table, is what is required, computed and written.
#include <algorithm>
#include <cmath>
#include <limits>

#include "summary_stats/covariance.h"
#include "summary_stats/moments.h"
#include "summary_stats/observations.h"
#include "summary_stats/task.h"

namespace orin::summary_stats {
namespace {

struct Estimate {
  std::uint64_t bit;
  const Slot* slot;
  std::uint64_t needs;  // complete: what these need is listed too
  int order;            // of the highest power sum
};

// In slot order. The rows before the covariance are the vector results, in the order of `results`.
constexpr Estimate estimates_table[] = {
    {ORIN_SS_MEAN, &slot_of<7>, 0, 1},
    {ORIN_SS_RAW_MOMENT_2, &slot_of<8>, 0, 2},
    {ORIN_SS_RAW_MOMENT_3, &slot_of<9>, 0, 3},
    {ORIN_SS_RAW_MOMENT_4, &slot_of<10>, 0, 4},
    {ORIN_SS_CENTRAL_MOMENT_2, &slot_of<11>, ORIN_SS_MEAN, 2},
    {ORIN_SS_CENTRAL_MOMENT_3, &slot_of<12>, ORIN_SS_MEAN, 3},
    {ORIN_SS_CENTRAL_MOMENT_4, &slot_of<13>, ORIN_SS_MEAN, 4},
    {ORIN_SS_KURTOSIS, &slot_of<14>, ORIN_SS_MEAN | ORIN_SS_CENTRAL_MOMENT_2 | ORIN_SS_CENTRAL_MOMENT_4, 4},
    {ORIN_SS_SKEWNESS, &slot_of<15>, ORIN_SS_MEAN | ORIN_SS_CENTRAL_MOMENT_2 | ORIN_SS_CENTRAL_MOMENT_3, 3},
    {ORIN_SS_VARIATION, &slot_of<18>, ORIN_SS_MEAN | ORIN_SS_CENTRAL_MOMENT_2, 2},
    {ORIN_SS_COVARIANCE, &slot_of<19>, ORIN_SS_MEAN, 1},
    {ORIN_SS_CORRELATION, &slot_of<21>, ORIN_SS_MEAN | ORIN_SS_COVARIANCE, 1},
};
constexpr int vector_results = 10;

std::uint64_t complete(std::uint64_t asked) noexcept {
  std::uint64_t all = 0;
  for (const Estimate& estimate : estimates_table) {
    if ((asked & estimate.bit) != 0) all |= estimate.bit | estimate.needs;
  }
  return all;
}

std::int32_t check_results(const SSTask& task, std::uint64_t wanted) noexcept {
  for (const Estimate& estimate : estimates_table) {
    if ((wanted & estimate.bit) == 0) continue;
    if (const std::int32_t status = require(task, *estimate.slot)) return status;
  }
  return ORIN_SS_OK;
}

std::int32_t check_storages(const SSTask& task, std::uint64_t wanted) noexcept {
  if (const std::int32_t status = check_storage<4>(task)) return status;
  if ((wanted & ORIN_SS_COVARIANCE) != 0) {
    if (const std::int32_t status = check_storage<20>(task)) return status;
  }
  if ((wanted & ORIN_SS_CORRELATION) != 0) return check_storage<22>(task);
  return ORIN_SS_OK;
}

// The vector results of one variable from its power sums, in table order. Raw moments follow from the central ones with
// v = M2/W: E x^2 = v + m^2, E x^3 = m3 + 3 m v + m^3, E x^4 = m4 + 4 m m3 + 6 m^2 v + m^4.
void results(const Moments& moments, double (&r)[vector_results]) noexcept {
  const double W = moments.weight(), m = W != 0 ? moments.mean() : std::numeric_limits<double>::quiet_NaN();
  const double v = moments.m2() / W, m2 = moments.m2() / moments.divisor();
  const double m3 = moments.m3() / W, m4 = moments.m4() / W;
  const double deviation = std::sqrt(m2);
  r[0] = m;
  r[1] = v + m * m;
  r[2] = m3 + 3 * m * v + m * m * m;
  r[3] = m4 + 4 * m * m3 + 6 * m * m * v + m * m * m * m;
  r[4] = m2;
  r[5] = m3;
  r[6] = m4;
  r[7] = m4 / (m2 * m2) - 3;
  r[8] = m3 / (m2 * deviation);
  r[9] = deviation / m;
}

// Mean and raw moments that did not come out finite, by plain sums: an infinite observation or an overflow shows there.
template <class T>
void repair(const Observations<T>& data, std::ptrdiff_t variable, double (&r)[vector_results]) noexcept {
  double weight = 0, sums[4] = {};
  for (std::ptrdiff_t i = 0; i < data.n(); ++i) {
    const double w = data.weighted() ? read(data.weights(i)) : T(1), x = data.at(variable, i);
    if (w == 0) continue;
    weight += w;
    double term = w;
    for (double& sum : sums) sum += term *= x;
  }
  for (int k = 0; k < 4; ++k) {
    if (!std::isfinite(r[k])) r[k] = sums[k] / weight;
  }
}

template <class T>
using Take = void (Moments::*)(const T*, const T*, std::ptrdiff_t) noexcept;
template <class T>
constexpr Take<T> take_of_order[] = {nullptr, &Moments::take<1, T>, &Moments::take<2, T>, &Moments::take<3, T>,
                                     &Moments::take<4, T>};

template <class T>
void write_vectors(const SSTask& task, std::uint64_t wanted, const Observations<T>& data, const Variables& variables,
                   const Moments* moments) noexcept {
  for (std::ptrdiff_t k = 0; k < variables.count(); ++k) {
    double r[vector_results];
    results(moments[k], r);
    const auto lost = [&](int e) { return (wanted & estimates_table[e].bit) != 0 && !std::isfinite(r[e]); };
    if (lost(0) || lost(1) || lost(2) || lost(3)) repair(data, variables[k], r);
    for (int e = 0; e < vector_results; ++e) {
      const Estimate& estimate = estimates_table[e];
      if ((wanted & estimate.bit) == 0) continue;
      Array<T>(pointer_at(task, *estimate.slot)).set(variables[k], static_cast<T>(r[e]));
    }
  }
}

// The correlation of i and j from the sums of products: in [-1, 1] whatever the rounding, NaN where one is constant.
double correlation(double ij, double ii, double jj) noexcept {
  const double r = ij / (std::sqrt(ii) * std::sqrt(jj));
  return r > 1 ? 1 : r < -1 ? -1 : r;
}

template <class T>
void write_matrices(const SSTask& task, std::uint64_t wanted, std::ptrdiff_t p, const Variables& variables,
                    Covariance<T>& sums, double divisor) noexcept {
  const auto covariances = array<T, 19>(task), correlations = array<T, 21>(task);
  for (std::ptrdiff_t i = 0; i < variables.count(); ++i) {
    for (std::ptrdiff_t j = 0; j < variables.count(); ++j) {
      const std::ptrdiff_t place = variables[i] * p + variables[j];
      covariances.set(place, static_cast<T>(sums.at(i, j) / divisor));
      if ((wanted & ORIN_SS_CORRELATION) == 0) continue;
      const double r =
          i == j ? sums.at(i, i) / sums.at(i, i) : correlation(sums.at(i, j), sums.at(i, i), sums.at(j, j));
      correlations.set(place, static_cast<T>(r));
    }
  }
}

template <class T>
std::int32_t basic(const SSTask* task, std::uint64_t asked, std::int32_t method) noexcept {
  if (task == nullptr) return ORIN_SS_NULL_TASK;
  if ((method & 3) == 0) return ORIN_SS_BAD_METHOD;
  const std::uint64_t wanted = complete(asked);
  if (const std::int32_t status = check_results(*task, wanted)) return status;
  if (const std::int32_t status = check_storages(*task, wanted)) return status;
  Observations<T> data;
  if (const std::int32_t status = data.bind(*task)) return status;
  if (wanted == 0) return ORIN_SS_OK;

  Variables variables;
  Work<Moments> work;
  if (!variables.select(data)) return ORIN_SS_NO_MEMORY;
  if (variables.count() == 0) return ORIN_SS_OK;
  if (!work.allocate(static_cast<std::size_t>(variables.count()))) return ORIN_SS_NO_MEMORY;
  Moments* const moments = work.data();
  std::fill(moments, moments + variables.count(), Moments{});
  int order = 1;
  for (const Estimate& estimate : estimates_table) {
    if ((wanted & estimate.bit) != 0) order = std::max(order, estimate.order);
  }
  const Take<T> take = take_of_order<T>[order];
  for_each_variable_block(data, variables,
                          [&](std::ptrdiff_t k, std::ptrdiff_t first, const T* x, std::ptrdiff_t count) {
                            (moments[k].*take)(x, data.weights(first), count);
                          });

  if ((wanted & ORIN_SS_COVARIANCE) != 0) {
    Covariance<T> sums(data, variables);
    if (!sums.compute(moments)) return ORIN_SS_NO_MEMORY;
    write_matrices(*task, wanted, data.p(), variables, sums, moments[0].divisor());
  }
  write_vectors(*task, wanted, data, variables, moments);
  if (const auto weights = array<T, 23>(*task)) {
    weights.set(0, static_cast<T>(moments[0].weight()));
    weights.set(1, static_cast<T>(moments[0].weight2()));
  }
  return ORIN_SS_OK;
}

}  // namespace
}  // namespace orin::summary_stats

ORIN_API int32_t ORIN_CALL _jundSSBasic(SSTask* task, uint64_t estimates, int32_t method) {
  return orin::summary_stats::basic<double>(task, estimates, method);
}

ORIN_API int32_t ORIN_CALL _junsSSBasic(SSTask* task, uint64_t estimates, int32_t method) {
  return orin::summary_stats::basic<float>(task, estimates, method);
}
