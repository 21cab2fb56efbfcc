// tridiagonal: factorisation and solution from both ends.
// SPDX-License-Identifier: MIT
#include "data_fitting/splines/tridiagonal.h"

namespace orin::data_fitting {

// Down: p[i] = diagonal[i] - lower[i] upper[i-1] / p[i-1].  Up: p[j] = diagonal[j] - upper[j] lower[j+1] / p[j+1].
// The quotient stays on the chain from pivot to pivot, the reciprocals that solve() needs are made beside it.
void Tridiagonal::factor() const {
  const Index mid = middle(), last = rows - 1;
  const Pair one = Pair::both(1.0);
  if (rows > 2) {
    Pair pivot = Pair::of(diagonal[0], diagonal[last]);
    for (Index i = 0, j = last;; ++i, --j) {
      const Pair inverse = one / pivot;
      reciprocal[i] = inverse.low();
      reciprocal[j] = inverse.high();
      if (j - i <= 3) break;
      pivot = Pair::of(diagonal[i + 1], diagonal[j - 1]) -
              Pair::of(upper[i], lower[j]) * Pair::of(lower[i + 1], upper[j - 1]) / pivot;
    }
  } else if (rows == 2) {
    reciprocal[0] = 1.0 / diagonal[0];
  }
  // An even number of rows leaves one more above the middle than below it.
  if (rows % 2 == 0 && rows > 2) {
    const Index i = mid - 1;
    reciprocal[i] = 1.0 / (diagonal[i] - lower[i] * upper[i - 1] * reciprocal[i - 1]);
  }
  double pivot = diagonal[mid];
  if (mid > 0) pivot -= lower[mid] * upper[mid - 1] * reciprocal[mid - 1];
  if (mid < last) pivot -= upper[mid] * lower[mid + 1] * reciprocal[mid + 1];
  reciprocal[mid] = 1.0 / pivot;
}

void Tridiagonal::solve(double* r) const {
  const Index mid = middle(), last = rows - 1;
  const Index pairs = last - mid;  // rows below the middle; above it there are as many or one more

  if (pairs > 0) {
    Pair value = Pair::of(r[0], r[last]);
    for (Index i = 1, j = last - 1; i < pairs; ++i, --j) {
      const Pair factor = Pair::of(lower[i], upper[j]) * Pair::of(reciprocal[i - 1], reciprocal[j + 1]);
      value = Pair::of(r[i], r[j]) - factor * value;
      r[i] = value.low();
      r[j] = value.high();
    }
  }
  for (Index i = pairs > 0 ? pairs : 1; i < mid; ++i) r[i] -= lower[i] * reciprocal[i - 1] * r[i - 1];
  if (mid > 0) r[mid] -= lower[mid] * reciprocal[mid - 1] * r[mid - 1];
  if (mid < last) r[mid] -= upper[mid] * reciprocal[mid + 1] * r[mid + 1];

  r[mid] *= reciprocal[mid];
  Index i = mid - 1, j = mid + 1;
  if (mid > pairs) {
    r[i] = (r[i] - upper[i] * r[i + 1]) * reciprocal[i];
    --i;
  }
  if (j <= last) {
    Pair value = Pair::of(r[i + 1], r[j - 1]);
    for (; j <= last; --i, ++j) {
      const Pair inverse = Pair::of(reciprocal[i], reciprocal[j]);
      value = Pair::of(r[i], r[j]) * inverse - Pair::of(upper[i], lower[j]) * inverse * value;
      r[i] = value.low();
      r[j] = value.high();
    }
  }
}

}  // namespace orin::data_fitting
