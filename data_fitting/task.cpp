// task: creation, editing and deletion of the data-fitting task.
// SPDX-License-Identifier: MIT
#include "data_fitting/task.h"

#include <cstring>
#include <initializer_list>

#include "service/late_binding.h"

namespace orin::data_fitting {
namespace {

#if defined(_WIN32) && !defined(_WIN64)
static_assert(sizeof(void*) == 4 && alignof(DfTask1D) == 8 && sizeof(DfTask1D) == 120);
static_assert(offsetof(DfTask1D, caller_word) == 0 && offsetof(DfTask1D, kind_tag) == 4);
static_assert(offsetof(DfTask1D, precision_tag) == 8 && offsetof(DfTask1D, editable) == 12);
static_assert(offsetof(DfTask1D, nx) == 16 && offsetof(DfTask1D, x) == 24 && offsetof(DfTask1D, xhint) == 32);
static_assert(offsetof(DfTask1D, ny) == 40 && offsetof(DfTask1D, y) == 48 && offsetof(DfTask1D, yhint) == 56);
static_assert(offsetof(DfTask1D, s_order) == 64 && offsetof(DfTask1D, s_type) == 72);
static_assert(offsetof(DfTask1D, ic_type) == 80 && offsetof(DfTask1D, ic) == 88);
static_assert(offsetof(DfTask1D, bc_type) == 96 && offsetof(DfTask1D, bc) == 104);
static_assert(offsetof(DfTask1D, scoeff) == 108 && offsetof(DfTask1D, scoeffhint) == 112);
#endif

constexpr int8_t data_fitting_kind = 4;

constexpr bool one_of(int64_t value, std::initializer_list<int64_t> accepted) {
  for (const int64_t candidate : accepted) {
    if (value == candidate) return true;
  }
  return false;
}

constexpr bool partition_hint(int64_t value) { return one_of(value, {0, 4, 1, 2}); }
constexpr bool storage_hint(int64_t value) { return one_of(value, {0, 16, 32, 128}); }

// A table of pointers, not cleared; room for one entry at least, so that null means failure alone.
template <class Pointer>
Pointer* allocate_table(int64_t entries) {
  if (entries < 1) entries = 1;
  if (entries > static_cast<int64_t>(UINT32_MAX / sizeof(Pointer))) return nullptr;
  return static_cast<Pointer*>(service::allocate(static_cast<std::size_t>(entries) * sizeof(Pointer), alignment));
}

// Addresses as integers: those of an absurd stride wrap, and are never read.
template <class T>
void fill_by_stride(const void** table, int64_t ny, const T* base, int64_t stride) {
  const std::uintptr_t step = static_cast<std::uintptr_t>(stride) * sizeof(T);
  std::uintptr_t address = reinterpret_cast<std::uintptr_t>(base);
  for (int64_t i = 0; i < ny; ++i, address += step) table[i] = reinterpret_cast<const void*>(address);
}

template <class T>
int32_t rebuild_values(DfTask1D& task, const T* y, int64_t ny, int64_t yhint) {
  service::deallocate(task.y);
  task.y = allocate_table<const void*>(by_point(yhint) ? 1 : ny);
  if (task.y == nullptr) return ORIN_DF_NO_MEMORY;
  if (by_point(yhint) || (yhint == ORIN_DF_SEPARATE && ny > 0)) {
    task.y[0] = y;
  } else if (yhint == 0 || yhint == ORIN_DF_BY_FUNCTION) {
    fill_by_stride(task.y, ny, y, task.nx);
  }
  return ORIN_DF_OK;
}

template <class T>
int32_t rebuild_coefficients(DfTask1D& task, const T* scoeff, int64_t hint) {
  if (task.ny == 0) return ORIN_DF_BAD_NY;
  service::deallocate(task.scoeff);
  task.scoeff = allocate_table<void*>(task.ny);
  if (task.scoeff == nullptr) return ORIN_DF_NO_MEMORY;
  if ((hint & ORIN_DF_SEPARATE) == 0) {
    fill_by_stride(const_cast<const void**>(task.scoeff), task.ny, scoeff,
                   coefficient_stride(task.s_order, task.s_type, task.nx));
  } else if (task.ny > 0) {
    task.scoeff[0] = const_cast<T*>(scoeff);
  }
  return ORIN_DF_OK;
}

template <class T>
int32_t new_task(DfTask1D** task_out, int64_t nx, const T* x, int64_t xhint, int64_t ny, const T* y, int64_t yhint,
                 int32_t caller_word) {
  if (nx < 2) return ORIN_DF_BAD_NX;
  if (x == nullptr) return ORIN_DF_BAD_X;
  if (!partition_hint(xhint)) return ORIN_DF_BAD_XHINT;
  if (ny == 0 && y != nullptr) return ORIN_DF_BAD_NY;
  if (ny != 0 && y == nullptr) return ORIN_DF_BAD_Y;
  if (!storage_hint(yhint)) return ORIN_DF_BAD_YHINT;
  if (task_out == nullptr) return ORIN_DF_NULL_TASK;

  auto* task = static_cast<DfTask1D*>(service::allocate(sizeof(DfTask1D), alignment));
  *task_out = task;
  if (task == nullptr) return ORIN_DF_NO_MEMORY;
  std::memset(task, 0, sizeof(DfTask1D));
  task->nx = nx;
  task->x = x;
  task->xhint = xhint;
  if (y != nullptr) {
    if (const int32_t status = rebuild_values(*task, y, ny, yhint); status != ORIN_DF_OK) return status;
  }
  task->yhint = yhint;
  task->ny = ny;
  task->caller_word = caller_word;
  task->kind_tag = data_fitting_kind;
  task->precision_tag = sizeof(T) == sizeof(double);
  task->editable = 1;
  return ORIN_DF_OK;
}

template <class T>
int32_t edit_spline(DfTask1D* task, int64_t s_order, int64_t s_type, int64_t bc_type, const T* bc, int64_t ic_type,
                    const T* ic, T* scoeff, int64_t scoeffhint) {
  if (task == nullptr) return ORIN_DF_NULL_TASK;
  if (s_order < 0) return ORIN_DF_BAD_ORDER;
  if (s_type < 0) return ORIN_DF_BAD_TYPE;
  task->s_order = s_order;
  task->s_type = s_type;
  if (!one_of(bc_type, {0, 1, 2}) && bc == nullptr) return ORIN_DF_BAD_BC;
  task->bc_type = bc_type;
  task->bc = bc;
  if (ic_type == 0 && ic != nullptr) return ORIN_DF_BAD_IC_TYPE;
  if (ic_type != 0 && ic == nullptr) return ORIN_DF_BAD_IC;
  task->ic_type = ic_type;
  task->ic = ic;
  if (scoeff != nullptr) {
    if (const int32_t status = rebuild_coefficients(*task, scoeff, scoeffhint); status != ORIN_DF_OK) return status;
  }
  task->scoeffhint = scoeffhint;
  return ORIN_DF_OK;
}

template <class T>
int32_t edit_pointer(DfTask1D* task, int64_t id, const T* pointer) {
  if (task == nullptr) return ORIN_DF_NULL_TASK;
  if (task->editable != 1) return ORIN_DF_OK;
  const auto store = [pointer](const void*& field, int32_t status_of_null) {
    if (pointer == nullptr) return status_of_null;
    field = pointer;
    return int32_t{ORIN_DF_OK};
  };
  switch (id) {
    case ORIN_DF_X:
      return store(task->x, ORIN_DF_BAD_X);
    case ORIN_DF_IC:
      return store(task->ic, ORIN_DF_BAD_IC);
    case ORIN_DF_BC:
      return store(task->bc, ORIN_DF_BAD_BC);
    case ORIN_DF_Y:
      return pointer == nullptr ? ORIN_DF_BAD_Y : rebuild_values(*task, pointer, task->ny, task->yhint);
    case ORIN_DF_SCOEFF:
      return pointer == nullptr ? ORIN_DF_BAD_SCOEFF : rebuild_coefficients(*task, pointer, task->scoeffhint);
    default:
      return ORIN_DF_BAD_ATTRIBUTE;
  }
}

// A negative index is let through: the caller answers for it, and for the table being there.
int32_t edit_indexed_pointer(DfTask1D* task, int64_t id, int64_t idx, const void* pointer) {
  if (task == nullptr) return ORIN_DF_NULL_TASK;
  if (task->editable != 1) return ORIN_DF_OK;
  if (id != ORIN_DF_Y && id != ORIN_DF_SCOEFF) return ORIN_DF_BAD_ATTRIBUTE;
  if (idx >= task->ny) return ORIN_DF_BAD_INDEX;
  if (pointer == nullptr) return id == ORIN_DF_Y ? ORIN_DF_BAD_Y : ORIN_DF_BAD_SCOEFF;
  const auto entry = static_cast<Index>(idx);
  if (id == ORIN_DF_Y) {
    task->y[entry] = pointer;
  } else {
    task->scoeff[entry] = const_cast<void*>(pointer);
  }
  return ORIN_DF_OK;
}

struct IntegerAttribute {
  int64_t DfTask1D::*field;
  bool (*accepts)(int64_t value);
  int32_t refused;
};

// In the order of the ids, from ORIN_DF_NX on.
constexpr IntegerAttribute integer_attributes[] = {
    {&DfTask1D::nx, [](int64_t v) { return v >= 2; }, ORIN_DF_BAD_NX},
    {&DfTask1D::xhint, partition_hint, ORIN_DF_BAD_XHINT},
    {&DfTask1D::ny, [](int64_t v) { return v > 0; }, ORIN_DF_BAD_NY},
    {&DfTask1D::yhint, storage_hint, ORIN_DF_BAD_YHINT},
    {&DfTask1D::s_order, [](int64_t v) { return v >= 0; }, ORIN_DF_BAD_ORDER},
    {&DfTask1D::s_type, [](int64_t v) { return v >= 0 && v <= 5; }, ORIN_DF_BAD_TYPE},
    {&DfTask1D::ic_type, [](int64_t v) { return (v >= 0 && v <= 2) || (v & 8) != 0; }, ORIN_DF_BAD_IC_TYPE},
    {&DfTask1D::bc_type, [](int64_t v) { return v >= 0; }, ORIN_DF_BAD_BC_TYPE},
    {&DfTask1D::scoeffhint, storage_hint, ORIN_DF_BAD_SCOEFFHINT},
};

int32_t edit_value(DfTask1D* task, int64_t id, int64_t value) {
  if (task == nullptr) return ORIN_DF_NULL_TASK;
  if (task->editable != 1) return ORIN_DF_OK;
  if (id < ORIN_DF_NX || id > ORIN_DF_SCOEFFHINT) return ORIN_DF_BAD_ATTRIBUTE;
  const IntegerAttribute& attribute = integer_attributes[id - ORIN_DF_NX];
  if (!attribute.accepts(value)) return attribute.refused;
  task->*attribute.field = value;
  return ORIN_DF_OK;
}

int32_t delete_task(DfTask1D** task) {
  if (task == nullptr || *task == nullptr) return ORIN_DF_NULL_TASK;
  service::deallocate((*task)->y);
  service::deallocate((*task)->scoeff);
  service::deallocate(*task);
  *task = nullptr;
  return ORIN_DF_OK;
}

}  // namespace
}  // namespace orin::data_fitting

