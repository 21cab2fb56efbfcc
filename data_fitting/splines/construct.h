// construct: what every spline constructor shares: checks, the variant of its ends, its inputs and its table of
// kernels. SPDX-License-Identifier: MIT
#ifndef ORIN_DATA_FITTING_SPLINES_CONSTRUCT_H
#define ORIN_DATA_FITTING_SPLINES_CONSTRUCT_H

#include <array>
#include <cstring>
#include <utility>

#include "data_fitting/task.h"
#include "service/work_buffer.h"

namespace orin::data_fitting {

template <class T>
using WorkArray = service::WorkBuffer<T, alignment>;

template <class T>
[[nodiscard]] bool allocate(WorkArray<T>& array, int64_t count) {
  return static_cast<uint64_t>(count) <= SIZE_MAX && array.allocate(static_cast<std::size_t>(count));
}

// --- Variants --------------------------------------------------------------------------------------------------------

enum Variant { not_a_knot_ends, free_ends, first_first, first_second, second_first, second_second, periodic_ends };

constexpr Variant variant_of(int64_t bc_type) {
  switch (bc_type) {
    case ORIN_DF_BC_NOT_A_KNOT:
      return not_a_knot_ends;
    case ORIN_DF_BC_LEFT_FIRST | ORIN_DF_BC_RIGHT_FIRST:
      return first_first;
    case ORIN_DF_BC_LEFT_FIRST | ORIN_DF_BC_RIGHT_SECOND:
      return first_second;
    case ORIN_DF_BC_LEFT_SECOND | ORIN_DF_BC_RIGHT_FIRST:
      return second_first;
    case ORIN_DF_BC_LEFT_SECOND | ORIN_DF_BC_RIGHT_SECOND:
      return second_second;
    case ORIN_DF_BC_PERIODIC:
      return periodic_ends;
    default:
      return free_ends;
  }
}

constexpr bool two_sided(Variant variant) { return variant >= first_first && variant <= second_second; }

// The shape that a kernel is made for. Uniform partitions have places of their own in the tables and the kernels of the
// others in them: the points are rounded, so that every cell has its own width.
struct Shape {
  bool by_point;  // the ny values of a point contiguous
  Variant variant;
};

// The two boundary values where the shape has them; read before the first coefficient is written.
template <class T>
std::array<double, 2> end_values(const DfTask1D& task, Variant variant) {
  const T* bc = static_cast<const T*>(task.bc);
  if (!two_sided(variant)) return {0, 0};
  return {static_cast<double>(bc[0]), static_cast<double>(bc[1])};
}

// --- Kernel tables ---------------------------------------------------------------------------------------------------

using Kernel = int32_t (*)(const DfTask1D& task);

constexpr std::size_t cubic_kernel_index(const DfTask1D& task) {
  return 14u * !by_point(task.yhint) + 7u * uniform(task) + static_cast<std::size_t>(variant_of(task.bc_type));
}

constexpr Shape cubic_shape(std::size_t index) { return {index < 14, static_cast<Variant>(index % 7)}; }

constexpr std::size_t plain_kernel_index(const DfTask1D& task) { return 2u * !by_point(task.yhint) + uniform(task); }

// Tables of kernels: Family::kernel<shape>(task) for every shape, in the order of the indices above.
template <class Family>
constexpr auto cubic_kernels = []<std::size_t... I>(std::index_sequence<I...>) {
  return std::array<Kernel, sizeof...(I)>{Family::template kernel<cubic_shape(I)>...};
}
(std::make_index_sequence<28>{});

template <class Family>
constexpr auto plain_kernels = []<std::size_t... I>(std::index_sequence<I...>) {
  return std::array<Kernel, sizeof...(I)>{Family::template kernel<Shape{I < 2, free_ends}>...};
}
(std::make_index_sequence<4>{});

// --- Checks ----------------------------------------------------------------------------------------------------------

// More points than an array can have are a matter of memory.
inline int32_t check_points(const DfTask1D* task, int64_t least) {
  constexpr int64_t most = PTRDIFF_MAX / 128;
  if (task == nullptr) return ORIN_DF_NULL_TASK;
  if (task->nx < least) return ORIN_DF_BAD_NX;
  return task->nx > most ? ORIN_DF_NO_MEMORY : ORIN_DF_OK;
}

inline int32_t check_ends(const DfTask1D& task, bool periodic_needs_values) {
  const Variant variant = variant_of(task.bc_type);
  const bool needed = two_sided(variant) || (variant == periodic_ends && periodic_needs_values);
  return needed && task.bc == nullptr ? ORIN_DF_BAD_BC : ORIN_DF_OK;
}

inline int32_t check_arrays(const DfTask1D& task) {
  if (task.y == nullptr) return ORIN_DF_BAD_Y;
  return task.scoeff == nullptr ? ORIN_DF_BAD_SCOEFF : ORIN_DF_OK;
}

// Every constructor of a cubic: its least number of points, its ends, then the kernel.
template <class Family>
int32_t construct_cubic(const DfTask1D* task) {
  if (const int32_t status = check_points(task, Family::least_points)) return status;
  const bool periodic_needs_values = task->s_type == ORIN_DF_DEFAULT || task->s_type == ORIN_DF_HERMITE;
  if (const int32_t status = check_ends(*task, periodic_needs_values)) return status;
  return cubic_kernels<Family>[cubic_kernel_index(*task)](*task);
}

// --- Inputs ----------------------------------------------------------------------------------------------------------

// Partition, values and internal conditions of a task. They are the caller's arrays, or a copy of them where a block of
// coefficients overlaps one of them, so that a kernel may write as it goes.
template <class T>
class Inputs {
 public:
  // `block`: coefficients written per function; `conditions`: internal conditions read per function.
  int32_t prepare(const DfTask1D& task, bool by_point, Index block, Index conditions) {
    points_ = static_cast<Index>(task.nx);
    functions_ = static_cast<Index>(task.ny);
    conditions_ = conditions;
    by_point_ = by_point;
    if (functions_ <= 0) return ORIN_DF_OK;
    if (const int32_t status = check_arrays(task)) return status;
    x_ = static_cast<const T*>(task.x);
    table_ = task.y;
    ic_ = static_cast<const T*>(task.ic);
    return overlaps(task, block) && !copy() ? ORIN_DF_NO_MEMORY : ORIN_DF_OK;
  }

