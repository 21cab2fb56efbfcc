// interpolate: values and derivatives of the splines of a task at many sites.
// SPDX-License-Identifier: MIT
//
// Method    blocks of sites: pieces and coordinates once, then each function and derivative over the block
// Bounds    per value the rounding of Horner's rule in the coordinate; at the left end of a piece c0 to the bit, at the
//           last point the function's own value (LastPoint)
// Special   sites beyond the partition continue the outer pieces
#include <limits>

#include "data_fitting/pieces.h"
#include "data_fitting/vectors.h"

namespace orin::data_fitting {
namespace {

constexpr Index block_sites = 256;

// j (j - 1) ... (j - k + 1): the factor of coefficient j in derivative k.
constexpr int falling(int j, int k) { return k == 0 ? 1 : j * falling(j - 1, k - 1); }

// The k-th derivative of the polynomial c of the given order at u.
template <int order, int k, class T>
T polynomial(const T* c, T u) {
  T sum = c[order - 1] * static_cast<T>(falling(order - 1, k));
  for (int j = order - 2; j >= k; --j) sum = sum * u + c[j] * static_cast<T>(falling(j, k));
  return sum;
}

// Coefficients j of the pieces at `piece`, a lane each, for every j below the order.
template <int order>
[[gnu::always_inline]] inline void load_coefficients(const double* p, const Index* piece, simd::Vec2d (&c)[order]) {
  const double *const a = p + order * piece[0], *const b = p + order * piece[1];
  for (int j = 0; j + 1 < order; j += 2) {
    const __m128d pair_a = _mm_loadu_pd(a + j), pair_b = _mm_loadu_pd(b + j);
    c[j] = _mm_unpacklo_pd(pair_a, pair_b);
    c[j + 1] = _mm_unpackhi_pd(pair_a, pair_b);
  }
  if constexpr (order % 2 == 1) c[order - 1] = _mm_set_pd(b[order - 1], a[order - 1]);
}

template <int order>
[[gnu::always_inline]] inline void load_coefficients(const float* p, const Index* piece, simd::Vec4f (&c)[order]) {
  const float* const lane[] = {p + order * piece[0], p + order * piece[1], p + order * piece[2], p + order * piece[3]};
  if constexpr (order == 4) {
    for (int j = 0; j < 4; ++j) c[j] = simd::Vec4f::load(lane[j]);
    _MM_TRANSPOSE4_PS(c[0].raw, c[1].raw, c[2].raw, c[3].raw);
  } else {
    for (int j = 0; j < order; ++j) c[j] = _mm_set_ps(lane[3][j], lane[2][j], lane[1][j], lane[0][j]);
  }
}

// The same for sites in lanes, operation by operation.
template <int order, int k, class T>
[[gnu::always_inline]] inline Vec<T> polynomials(const T* coefficients, const Index* piece, Vec<T> u) {
  Vec<T> c[order];
  load_coefficients<order>(coefficients, piece, c);
  const auto term = [&c](int j) { return falling(j, k) == 1 ? c[j] : c[j] * static_cast<T>(falling(j, k)); };
  Vec<T> sum = term(order - 1);
  for (int j = order - 2; j >= k; --j) sum = sum * u + term(j);
  return sum;
}

template <class T>
using Evaluate = void (*)(Index n, const Index* piece, const T* local, const T* coefficients, T* r, Index stride);

template <class T, int order, int k>
void evaluate(Index n, const Index* piece, const T* local, const T* coefficients, T* r, Index stride) {
  Index i = 0;
  if constexpr (k >= order) {
    for (; i < n; ++i) r[i * stride] = 0;
  } else {
    using V = Vec<T>;
    const auto values = [=](Index at) { return polynomials<order, k>(coefficients, piece + at, V::load(local + at)); };
    if (stride == 1) {
      for (; i + V::lanes <= n; i += V::lanes) values(i).store(r + i);
    }
    for (; i + V::lanes <= n; i += V::lanes) scatter(values(i), r + i * stride, stride);
    for (; i < n; ++i) r[i * stride] = polynomial<order, k>(coefficients + order * piece[i], local[i]);
  }
}

// By order and derivative; the last row is for every derivative from the order on.
template <class T, int order>
constexpr Evaluate<T> kernels[5] = {evaluate<T, order, 0>, evaluate<T, order, 1>, evaluate<T, order, 2>,
                                    evaluate<T, order, 3>, evaluate<T, order, 4>};

template <class T>
constexpr const Evaluate<T>* kernels_of[] = {kernels<T, 2>, kernels<T, 3>, kernels<T, 4>};

template <class T>
bool any_equal(const T* s, Index n, T value) {
  using V = Vec<T>;
  const V wanted = value;
  V found = T(0);
  Index i = 0;
  for (; i + 2 * V::lanes <= n; i += 2 * V::lanes)
    found = found | (V::load(s + i) == wanted) | (V::load(s + i + V::lanes) == wanted);
  bool rest = false;
  for (; i < n; ++i) rest |= s[i] == value;
  return rest || lane_bits(found) != 0;
}

// The last point begins no piece, and the end of its polynomial is rounded. Its value is the function's own, provided that
// the polynomial leads there as the coefficients' rounding allows; those of another curve stand for themselves.
template <class T>
class LastPoint {
 public:
  LastPoint(const DfTask1D& task, Index pieces)
      : task_(task),
        piece_(pieces - 1),
        x_(static_cast<const T*>(task.x) + (task.nx - 1)),
        present_(task.y != nullptr && !has_knots(task)) {}

