// engine.cpp: direct sums, one transform, or overlap-add, see engine.h.
// SPDX-License-Identifier: MIT
#include "conv/engine.h"

#include <algorithm>

#include "conv/sliding.h"
#include "conv/transform.h"
#include "service/work_buffer.h"

namespace orin::conv {

namespace {

constexpr std::size_t piece_length = 4096;
constexpr std::size_t overlap_add_factor = 3;

template <class T, std::size_t Parts>
struct Sequence {
  const T* data;
  std::size_t length;
};

// Adds the convolution of both to out.
template <class T, std::size_t Parts>
void add_direct(Sequence<T, Parts> source, Sequence<T, Parts> taps, T* out) {
  const auto row = []<class Scalar>(Scalar* data, std::size_t length) {
    View<Scalar> view(data, 1);
    view.shape[0] = static_cast<std::ptrdiff_t>(length);
    view.stride[0] = static_cast<std::ptrdiff_t>(Parts);
    return view;
  };
  Sliding<Pair<T, T, Parts>> sums{row(taps.data, taps.length), row(source.data, source.length),
                                  row(out, source.length + taps.length - 1)};
  sums.taps.reverse(0);
  sums.first[0] = 1 - sums.taps.shape[0];
  sums.step[0] = 1;
  sums.add = true;
  slide(sums);
}

template <class T, std::size_t Parts>
void direct_convolution(Sequence<T, Parts> longer, Sequence<T, Parts> shorter, T* out) {
  std::fill_n(out, Parts * (longer.length + shorter.length - 1), T(0));
  const std::size_t piece = longer.length > piece_length - 1 ? piece_length : longer.length;
  for (std::size_t at = 0; at < longer.length; at += piece)
    add_direct<T, Parts>({longer.data + Parts * at, std::min(piece, longer.length - at)}, shorter, out + Parts * at);
}

// Smallest power of two that is not below n.
std::size_t power_of_two_from(std::size_t n, std::size_t least) {
  std::size_t power = least;
  while (power < n) power *= 2;
  return power;
}

// A transform of `length` elements with its work memory: real ones are the halves of complex points.
template <class T, std::size_t Parts>
class Workspace {
 public:
  explicit Workspace(std::size_t length) : transform(length * Parts / 2) {}

  bool allocate() {
    const std::size_t operand = 2 * transform.points();
    const std::size_t factors = transform.twiddle_blocks() * sizeof(TwiddleBlock<T>) / sizeof(T);
    if (!memory_.allocate(2 * operand + factors)) return false;
    first = memory_.data();
    second = first + operand;
    transform.prepare(reinterpret_cast<TwiddleBlock<T>*>(second + operand));
    return true;
  }

  Transform<T> transform;
  T *first = nullptr, *second = nullptr;

 private:
  service::WorkBuffer<T> memory_;
};

template <class T, std::size_t Parts>
std::int32_t single_transform(Sequence<T, Parts> longer, Sequence<T, Parts> shorter, T* out) {
  const std::size_t full = longer.length + shorter.length - 1;
  Workspace<T, Parts> work(power_of_two_from(full, 4));
  if (!work.allocate()) return engine_no_memory;
  work.transform.template load<Parts>({longer.data, longer.length}, work.first);
  work.transform.template load<Parts>({shorter.data, shorter.length}, work.second);
  work.transform.multiply_loaded(work.first, work.second);
  work.transform.template unload<Parts>(work.first, {out, full, 0});
  return 0;
}

template <class T, std::size_t Parts>
std::int32_t overlap_add(Sequence<T, Parts> longer, Sequence<T, Parts> shorter, T* out) {
  const std::size_t length = 2 * power_of_two_from(2 * shorter.length, 2);
  const std::size_t block = length - shorter.length + 1;
  Workspace<T, Parts> work(length);
  if (!work.allocate()) return engine_no_memory;
  work.transform.template load<Parts>({shorter.data, shorter.length}, work.second);
  work.transform.forward(work.second);
  for (std::size_t at = 0; at < longer.length; at += block) {
    const std::size_t count = std::min(block, longer.length - at);
    work.transform.template load<Parts>({longer.data + Parts * at, count}, work.first);
    work.transform.multiply_kept(work.first, work.second);
    // The tail of the block before stands in the first elements.
    const std::size_t overlap = at == 0 ? 0 : shorter.length - 1;
    work.transform.template unload<Parts>(work.first, {out + Parts * at, count + shorter.length - 1, overlap});
  }
  return 0;
}

}  // namespace

template <class T, std::size_t Parts>
std::int32_t full_convolution(const T* a, std::size_t na, const T* b, std::size_t nb, T* out) {
  if (a == nullptr || b == nullptr || out == nullptr) return engine_null_pointer;
  if (na < 1 || nb < 1) return engine_bad_length;
  Sequence<T, Parts> longer{a, na}, shorter{b, nb};
  if (na < nb) std::swap(longer, shorter);
  if (too_small_for_transforms(na + nb - 1, shorter.length)) {
    direct_convolution(longer, shorter, out);
    return 0;
  }
  return longer.length < overlap_add_factor * shorter.length ? single_transform(longer, shorter, out)
                                                             : overlap_add(longer, shorter, out);
}

template std::int32_t full_convolution<float, 1>(const float*, std::size_t, const float*, std::size_t, float*);
template std::int32_t full_convolution<float, 2>(const float*, std::size_t, const float*, std::size_t, float*);
template std::int32_t full_convolution<double, 1>(const double*, std::size_t, const double*, std::size_t, double*);
template std::int32_t full_convolution<double, 2>(const double*, std::size_t, const double*, std::size_t, double*);

}  // namespace orin::conv
