// task.cpp: creation, editing, copying and deletion of task records.
// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "orin/conv.h"
#include "service/late_binding.h"

namespace {

#if defined(_WIN32) && !defined(_WIN64)
static_assert(offsetof(ConvTask, status) == 0 && offsetof(ConvTask, extra) == 16 && offsetof(ConvTask, start) == 20);
static_assert(offsetof(ConvTask, value_class) == 28 && offsetof(ConvTask, dims) == 40);
static_assert(offsetof(ConvTask, xshape) == 44 && offsetof(ConvTask, fixed_x) == 60);
static_assert(offsetof(ConvTask, start_values) == 64 && offsetof(ConvTask, fixed_xstride_values) == 204);
static_assert(offsetof(ConvTask, committed) == 232 && offsetof(ConvTask, copy_hook) == 244);
static_assert(sizeof(ConvTask) == 248);
#endif

// Edit parameters end here; those without an effect of their own are settled at creation.
constexpr std::int32_t last_parameter = 19;

// Entries of a list of one per dimension; a record has room for seven.
std::size_t entries(const ConvTask& task) {
  return static_cast<std::size_t>(std::clamp<std::int32_t>(task.dims, 0, ORIN_CONV_MAX_DIMS));
}

// Keeps a list in the record: `values` or null.
std::int32_t* keep(const ConvTask& task, std::int32_t* values, const std::int32_t* list) {
  if (list == nullptr) return nullptr;
  std::copy_n(list, entries(task), values);
  return values;
}

ConvTask* allocate_record() {
  void* block = orin::service::allocate(sizeof(ConvTask), 64);
  return block == nullptr ? nullptr : static_cast<ConvTask*>(std::memset(block, 0, sizeof(ConvTask)));
}

std::int32_t edit(ConvTask& task, std::int32_t parameter, const std::int32_t* value) {
  if (value == nullptr) return ORIN_CONV_NULL_POINTER;
  switch (parameter) {
    case ORIN_CONV_EDIT_MODE:
      task.mode = *value;
      return ORIN_CONV_OK;
    case ORIN_CONV_EDIT_EXTRA:
      task.extra = *value;
      return ORIN_CONV_OK;
    case ORIN_CONV_EDIT_START:
      task.start = keep(task, task.start_values, value);
      return ORIN_CONV_OK;
    case ORIN_CONV_EDIT_DECIMATION:
      task.decimation = keep(task, task.decimation_values, value);
      return ORIN_CONV_OK;
    case ORIN_CONV_EDIT_INTERNAL_PRECISION:
      task.internal_precision = *value;
      return ORIN_CONV_OK;
    default:
      return parameter >= 1 && parameter <= last_parameter ? ORIN_CONV_FIXED_PARAMETER : ORIN_CONV_BAD_EDIT;
  }
}

}  // namespace

ORIN_API std::int32_t ORIN_CALL __junNewTaskX(ConvTask** task, std::int32_t kind, std::int32_t job, std::int32_t mode,
                                              std::int32_t value_class, std::int32_t precision, std::int32_t dims,
                                              const std::int32_t* xshape, const std::int32_t* yshape,
                                              const std::int32_t* zshape, const void* x, const std::int32_t* xstride) {
  if (task == nullptr) return ORIN_CONV_NULL_POINTER;
  ConvTask* record = allocate_record();
  if (record == nullptr) return ORIN_CONV_NO_TASK_MEMORY;
  record->kind = kind;
  record->job = job;
  record->mode = mode;
  record->value_class = value_class;
  record->precision = record->internal_precision = precision;
  record->dims = dims;
  record->xshape = keep(*record, record->xshape_values, xshape);
  record->yshape = keep(*record, record->yshape_values, yshape);
  record->zshape = keep(*record, record->zshape_values, zshape);
  record->fixed_xstride = keep(*record, record->fixed_xstride_values, xstride);
  record->fixed_x = x;
  *task = record;
  return ORIN_CONV_OK;
}

ORIN_API std::int32_t ORIN_CALL __junNewTask(ConvTask** task, std::int32_t kind, std::int32_t job, std::int32_t mode,
                                             std::int32_t value_class, std::int32_t precision, std::int32_t dims,
                                             const std::int32_t* xshape, const std::int32_t* yshape,
                                             const std::int32_t* zshape) {
  return __junNewTaskX(task, kind, job, mode, value_class, precision, dims, xshape, yshape, zshape, nullptr, nullptr);
}

ORIN_API std::int32_t ORIN_CALL __junEditTask(ConvTask* task, std::int32_t parameter, const std::int32_t* value) {
  if (task == nullptr) return ORIN_CONV_NULL_POINTER;
  if (task->status != ORIN_CONV_OK) return task->status;
  task->committed = 0;
  return task->status = edit(*task, parameter, value);
}

ORIN_API std::int32_t ORIN_CALL __junCommitTask(ConvTask* task) {
  if (task == nullptr) return ORIN_CONV_NULL_POINTER;
  if (task->status == ORIN_CONV_OK) task->committed = 1;
  return task->status;
}

ORIN_API std::int32_t ORIN_CALL __junCopyTask(ConvTask** copy, const ConvTask* source) {
  if (copy == nullptr || source == nullptr) return ORIN_CONV_NULL_POINTER;
  if (source->status != ORIN_CONV_OK) return source->status;
  ConvTask* record = allocate_record();
  if (record == nullptr) return ORIN_CONV_NO_TASK_MEMORY;
  *record = *source;
  const auto own = [](std::int32_t*& list, std::int32_t* values) {
    if (list != nullptr) list = values;
  };
  own(record->start, record->start_values);
  own(record->decimation, record->decimation_values);
  own(record->xshape, record->xshape_values);
  own(record->yshape, record->yshape_values);
  own(record->zshape, record->zshape_values);
  own(record->fixed_xstride, record->fixed_xstride_values);
  if (source->attached != nullptr) {
    if (source->copy_hook == nullptr || source->copy_hook(record, &record->attached, source->attached) != 0) {
      orin::service::deallocate(record);
      return ORIN_CONV_COPY_FAILED;
    }
  }
  *copy = record;
  return ORIN_CONV_OK;
}

ORIN_API std::int32_t ORIN_CALL __junDeleteTask(ConvTask** task) {
  if (task == nullptr) return ORIN_CONV_NULL_POINTER;
  ConvTask* record = *task;
  if (record == nullptr) return ORIN_CONV_OK;
  bool released = true;
  if (void* const attached = record->attached; attached != nullptr) {
    released = record->release_hook != nullptr && record->release_hook(record, attached) == 0;
    orin::service::deallocate(attached);  // also when the hook has changed the record
  }
  orin::service::deallocate(record);
  *task = nullptr;
  return released ? ORIN_CONV_OK : ORIN_CONV_RELEASE_FAILED;
}

ORIN_API std::int32_t ORIN_CALL __junccSetStatus(ConvTask* task, std::int32_t status) {
  if (task == nullptr) return ORIN_CONV_NULL_POINTER;
  const std::int32_t previous = task->status;
  task->status = status;
  return previous;
}

ORIN_API std::int32_t ORIN_CALL __junccGetStatus(const ConvTask* task) {
  return task == nullptr ? static_cast<std::int32_t>(ORIN_CONV_NULL_POINTER) : task->status;
}
