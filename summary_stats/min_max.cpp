// min_max: minimum and maximum of every variable.
// SPDX-License-Identifier: MIT
//
// Method    one pass for both, in vectors of independent partial results. A vector minimum keeps its second operand
//           where the first is NaN, so that NaN observations are passed over. Values that stand together are one run,
//           asked for some lines ahead.
// Special   all NaN gives NaN; of zeros of both signs the first one observed, whatever its lane was.
// Bounds    the memory: one load per vector, 2 operations; six (64-bit: eight) partial results hide their latency.
#include <limits>

#include "simd/prefetch.h"
#include "simd/vec.h"
#include "summary_stats/observations.h"
#include "summary_stats/task.h"

namespace orin::summary_stats {
namespace {

// Eight registers on the 32-bit target hold two times three partial results; the values do not depend on the number.
constexpr int partials = sizeof(void*) == 4 ? 3 : 4;

template <class T>
struct Extremes {
  T low = std::numeric_limits<T>::infinity();
  T high = -std::numeric_limits<T>::infinity();

  void take_low(T x) noexcept { low = x < low ? x : low; }
  void take_high(T x) noexcept { high = x > high ? x : high; }

  void take(const T* x, std::ptrdiff_t count) noexcept {
    using V = simd::Register<T>;
    constexpr std::ptrdiff_t lanes = V::lanes, group = partials * lanes;
    std::ptrdiff_t i = 0;
    if (count >= group) {
      V lows[partials], highs[partials];
      for (int k = 0; k < partials; ++k) {
        lows[k] = low;
        highs[k] = high;
      }
      for (; i + group <= count; i += group) {
        simd::prefetch<4096, 1>(x + i);
#pragma GCC unroll 4
        for (int k = 0; k < partials; ++k) {
          const V v = V::load(x + i + k * lanes);
          lows[k] = min(v, lows[k]);
          highs[k] = max(v, highs[k]);
        }
      }
      T ends[lanes];
      for (int k = 0; k < partials; ++k) {
        lows[k].store(ends);
        for (const T end : ends) take_low(end);
        highs[k].store(ends);
        for (const T end : ends) take_high(end);
      }
    }
    for (; i < count; ++i) {
      take_low(read(x + i));
      take_high(read(x + i));
    }
  }
};

// What the vectors cannot tell: the sign of a zero, and whether an untouched start value stands for NaN alone.
template <class T>
T settle(T extreme, T start, const Observations<T>& data, std::ptrdiff_t variable) noexcept {
  if (extreme != 0 && extreme != start) return extreme;
  for (std::ptrdiff_t i = 0; i < data.n(); ++i) {
    const T x = data.at(variable, i);
    if (x == extreme) return x;
  }
  return std::numeric_limits<T>::quiet_NaN();
}

template <class T>
std::int32_t min_max(const SSTask* task, std::uint64_t estimates, std::int32_t method) noexcept {
  if (task == nullptr) return ORIN_SS_NULL_TASK;
  if ((method & 3) == 0) return ORIN_SS_BAD_METHOD;
  const bool with_minimum = (estimates & ORIN_SS_MINIMUM) != 0, with_maximum = (estimates & ORIN_SS_MAXIMUM) != 0;
  if (with_minimum && task->minimum == nullptr) return slot_of<16>.null_status;
  if (with_maximum && task->maximum == nullptr) return slot_of<17>.null_status;
  if (const std::int32_t status = check_storage<4>(*task)) return status;
  Observations<T> data;
  if (const std::int32_t status = data.bind(*task)) return status;
  if (!with_minimum && !with_maximum) return ORIN_SS_OK;

  Variables variables;
  Work<Extremes<T>> extremes;
  if (!variables.select(data)) return ORIN_SS_NO_MEMORY;
  if (variables.count() == 0) return ORIN_SS_OK;
  if (!extremes.allocate(static_cast<std::size_t>(variables.count()))) return ORIN_SS_NO_MEMORY;
  Extremes<T>* const begin = extremes.data();
  std::fill(begin, begin + variables.count(), Extremes<T>{});
  if (data.by_observation()) {
    for_each_variable_block(data, variables, [&](std::ptrdiff_t k, std::ptrdiff_t, const T* x, std::ptrdiff_t count) {
      begin[k].take(x, count);
    });
  } else {
    for (std::ptrdiff_t k = 0; k < variables.count(); ++k) begin[k].take(data.row(variables[k]), data.n());
  }

  const auto minimum = array<T, 16>(*task), maximum = array<T, 17>(*task);
  for (std::ptrdiff_t k = 0; k < variables.count(); ++k) {
    const std::ptrdiff_t v = variables[k];
    if (with_minimum) minimum.set(v, settle(begin[k].low, Extremes<T>{}.low, data, v));
    if (with_maximum) maximum.set(v, settle(begin[k].high, Extremes<T>{}.high, data, v));
  }
  return ORIN_SS_OK;
}

}  // namespace
}  // namespace orin::summary_stats

ORIN_API int32_t ORIN_CALL _jundSSMinmax(SSTask* task, uint64_t estimates, int32_t method) {
  return orin::summary_stats::min_max<double>(task, estimates, method);
}

ORIN_API int32_t ORIN_CALL _junsSSMinmax(SSTask* task, uint64_t estimates, int32_t method) {
  return orin::summary_stats::min_max<float>(task, estimates, method);
}