  // Whether some site is there: mostly none is.
  bool among(Index n, const T* site) const { return present_ && any_equal(site, n, *x_); }

  void settle(Index f, Index n, const T* site, const Index* piece, T* r, Index stride) const {
    const T y = by_point(task_.yhint) ? static_cast<const T*>(task_.y[0])[(task_.nx - 1) * task_.ny + f]
                                      : static_cast<const T*>(task_.y[f])[task_.nx - 1];
    for (Index i = 0; i < n; ++i)
      if (site[i] == *x_ && piece[i] == piece_ && leads_to(f, y, r[i * stride])) r[i * stride] = y;
  }

 private:
  bool leads_to(Index f, T y, T value) const {
    constexpr T tolerance = 32 * std::numeric_limits<T>::epsilon();
    const T* c = static_cast<const T*>(task_.scoeff[f]) + task_.s_order * piece_;
    const T u = *x_ - x_[-1];
    T scale = magnitude(c[0]) + magnitude(y), slope = 0, power = 1;
    for (Index j = 1; j < task_.s_order; ++j) {
      slope += static_cast<T>(j) * magnitude(c[j]) * power;
      power *= u;
      scale += magnitude(c[j]) * power;
    }
    return magnitude(value - y) <= tolerance * (scale + slope * magnitude(*x_));
  }
  static T magnitude(T v) { return v < 0 ? -v : v; }

  const DfTask1D& task_;
  Index piece_;
  const T* x_;
  bool present_;
};

template <class T>
struct Request {
  Index nsite;
  const T* site;
  Index ndorder;
  const int32_t* dorder;
  T* r;
  bool by_site;
  const int64_t* cell;
};

template <class T>
void run(const DfTask1D& task, const Request<T>& q, Index asked, Pieces<T>& pieces) {
  const Evaluate<T>* const kernel = kernels_of<T>[task.s_order - 2];
  const Index functions = static_cast<Index>(task.ny);
  const Index stride = q.by_site ? functions * asked : asked;
  const LastPoint<T> last_point(task, piece_count(task));
  const bool values = q.dorder[0] != 0;
  Index piece[block_sites];
  T local[block_sites];
  for (Index begin = 0; begin < q.nsite; begin += block_sites) {
    const Index n = q.nsite - begin < block_sites ? q.nsite - begin : block_sites;
    const bool maybe_last = pieces.find(n, q.site + begin, q.cell == nullptr ? nullptr : q.cell + begin, piece, local);
    const bool last_point_asked = values && maybe_last && last_point.among(n, q.site + begin);
    for (Index f = 0; f < functions; ++f) {
      const T* coefficients = static_cast<const T*>(task.scoeff[f]);
      T* const results = q.r + (q.by_site ? begin * functions + f : f * q.nsite + begin) * asked;
      T* r = results;
      for (Index k = 0; k < q.ndorder; ++k) {
        if (q.dorder[k] != 0) kernel[k < 4 ? k : 4](n, piece, local, coefficients, r++, stride);
      }
      if (last_point_asked) last_point.settle(f, n, q.site + begin, piece, results, stride);
    }
  }
}

template <class T>
int32_t interpolate(const DfTask1D* task, int64_t nsite, const T* site, int64_t sitehint, int64_t ndorder,
                    const int32_t* dorder, const T* data_hint, T* r, int64_t rhint, const int64_t* cell) {
  if (task == nullptr) return ORIN_DF_NULL_TASK;
  if (task->s_order < ORIN_DF_LINEAR || task->s_order > ORIN_DF_CUBIC) return ORIN_DF_BAD_ORDER;
  if (task->scoeff == nullptr) return ORIN_DF_BAD_SCOEFF;
  if (nsite < 1 || dorder == nullptr) return ORIN_DF_OK;
  Index asked = 0;
  for (int64_t k = 0; k < ndorder; ++k) asked += dorder[static_cast<Index>(k)] != 0;
  if (asked == 0) return ORIN_DF_OK;
  if (site == nullptr) return ORIN_DF_BAD_X;
  if (r == nullptr) return ORIN_DF_BAD_Y;
  if (rhint != 0 && rhint != ORIN_DF_BY_FUNCTION && rhint != ORIN_DF_BY_POINT) return ORIN_DF_BAD_YHINT;
  if (has_knots(*task) && own_knots(*task) && task->ic == nullptr) return ORIN_DF_BAD_IC;
  const Index sites = static_cast<Index>(nsite);
  Pieces<T> pieces(*task, cell == nullptr ? sites : 0, sitehint, data_hint);
  run<T>(*task, {sites, site, static_cast<Index>(ndorder), dorder, r, by_point(rhint), cell}, asked, pieces);
  return ORIN_DF_OK;
}

}  // namespace
}  // namespace orin::data_fitting

using namespace orin::data_fitting;

extern "C" {

ORIN_API int32_t ORIN_CALL orin_df_kernel_dInterpolate1D(const DfTask1D* task, int64_t nsite, const double* site,
                                                         int64_t sitehint, int64_t ndorder, const int32_t* dorder,
                                                         const double* data_hint, double* r, int64_t rhint,
                                                         const int64_t* cell) {
  return interpolate(task, nsite, site, sitehint, ndorder, dorder, data_hint, r, rhint, cell);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sInterpolate1D(const DfTask1D* task, int64_t nsite, const float* site,
                                                         int64_t sitehint, int64_t ndorder, const int32_t* dorder,
                                                         const float* data_hint, float* r, int64_t rhint,
                                                         const int64_t* cell) {
  return interpolate(task, nsite, site, sitehint, ndorder, dorder, data_hint, r, rhint, cell);
}
}
