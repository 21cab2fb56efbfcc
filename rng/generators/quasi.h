// quasi: digital sequences in base 2, point after point in Gray code order, coordinate after coordinate.
// SPDX-License-Identifier: MIT
//
// Method    Coordinate j of point i is the exclusive or of the columns v[c][j] over the set bits c of gray(i) = i ^ (i
//           >> 1) (Antonov and Saleev). gray(i) is linear in the bits of i, so that points come in blocks of P = 2^p:
//               point P q + k = base(q) ^ pattern(k),    base(q) = point P q,    pattern(k) = point k
//               base(q + 1) = base(q) ^ v[p - 1] ^ v[c],    c = p + number of trailing zeros of q + 1
//           The outputs of a block are one exclusive or of the flat table of patterns and the base, repeated.
// State     q, outputs delivered of the block, base. Point 0, all zero, counts as delivered from the start.
// Leapfrog  selects one coordinate alone: the same with one dimension, whose patterns stand in the state.
// Tables    The columns (32 rows of d words) and the patterns (P d words) stand in chunks that copies of the stream
//           share. Whoever finds them missing, or of another size than the dimension asks for, builds them anew.
#ifndef ORIN_RNG_GENERATORS_QUASI_H
#define ORIN_RNG_GENERATORS_QUASI_H

#include <algorithm>
#include <bit>

#include "rng/chunks.h"
#include "rng/generators/generators.h"
#include "rng/generators/sinks.h"
#include "service/late_binding.h"

namespace orin::rng {

constexpr uint32_t quasi_columns = 32;
constexpr uint32_t quasi_most_points = 64;  // of a block

// Points of a block: the patterns stay within 16 KB.
constexpr uint32_t quasi_points(uint32_t dimension) {
  uint32_t points = quasi_most_points;
  while (points * dimension > 4096) points /= 2;
  return points;
}

template <uint32_t MostDimensions>
struct QuasiState {
  uint32_t dimension;
  uint32_t selected;   // 0: all coordinates; k + 1: coordinate k alone
  uint32_t block;      // q
  uint32_t delivered;  // outputs of the block
  uint32_t base[MostDimensions];
  uint32_t patterns[quasi_most_points];  // of the selected coordinate
};

// Family gives most_dimensions, columns_id, patterns_id (chunks; equal ids: one chunk holds both) and
// columns(dimension, v): fills 32 rows of dimension words.
template <class Family>
class Quasi {
 public:
  using State = QuasiState<Family::most_dimensions>;

  static int32_t seed(void* stream, int32_t n, const uint32_t* seeds) {
    State& state = state_of<State>(stream);
    state = {};
    state.dimension = n > 0 ? seeds[0] : 1;
    state.dimension = state.delivered = dimension_of(state);
    Layout layout;
    return find_layout(stream, layout) ? JUN_RNG_OK : JUN_RNG_NO_MEMORY;
  }

  static int32_t leapfrog(void* stream, int32_t, uint32_t k) {
    State& state = state_of<State>(stream);
    if (k >= dimension_of(state)) return JUN_RNG_NO_LEAPFROG;
    Layout layout;
    if (!find_layout(stream, layout)) return JUN_RNG_NO_MEMORY;
    const Place at = layout.place(state);
    state.selected = k + 1;
    find_layout(stream, layout);
    state.patterns[0] = 0;
    for (uint32_t i = 1; i < layout.points; ++i) {
      state.patterns[i] = state.patterns[i - 1];
      layout.toggle(&state.patterns[i], trailing_zeros(i));
    }
    layout.move_to(state, {at.point + (at.coordinate != 0 ? 1 : 0), 0});
    return JUN_RNG_OK;
  }

  static int32_t skip(void* stream, uint64_t n) {
    if (n == 0) return JUN_RNG_OK;
    State& state = state_of<State>(stream);
    Layout layout;
    if (!find_layout(stream, layout)) return JUN_RNG_NO_MEMORY;
    const Place at = layout.place(state);
    const uint64_t coordinate = at.coordinate + n % layout.dimension;
    const uint64_t point = at.point + n / layout.dimension + coordinate / layout.dimension;
    layout.move_to(state, {static_cast<uint32_t>(point), static_cast<uint32_t>(coordinate % layout.dimension)});
    return JUN_RNG_OK;
  }

