// search_entries: the dispatcher, which picks a method from hints, and the methods as entries of their own.
// SPDX-License-Identifier: MIT
#include "data_fitting/search.h"

namespace orin::data_fitting {
namespace {

// --- Dispatcher ------------------------------------------------------------------------------------------------------

template <class T>
using Callback = int32_t(ORIN_CALL*)(int64_t n, const int64_t* user, const T* site, void* cell, void* parameters);

template <class T>
int32_t call_user(int64_t nsite, const T* site, Callback<T> search, void* parameters, void* cell) {
  if (nsite < 1) return ORIN_DF_OK;
  const int32_t result = search(nsite, nullptr, site, cell, parameters);
  return result < 0 ? result : ORIN_DF_OK;
}

template <class T, class Cell>
struct Request {
  Index nx;
  const T* x;
  Index nsite;
  const T* site;
  const T* data_hint;
  Cell* cell;
  Callback<T> search;
  void* parameters;
};

template <class T, class Cell>
using Method = int32_t (*)(const Request<T, Cell>&);

template <class T, class Cell>
constexpr Method<T, Cell> methods[6] = {
    [](const Request<T, Cell>& q) -> int32_t {
      find_uniform(q.nx, q.x, q.nsite, q.site, cells_per_length(q.x, q.nx), q.cell);
      return ORIN_DF_OK;
    },
    [](const Request<T, Cell>& q) -> int32_t {
      find_quasi_uniform(q.nx, q.x, q.nsite, q.site, cells_per_length(q.x, q.nx), q.cell);
      return ORIN_DF_OK;
    },
    [](const Request<T, Cell>& q) -> int32_t {
      SortedSearch<T>(q.x, q.nx, q.nsite, 0).find(q.nsite, q.site, q.cell);
      return ORIN_DF_OK;
    },
    [](const Request<T, Cell>& q) -> int32_t {
      find_near(q.nx, q.x, q.nsite, q.site, cell_from(q.data_hint[0], q.nx), q.cell);
      return ORIN_DF_OK;
    },
    [](const Request<T, Cell>& q) -> int32_t {
      GeneralSearch<T>(q.x, q.nx, q.nsite).find(q.nsite, q.site, q.cell);
      return ORIN_DF_OK;
    },
    [](const Request<T, Cell>& q) -> int32_t { return call_user(q.nsite, q.site, q.search, q.parameters, q.cell); },
};

template <class T>
int choose_method(const DfTask1D& task, int64_t sitehint, const T* data_hint, Callback<T> search) {
  if (search != nullptr) return 5;
  if (task.xhint == ORIN_DF_UNIFORM) return 0;
  if (task.xhint == ORIN_DF_QUASI_UNIFORM) return 1;
  if ((sitehint & ORIN_DF_SORTED_SITES) != 0) return 2;
  if (data_hint != nullptr && data_hint[1] == T{1}) return 3;
  return 4;
}

// Calls `find` with the cells in the width that the flags ask for.
template <class Find>
int32_t in_width(void* cell, int64_t flags, Find find) {
  if ((flags & ORIN_DF_WIDE_CELLS) == ORIN_DF_WIDE_CELLS) return find(static_cast<int64_t*>(cell));
  return find(static_cast<int32_t*>(cell));
}

template <class T>
int32_t search(const DfTask1D* task, int64_t nsite, const T* site, int64_t sitehint, const T* data_hint, void* cell,
               int64_t flags, Callback<T> user_search, void* parameters) {
  if (task == nullptr) return ORIN_DF_NULL_TASK;
  if (nsite < 1) return ORIN_DF_OK;
  const int method = choose_method(*task, sitehint, data_hint, user_search);
  return in_width(cell, flags, [&]<class Cell>(Cell* cells) {
    return methods<T, Cell>[method]({static_cast<Index>(task->nx), static_cast<const T*>(task->x),
                                     static_cast<Index>(nsite), site, data_hint, cells, user_search, parameters});
  });
}

// --- The methods as entries ------------------------------------------------------------------------------------------

template <class T>
int32_t uniform_search(int64_t nx, const T* x, int64_t nsite, const T* site, T multiplier, void* cell, int64_t flags) {
  if (nsite < 1) return ORIN_DF_OK;
  return in_width(cell, flags, [&](auto* cells) {
    find_uniform(nx, x, static_cast<Index>(nsite), site, multiplier, cells);
    return ORIN_DF_OK;
  });
}

template <class T>
int32_t quasi_uniform_search(int64_t nx, const T* x, int64_t nsite, const T* site, T multiplier, void* cell,
                             int64_t flags) {
  if (nsite < 1) return ORIN_DF_OK;
  return in_width(cell, flags, [&](auto* cells) {
    find_quasi_uniform(static_cast<Index>(nx), x, static_cast<Index>(nsite), site, multiplier, cells);
    return ORIN_DF_OK;
  });
}

template <class T>
int32_t sorted_search(int64_t nx, const T* x, int64_t nsite, const T* site, int32_t* position, void* cell,
                      int64_t flags) {
  if (nsite < 1) return ORIN_DF_OK;
  SortedSearch<T> sorted(x, static_cast<Index>(nx), static_cast<Index>(nsite), *position);
  in_width(cell, flags, [&](auto* cells) {
    sorted.find(static_cast<Index>(nsite), site, cells);
    return ORIN_DF_OK;
  });
  *position = static_cast<int32_t>(sorted.position());
  return ORIN_DF_OK;
}

template <class T>
int32_t hybrid_search(int64_t nx, const T* x, int64_t nsite, const T* site, void* cell, int64_t flags) {
  if (nsite < 1) return ORIN_DF_OK;
  const GeneralSearch<T> general(x, static_cast<Index>(nx), static_cast<Index>(nsite));
  return in_width(cell, flags, [&](auto* cells) {
    general.find(static_cast<Index>(nsite), site, cells);
    return ORIN_DF_OK;
  });
}

template <class T>
int32_t peak_search(int64_t nx, const T* x, int64_t nsite, const T* site, T peak, void* cell, int64_t flags) {
  if (nsite < 1) return ORIN_DF_OK;
  return in_width(cell, flags, [&](auto* cells) {
    find_from_peak(static_cast<Index>(nx), x, static_cast<Index>(nsite), site, peak, cells);
    return ORIN_DF_OK;
  });
}

}  // namespace
}  // namespace orin::data_fitting

