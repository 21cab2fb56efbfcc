// fft_kernels.cpp: convolution and correlation through the engine's full result.
// SPDX-License-Identifier: MIT
//
// Order     test the arguments; bring the operands into contiguous arrays; full result; gather z[i] = full[start + i
// D]. Kinds     a correlation is the convolution with x reversed, its positions counted from 0. Dimensions are joined
// into one: with rows padded to the length of the result's rows (and planes to its planes), the
//           convolution of the flat sequences holds the full result in order. Small results, and operands of few
//           elements, are summed directly.
#include <algorithm>
#include <type_traits>

#include "conv/direct.h"
#include "conv/engine.h"
#include "conv/kernel_definitions.h"

namespace orin::conv {

namespace {

// The full result, as an array whose rows and planes the flat operands share.
struct Full {
  int dims;
  std::size_t shape[max_dims];
  std::size_t volume = 1;

  template <class Scalar>
  Full(const View<Scalar>& x, const View<Scalar>& y) : dims(x.dims) {
    for (int d = 0; d < dims; ++d) {
      shape[d] = static_cast<std::size_t>(x.shape[d]) + static_cast<std::size_t>(y.shape[d]) - 1;
      volume = saturated_product(volume, shape[d]);
    }
  }
};

// A flat operand: the caller's row itself where it is contiguous and of the arithmetic's type, else a padded copy.
template <class P>
class Flat {
  using Sum = typename P::Sum;

 public:
  [[nodiscard]] bool make(const View<const typename P::Data>& view, const Full& full) {
    length = 1;
    std::size_t pitch = 1;
    for (int d = 0; d < full.dims; pitch *= full.shape[d++])
      length += (static_cast<std::size_t>(view.shape[d]) - 1) * pitch;
    if constexpr (std::is_same_v<typename P::Data, Sum>) {
      if (full.dims == 1 && view.stride[0] == static_cast<std::ptrdiff_t>(P::parts)) {
        data = view.origin;
        return true;
      }
    }
    if (!copy_.allocate(saturated_product(length, P::parts))) return false;
    if (full.dims > 1) std::fill_n(copy_.data(), length * P::parts, Sum(0));
    copy_elements<P::parts>(view, dense_view<P::parts>(copy_.data(), view, full.shape));
    data = copy_.data();
    return true;
  }

  const Sum* data = nullptr;
  std::size_t length = 0;

 private:
  service::WorkBuffer<Sum> copy_;
};

template <class P>
std::int32_t fft(const Arguments& a, Kind kind) {
  using Sum = typename P::Sum;
  if (const std::int32_t status = check(a, kind); status != ORIN_CONV_OK) return status;
  View<const typename P::Data> x_elements = x_view<P>(a), y_elements = y_view<P>(a);
  const View<typename P::Data> z = z_view<P>(a);
  const Full full(x_elements, y_elements);
  if (a.dims > 1 && too_small_for_transforms(full.volume, std::min(volume(x_elements), volume(y_elements))))
    return sum_directly<P>(a, kind);
  if (full.volume > PTRDIFF_MAX / (P::parts * sizeof(Sum))) return ORIN_CONV_NO_MEMORY;

  if (kind == Kind::correlation) x_elements.reverse();
  Flat<P> x, y;
  if (!x.make(x_elements, full) || !y.make(y_elements, full)) return ORIN_CONV_NO_MEMORY;

  // The part of the full result that is asked for; all of it, in its own order, goes straight into z.
  View<Sum> wanted = dense_view<P::parts>(static_cast<Sum*>(nullptr), z, full.shape);
  if constexpr (std::is_same_v<typename P::Data, Sum>) {
    if (volume(z) == full.volume && std::equal(wanted.stride, wanted.stride + a.dims, z.stride))
      return full_convolution<Sum, P::parts>(x.data, x.length, y.data, y.length, z.origin) == 0
                 ? ORIN_CONV_OK
                 : ORIN_CONV_TRANSFORM_FAILED;
  }
  service::WorkBuffer<Sum> result;
  if (!result.allocate(full.volume * P::parts)) return ORIN_CONV_NO_MEMORY;
  if (full_convolution<Sum, P::parts>(x.data, x.length, y.data, y.length, result.data()) != 0)
    return ORIN_CONV_TRANSFORM_FAILED;

  wanted.origin = result.data();
  for (int d = 0; d < a.dims; ++d) {
    const std::ptrdiff_t first = kind == Kind::convolution ? a.start[d] : a.start[d] + (x_elements.shape[d] - 1);
    wanted.origin += first * wanted.stride[d];
    if (a.zshape[d] > 1) wanted.stride[d] *= a.decimation[d];
  }
  copy_elements<P::parts>(wanted, z);
  return ORIN_CONV_OK;
}

}  // namespace
}  // namespace orin::conv

ORIN_CONV_DEFINE_KERNELS(SS, Fft, fft)
ORIN_CONV_DEFINE_KERNELS(SD, Fft, fft)
ORIN_CONV_DEFINE_KERNELS(DD, Fft, fft)
ORIN_CONV_DEFINE_KERNELS(CC, Fft, fft)
ORIN_CONV_DEFINE_KERNELS(CZ, Fft, fft)
ORIN_CONV_DEFINE_KERNELS(ZZ, Fft, fft)

ORIN_CONV_STUBS(SS, Fft)
ORIN_CONV_STUBS(SD, Fft)
ORIN_CONV_STUBS(DD, Fft)
ORIN_CONV_STUBS(CC, Fft)
ORIN_CONV_STUBS(CZ, Fft)
ORIN_CONV_STUBS(ZZ, Fft)
