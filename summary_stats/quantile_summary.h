// quantile_summary: what is remembered of a stream of numbers, enough for its quantiles within eps n ranks.
// SPDX-License-Identifier: MIT
//
// Method    tuples (v, g, delta) in ascending order of v: the smallest possible rank of v is the sum of g up to it, the
//           largest is delta more. A tuple also counts the further numbers that equal its v: they follow it, certain to
//           stand there, so that the values of the tuples differ and few values take few of them. With the cap c = floor(2 eps n), every g + delta <= c (or 1). A number enters with
//           g = 1 and delta one less than its right neighbour's g + delta, an extreme one with delta 0. A tuple leaves,
//           g added to its right neighbour's, when the neighbour's g + delta stays within c; its band must not exceed
//           the neighbour's, and the tuples of lower bands on its left, its descendants, leave with it. The band is the
//           logarithm of the age in terms of c.
//           A tuple that leaves takes its equals with it.
//           Most numbers equal a tuple or find room in their right neighbour at once and never become tuples: a search
//           without branches and one increment. The others are collected, sorted and enter together, before a compression.
// Memory    28 bytes for each tuple and 8 for each collected number. The arrays begin with room for the first collected
//           numbers and grow at once to 2.7/eps tuples, which few orders of numbers exceed.
// Bounds    For every rank r in 1..n some tuple has r - eps n <= smallest rank and largest rank <= r + eps n. At most
//           11/(2 eps) log2(2 eps n) tuples stay after a compression: the theorem takes delta = c - 1 for new tuples,
//           the smaller one here lets more of them leave.
// Source    Greenwald, Khanna, Space-efficient online computation of quantile summaries, SIGMOD 2001: proposition 1 and
//           its corollary, theorem 1, sections 2.1.1 (bands), 2.1.2 (tree) and 2.1.3 (compress); the delta of new
//           tuples from Luo, Wang, Yi, Cormode, Quantiles over data streams, VLDB Journal 25 (2016).
#ifndef ORIN_SUMMARY_STATS_QUANTILE_SUMMARY_H
#define ORIN_SUMMARY_STATS_QUANTILE_SUMMARY_H

#include <cstddef>
#include <cstdint>

#include "summary_stats/task.h"

namespace orin::summary_stats {

class QuantileSummary {
 public:
  // Makes an empty summary ready; one that is ready stays as it is. False when there is no memory.
  [[nodiscard]] bool start(double eps) noexcept;

  // Takes in `count` numbers; false when there is no memory.
  template <class T>
  [[nodiscard]] bool take(const T* x, std::ptrdiff_t count) noexcept;

  // Brings the tuples up to date with what was taken in; false when there is no memory.
  [[nodiscard]] bool flush() noexcept;

  // The quantile of an order in [0, 1], after flush; NaN count as larger than every number. The exact one while eps n <
  // 1/2, then a number of the stream.
  double quantile(double order) const noexcept;

 private:
  struct [[gnu::packed]] Weight {
    std::uint32_t g, delta;
    std::uint32_t born;  // the cap less one when it entered, 0 for one that entered as the smallest or largest
    std::uint64_t equals;
    std::uint32_t sum() const noexcept { return g + delta; }
  };

  std::uint32_t cap() const noexcept;
  [[nodiscard]] bool reserve(std::size_t count) noexcept;
  bool absorb(double x, std::size_t place, std::uint32_t room_below) noexcept;
  void insert_pending() noexcept;
  void compress() noexcept;

  double eps_ = 0;
  std::int64_t n_ = 0;  // numbers that the tuples stand for
  std::int64_t nan_count_ = 0;
  bool complete_ = true;  // every number is a tuple or equal to one
  Work<double> pending_;  // numbers that found no room
  std::size_t pending_count_ = 0;
  Work<double> values_;  // the tuples, in two arrays
  Work<Weight> weights_;
  std::size_t count_ = 0;
};

}  // namespace orin::summary_stats

#endif
