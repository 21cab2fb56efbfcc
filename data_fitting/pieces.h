// pieces: the polynomial piece of a site and the site's coordinate in it, for interpolation and integration.
// SPDX-License-Identifier: MIT
//
// Pieces  the nx - 1 cells of the partition; for the Subbotin spline the nx cells between its knots. Sites beyond the
//         partition belong to the outer pieces. Any site and any given cell yield a piece that exists.
#ifndef ORIN_DATA_FITTING_PIECES_H
#define ORIN_DATA_FITTING_PIECES_H

#include <type_traits>

#include "data_fitting/search.h"
#include "data_fitting/splines/knots.h"

namespace orin::data_fitting {

constexpr bool has_knots(const DfTask1D& task) {
  return task.s_order == ORIN_DF_QUADRATIC && task.s_type == ORIN_DF_SUBBOTIN;
}

constexpr Index piece_count(const DfTask1D& task) { return static_cast<Index>(task.nx) - (has_knots(task) ? 0 : 1); }

template <class T>
class Pieces {
 public:
  // `nsite` is the number of sites to come in all.
  Pieces(const DfTask1D& task, Index nsite, int64_t sitehint, const T* data_hint);

  // Finds the pieces of some sites and their distances from the left ends of them. With sorted sites the calls follow
  // their order. `cell`, where not null, is used in place of a search. False if no site is the last point.
  template <class Real>
  bool find(Index n, const T* site, const int64_t* cell, Index* piece, Real* local);

  // The left end of a piece; that of piece_count() is the right end of the last.
  double left(Index piece) const { return has_knots_ ? knots_[piece] : static_cast<double>(x_[piece]); }

 private:
  enum class Method { uniform, sorted, near, general };

  void find_cells(Index n, const T* site, Index* cell);
  template <class Real>
  void place_one_by_one(Index n, const T* site, Index* piece, Real* local) const;
  template <class Real>
  bool find_uniform_pieces(Index n, const T* site, Index* piece, Real* local) const;
  template <class Real>
  void find_between_knots(Index n, const T* site, Index* piece, Real* local) const;

  const T* x_;
  Index points_;
  bool has_knots_;
  Knots<T> knots_;
  Method method_;
  T origin_, multiplier_;  // a uniform partition's site has the place (site - origin_) * multiplier_
  T certain_;              // a coordinate from 0 up to this one leaves no doubt about the piece found by a place
  bool places_confirmed_ = false;  // a site's place never lies below its piece, nor two above it
  Index hint_;
  SortedSearch<T> sorted_;
  GeneralSearch<T> general_;
};

}  // namespace orin::data_fitting

#endif
