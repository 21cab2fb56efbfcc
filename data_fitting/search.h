// search: the cell searches, as the exported entries, interpolation and integration use them.
// SPDX-License-Identifier: MIT
//
// Cells   int32_t or int64_t: a cell is the number of partition points not greater than the site.
// Reads   x[0] to x[nx-1] only, whatever the sites and the order of the points.
#ifndef ORIN_DATA_FITTING_SEARCH_H
#define ORIN_DATA_FITTING_SEARCH_H

#include <cstdint>

#include "data_fitting/task.h"

namespace orin::data_fitting {

// The multiplier of the uniform guess: cells per unit of length.
template <class T>
T cells_per_length(const T* x, int64_t nx) {
  return static_cast<T>(nx - 1) / (x[static_cast<Index>(nx) - 1] - x[0]);
}

// 0 unless s >= x[0], else trunc((s - x[0]) r) + 1, limited to 0..nx. Needs x[0] alone.
template <class T, class Cell>
void find_uniform(int64_t nx, const T* x, Index nsite, const T* site, T r, Cell* cell);

// The uniform cell as a guess, then a walk. The step up is strict in its test: a site equal to the point at its guess
// keeps that cell.
template <class T, class Cell>
void find_quasi_uniform(Index nx, const T* x, Index nsite, const T* site, T r, Cell* cell);

// A walk outward from the peak cell.
template <class T, class Cell>
void find_from_peak(Index nx, const T* x, Index nsite, const T* site, T peak, Cell* cell);

// Sites near a hinted cell: steps that double outward from it, then bisection. A NaN site keeps the hint.
template <class T, class Cell>
void find_near(Index nx, const T* x, Index nsite, const T* site, Index hint, Cell* cell);

// A cell given as a floating-point number: truncated, limited to 0..nx.
template <class T>
Index cell_from(T value, Index nx) {
  if (!(value > 0)) return 0;
  return value < static_cast<T>(nx) ? static_cast<Index>(value) : nx;
}

// Ascending sites. The position only moves up; find() may be called for one piece of the sites after the other.
template <class T>
class SortedSearch {
 public:
  // `nsite` is the number of sites to come in all.
  SortedSearch(const T* x, Index nx, Index nsite, Index position);

  template <class Cell>
  void find(Index nsite, const T* site, Cell* cell);

  Index position() const { return position_; }

 private:
  void advance(T s);
  void advance_by_bisection(T s);

  const T* x_;
  Index nx_;
  Index position_;
  bool walk_first_;  // the points were seen to ascend, so that any way upward ends at the same cell
};

// Any sites, any partition. Many sites are found through a guide table: the range of the partition is cut into equal
// buckets, each with the first point that can lie in it, and a bisection of fixed length inside a bucket finishes
// without a branch that depends on the site.
template <class T>
class GeneralSearch {
 public:
  GeneralSearch(const T* x, Index nx, Index nsite);

  template <class Cell>
  void find(Index nsite, const T* site, Cell* cell) const;

 private:
  static constexpr int max_buckets = 4096;

  bool build_guide(Index nsite);
  int bucket(T s) const;
  Index bisect(T s) const;

  const T* x_;
  Index nx_;
  T buckets_per_length_ = 0;
  int last_bucket_ = 0;
  Index longest_ = 0;  // points in the fullest bucket; 0: no guide
  Index nan_cell_ = 0;
  std::uint32_t first_[max_buckets + 1];
};

}  // namespace orin::data_fitting

#endif
