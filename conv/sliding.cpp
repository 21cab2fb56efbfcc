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
// product, fill the eight registers of the 32-bit build; twelve of sixteen amortise a tile's fixed cost better.
constexpr std::size_t tile_registers = sizeof(void*) == 8 ? 12 : 6;
// Twelve are enough to take in steps at the ends of the source.
constexpr bool ends_in_steps = tile_registers == 12;
constexpr std::size_t group_tiles = 32;
constexpr std::size_t chunk_taps = 128;

// A place within a group and its window: as wide as a register. Positions in the source are 64-bit, clamped to such places.
using Place = std::ptrdiff_t;

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
  static constexpr std::size_t half_vectors = (vectors + 1) / 2;  // of outputs in a tile half of which is asked
  static constexpr std::size_t half_outputs = half_vectors * Lanes::lanes / P::parts;
};

// sums += tap v, for the output vectors First .. Last - 1 of a tile, whose source vectors begin at `at`. Real: sums[r]
// belongs to output vector r. Complex: sums[2 r] takes the real parts of the taps, sums[2 r + 1] the imaginary ones.
template <class P, std::size_t First, std::size_t Last>
[[gnu::always_inline]] inline void take_tap(typename Simd<typename P::Sum>::Vector* sums, const typename P::Sum* tap,
                                            const typename P::Sum* at) {
  using Lanes = Simd<typename P::Sum>;
  // Opaque to the compiler, which else keeps vectors of one tap for later ones in registers that it does not have.
  asm("" : "+r"(at));
  const auto first_part = Lanes::load(tap);
  unrolled<Last - First>([&](auto i) __attribute__((always_inline)) {
    constexpr std::size_t r = First + i;
    const auto v = Lanes::load_any(at + r * Lanes::lanes);
    sums[P::parts * r] = sums[P::parts * r] + first_part * v;
    if constexpr (P::parts == 2) sums[2 * r + 1] = sums[2 * r + 1] + Lanes::load(tap + Lanes::lanes) * v;
  });
}

// The sums of `Vectors` vectors of outputs in registers.
template <class P, std::size_t Vectors>
struct TileSums {
  using Sum = typename P::Sum;
  using Lanes = Simd<Sum>;
  static constexpr std::size_t registers = P::parts * Vectors;

  typename Lanes::Vector of[registers];

  [[gnu::always_inline]] explicit TileSums(const Sum* sums) {
    unrolled<registers>([&](auto r)
                            __attribute__((always_inline)) { of[r] = Lanes::load_any(sums + r * Lanes::lanes); });
  }
  [[gnu::always_inline]] TileSums() {
    unrolled<registers>([&](auto r) __attribute__((always_inline)) { of[r] = Lanes::zero(); });
  }
  [[gnu::always_inline]] void store(Sum* sums) const {
    unrolled<registers>([&](auto r)
                            __attribute__((always_inline)) { Lanes::store_any(sums + r * Lanes::lanes, of[r]); });
  }
};

// Adds `count` taps to the sums of a tile, or of its lower vectors; fresh sums start from zero.
template <class P, std::size_t Vectors, bool Fresh>
void accumulate_tile(typename P::Sum* sums, const typename P::Sum* taps, const typename P::Sum* x, std::size_t count) {
  constexpr std::size_t tap_scalars = Tiling<P>::tap_scalars;
  auto tile = [&]() __attribute__((always_inline)) {
    if constexpr (Fresh)
      return TileSums<P, Vectors>();
    else
      return TileSums<P, Vectors>(sums);
  }
  ();
  for (; count >= 2; count -= 2, x += 2 * P::parts, taps += 2 * tap_scalars) {
    take_tap<P, 0, Vectors>(tile.of, taps, x);
    take_tap<P, 0, Vectors>(tile.of, taps + tap_scalars, x + P::parts);
  }
  if (count > 0) take_tap<P, 0, Vectors>(tile.of, taps, x);
  tile.store(sums);
}

