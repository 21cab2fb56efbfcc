// moments: mean and central power sums of one variable, block by block.
// SPDX-License-Identifier: MIT
//
// Method    A block gives the sums S_k = sum w d^k of d = x - c, c being the mean so far; with m = S1/W the block's
//           central sums are
//             M2 = S2 - m S1,  M3 = S3 - 3 m S2 + 2 m^2 S1,  M4 = S4 - 4 m S3 + 6 m^2 S2 - 3 m^3 S1
//           and two sets A, B with means a, b, e = b - a, W = A + B unite to (weights written A, B)
//             mean = a + e B/W
//             M2 = M2a + M2b + e^2 AB/W
//             M3 = M3a + M3b + e^3 AB(A-B)/W^2 + 3e (A M2b - B M2a)/W
//             M4 = M4a + M4b + e^4 AB(A^2-AB+B^2)/W^3 + 6e^2 (A^2 M2b + B^2 M2a)/W^2 + 4e (A M3b - B M3a)/W
// Bounds    A block's sums about the running mean are at most a small multiple of the central ones of all data, so that
//           nothing is lost to cancellation; at most 128 additions in a row within a block, two-word sums between blocks.
// Special   observations of weight zero take no part, whatever they are; NaN and infinities make the sums NaN.
// Source    Chan, Golub, LeVeque, Algorithms for computing the sample variance, The American Statistician 37 (1983);
//           Pebay, Formulas for robust, one-pass parallel computation of covariances and arbitrary-order statistical
//           moments, SAND2008-6212 (2008).
#ifndef ORIN_SUMMARY_STATS_MOMENTS_H
#define ORIN_SUMMARY_STATS_MOMENTS_H

#include <emmintrin.h>

#include <cstddef>

#include "simd/prefetch.h"
#include "summary_stats/task.h"

namespace orin::summary_stats {

// A sum in two words: the error of every addition is kept.
struct LongSum {
  double high = 0, low = 0;

  void add(double x) noexcept {
    const double sum = high + x;
    const double part = sum - high;
    low += (high - (sum - part)) + (x - part);
    high = sum;
  }
  double value() const noexcept { return high + low; }
};

// Sums over one block: of the weights, of their squares, and of w d^k.
struct PowerSums {
  double weight, weight2, s1, s2, s3, s4;
};

class Moments {
 public:
  // Takes in `count` observations, with weights or (w null) without; sums up to d^order are kept.
  template <int order, class T>
  void take(const T* x, const T* w, std::ptrdiff_t count) noexcept;

  double weight() const noexcept { return weight_; }
  double mean() const noexcept { return mean_; }
  double mean_low() const noexcept { return mean_low_; }                    // the true mean is mean + mean_low
  double divisor() const noexcept { return weight_ - weight2_ / weight_; }  // of the unbiased second moment
  double weight2() const noexcept { return weight2_; }
  double m2() const noexcept { return m2_.value() < 0 ? 0 : m2_.value(); }
  double m3() const noexcept { return m3_.value(); }
  double m4() const noexcept { return m4_.value(); }

 private:
  // The sums are those about c.
  template <int order>
  void unite(const PowerSums& sums, double c) noexcept;

