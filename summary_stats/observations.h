// observations.h: the data set of a task, cut into blocks that fit the first-level cache.
// SPDX-License-Identifier: MIT
#ifndef ORIN_SUMMARY_STATS_OBSERVATIONS_H
#define ORIN_SUMMARY_STATS_OBSERVATIONS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "summary_stats/task.h"

namespace orin::summary_stats {

// Observations in a block. Fixed, so that a result does not depend on the storage.
inline constexpr std::ptrdiff_t block_size = 512;

template <class T>
class Observations {
 public:
  // Binds the data of a task whose x storage is known to be good: 0 or the first of -4032, -4002, -4001.
  std::int32_t bind(const SSTask& task) noexcept {
    if (const std::int32_t status = require(task, slot_of<3>)) return status;
    if (require(task, slot_of<2>) != ORIN_SS_OK || integer<2>(task) <= 0) return ORIN_SS_BAD_OBSERVATION_COUNT;
    if (require(task, slot_of<1>) != ORIN_SS_OK || integer<1>(task) <= 0) return ORIN_SS_BAD_DIMENSION;
    // No array is larger than the address space; beyond this the counts are not those of real data.
    constexpr std::int64_t most = std::numeric_limits<std::ptrdiff_t>::max() / std::ptrdiff_t{sizeof(T)};
    if (integer<2>(task) > most) return ORIN_SS_BAD_OBSERVATION_COUNT;
    if (integer<1>(task) > most / integer<2>(task)) return ORIN_SS_BAD_DIMENSION;
    task_ = &task;
    x_ = array<T, 3>(task);
    weights_ = array<T, 6>(task);
    n_ = static_cast<std::ptrdiff_t>(integer<2>(task));
    p_ = static_cast<std::ptrdiff_t>(integer<1>(task));
    by_observation_ = integer<4>(task) == ORIN_SS_OBSERVATION_ROWS;
    return ORIN_SS_OK;
  }

  std::ptrdiff_t n() const noexcept { return n_; }
  std::ptrdiff_t p() const noexcept { return p_; }
  bool by_observation() const noexcept { return by_observation_; }
  bool weighted() const noexcept { return static_cast<bool>(weights_); }

  bool takes_part(std::ptrdiff_t variable) const noexcept {
    return task_->subset == nullptr || integer<5>(*task_, variable) != 0;
  }

  // The p values of an observation, or the n values of a variable, in the storage that keeps them together.
  const T* row(std::ptrdiff_t i) const noexcept { return x_.at(i * (by_observation_ ? p_ : n_)); }

  T at(std::ptrdiff_t variable, std::ptrdiff_t i) const noexcept {
    return x_[by_observation_ ? i * p_ + variable : variable * n_ + i];
  }

  // `count` values of a variable from observation `first` on: where they stand when they are contiguous, else gathered
  // into `scratch`.
  const T* block(std::ptrdiff_t variable, std::ptrdiff_t first, std::ptrdiff_t count, T* scratch) const noexcept {
    if (!by_observation_) return x_.at(variable * n_ + first);
    for (std::ptrdiff_t i = 0; i < count; ++i) scratch[i] = x_[(first + i) * p_ + variable];
    return scratch;
  }

  // All values of a variable, in order.
  void gather(std::ptrdiff_t variable, T* out) const noexcept {
    if (!by_observation_) {
      std::memcpy(out, x_.at(variable * n_), static_cast<std::size_t>(n_) * sizeof(T));
    } else {
      block(variable, 0, n_, out);
    }
  }

  // The weights of observation `first` and following, null when all are one.
  const T* weights(std::ptrdiff_t first) const noexcept { return weights_ ? weights_.at(first) : nullptr; }

  // Calls visit(first, count) for the blocks of all observations in order.
  template <class Visit>
  void for_each_block(Visit visit) const {
    for (std::ptrdiff_t first = 0; first < n_; first += block_size) visit(first, std::min(block_size, n_ - first));
  }

 private:
  const SSTask* task_ = nullptr;
  Array<T> x_, weights_;
  std::ptrdiff_t n_ = 0, p_ = 0;
  bool by_observation_ = false;
};

// The variables that take part, in order.
class Variables {
 public:
  template <class T>
  [[nodiscard]] bool select(const Observations<T>& data) noexcept {
    std::ptrdiff_t count = 0;
    for (std::ptrdiff_t v = 0; v < data.p(); ++v) count += data.takes_part(v) ? 1 : 0;
    if (count > 0 && !indices_.allocate(static_cast<std::size_t>(count))) return false;
    count = 0;
    for (std::ptrdiff_t v = 0; v < data.p(); ++v) {
      if (data.takes_part(v)) indices_[static_cast<std::size_t>(count++)] = v;
    }
    return true;
  }

  std::ptrdiff_t count() const noexcept { return static_cast<std::ptrdiff_t>(indices_.size()); }
  std::ptrdiff_t operator[](std::ptrdiff_t i) const noexcept { return indices_[static_cast<std::size_t>(i)]; }

 private:
  Work<std::ptrdiff_t> indices_;
};

// Calls visit(k, first, x, count) for every block of every selected variable k, in the order in which the storage is
// read best: variable after variable, or block after block.
template <class T, class Visit>
void for_each_variable_block(const Observations<T>& data, const Variables& variables, Visit visit) {
  T scratch[block_size];
  const auto one = [&](std::ptrdiff_t k, std::ptrdiff_t first, std::ptrdiff_t count) {
    visit(k, first, data.block(variables[k], first, count, scratch), count);
  };
  if (data.by_observation()) {
    data.for_each_block([&](std::ptrdiff_t first, std::ptrdiff_t count) {
      for (std::ptrdiff_t k = 0; k < variables.count(); ++k) one(k, first, count);
    });
  } else {
    for (std::ptrdiff_t k = 0; k < variables.count(); ++k) {
      data.for_each_block([&](std::ptrdiff_t first, std::ptrdiff_t count) { one(k, first, count); });
    }
  }
}

}  // namespace orin::summary_stats

#endif