// The same at the ends of the source, where output i of the tile meets it with the taps for which begin <= k + i < end:
// vectors of outputs join from the upper end of the tile as the taps go on, and leave from there.
template <class P, std::size_t Vectors>
void accumulate_end_tile(typename P::Sum* sums, const typename P::Sum* taps, const typename P::Sum* x, Place count,
                         Place begin, Place end) {
  using T = Tiling<P>;
  constexpr auto per_vector = static_cast<Place>(T::Lanes::lanes / P::parts);
  TileSums<P, Vectors> tile(sums);
  Place k = 0;
  const auto take_until = [&]<std::size_t First, std::size_t Last>(Place stop) __attribute__((always_inline)) {
    for (stop = std::min(stop, count); k < stop; ++k, taps += T::tap_scalars, x += P::parts)
      take_tap<P, First, Last>(tile.of, taps, x);
  };
  const auto joins = [&](std::size_t r) { return begin - static_cast<Place>(r + 1) * per_vector + 1; };
  const auto leaves = [&](std::size_t r) { return end - static_cast<Place>(r) * per_vector; };
  // In steps of four sums, the fewest that hide the latency of the adder.
  constexpr std::size_t step = 4 / P::parts, steps = (Vectors - 1) / step;
  unrolled<steps>([&](auto i) __attribute__((always_inline)) {
    constexpr std::size_t first = Vectors - (i + 1) * step;
    take_until.template operator()<first, Vectors>(joins(first - 1));
  });
  take_until.template operator()<0, Vectors>(leaves(steps * step));
  unrolled<steps>([&](auto i) __attribute__((always_inline)) {
    constexpr std::size_t last = (steps - i) * step;
    take_until.template operator()<0, last>(leaves(last - step));
  });
  tile.store(sums);
}

// The same for taps that are infinite or NaN, in a tile where not every tap meets the source at every output: output i
// takes the taps for which begin <= k + i < end, so that nothing multiplies the zeros beyond the ends of the source.
template <class P>
[[gnu::cold, gnu::noinline]] void accumulate_strictly(typename P::Sum* sums, const typename P::Sum* taps,
                                                      const typename P::Sum* x, Place count, Place outputs, Place begin,
                                                      Place end) {
  using T = Tiling<P>;
  constexpr std::size_t lanes = T::Lanes::lanes;
  for (Place k = 0; k < count; ++k, taps += T::tap_scalars, x += P::parts) {
    for (Place i = std::max<Place>(0, begin - k); i < std::min(outputs, end - k); ++i)
      for (std::size_t p = 0; p < P::parts; ++p) {
        const std::size_t scalar = P::parts * static_cast<std::size_t>(i) + p;
        typename P::Sum* sum = sums + scalar / lanes * P::parts * lanes + scalar % lanes;
        for (std::size_t q = 0; q < P::parts; ++q) sum[q * lanes] += taps[q * lanes] * x[scalar];
      }
  }
}

// Vector r of the outputs of a tile.
template <class P>
[[gnu::always_inline]] inline auto finished(const typename P::Sum* sums, std::size_t r) {
  using Lanes = Simd<typename P::Sum>;
  const auto v = Lanes::load(sums + P::parts * r * Lanes::lanes);
  if constexpr (P::parts == 1)
    return v;
  else
    return v + Lanes::times_i(Lanes::load(sums + (2 * r + 1) * Lanes::lanes));
}

// A row of a view: elements 0 .. count - 1, `stride` scalars apart.
template <class Data>
struct Row {
  const Data* origin;
  std::ptrdiff_t stride;
  std::int64_t count;

  const Data* at(std::int64_t k) const { return origin + static_cast<std::ptrdiff_t>(k) * stride; }
};

// Scalars between elements `step` apart; a single element has no neighbour, and the product may not exist.
std::ptrdiff_t spacing(std::int64_t step, std::ptrdiff_t stride, std::int64_t elements) {
  return elements > 1 ? static_cast<std::ptrdiff_t>(step) * stride : 0;
}

std::int64_t divide_up(std::int64_t a, std::int64_t b) {
  if (b == 1) return a;  // the common step, and divisions are slow
  return a >= 0 ? (a + b - 1) / b : -(-a / b);
}

// The sums of up to group_tiles tiles of neighbouring outputs of a row.
template <class P>
class Group {
  using Data = typename P::Data;
  using Sum = typename P::Sum;
  using T = Tiling<P>;
  using Lanes = typename T::Lanes;

 public:
  Group(Data* out, std::ptrdiff_t stride, std::size_t outputs, bool add)
      : out_(out),
        stride_(stride),
        add_(add),
        dense_(std::is_same_v<Data, Sum> && stride == parts),
        tiles_((outputs + T::tile_outputs - 1) / T::tile_outputs),
        outputs_at_the_end_(outputs - (tiles_ - 1) * T::tile_outputs) {}

  // Adds the sums of one row of taps over one row of the source; `position` meets tap 0 at output 0.
  void accumulate(const Row<Data>& taps, const Row<Data>& source, std::int64_t position, std::int64_t step) {
    if (step == 1) return accumulate_set(taps, source, position, 1);
    for (std::int64_t set = 0; set < std::min(step, taps.count); ++set) {
      const std::int64_t count = divide_up(taps.count - set, step);
      accumulate_set({taps.at(set), spacing(step, taps.stride, count), count}, source, position + set, step);
    }
  }

