// task: the summary-statistics record: creation, editors, deletion.
// SPDX-License-Identifier: MIT
//
// Everything that depends on a slot comes from the table in task.h: an editor is a list of parameter numbers.
#include "summary_stats/task.h"

#include <initializer_list>
#include <new>

namespace orin::summary_stats {
namespace {

// The table follows the record: pointer after pointer from p on, every number from 1 to 66 once.
consteval bool table_covers_record() {
  for (int i = 0; i < slot_count; ++i) {
    if (slots[i].offset != offsetof(SSTask, p) + static_cast<std::size_t>(i) * sizeof(void*)) return false;
    if (find_slot(i + 1) < 0) return false;
  }
  return offsetof(SSTask, release_count) == offsetof(SSTask, p) + sizeof(void*) * static_cast<std::size_t>(slot_count);
}
static_assert(slot_count == 66 && table_covers_record());
static_assert(offsetof(SSTask, tag) == 4 && offsetof(SSTask, double_precision) == 8);
static_assert(sizeof(void*) != 4 || (offsetof(SSTask, p) == 12 && offsetof(SSTask, release_count) == 276 &&
                                     offsetof(SSTask, release) == 280 && sizeof(SSTask) == 300));

std::int32_t create(SSTask** place, bool double_precision, const void* p, const void* n, const void* x_storage,
                    const void* x, const void* weights, const void* subset, std::int32_t wide_integers) noexcept {
  if (place == nullptr) return ORIN_SS_NULL_TASK;
  SSTask fields{};
  fields.wide_integers = wide_integers;
  fields.tag = 2;
  fields.double_precision = double_precision ? 1 : 0;
  fields.p = p;
  fields.n = n;
  fields.x_storage = x_storage;
  fields.x = x;
  fields.weights = weights;
  fields.subset = subset;

  if (p == nullptr || integer<1>(fields) <= 0) return ORIN_SS_BAD_DIMENSION;
  if (x != nullptr) {
    if (const std::int32_t status = check_storage<4>(fields)) return status;
    if (n == nullptr || integer<2>(fields) <= 0) return ORIN_SS_BAD_OBSERVATION_COUNT;
  }
  void* block = service::allocate(sizeof(SSTask), alignment);
  if (block == nullptr) return ORIN_SS_NO_MEMORY;
  *place = new (block) SSTask(fields);
  return ORIN_SS_OK;
}

std::int32_t edit(SSTask* task, Kind kind, std::int64_t parameter, const void* pointer) noexcept {
  if (task == nullptr) return ORIN_SS_NULL_TASK;
  const int row = find_slot(parameter);
  if (row < 0 || slots[row].kind != kind) return ORIN_SS_BAD_PARAMETER;
  if (pointer == nullptr) return slots[row].null_status;
  set_pointer(*task, slots[row], pointer);
  return ORIN_SS_OK;
}

struct Edit {
  int parameter;
  const void* pointer;
};

std::int32_t edit_group(SSTask* task, std::initializer_list<Edit> edits) noexcept {
  if (task == nullptr) return ORIN_SS_NULL_TASK;
  for (const Edit& edit : edits) {
    if (edit.pointer != nullptr) set_pointer(*task, slots[find_slot(edit.parameter)], edit.pointer);
  }
  return ORIN_SS_OK;
}

}  // namespace
}  // namespace orin::summary_stats

using namespace orin::summary_stats;

ORIN_API int32_t ORIN_CALL __jundSSNewTask(SSTask** task, const void* p, const void* n, const void* x_storage,
                                           const void* x, const void* weights, const void* subset,
                                           int32_t wide_integers) {
  return create(task, true, p, n, x_storage, x, weights, subset, wide_integers);
}

ORIN_API int32_t ORIN_CALL __junsSSNewTask(SSTask** task, const void* p, const void* n, const void* x_storage,
                                           const void* x, const void* weights, const void* subset,
                                           int32_t wide_integers) {
  return create(task, false, p, n, x_storage, x, weights, subset, wide_integers);
}

ORIN_API int32_t ORIN_CALL __junSSDeleteTask(SSTask** task) {
  if (task == nullptr || *task == nullptr) return ORIN_SS_NULL_TASK;
  for (int32_t i = 0; i < (*task)->release_count; ++i) (*task)->release[i](*task);
  orin::service::deallocate(*task);
  *task = nullptr;
  return ORIN_SS_OK;
}

ORIN_API int32_t ORIN_CALL __jundSSEditTask(SSTask* task, int64_t parameter, const void* array) {
  return edit(task, Kind::reals, parameter, array);
}

