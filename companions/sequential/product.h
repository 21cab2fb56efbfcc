// product: C := alpha A B + beta C, whole or one triangle, the one routine in which the time of all others goes.
// SPDX-License-Identifier: MIT
//
// Method    C is cut into tiles of a few registers. Panels of A and B are packed so that a tile reads both in order; B
//           is packed with each element repeated over a packet, so that the inner loop is nothing but load, multiply,
//           add. Eigen's packets do the arithmetic; its own blocked product is not used: it loads and spreads B in the
//           inner loop, takes its panels from the heap, and its sums depend on the place of an element in the matrix.
// Blocking  inner index in runs of `depth_block`, rows of A in `row_block` (the panel stays in the second-level cache),
//           columns of B in `column_block`. Constants, not queries: the same bits on every processor.
// Rounding  an element gets  beta c + alpha s1,  then  + alpha s2 ...,  s being the sum over one run in order of the
//           inner index. Neither tile size nor blocking of rows and columns enters.
// Memory    panels of small products live on the stack; so do those of all others when the heap has no memory left.
// Bound by  two multiplications and two additions per cycle; in the 32-bit build a tile is 1 packet x 4 columns (eight
//           registers), in the 64-bit build 2 x 4.
// Source    Goto, van de Geijn: Anatomy of high-performance matrix multiplication, ACM TOMS 34 (2008).
#ifndef ORIN_COMPANIONS_SEQUENTIAL_PRODUCT_H
#define ORIN_COMPANIONS_SEQUENTIAL_PRODUCT_H

#include "../core/aligned_memory.h"
#include "packets.h"

#include <algorithm>
#include <iterator>

namespace orin::sequential {

// Which elements of the result are computed; the others are neither read nor written.
enum class Part { all, lower, upper };

inline constexpr Part transposed(Part part) noexcept {
  return part == Part::all ? Part::all : part == Part::lower ? Part::upper : Part::lower;
}

template <class T>
struct Tile {
  static constexpr Index packets = sizeof(void*) == 8 ? 2 : 1;
  static constexpr Index rows = packets * lanes<T>;
  static constexpr Index columns = 4;
  alignas(16) T sums[columns][rows];
};

inline constexpr Index depth_block = 256;

inline constexpr Index round_down(Index value, Index unit) noexcept { return value / unit * unit; }
inline constexpr Index round_up(Index value, Index unit) noexcept { return round_down(value + unit - 1, unit); }

// Room for packed panels of A (row_block x depth) and B (depth x column_block), sized for the product at hand. An A
// that is small is held whole, packed once, and met by B a few columns at a time: work memory then stays below the size
// from which the system's allocator hands out fresh pages.
template <class T>
class Panels {
 public:
  Panels(Index rows, Index columns, Index depth) noexcept {
    const Index run = std::min(depth, depth_block), all_rows = round_up(rows, Tile<T>::rows);
    holds_a_ = run == depth && all_rows * run <= small_a;
    row_block_ = holds_a_ ? all_rows : std::min(all_rows, most_rows);
    column_block_ = holds_a_ ? columns_in(small_b, run) : most_columns;
    column_block_ = std::min(column_block_, round_up(columns, Tile<T>::columns));

    const std::size_t count = static_cast<std::size_t>((row_block_ + column_block_ * lanes<T>)*run);
    if (count > std::size(stack_)) heap_ = static_cast<T*>(core::allocate_aligned(count * sizeof(T), 64));
    if (count > std::size(stack_) && heap_ == nullptr) {
      row_block_ = std::min(row_block_, round_down(half_stack / run, Tile<T>::rows));
      column_block_ = std::min(column_block_, columns_in(half_stack, run));
      holds_a_ = false;
    }
    b_ = heap_ != nullptr ? heap_ : stack_;
    a_ = b_ + column_block_ * lanes<T> * run;
  }
  ~Panels() { core::release_aligned(heap_); }
  Panels(const Panels&) = delete;
  Panels& operator=(const Panels&) = delete;

  T* a() const noexcept { return a_; }
  T* b() const noexcept { return b_; }
  Index row_block() const noexcept { return row_block_; }
  Index column_block() const noexcept { return column_block_; }
  bool holds_a() const noexcept { return holds_a_; }

 private:
  static constexpr Index most_rows = 96, most_columns = 128;
  static constexpr Index small_a = 81920 / sizeof(T), small_b = 32768 / sizeof(T), half_stack = 16384 / sizeof(T);

