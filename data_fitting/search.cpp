// search: finding the partition cells of sites, one method per kind of partition and order of sites.
// SPDX-License-Identifier: MIT
//
// Bounds   per site: uniform constant; sorted amortised constant; general O(log nx), with many sites about constant;
//          peak the distance from the peak cell
// Special  NaN compares false: each method's walks end at the cell that data_fitting.h tells
// Source   guide tables: Chen and Asau, AIIE Transactions 6 (1974) 163-166, there for drawing from a distribution
#include "data_fitting/search.h"

#include <limits>

#include "data_fitting/vectors.h"

namespace orin::data_fitting {
namespace {

constexpr Index sorted_walk = 16;  // gaps up to this size are walked, not bisected
constexpr Index general_walk = 40;
constexpr Index block_sites = 256;  // cells of a block stay in the first-level cache between two passes

// --- Shared pieces ---------------------------------------------------------------------------------------------------

// The first place from `lo` on, at most `hi`, whose point is not <= s.
template <class T>
Index walk_up(const T* x, Index lo, Index hi, T s) {
  using V = Vec<T>;
  constexpr unsigned every_lane = (1u << V::lanes) - 1;
  const V bound = s;
  for (; lo + V::lanes <= hi; lo += V::lanes) {
    const unsigned passed = lane_bits(V::load(x + lo) <= bound);
    if (passed != every_lane) return lo + __builtin_ctz(~passed);
  }
  while (lo < hi && x[lo] <= s) ++lo;
  return lo;
}

// Narrows lo..hi down to a gap of `gap` points; selects by masks, so that no branch depends on the site.
template <class T>
void bisect_to_gap(const T* x, Index& lo, Index& hi, Index gap, T s) {
  while (lo < hi - gap) {
    const Index mid = (lo + hi) / 2;
    const Index above = -Index{x[mid] > s};
    hi ^= (hi ^ mid) & above;
    lo ^= (lo ^ mid) & ~above;
  }
}

template <class T>
bool ascending(const T* x, Index nx) {
  bool all = true;
  for (Index i = 1; i < nx; ++i) all &= x[i - 1] <= x[i];
  return all;
}

// --- Uniform partitions ----------------------------------------------------------------------------------------------

template <class T>
int64_t uniform_cell(int64_t nx, T x0, T r, T s) {
  if (!(s >= x0)) return 0;
  const T offset = (s - x0) * r;
  if (offset <= -1) return 0;  // a negative multiplier; the conversion holds from here on
  constexpr T convertible = static_cast<T>(int64_t{1} << 62);  // nx itself may be rounded in T
  if (!(offset < convertible)) return nx;
  const int64_t cell = static_cast<int64_t>(offset) + 1;
  return cell < nx ? cell : nx;
}

// A conversion in registers holds while nx - 1 is exact in T and cells fit in 32 bits.
template <class T>
constexpr int64_t max_vector_nx = sizeof(T) == sizeof(float) ? int64_t{1} << 24 : std::numeric_limits<int32_t>::max();

// Four sites at a time. cells() limits the offset to nx - 1 before it is truncated: cell nx, also for an offset that is
// NaN; `inside` is -1 where s >= x[0], else 0. likely_cells() leaves the limits out and sets the sign of `doubtful` in
// a lane whose site may lie in an outer cell.
template <class T>
struct UniformVector;

__m128i select_inside(__m128i truncated, __m128i inside) {
  return _mm_and_si128(_mm_sub_epi32(truncated, inside), inside);
}

template <>
struct UniformVector<double> {
  __m128d origin, scale, bound;
  __m128i below_bound;  // the bound's upper half less one

  UniformVector(double x0, double r, double last)
      : origin(_mm_set1_pd(x0)), scale(_mm_set1_pd(r)), bound(_mm_set1_pd(last)) {
    below_bound = _mm_sub_epi32(_mm_shuffle_epi32(_mm_castpd_si128(bound), _MM_SHUFFLE(3, 3, 1, 1)), _mm_set1_epi32(1));
  }

  __m128i cells(const double* site) const {
    const __m128d s0 = _mm_loadu_pd(site), s1 = _mm_loadu_pd(site + 2);
    const __m128i inside = halves<0>(_mm_cmpge_pd(s0, origin), _mm_cmpge_pd(s1, origin));
    return select_inside(truncate(_mm_min_pd(place(s0), bound), _mm_min_pd(place(s1), bound)), inside);
  }

