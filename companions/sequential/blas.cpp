// blas: levels 2 and 3 under their exported names: arguments checked, special cases taken out, views made.
// SPDX-License-Identifier: MIT
#include "orin/companions.h"

#include "arguments.h"
#include "triangular.h"
#include "vector_products.h"

namespace orin::sequential {
namespace {

template <class T>
void gemm(const char* transa, const char* transb, std::int32_t m, std::int32_t n, std::int32_t k, T alpha, const T* a,
          std::int32_t lda, const T* b, std::int32_t ldb, T beta, T* c, std::int32_t ldc) noexcept {
  const bool a_transposed = is_transpose(transa), b_transposed = is_transpose(transb);
  if (first_bad({{1, is_operation(transa)},
                 {2, is_operation(transb)},
                 {3, m >= 0},
                 {4, n >= 0},
                 {5, k >= 0},
                 {8, holds(lda, a_transposed ? k : m)},
                 {10, holds(ldb, b_transposed ? n : k)},
                 {13, holds(ldc, m)}}))
    return;
  product<T>(m, n, k, alpha, view(a, lda, a_transposed), view(b, ldb, b_transposed), beta, view(c, ldc));
}

template <class T>
void gemv(const char* trans, std::int32_t m, std::int32_t n, T alpha, const T* a, std::int32_t lda, const T* x,
          std::int32_t incx, T beta, T* y, std::int32_t incy) noexcept {
  if (first_bad(
          {{1, is_operation(trans)}, {2, m >= 0}, {3, n >= 0}, {6, holds(lda, m)}, {8, incx != 0}, {11, incy != 0}}))
    return;
  if (m == 0 || n == 0) return;
  const bool transposed = is_transpose(trans);
  const VectorView<const T> from(x, transposed ? m : n, incx);
  const VectorView<T> to(y, transposed ? n : m, incy);
  scale<T>(transposed ? n : m, 1, beta, {to.data, to.step, 0}, Part::all);
  if (alpha == 0) return;
  if (transposed)
    add_dots<T>(m, n, alpha, a, lda, from, to);
  else
    add_columns<T>(m, n, alpha, a, lda, from, to);
}

template <class T>
void syrk(const char* uplo, const char* trans, std::int32_t n, std::int32_t k, T alpha, const T* a, std::int32_t lda,
          T beta, T* c, std::int32_t ldc) noexcept {
  const bool transposed = is_transpose(trans);
  if (first_bad({{1, is_triangle(uplo)},
                 {2, is_operation(trans)},
                 {3, n >= 0},
                 {4, k >= 0},
                 {7, holds(lda, transposed ? k : n)},
                 {10, holds(ldc, n)}}))
    return;
  const MatrixView<const T> factor = view(a, lda, transposed);
  product<T>(n, n, k, alpha, factor, factor.transposed(), beta, view(c, ldc),
             is(uplo, 'L') ? Part::lower : Part::upper);
}

template <class T>
void syr(const char* uplo, std::int32_t n, T alpha, const T* x, std::int32_t incx, T* a, std::int32_t lda) noexcept {
  if (first_bad({{1, is_triangle(uplo)}, {2, n >= 0}, {5, incx != 0}, {7, holds(lda, n)}}) || n == 0 || alpha == 0)
    return;
  add_outer_square<T>(is(uplo, 'L'), n, alpha, {x, n, incx}, a, lda);
}

template <class T>
void trmm(const char* side, const char* uplo, const char* transa, const char* diag, std::int32_t m, std::int32_t n,
          T alpha, const T* a, std::int32_t lda, T* b, std::int32_t ldb) noexcept {
  const bool left = is(side, 'L');
  const std::int32_t order = left ? m : n, others = left ? n : m;
  if (first_bad({{1, left || is(side, 'R')},
                 {2, is_triangle(uplo)},
                 {3, is_operation(transa)},
                 {4, is_one_of(diag, 'U', 'N')},
                 {5, m >= 0},
                 {6, n >= 0},
                 {9, holds(lda, order)},
                 {11, holds(ldb, m)}}))
    return;
  if (m == 0 || n == 0) return;
  if (alpha == 0) return scale<T>(m, n, T(0), view(b, ldb), Part::all);
  // An upper triangle is read as the lower one of the transposed view, a right factor moved to the left of B'.
  const bool upper = is(uplo, 'U'), transposed = is_transpose(transa);
  multiply_triangle<T>(order, others, alpha, view(a, lda, upper), is(diag, 'U') ? Diagonal::unit : Diagonal::stored,
                       (upper != transposed) != !left, view(b, ldb, !left));
}

}  // namespace
}  // namespace orin::sequential

// The exported names, once for each element type.
#define ORIN_BLAS_ENTRIES(s, T)                                                                                        \
  ORIN_API void ORIN_CALL orin_blas_##s##gemm(                                                                         \
      const char* transa, const char* transb, const int32_t* m, const int32_t* n, const int32_t* k, const T* alpha,    \
      const T* a, const int32_t* lda, const T* b, const int32_t* ldb, const T* beta, T* c, const int32_t* ldc) {       \
    orin::sequential::gemm(transa, transb, *m, *n, *k, *alpha, a, *lda, b, *ldb, *beta, c, *ldc);                      \
  }                                                                                                                    \
  ORIN_API void ORIN_CALL orin_blas_##s##gemv(const char* trans, const int32_t* m, const int32_t* n, const T* alpha,   \
                                              const T* a, const int32_t* lda, const T* x, const int32_t* incx,         \
                                              const T* beta, T* y, const int32_t* incy) {                              \
    orin::sequential::gemv(trans, *m, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);                                 \
  }                                                                                                                    \
  ORIN_API void ORIN_CALL orin_blas_##s##syrk(const char* uplo, const char* trans, const int32_t* n, const int32_t* k, \
                                              const T* alpha, const T* a, const int32_t* lda, const T* beta, T* c,     \
                                              const int32_t* ldc) {                                                    \
    orin::sequential::syrk(uplo, trans, *n, *k, *alpha, a, *lda, *beta, c, *ldc);                                      \
  }                                                                                                                    \
  ORIN_API void ORIN_CALL orin_blas_##s##syr(const char* uplo, const int32_t* n, const T* alpha, const T* x,           \
                                             const int32_t* incx, T* a, const int32_t* lda) {                          \
    orin::sequential::syr(uplo, *n, *alpha, x, *incx, a, *lda);                                                        \
  }                                                                                                                    \
  ORIN_API void ORIN_CALL orin_blas_##s##trmm(const char* side, const char* uplo, const char* transa,                  \
                                              const char* diag, const int32_t* m, const int32_t* n, const T* alpha,    \
                                              const T* a, const int32_t* lda, T* b, const int32_t* ldb) {              \
    orin::sequential::trmm(side, uplo, transa, diag, *m, *n, *alpha, a, *lda, b, *ldb);                                \
  }

ORIN_BLAS_ENTRIES(d, double)
ORIN_BLAS_ENTRIES(s, float)
