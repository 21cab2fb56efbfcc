// lapack: factors, inverses and eigenvalues under their exported names: arguments checked, triangles turned to lower.
// SPDX-License-Identifier: MIT
#include "orin/companions.h"

#include "arguments.h"
#include "symmetric_eigen.h"
#include "triangular.h"

#include <limits>

namespace orin::sequential {
namespace {

template <class T>
std::int32_t potrf(const char* uplo, std::int32_t n, T* a, std::int32_t lda) noexcept {
  if (const std::int32_t bad = first_bad({{1, is_triangle(uplo)}, {2, n >= 0}, {4, holds(lda, n)}})) return -bad;
  return static_cast<std::int32_t>(factor_lower(n, view(a, lda, is(uplo, 'U'))));
}

// The 1-based place of the first zero on a diagonal, 0 if there is none.
template <class T>
std::int32_t first_zero(std::int32_t n, MatrixView<const T> a) noexcept {
  for (std::int32_t j = 0; j < n; ++j)
    if (a(j, j) == 0) return j + 1;
  return 0;
}

template <class T>
std::int32_t potri(const char* uplo, std::int32_t n, T* a, std::int32_t lda) noexcept {
  if (const std::int32_t bad = first_bad({{1, is_triangle(uplo)}, {2, n >= 0}, {4, holds(lda, n)}})) return -bad;
  const MatrixView<T> factor = view(a, lda, is(uplo, 'U'));
  if (const std::int32_t zero = first_zero<T>(n, factor)) return zero;
  invert_lower(n, Diagonal::stored, factor);
  square_lower(n, factor);
  return 0;
}

template <class T>
std::int32_t trtri(const char* uplo, const char* diag, std::int32_t n, T* a, std::int32_t lda) noexcept {
  const bool unit = is(diag, 'U');
  if (const std::int32_t bad =
          first_bad({{1, is_triangle(uplo)}, {2, unit || is(diag, 'N')}, {3, n >= 0}, {5, holds(lda, n)}}))
    return -bad;
  const MatrixView<T> triangle = view(a, lda, is(uplo, 'U'));
  if (const std::int32_t zero = unit ? 0 : first_zero<T>(n, triangle)) return zero;
  invert_lower(n, unit ? Diagonal::unit : Diagonal::stored, triangle);
  return 0;
}

// A size as the nearest number of type T that does not fall below it. Sizes are computed in double, which holds all
// that can be met: their 64-bit integers would go through the x87 on the 32-bit target, and there keep more bits than T
// has.
template <class T>
T size_as(double size) noexcept {
  const T value = static_cast<T>(size);
  return value < size ? value * (T(1) + std::numeric_limits<T>::epsilon()) : value;
}

template <class T>
std::int32_t syev(const char* jobz, const char* uplo, std::int32_t n, T* a, std::int32_t lda, T* w, T* work,
                  std::int32_t lwork) noexcept {
  const bool vectors = is(jobz, 'V'), upper = is(uplo, 'U');
  if (const std::int32_t bad =
          first_bad({{1, vectors || is(jobz, 'N')}, {2, is_triangle(uplo)}, {3, n >= 0}, {5, holds(lda, n)}}))
    return -bad;
  const double least = std::max(1.0, 3.0 * n - 1);
  work[0] = size_as<T>(least);
  if (lwork == -1) return 0;
  if (lwork < least) return -8;
  if (n == 0) return 0;
  if (n == 1) {
    w[0] = a[0];
    if (vectors) a[0] = 1;
    return 0;
  }
  LowerColumns<T> columns{a, Index(lda) + 1, false};
  if (upper && vectors) {  // the whole matrix is the routine's, so the triangle may as well be mirrored
    const MatrixView<T> full = view(a, lda);
    for (Index j = 0; j < n; ++j)
      for (Index i = j + 1; i < n; ++i) full(i, j) = full(j, i);
  } else if (upper) {  // only this triangle is: turn its columns end for end
    for (Index j = 0; j < n; ++j) std::reverse(a + j * lda, a + j * lda + j + 1);
    columns = {a + (n - 1) * Index(lda), -Index(lda), false};
  }
  const Index left = symmetric_eigen<T>(n, columns, w, vectors ? a : nullptr, lda, work);
  work[0] = size_as<T>(least);
  return static_cast<std::int32_t>(left);
}

template <class T>
std::int32_t spevd(const char* jobz, const char* uplo, std::int32_t n, T* ap, T* w, T* z, std::int32_t ldz, T* work,
                   std::int32_t lwork, std::int32_t* iwork, std::int32_t liwork) noexcept {
  const bool vectors = is(jobz, 'V'), upper = is(uplo, 'U');
  if (const std::int32_t bad = first_bad(
          {{1, vectors || is(jobz, 'N')}, {2, is_triangle(uplo)}, {3, n >= 0}, {7, holds(ldz, vectors ? n : 1)}}))
    return -bad;
  const double order = n;
  const double least = n < 2 ? 1 : vectors ? 1 + 6 * order + order * order : 2 * order;
  const double least_integers = n < 2 || !vectors ? 1 : 3 + 5 * order;
  work[0] = size_as<T>(least);
  iwork[0] = static_cast<std::int32_t>(std::min<double>(least_integers, INT32_MAX));
  if (lwork == -1 || liwork == -1) return 0;
  if (lwork < least) return -9;
  if (liwork < least_integers) return -11;
  if (n == 0) return 0;
  if (n == 1) {
    w[0] = ap[0];
    if (vectors) z[0] = 1;
    return 0;
  }
  T* const end = ap + Index(n) * (Index(n) + 1) / 2;
  if (upper) std::reverse(ap, end);
  const Index left = symmetric_eigen<T>(n, {ap, n, true}, w, vectors ? z : nullptr, ldz, work);
  if (upper) {
    std::reverse(ap, end);
    for (Index j = 0; vectors && j < n; ++j) std::reverse(z + j * ldz, z + j * ldz + n);
  }
  work[0] = size_as<T>(least);
  return static_cast<std::int32_t>(left);
}

}  // namespace
}  // namespace orin::sequential

