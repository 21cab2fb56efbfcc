/* The companions of the module: the allocator (orin_core) and dense linear algebra (orin_sequential).
 * SPDX-License-Identifier: MIT
 *
 * The module binds to these entries by name on first use; programs may link to them or bind to them just as well.
 * Every entry may be called from any number of threads at once; none of them keeps state between calls, and none
 * needs more of its caller's stack than an alignment of 4 bytes.
 */
#ifndef ORIN_COMPANIONS_H
#define ORIN_COMPANIONS_H

#include "orin/abi.h"

#include <stdint.h>

ORIN_BEGIN_DECLS

/* ---- orin_core: aligned memory ---------------------------------------------------------------------------------- */

/* A block of `size` bytes whose address is a multiple of `alignment`.
 *
 * size       bytes, 0 included: a valid block of its own that must be released like any other.
 * alignment  a power of two of any size. 0 and 1 ask for nothing in particular; every block is aligned to 16 at least.
 *
 * Returns null when memory is short, when size and alignment together exceed the address space and when the alignment
 * is not a power of two. The block is not cleared. It is released by orin_serv_deallocate alone, by any thread. */
ORIN_API void* ORIN_CALL orin_serv_allocate(uint32_t size, uint32_t alignment);

/* The same service under the name of the library's public allocation call. */
ORIN_API void* ORIN_CALL orin_serv_orin_malloc(uint32_t size, uint32_t alignment);

/* Releases a block of either call above. Null is accepted and ignored. */
ORIN_API void ORIN_CALL orin_serv_deallocate(void* block);

/* ---- orin_sequential: dense linear algebra ---------------------------------------------------------------------- */

/* Argument lists are those of the BLAS and LAPACK routines of the same base name in Fortran's convention: everything by
 * pointer, matrices column after column with a leading dimension, 32-bit integers. The hidden lengths that Fortran
 * compilers append for character arguments are neither needed nor looked at. `d` entries work in double, `s` entries in
 * single precision; both come from the same source.
 *
 * Flags       First character, either case; 'C' means 'T'.
 * Arrays      An alignment of 4 bytes is enough. Output arrays must not overlap others.
 * Increments  Of vectors: not 0; a negative one runs through the memory from its far end.
 * Bad call    orin_blas_: returns without touching any array. orin_lapack_: *info = -i, i being the first bad argument
 *             in the order of the routine's checks, and no matrix is touched.
 * Zero        alpha = 0 or an inner size of 0: the factors are not read. beta = 0: the result is written without being
 *             read, so it may start out as anything, NaN included.
 * Rounding    gemm and syrk: every element is a sum in order of the inner index, in runs of 256. It depends on no other
 *             size, on no leading dimension, alignment or processor: the same bits everywhere.
 *             The error of an inner product of size k is within (k + 2) u times the product of the absolute values,
 *             u = 2^-53 in double and 2^-24 in single precision.
 * Memory      Matrix products beyond 32 KB of packed panels take work memory for the time of the call. Where there is
 *             none left they go on with panels on the stack and give the same result: no call fails for want of memory.
 * Source      Dongarra, Du Croz, Hammarling, Hanson: ACM TOMS 14 (1988); Dongarra, Du Croz, Duff, Hammarling: ACM TOMS
 *             16 (1990); Anderson et al.: LAPACK Users' Guide, 3rd edition (1999). */

/* C := alpha op(A) op(B) + beta C; op(A) is m x k, op(B) k x n; trans 'N': op(X) = X, 'T' or 'C': its transpose. */
ORIN_API void ORIN_CALL orin_blas_dgemm(const char* transa, const char* transb, const int32_t* m, const int32_t* n,
                                        const int32_t* k, const double* alpha, const double* a, const int32_t* lda,
                                        const double* b, const int32_t* ldb, const double* beta, double* c,
                                        const int32_t* ldc);
ORIN_API void ORIN_CALL orin_blas_sgemm(const char* transa, const char* transb, const int32_t* m, const int32_t* n,
                                        const int32_t* k, const float* alpha, const float* a, const int32_t* lda,
                                        const float* b, const int32_t* ldb, const float* beta, float* c,
                                        const int32_t* ldc);

/* y := alpha op(A) x + beta y; A is m x n whatever trans says. */
ORIN_API void ORIN_CALL orin_blas_dgemv(const char* trans, const int32_t* m, const int32_t* n, const double* alpha,
                                        const double* a, const int32_t* lda, const double* x, const int32_t* incx,
                                        const double* beta, double* y, const int32_t* incy);
ORIN_API void ORIN_CALL orin_blas_sgemv(const char* trans, const int32_t* m, const int32_t* n, const float* alpha,
                                        const float* a, const int32_t* lda, const float* x, const int32_t* incx,
                                        const float* beta, float* y, const int32_t* incy);

/* C := alpha A A' + beta C (trans 'N', A is n x k) or alpha A' A + beta C (otherwise, A is k x n).
 * Only the triangle of C that uplo names, 'U' or 'L', is read and written. */
ORIN_API void ORIN_CALL orin_blas_dsyrk(const char* uplo, const char* trans, const int32_t* n, const int32_t* k,
                                        const double* alpha, const double* a, const int32_t* lda, const double* beta,
                                        double* c, const int32_t* ldc);