  // A place whose upper half, as an integer, lies in 0..below_bound is at least +0 and below the bound.
  __m128i likely_cells(const double* site, __m128i& doubtful) const {
    const __m128d p0 = place(_mm_loadu_pd(site)), p1 = place(_mm_loadu_pd(site + 2));
    const __m128i upper = halves<1>(p0, p1);
    doubtful = _mm_or_si128(doubtful, _mm_or_si128(upper, _mm_sub_epi32(below_bound, upper)));
    return _mm_add_epi32(truncate(p0, p1), _mm_set1_epi32(1));
  }

 private:
  __m128d place(__m128d s) const { return _mm_mul_pd(_mm_sub_pd(s, origin), scale); }
  static __m128i truncate(__m128d p0, __m128d p1) {
    return _mm_unpacklo_epi64(_mm_cvttpd_epi32(p0), _mm_cvttpd_epi32(p1));
  }
  // The lower (0) or upper (1) 32 bits of four doubles.
  template <int half>
  static __m128i halves(__m128d a, __m128d b) {
    return _mm_castps_si128(_mm_shuffle_ps(_mm_castpd_ps(a), _mm_castpd_ps(b), half == 0 ? 0x88 : 0xDD));
  }
};

template <>
struct UniformVector<float> {
  __m128 origin, scale, bound;

  UniformVector(float x0, float r, float last)
      : origin(_mm_set1_ps(x0)), scale(_mm_set1_ps(r)), bound(_mm_set1_ps(last)) {}

  __m128i cells(const float* site) const {
    const __m128 s = _mm_loadu_ps(site);
    const __m128 place = _mm_min_ps(_mm_mul_ps(_mm_sub_ps(s, origin), scale), bound);
    return select_inside(_mm_cvttps_epi32(place), _mm_castps_si128(_mm_cmpge_ps(s, origin)));
  }

