// quantile_rule.h: what a quantile of a given order is, and which orders are accepted.
// SPDX-License-Identifier: MIT
#ifndef ORIN_SUMMARY_STATS_QUANTILE_RULE_H
#define ORIN_SUMMARY_STATS_QUANTILE_RULE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "summary_stats/task.h"

namespace orin::summary_stats {

// The two ranks of the quantile of order b of n observations, and the weight of the upper one:
// h = b (n - 1), lower = trunc h, fraction = h - lower, upper = min(lower + 1, n - 1).
struct QuantilePlace {
  QuantilePlace(double order, std::int64_t n) noexcept
      : h(order * static_cast<double>(n - 1)),
        lower(static_cast<std::int64_t>(h)),
        upper(std::min(lower + 1, n - 1)),
        fraction(h - static_cast<double>(lower)) {}

  // (1 - f) low + f high, in double. With f = 0 the upper value takes no part, so that an infinity or NaN there is not
  // seen.
  template <class T>
  T blend(T low, T high) const noexcept {
    return fraction == 0 ? low : static_cast<T>((1 - fraction) * low + fraction * high);
  }

  double h;
  std::int64_t lower, upper;
  double fraction;
};

// The slots of a quantile request: results null, orders null, count null or negative, an order outside [0, 1].
template <class T, int count_slot, int orders_slot, int results_slot>
std::int32_t check_orders(const SSTask& task) noexcept {
  for (const Slot* slot : {&slot_of<results_slot>, &slot_of<orders_slot>, &slot_of<count_slot>}) {
    if (const std::int32_t status = require(task, *slot)) return status;
  }
  const std::int64_t count = integer<count_slot>(task);
  if (count < 0) return slot_of<count_slot>.null_status;
  const auto orders = array<T, orders_slot>(task);
  for (std::int64_t k = 0; k < count; ++k) {
    const T order = orders[static_cast<std::ptrdiff_t>(k)];
    if (!(order >= 0 && order <= 1)) return slot_of<count_slot>.null_status;
  }
  return ORIN_SS_OK;
}

}  // namespace orin::summary_stats

#endif
