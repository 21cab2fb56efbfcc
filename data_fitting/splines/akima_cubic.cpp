// akima_cubic: slopes between the neighbouring difference quotients, nearer to the side that changes less.
// SPDX-License-Identifier: MIT
//
//   s[i] = (|d[i+1] - d[i]| d[i-1] + |d[i-1] - d[i-2]| d[i]) / (|d[i+1] - d[i]| + |d[i-1] - d[i-2]|)         (1)
//   where both changes are zero, s[i] = (d[i-1] + d[i]) / 2                                                  (2)
//   beyond the ends d goes on linearly: d[-1] = 2 d[0] - d[1], d[-2] = 2 d[-1] - d[0]; there both changes of
//   (1) are equal, so that s[0] = (3 d[0] - d[1]) / 2; the right end likewise                                (3)
// Ends     at least 5 points; free: (3)
// Source   Akima, Journal of the ACM 17 (1970) 589-602
#include "data_fitting/splines/cubic.h"

namespace orin::data_fitting {
namespace {

// (1), (2) from four quotients in a row.
template <class V>
V akima_slope(V before, V left, V right, V after) {
  const V right_change = magnitude(after - right), left_change = magnitude(left - before);
  const V sum = right_change + left_change;
  return if_nonzero(sum, (right_change * left + left_change * right) / sum, V::both(0.5) * (left + right));
}

template <class T>
struct AkimaRule : LocalRule<T> {
  static EndRow free_end(const End& e) { return {1.5 * e.d0 - 0.5 * e.d1, 0, 0}; }

  void slopes(const Cells<T>& c, const T*) const {
    const double* d = c.d;
    const Index last = c.count() - 1;
    for_lanes(2, last, [&c, d](auto lanes, Index i) {
      using V = decltype(lanes);
      akima_slope(V::load(d + i - 2), V::load(d + i - 1), V::load(d + i), V::load(d + i + 1)).store(c.s + i);
    });
    c.s[1] = akima_slope(Single{2 * d[0] - d[1]}, Single{d[0]}, Single{d[1]}, Single{d[2]}).v;
    c.s[last] =
        akima_slope(Single{d[last - 2]}, Single{d[last - 1]}, Single{d[last]}, Single{2 * d[last] - d[last - 1]}).v;
    close_ends<AkimaRule>(c);
  }
};

template <class T>
struct AkimaCubic {
  static constexpr int64_t least_points = 5;
  template <Shape shape>
  static int32_t kernel(const DfTask1D& task) {
    return build_cubic<T, AkimaRule<T>>(task, shape);
  }
};

template <class T>
int32_t akima_cubic(const DfTask1D* task) {
  return construct_cubic<AkimaCubic<T>>(task);
}

}  // namespace
}  // namespace orin::data_fitting

using namespace orin::data_fitting;

extern "C" {

ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFAkimaCubicSpline1D(DfTask1D* task, int64_t, int64_t, int64_t) {
  return akima_cubic<double>(task);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFAkimaCubicSpline1D(DfTask1D* task, int64_t, int64_t, int64_t) {
  return akima_cubic<float>(task);
}
}
