// knots: the knots of the Subbotin spline, the caller's own or the midpoints of the cells.
// SPDX-License-Identifier: MIT
#ifndef ORIN_DATA_FITTING_SPLINES_KNOTS_H
#define ORIN_DATA_FITTING_SPLINES_KNOTS_H

#include "data_fitting/task.h"

namespace orin::data_fitting {

constexpr bool own_knots(const DfTask1D& task) { return (task.ic_type & (8 | 4)) != 0; }

// Knot k of 0..nx: point k - 1 <= knot k <= point k. Computed in double precision for either element type.
template <class T>
class Knots {
 public:
  Knots(const DfTask1D& task, bool own)
      : x_(static_cast<const T*>(task.x)),
        own_(own ? static_cast<const T*>(task.ic) : nullptr),
        points_(static_cast<Index>(task.nx)) {}

  double operator[](Index k) const {
    if (own_ != nullptr) return static_cast<double>(own_[k]);
    if (k == 0) return static_cast<double>(x_[0]);
    if (k == points_) return static_cast<double>(x_[points_ - 1]);
    return 0.5 * (static_cast<double>(x_[k - 1]) + static_cast<double>(x_[k]));
  }

 private:
  const T* x_;
  const T* own_;
  Index points_;
};

}  // namespace orin::data_fitting

#endif
