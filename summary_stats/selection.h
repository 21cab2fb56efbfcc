// selection.h: ascending sort, whole or as far as some ranks need it.
// SPDX-License-Identifier: MIT
#ifndef ORIN_SUMMARY_STATS_SELECTION_H
#define ORIN_SUMMARY_STATS_SELECTION_H

#include <cstddef>

namespace orin::summary_stats {

// Ascending, NaN last. Never slower than n log n. Defined for float and double.
template <class T>
void sort_ascending(T* a, std::ptrdiff_t n) noexcept;

// Brings the values of the given ranks, which ascend, to their places; the rest stands between them in some order.
template <class T>
void place_ranks(T* a, std::ptrdiff_t n, const std::ptrdiff_t* ranks, std::ptrdiff_t count) noexcept;

}  // namespace orin::summary_stats

#endif
