// direct_kernels.cpp: convolution and correlation by explicit sums.
// SPDX-License-Identifier: MIT
//
// Order     test the arguments; choose the operand that slides (the taps); pack what pays to be packed; sum.
// Packing   a copy costs one pass over the operand. One dimension, convolution: the taps (the shorter operand) always,
//           reversed, the other one unless it is dense or few outputs are asked for. Correlation: nothing when few
//           outputs are asked for, else every operand that is not dense. More dimensions: taps always, the source
//           unless its rows are dense.
#include "conv/direct.h"
#include "conv/kernel_definitions.h"
#include "conv/sliding.h"

namespace orin::conv {

namespace {

// The sums of a convolution, or of a correlation with x or y as taps, before any packing.
template <class P>
Sliding<P> sums_of(const Arguments& a, Kind kind, bool x_slides) {
  Sliding<P> sums{x_slides ? x_view<P>(a) : y_view<P>(a), x_slides ? y_view<P>(a) : x_view<P>(a), z_view<P>(a)};
  for (int d = 0; d < a.dims; ++d) {
    sums.first[d] = a.start[d];
    sums.step[d] = a.decimation[d];
    if (kind == Kind::convolution) {
      // x[k] y[j - k]: with the taps reversed, tap k meets the source at j - (length - 1) + k.
      sums.taps.reverse(d);
      sums.first[d] -= sums.taps.shape[d] - 1;
    } else if (!x_slides) {
      // x[k] y[j + k] = y[k'] x[k' - j]: the position runs backwards, so the outputs are taken in opposite order.
      sums.first[d] = -(a.start[d] + std::int64_t{a.decimation[d]} * (a.zshape[d] - 1));
      sums.out.reverse(d);
    }
  }
  return sums;
}

template <class P>
bool dense_rows(const View<const typename P::Data>& view) {
  return view.stride[0] == static_cast<std::ptrdiff_t>(P::parts);
}

// Whether the sums touch an operand of length `other` so rarely that copying it costs more than it saves.
bool few_outputs(std::int32_t outputs, std::int32_t length, std::int32_t other) {
  return static_cast<double>(outputs) * length < 2.0 * other;
}
bool few_or_equal_outputs(std::int32_t outputs, std::int32_t length, std::int32_t other) {
  return static_cast<double>(outputs) * length <= 2.0 * other;
}

}  // namespace

template <class P>
std::int32_t sum_directly(const Arguments& a, Kind kind) {
  Sliding<P> sums = sums_of<P>(a, kind, volume(a.dims, a.xshape) <= volume(a.dims, a.yshape));

  bool pack_taps = true;
  bool pack_source = !dense_rows<P>(sums.source);
  if (a.dims == 1) {
    const std::int32_t n = a.xshape[0], m = a.yshape[0], l = a.zshape[0];
    if (kind == Kind::convolution) {
      if (few_or_equal_outputs(l, std::min(n, m), std::max(n, m))) pack_source = false;
    } else if (few_outputs(l, n, m) || few_outputs(l, m, n)) {
      pack_taps = pack_source = false;
    } else {
      pack_taps = !dense_rows<P>(sums.taps);
    }
  }
  service::WorkBuffer<typename P::Data> taps, source;
  if (pack_taps && !pack<P::parts>(sums.taps, taps)) return ORIN_CONV_NO_MEMORY;
  if (pack_source && !pack<P::parts>(sums.source, source)) return ORIN_CONV_NO_MEMORY;
  slide(sums);
  return ORIN_CONV_OK;
}

template std::int32_t sum_directly<SS>(const Arguments&, Kind);
template std::int32_t sum_directly<SD>(const Arguments&, Kind);
template std::int32_t sum_directly<DD>(const Arguments&, Kind);
template std::int32_t sum_directly<CC>(const Arguments&, Kind);
template std::int32_t sum_directly<CZ>(const Arguments&, Kind);
template std::int32_t sum_directly<ZZ>(const Arguments&, Kind);

namespace {

template <class P>
std::int32_t direct(const Arguments& arguments, Kind kind) {
  const std::int32_t status = check(arguments, kind);
  return status != ORIN_CONV_OK ? status : sum_directly<P>(arguments, kind);
}

}  // namespace
}  // namespace orin::conv

ORIN_CONV_DEFINE_KERNELS(SS, Direct, direct)
ORIN_CONV_DEFINE_KERNELS(SD, Direct, direct)
ORIN_CONV_DEFINE_KERNELS(DD, Direct, direct)
ORIN_CONV_DEFINE_KERNELS(CC, Direct, direct)
ORIN_CONV_DEFINE_KERNELS(CZ, Direct, direct)
ORIN_CONV_DEFINE_KERNELS(ZZ, Direct, direct)

ORIN_CONV_DEFINE_1D_NODEC(_junConvSSDirect1D_nodec, orin::conv::direct<orin::conv::SS>, convolution)
ORIN_CONV_DEFINE_1D_NODEC(_junCorrSSDirect1D_nodec, orin::conv::direct<orin::conv::SS>, correlation)
ORIN_CONV_STUBS_ALL(SS, Direct)
ORIN_CONV_STUBS(SD, Direct)
ORIN_CONV_STUBS(DD, Direct)
ORIN_CONV_STUBS(CC, Direct)
ORIN_CONV_STUBS(CZ, Direct)
ORIN_CONV_STUBS(ZZ, Direct)