  Index points() const { return points_; }
  Index functions() const { return functions_; }
  const T* x() const { return x_; }
  const T* conditions(Index f) const { return ic_ + f * conditions_; }

  // The values of function f one after another: the caller's own where they lie so, else gathered into `room`.
  const T* values(Index f, T* room) const {
    if (!by_point_) return array(f);
    const T* first = array(0) + f;
    for (Index i = 0; i < points_; ++i) room[i] = first[i * functions_];
    return room;
  }

 private:
  struct Range {
    std::uintptr_t begin, end;
    static Range of(const void* p, Index count) {
      const auto at = reinterpret_cast<std::uintptr_t>(p);
      return {at, at + static_cast<std::size_t>(count) * sizeof(T)};
    }
    bool meets(Range other) const { return begin < other.end && other.begin < end; }
  };

  Index arrays() const { return by_point_ ? 1 : functions_; }
  Index array_length() const { return by_point_ ? points_ * functions_ : points_; }
  const T* array(Index k) const {
    return copied_values_ != nullptr ? copied_values_ + k * array_length() : static_cast<const T*>(table_[k]);
  }

  bool input_meets(Range range) const {
    if (range.meets(Range::of(x_, points_))) return true;
    if (conditions_ > 0 && range.meets(Range::of(ic_, conditions_ * functions_))) return true;
    for (Index k = 0; k < arrays(); ++k) {
      if (range.meets(Range::of(table_[k], array_length()))) return true;
    }
    return false;
  }

  // Asked of the hull of all blocks first: blocks and inputs rarely interleave.
  bool overlaps(const DfTask1D& task, Index block) const {
    Range hull = Range::of(task.scoeff[0], block);
    for (Index f = 1; f < functions_; ++f) {
      const Range own = Range::of(task.scoeff[f], block);
      hull.begin = own.begin < hull.begin ? own.begin : hull.begin;
      hull.end = own.end > hull.end ? own.end : hull.end;
    }
    if (!input_meets(hull)) return false;
    for (Index f = 0; f < functions_; ++f) {
      if (input_meets(Range::of(task.scoeff[f], block))) return true;
    }
    return false;
  }

  bool copy() {
    if (!allocate(copy_, points_ + int64_t{arrays()} * array_length() + int64_t{conditions_} * functions_)) {
      return false;
    }
    T* to = copy_.data();
    const auto take = [&to](const T* from, Index count) {
      std::memcpy(to, from, static_cast<std::size_t>(count) * sizeof(T));
      return std::exchange(to, to + count);
    };
    x_ = take(x_, points_);
    const T* values = to;
    for (Index k = 0; k < arrays(); ++k) take(static_cast<const T*>(table_[k]), array_length());
    copied_values_ = values;
    if (conditions_ > 0) ic_ = take(ic_, conditions_ * functions_);
    return true;
  }

  Index points_ = 0, functions_ = 0, conditions_ = 0;
  bool by_point_ = false;
  const T* x_ = nullptr;
  const void* const* table_ = nullptr;
  const T* ic_ = nullptr;
  const T* copied_values_ = nullptr;
  WorkArray<T> copy_;
};

}  // namespace orin::data_fitting

#endif
