// selection: ascending sort, whole or for some ranks only, and Hoare's selection of one rank.
// SPDX-License-Identifier: MIT
//
// Sort      quicksort.h; a range that holds no wanted rank is left as it is. Data in order, up or down, take one pass.
// NaN       collected at the end before the sort, so that comparisons order the rest.
// Source    Hoare, Algorithm 65: Find, CACM 4 (1961); Sedgewick, Implementing quicksort programs, CACM 21 (1978).
#include "summary_stats/selection.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <utility>

#include "orin/summary_stats.h"
#include "summary_stats/quicksort.h"

namespace orin::summary_stats {
namespace {

template <class T, class Wanted>
void sort_wanted(T* a, std::ptrdiff_t n, Wanted wanted) noexcept {
  const std::ptrdiff_t numbers = partition(a, n, [](T x) { return x == x; });
  quicksort(a, 0, numbers, 2 * static_cast<int>(std::bit_width(static_cast<std::size_t>(numbers))), wanted);
}

template <class T>
void order(T& a, T& b) noexcept {
  if (b < a) std::swap(a, b);
}

// One step of the selection on a[l..r], r > l + 1: the final positions of the two scans.
//
// Neither scan leaves the range, NaN or not. The upward scan stops at r at the latest, since a[r] < pivot is false: the
// second ordering leaves pivot <= a[r] or one of them NaN; the third replaces the pivot by a[l] only if that is larger
// than it, and the first ordering kept a[l] from being larger than any a[r] that is a number. The downward scan starts
// with r - 1, so that a[r] stays, and stops at l + 1, where the pivot itself stands.
template <class T>
std::pair<std::int32_t, std::int32_t> selection_step(T* a, std::int32_t l, std::int32_t r) noexcept {
  std::swap(a[l + (r - l) / 2], a[l + 1]);
  order(a[l], a[r]);
  order(a[l + 1], a[r]);
  order(a[l], a[l + 1]);
  const T pivot = a[l + 1];
  std::int32_t up = l + 1, down = r;
  for (;;) {
    do ++up;
    while (a[up] < pivot);
    do --down;
    while (a[down] > pivot);
    if (down < up) break;
    std::swap(a[up], a[down]);
  }
  a[l + 1] = a[down];
  a[down] = pivot;
  return {up, down};
}

template <class T>
T select_rank(std::int32_t count, T* a, std::int32_t k) noexcept {
  if (k < 0 || k >= count) return std::numeric_limits<T>::quiet_NaN();
  std::int32_t l = 0, r = count - 1;
  while (r > l + 1) {
    const auto [up, down] = selection_step(a, l, r);
    if (down >= k) r = down - 1;
    if (down <= k) l = up;
  }
  if (r == l + 1) order(a[l], a[r]);
  return a[k];
}

template <class T>
std::int32_t step(std::int32_t l, std::int32_t r, T* a, std::int32_t* up, std::int32_t* down) noexcept {
  if (r > l + 1) {
    const auto [final_up, final_down] = selection_step(a, l, r);
    *up = final_up;
    *down = final_down;
  } else {
    if (r == l + 1) order(a[l], a[r]);
    *up = r + 1;
    *down = l;
  }
  return ORIN_SS_OK;
}

template <class T>
std::int32_t sort_counted(std::int32_t count, T* a) noexcept {
  sort_ascending(a, std::ptrdiff_t{count});
  return ORIN_SS_OK;
}

}  // namespace

template <class T>
void sort_ascending(T* a, std::ptrdiff_t n) noexcept {
  // Data often come in order, up or down; a NaN is out of order.
  std::ptrdiff_t up = 1, down = 1;
  while (up < n && a[up - 1] <= a[up]) ++up;
  if (up >= n) return;
  while (down < n && a[down - 1] >= a[down]) ++down;
  if (down == n) return std::reverse(a, a + n);
  sort_wanted(a, n, [](std::ptrdiff_t, std::ptrdiff_t) { return true; });
}

template <class T>
void place_ranks(T* a, std::ptrdiff_t n, const std::ptrdiff_t* ranks, std::ptrdiff_t count) noexcept {
  sort_wanted(a, n, [=](std::ptrdiff_t first, std::ptrdiff_t last) {
    const std::ptrdiff_t* rank = std::lower_bound(ranks, ranks + count, first);
    return rank != ranks + count && *rank < last;
  });
}

template void sort_ascending<float>(float*, std::ptrdiff_t) noexcept;
template void sort_ascending<double>(double*, std::ptrdiff_t) noexcept;
template void place_ranks<float>(float*, std::ptrdiff_t, const std::ptrdiff_t*, std::ptrdiff_t) noexcept;
template void place_ranks<double>(double*, std::ptrdiff_t, const std::ptrdiff_t*, std::ptrdiff_t) noexcept;

}  // namespace orin::summary_stats

using namespace orin::summary_stats;

ORIN_API int32_t ORIN_CALL __jundQSort(int32_t count, double* a) { return sort_counted(count, a); }

ORIN_API int32_t ORIN_CALL __junsQSort(int32_t count, float* a) { return sort_counted(count, a); }

ORIN_API double ORIN_CALL __jundQSortSelect(int32_t count, double* a, int32_t k) { return select_rank(count, a, k); }

ORIN_API float ORIN_CALL __junsQSortSelect(int32_t count, float* a, int32_t k) { return select_rank(count, a, k); }

ORIN_API int32_t ORIN_CALL __jundQSortStep(int32_t l, int32_t r, double* a, int32_t* up, int32_t* down) {
  return step(l, r, a, up, down);
}

ORIN_API int32_t ORIN_CALL __junsQSortStep(int32_t l, int32_t r, float* a, int32_t* up, int32_t* down) {
  return step(l, r, a, up, down);
}
