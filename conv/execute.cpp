// execute.cpp: from a task to its kernel.
// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "conv/arguments.h"
#include "orin/conv.h"

namespace orin::conv {

namespace {

enum Method : std::size_t { direct, fft };
enum Precisions : std::size_t { single, single_in_double, in_double, double_in_single };

// The kernels of a type pair. Only single precision has a form without decimation.
struct Kernels {
  decltype(&_junConvSSDirect1D_dec) one[2];  // by method
  decltype(&_junConvSSDirectAll_dec) all[2];
  decltype(&_junConvSSDirect1D_nodec) direct_without_decimation;
};

#define ORIN_CONV_ALL(kind, pair) \
  { _jun##kind##pair##DirectAll_dec, _jun##kind##pair##FftAll_dec }
#define ORIN_CONV_ROW(kind, pair, nodec) \
  { {_jun##kind##pair##Direct1D_dec, _jun##kind##pair##Fft1D_dec}, ORIN_CONV_ALL(kind, pair), nodec }
// Double data summed in single precision: no kernel for one dimension, the double one for more.
#define ORIN_CONV_MISMATCH(kind, pair) \
  { {nullptr, nullptr}, ORIN_CONV_ALL(kind, pair), nullptr }
#define ORIN_CONV_TABLE(kind)                                                                                  \
  {                                                                                                            \
    {ORIN_CONV_ROW(kind, SS, _jun##kind##SSDirect1D_nodec), ORIN_CONV_ROW(kind, SD, nullptr),                  \
     ORIN_CONV_ROW(kind, DD, nullptr), ORIN_CONV_MISMATCH(kind, DD)},                                          \
        {ORIN_CONV_ROW(kind, CC, nullptr), ORIN_CONV_ROW(kind, CZ, nullptr), ORIN_CONV_ROW(kind, ZZ, nullptr), \
         ORIN_CONV_MISMATCH(kind, ZZ)},                                                                        \
  }

constexpr Kernels kernel_table[2][2][4] = {ORIN_CONV_TABLE(Conv), ORIN_CONV_TABLE(Corr)};

const Kernels& kernels_of(const ConvTask& task, Kind kind) {
  constexpr Precisions precisions[2][2] = {{in_double, double_in_single}, {single_in_double, single}};
  const bool single_data = task.precision == ORIN_CONV_PRECISION_SINGLE;
  const bool single_sums = task.internal_precision == ORIN_CONV_PRECISION_SINGLE;
  const bool complex_data = task.value_class == ORIN_CONV_VALUE_COMPLEX;
  return kernel_table[kind == Kind::correlation][complex_data][precisions[single_data][single_sums]];
}

// The caller's strides, or those of a dense array of that shape.
struct Strides {
  std::int32_t dense[max_dims];
  const std::int32_t* list;
  bool representable = true;

  Strides(std::int32_t dims, const std::int32_t* given, const std::int32_t* shape) : list(given) {
    if (given != nullptr || shape == nullptr) return;
    std::int64_t stride = 1;
    for (std::int32_t d = 0; d < dims; ++d) {
      if (stride < INT32_MIN || stride > INT32_MAX) {
        representable = false;
        stride = 1;
      }
      dense[d] = static_cast<std::int32_t>(stride);
      stride *= shape[d];
    }
    list = dense;
  }
};

std::int32_t run(const ConvTask& task, const void* x, const std::int32_t* given_xstride, const void* y,
                 const std::int32_t* given_ystride, void* z, const std::int32_t* given_zstride) {
  if (task.dims < 1 || task.dims > max_dims) return ORIN_CONV_NOT_IMPLEMENTED;
  const Kind kind = task.kind == ORIN_CONV_KIND_CONVOLUTION ? Kind::convolution : Kind::correlation;
  const Kernels& kernels = kernels_of(task, kind);
  const Method method = task.mode == ORIN_CONV_MODE_DIRECT ? direct : fft;
  if (task.dims == 1 && kernels.one[method] == nullptr) return ORIN_CONV_NOT_IMPLEMENTED;
  if (task.xshape == nullptr || task.yshape == nullptr || task.zshape == nullptr) return ORIN_CONV_NOT_IMPLEMENTED;

  const Strides xstride(task.dims, given_xstride, task.xshape), ystride(task.dims, given_ystride, task.yshape),
      zstride(task.dims, given_zstride, task.zshape);
  std::int32_t decimation[max_dims], start[max_dims];
  for (std::int32_t d = 0; d < task.dims; ++d) {
    decimation[d] = task.decimation != nullptr ? task.decimation[d] : 1;
    start[d] = task.start != nullptr       ? task.start[d]
               : kind == Kind::convolution ? 0
                                           : static_cast<std::int32_t>(std::int64_t{1} - task.xshape[d]);
  }
  if (!xstride.representable || !ystride.representable || !zstride.representable) {
    const std::int32_t status = check({task.dims, x, task.xshape, xstride.list, y, task.yshape, ystride.list, z,
                                       task.zshape, zstride.list, start, decimation},
                                      kind);
    return status != ORIN_CONV_OK ? status : static_cast<std::int32_t>(ORIN_CONV_NO_MEMORY);
  }
  if (task.dims > 1)
    return kernels.all[method](task.dims, x, task.xshape, xstride.list, y, task.yshape, ystride.list, z, task.zshape,
                               zstride.list, start, decimation);
  if (method == direct && task.decimation == nullptr && kernels.direct_without_decimation != nullptr)
    return kernels.direct_without_decimation(x, *xstride.list, y, *ystride.list, z, *zstride.list, *task.xshape,
                                             *task.yshape, *start, *task.zshape);
  return kernels.one[method](x, *xstride.list, y, *ystride.list, z, *zstride.list, *task.xshape, *task.yshape, *start,
                             *task.zshape, *decimation);
}

}  // namespace
}  // namespace orin::conv

ORIN_API std::int32_t ORIN_CALL __junExec(ConvTask* task, const void* x, const std::int32_t* xstride, const void* y,
                                          const std::int32_t* ystride, void* z, const std::int32_t* zstride) {
  if (task == nullptr) return ORIN_CONV_NULL_POINTER;
  if (task->status != ORIN_CONV_OK) return task->status;
  task->committed = 1;
  return task->status = orin::conv::run(*task, x, xstride, y, ystride, z, zstride);
}

ORIN_API std::int32_t ORIN_CALL __junExecX(ConvTask* task, const void* y, const std::int32_t* ystride, void* z,
                                           const std::int32_t* zstride) {
  if (task == nullptr) return ORIN_CONV_NULL_POINTER;
  return __junExec(task, task->fixed_x, task->fixed_xstride, y, ystride, z, zstride);
}
