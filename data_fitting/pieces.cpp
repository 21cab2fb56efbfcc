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

// Sites of a uniform partition in groups, by their places: a site belongs to its place's piece or, where it lies to the left
// of that, to the one before. Pieces go through memory, cheaper than from a vector's lanes to two addresses.
class Placer {
 public:
  static constexpr Index group = 16;

  Placer(const double* x, Index points, double origin, double multiplier)
      : x_(x), points_(points), origin_(_mm_set1_pd(origin)), multiplier_(_mm_set1_pd(multiplier)) {}

  // Places never fall as sites grow, since each rounded operation is monotone: with every point's place in [i, i + 1),
  // those of the sites in piece i lie in [i, i + 2).
  bool confirmed() const {
    if (points_ > std::numeric_limits<int32_t>::max()) return false;
    __m128i different = _mm_setzero_si128();
    const auto compare = [&](Index i) {
      const auto k = static_cast<int32_t>(i);
      different = _mm_or_si128(different, _mm_xor_si128(truncated(x_ + i), _mm_set_epi32(0, 0, k + 1, k)));
    };
    for (Index i = 0; i + 2 <= points_; i += 2) compare(i);
    compare(points_ - 2);
    return _mm_movemask_epi8(_mm_cmpeq_epi32(different, _mm_setzero_si128())) == 0xFFFF;
  }

  // False if some site lies to the left of its place's piece, or outside the partition: the group is left unfinished.
  bool place(const double* site, Index* piece, double* local) const {
    const __m128i highest = _mm_set1_epi32(static_cast<int32_t>(points_ - 2));
    __m128i outside = _mm_setzero_si128();
    fetch_ahead<group>(site);
    for (Index k = 0; k < group; k += 4) {
      const __m128i places = _mm_unpacklo_epi64(truncated(site + k), truncated(site + k + 2));
      outside = _mm_or_si128(outside, _mm_or_si128(places, _mm_sub_epi32(highest, places)));
      store_cells(places, piece + k);
    }
    if (_mm_movemask_ps(_mm_castsi128_ps(outside)) != 0) return false;
    __m128d negative = _mm_setzero_pd();
    for (Index k = 0; k < group; k += 2) {
      const __m128d left = _mm_loadh_pd(_mm_load_sd(x_ + piece[k]), x_ + piece[k + 1]);
      const __m128d u = _mm_sub_pd(_mm_loadu_pd(site + k), left);
      negative = _mm_or_pd(negative, u);
      _mm_storeu_pd(local + k, u);
    }
    return _mm_movemask_pd(negative) == 0;
  }

 private:
  __m128i truncated(const double* site) const {
    return _mm_cvttpd_epi32(_mm_mul_pd(_mm_sub_pd(_mm_loadu_pd(site), origin_), multiplier_));
  }

  const double* x_;
  Index points_;
  __m128d origin_, multiplier_;
};

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
  if constexpr (std::is_same_v<T, double>) {
    const bool worth_it = method_ == Method::uniform && nsite >= 2 * points_;
    places_confirmed_ = worth_it && Placer(x_, points_, origin_, multiplier_).confirmed();
  }
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
  bool outside = false;
  if constexpr (std::is_same_v<T, double>) {
    const Placer placer(x_, points_, origin_, multiplier_);
    for (; places_confirmed_ && i + Placer::group <= n; i += Placer::group) {
      if (placer.place(site + i, piece + i, local + i)) continue;
      place_one_by_one(Placer::group, site + i, piece + i, local + i);
      outside = true;
    }
  }
  place_one_by_one(n - i, site + i, piece + i, local + i);
  return outside || i < n;
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
