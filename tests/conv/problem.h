// problem.h: convolution problems of any type, shape and stride, with their exact results.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TESTS_CONV_PROBLEM_H
#define ORIN_TESTS_CONV_PROBLEM_H

#include <array>
#include <complex>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "orin/conv.h"
#include "tests/support/guard_pages.h"

namespace conv_test {

using List = std::array<std::int32_t, ORIN_CONV_MAX_DIMS>;
using Exact = std::complex<long double>;

// The exported kernels of one kind and type pair.
struct KernelRow {
  const char* name;
  bool correlation, single_data, single_sums, complex_data;
  decltype(&_junConvSSDirect1D_dec) one[2];  // direct, FFT
  decltype(&_junConvSSDirectAll_dec) all[2];
  decltype(&_junConvSSDirect1D_nodec) one_nodec[2];
  decltype(&_junConvSSDirectAll_nodec) all_nodec[2];
};

#define ROW(kind, pair, correlation, single_data, single_sums, complex_data)    \
  KernelRow {                                                                   \
#kind #pair, correlation, single_data, single_sums, complex_data,           \
        {_jun##kind##pair##Direct1D_dec, _jun##kind##pair##Fft1D_dec },         \
         {_jun##kind##pair##DirectAll_dec, _jun##kind##pair##FftAll_dec },      \
          {_jun##kind##pair##Direct1D_nodec, _jun##kind##pair##Fft1D_nodec }, { \
      _jun##kind##pair##DirectAll_nodec, _jun##kind##pair##FftAll_nodec         \
    }                                                                           \
  }
#define ROWS(kind, correlation)                                                                      \
  ROW(kind, SS, correlation, true, true, false), ROW(kind, SD, correlation, true, false, false),     \
      ROW(kind, DD, correlation, false, false, false), ROW(kind, CC, correlation, true, true, true), \
      ROW(kind, CZ, correlation, true, false, true), ROW(kind, ZZ, correlation, false, false, true)
inline const KernelRow kernel_rows[] = {ROWS(Conv, false), ROWS(Corr, true)};
#undef ROWS
#undef ROW

inline void PrintTo(const KernelRow& row, std::ostream* out) { *out << row.name; }
inline std::string row_name(const testing::TestParamInfo<KernelRow>& info) { return info.param.name; }

// Elements of any of the four data types between guard pages.
class Array {
 public:
  Array(bool single, bool complex_data, std::size_t elements, bool at_end)
      : single_(single),
        parts_(complex_data ? 2 : 1),
        bytes_(elements * parts_ * scalar(), at_end ? Bytes::at_end : Bytes::at_start) {
    std::memset(bytes_.data(), 0xC5, bytes_.size());
  }

  void* data() { return bytes_.data(); }
  std::size_t elements() const { return bytes_.size() / (parts_ * scalar()); }

  Exact get(std::size_t i) const { return {part(i * parts_), parts_ == 2 ? part(i * parts_ + 1) : 0}; }
  void set(std::size_t i, Exact value) {
    set_part(i * parts_, value.real());
    if (parts_ == 2) set_part(i * parts_ + 1, value.imag());
  }
  // Whether an element has its first content still.
  bool untouched(std::size_t i) const {
    for (std::size_t b = i * parts_ * scalar(); b < (i + 1) * parts_ * scalar(); ++b)
      if (bytes_[b] != 0xC5) return false;
    return true;
  }
  bool surroundings_intact() const { return bytes_.surroundings_intact(); }
  std::vector<unsigned char> content() const { return {bytes_.data(), bytes_.data() + bytes_.size()}; }

 private:
  using Bytes = GuardedArray<unsigned char>;
  std::size_t scalar() const { return single_ ? 4 : 8; }
  long double part(std::size_t i) const {
    float f;
    double d;
    if (single_) return std::memcpy(&f, bytes_.data() + 4 * i, 4), f;
    return std::memcpy(&d, bytes_.data() + 8 * i, 8), d;
  }
  void set_part(std::size_t i, long double value) {
    const float f = static_cast<float>(value);
    const double d = static_cast<double>(value);
    if (single_)
      std::memcpy(bytes_.data() + 4 * i, &f, 4);
    else
      std::memcpy(bytes_.data() + 8 * i, &d, 8);
  }

  bool single_;
  std::size_t parts_;
  Bytes bytes_;
};

struct Problem {
  bool correlation = false;
  int dims = 1;
  List n{}, m{}, l{}, start{}, decimation{}, xs{}, ys{}, zs{};

  std::int32_t positions(int d) const { return n[at(d)] + m[at(d)] - 1; }
  std::int32_t first_position(int d) const { return correlation ? 1 - n[at(d)] : 0; }

  // Asks for the whole result of dense operands.
  static Problem full(bool correlation, int dims, const List& n, const List& m) {
    Problem p{correlation, dims, n, m, {}, {}, {}, {}, {}, {}};
    std::int32_t xs = 1, ys = 1, zs = 1;
    for (int d = 0; d < dims; ++d) {
      p.l[at(d)] = p.positions(d);
      p.start[at(d)] = p.first_position(d);
      p.decimation[at(d)] = 1;
      p.xs[at(d)] = xs, p.ys[at(d)] = ys, p.zs[at(d)] = zs;
      xs *= n[at(d)], ys *= m[at(d)], zs *= p.l[at(d)];
    }
    return p;
  }

  static std::size_t at(int d) { return static_cast<std::size_t>(d); }
};

// Number of elements that an array with these strides spans.
inline std::size_t span(int dims, const List& shape, const List& stride) {
  std::size_t last = 0;
  for (std::size_t d = 0; d < static_cast<std::size_t>(dims); ++d)
    last += static_cast<std::size_t>(std::abs(stride[d])) * static_cast<std::size_t>(shape[d] - 1);
  return last + 1;
}

// Place of logical element k.
inline std::size_t place(int dims, const List& shape, const List& stride, const List& k) {
  std::int64_t offset = 0;
  for (std::size_t d = 0; d < static_cast<std::size_t>(dims); ++d)
    offset += std::int64_t{stride[d]} * (stride[d] < 0 ? k[d] - (shape[d] - 1) : k[d]);
  return static_cast<std::size_t>(offset);
}

// Every index vector below `shape`, first dimension fastest.
template <class F>
void for_each_index(int dims, const List& shape, F f) {
  List k{};
  for (;;) {
    f(k);
    std::size_t d = 0;
    for (; d < static_cast<std::size_t>(dims); ++d) {
      if (++k[d] < shape[d]) break;
      k[d] = 0;
    }
    if (d == static_cast<std::size_t>(dims)) return;
  }
}

// One output in extended precision by the definition, with the sum of the moduli of its terms and their number.
struct Sum {
  Exact value{};
  long double moduli = 0;
  long terms = 0;
};

inline Sum exact_output(const Problem& p, const Array& x, const Array& y, const List& i) {
  List begin{}, count{};
  for (std::size_t d = 0; d < static_cast<std::size_t>(p.dims); ++d) {
    const std::int32_t j = p.start[d] + p.decimation[d] * i[d];
    // Range of k with both indices inside: y index j - k or j + k.
    const std::int32_t low = p.correlation ? std::max(0, -j) : std::max(0, j - p.m[d] + 1);
    const std::int32_t high = p.correlation ? std::min(p.n[d], p.m[d] - j) : std::min(p.n[d], j + 1);
    begin[d] = low, count[d] = high - low;
  }
  Sum sum;
  for_each_index(p.dims, count, [&](const List& k) {
    List kx{}, ky{};
    for (std::size_t d = 0; d < static_cast<std::size_t>(p.dims); ++d) {
      const std::int32_t j = p.start[d] + p.decimation[d] * i[d];
      kx[d] = begin[d] + k[d];
      ky[d] = p.correlation ? j + kx[d] : j - kx[d];
    }
    const Exact a = x.get(place(p.dims, p.n, p.xs, kx)), b = y.get(place(p.dims, p.m, p.ys, ky));
    // By parts: the product of the library turns some NaN into infinities.
    sum.value += Exact(a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real());
    sum.moduli += std::abs(a) * std::abs(b);
    ++sum.terms;
  });
  return sum;
}

inline void fill(Array& array, std::mt19937& random, bool complex_data) {
  std::uniform_real_distribution<float> uniform(-1, 1);
  for (std::size_t i = 0; i < array.elements(); ++i) {
    const float re = uniform(random), im = complex_data ? uniform(random) : 0;
    array.set(i, {re * (1 + 0x1p-30L), im});
  }
}

// The operands and the result of a problem for one type pair.
struct Instance {
  Problem problem;
  Array x, y, z;

  Instance(const Problem& p, const KernelRow& row, unsigned seed, bool at_end = true)
      : problem(p),
        x(row.single_data, row.complex_data, span(p.dims, p.n, p.xs), at_end),
        y(row.single_data, row.complex_data, span(p.dims, p.m, p.ys), at_end),
        z(row.single_data, row.complex_data, span(p.dims, p.l, p.zs), at_end) {
    std::mt19937 random(seed);
    fill(x, random, row.complex_data);
    fill(y, random, row.complex_data);
  }

  std::int32_t run_one(const KernelRow& row, int method) {
    return row.one[method](x.data(), problem.xs[0], y.data(), problem.ys[0], z.data(), problem.zs[0], problem.n[0],
                           problem.m[0], problem.start[0], problem.l[0], problem.decimation[0]);
  }
  std::int32_t run_all(const KernelRow& row, int method) {
    return row.all[method](problem.dims, x.data(), problem.n.data(), problem.xs.data(), y.data(), problem.m.data(),
                           problem.ys.data(), z.data(), problem.l.data(), problem.zs.data(), problem.start.data(),
                           problem.decimation.data());
  }
};

}  // namespace conv_test

#endif
