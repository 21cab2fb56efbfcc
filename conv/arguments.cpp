// arguments.cpp: the tests of every kernel, in their order.
// SPDX-License-Identifier: MIT
#include "conv/arguments.h"

namespace orin::conv {

namespace {

template <class Test>
bool any_dimension(std::int32_t dims, Test test) {
  for (std::int32_t d = 0; d < dims; ++d)
    if (test(d)) return true;
  return false;
}

bool any_below_one(std::int32_t dims, const std::int32_t* shape) {
  return any_dimension(dims, [&](std::int32_t d) { return shape[d] < 1; });
}

}  // namespace

std::int32_t check(const Arguments& a, Kind kind) {
  if (a.dims < 1 || a.dims > max_dims) return ORIN_CONV_NOT_IMPLEMENTED;
  if (a.xshape == nullptr || a.xstride == nullptr || a.yshape == nullptr || a.ystride == nullptr ||
      a.zshape == nullptr || a.zstride == nullptr || a.start == nullptr || a.decimation == nullptr)
    return ORIN_CONV_NOT_IMPLEMENTED;

  if (a.x == nullptr) return ORIN_CONV_NULL_X;
  if (any_below_one(a.dims, a.xshape)) return ORIN_CONV_BAD_XSHAPE;
  if (a.y == nullptr) return ORIN_CONV_NULL_Y;
  if (any_below_one(a.dims, a.yshape)) return ORIN_CONV_BAD_YSHAPE;
  if (a.z == nullptr) return ORIN_CONV_NULL_Z;
  if (any_below_one(a.dims, a.zshape)) return ORIN_CONV_BAD_ZSHAPE;
  if (any_dimension(a.dims, [&](std::int32_t d) { return a.zstride[d] == 0; })) return ORIN_CONV_BAD_ZSTRIDE;

  // Positions of the result: first <= j < end.
  const bool convolution = kind == Kind::convolution;
  const auto first = [&](std::int32_t d) { return convolution ? std::int64_t{0} : std::int64_t{1} - a.xshape[d]; };
  const auto end = [&](std::int32_t d) {
    return convolution ? std::int64_t{a.xshape[d]} + a.yshape[d] - 1 : std::int64_t{a.yshape[d]};
  };
  if (any_dimension(a.dims, [&](std::int32_t d) { return a.start[d] < first(d) || a.start[d] >= end(d); }))
    return ORIN_CONV_BAD_START;
  if (any_dimension(a.dims, [&](std::int32_t d) {
        return a.decimation[d] < 1 || (std::int64_t{a.zshape[d]} - 1) * a.decimation[d] + a.start[d] >= end(d);
      }))
    return ORIN_CONV_BAD_EXTENT;
  return ORIN_CONV_OK;
}

}  // namespace orin::conv
