// sliding.cpp: tiles, groups and rows of sliding sums, see sliding.h.
// SPDX-License-Identifier: MIT
#include "conv/sliding.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "conv/simd.h"

namespace orin::conv {

namespace {

// Registers that a tile accumulates in. Six independent sums hide the latency of the adder and, with a tap and a
// product, fill the eight registers of the 32-bit build; eight amortise a tile's fixed cost better.
constexpr std::size_t tile_registers = sizeof(void*) == 8 ? 8 : 6;
constexpr std::size_t group_tiles = 32;
constexpr std::size_t chunk_taps = 128;

// What the loops of one type pair count.
template <class P>
struct Tiling {
  using Lanes = Simd<typename P::Sum>;
  static constexpr std::size_t vectors = tile_registers / P::parts;    // of outputs in a tile
  static constexpr std::size_t tile_scalars = vectors * Lanes::lanes;  // of outputs in a tile
  static constexpr std::size_t tile_outputs = tile_scalars / P::parts;
  static constexpr std::size_t group_outputs = group_tiles * tile_outputs;
  static constexpr std::size_t tile_sums = tile_registers * Lanes::lanes;  // scalars that a tile accumulates
  static constexpr std::size_t tap_scalars = P::parts * Lanes::lanes;      // of a tap spread over vectors
};

// sums += tap x for `count` taps; fresh sums start from zero. Real: sums[r] belongs to output vector r. Complex: sums[2
// r] takes the real parts of the taps, sums[2 r + 1] the imaginary ones.
template <class P, bool Fresh>
void accumulate_tile(typename P::Sum* sums, const typename P::Sum* taps, const typename P::Sum* x, std::size_t count) {
  using Sum = typename P::Sum;
  using Lanes = Simd<Sum>;
  typename Lanes::Vector sum[tile_registers];
  unrolled<tile_registers>([&](auto r) __attribute__((always_inline)) {
    sum[r] = Fresh ? Lanes::zero() : Lanes::load(sums + r * Lanes::lanes);
  });
  const auto take = [&](const Sum* tap, const Sum* at) __attribute__((always_inline)) {
    // Opaque to the compiler, which else keeps vectors of one tap for later ones in registers that it does not have.
    asm("" : "+r"(at));
    if constexpr (P::parts == 1) {
      const auto h = Lanes::load(tap);
      unrolled<tile_registers>([&](auto r) __attribute__((always_inline)) {
        sum[r] = sum[r] + h * Lanes::load_any(at + r * Lanes::lanes);
      });
    } else {
      const auto re = Lanes::load(tap), im = Lanes::load(tap + Lanes::lanes);
      unrolled<tile_registers / 2>([&](auto r) __attribute__((always_inline)) {
        const auto v = Lanes::load_any(at + r * Lanes::lanes);
        sum[2 * r] = sum[2 * r] + re * v;
        sum[2 * r + 1] = sum[2 * r + 1] + im * v;
      });
    }
  };
  constexpr std::size_t tap_scalars = Tiling<P>::tap_scalars;
  for (; count >= 2; count -= 2, x += 2 * P::parts, taps += 2 * tap_scalars) {
    take(taps, x);
    take(taps + tap_scalars, x + P::parts);
  }
  if (count > 0) take(taps, x);
  unrolled<tile_registers>([&](auto r)
                               __attribute__((always_inline)) { Lanes::store(sums + r * Lanes::lanes, sum[r]); });
}

// The outputs of a tile, in order, one vector after the other: f(place among the scalars, vector).
template <class P, class F>
[[gnu::always_inline]] inline void finish_tile(const typename P::Sum* sums, F&& f) {
  using Lanes = Simd<typename P::Sum>;
  unrolled<Tiling<P>::vectors>([&](auto r) __attribute__((always_inline)) {
    auto v = Lanes::load(sums + P::parts * r * Lanes::lanes);
    if constexpr (P::parts == 2) v = v + Lanes::times_i(Lanes::load(sums + (2 * r + 1) * Lanes::lanes));
    f(r * Lanes::lanes, v);
  });
}

// A row of a view: elements 0 .. count - 1, `stride` scalars apart.
template <class Data>
struct Row {
  const Data* origin;
  std::ptrdiff_t stride;
  std::int64_t count;

