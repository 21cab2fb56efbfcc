// bessel_cubic: slopes of the parabolas through three neighbouring points.
// SPDX-License-Identifier: MIT
//
//   s[i] = (g[i-1] d[i-1] + g[i] d[i]) / (g[i-1] + g[i])   at inner points                                   (1)
// Ends     at least 4 points; free: the slope of the parabola of the three outer points
// Source   de Boor, A Practical Guide to Splines, chapter IV
#include "data_fitting/splines/cubic.h"

namespace orin::data_fitting {
namespace {

template <class T>
struct BesselRule : LocalRule<T> {
  static EndRow free_end(const End& e) { return parabola(e); }

  void slopes(const Cells<T>& c, const T*) const {
    for_lanes(1, c.points - 1, [&c](auto lanes, Index i) {
      using V = decltype(lanes);
      const V g0 = V::load(c.g + i - 1), g1 = V::load(c.g + i);
      ((g0 * V::load(c.d + i - 1) + g1 * V::load(c.d + i)) / (g0 + g1)).store(c.s + i);
    });
    close_ends<BesselRule>(c);
  }
};

template <class T>
struct BesselCubic {
  static constexpr int64_t least_points = 4;
  template <Shape shape>
  static int32_t kernel(const DfTask1D& task) {
    return build_cubic<T, BesselRule<T>>(task, shape);
  }
};

template <class T>
int32_t bessel_cubic(const DfTask1D* task) {
  return construct_cubic<BesselCubic<T>>(task);
}

}  // namespace
}  // namespace orin::data_fitting

using namespace orin::data_fitting;

extern "C" {

ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFBesselCubicSpline1D(DfTask1D* task, int64_t, int64_t, int64_t) {
  return bessel_cubic<double>(task);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFBesselCubicSpline1D(DfTask1D* task, int64_t, int64_t, int64_t) {
  return bessel_cubic<float>(task);
}
}