ORIN_API int32_t ORIN_CALL __juniSSEditTask(SSTask* task, int64_t parameter, const void* integers) {
  return edit(task, Kind::integers, parameter, integers);
}

// Editors store pointers only, so that one function serves both precisions: the s name is another name of the d body.
#if defined(__clang__)
#define ORIN_ALIAS(name) __attribute__((alias(#name)))
#else
#define ORIN_ALIAS(name) __attribute__((alias(#name), nothrow))
#endif
#define ORIN_SAME_FUNCTION(s_name, d_name, parameters) ORIN_API int32_t ORIN_CALL s_name parameters ORIN_ALIAS(d_name)

#define ORIN_GROUP_EDITOR(group, parameters, ...)                                                       \
  ORIN_API int32_t ORIN_CALL __jundSSEdit##group parameters { return edit_group(task, {__VA_ARGS__}); } \
  ORIN_SAME_FUNCTION(__junsSSEdit##group, __jundSSEdit##group, parameters)

ORIN_SAME_FUNCTION(__junsSSEditTask, __jundSSEditTask, (SSTask * task, int64_t parameter, const void* array));

ORIN_GROUP_EDITOR(Moments,
                  (SSTask * task, void* mean, void* raw2, void* raw3, void* raw4, void* central2, void* central3,
                   void* central4),
                  {7, mean}, {8, raw2}, {9, raw3}, {10, raw4}, {11, central2}, {12, central3}, {13, central4});

ORIN_GROUP_EDITOR(CovCor,
                  (SSTask * task, void* mean, void* covariance, const void* covariance_storage, void* correlation,
                   const void* correlation_storage),
                  {7, mean}, {19, covariance}, {20, covariance_storage}, {21, correlation}, {22, correlation_storage});

ORIN_GROUP_EDITOR(Quantiles,
                  (SSTask * task, const void* count, const void* orders, void* quantiles, void* order_statistics,
                   const void* order_statistics_storage),
                  {24, count}, {25, orders}, {26, quantiles}, {27, order_statistics}, {44, order_statistics_storage});

ORIN_GROUP_EDITOR(StreamQuantiles,
                  (SSTask * task, const void* count, const void* orders, void* quantiles, const void* parameter_count,
                   const void* parameters),
                  {64, count}, {65, orders}, {66, quantiles}, {62, parameter_count}, {63, parameters});

ORIN_GROUP_EDITOR(OutDetect, (SSTask * task, const void* slot41, void* slot42, void* slot43),  //
                  {41, slot41}, {42, slot42}, {43, slot43});

ORIN_GROUP_EDITOR(PooledCovariance,
                  (SSTask * task, const void* slot28, void* slot30, void* slot31, const void* slot32, void* slot33,
                   void* slot35),
                  {28, slot28}, {30, slot30}, {31, slot31}, {32, slot32}, {33, slot33}, {35, slot35});

ORIN_GROUP_EDITOR(PartialCovCor,
                  (SSTask * task, const void* slot45, void* covariance, const void* covariance_storage,
                   void* correlation, const void* correlation_storage, void* partial_covariance,
                   const void* partial_covariance_storage, void* partial_correlation,
                   const void* partial_correlation_storage),
                  {45, slot45}, {19, covariance}, {20, covariance_storage}, {21, correlation},
                  {22, correlation_storage}, {46, partial_covariance}, {47, partial_covariance_storage},
                  {48, partial_correlation}, {49, partial_correlation_storage});

ORIN_GROUP_EDITOR(MissingVals,
                  (SSTask * task, const void* slot50, void* slot51, const void* slot52, void* slot53,
                   const void* slot58, void* slot59, const void* slot54, void* slot55, const void* slot56,
                   void* slot57),
                  {50, slot50}, {51, slot51}, {52, slot52}, {53, slot53}, {58, slot58}, {59, slot59}, {54, slot54},
                  {55, slot55}, {56, slot56}, {57, slot57});

ORIN_GROUP_EDITOR(RCov,
                  (SSTask * task, const void* slot36, const void* slot37, void* slot38, void* slot39, void* slot40),
                  {36, slot36}, {37, slot37}, {38, slot38}, {39, slot39}, {40, slot40});

ORIN_GROUP_EDITOR(MtxParametrz,
                  (SSTask * task, void* correlation, const void* correlation_storage, void* parametrized,
                   const void* parametrized_storage),
                  {21, correlation}, {22, correlation_storage}, {60, parametrized}, {61, parametrized_storage});
