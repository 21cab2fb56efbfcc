// tridiagonal: diagonally dominant tridiagonal systems, eliminated from both ends at once.
// SPDX-License-Identifier: MIT
//
// Method    rows are eliminated downward from the first and upward from the last, one in each lane of a register, and
//           meet at the middle row; substitution runs back from there. Half the length of the usual chain of dependent
//           operations, at the same stability: every row is eliminated by the neighbour that lies further out.
// Cost      O(rows), one factorisation for any number of right sides.
// Source    Babuska, SIAM J. Numer. Anal. 9 (1972) 53-77
#ifndef ORIN_DATA_FITTING_SPLINES_TRIDIAGONAL_H
#define ORIN_DATA_FITTING_SPLINES_TRIDIAGONAL_H

#include "data_fitting/splines/lanes.h"

namespace orin::data_fitting {

// Row i: lower[i] s[i-1] + diagonal[i] s[i] + upper[i] s[i+1] = r[i]; lower[0] and upper[rows-1] are not read.
// The arrays belong to the caller; `reciprocal` is filled by factor() with the reciprocals of the pivots.
struct Tridiagonal {
  Index rows;
  const double* lower;
  const double* diagonal;
  const double* upper;
  double* reciprocal;

  void factor() const;
  void solve(double* r) const;  // right side in, solution out

 private:
  Index middle() const { return rows / 2; }
};

}  // namespace orin::data_fitting

#endif