  // Stores the outputs, or adds them to what stands there.
  void store() {
    for (std::size_t tile = 0; tile < tiles_; ++tile) {
      if (in_output(tile)) continue;
      Data* out = out_ + static_cast<std::ptrdiff_t>(tile * T::tile_outputs) * stride_;
      const Sum* const sums = sums_ + tile * T::tile_sums;
      const std::size_t scalars = outputs(tile) * P::parts;
      std::size_t r = 0;
      if constexpr (std::is_same_v<Data, Sum>) {
        const auto full_vectors = [&](auto order) __attribute__((always_inline)) {
          for (; (r + 1) * Lanes::lanes <= scalars; ++r, out += per_vector * stride_) {
            Sum* const to = stride_ > 0 ? out : out + (per_vector - 1) * stride_;
            const auto v = order(finished<P>(sums, r));
            Lanes::store_any(to, add_ ? Lanes::load_any(to) + v : v);
          }
        };
        if (dense_) full_vectors([](auto v) { return v; });
        if (stride_ == -parts) full_vectors([](auto v) { return Lanes::template reversed<P::parts>(v); });
      }
      for (; r * Lanes::lanes < scalars; ++r) {
        alignas(16) Sum elements[Lanes::lanes];
        Lanes::store(elements, finished<P>(sums, r));
        for (std::size_t i = 0; i < std::min(Lanes::lanes, scalars - r * Lanes::lanes); i += P::parts, out += stride_)
          for (std::size_t p = 0; p < P::parts; ++p)
            out[p] = static_cast<Data>(add_ ? static_cast<Sum>(out[p]) + elements[i + p] : elements[i + p]);
      }
    }
  }

 private:
  static constexpr auto parts = static_cast<std::ptrdiff_t>(P::parts);
  static constexpr auto per_vector = static_cast<std::ptrdiff_t>(Lanes::lanes / P::parts);
  static constexpr std::size_t window_elements = chunk_taps + T::group_outputs;
  bool whole(std::size_t tile) const { return tile + 1 < tiles_ || outputs_at_the_end_ == T::tile_outputs; }
  std::size_t outputs(std::size_t tile) const { return tile + 1 < tiles_ ? T::tile_outputs : outputs_at_the_end_; }
  // Whether the sums of a tile grow where its outputs belong: real sums stand in their order.
  bool in_output(std::size_t tile) const { return P::parts == 1 && dense_ && !add_ && whole(tile); }
  Sum* sums(std::size_t tile) {
    if constexpr (std::is_same_v<Data, Sum>)
      if (in_output(tile)) return out_ + tile * T::tile_outputs;
    return sums_ + tile * T::tile_sums;
  }

  // Element n of the set's source is source[position + step n].
  void accumulate_set(const Row<Data>& taps, const Row<Data>& source, std::int64_t position, std::int64_t step) {
    constexpr auto width = static_cast<Place>(T::tile_outputs);
    const auto tiles = static_cast<Place>(tiles_);
    const std::int64_t valid_begin = divide_up(-position, step);
    const std::int64_t valid_end = divide_up(source.count - position, step);
    // Taps outside this range meet the source at no output of the group.
    const std::int64_t begin = std::max<std::int64_t>(0, valid_begin - tiles * width + 1);
    const std::int64_t end = std::min(taps.count, valid_end);
    const bool in_place = std::is_same_v<Data, Sum> && step == 1 && source.stride == parts;
    for (std::int64_t k = begin; k < end; k += chunk_taps) {
      const auto count = static_cast<Place>(std::min<std::int64_t>(chunk_taps, end - k));
      const std::int64_t at = position + step * k;
      spread(taps, k, count);
      const auto clamped = [](std::int64_t place) {
        constexpr auto beyond = static_cast<std::int64_t>(window_elements);
        return static_cast<Place>(std::clamp(place, -beyond, beyond));
      };
      const Chunk chunk{count, clamped(valid_begin - k), clamped(valid_end - k),
                        all_finite({taps.at(k), taps.stride, count})};
      // Tiles that meet the source with every tap at every output, first .. last - 1, can read it in place.
      Place first = (std::max<Place>(0, chunk.begin) + width - 1) / width;
      Place last = std::min(std::max<Place>(0, chunk.end - count + 1) / width, tiles);
      if (!in_place || first >= last) first = last = tiles;
      if (first > 0) gather(source, at, step, chunk, 0, first * width + count - 1);
      if (last < tiles) gather(source, at, step, chunk, last * width, tiles * width + count - 1);
      for (Place tile = 0; tile < tiles; ++tile) {
        const Sum* x = window_;
        if constexpr (std::is_same_v<Data, Sum>)
          if (tile >= first && tile < last) x = source.at(at);
        const Place offset = tile * width;
        add_tile(static_cast<std::size_t>(tile), x + parts * offset,
                 {count, chunk.begin - offset, chunk.end - offset, chunk.finite});
      }
      fresh_ = false;
    }
  }

