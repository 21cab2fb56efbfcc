// pieces: from sites to polynomial pieces and the coordinates in them.
// SPDX-License-Identifier: MIT
#include "data_fitting/pieces.h"

#include <limits>

#include "data_fitting/placer.h"

namespace orin::data_fitting {

namespace {

template <class T>
T magnitude(T v) {
  return v < 0 ? -v : v;
}

}  // namespace

template <class T>
Pieces<T>::Pieces(const DfTask1D& task, Index nsite, int64_t sitehint, const T* data_hint)
    : x_(static_cast<const T*>(task.x)),
      points_(static_cast<Index>(task.nx)),
      has_knots_(data_fitting::has_knots(task)),
      knots_(task, has_knots_ && own_knots(task)),
      method_(task.xhint == ORIN_DF_UNIFORM && !has_knots_   ? Method::uniform
              : (sitehint & ORIN_DF_SORTED_SITES) != 0       ? Method::sorted
              : data_hint != nullptr && data_hint[1] == T{1} ? Method::near
                                                             : Method::general),
      hint_(method_ == Method::near ? cell_from(data_hint[0], points_) : 0),
      sorted_(x_, points_, method_ == Method::sorted ? nsite : 0, 0),
      general_(x_, points_, method_ == Method::general ? nsite : 0) {
  // Some units in the last place to the right: a site that is a partition point gets the piece it begins.
  constexpr T eps = std::numeric_limits<T>::epsilon();
  const T far = magnitude(x_[0]) + magnitude(x_[points_ - 1]);
  multiplier_ = cells_per_length(x_, points_) * (1 + 4 * eps);
  const T rounding = 8 * eps * far, quarter_cell = T{0.25f} / multiplier_;
  origin_ = x_[0] - (rounding < quarter_cell ? rounding : quarter_cell);
  // A place is off by the rounding of the points and its own, in cells.
  certain_ = (1 - 16 * eps * (far * multiplier_ + static_cast<T>(points_))) / multiplier_;
  const bool worth_it = method_ == Method::uniform && nsite >= 2 * points_ && Placer<T>::fits(points_);
  places_confirmed_ = worth_it && Placer<T>(x_, points_, origin_, multiplier_).confirmed();
}

template <class T>
void Pieces<T>::find_cells(Index n, const T* site, Index* cell) {
  if (method_ == Method::sorted) {
    sorted_.find(n, site, cell);
  } else if (method_ == Method::near) {
    find_near(points_, x_, n, site, hint_, cell);
  } else {
    general_.find(n, site, cell);
  }
}

namespace {

// The piece beside the computed one where the site lies there: points far from the origin are rounded by a good part of a
// cell, and a place is rounded too.
template <class T>
Index corrected(const T* x, Index k, Index highest, T s) {
  k += Index{k < highest} & Index{s >= x[k + 1]};
  k -= Index{k > 0} & Index{s < x[k]};
  return k;
}

}  // namespace

template <class T>
template <class Real>
void Pieces<T>::place_one_by_one(Index n, const T* site, Index* piece, Real* local) const {
  const Index highest = points_ - 2;
  const T last = static_cast<T>(highest);
  for (Index i = 0; i < n; ++i) {
    T place = (site[i] - origin_) * multiplier_;
    place = place > 0 ? place : 0;
    const Index near = static_cast<Index>(place < last ? place : last), k = near < highest ? near : highest;
    const T u = site[i] - x_[k];
    piece[i] = u >= 0 && u <= certain_ ? k : corrected(x_, k, highest, site[i]);
    local[i] = static_cast<Real>(site[i]) - static_cast<Real>(x_[piece[i]]);
  }
}

template <class T>
template <class Real>
bool Pieces<T>::find_uniform_pieces(Index n, const T* site, Index* piece, Real* local) const {
  Index i = 0;
  bool maybe_last = !places_confirmed_;
  if constexpr (std::is_same_v<T, Real>) {
    const Placer<T> placer(x_, points_, origin_, multiplier_);
    const auto placed = [&](Index at) {
      return places_confirmed_ ? placer.template place<true>(site + at, certain_, piece + at, local + at)
                               : placer.template place<false>(site + at, certain_, piece + at, local + at);
    };
    constexpr Index group = Placer<T>::group;
    for (const Index end = Placer<T>::fits(points_) ? n : 0; i + group <= end; i += group) {
      if (placed(i)) continue;
      place_one_by_one(group, site + i, piece + i, local + i);
      maybe_last = true;
    }
  }
  place_one_by_one(n - i, site + i, piece + i, local + i);
  return maybe_last || i < n;
}

// A cell's knot cuts it in two: the pieces left and right of it have the numbers cell - 1 and cell.
template <class T>
template <class Real>
void Pieces<T>::find_between_knots(Index n, const T* site, Index* piece, Real* local) const {
  for (Index i = 0; i < n; ++i) {
    const Index cell = piece[i];
    const double s = static_cast<double>(site[i]);
    Index k = cell > 0 ? cell - 1 : 0;
    if (cell > 0 && cell < points_ && s >= knots_[cell]) k = cell;
    piece[i] = k;
    local[i] = static_cast<Real>(s - knots_[k]);
  }
}

template <class T>
template <class Real>
bool Pieces<T>::find(Index n, const T* site, const int64_t* cell, Index* piece, Real* local) {
  if (cell == nullptr && method_ == Method::uniform) {
    return find_uniform_pieces(n, site, piece, local);
  }
  if (cell == nullptr) {
    find_cells(n, site, piece);
  } else {
    for (Index i = 0; i < n; ++i) {
      piece[i] = cell[i] < 0 ? 0 : cell[i] > points_ ? points_ : static_cast<Index>(cell[i]);
    }
  }
  if (has_knots_) {
    find_between_knots(n, site, piece, local);
    return true;
  }
  const Index highest = points_ - 2;
  for (Index i = 0; i < n; ++i) {
    const Index before = piece[i] - 1;
    const Index k = before < 0 ? 0 : before > highest ? highest : before;
    piece[i] = k;
    local[i] = static_cast<Real>(site[i]) - static_cast<Real>(x_[k]);
  }
  return true;
}

template class Pieces<double>;
template class Pieces<float>;
template bool Pieces<double>::find(Index, const double*, const int64_t*, Index*, double*);
template bool Pieces<float>::find(Index, const float*, const int64_t*, Index*, float*);
template bool Pieces<float>::find(Index, const float*, const int64_t*, Index*, double*);

}  // namespace orin::data_fitting