  const Data* at(std::int64_t k) const { return origin + static_cast<std::ptrdiff_t>(k) * stride; }
};

std::int64_t divide_up(std::int64_t a, std::int64_t b) { return a >= 0 ? (a + b - 1) / b : -(-a / b); }

// The sums of up to group_tiles tiles of neighbouring outputs of a row.
template <class P>
class Group {
  using Data = typename P::Data;
  using Sum = typename P::Sum;
  using T = Tiling<P>;

 public:
  explicit Group(std::size_t outputs) : tiles_((outputs + T::tile_outputs - 1) / T::tile_outputs) {}

  // Adds the sums of one row of taps over one row of the source; `position` meets tap 0 at output 0.
  void accumulate(const Row<Data>& taps, const Row<Data>& source, std::int64_t position, std::int64_t step) {
    if (step == 1) return accumulate_set(taps, source, position, 1);
    for (std::int64_t set = 0; set < std::min(step, taps.count); ++set) {
      const Row<Data> every{taps.at(set), static_cast<std::ptrdiff_t>(step) * taps.stride,
                            divide_up(taps.count - set, step)};
      accumulate_set(every, source, position + set, step);
    }
  }

  // Stores the first `count` outputs, or adds them to what stands there.
  void store(Data* out, std::ptrdiff_t stride, std::size_t count, bool add) {
    using Lanes = Simd<Sum>;
    if (fresh_) std::memset(sums_, 0, tiles_ * T::tile_sums * sizeof(Sum));
    const bool dense = std::is_same_v<Data, Sum> && stride == static_cast<std::ptrdiff_t>(P::parts);
    for (const Sum* sums = sums_; count > 0; sums += T::tile_sums) {
      const std::size_t here = std::min(count, T::tile_outputs);
      if (dense && here == T::tile_outputs) {
        if constexpr (std::is_same_v<Data, Sum>)
          finish_tile<P>(
              sums, [&](std::size_t at, auto v) __attribute__((always_inline)) {
                Lanes::store_any(out + at, add ? Lanes::load_any(out + at) + v : v);
              });
      } else {
        alignas(16) Sum outputs[T::tile_scalars];
        finish_tile<P>(
            sums, [&](std::size_t at, auto v) __attribute__((always_inline)) { Lanes::store(outputs + at, v); });
        Data* to = out;
        for (const Sum *from = outputs, *end = from + here * P::parts; from != end; to += stride)
          for (std::size_t p = 0; p < P::parts; ++p, ++from)
            to[p] = static_cast<Data>(add ? static_cast<Sum>(to[p]) + *from : *from);
      }
      out += static_cast<std::ptrdiff_t>(here) * stride;
      count -= here;
    }
  }

 private:
  static constexpr std::size_t window_elements = chunk_taps + T::group_outputs;

  // Element n of the set's source is source[position + step n].
  void accumulate_set(const Row<Data>& taps, const Row<Data>& source, std::int64_t position, std::int64_t step) {
    const auto outputs = static_cast<std::int64_t>(tiles_ * T::tile_outputs);
    const std::int64_t valid_begin = divide_up(-position, step);
    const std::int64_t valid_end = divide_up(source.count - position, step);
    // Taps outside this range meet the source at no output of the group.
    const std::int64_t begin = std::max<std::int64_t>(0, valid_begin - outputs + 1);
    const std::int64_t end = std::min(taps.count, valid_end);
    const bool in_place =
        std::is_same_v<Data, Sum> && step == 1 && source.stride == static_cast<std::ptrdiff_t>(P::parts);
    for (std::int64_t k = begin; k < end; k += chunk_taps) {
      const std::int64_t count = std::min<std::int64_t>(chunk_taps, end - k);
      spread(taps, k, count);
      const std::int64_t needed = count + outputs - 1;
      const Sum* x = window_;
      if (in_place && k >= valid_begin && k + needed <= valid_end) {
        if constexpr (std::is_same_v<Data, Sum>) x = source.at(position + k);
      } else {
        gather(source, position + step * k, step, valid_begin - k, std::min(valid_end - k, needed), needed);
      }
      const auto accumulate = fresh_ ? accumulate_tile<P, true> : accumulate_tile<P, false>;
      for (std::size_t tile = 0; tile < tiles_; ++tile) {
        const auto offset = static_cast<std::int64_t>(tile * T::tile_outputs);
        const std::int64_t from = std::clamp<std::int64_t>(
            valid_begin - k - offset - static_cast<std::int64_t>(T::tile_outputs) + 1, 0, count);
        const std::int64_t to = std::clamp<std::int64_t>(valid_end - k - offset, from, count);
        accumulate(sums_ + tile * T::tile_sums, spread_ + static_cast<std::size_t>(from) * T::tap_scalars,
                   x + P::parts * static_cast<std::size_t>(offset + from), static_cast<std::size_t>(to - from));
      }
      fresh_ = false;
    }
  }

