// quantiles: quantiles of given orders and order statistics of every variable.
// SPDX-License-Identifier: MIT
//
// Method    h = b (n - 1), j = trunc h, f = h - j: quantile = (1 - f) x(j) + f x(min(j + 1, n - 1)), x(k) the value of
//           rank k. The observations of a variable are copied and sorted; where only quantiles are asked for, no
//           further than the ranks of all orders together need it. Both put the same value at a rank, so that the
//           quantiles are the same.
// Bounds    one partition of the copy for all orders costs about as much as one selection: n log(2 orders) steps.
// Special   NaN stand at the end.
#include <algorithm>

#include "summary_stats/observations.h"
#include "summary_stats/quantile_rule.h"
#include "summary_stats/selection.h"
#include "summary_stats/task.h"

namespace orin::summary_stats {
namespace {

std::int32_t check_order_statistics(const SSTask& task) noexcept {
  if (const std::int32_t status = require(task, slot_of<27>)) return status;
  return check_storage<44>(task);
}

// The ranks that the orders need: ascending, each once.
template <class T>
std::ptrdiff_t collect_ranks(Array<T> orders, std::ptrdiff_t count, std::ptrdiff_t n, std::ptrdiff_t* ranks) noexcept {
  for (std::ptrdiff_t k = 0; k < count; ++k) {
    const QuantilePlace place(orders[k], n);
    ranks[2 * k] = static_cast<std::ptrdiff_t>(place.lower);
    ranks[2 * k + 1] = static_cast<std::ptrdiff_t>(place.upper);
  }
  std::sort(ranks, ranks + 2 * count);
  return std::unique(ranks, ranks + 2 * count) - ranks;
}

template <class T>
std::int32_t quantiles(const SSTask* task, std::uint64_t estimates) noexcept {
  if (task == nullptr) return ORIN_SS_NULL_TASK;
  const bool with_quantiles = (estimates & ORIN_SS_QUANTILES) != 0;
  const bool with_order_statistics = (estimates & ORIN_SS_ORDER_STATISTICS) != 0;
  if (const std::int32_t status = check_storage<4>(*task)) return status;
  if (with_quantiles) {
    if (const std::int32_t status = check_orders<T, 24, 25, 26>(*task)) return status;
  }
  if (with_order_statistics) {
    if (const std::int32_t status = check_order_statistics(*task)) return status;
  }
  Observations<T> data;
  if (const std::int32_t status = data.bind(*task)) return status;

  const std::ptrdiff_t n = data.n();
  const auto orders = array<T, 25>(*task);
  const auto count = with_quantiles ? static_cast<std::ptrdiff_t>(integer<24>(*task)) : 0;
  if (count == 0 && !with_order_statistics) return ORIN_SS_OK;
  Work<T> work;
  Work<std::ptrdiff_t> ranks;
  if (!work.allocate(static_cast<std::size_t>(n))) return ORIN_SS_NO_MEMORY;
  if (count > 0 && !ranks.allocate(2 * static_cast<std::size_t>(count))) return ORIN_SS_NO_MEMORY;
  const std::ptrdiff_t rank_count = collect_ranks(orders, count, n, ranks.data());
  T* x = work.data();

  for (std::ptrdiff_t v = 0; v < data.p(); ++v) {
    if (!data.takes_part(v)) continue;
    data.gather(v, x);
    if (with_order_statistics) {
      sort_ascending(x, n);
      const auto results = array<T, 27>(*task);
      const bool by_observation = integer<44>(*task) == ORIN_SS_OBSERVATION_ROWS;
      for (std::ptrdiff_t i = 0; i < n; ++i) results.set(by_observation ? i * data.p() + v : v * n + i, x[i]);
    } else {
      place_ranks(x, n, ranks.data(), rank_count);
    }
    const auto results = array<T, 26>(*task);
    for (std::ptrdiff_t k = 0; k < count; ++k) {
      const QuantilePlace place(orders[k], n);
      results.set(v * count + k, place.blend(x[place.lower], x[place.upper]));
    }
  }
  return ORIN_SS_OK;
}

}  // namespace
}  // namespace orin::summary_stats

ORIN_API int32_t ORIN_CALL _jundSSQuantiles(SSTask* task, uint64_t estimates, int32_t) {
  return orin::summary_stats::quantiles<double>(task, estimates);
}

ORIN_API int32_t ORIN_CALL _junsSSQuantiles(SSTask* task, uint64_t estimates, int32_t) {
  return orin::summary_stats::quantiles<float>(task, estimates);
}
