// integrate: definite integrals of the splines of a task between many pairs of limits.
// SPDX-License-Identifier: MIT
//
// Method    both limits in one piece, u and v their coordinates:
//             (v - u) (c0 + c1 (u + v) / 2 + c2 (u^2 + u v + v^2) / 3 + c3 (u + v) (u^2 + v^2) / 4)            (1)
//           else (1) for the rest of the left piece, whole pieces as a difference of prefix sums, (1) for the start of
//           the right piece
// Bounds    everything in double precision; prefix sums as pairs high + low, so that their difference loses nothing
//           to the pieces before it
// Special   a > b is computed as the negative from b to a, to the bit; limits beyond the partition continue the outer
//           pieces
// Cost      prefix sums for the pieces between the least and the greatest limit alone
// Source    two-sum: Knuth, The Art of Computer Programming 2, section 4.2.2
#include "data_fitting/pieces.h"
#include "data_fitting/splines/construct.h"

namespace orin::data_fitting {
namespace {

constexpr Index block_limits = 256;

struct Sum {
  double high, low;
};

Sum add(Sum sum, double x) {
  const double high = sum.high + x;
  const double part = high - sum.high;
  const double error = (sum.high - (high - part)) + (x - part);
  return {high, sum.low + error};
}

// (1)
template <int order, class T>
double integral(const T* c, double u, double v) {
  const double sum = u + v;
  double mean = static_cast<double>(c[0]) + static_cast<double>(c[1]) * (0.5 * sum);
  if constexpr (order > 2) mean += static_cast<double>(c[2]) * ((sum * sum - u * v) * (1.0 / 3));
  if constexpr (order > 3) mean += static_cast<double>(c[3]) * (0.25 * sum * (u * u + v * v));
  return (v - u) * mean;
}

template <class T>
struct Limits {
  Index count;
  const T* left;
  const T* right;
};

// Where limits lie, in one block of them; `prefix` of the function is counted from piece `first` on.
struct Block {
  Index piece[2][block_limits];
  double local[2][block_limits];
};

Index within(Index piece, Index first, Index last) { return piece < first ? first : piece > last ? last : piece; }

template <int order, class T>
double between(const T* coefficients, const Sum* prefix, Index first, const Pieces<T>& pieces, Index j, double u,
               Index k, double v) {
  if (j == k) return integral<order>(coefficients + order * j, u, v);
  const double width = pieces.left(j + 1) - pieces.left(j);
  const double head = integral<order>(coefficients + order * j, u, width);
  const double tail = integral<order>(coefficients + order * k, 0.0, v);
  const Sum from = prefix[j + 1 - first], to = prefix[k - first];
  return (to.high - from.high) + ((to.low - from.low) + (head + tail));
}

// The limit in the later piece, or further right in the same one, comes second: picked by address, since a branch could
// not be predicted. NaN limits stay as they are, in any piece that has a prefix sum.
template <int order, class T>
void integrate_block(const T* coefficients, const Sum* prefix, Index first, Index last, const Pieces<T>& pieces,
                     const Block& block, Index n, T* r, Index stride) {
  constexpr double sign[2] = {1, -1};
  for (Index i = 0; i < n; ++i) {
    const bool later = block.piece[0][i] > block.piece[1][i], same = block.piece[0][i] == block.piece[1][i];
    const int reversed = later | (same & (block.local[0][i] > block.local[1][i]));
    const Index a = within(block.piece[reversed][i], first, last);
    const Index b = within(block.piece[1 - reversed][i], first, last);
    const double value = between<order>(coefficients, prefix, first, pieces, a, block.local[reversed][i], b,
                                        block.local[1 - reversed][i]);
    r[i * stride] = static_cast<T>(value * sign[reversed]);
  }
}

template <int order, class T>
void prefix_sums(const T* coefficients, const Pieces<T>& pieces, Index first, Index last, Sum* prefix) {
  Sum sum{0, 0};
  double left = pieces.left(first);
  for (Index k = first; k < last; ++k) {
    const double right = pieces.left(k + 1);
    prefix[k - first] = sum;
    sum = add(sum, integral<order>(coefficients + order * k, 0.0, right - left));
    left = right;
  }
  prefix[last - first] = sum;
}

// The pieces of the least and the greatest limit, NaN apart.
template <class T>
void piece_range(const DfTask1D& task, const Limits<T>& limits, Index& first, Index& last) {
  T ends[2] = {limits.left[0], limits.left[0]};
  const auto widen = [&ends](const T* limit, Index n) {
    for (Index i = 0; i < n; ++i) {
      ends[0] = ends[0] <= limit[i] ? ends[0] : limit[i] == limit[i] ? limit[i] : ends[0];
      ends[1] = ends[1] >= limit[i] ? ends[1] : limit[i] == limit[i] ? limit[i] : ends[1];
    }
  };
  widen(limits.left, limits.count);
  widen(limits.right, limits.count);
  Index piece[2];
  double local[2];
  Pieces<T>(task, 2, 0, nullptr).find(2, ends, nullptr, piece, local);
  first = piece[0] < piece[1] ? piece[0] : piece[1];
  last = piece[0] < piece[1] ? piece[1] : piece[0];
}

template <class T, int order>
int32_t run(const DfTask1D& task, const Limits<T>& limits, int64_t lefthint, int64_t righthint, T* r, bool by_limit) {
  const Index functions = static_cast<Index>(task.ny);
  Index first, last;
  piece_range(task, limits, first, last);
  const Index entries = last - first + 1;
  WorkArray<Sum> prefix;
  if (!allocate(prefix, int64_t{entries} * functions)) return ORIN_DF_NO_MEMORY;
  Pieces<T> left(task, limits.count, lefthint, nullptr), right(task, limits.count, righthint, nullptr);
  for (Index f = 0; f < functions; ++f) {
    prefix_sums<order>(static_cast<const T*>(task.scoeff[f]), left, first, last, prefix.data() + f * entries);
  }
  Block block;
  for (Index begin = 0; begin < limits.count; begin += block_limits) {
    const Index n = limits.count - begin < block_limits ? limits.count - begin : block_limits;
    left.find(n, limits.left + begin, nullptr, block.piece[0], block.local[0]);
    right.find(n, limits.right + begin, nullptr, block.piece[1], block.local[1]);
    for (Index f = 0; f < functions; ++f) {
      integrate_block<order>(static_cast<const T*>(task.scoeff[f]), prefix.data() + f * entries, first, last, left,
                             block, n, r + (by_limit ? begin * functions + f : f * limits.count + begin),
                             by_limit ? functions : 1);
    }
  }
  return ORIN_DF_OK;
}

// The types that a constructor makes of an order.
constexpr bool integrable(int64_t order, int64_t type) {
  if (type < 0 || type > ORIN_DF_AKIMA) return false;
  if (order == ORIN_DF_QUADRATIC) return type == ORIN_DF_DEFAULT || type == ORIN_DF_SUBBOTIN;
  return (order == ORIN_DF_LINEAR || order == ORIN_DF_CUBIC) && type != ORIN_DF_SUBBOTIN;
}

template <class T>
int32_t integrate(const DfTask1D* task, int64_t nlim, const T* left, int64_t lefthint, const T* right,
                  int64_t righthint, T* r, int64_t rhint) {
  if (task == nullptr) return ORIN_DF_NULL_TASK;
  if (!integrable(task->s_order, task->s_type)) return ORIN_DF_BAD_TYPE;
  if (task->scoeff == nullptr) return ORIN_DF_BAD_SCOEFF;
  if (nlim < 1 || task->ny < 1) return ORIN_DF_OK;
  if (left == nullptr || right == nullptr) return ORIN_DF_BAD_X;
  if (r == nullptr) return ORIN_DF_BAD_Y;
  if (rhint != 0 && rhint != ORIN_DF_BY_FUNCTION && rhint != ORIN_DF_BY_POINT) return ORIN_DF_BAD_YHINT;
  if (has_knots(*task) && own_knots(*task) && task->ic == nullptr) return ORIN_DF_BAD_IC;
  constexpr int32_t (*kernels[])(const DfTask1D&, const Limits<T>&, int64_t, int64_t, T*, bool) = {run<T, 2>, run<T, 3>,
                                                                                                   run<T, 4>};
  return kernels[task->s_order - 2](*task, {static_cast<Index>(nlim), left, right}, lefthint, righthint, r,
                                    by_point(rhint));
}

}  // namespace
}  // namespace orin::data_fitting

using namespace orin::data_fitting;

extern "C" {

ORIN_API int32_t ORIN_CALL orin_df_kernel_dIntegrate1D(const DfTask1D* task, int64_t nlim, const double* left,
                                                       int64_t lefthint, const double* right, int64_t righthint,
                                                       double* r, int64_t rhint) {
  return integrate(task, nlim, left, lefthint, right, righthint, r, rhint);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sIntegrate1D(const DfTask1D* task, int64_t nlim, const float* left,
                                                       int64_t lefthint, const float* right, int64_t righthint,
                                                       float* r, int64_t rhint) {
  return integrate(task, nlim, left, lefthint, right, righthint, r, rhint);
}
}