  template <class Sink>
  static int32_t generate(void* stream, std::size_t n, Sink& sink) {
    State& state = state_of<State>(stream);
    Layout layout;
    if (!find_layout(stream, layout)) return JUN_RNG_NO_MEMORY;
    const std::size_t outputs = layout.outputs();
    while (n != 0) {
      if (state.delivered >= outputs) layout.next_block(state);
      const std::size_t count = std::min(n, outputs - state.delivered);
      if (Sink::gains_from_coarse_words && is_coarse(layout, state.base)) {
        send<CoarseWords>(layout, state.base, state.delivered, count, sink);
      } else {
        send<__m128i>(layout, state.base, state.delivered, count, sink);
      }
      state.delivered += static_cast<uint32_t>(count);
      n -= count;
    }
    return JUN_RNG_OK;
  }

 private:
  struct Place {  // of the next output
    uint32_t point, coordinate;
  };

  static uint32_t trailing_zeros(uint32_t i) { return static_cast<uint32_t>(std::countr_zero(i)); }

  // Only a state that was loaded from a file can hold another dimension.
  static uint32_t dimension_of(const State& state) {
    return state.dimension >= 1 && state.dimension <= Family::most_dimensions ? state.dimension : 1;
  }

  // What a call works with: the whole points, or the selected coordinate as points of one dimension.
  struct Layout {
    uint32_t dimension, points;
    const uint32_t* columns;  // row c begins at columns + c * stride
    uint32_t stride;
    const uint32_t* patterns;

    uint32_t outputs() const { return points * dimension; }

    void toggle(uint32_t* x, uint32_t column) const {
      const uint32_t* v = columns + column * stride;
      uint32_t j = 0;
      for (; j + 4 <= dimension; j += 4) store_words(x + j, _mm_xor_si128(load_words(x + j), load_words(v + j)));
      for (; j < dimension; ++j) x[j] ^= v[j];
    }

    // 2^32 points are a period: after the last block bit 31 of the Gray code goes, and with it the last column.
    void next_block(State& state) const {
      const uint32_t p = trailing_zeros(points);
      toggle(state.base, p - 1);
      const uint32_t next = (state.block + 1) * points;
      toggle(state.base, next != 0 ? trailing_zeros(next) : quasi_columns - 1);
      state.block = next / points;
      state.delivered = 0;
    }

    Place place(const State& state) const {
      const uint32_t delivered = std::min(state.delivered, outputs());
      return {state.block * points + delivered / dimension, delivered % dimension};
    }

    // A block that is delivered to its end stays until the next output is asked for: what a state looks like does not
    // depend on the way to it.
    void move_to(State& state, Place at) const {
      state.block = at.point / points;
      state.delivered = at.point % points * dimension + at.coordinate;
      if (state.delivered == 0) {
        state.block = (at.point - points) / points;
        state.delivered = outputs();
      }
      std::fill_n(state.base, Family::most_dimensions, 0);
      const uint32_t first = state.block * points;
      for (uint32_t gray = first ^ (first >> 1); gray != 0; gray &= gray - 1) toggle(state.base, trailing_zeros(gray));
    }
  };

  // The early columns end in 8 zero bits, and so do the words of the early points. The patterns are made of the first
  // six columns; whether later ones take part is seen from the base.
  static bool is_coarse(const Layout& layout, const uint32_t* base) {
    uint32_t all = 0;
    for (uint32_t j = 0; j < layout.dimension; ++j) all |= base[j];
    return (all & 0xff) == 0;
  }