  // Columns of B that fit into so many elements.
  static constexpr Index columns_in(Index elements, Index run) noexcept {
    return round_down(elements / (run * lanes<T>), Tile<T>::columns);
  }
  static_assert(half_stack / depth_block >= Tile<T>::rows && columns_in(half_stack, depth_block) > 0);

  bool holds_a_;
  Index row_block_, column_block_;
  T* a_;
  T* b_;
  T* heap_ = nullptr;
  alignas(16) T stack_[2 * half_stack];
};

// Slivers of Tile::rows rows, each stored depth-major; rows beyond the matrix are zero.
template <class T>
void pack_rows(MatrixView<const T> a, Index rows, Index depth, T* out) noexcept {
  constexpr Index height = Tile<T>::rows;
  for (Index i = 0; i < rows; i += height) {
    const Index live = std::min(height, rows - i);
    const T* from = &a(i, 0);
    if (live < height)
      for (Index p = 0; p < depth; ++p, from += a.column_step, out += height)
        for (Index r = 0; r < height; ++r) out[r] = r < live ? from[r * a.row_step] : T(0);
    else if (a.row_step == 1)
      for (Index p = 0; p < depth; ++p, from += a.column_step, out += height)
#pragma GCC unroll 4
        for (Index r = 0; r < height; r += lanes<T>) store_aligned(out + r, load(from + r));
    else
      for (Index p = 0; p < depth; ++p, from += a.column_step, out += height)
#pragma GCC unroll 8
        for (Index r = 0; r < height; ++r) out[r] = from[r * a.row_step];
  }
}

// Slivers of Tile::columns columns, each stored depth-major with every element repeated over a packet.
template <class T>
void pack_columns(MatrixView<const T> b, Index columns, Index depth, T* out) noexcept {
  constexpr Index width = Tile<T>::columns;
  for (Index j = 0; j < columns; j += width) {
    const Index live = std::min(width, columns - j);
    const T* from = &b(0, j);
    if (live == width)
      for (Index p = 0; p < depth; ++p, from += b.row_step)
#pragma GCC unroll 4
        for (Index c = 0; c < width; ++c, out += lanes<T>) store_aligned(out, spread(from[c * b.column_step]));
    else
      for (Index p = 0; p < depth; ++p, from += b.row_step)
        for (Index c = 0; c < width; ++c, out += lanes<T>)
          store_aligned(out, spread(c < live ? from[c * b.column_step] : T(0)));
  }
}

// sums[c][r] = sum over p of a[p][r] b[p][c], in order of p.
template <class T>
void multiply_slivers(const T* a, const T* b, Index depth, Tile<T>& tile) noexcept {
  constexpr int packets = Tile<T>::packets, columns = Tile<T>::columns;
  Packet<T> sums[columns][packets];
#pragma GCC unroll 4
  for (int c = 0; c < columns; ++c)
#pragma GCC unroll 4
    for (int r = 0; r < packets; ++r) sums[c][r] = spread(T(0));
  for (Index p = 0; p < depth; ++p) {
#pragma GCC unroll 4
    for (int c = 0; c < columns; ++c) {
      const auto factor = load_aligned(b + c * lanes<T>);
#pragma GCC unroll 4
      for (int r = 0; r < packets; ++r) sums[c][r] = padd(sums[c][r], pmul(load_aligned(a + r * lanes<T>), factor));
    }
    a += Tile<T>::rows;
    b += columns * lanes<T>;
  }
#pragma GCC unroll 4
  for (int c = 0; c < columns; ++c)
#pragma GCC unroll 4
    for (int r = 0; r < packets; ++r) store_aligned(&tile.sums[c][r * lanes<T>], sums[c][r]);
}

// c := beta c + alpha sums, c not being read where beta is 0: a whole tile whose rows lie side by side in memory ...
template <class T>
void merge_tile(const Tile<T>& tile, T alpha, T beta, T* c, Index column_step) noexcept {
  const auto take = spread(alpha), keep = spread(beta);
#pragma GCC unroll 4
  for (int q = 0; q < Tile<T>::columns; ++q, c += column_step)
#pragma GCC unroll 4
    for (int r = 0; r < Tile<T>::packets; ++r) {
      auto value = pmul(take, load_aligned(&tile.sums[q][r * lanes<T>]));
      if (beta != 0) value = padd(pmul(keep, load(c + r * lanes<T>)), value);
      store(c + r * lanes<T>, value);
    }
}

// ... and rows [from, to) of one column.
template <class T>
void merge_column(const T* sums, Index from, Index to, T alpha, T beta, T* c, Index step) noexcept {
  for (Index r = from; r < to; ++r) {
    const T value = alpha * sums[r];
    c[r * step] = beta != 0 ? beta * c[r * step] + value : value;
  }
}

// C := beta C on the part, 0 without reading.
template <class T>
void scale(Index rows, Index columns, T beta, MatrixView<T> c, Part part) noexcept {
  if (beta == 1) return;
  for (Index j = 0; j < columns; ++j) {
    const Index from = part == Part::lower ? std::min(j, rows) : 0;
    const Index to = part == Part::upper ? std::min(j + 1, rows) : rows;
    for (Index i = from; i < to; ++i) c(i, j) = beta != 0 ? beta * c(i, j) : T(0);
  }
}

// A block of C, whose first element is `diagonal` rows above that of the same number of the column (row + diagonal =
// column on the diagonal of C), from one pair of packed panels. Row i of the panel of A holds zeros from depth
// `factor_row + i` on (exclusive) where `factor` is lower, before it where it is upper; those are not multiplied.
template <class T>
void multiply_block(const Panels<T>& panels, Index rows, Index columns, Index run, T alpha, T beta, MatrixView<T> c,
                    Part part, Index diagonal, Part factor = Part::all, Index factor_row = 0) noexcept {
  constexpr Index height = Tile<T>::rows, width = Tile<T>::columns;
  Tile<T> tile;
  for (Index j = 0; j < columns; j += width)
    for (Index i = 0; i < rows; i += height) {
      const Index live_rows = std::min(height, rows - i), live_columns = std::min(width, columns - j);
      const Index ahead = diagonal + j - i;  // tile row that holds the diagonal element of the tile's first column
      if ((part == Part::lower && live_rows <= ahead) || (part == Part::upper && ahead + live_columns <= 0)) continue;
      const Index first = factor == Part::upper ? factor_row + i : 0;
      const Index last = factor == Part::lower ? std::min(run, factor_row + i + height) : run;
      multiply_slivers(panels.a() + i * run + first * height, panels.b() + (j * run + first * width) * lanes<T>,
                       last - first, tile);
      const bool whole = live_rows == height && live_columns == width &&
                         (part == Part::all || (part == Part::lower ? ahead + width <= 1 : ahead >= height - 1));
      if (whole && c.row_step == 1) {
        merge_tile(tile, alpha, beta, &c(i, j), c.column_step);
        continue;
      }
      for (Index q = 0; q < live_columns; ++q) {
        const Index from = part == Part::lower ? std::max<Index>(0, ahead + q) : 0;
        const Index to = part == Part::upper ? std::min(live_rows, ahead + q + 1) : live_rows;
        merge_column(tile.sums[q], from, to, alpha, beta, &c(i, j + q), c.row_step);
      }
    }
}

template <class T>
void product(Index rows, Index columns, Index depth, T alpha, MatrixView<const T> a, MatrixView<const T> b, T beta,
             MatrixView<T> c, Part part = Part::all) noexcept {
  if (rows <= 0 || columns <= 0) return;
  if (depth <= 0 || alpha == 0) return scale(rows, columns, beta, c, part);
  if (c.row_step != 1 && c.column_step == 1)  // C' = B' A', so that tiles are stored along the columns of memory
    return product(columns, rows, depth, alpha, b.transposed(), a.transposed(), beta, c.transposed(), transposed(part));

  const Panels<T> panels(rows, columns, depth);
  for (Index j = 0; j < columns; j += panels.column_block()) {
    const Index block_columns = std::min(panels.column_block(), columns - j);
    for (Index p = 0; p < depth; p += depth_block) {
      const Index run = std::min(depth_block, depth - p);
      pack_columns(b.from(p, j), block_columns, run, panels.b());
      for (Index i = 0; i < rows; i += panels.row_block()) {
        const Index block_rows = std::min(panels.row_block(), rows - i);
        if ((part == Part::lower && i + block_rows <= j) || (part == Part::upper && j + block_columns <= i)) continue;
        if (j == 0 || !panels.holds_a()) pack_rows(a.from(i, p), block_rows, run, panels.a());
        multiply_block(panels, block_rows, block_columns, run, alpha, p == 0 ? beta : T(1), c.from(i, j), part, j - i);
      }
    }
  }
}

}  // namespace orin::sequential

#endif
