// arguments.h: what a kernel receives, and the tests it makes first.
// SPDX-License-Identifier: MIT
#ifndef ORIN_CONV_ARGUMENTS_H
#define ORIN_CONV_ARGUMENTS_H

#include <cstdint>

#include "conv/view.h"

namespace orin::conv {

enum class Kind { convolution, correlation };

// One dimension is the case dims = 1 with lists of one entry.
struct Arguments {
  std::int32_t dims;
  const void* x;
  const std::int32_t *xshape, *xstride;
  const void* y;
  const std::int32_t *yshape, *ystride;
  void* z;
  const std::int32_t *zshape, *zstride;
  const std::int32_t *start, *decimation;
};

// The status of the first test that fails. A test runs over all dimensions before the next one.
std::int32_t check(const Arguments& arguments, Kind kind);

// The caller's arrays after a successful check.
template <class P>
View<const typename P::Data> x_view(const Arguments& a) {
  return caller_view<P::parts>(static_cast<const typename P::Data*>(a.x), a.dims, a.xshape, a.xstride);
}
template <class P>
View<const typename P::Data> y_view(const Arguments& a) {
  return caller_view<P::parts>(static_cast<const typename P::Data*>(a.y), a.dims, a.yshape, a.ystride);
}
template <class P>
View<typename P::Data> z_view(const Arguments& a) {
  return caller_view<P::parts>(static_cast<typename P::Data*>(a.z), a.dims, a.zshape, a.zstride);
}

}  // namespace orin::conv

#endif