ORIN_API void ORIN_CALL orin_blas_ssyrk(const char* uplo, const char* trans, const int32_t* n, const int32_t* k,
                                        const float* alpha, const float* a, const int32_t* lda, const float* beta,
                                        float* c, const int32_t* ldc);

/* A := A + alpha x x', the triangle that uplo names. */
ORIN_API void ORIN_CALL orin_blas_dsyr(const char* uplo, const int32_t* n, const double* alpha, const double* x,
                                       const int32_t* incx, double* a, const int32_t* lda);
ORIN_API void ORIN_CALL orin_blas_ssyr(const char* uplo, const int32_t* n, const float* alpha, const float* x,
                                       const int32_t* incx, float* a, const int32_t* lda);

/* B := alpha op(A) B (side 'L') or alpha B op(A) (side 'R'); B is m x n, A triangular; the other triangle of A is not
 * read, nor its diagonal where diag is 'U', which takes it as ones. */
ORIN_API void ORIN_CALL orin_blas_dtrmm(const char* side, const char* uplo, const char* transa, const char* diag,
                                        const int32_t* m, const int32_t* n, const double* alpha, const double* a,
                                        const int32_t* lda, double* b, const int32_t* ldb);
ORIN_API void ORIN_CALL orin_blas_strmm(const char* side, const char* uplo, const char* transa, const char* diag,
                                        const int32_t* m, const int32_t* n, const float* alpha, const float* a,
                                        const int32_t* lda, float* b, const int32_t* ldb);

/* Cholesky factor in place: A = L L' (uplo 'L') or U' U (uplo 'U'); the other triangle is left alone.
 * *info = j > 0: the leading minor of order j is not positive definite (a NaN on the way counts as that). */
ORIN_API void ORIN_CALL orin_lapack_dpotrf(const char* uplo, const int32_t* n, double* a, const int32_t* lda,
                                           int32_t* info);
ORIN_API void ORIN_CALL orin_lapack_spotrf(const char* uplo, const int32_t* n, float* a, const int32_t* lda,
                                           int32_t* info);

/* Inverse of A, the triangle that uplo names, from its Cholesky factor as potrf left it.
 * *info = j > 0: element (j, j) of the factor is zero; nothing has been changed. */
ORIN_API void ORIN_CALL orin_lapack_dpotri(const char* uplo, const int32_t* n, double* a, const int32_t* lda,
                                           int32_t* info);
ORIN_API void ORIN_CALL orin_lapack_spotri(const char* uplo, const int32_t* n, float* a, const int32_t* lda,
                                           int32_t* info);

/* Inverse of a triangular matrix in place. *info = j > 0: element (j, j) is zero; nothing has been changed. */
ORIN_API void ORIN_CALL orin_lapack_dtrtri(const char* uplo, const char* diag, const int32_t* n, double* a,
                                           const int32_t* lda, int32_t* info);
ORIN_API void ORIN_CALL orin_lapack_strtri(const char* uplo, const char* diag, const int32_t* n, float* a,
                                           const int32_t* lda, int32_t* info);

/* Eigenvalues w of a symmetric matrix, ascending, and with jobz 'V' its orthonormal eigenvectors, which replace A
 * column by column. With jobz 'N' the triangle that uplo names is destroyed and the other one left alone.
 *
 * lwork  at least max(1, 3 n - 1); -1 asks for the best size, returned in work[0], and does nothing else.
 * *info = j > 0: j off-diagonal elements did not converge to zero (a NaN or an infinity in A among the reasons). */
ORIN_API void ORIN_CALL orin_lapack_dsyev(const char* jobz, const char* uplo, const int32_t* n, double* a,
                                          const int32_t* lda, double* w, double* work, const int32_t* lwork,
                                          int32_t* info);
ORIN_API void ORIN_CALL orin_lapack_ssyev(const char* jobz, const char* uplo, const int32_t* n, float* a,
                                          const int32_t* lda, float* w, float* work, const int32_t* lwork,
                                          int32_t* info);

/* The same for a packed triangle, column after column without gaps; eigenvectors go to z, n x n (not looked at with
 * jobz 'N'), and ap is left with the tridiagonal reduction: its diagonal and first off-diagonal are the tridiagonal
 * matrix.
 *
 * lwork   n < 2: 1; jobz 'N': 2 n; jobz 'V': 1 + 6 n + n^2.   liwork  jobz 'N' or n < 2: 1; jobz 'V': 3 + 5 n.
 *         -1 in either asks for both sizes, returned in work[0] and iwork[0], and does nothing else. */
ORIN_API void ORIN_CALL orin_lapack_dspevd(const char* jobz, const char* uplo, const int32_t* n, double* ap, double* w,
                                           double* z, const int32_t* ldz, double* work, const int32_t* lwork,
                                           int32_t* iwork, const int32_t* liwork, int32_t* info);
ORIN_API void ORIN_CALL orin_lapack_sspevd(const char* jobz, const char* uplo, const int32_t* n, float* ap, float* w,
                                           float* z, const int32_t* ldz, float* work, const int32_t* lwork,
                                           int32_t* iwork, const int32_t* liwork, int32_t* info);

ORIN_END_DECLS

#endif
