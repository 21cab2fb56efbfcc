// task: what the parts of data fitting share about the task record: hints, element type, sizes.
// SPDX-License-Identifier: MIT
#ifndef ORIN_DATA_FITTING_TASK_H
#define ORIN_DATA_FITTING_TASK_H

#include <cstddef>
#include <cstdint>

#include "orin/data_fitting.h"

namespace orin::data_fitting {

using std::int32_t;
using std::int64_t;

// A place in an array: as wide as a pointer, so that loops over arrays stay in one register of either build.
using Index = std::ptrdiff_t;

constexpr std::size_t alignment = 128;  // of records, tables and work arrays

constexpr bool by_point(int64_t storage_hint) { return storage_hint == ORIN_DF_BY_POINT; }
constexpr bool uniform(const DfTask1D& task) { return (task.xhint & ORIN_DF_UNIFORM) != 0; }
constexpr bool two_sided(int64_t bc_type) { return bc_type == 12 || bc_type == 36 || bc_type == 24 || bc_type == 48; }

// Coefficients from one function's block to the next: the type 1 quadratic has a group more than the partition cells.
// Any order is accepted: the product wraps for those that no array can have.
constexpr int64_t coefficient_stride(int64_t order, int64_t type, int64_t nx) {
  const auto groups = static_cast<std::uint64_t>(type == ORIN_DF_SUBBOTIN ? nx : nx - 1);
  return static_cast<int64_t>(static_cast<std::uint64_t>(order) * groups);
}

}  // namespace orin::data_fitting

#endif