  // count outputs of a block from output `from` on, in groups of type Words.
  template <class Words, class Sink>
  static void send(const Layout& layout, const uint32_t* base, std::size_t from, std::size_t count, Sink& sink) {
    const std::size_t d = layout.dimension;
    const std::size_t period = 4 * d * (d < 8 ? 8 / d : 1);  // groups of four begin at the same coordinate again
    uint32_t repeated[5 * Family::most_dimensions + 40];
    const std::size_t first = from % d;
    const std::size_t needed = first + std::min(count, period) + 3;
    std::memcpy(repeated, base, d * sizeof *base);
    std::size_t filled = d;
    for (; filled + d <= needed; filled += d) std::memcpy(repeated + filled, base, d * sizeof *base);
    for (; filled < needed; ++filled) repeated[filled] = repeated[filled - d];

    const uint32_t* pattern = layout.patterns + from;
    Sink local = sink;
    const uint32_t* x = repeated + first;
    while (count >= 4) {
      const std::size_t words = std::min(count, period) & ~std::size_t{3};
      for (x = repeated + first; x < repeated + first + words; x += 4, pattern += 4)
        local.four(Words{_mm_xor_si128(load_words(pattern), load_words(x))});
      count -= words;
      if (words == period) x = repeated + first;
    }
    if (count != 0) local.some(Words{_mm_xor_si128(load_some_words(pattern, count), load_words(x))}, count);
    sink = local;
  }

  static bool find_layout(void* stream, Layout& layout) {
    State& state = state_of<State>(stream);
    const uint32_t d = dimension_of(state);
    const uint32_t points = quasi_points(d);
    const uint32_t column_words = quasi_columns * d, pattern_words = points * d;
    const auto fill_columns = [d](uint32_t* v) { Family::columns(d, v); };
    if constexpr (Family::columns_id == Family::patterns_id) {
      layout.columns = table(stream, Family::columns_id, column_words + pattern_words, [=](uint32_t* v) {
        fill_columns(v);
        fill_patterns(v, d, points, v + column_words);
      });
      layout.patterns = layout.columns + column_words;
    } else {
      layout.columns = table(stream, Family::columns_id, column_words, fill_columns);
      if (layout.columns == nullptr) return false;
      layout.patterns = table(stream, Family::patterns_id, pattern_words,
                              [&](uint32_t* patterns) { fill_patterns(layout.columns, d, points, patterns); });
      if (layout.patterns == nullptr) return false;
    }
    if (layout.columns == nullptr) return false;
    layout.stride = d;
    layout.dimension = d;
    layout.points = points;
    if (state.selected >= 1 && state.selected <= d) {
      layout.columns += state.selected - 1;
      layout.patterns = state.patterns;
      layout.dimension = 1;
      layout.points = quasi_most_points;
    }
    return true;
  }

  static void fill_patterns(const uint32_t* columns, uint32_t d, uint32_t points, uint32_t* patterns) {
    const Layout layout{d, points, columns, d, patterns};
    std::fill_n(patterns, d, 0);
    for (uint32_t i = 1; i < points; ++i) {
      std::memcpy(patterns + i * d, patterns + (i - 1) * d, d * sizeof *patterns);
      layout.toggle(patterns + i * d, trailing_zeros(i));
    }
  }

  // The chunk's data, of so many words; built and attached where it is missing. Null: no memory.
  template <class Fill>
  static const uint32_t* table(void* stream, int32_t id, uint32_t words, Fill fill) {
    const auto bytes = static_cast<int32_t>(words * sizeof(uint32_t));
    const JunStreamChunk* chunk = find_chunk(stream, id);
    if (chunk == nullptr || chunk->size != bytes || chunk->data == nullptr) {
      void* data = allocate_data(bytes);
      if (data == nullptr) return nullptr;
      fill(static_cast<uint32_t*>(data));
      chunk = attach_new(stream, id, data, bytes);
      if (chunk == nullptr) {
        service::deallocate(data);
        return nullptr;
      }
    }
    return static_cast<const uint32_t*>(chunk->data);
  }
};

template <class Engine>
int32_t init_quasi(int32_t method, void* stream, int32_t n, const uint32_t* params) {
  if (method == JUN_RNG_LEAPFROG && n != JUN_RNG_SELECT_COORDINATE) return JUN_RNG_NO_LEAPFROG;
  if (method == JUN_RNG_SKIP_AHEAD && n <= 0) return JUN_RNG_NO_SKIP_AHEAD;
  return init_stream<Engine>(method, stream, n, params);
}

}  // namespace orin::rng

#endif
