// kernel_definitions.h: exported kernels around templates, one line per type pair at the foot of a kernel file.
// SPDX-License-Identifier: MIT
#ifndef ORIN_CONV_KERNEL_DEFINITIONS_H
#define ORIN_CONV_KERNEL_DEFINITIONS_H

#include "conv/arguments.h"
#include "orin/conv.h"

#define ORIN_CONV_DEFINE_1D_DEC(name, kernel, kind)                                                               \
  ORIN_API std::int32_t ORIN_CALL name(const void* x, std::int32_t xstride, const void* y, std::int32_t ystride,  \
                                       void* z, std::int32_t zstride, std::int32_t xlength, std::int32_t ylength, \
                                       std::int32_t start, std::int32_t zlength, std::int32_t decimation) {       \
    return kernel({1, x, &xlength, &xstride, y, &ylength, &ystride, z, &zlength, &zstride, &start, &decimation},  \
                  orin::conv::Kind::kind);                                                                        \
  }

#define ORIN_CONV_DEFINE_1D_NODEC(name, kernel, kind)                                                             \
  ORIN_API std::int32_t ORIN_CALL name(const void* x, std::int32_t xstride, const void* y, std::int32_t ystride,  \
                                       void* z, std::int32_t zstride, std::int32_t xlength, std::int32_t ylength, \
                                       std::int32_t start, std::int32_t zlength) {                                \
    const std::int32_t decimation = 1;                                                                            \
    return kernel({1, x, &xlength, &xstride, y, &ylength, &ystride, z, &zlength, &zstride, &start, &decimation},  \
                  orin::conv::Kind::kind);                                                                        \
  }

#define ORIN_CONV_DEFINE_ALL_DEC(name, kernel, kind)                                                            \
  ORIN_API std::int32_t ORIN_CALL name(                                                                         \
      std::int32_t dims, const void* x, const std::int32_t* xshape, const std::int32_t* xstride, const void* y, \
      const std::int32_t* yshape, const std::int32_t* ystride, void* z, const std::int32_t* zshape,             \
      const std::int32_t* zstride, const std::int32_t* start, const std::int32_t* decimation) {                 \
    return kernel({dims, x, xshape, xstride, y, yshape, ystride, z, zshape, zstride, start, decimation},        \
                  orin::conv::Kind::kind);                                                                      \
  }

#define ORIN_CONV_STUB_1D(name)                                                                                   \
  ORIN_API std::int32_t ORIN_CALL name(const void*, std::int32_t, const void*, std::int32_t, void*, std::int32_t, \
                                       std::int32_t, std::int32_t, std::int32_t, std::int32_t) {                  \
    return ORIN_CONV_NOT_IMPLEMENTED;                                                                             \
  }

#define ORIN_CONV_STUB_ALL(name)                                                                            \
  ORIN_API std::int32_t ORIN_CALL name(std::int32_t, const void*, const std::int32_t*, const std::int32_t*, \
                                       const void*, const std::int32_t*, const std::int32_t*, void*,        \
                                       const std::int32_t*, const std::int32_t*, const std::int32_t*) {     \
    return ORIN_CONV_NOT_IMPLEMENTED;                                                                       \
  }

// The four working kernels of a pair by one method: `kernel<pair>(Arguments, Kind)`.
#define ORIN_CONV_DEFINE_KERNELS(pair, method, kernel)                                                         \
  ORIN_CONV_DEFINE_1D_DEC(_junConv##pair##method##1D_dec, orin::conv::kernel<orin::conv::pair>, convolution)   \
  ORIN_CONV_DEFINE_1D_DEC(_junCorr##pair##method##1D_dec, orin::conv::kernel<orin::conv::pair>, correlation)   \
  ORIN_CONV_DEFINE_ALL_DEC(_junConv##pair##method##All_dec, orin::conv::kernel<orin::conv::pair>, convolution) \
  ORIN_CONV_DEFINE_ALL_DEC(_junCorr##pair##method##All_dec, orin::conv::kernel<orin::conv::pair>, correlation)

// The names without decimation that have no kernel behind them.
#define ORIN_CONV_STUBS_ALL(pair, method)               \
  ORIN_CONV_STUB_ALL(_junConv##pair##method##All_nodec) \
  ORIN_CONV_STUB_ALL(_junCorr##pair##method##All_nodec)
#define ORIN_CONV_STUBS(pair, method)                 \
  ORIN_CONV_STUB_1D(_junConv##pair##method##1D_nodec) \
  ORIN_CONV_STUB_1D(_junCorr##pair##method##1D_nodec) \
  ORIN_CONV_STUBS_ALL(pair, method)

#endif
