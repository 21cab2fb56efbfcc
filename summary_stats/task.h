// task.h: the slot table of the summary-statistics task and the typed view that kernels take of it.
// SPDX-License-Identifier: MIT
#ifndef ORIN_SUMMARY_STATS_TASK_H
#define ORIN_SUMMARY_STATS_TASK_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "orin/summary_stats.h"
#include "service/work_buffer.h"

namespace orin::summary_stats {

// Records and work arrays are aligned to two cache lines.
inline constexpr std::size_t alignment = 128;
template <class T>
using Work = service::WorkBuffer<T, alignment>;

// --- The slot table --------------------------------------------------------------------------------------------------

enum class Kind : std::uint8_t { integers, reals };

// One pointer of the record: the number that names it in calls, what it points at, the status when it is missing.
struct Slot {
  std::int32_t parameter;
  Kind kind;
  std::int32_t null_status;
  std::size_t offset;
};

#define ORIN_SLOT(parameter, kind, field, null_status) \
  { parameter, Kind::kind, null_status, offsetof(SSTask, field) }

// Every slot, in record order.
inline constexpr Slot slots[] = {
    ORIN_SLOT(1, integers, p, ORIN_SS_BAD_DIMENSION),
    ORIN_SLOT(2, integers, n, ORIN_SS_BAD_OBSERVATION_COUNT),
    ORIN_SLOT(5, integers, subset, ORIN_SS_NO_SUBSET),
    ORIN_SLOT(3, reals, x, ORIN_SS_NO_OBSERVATIONS),
    ORIN_SLOT(6, reals, weights, ORIN_SS_NO_WEIGHTS),
    ORIN_SLOT(23, reals, accumulated_weights, ORIN_SS_NO_ACCUMULATED_WEIGHTS),
    ORIN_SLOT(4, integers, x_storage, ORIN_SS_NO_STORAGE),
    ORIN_SLOT(60, reals, parametrized, ORIN_SS_NO_SLOT_60),
    ORIN_SLOT(61, integers, parametrized_storage, ORIN_SS_NO_STORAGE),
    ORIN_SLOT(7, reals, mean, ORIN_SS_NO_MEAN),
    ORIN_SLOT(8, reals, raw_moment_2, ORIN_SS_NO_RAW_MOMENT_2),
    ORIN_SLOT(9, reals, raw_moment_3, ORIN_SS_NO_RAW_MOMENT_3),
    ORIN_SLOT(10, reals, raw_moment_4, ORIN_SS_NO_RAW_MOMENT_4),
    ORIN_SLOT(11, reals, central_moment_2, ORIN_SS_NO_CENTRAL_MOMENT_2),
    ORIN_SLOT(12, reals, central_moment_3, ORIN_SS_NO_CENTRAL_MOMENT_3),
    ORIN_SLOT(13, reals, central_moment_4, ORIN_SS_NO_CENTRAL_MOMENT_4),
    ORIN_SLOT(14, reals, kurtosis, ORIN_SS_NO_KURTOSIS),
    ORIN_SLOT(15, reals, skewness, ORIN_SS_NO_SKEWNESS),
    ORIN_SLOT(18, reals, variation, ORIN_SS_NO_VARIATION),
    ORIN_SLOT(16, reals, minimum, ORIN_SS_NO_MINIMUM),
    ORIN_SLOT(17, reals, maximum, ORIN_SS_NO_MAXIMUM),
    ORIN_SLOT(20, integers, covariance_storage, ORIN_SS_NO_STORAGE),
    ORIN_SLOT(19, reals, covariance, ORIN_SS_NO_COVARIANCE),
    ORIN_SLOT(22, integers, correlation_storage, ORIN_SS_NO_STORAGE),
    ORIN_SLOT(21, reals, correlation, ORIN_SS_NO_CORRELATION),
    ORIN_SLOT(28, integers, pooled_28, ORIN_SS_NO_SLOT_28_OR_32),
    ORIN_SLOT(32, integers, pooled_32, ORIN_SS_NO_SLOT_28_OR_32),
    ORIN_SLOT(33, reals, pooled_33, ORIN_SS_NO_SLOT_33),
    ORIN_SLOT(35, reals, pooled_35, ORIN_SS_NO_SLOT_35),
    ORIN_SLOT(34, integers, pooled_34, ORIN_SS_NO_STORAGE),
    ORIN_SLOT(30, reals, pooled_30, ORIN_SS_NO_SLOT_30),
    ORIN_SLOT(31, reals, pooled_31, ORIN_SS_NO_SLOT_31),
    ORIN_SLOT(29, integers, pooled_29, ORIN_SS_NO_STORAGE),
    ORIN_SLOT(24, integers, quantile_count, ORIN_SS_BAD_QUANTILE_ORDERS),
    ORIN_SLOT(25, reals, quantile_orders, ORIN_SS_NO_QUANTILE_ORDERS),
    ORIN_SLOT(26, reals, quantiles, ORIN_SS_NO_QUANTILES),
    ORIN_SLOT(27, reals, order_statistics, ORIN_SS_NO_ORDER_STATISTICS),
    ORIN_SLOT(44, integers, order_statistics_storage, ORIN_SS_NO_STORAGE),
    ORIN_SLOT(64, integers, stream_count, ORIN_SS_BAD_STREAM_ORDERS),
    ORIN_SLOT(65, reals, stream_orders, ORIN_SS_NO_STREAM_ORDERS),
    ORIN_SLOT(66, reals, stream_quantiles, ORIN_SS_NO_STREAM_QUANTILES),
    ORIN_SLOT(62, integers, stream_parameter_count, ORIN_SS_BAD_STREAM_PARAMETER_COUNT),
    ORIN_SLOT(63, reals, stream_parameters, ORIN_SS_BAD_STREAM_EPSILON),
    ORIN_SLOT(37, integers, robust_37, ORIN_SS_NO_SLOT_37),
    ORIN_SLOT(38, reals, robust_38, ORIN_SS_NO_SLOT_38),
    ORIN_SLOT(39, reals, robust_39, ORIN_SS_NO_SLOT_39),
    ORIN_SLOT(40, reals, robust_40, ORIN_SS_NO_SLOT_40),
    ORIN_SLOT(36, integers, robust_36, ORIN_SS_NO_STORAGE),
    ORIN_SLOT(41, integers, outlier_41, ORIN_SS_NO_SLOT_41),
    ORIN_SLOT(42, reals, outlier_42, ORIN_SS_NO_SLOT_42),
    ORIN_SLOT(43, reals, outlier_43, ORIN_SS_NO_SLOT_43),
    ORIN_SLOT(45, integers, partial_45, ORIN_SS_NO_SLOT_45),
    ORIN_SLOT(46, reals, partial_covariance, ORIN_SS_NO_SLOT_46),
    ORIN_SLOT(47, integers, partial_covariance_storage, ORIN_SS_NO_STORAGE),
    ORIN_SLOT(48, reals, partial_correlation, ORIN_SS_NO_SLOT_48),
    ORIN_SLOT(49, integers, partial_correlation_storage, ORIN_SS_NO_STORAGE),
    ORIN_SLOT(50, integers, missing_50, ORIN_SS_NO_SLOT_50),
    ORIN_SLOT(51, reals, missing_51, ORIN_SS_NO_SLOT_51),
    ORIN_SLOT(52, integers, missing_52, ORIN_SS_NO_SLOT_52),
    ORIN_SLOT(53, reals, missing_53, ORIN_SS_NO_SLOT_53),
    ORIN_SLOT(58, integers, missing_58, ORIN_SS_NO_SLOT_58),
    ORIN_SLOT(59, reals, missing_59, ORIN_SS_NO_SLOT_59),
    ORIN_SLOT(54, integers, missing_54, ORIN_SS_NO_SLOT_54),
    ORIN_SLOT(55, reals, missing_55, ORIN_SS_NO_SLOT_55),
    ORIN_SLOT(56, integers, missing_56, ORIN_SS_NO_SLOT_56),
    ORIN_SLOT(57, reals, missing_57, ORIN_SS_NO_SLOT_57),
};
#undef ORIN_SLOT

inline constexpr int slot_count = static_cast<int>(std::size(slots));

// The row of a parameter number, -1 when no slot has it.
constexpr int find_slot(std::int64_t parameter) {
  for (int i = 0; i < slot_count; ++i) {
    if (slots[i].parameter == parameter) return i;
  }
  return -1;
}

// The slot of a number known at compile time.
template <int parameter>
inline constexpr const Slot& slot_of = slots[find_slot(parameter)];

// --- Reading the record ----------------------------------------------------------------------------------------------

inline void* pointer_at(const SSTask& task, const Slot& slot) noexcept {
  void* pointer;
  std::memcpy(&pointer, reinterpret_cast<const char*>(&task) + slot.offset, sizeof pointer);
  return pointer;
}

inline void set_pointer(SSTask& task, const Slot& slot, const void* pointer) noexcept {
  std::memcpy(reinterpret_cast<char*>(&task) + slot.offset, &pointer, sizeof pointer);
}

// 0, or the slot's own status when it is null.
inline std::int32_t require(const SSTask& task, const Slot& slot) noexcept {
  return pointer_at(task, slot) == nullptr ? slot.null_status : std::int32_t{ORIN_SS_OK};
}

// Element `index` of an integer array in the task's width; the array may stand anywhere.
inline std::int64_t read_integer(const void* integers, bool wide, std::int64_t index = 0) noexcept {
  if (wide) {
    std::int64_t value;
    std::memcpy(&value, static_cast<const char*>(integers) + index * 8, sizeof value);
    return value;
  }
  std::int32_t value;
  std::memcpy(&value, static_cast<const char*>(integers) + index * 4, sizeof value);
  return value;
}

template <int parameter>
std::int64_t integer(const SSTask& task, std::int64_t index = 0) noexcept {
  static_assert(slot_of<parameter>.kind == Kind::integers);
  return read_integer(pointer_at(task, slot_of<parameter>), task.wide_integers != 0, index);
}

// The storage in an integer slot: 0, -4044 when the slot is null, -4003 when it holds anything else.
template <int parameter>
std::int32_t check_storage(const SSTask& task) noexcept {
  if (const std::int32_t status = require(task, slot_of<parameter>)) return status;
  const std::int64_t storage = integer<parameter>(task);
  return storage == ORIN_SS_VARIABLE_ROWS || storage == ORIN_SS_OBSERVATION_ROWS ? ORIN_SS_OK : ORIN_SS_BAD_STORAGE;
}

// --- Arrays of the task's precision, which may stand at any address --------------------------------------------------

template <class T>
T read(const T* place) noexcept {
  T value;
  std::memcpy(&value, place, sizeof value);
  return value;
}

// A caller's array: elements are read and written through memcpy, so that no alignment is assumed.
template <class T>
class Array {
 public:
  Array() = default;
  explicit Array(void* data) noexcept : data_(static_cast<char*>(data)) {}

  explicit operator bool() const noexcept { return data_ != nullptr; }
  T operator[](std::ptrdiff_t i) const noexcept { return read(at(i)); }
  void set(std::ptrdiff_t i, T value) const noexcept { std::memcpy(data_ + i * stride, &value, sizeof value); }
  // For vector loads, which assume no alignment either.
  const T* at(std::ptrdiff_t i) const noexcept { return reinterpret_cast<const T*>(data_ + i * stride); }

 private:
  static constexpr std::ptrdiff_t stride = sizeof(T);
  char* data_ = nullptr;
};

template <class T, int parameter>
Array<T> array(const SSTask& task) noexcept {
  static_assert(slot_of<parameter>.kind == Kind::reals);
  return Array<T>(pointer_at(task, slot_of<parameter>));
}

}  // namespace orin::summary_stats

#endif
