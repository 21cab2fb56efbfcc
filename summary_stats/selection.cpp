// selection: ascending sort, whole or for some ranks only, and Hoare's selection of one rank.
// SPDX-License-Identifier: MIT
//
// Sort      quicksort whose partition has no branch on the data: every step swaps and the boundary moves by the outcome
//           of a comparison. Pivot: median of 3, of three such medians in long ranges. Ranges of up to 16 elements are
//           placed by counting the smaller ones. Equal elements leave the range at once when the pivot is its minimum.
// Ranks     the same, but a range that holds no wanted rank is left as it is.
// Bounds    2 log2 n levels, then heap sort: n log n at worst.
// NaN       collected at the end before the sort, so that comparisons order the rest.
// Source    Hoare, Quicksort, Computer Journal 5 (1962), and Algorithm 65: Find, CACM 4 (1961); Sedgewick, Implementing
//           quicksort programs, CACM 21 (1978); Musser, Introspective sorting and selection, SP&E 27 (1997).
#include "summary_stats/selection.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <utility>

#include "orin/summary_stats.h"

namespace orin::summary_stats {
namespace {

constexpr std::ptrdiff_t small_range = 16;     // sorted by counting
constexpr std::ptrdiff_t ninther_range = 128;  // from here on the pivot is a median of medians

// Moves the elements that belong in front to the front and returns their number.
template <class T, class InFront>
std::ptrdiff_t partition(T* a, std::ptrdiff_t n, InFront in_front) noexcept {
  std::ptrdiff_t boundary = 0;
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    const T x = a[i];
    a[i] = a[boundary];
    a[boundary] = x;
    boundary += in_front(x) ? 1 : 0;
  }
  return boundary;
}

template <class T>
T median(T a, T b, T c) noexcept {
  return std::max(std::min(a, b), std::min(std::max(a, b), c));
}

template <class T>
T choose_pivot(const T* a, std::ptrdiff_t n) noexcept {
  const std::ptrdiff_t step = n / 8, middle = n / 2, last = n - 1;
  if (n < ninther_range) return median(a[0], a[middle], a[last]);
  return median(median(a[0], a[step], a[2 * step]), median(a[middle - step], a[middle], a[middle + step]),
                median(a[last - 2 * step], a[last - step], a[last]));
}

// Every element goes to the place that the number of smaller ones tells; equal ones keep their order.
template <class T>
void counting_sort(T* a, std::ptrdiff_t n) noexcept {
  T copy[small_range];
  std::copy(a, a + n, copy);
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    std::ptrdiff_t place = 0;
    for (std::ptrdiff_t j = 0; j < i; ++j) place += copy[j] <= copy[i] ? 1 : 0;
    for (std::ptrdiff_t j = i + 1; j < n; ++j) place += copy[j] < copy[i] ? 1 : 0;
    a[place] = copy[i];
  }
}

template <class T>
void heap_sort(T* a, std::ptrdiff_t n) noexcept {
  std::make_heap(a, a + n);
  std::sort_heap(a, a + n);
}

// Sorts a[first..last-1] where wanted(first, last) says so; a range that is not wanted is left in some order.
template <class T, class Wanted>
void quicksort(T* a, std::ptrdiff_t first, std::ptrdiff_t last, int levels, Wanted wanted) noexcept {
  while (last - first > small_range && wanted(first, last)) {
    T* range = a + first;
    const std::ptrdiff_t n = last - first;
    if (levels-- == 0) return heap_sort(range, n);
    const T pivot = choose_pivot(range, n);
    const std::ptrdiff_t below = partition(range, n, [pivot](T x) { return x < pivot; });
    if (below == 0) {
      first += partition(range, n, [pivot](T x) { return x <= pivot; });
    } else if (below < n - below) {
      quicksort(a, first, first + below, levels, wanted);
      first += below;
    } else {
      quicksort(a, first + below, last, levels, wanted);
      last = first + below;
    }
  }
  if (last - first <= small_range && wanted(first, last)) counting_sort(a + first, last - first);
}

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