// The exported names, once for each element type.
#define ORIN_LAPACK_ENTRIES(s, T)                                                                                   \
  ORIN_API void ORIN_CALL orin_lapack_##s##potrf(const char* uplo, const int32_t* n, T* a, const int32_t* lda,      \
                                                 int32_t* info) {                                                   \
    *info = orin::sequential::potrf(uplo, *n, a, *lda);                                                             \
  }                                                                                                                 \
  ORIN_API void ORIN_CALL orin_lapack_##s##potri(const char* uplo, const int32_t* n, T* a, const int32_t* lda,      \
                                                 int32_t* info) {                                                   \
    *info = orin::sequential::potri(uplo, *n, a, *lda);                                                             \
  }                                                                                                                 \
  ORIN_API void ORIN_CALL orin_lapack_##s##trtri(const char* uplo, const char* diag, const int32_t* n, T* a,        \
                                                 const int32_t* lda, int32_t* info) {                               \
    *info = orin::sequential::trtri(uplo, diag, *n, a, *lda);                                                       \
  }                                                                                                                 \
  ORIN_API void ORIN_CALL orin_lapack_##s##syev(const char* jobz, const char* uplo, const int32_t* n, T* a,         \
                                                const int32_t* lda, T* w, T* work, const int32_t* lwork,            \
                                                int32_t* info) {                                                    \
    *info = orin::sequential::syev(jobz, uplo, *n, a, *lda, w, work, *lwork);                                       \
  }                                                                                                                 \
  ORIN_API void ORIN_CALL orin_lapack_##s##spevd(const char* jobz, const char* uplo, const int32_t* n, T* ap, T* w, \
                                                 T* z, const int32_t* ldz, T* work, const int32_t* lwork,           \
                                                 int32_t* iwork, const int32_t* liwork, int32_t* info) {            \
    *info = orin::sequential::spevd(jobz, uplo, *n, ap, w, z, *ldz, work, *lwork, iwork, *liwork);                  \
  }

ORIN_LAPACK_ENTRIES(d, double)
ORIN_LAPACK_ENTRIES(s, float)
