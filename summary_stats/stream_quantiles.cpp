// stream_quantiles: quantiles of observations that arrive block by block, one summary per variable.
// SPDX-License-Identifier: MIT
//
// The state hangs on the task: its address in stream_state, its release function in the release list.
#include <new>

#include "summary_stats/observations.h"
#include "summary_stats/quantile_rule.h"
#include "summary_stats/quantile_summary.h"
#include "summary_stats/task.h"

namespace orin::summary_stats {
namespace {

struct StreamState {
  double eps;
  std::ptrdiff_t p;
  QuantileSummary* summaries;  // p of them
};

void release(StreamState* state) noexcept {
  for (std::ptrdiff_t v = 0; v < state->p; ++v) state->summaries[v].~QuantileSummary();
  service::deallocate(state->summaries);
  service::deallocate(state);
}

// Puts the release function on the task's list, once.
bool register_release(SSTask& task) noexcept {
  for (std::int32_t i = 0; i < task.release_count; ++i) {
    if (task.release[i] == &__junSQuantilesFreeBuffers) return true;
  }
  if (task.release_count == ORIN_SS_MAX_RELEASE) return false;
  task.release[task.release_count++] = &__junSQuantilesFreeBuffers;
  return true;
}

StreamState* begin_stream(SSTask& task, double eps, std::ptrdiff_t p) noexcept {
  Work<StreamState> state;
  Work<unsigned char> summaries;
  const auto count = static_cast<std::size_t>(p);
  if (count > SIZE_MAX / sizeof(QuantileSummary) || !state.allocate(1) ||
      !summaries.allocate(count * sizeof(QuantileSummary)) || !register_release(task)) {
    return nullptr;
  }
  auto* const first = reinterpret_cast<QuantileSummary*>(summaries.release());
  for (std::size_t v = 0; v < count; ++v) new (first + v) QuantileSummary;
  StreamState* const made = new (state.release()) StreamState{eps, p, first};
  task.stream_state = made;
  return made;
}

template <class T>
std::int32_t check_parameters(const SSTask& task, double& eps) noexcept {
  if (task.stream_parameter_count == nullptr || integer<62>(task) != 1) return ORIN_SS_BAD_STREAM_PARAMETER_COUNT;
  if (const std::int32_t status = require(task, slot_of<63>)) return status;
  eps = array<T, 63>(task)[0];
  const auto* state = static_cast<const StreamState*>(task.stream_state);
  return eps > 0 && eps < 1 && (state == nullptr || state->eps == eps) ? std::int32_t{ORIN_SS_OK}
                                                                       : ORIN_SS_BAD_STREAM_EPSILON;
}

template <class T>
[[nodiscard]] bool take_in(const Observations<T>& data, StreamState& state) noexcept {
  Variables variables;
  if (!variables.select(data)) return false;
  bool good = true;
  for (std::ptrdiff_t k = 0; k < variables.count() && good; ++k) good = state.summaries[variables[k]].start(state.eps);
  for_each_variable_block(data, variables, [&](std::ptrdiff_t k, std::ptrdiff_t, const T* x, std::ptrdiff_t count) {
    good = good && state.summaries[variables[k]].take(x, count);
  });
  for (std::ptrdiff_t k = 0; k < variables.count() && good; ++k) good = state.summaries[variables[k]].flush();
  return good;
}

template <class T>
std::int32_t stream_quantiles(SSTask* task, std::uint64_t estimates) noexcept {
  if (task == nullptr) return ORIN_SS_NULL_TASK;
  if (const std::int32_t status = check_storage<4>(*task)) return status;
  double eps = 0;
  const bool wanted = (estimates & ORIN_SS_STREAM_QUANTILES) != 0;
  if (wanted) {
    if (const std::int32_t status = check_orders<T, 64, 65, 66>(*task)) return status;
    if (const std::int32_t status = check_parameters<T>(*task, eps)) return status;
  }
  Observations<T> data;
  if (const std::int32_t status = data.bind(*task)) return status;
  auto* state = static_cast<StreamState*>(task->stream_state);
  if (state != nullptr && state->p != data.p()) return ORIN_SS_BAD_DIMENSION;
  if (!wanted) return ORIN_SS_OK;

  if (state == nullptr) state = begin_stream(*task, eps, data.p());
  if (state == nullptr) return ORIN_SS_NO_MEMORY;
  if (!take_in(data, *state)) {
    __junSQuantilesFreeBuffers(task);
    return ORIN_SS_NO_MEMORY;
  }
  const auto count = static_cast<std::ptrdiff_t>(integer<64>(*task));
  const auto orders = array<T, 65>(*task), results = array<T, 66>(*task);
  for (std::ptrdiff_t v = 0; v < data.p(); ++v) {
    if (!data.takes_part(v)) continue;
    for (std::ptrdiff_t k = 0; k < count; ++k) {
      results.set(v * count + k, static_cast<T>(state->summaries[v].quantile(orders[k])));
    }
  }
  return ORIN_SS_OK;
}

}  // namespace
}  // namespace orin::summary_stats

using namespace orin::summary_stats;

ORIN_API int32_t ORIN_CALL _jundSSStreamQuantiles(SSTask* task, uint64_t estimates, int32_t) {
  return stream_quantiles<double>(task, estimates);
}

ORIN_API int32_t ORIN_CALL _junsSSStreamQuantiles(SSTask* task, uint64_t estimates, int32_t) {
  return stream_quantiles<float>(task, estimates);
}

ORIN_API int32_t ORIN_CALL __junSQuantilesFreeBuffers(SSTask* task) {
  if (task == nullptr) return ORIN_SS_NULL_TASK;
  if (task->stream_state != nullptr) release(static_cast<StreamState*>(task->stream_state));
  task->stream_state = nullptr;
  return ORIN_SS_OK;
}