  // Taps k .. k + count - 1, each part repeated over a vector.
  void spread(const Row<Data>& taps, std::int64_t k, std::int64_t count) {
    using Lanes = Simd<Sum>;
    const Data* tap = taps.at(k);
    for (Sum *to = spread_, *end = to + static_cast<std::size_t>(count) * T::tap_scalars; to != end; tap += taps.stride)
      for (std::size_t p = 0; p < P::parts; ++p, to += Lanes::lanes)
        Lanes::store(to, Lanes::splat(static_cast<Sum>(tap[p])));
  }

  // window_[n] = source[position + step n] for n in begin .. end - 1, zeros elsewhere up to `count`.
  void gather(const Row<Data>& source, std::int64_t position, std::int64_t step, std::int64_t begin, std::int64_t end,
              std::int64_t count) {
    begin = std::clamp<std::int64_t>(begin, 0, count);
    end = std::clamp<std::int64_t>(end, begin, count);
    const auto scalars = [](std::int64_t n) { return P::parts * static_cast<std::size_t>(n); };
    std::memset(window_, 0, scalars(begin) * sizeof(Sum));
    if (begin < end)
      copy_row<P::parts>(source.at(position + step * begin), static_cast<std::ptrdiff_t>(step) * source.stride,
                         window_ + scalars(begin), static_cast<std::ptrdiff_t>(P::parts),
                         static_cast<std::ptrdiff_t>(end - begin));
    std::memset(window_ + scalars(end), 0, scalars(count - end) * sizeof(Sum));
  }

  std::size_t tiles_;
  bool fresh_ = true;  // nothing in the sums yet
  alignas(16) Sum sums_[group_tiles * T::tile_sums];
  alignas(16) Sum spread_[chunk_taps * T::tap_scalars];
  alignas(16) Sum window_[window_elements * P::parts];
};

// Rows of taps and of the source that meet in one row of outputs, dimension after dimension down to the rows.
template <class P>
void accumulate_rows(const Sliding<P>& sums, Group<P>& group, int d, const std::ptrdiff_t* index,
                     const typename P::Data* taps, const typename P::Data* source, std::int64_t position) {
  if (d == 0) {
    group.accumulate({taps, sums.taps.stride[0], sums.taps.shape[0]},
                     {source, sums.source.stride[0], sums.source.shape[0]}, position, sums.step[0]);
    return;
  }
  const std::int64_t meets = sums.first[d] + sums.step[d] * index[d];
  const std::int64_t begin = std::max<std::int64_t>(0, -meets);
  const std::int64_t end = std::min<std::int64_t>(sums.taps.shape[d], sums.source.shape[d] - meets);
  for (std::int64_t k = begin; k < end; ++k)
    accumulate_rows(sums, group, d - 1, index, taps + static_cast<std::ptrdiff_t>(k) * sums.taps.stride[d],
                    source + static_cast<std::ptrdiff_t>(meets + k) * sums.source.stride[d], position);
}

}  // namespace

template <class P>
void slide(const Sliding<P>& sums) {
  constexpr auto group_outputs = static_cast<std::int64_t>(Tiling<P>::group_outputs);
  const std::int64_t length = sums.out.shape[0];
  for_each_row<1>(sums.out.dims, sums.out.shape, {sums.out.stride},
                  [&](const std::ptrdiff_t* offset, const std::ptrdiff_t* index) {
                    for (std::int64_t i = 0; i < length; i += group_outputs) {
                      const auto count = static_cast<std::size_t>(std::min(group_outputs, length - i));
                      Group<P> group(count);
                      accumulate_rows(sums, group, sums.out.dims - 1, index, sums.taps.origin, sums.source.origin,
                                      sums.first[0] + sums.step[0] * i);
                      group.store(sums.out.origin + offset[0] + static_cast<std::ptrdiff_t>(i) * sums.out.stride[0],
                                  sums.out.stride[0], count, sums.add);
                    }
                  });
}

template void slide<SS>(const Sliding<SS>&);
template void slide<SD>(const Sliding<SD>&);
template void slide<DD>(const Sliding<DD>&);
template void slide<CC>(const Sliding<CC>&);
template void slide<CZ>(const Sliding<CZ>&);
template void slide<ZZ>(const Sliding<ZZ>&);

}  // namespace orin::conv
