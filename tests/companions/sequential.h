// sequential.h: the linear algebra entries by element type, and matrices that notice what is done to them.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TESTS_COMPANIONS_SEQUENTIAL_H
#define ORIN_TESTS_COMPANIONS_SEQUENTIAL_H

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "orin/companions.h"
#include "tests/support/guard_pages.h"

template <class T>
struct Sequential;
#define ORIN_SEQUENTIAL(T, p)                                                                      \
  template <>                                                                                      \
  struct Sequential<T> {                                                                           \
    static constexpr auto gemm = orin_blas_##p##gemm;                                              \
    static constexpr auto gemv = orin_blas_##p##gemv;                                              \
    static constexpr auto syrk = orin_blas_##p##syrk;                                              \
    static constexpr auto syr = orin_blas_##p##syr;                                                \
    static constexpr auto trmm = orin_blas_##p##trmm;                                              \
    static constexpr auto potrf = orin_lapack_##p##potrf;                                          \
    static constexpr auto potri = orin_lapack_##p##potri;                                          \
    static constexpr auto trtri = orin_lapack_##p##trtri;                                          \
    static constexpr auto syev = orin_lapack_##p##syev;                                            \
    static constexpr auto spevd = orin_lapack_##p##spevd;                                          \
    static constexpr long double u = std::numeric_limits<T>::epsilon() / 2; /* unit of rounding */ \
  };
ORIN_SEQUENTIAL(double, d)
ORIN_SEQUENTIAL(float, s)
#undef ORIN_SEQUENTIAL

using Real = long double;
inline constexpr Real nan_real = std::numeric_limits<Real>::quiet_NaN();

// Reproducible draws.
class Draw {
 public:
  explicit Draw(unsigned seed) : engine_(seed) {}
  template <class Item>
  Item one_of(std::initializer_list<Item> items) {
    return items.begin()[engine_() % items.size()];
  }
  int below(int limit) { return static_cast<int>(engine_() % static_cast<unsigned>(limit)); }
  template <class T>
  T value() {  // in [-1, 1], few bits left of a float's
    return static_cast<T>(static_cast<float>(engine_() & 0xFFFFFF) / 8388608.0f - 1.0f);
  }

 private:
  std::mt19937 engine_;
};

// A column-major matrix that ends at an inaccessible page, or, with an offset of 4 bytes, on no natural boundary.
template <class T>
class Matrix {
 public:
  Matrix(int height, int width, Draw& draw, int spare = 0)
      : rows(height),
        columns(width),
        leading(std::max(1, rows + spare)),
        cells_(columns == 0 ? 0 : static_cast<std::size_t>((columns - 1) * leading + rows), GuardedArray<T>::at_end,
               static_cast<std::size_t>(4 * draw.below(2))) {
    for (T& cell : cells_) cell = draw.value<T>();
    remember();
  }
  T* data() { return cells_.data(); }
  T& operator()(int i, int j) { return cells_[static_cast<std::size_t>(i + j * leading)]; }
  T before(int i, int j) const { return copy_[static_cast<std::size_t>(i + j * leading)]; }
  void remember() { copy_.assign(cells_.begin(), cells_.end()); }

  // Sets the elements that `chosen(i, j)` picks.
  template <class Chosen>
  void set(T value, Chosen chosen) {
    for (int j = 0; j < columns; ++j)
      for (int i = 0; i < rows; ++i)
        if (chosen(i, j)) (*this)(i, j) = value;
    remember();
  }
  void set(T value) {
    set(value, [](int, int) { return true; });
  }

  // Whether everything but the elements that `changed(i, j)` picks has the bits it was made with.
  template <class Changed>
  bool kept_but(Changed changed) {
    for (int j = 0; j < columns; ++j)
      for (int i = 0; i < (j + 1 < columns ? leading : rows); ++i)
        if ((i >= rows || !changed(i, j)) &&
            std::memcmp(&(*this)(i, j), &copy_[static_cast<std::size_t>(i + j * leading)], sizeof(T)) != 0)
          return false;
    return cells_.surroundings_intact();
  }
  bool kept() {
    return kept_but([](int, int) { return false; });
  }

  const int32_t rows, columns, leading;

 private:
  GuardedArray<T> cells_;
  std::vector<T> copy_;
};

inline bool transposes(char flag) { return flag != 'N' && flag != 'n'; }
inline bool names_lower(char flag) { return flag == 'L' || flag == 'l'; }
inline bool in_triangle(char uplo, int i, int j) { return names_lower(uplo) ? i >= j : i <= j; }

#endif