  double weight_ = 0, weight2_ = 0;
  double mean_ = 0, mean_low_ = 0;
  double first_mean_ = 0;
  LongSum m2_, m3_, m4_;
};

// Two observations as doubles.
inline __m128d load_two(const double* x) noexcept { return _mm_loadu_pd(x); }
// The conversion straight from memory: one operation, where a load of its own would add a shuffle.
inline __m128d load_two(const float* x) noexcept {
  __m128d two;
  asm("cvtps2pd %1, %0" : "=x"(two) : "m"(*reinterpret_cast<const char(*)[8]>(x)));
  return two;
}

// The sums of one block about c.
template <int order, bool weighted, class T>
PowerSums power_sums(const T* x, const T* w, std::ptrdiff_t count, double c) noexcept {
  // Chains of additions, enough to hide the latency of one another; a mean alone takes all four.
  struct Partial {
    __m128d weight = _mm_setzero_pd(), weight2 = weight, s1 = weight, s2 = weight, s3 = weight, s4 = weight;
  } first, second, third, fourth;
  constexpr bool four_chains = order == 1 && !weighted;
  constexpr std::ptrdiff_t step = four_chains ? 8 : 4;
  // A double holds the sum of a block of floats as it is, nearly always exactly: for a mean alone c can wait for the end.
  constexpr bool shift_at_the_end = order == 1 && !weighted && sizeof(T) == sizeof(float);
  const __m128d shift = shift_at_the_end ? _mm_setzero_pd() : _mm_set1_pd(c);
  const auto deviation = [shift](__m128d v) { return shift_at_the_end ? v : v - shift; };

  const auto add = [](Partial& p, __m128d d, __m128d wt) {
    if constexpr (weighted) {
      p.weight = p.weight + wt;
      p.weight2 = p.weight2 + wt * wt;
      d = _mm_and_pd(d, _mm_cmpneq_pd(wt, _mm_setzero_pd()));
    }
    const __m128d wd = weighted ? wt * d : d;
    const __m128d wd2 = wd * d;
    p.s1 = p.s1 + wd;
    if constexpr (order >= 2) p.s2 = p.s2 + wd2;
    if constexpr (order >= 3) p.s3 = p.s3 + wd2 * d;
    if constexpr (order >= 4) p.s4 = p.s4 + wd2 * (d * d);
  };
  std::ptrdiff_t i = 0;
  const auto add_two = [&](Partial& p, std::ptrdiff_t at) {
    add(p, deviation(load_two(x + at)), weighted ? load_two(w + at) : shift);
  };
  for (; i + step <= count; i += step) {
    if constexpr (order == 1) simd::prefetch<4096, 1>(x + i);
    add_two(first, i);
    add_two(second, i + 2);
    if constexpr (four_chains) {
      add_two(third, i + 4);
      add_two(fourth, i + 6);
    }
  }
  for (; i < count; ++i) {
    add(first, _mm_sub_sd(_mm_set_sd(static_cast<double>(read(x + i))), shift),
        weighted ? _mm_set_sd(read(w + i)) : shift);
  }

  const auto total = [&](__m128d Partial::*sum) {
    __m128d all = first.*sum + second.*sum;
    if constexpr (four_chains) all = all + (third.*sum + fourth.*sum);
    return _mm_cvtsd_f64(all) + _mm_cvtsd_f64(_mm_unpackhi_pd(all, all));
  };
  const double n = static_cast<double>(count);
  return {weighted ? total(&Partial::weight) : n,
          weighted ? total(&Partial::weight2) : n,
          shift_at_the_end ? total(&Partial::s1) - n * c : total(&Partial::s1),
          total(&Partial::s2),
          total(&Partial::s3),
          total(&Partial::s4)};
}

// A first guess of the mean: x0 + mean(x - x0) with the first observation x0 that has a weight, which is x0 itself for
// a constant.
template <class T>
double first_mean(const T* x, const T* w, std::ptrdiff_t count) noexcept {
  std::ptrdiff_t i = 0;
  while (w != nullptr && i + 1 < count && read(w + i) == 0) ++i;
  const double x0 = read(x + i);
  const PowerSums sums = w != nullptr ? power_sums<1, true>(x, w, count, x0) : power_sums<1, false>(x, w, count, x0);
  return sums.weight == 0 ? x0 : x0 + sums.s1 / sums.weight;
}

template <int order, class T>
void Moments::take(const T* x, const T* w, std::ptrdiff_t count) noexcept {
  if (weight_ == 0) {
    mean_ = first_mean_ = first_mean(x, w, count);
    mean_low_ = 0;
  }
  // A mean alone does not wait for that of the block before.
  const double c = order == 1 ? first_mean_ : mean_;
  unite<order>(w != nullptr ? power_sums<order, true>(x, w, count, c) : power_sums<order, false>(x, w, count, c), c);
}

template <int order>
void Moments::unite(const PowerSums& s, double c) noexcept {
  const double A = weight_, B = s.weight, W = A + B;
  if (B == 0) return;
  const double m = s.s1 / B;  // block mean - c
  const double from_c = order == 1 ? mean_low_ - (c - mean_) : mean_low_;
  const double e = A == 0 ? m : m - from_c;  // block mean - mean so far
  const double a = A / W, b = B / W;
  if constexpr (order >= 4) {
    const double block = s.s4 - 4 * m * s.s3 + 6 * m * m * s.s2 - 3 * m * m * m * s.s1;
    const double m2 = s.s2 - m * s.s1, m3 = s.s3 - 3 * m * s.s2 + 2 * m * m * s.s1;
    const double m2_before = m2_.value(), m3_before = m3_.value();
    m4_.add(block);
    m4_.add(e * e * e * e * A * b * (a * a - a * b + b * b));
    m4_.add(6 * e * e * (a * a * m2 + b * b * m2_before));
    m4_.add(4 * e * (a * m3 - b * m3_before));
  }
  if constexpr (order >= 3) {
    m3_.add(s.s3 - 3 * m * s.s2 + 2 * m * m * s.s1);
    m3_.add(e * e * e * A * b * (a - b));
    m3_.add(3 * e * (a * (s.s2 - m * s.s1) - b * m2_.value()));
  }
  if constexpr (order >= 2) {
    m2_.add(s.s2 - m * s.s1);
    m2_.add(e * e * A * b);
  }
  // The mean in two words: mean_ + mean_low_ + e b.
  const double step = mean_low_ + e * b;
  const double mean = mean_ + step;
  mean_low_ = step - (mean - mean_);
  mean_ = mean;
  weight_ = W;
  weight2_ += s.weight2;
}

}  // namespace orin::summary_stats

#endif
