// pieces: from sites to polynomial pieces and the coordinates in them.
// SPDX-License-Identifier: MIT
#include "data_fitting/pieces.h"

#include <emmintrin.h>

#include <limits>

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
  // A few units in the last place to the right: a site that is a partition point mostly gets the cell it begins at once.
  constexpr T eps = std::numeric_limits<T>::epsilon();
  multiplier_ = cells_per_length(x_, points_) * (1 + 4 * eps);
  // A place is off by the rounding of the points and its own, in cells.
  const T far = magnitude(x_[0]) + magnitude(x_[points_ - 1]);
  certain_ = (1 - 16 * eps * (far * multiplier_ + static_cast<T>(points_))) / multiplier_;
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

// Two sites at once, while their places fit in 32 bits; returns how many were done.
Index place_pairs(const double* x, double multiplier, double certain, Index highest, Index n, const double* site,
                  Index* piece, double* local) {
  if (highest > std::numeric_limits<int32_t>::max()) return 0;
  const __m128d origin = _mm_set1_pd(x[0]), scale = _mm_set1_pd(multiplier), most = _mm_set1_pd(certain);
  const __m128d last = _mm_set1_pd(static_cast<double>(highest));
  Index i = 0;
  for (; i + 2 <= n; i += 2) {
    const __m128d s = _mm_loadu_pd(site + i);
    const __m128d place = _mm_max_pd(_mm_mul_pd(_mm_sub_pd(s, origin), scale), _mm_setzero_pd());
    const __m128i k = _mm_cvttpd_epi32(_mm_min_pd(place, last));
    const Index first = _mm_cvtsi128_si32(k), second = _mm_cvtsi128_si32(_mm_shuffle_epi32(k, 1));
    const __m128d u = _mm_sub_pd(s, _mm_set_pd(x[second], x[first]));
    piece[i] = first;
    piece[i + 1] = second;
    _mm_storeu_pd(local + i, u);
    if (_mm_movemask_pd(_mm_or_pd(u, _mm_sub_pd(most, u))) != 0) {
      for (Index j = i; j < i + 2; ++j) {
        piece[j] = corrected(x, piece[j], highest, site[j]);
        local[j] = site[j] - x[piece[j]];
      }
    }
  }
  return i;
}

// Floats are placed one by one.
template <class Real>
Index place_pairs(const float*, float, float, Index, Index, const float*, Index*, Real*) {
  return 0;
}

}  // namespace

template <class T>
template <class Real>
void Pieces<T>::find_uniform_pieces(Index n, const T* site, Index* piece, Real* local) const {
  const Index highest = points_ - 2;
  const T x0 = x_[0], last = static_cast<T>(highest);
  for (Index i = place_pairs(x_, multiplier_, certain_, highest, n, site, piece, local); i < n; ++i) {
    T place = (site[i] - x0) * multiplier_;
    place = place > 0 ? place : 0;
    const Index near = static_cast<Index>(place < last ? place : last), k = near < highest ? near : highest;
    const T u = site[i] - x_[k];
    piece[i] = u >= 0 && u <= certain_ ? k : corrected(x_, k, highest, site[i]);
    local[i] = static_cast<Real>(site[i]) - static_cast<Real>(x_[piece[i]]);
  }
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
void Pieces<T>::find(Index n, const T* site, const int64_t* cell, Index* piece, Real* local) {
  if (cell == nullptr && method_ == Method::uniform) {
    find_uniform_pieces(n, site, piece, local);
    return;
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
    return;
  }
  const Index highest = points_ - 2;
  for (Index i = 0; i < n; ++i) {
    const Index before = piece[i] - 1;
    const Index k = before < 0 ? 0 : before > highest ? highest : before;
    piece[i] = k;
    local[i] = static_cast<Real>(site[i]) - static_cast<Real>(x_[k]);
  }
}

template class Pieces<double>;
template class Pieces<float>;
template void Pieces<double>::find(Index, const double*, const int64_t*, Index*, double*);
template void Pieces<float>::find(Index, const float*, const int64_t*, Index*, float*);
template void Pieces<float>::find(Index, const float*, const int64_t*, Index*, double*);

}  // namespace orin::data_fitting
