// covariance: sums of products of deviations, through the dense linear algebra of the threading layer.
// SPDX-License-Identifier: MIT
//
// Method    blocks of observations, less their means and times the square roots of their weights, go through a
//           symmetric rank-k update; the updates are added up. The means' second words correct the result (corrected
//           two-pass). A block keeps the storage of the data, so that nothing is transposed.
// Special   observations of weight zero take no part.
// Source    Chan, Golub, LeVeque, The American Statistician 37 (1983), corrected two-pass algorithm.
#ifndef ORIN_SUMMARY_STATS_COVARIANCE_H
#define ORIN_SUMMARY_STATS_COVARIANCE_H

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "service/late_binding.h"
#include "summary_stats/moments.h"
#include "summary_stats/observations.h"
#include "summary_stats/task.h"

namespace orin::summary_stats {

template <class T>
class Covariance {
 public:
  Covariance(const Observations<T>& data, const Variables& variables) noexcept
      : data_(data), variables_(variables), q_(variables.count()) {}

  // Adds up everything about the means in `moments`; false when there is no memory.
  [[nodiscard]] bool compute(const Moments* moments) noexcept {
    const auto q = static_cast<std::size_t>(q_);
    if (q > SIZE_MAX / sizeof(double) / q) return false;
    if (!sums_.allocate(q * q) || !product_.allocate(q * q) || !means_.allocate(q) ||
        !centred_.allocate(q * static_cast<std::size_t>(block_size))) {
      return false;
    }
    std::fill(sums_.data(), sums_.data() + q * q, 0.0);
    for (std::ptrdiff_t k = 0; k < q_; ++k) means_.data()[k] = moments[k].mean();
    data_.for_each_block([&](std::ptrdiff_t first, std::ptrdiff_t count) {
      centre(first, count);
      add_products(count);
    });
    for (std::ptrdiff_t j = 0; j < q_; ++j) {
      for (std::ptrdiff_t i = j; i < q_; ++i) {
        at(i, j) -= moments[i].weight() * moments[i].mean_low() * moments[j].mean_low();
        at(j, i) = at(i, j);
      }
    }
    return true;
  }

  // Sum over the observations of w (x_i - m_i)(x_j - m_j), i and j counting selected variables.
  double& at(std::ptrdiff_t i, std::ptrdiff_t j) noexcept { return sums_.data()[j * q_ + i]; }

 private:
  // Deviations of a block: observation after observation (q values each), or variable after variable (`count` each).
  void centre(std::ptrdiff_t first, std::ptrdiff_t count) noexcept {
    double* out = centred_.data();
    const double* means = means_.data();
    if (data_.by_observation()) {
      const bool whole_rows = q_ == data_.p();
      for (std::ptrdiff_t i = 0; i < count; ++i, out += q_) {
        const T* row = data_.row(first + i);
        std::ptrdiff_t k = 0;
        for (; whole_rows && k + 2 <= q_; k += 2) _mm_storeu_pd(out + k, load_two(row + k) - _mm_loadu_pd(means + k));
        for (; k < q_; ++k) out[k] = read(row + variables_[k]) - means[k];
      }
    } else {
      for (std::ptrdiff_t k = 0; k < q_; ++k, out += count) {
        const T* x = data_.block(variables_[k], first, count, nullptr);
        const __m128d mean = _mm_set1_pd(means[k]);
        std::ptrdiff_t i = 0;
        for (; i + 2 <= count; i += 2) _mm_storeu_pd(out + i, load_two(x + i) - mean);
        for (; i < count; ++i) out[i] = read(x + i) - means[k];
      }
    }
    if (data_.weighted()) scale(data_.weights(first), count);
  }

  void scale(const T* weights, std::ptrdiff_t count) noexcept {
    const std::ptrdiff_t over_i = data_.by_observation() ? q_ : 1, over_k = data_.by_observation() ? 1 : count;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
      const double w = read(weights + i);
      const double root = std::sqrt(w);
      for (std::ptrdiff_t k = 0; k < q_; ++k) {
        double& d = centred_.data()[i * over_i + k * over_k];
        d = w == 0 ? 0 : d * root;
      }
    }
  }

  // sums += D' D, lower triangle: column-major D' is q by count in one storage, D is count by q in the other.
  void add_products(std::ptrdiff_t count) noexcept {
    const bool by_observation = data_.by_observation();
    const auto q = static_cast<std::int32_t>(q_), k = static_cast<std::int32_t>(count);
    const double one = 1, zero = 0;
    service::blas::dsyrk("L", by_observation ? "N" : "T", &q, &k, &one, centred_.data(), by_observation ? &q : &k,
                         &zero, product_.data(), &q);
    for (std::ptrdiff_t j = 0; j < q_; ++j) {
      for (std::ptrdiff_t i = j; i < q_; ++i) at(i, j) += product_.data()[j * q_ + i];
    }
  }

  const Observations<T>& data_;
  const Variables& variables_;
  std::ptrdiff_t q_;
  Work<double> sums_, product_, means_, centred_;
};

}  // namespace orin::summary_stats

#endif