using namespace orin::data_fitting;

extern "C" {

ORIN_API int32_t ORIN_CALL orin_df_kernel_dNewTask1D(DfTask1D** task_out, int64_t nx, const double* x, int64_t xhint,
                                                     int64_t ny, const double* y, int64_t yhint, int32_t caller_word) {
  return new_task(task_out, nx, x, xhint, ny, y, yhint, caller_word);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sNewTask1D(DfTask1D** task_out, int64_t nx, const float* x, int64_t xhint,
                                                     int64_t ny, const float* y, int64_t yhint, int32_t caller_word) {
  return new_task(task_out, nx, x, xhint, ny, y, yhint, caller_word);
}

ORIN_API int32_t ORIN_CALL orin_df_kernel_dEditPPSpline1D(DfTask1D* task, int64_t s_order, int64_t s_type,
                                                          int64_t bc_type, const double* bc, int64_t ic_type,
                                                          const double* ic, double* scoeff, int64_t scoeffhint) {
  return edit_spline(task, s_order, s_type, bc_type, bc, ic_type, ic, scoeff, scoeffhint);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sEditPPSpline1D(DfTask1D* task, int64_t s_order, int64_t s_type,
                                                          int64_t bc_type, const float* bc, int64_t ic_type,
                                                          const float* ic, float* scoeff, int64_t scoeffhint) {
  return edit_spline(task, s_order, s_type, bc_type, bc, ic_type, ic, scoeff, scoeffhint);
}

ORIN_API int32_t ORIN_CALL orin_df_kernel_dEditPtr(DfTask1D* task, int64_t id, const double* pointer) {
  return edit_pointer(task, id, pointer);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sEditPtr(DfTask1D* task, int64_t id, const float* pointer) {
  return edit_pointer(task, id, pointer);
}

ORIN_API int32_t ORIN_CALL orin_df_kernel_dEditIdxPtr(DfTask1D* task, int64_t id, int64_t idx, const double* pointer) {
  return edit_indexed_pointer(task, id, idx, pointer);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sEditIdxPtr(DfTask1D* task, int64_t id, int64_t idx, const float* pointer) {
  return edit_indexed_pointer(task, id, idx, pointer);
}

ORIN_API int32_t ORIN_CALL orin_df_kernel_iEditVal(DfTask1D* task, int64_t id, int64_t value) {
  return edit_value(task, id, value);
}

ORIN_API int32_t ORIN_CALL orin_df_kernel_DeleteTask(DfTask1D** task) { return delete_task(task); }
}
