// quicksort: ascending sort of what compares, in place, whole or in part.
// SPDX-License-Identifier: MIT
//
// Method    quicksort whose partition has no branch on the data: every step swaps and the boundary moves by the outcome
//           of a comparison. Pivot: median of 3, of three such medians in long ranges. Ranges of up to 16 elements are
//           placed by counting the smaller ones. Equal elements leave the range at once when the pivot is its minimum.
// Bounds    2 log2 n levels, then heap sort: n log n at worst.
// Source    Hoare, Quicksort, Computer Journal 5 (1962); Sedgewick, Implementing quicksort programs, CACM 21 (1978);
//           Bentley, McIlroy, Engineering a sort function, SP&E 23 (1993); Musser, Introspective sorting and selection,
//           SP&E 27 (1997).
#ifndef ORIN_SUMMARY_STATS_QUICKSORT_H
#define ORIN_SUMMARY_STATS_QUICKSORT_H

#include <algorithm>
#include <cstddef>

namespace orin::summary_stats {

inline constexpr std::ptrdiff_t small_range = 16;     // sorted by counting
inline constexpr std::ptrdiff_t ninther_range = 128;  // from here on the pivot is a median of medians

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

}  // namespace orin::summary_stats

#endif