using namespace orin::data_fitting;

extern "C" {

ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFSearch1D(const DfTask1D* task, int64_t nsite, const double* site,
                                                      int64_t sitehint, const double* data_hint, void* cell,
                                                      int64_t flags, OrinDfSearchD search_callback, void* parameters) {
  return search(task, nsite, site, sitehint, data_hint, cell, flags, search_callback, parameters);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFSearch1D(const DfTask1D* task, int64_t nsite, const float* site,
                                                      int64_t sitehint, const float* data_hint, void* cell,
                                                      int64_t flags, OrinDfSearchS search_callback, void* parameters) {
  return search(task, nsite, site, sitehint, data_hint, cell, flags, search_callback, parameters);
}

ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFUniformSearch1D(int64_t nx, const double* x, int64_t nsite,
                                                             const double* site, double multiplier, void* cell,
                                                             int64_t flags) {
  return uniform_search(nx, x, nsite, site, multiplier, cell, flags);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFUniformSearch1D(int64_t nx, const float* x, int64_t nsite,
                                                             const float* site, float multiplier, void* cell,
                                                             int64_t flags) {
  return uniform_search(nx, x, nsite, site, multiplier, cell, flags);
}

ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFQuasiUniformSearch1D(int64_t nx, const double* x, int64_t nsite,
                                                                  const double* site, double multiplier, void* cell,
                                                                  int64_t flags) {
  return quasi_uniform_search(nx, x, nsite, site, multiplier, cell, flags);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFQuasiUniformSearch1D(int64_t nx, const float* x, int64_t nsite,
                                                                  const float* site, float multiplier, void* cell,
                                                                  int64_t flags) {
  return quasi_uniform_search(nx, x, nsite, site, multiplier, cell, flags);
}

ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFSortedSearch1D(int64_t nx, const double* x, int64_t nsite,
                                                            const double* site, int32_t* position, void* cell,
                                                            int64_t flags) {
  return sorted_search(nx, x, nsite, site, position, cell, flags);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFSortedSearch1D(int64_t nx, const float* x, int64_t nsite,
                                                            const float* site, int32_t* position, void* cell,
                                                            int64_t flags) {
  return sorted_search(nx, x, nsite, site, position, cell, flags);
}

ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFHybridSearch1D(int64_t nx, const double* x, int64_t nsite,
                                                            const double* site, void* cell, int64_t flags) {
  return hybrid_search(nx, x, nsite, site, cell, flags);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFHybridSearch1D(int64_t nx, const float* x, int64_t nsite,
                                                            const float* site, void* cell, int64_t flags) {
  return hybrid_search(nx, x, nsite, site, cell, flags);
}

ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFPeakSearch1D(int64_t nx, const double* x, int64_t nsite,
                                                          const double* site, double peak, void* cell, int64_t flags) {
  return peak_search(nx, x, nsite, site, peak, cell, flags);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFPeakSearch1D(int64_t nx, const float* x, int64_t nsite, const float* site,
                                                          float peak, void* cell, int64_t flags) {
  return peak_search(nx, x, nsite, site, peak, cell, flags);
}

ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFUserDefSearch1D(int64_t, const double*, int64_t nsite, const double* site,
                                                             OrinDfSearchD search_callback, void* parameters,
                                                             void* cell, int64_t) {
  return call_user(nsite, site, search_callback, parameters, cell);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFUserDefSearch1D(int64_t, const float*, int64_t nsite, const float* site,
                                                             OrinDfSearchS search_callback, void* parameters,
                                                             void* cell, int64_t) {
  return call_user(nsite, site, search_callback, parameters, cell);
}

ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFUniUserDefSearch1D(int64_t, const double*, int64_t nsite,
                                                                const double* site, OrinDfSearchD search_callback,
                                                                void* parameters, void* cell, int64_t) {
  return call_user(nsite, site, search_callback, parameters, cell);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFUniUserDefSearch1D(int64_t, const float*, int64_t nsite, const float* site,
                                                                OrinDfSearchS search_callback, void* parameters,
                                                                void* cell, int64_t) {
  return call_user(nsite, site, search_callback, parameters, cell);
}
}