  // Taps that are taken together. At output i the source is there for the taps k with begin <= k + i < end.
  struct Chunk {
    Place count, begin, end;
    bool finite;
  };

  void add_tile(std::size_t tile, const Sum* x, const Chunk& taps) {
    if (outputs(tile) <= T::half_outputs)
      add_vectors<T::half_vectors>(tile, x, taps);
    else
      add_vectors<T::vectors>(tile, x, taps);
  }
  template <std::size_t vectors>
  void add_vectors(std::size_t tile, const Sum* x, const Chunk& taps) {
    constexpr auto last = static_cast<Place>(vectors) * per_vector - 1;  // output
    // Taps from .. to - 1 meet the source at some output.
    const Place from = std::clamp<Place>(taps.begin - last, 0, taps.count);
    const Place to = std::clamp<Place>(taps.end, from, taps.count);
    const Place count = to - from, begin = taps.begin - from, end = taps.end - from;
    Sum* const to_sums = sums(tile);
    const Sum* const spread_taps = spread_ + static_cast<std::size_t>(from) * T::tap_scalars;
    x += parts * from;
    const auto accumulate = fresh_ ? accumulate_tile<P, vectors, true> : accumulate_tile<P, vectors, false>;
    const bool whole = begin <= 0 && count + last <= end;
    if (whole || (taps.finite && !ends_in_steps))
      return accumulate(to_sums, spread_taps, x, static_cast<std::size_t>(count));
    if (fresh_) accumulate(to_sums, spread_taps, x, 0);
    if (!taps.finite)
      accumulate_strictly<P>(to_sums, spread_taps, x, count, static_cast<Place>(outputs(tile)), begin, end);
    else
      accumulate_end_tile<P, vectors>(to_sums, spread_taps, x, count, begin, end);
  }

  // Taps k .. k + count - 1, each part repeated over a vector.
  void spread(const Row<Data>& taps, std::int64_t k, Place count) {
    const Data* tap = taps.at(k);
    Sum *to = spread_, *const end = to + static_cast<std::size_t>(count) * T::tap_scalars;
    if constexpr (std::is_same_v<Data, Sum> && parts == 1)
      if (taps.stride == 1)
        for (; end - to >= static_cast<Place>(Lanes::lanes * Lanes::lanes); tap += Lanes::lanes) {
          const auto v = Lanes::load_any(tap);
          unrolled<Lanes::lanes>([&](auto lane) __attribute__((always_inline)) {
            Lanes::store(to, Lanes::template splat_lane<lane>(v));
            to += Lanes::lanes;
          });
        }
    for (; to != end; tap += taps.stride)
      for (std::size_t p = 0; p < P::parts; ++p, to += Lanes::lanes)
        Lanes::store(to, Lanes::splat(static_cast<Sum>(tap[p])));
  }

  static bool all_finite(const Row<Data>& taps) {
    using In = Simd<Data>;
    auto odd = In::zero();
    std::int64_t k = 0;
    constexpr auto together = static_cast<Place>(In::lanes / P::parts);
    if (taps.stride == parts)
      for (; k + together <= taps.count; k += together) odd = In::either(odd, In::not_finite(In::load_any(taps.at(k))));
    for (; k < taps.count; ++k)
      for (std::size_t p = 0; p < P::parts; ++p) odd = In::either(odd, In::not_finite(In::splat(taps.at(k)[p])));
    return !In::any(odd);
  }

  // window_[n] = source[position + step n] for n in from .. to - 1, zeros where that is beyond its ends.
  void gather(const Row<Data>& source, std::int64_t position, std::int64_t step, const Chunk& taps, Place from,
              Place to) {
    const Place begin = std::clamp(taps.begin, from, to), end = std::clamp(taps.end, begin, to);
    const auto window = [this](Place n) { return window_ + P::parts * static_cast<std::size_t>(n); };
    std::fill(window(from), window(begin), Sum(0));
    if (begin < end)
      copy_row<P::parts>(source.at(position + step * begin), spacing(step, source.stride, end - begin), window(begin),
                         static_cast<std::ptrdiff_t>(P::parts), static_cast<std::ptrdiff_t>(end - begin));
    std::fill(window(end), window(to), Sum(0));
  }

  Data* out_;
  std::ptrdiff_t stride_;
  bool add_, dense_;
  std::size_t tiles_, outputs_at_the_end_;
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
                      Group<P> group(sums.out.origin + offset[0] + static_cast<std::ptrdiff_t>(i) * sums.out.stride[0],
                                     sums.out.stride[0], count, sums.add);
                      accumulate_rows(sums, group, sums.out.dims - 1, index, sums.taps.origin, sums.source.origin,
                                      sums.first[0] + sums.step[0] * i);
                      group.store();
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