  // In four lanes the limits cost no more than the doubt.
  __m128i likely_cells(const float* site, __m128i&) const { return cells(site); }
};

}  // namespace

template <class T, class Cell>
void find_uniform(int64_t nx, const T* x, Index nsite, const T* site, T r, Cell* cell) {
  constexpr Index group = 32;
  const T x0 = x[0];
  Index i = 0;
  if (nx <= max_vector_nx<T> && r > 0) {  // else a site and its place may differ in sign
    const UniformVector<T> vector(x0, r, static_cast<T>(nx - 1));
    for (; i + group <= nsite; i += group) {
      fetch_ahead<group>(site + i);
      __m128i doubtful = _mm_setzero_si128();
      for (Index k = i; k < i + group; k += 4) store_cells(vector.likely_cells(site + k, doubtful), cell + k);
      if (_mm_movemask_ps(_mm_castsi128_ps(doubtful)) != 0) {
        for (Index k = i; k < i + group; k += 4) store_cells(vector.cells(site + k), cell + k);
      }
    }
  }
  for (; i < nsite; ++i) cell[i] = static_cast<Cell>(uniform_cell(nx, x0, r, site[i]));
}

// --- Sorted sites ----------------------------------------------------------------------------------------------------

template <class T>
SortedSearch<T>::SortedSearch(const T* x, Index nx, Index nsite, Index position)
    : x_(x), nx_(nx), position_(position < 0 ? 0 : position), walk_first_(nsite >= nx / 4 && ascending(x, nx)) {}

template <class T>
void SortedSearch<T>::advance_by_bisection(T s) {
  if (position_ < nx_ - sorted_walk) {
    Index hi = nx_;
    bisect_to_gap(x_, position_, hi, sorted_walk, s);
  }
  while (position_ < nx_ && x_[position_] <= s) ++position_;
}

template <class T>
void SortedSearch<T>::advance(T s) {
  if (walk_first_ && s == s) {
    const Index near = nx_ - position_ < sorted_walk ? nx_ : position_ + sorted_walk;
    while (position_ < near && x_[position_] <= s) ++position_;
    if (position_ < near) return;
  }
  advance_by_bisection(s);
}

// With ascending points, sites below the point at the position leave it where it is: whole groups are told at once.
template <class T>
template <class Cell>
void SortedSearch<T>::find(Index nsite, const T* site, Cell* cell) {
  using V = Vec<T>;
  constexpr Index group = 4 * V::lanes;
  constexpr unsigned every_lane = (1u << V::lanes) - 1;
  Index i = 0;
  while (i < nsite) {
    if (walk_first_ && position_ < nx_) {
      const V next = x_[position_];
      const Cell here = static_cast<Cell>(position_);
      while (i + group <= nsite && lane_bits((V::load(site + i) < next) & (V::load(site + i + V::lanes) < next) &
                                             (V::load(site + i + 2 * V::lanes) < next) &
                                             (V::load(site + i + 3 * V::lanes) < next)) == every_lane) {
        for (Index k = 0; k < group; ++k) cell[i + k] = here;
        i += group;
      }
    }
    const Index end = nsite - i < group ? nsite : i + group;
    for (; i < end; ++i) {
      advance(site[i]);
      cell[i] = static_cast<Cell>(position_);
    }
  }
}

// --- Sites near a hinted cell ----------------------------------------------------------------------------------------

namespace {

template <class T>
Index gallop(const T* x, Index nx, Index hint, T s) {
  Index lo = hint, hi = hint;  // the cell lies in lo..hi
  if (hint < nx && x[hint] <= s) {
    for (Index step = 1; hi < nx && x[hi] <= s; step *= 2) {
      lo = hi + 1;
      hi = nx - hi < step ? nx : hi + step;
    }
  } else {
    for (Index step = 1; lo > 0 && x[lo - 1] > s; step *= 2) {
      hi = lo - 1;
      lo = lo < step ? 0 : lo - step;
    }
  }
  while (lo < hi) {
    const Index mid = lo + (hi - lo) / 2;
    if (x[mid] <= s) {
      lo = mid + 1;
    } else {
      hi = mid;
    }
  }
  return lo;
}

}  // namespace

template <class T, class Cell>
void find_near(Index nx, const T* x, Index nsite, const T* site, Index hint, Cell* cell) {
  for (Index i = 0; i < nsite; ++i) cell[i] = static_cast<Cell>(gallop(x, nx, hint, site[i]));
}

// --- General partitions ----------------------------------------------------------------------------------------------

template <class T>
GeneralSearch<T>::GeneralSearch(const T* x, Index nx, Index nsite) : x_(x), nx_(nx) {
  constexpr Index worth_a_table = 32;
  if (nsite < worth_a_table + nx / 16 || nx > std::numeric_limits<int32_t>::max() || !build_guide(nsite)) longest_ = 0;
}

// The bucket of a site never falls as the site grows, since each rounded operation in it is monotone. Hence points of
// lower buckets are below a site and points of higher buckets above it, and its own bucket alone is left to search.
template <class T>
int GeneralSearch<T>::bucket(T s) const {
  T place = (s - x_[0]) * buckets_per_length_;
  place = place > 0 ? place : 0;
  const T last = static_cast<T>(last_bucket_);
  return static_cast<int>(place < last ? place : last);
}

template <class T>
bool GeneralSearch<T>::build_guide(Index nsite) {
  int buckets = 64;
  while (buckets < max_buckets && buckets < 2 * nx_ && buckets < 4 * nsite) buckets *= 2;
  last_bucket_ = buckets - 1;
  const T length = x_[nx_ - 1] - x_[0];
  buckets_per_length_ = static_cast<T>(buckets) / length;
  if (!(length > 0) || !(length < std::numeric_limits<T>::infinity()) ||
      !(buckets_per_length_ < std::numeric_limits<T>::infinity()) || !ascending(x_, nx_)) {
    return false;
  }
  // Points per bucket, then their running sum: the points before each bucket.
  for (int b = 0; b <= buckets; ++b) first_[b] = 0;
  for (Index i = 0; i < nx_; ++i) ++first_[bucket(x_[i]) + 1];
  std::uint32_t longest = 0;
  for (int b = 0; b < buckets; ++b) {
    longest = first_[b + 1] > longest ? first_[b + 1] : longest;
    first_[b + 1] += first_[b];
  }
  longest_ = static_cast<Index>(longest);
  // A window of the longest bucket's length must fit behind each start; moved down, it begins with points below.
  const auto highest_start = static_cast<std::uint32_t>(nx_ - longest_);
  for (int b = 0; b < buckets; ++b) {
    if (first_[b] > highest_start) first_[b] = highest_start;
  }
  nan_cell_ = bisect(std::numeric_limits<T>::quiet_NaN());
  return true;
}

template <class T>
Index GeneralSearch<T>::bisect(T s) const {
  if (s >= x_[nx_ - 1]) return nx_;
  if (s < x_[0]) return 0;
  const Index middle = nx_ / 2, before_middle = middle == 0 ? 0 : middle - 1;
  const Index lower = -Index{x_[middle] > s};
  Index lo = before_middle & ~lower;
  Index hi = (middle & lower) | ((nx_ - 1) & ~lower);
  bisect_to_gap(x_, lo, hi, general_walk, s);
  return walk_up(x_, lo, hi, s);
}

template <class T>
template <class Cell>
void GeneralSearch<T>::find(Index nsite, const T* site, Cell* cell) const {
  if (longest_ == 0) {
    for (Index i = 0; i < nsite; ++i) cell[i] = static_cast<Cell>(bisect(site[i]));
    return;
  }
  const T* const x = x_;
  const Index longest = longest_;
  for (Index i = 0; i < nsite; ++i) {
    const T s = site[i];
    Index found = static_cast<Index>(first_[bucket(s)]);
    for (Index left = longest; left > 1;) {
      const Index half = left / 2;
      found += -Index{x[found + half - 1] <= s} & half;
      left -= half;
    }
    found += x[found] <= s;
    cell[i] = static_cast<Cell>(s == s ? found : nan_cell_);
  }
}

// --- Methods that need no state --------------------------------------------------------------------------------------

template <class T, class Cell>
void find_quasi_uniform(Index nx, const T* x, Index nsite, const T* site, T r, Cell* cell) {
  for (Index begin = 0; begin < nsite; begin += block_sites) {
    const Index end = nsite - begin < block_sites ? nsite : begin + block_sites;
    find_uniform(nx, x, end - begin, site + begin, r, cell + begin);
    for (Index i = begin; i < end; ++i) {
      const T s = site[i];
      Index c = static_cast<Index>(cell[i]);
      if (c < nx && s > x[c]) {
        while (c < nx && x[c] <= s) ++c;
      } else {
        while (c > 0 && x[c - 1] > s) --c;
      }
      cell[i] = static_cast<Cell>(c);
    }
  }
}

template <class T, class Cell>
void find_from_peak(Index nx, const T* x, Index nsite, const T* site, T peak, Cell* cell) {
  const Index p = cell_from(peak, nx);
  for (Index i = 0; i < nsite; ++i) {
    const T s = site[i];
    Index c = p;
    if (p < nx && s >= x[p]) {
      while (c < nx && x[c] <= s) ++c;
    } else {
      while (c > 0 && x[c - 1] > s) --c;
    }
    cell[i] = static_cast<Cell>(c);
  }
}

// --- Instances -------------------------------------------------------------------------------------------------------

template class SortedSearch<double>;
template class SortedSearch<float>;
template class GeneralSearch<double>;
template class GeneralSearch<float>;

template void find_uniform(int64_t, const double*, Index, const double*, double, int32_t*);
template void find_quasi_uniform(Index, const double*, Index, const double*, double, int32_t*);
template void find_from_peak(Index, const double*, Index, const double*, double, int32_t*);
template void find_near(Index, const double*, Index, const double*, Index, int32_t*);
template void SortedSearch<double>::find(Index, const double*, int32_t*);
template void GeneralSearch<double>::find(Index, const double*, int32_t*) const;

template void find_uniform(int64_t, const double*, Index, const double*, double, int64_t*);
template void find_quasi_uniform(Index, const double*, Index, const double*, double, int64_t*);
template void find_from_peak(Index, const double*, Index, const double*, double, int64_t*);
template void find_near(Index, const double*, Index, const double*, Index, int64_t*);
template void SortedSearch<double>::find(Index, const double*, int64_t*);
template void GeneralSearch<double>::find(Index, const double*, int64_t*) const;

template void find_uniform(int64_t, const float*, Index, const float*, float, int32_t*);
template void find_quasi_uniform(Index, const float*, Index, const float*, float, int32_t*);
template void find_from_peak(Index, const float*, Index, const float*, float, int32_t*);
template void find_near(Index, const float*, Index, const float*, Index, int32_t*);
template void SortedSearch<float>::find(Index, const float*, int32_t*);
template void GeneralSearch<float>::find(Index, const float*, int32_t*) const;

template void find_uniform(int64_t, const float*, Index, const float*, float, int64_t*);
template void find_quasi_uniform(Index, const float*, Index, const float*, float, int64_t*);
template void find_from_peak(Index, const float*, Index, const float*, float, int64_t*);
template void find_near(Index, const float*, Index, const float*, Index, int64_t*);
template void SortedSearch<float>::find(Index, const float*, int64_t*);
template void GeneralSearch<float>::find(Index, const float*, int64_t*) const;

}  // namespace orin::data_fitting
