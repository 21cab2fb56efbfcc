/* vector_math.h: elementwise functions over arrays, in three accuracy grades.
 * SPDX-License-Identifier: MIT
 *
 * Names        _kor<t><Function><grade>; <t> is s float, d double, c complex float, z complex double.
 * Grades       (none) and _HA  high accuracy: error below 1 ulp (complex functions: see there)
 *              _50 (d, z) _21 (s, c)  low accuracy: relative error at most 2^-50, 2^-21
 *              _26 (d, z) _11 (s, c)  enhanced performance: relative error at most 2^-26, 2^-11
 *              The measured worst error of every function and grade stands in docs/accuracy.md.
 * Arrays       n elements each, n > 0, aligned to 4 bytes (doubles too). A result array may be any argument array;
 *              otherwise they must not overlap. n <= 0 reports status -1, a null array -2; then nothing is read or
 *              written.
 * Results      the bits of an element depend on that element's arguments alone: not on n, on its place, on its
 *              neighbours, on alignment, nor on the caller's rounding mode. Special arguments as in C Annex F and G.
 * Errors       are kept per thread: see _korGetErrStatus below. A kernel goes on after an error.
 * Threads      every function may be called from any thread; mode, status and callback belong to the calling thread.
 */
#ifndef ORIN_VECTOR_MATH_H
#define ORIN_VECTOR_MATH_H

#include "orin/abi.h"

ORIN_BEGIN_DECLS

typedef struct {
  float re, im;
} KorComplex8;

typedef struct {
  double re, im;
} KorComplex16;

/* --- Mode word ------------------------------------------------------------------------------------------------------
 * One 32-bit word per thread. A thread's word starts from the environment variable ORIN_KOR_MODE, read at the thread's
 * first use, or else as KOR_MODE_DEFAULT. The variable is a list such as KOR_EP,KOR_ERRMODE_IGNORE of these keywords:
 *   KOR_LA KOR_HA KOR_EP KOR_DEFAULT_PRECISION KOR_FLOAT_CONSISTENT KOR_DOUBLE_CONSISTEN KOR_RESTORE KOR_ERRMODE_IGNORE
 *   KOR_ERRMODE_ERRNO KOR_ERRMODE_STDERR KOR_ERRMODE_EXCEPT KOR_ERRMODE_CALLBACK KOR_ERRMODE_DEFAULT
 * (the sixth without its last letter). Their bits are OR-ed, nothing is added: a list without an accuracy leaves that
 * field 0. One word that is no keyword, a space or a trailing comma drops the whole value, as do 256 characters or more.
 */
enum {
  KOR_LA = 0x1, /* accuracy field, mask 0xF */
  KOR_HA = 0x2,
  KOR_EP = 0x3,
  KOR_ACCURACY_MASK = 0xF,

  KOR_DEFAULT_PRECISION = 0x00, /* x87 precision request, mask 0xF0: carried only, set by the environment alone */
  KOR_FLOAT_CONSISTENT = 0x10,
  KOR_DOUBLE_CONSISTENT = 0x20,
  KOR_RESTORE = 0x30,
  KOR_FPUMODE_MASK = 0xF0,

  KOR_ERRMODE_IGNORE = 0x100, /* error mode, a set of bits, mask 0xFF00; IGNORE acts only when it stands alone */
  KOR_ERRMODE_ERRNO = 0x200,
  KOR_ERRMODE_STDERR = 0x400, /* prints a report on standard output */
  KOR_ERRMODE_EXCEPT = 0x800, /* raises the floating-point exception */
  KOR_ERRMODE_CALLBACK = 0x1000,
  KOR_ERRMODE_DEFAULT = KOR_ERRMODE_ERRNO | KOR_ERRMODE_EXCEPT | KOR_ERRMODE_CALLBACK,
  KOR_ERRMODE_MASK = 0xFF00,

  KOR_FTZDAZ_ON = 0x280000, /* subnormal arguments and results as zero */
  KOR_FTZDAZ_OFF = 0x140000,
  KOR_FTZDAZ_MASK = 0x3C0000,

  KOR_MODE_DEFAULT = KOR_ERRMODE_DEFAULT | KOR_HA
};

/* The calling thread's mode word. */
ORIN_API uint32_t ORIN_CALL _korGetMode(void);
ORIN_API uint32_t ORIN_CALL orin_kor_kernel_GetMode(void);

/* Replaces the accuracy, error-mode and flush-to-zero fields that are non-zero in newMode, keeps everything else, and
 * returns the previous word. A field cannot be set to 0. */
ORIN_API uint32_t ORIN_CALL _korSetMode(uint32_t newMode);
ORIN_API uint32_t ORIN_CALL orin_kor_kernel_SetMode(uint32_t newMode);

/* Index into a function's kernel table (below) for the thread's mode, and for a given mode: accuracy - 1, so -1 for a
 * mode without an accuracy, which is not an index. */
ORIN_API int32_t ORIN_CALL orin_kor_kernel_GetTTableIndex(void);
ORIN_API int32_t ORIN_CALL orin_kor_kernel_GetTTableIndexM(uint32_t ignored, uint32_t mode);

/* Tells that the next calls of this thread work on pieces of the vector at `base`: reports then give the index in the
 * whole first argument vector. Null ends it. Returns `base`. */
ORIN_API const void* ORIN_CALL _korSetInterfInputVectorPointer(const void* base);
ORIN_API const void* ORIN_CALL orin_kor_kernel_SetInterfInputVectorPointer(const void* base);

/* --- Errors ---------------------------------------------------------------------------------------------------------
 * The status of the last report of a thread stays until it is set or cleared.
 */
enum {
  KOR_STATUS_OK = 0,
  KOR_STATUS_BADSIZE = -1, /* n is not positive */
  KOR_STATUS_BADMEM = -2,  /* an array is null */
  KOR_STATUS_ERRDOM = 1,   /* argument out of domain */
  KOR_STATUS_SING = 2,     /* pole */
  KOR_STATUS_OVERFLOW = 3, /* finite arguments, the result overflows */
  KOR_STATUS_UNDERFLOW = 4 /* the non-zero result is subnormal or rounds to zero */
};

/* What a report says of one element. The callback may change the result fields; they are written back when it returns
 * 0. Doubles stand at multiples of 8 bytes. */
typedef struct {
  int32_t status;
  int32_t index;     /* element index; n for KOR_STATUS_BADSIZE, 0 for KOR_STATUS_BADMEM */
  double a1, a2;     /* argument elements (real parts) */
  double r1, r2;     /* result elements (real parts) */
  char funcName[64]; /* "vdExp"; ended by a NUL */
  int32_t funcNameLen;
  int32_t reserved;
  double a1Im, a2Im; /* imaginary parts, complex types only */
  double r1Im, r2Im;
} KorErrorContext;

/* Returns non-zero when the error is handled: nothing more is done then, and the kernel's result stays. */
typedef int32_t(ORIN_CALL* KorErrorCallBack)(KorErrorContext* context);

ORIN_API int32_t ORIN_CALL _korSetErrStatus(int32_t status); /* returns the previous status, as the next but one */
ORIN_API int32_t ORIN_CALL _korGetErrStatus(void);
ORIN_API int32_t ORIN_CALL _korClearErrStatus(void);
ORIN_API int32_t ORIN_CALL orin_kor_kernel_SetErrStatus(int32_t status);
ORIN_API int32_t ORIN_CALL orin_kor_kernel_GetErrStatus(void);
ORIN_API int32_t ORIN_CALL orin_kor_kernel_ClearErrStatus(void);

/* Stores the callback (null: none), sets or clears KOR_ERRMODE_CALLBACK in the mode word (it stays set where it is the
 * only error-mode bit) and returns the previous callback. */
ORIN_API KorErrorCallBack ORIN_CALL _korSetErrorCallBack(KorErrorCallBack callback);
ORIN_API KorErrorCallBack ORIN_CALL _korGetErrorCallBack(void);
ORIN_API KorErrorCallBack ORIN_CALL _korClearErrorCallBack(void);
ORIN_API KorErrorCallBack ORIN_CALL orin_kor_kernel_SetErrorCallBack(KorErrorCallBack callback);
ORIN_API KorErrorCallBack ORIN_CALL orin_kor_kernel_GetErrorCallBack(void);
ORIN_API KorErrorCallBack ORIN_CALL orin_kor_kernel_ClearErrorCallBack(void);

/* --- Functions ------------------------------------------------------------------------------------------------------
 * Beside its entries each function has two writable tables in the index order LA, HA, EP:
 *   orin_kor_kernel_<t><F>_ttab  the three kernels; an entry calls through it, so a replaced kernel is called
 *   orin_kor_kernel_<t><F>_ctab  relative cost per element of each (float), directly behind the kernels
 */
#define ORIN_KOR_ENTRIES(t, F, LA, EP, PARAMETERS)    \
  ORIN_API void ORIN_CALL _kor##t##F PARAMETERS;      \
  ORIN_API void ORIN_CALL _kor##t##F##_HA PARAMETERS; \
  ORIN_API void ORIN_CALL _kor##t##F##LA PARAMETERS;  \
  ORIN_API void ORIN_CALL _kor##t##F##EP PARAMETERS;  \
  ORIN_DATA float orin_kor_kernel_##t##F##_ctab[3];
#define ORIN_KOR_FUNCTION(t, F, LA, EP, PARAMETERS) \
  ORIN_KOR_ENTRIES(t, F, LA, EP, PARAMETERS)        \
  ORIN_DATA void(ORIN_CALL * orin_kor_kernel_##t##F##_ttab[3]) PARAMETERS;

#define ORIN_KOR_REAL_UNARY(F)                                             \
  ORIN_KOR_FUNCTION(s, F, _21, _11, (int32_t n, const float* a, float* r)) \
  ORIN_KOR_FUNCTION(d, F, _50, _26, (int32_t n, const double* a, double* r))
#define ORIN_KOR_REAL_BINARY(F)                                                            \
  ORIN_KOR_FUNCTION(s, F, _21, _11, (int32_t n, const float* a, const float* b, float* r)) \
  ORIN_KOR_FUNCTION(d, F, _50, _26, (int32_t n, const double* a, const double* b, double* r))
#define ORIN_KOR_REAL_SCALAR(F)                                                     \
  ORIN_KOR_FUNCTION(s, F, _21, _11, (int32_t n, const float* a, float b, float* r)) \
  ORIN_KOR_FUNCTION(d, F, _50, _26, (int32_t n, const double* a, double b, double* r))
#define ORIN_KOR_REAL_TWO_RESULTS(F)                                                   \
  ORIN_KOR_FUNCTION(s, F, _21, _11, (int32_t n, const float* a, float* r1, float* r2)) \
  ORIN_KOR_FUNCTION(d, F, _50, _26, (int32_t n, const double* a, double* r1, double* r2))
#define ORIN_KOR_REAL_LINEAR_FRAC(F)                                                                                 \
  ORIN_KOR_FUNCTION(                                                                                                 \
      s, F, _21, _11,                                                                                                \
      (int32_t n, const float* a, const float* b, float scalea, float shifta, float scaleb, float shiftb, float* r)) \
  ORIN_KOR_FUNCTION(d, F, _50, _26,                                                                                  \
                    (int32_t n, const double* a, const double* b, double scalea, double shifta, double scaleb,       \
                     double shiftb, double* r))
#define ORIN_KOR_COMPLEX_UNARY(F)                                                      \
  ORIN_KOR_FUNCTION(c, F, _21, _11, (int32_t n, const KorComplex8* a, KorComplex8* r)) \
  ORIN_KOR_FUNCTION(z, F, _50, _26, (int32_t n, const KorComplex16* a, KorComplex16* r))
#define ORIN_KOR_COMPLEX_BINARY(F)                                                                           \
  ORIN_KOR_FUNCTION(c, F, _21, _11, (int32_t n, const KorComplex8* a, const KorComplex8* b, KorComplex8* r)) \
  ORIN_KOR_FUNCTION(z, F, _50, _26, (int32_t n, const KorComplex16* a, const KorComplex16* b, KorComplex16* r))
#define ORIN_KOR_COMPLEX_SCALAR(F)                                                                    \
  ORIN_KOR_FUNCTION(c, F, _21, _11, (int32_t n, const KorComplex8* a, KorComplex8 b, KorComplex8* r)) \
  ORIN_KOR_FUNCTION(z, F, _50, _26, (int32_t n, const KorComplex16* a, KorComplex16 b, KorComplex16* r))
#define ORIN_KOR_COMPLEX_TO_REAL(F)                                              \
  ORIN_KOR_FUNCTION(c, F, _21, _11, (int32_t n, const KorComplex8* a, float* r)) \
  ORIN_KOR_FUNCTION(z, F, _50, _26, (int32_t n, const KorComplex16* a, double* r))
#define ORIN_KOR_COMPLEX_FROM_REAL(F)                                            \
  ORIN_KOR_FUNCTION(c, F, _21, _11, (int32_t n, const float* a, KorComplex8* r)) \
  ORIN_KOR_FUNCTION(z, F, _50, _26, (int32_t n, const double* a, KorComplex16* r))

/* r = e^a. Status 3 where a finite argument overflows, 4 where the result is subnormal or underflows to +0. */
ORIN_KOR_REAL_UNARY(Exp)

/* r = log a to base e, and to base 10. Status 1 (result NaN) for a < 0, 2 (result -inf) for a = +-0. */
ORIN_KOR_REAL_UNARY(Ln)
ORIN_KOR_REAL_UNARY(Log10)

/* r = log(1 + a), accurate for small a. Status 1 (NaN) for a < -1, 2 (-inf) for a = -1. */
ORIN_KOR_REAL_UNARY(Log1p)

/* r = a^b; in Powx b is one number for all. Status 1 (NaN) for a finite a < 0 and a finite b that is no integer, 2 (an
 * infinity) for a = +-0 and a finite b < 0, 3 where finite arguments overflow, 4 where the result of finite non-zero
 * arguments is subnormal or underflows to zero. */
ORIN_KOR_REAL_BINARY(Pow)
ORIN_KOR_REAL_SCALAR(Powx)

/* Inverse hyperbolic functions. Acosh: status 1 (NaN) for a < 1. Atanh: status 1 (NaN) for |a| > 1, 2 (an infinity) for
 * a = +-1. */
ORIN_KOR_REAL_UNARY(Asinh)
ORIN_KOR_REAL_UNARY(Acosh)
ORIN_KOR_REAL_UNARY(Atanh)

/* Hyperbolic functions, and r = e^a - 1, accurate for small a. Status 3 where a finite argument overflows. */
ORIN_KOR_REAL_UNARY(Sinh)
ORIN_KOR_REAL_UNARY(Cosh)
ORIN_KOR_REAL_UNARY(Tanh)
ORIN_KOR_REAL_UNARY(Expm1)

/* r = sin a, cos a, tan a; SinCos: r1 = sin a, r2 = cos a. Accurate for every finite a, however large. Status 1 (NaN)
 * for infinite a. Either result array of SinCos may be the argument array. */
ORIN_KOR_REAL_UNARY(Sin)
ORIN_KOR_REAL_UNARY(Cos)
ORIN_KOR_REAL_TWO_RESULTS(SinCos)
ORIN_KOR_REAL_UNARY(Tan)

/* r = arctangent of a, and in Atan2 the angle from -pi to pi of the point with ordinate a and abscissa b; no status. */
ORIN_KOR_REAL_UNARY(Atan)
ORIN_KOR_REAL_BINARY(Atan2)

/* r = arcsine, arccosine of a. Status 1 (NaN) for |a| > 1. */
ORIN_KOR_REAL_UNARY(Asin)
ORIN_KOR_REAL_UNARY(Acos)

/* r = erf a = 2/sqrt(pi) integral of e^(-t^2) from 0 to a. No status. */
ORIN_KOR_REAL_UNARY(Erf)

/* Erfc: r = 1 - erf a. CdfNorm: r = erfc(-a/sqrt 2)/2, the normal distribution function. Both without cancellation;
 * status 4 where the result of a finite argument is subnormal or underflows to +0. */
ORIN_KOR_REAL_UNARY(Erfc)
ORIN_KOR_REAL_UNARY(CdfNorm)

/* Inverses. ErfInv: erf r = a; status 1 (NaN) for |a| > 1, 2 (an infinity) for a = +-1. ErfcInv: erfc r = a; status 1
 * outside 0..2, 2 for a = 0 and 2. CdfNormInv: the normal quantile; status 1 outside 0..1, 2 for a = 0 and 1. Accurate
 * down to the least positive argument and around their zeros. */
ORIN_KOR_REAL_UNARY(ErfInv)
ORIN_KOR_REAL_UNARY(ErfcInv)
ORIN_KOR_REAL_UNARY(CdfNormInv)

/* Gamma functions.
 * LGamma: r = log |Gamma(a)|, accurate next to its zeros too. Status 2 (+inf) for a = +-0 and negative integers, 3 where
 * a finite argument overflows.
 * TGamma: r = Gamma(a). Status 1 (NaN) for a negative integer and -inf, 2 (an infinity) for a = +-0, 3 where a finite
 * argument overflows, 4 where the result is subnormal or underflows to zero. */
ORIN_KOR_REAL_UNARY(LGamma)
ORIN_KOR_REAL_UNARY(TGamma)

/* Arithmetic, correctly rounded in every grade. The first five report nothing: infinities and NaN come as IEEE 754 has
 * them. Div: status 1 (NaN) for 0/0 and for the quotient of two infinities, 2 (an infinity) for a finite a and b = +-0, 3
 * where finite arguments overflow. Inv, r = 1/a: 2 for a = +-0, 3 where it overflows. */
ORIN_KOR_REAL_UNARY(Abs)
ORIN_KOR_REAL_BINARY(Add)
ORIN_KOR_REAL_BINARY(Sub)
ORIN_KOR_REAL_BINARY(Mul)
ORIN_KOR_REAL_UNARY(Sqr) /* r = a^2 */
ORIN_KOR_REAL_BINARY(Div)
ORIN_KOR_REAL_UNARY(Inv)

/* r = (scalea a + shifta)/(scaleb b + shiftb), each operation rounded, in every grade: where numerator or denominator
 * cancel, their relative error is what that formula gives. Statuses as Div has them for the two; 3 also where the
 * numerator of finite arguments overflows. */
ORIN_KOR_REAL_LINEAR_FRAC(LinearFrac)

/* Rounding to an integer, exact in every grade, the sign of a kept in a result of 0; nothing is reported. */
ORIN_KOR_REAL_UNARY(Ceil)      /* up */
ORIN_KOR_REAL_UNARY(Floor)     /* down */
ORIN_KOR_REAL_UNARY(Trunc)     /* towards 0 */
ORIN_KOR_REAL_UNARY(Round)     /* to the nearest, halves away from 0 */
ORIN_KOR_REAL_UNARY(Rint)      /* to the nearest, halves to even, whatever the caller's rounding mode */
ORIN_KOR_REAL_UNARY(NearbyInt) /* the same */

/* r1 the integer part of a, r2 the fraction, both with the sign of a; of an infinity the infinity and a zero. */
ORIN_KOR_REAL_TWO_RESULTS(Modf)

/* Roots and fixed powers, by exponent: Sqrt 1/2 (correctly rounded in every grade), InvSqrt -1/2, Cbrt 1/3, InvCbrt -1/3,
 * Pow2o3 2/3, Pow3o2 3/2. Square roots of negative arguments: status 1 (NaN). InvSqrt and InvCbrt of +-0: status 2
 * (an infinity of its sign). Pow3o2: status 3 where a finite argument overflows, 4 where the result of a non-zero one is
 * subnormal or underflows to zero. */
ORIN_KOR_REAL_UNARY(Sqrt)
ORIN_KOR_REAL_UNARY(InvSqrt)
ORIN_KOR_REAL_UNARY(Cbrt)
ORIN_KOR_REAL_UNARY(InvCbrt)
ORIN_KOR_REAL_UNARY(Pow2o3)
ORIN_KOR_REAL_UNARY(Pow3o2)

/* r = sqrt(a^2 + b^2) without intermediate overflow or underflow; +inf beside NaN is +inf. Status 3 where finite
 * arguments overflow. */
ORIN_KOR_REAL_BINARY(Hypot)

/* Complex functions. Errors are measured against the modulus of the exact result: HA at most 4 ulp of it, LA 16 ulp, EP
 * 2^-11 and 2^-26 of it. The measured worst errors stand in docs/accuracy.md. */

/* Arithmetic; nothing is reported. Sums part by part, correctly rounded. Mul, and MulByConj, r = a conj(b): HA has each
 * part within 1.45 ulp, also where products cancel or overflow on the way. */
ORIN_KOR_COMPLEX_BINARY(Add)
ORIN_KOR_COMPLEX_BINARY(Sub)
ORIN_KOR_COMPLEX_BINARY(Mul)
ORIN_KOR_COMPLEX_BINARY(MulByConj)
ORIN_KOR_COMPLEX_UNARY(Conj)

/* Angle of a, from -pi to pi, real; nothing is reported. HA within 2.1 ulp, single 0.56; signed zeros as in atan2. */
ORIN_KOR_COMPLEX_TO_REAL(Arg)
/* Principal logarithms, the cut on the negative real axis. Status 2 at 0. HA within 2.1 ulp of the modulus, Log10 2.8;
 * its real part stays accurate next to the unit circle. */
ORIN_KOR_COMPLEX_UNARY(Ln)
ORIN_KOR_COMPLEX_UNARY(Log10)
/* a^b = e^(b Ln a); Powx with one b for all. a^0 = 1. Status 1 where a part of the result has no limit, 2 where 0 is
 * raised to a negative real number, 3 where a part overflows, 4 where a result other than 0 has a modulus below normal
 * numbers. HA within 2 ulp of the modulus (single 1) and EP within its bound while |b Ln a| < 1700; beyond, the error
 * grows in proportion to |b Ln a|, as that of an angle does. LA is HA. */
ORIN_KOR_COMPLEX_BINARY(Pow)
ORIN_KOR_COMPLEX_SCALAR(Powx)
/* Principal inverse functions, cuts and signed zeros as in C Annex G. Atan reports status 2 at +-i, Atanh at +-1; the
 * others nothing. HA within 3.8 ulp of the modulus, Atan and Atanh 3.2. */
ORIN_KOR_COMPLEX_UNARY(Atan)
ORIN_KOR_COMPLEX_UNARY(Atanh)
ORIN_KOR_COMPLEX_UNARY(Asin)
ORIN_KOR_COMPLEX_UNARY(Acos)
ORIN_KOR_COMPLEX_UNARY(Asinh)
ORIN_KOR_COMPLEX_UNARY(Acosh)

/* r = |a|, a real vector, without intermediate overflow or underflow. Nothing is reported. Within 1.5 ulp in
 * every grade. */
ORIN_KOR_COMPLEX_TO_REAL(Abs)

/* r = a/b. HA has each part within 3.6 ulp, without intermediate overflow or underflow, in every grade. Status 1 (NaN)
 * for 0/0 and for the quotient of two infinities, 2 (infinite) for a finite a != 0 and b = 0, 3 where a part of the
 * quotient of finite numbers overflows. */
ORIN_KOR_COMPLEX_BINARY(Div)

/* The square root with a real part >= 0, cut along the negative real axis: the sign of a zero imaginary part chooses the
 * side. Nothing is reported. Within 2.5 ulp of the modulus in every grade. */
ORIN_KOR_COMPLEX_UNARY(Sqrt)

/* r = e^a. Status 3 where a part of a finite argument's result overflows, 4 where the modulus is subnormal or underflows,
 * 1 (NaN) for an infinite imaginary part, unless the real one is -inf. HA within 2 ulp in each part. */
ORIN_KOR_COMPLEX_UNARY(Exp)
/* r = cos a + i sin a of a real a. Status 1 (both parts NaN) for infinite a. HA has each part within 1.3 ulp in single,
 * 1.1 ulp in double precision. */
ORIN_KOR_COMPLEX_FROM_REAL(CIS)
/* Trigonometric and hyperbolic functions, for every finite argument: the reduction of the angle is exact. Status 3 where a
 * part of a finite argument's result overflows; 1 (NaN) for an infinite angle, the real part of the first three and the
 * imaginary part of the others, but not in Tan and Tanh where the other part is infinite, too. HA within 2.1 ulp of the
 * modulus, Tan and Tanh 2.8. */
ORIN_KOR_COMPLEX_UNARY(Sin)
ORIN_KOR_COMPLEX_UNARY(Cos)
ORIN_KOR_COMPLEX_UNARY(Tan)
ORIN_KOR_COMPLEX_UNARY(Sinh)
ORIN_KOR_COMPLEX_UNARY(Cosh)
ORIN_KOR_COMPLEX_UNARY(Tanh)

/* --- Pack and unpack ------------------------------------------------------------------------------------------------
 * Copies between a contiguous and a strided, indexed or masked vector; exact, nothing is checked or reported. Counts
 * and increments are taken through their low 32 bits. Kernels have one more argument: 1, as the entries pass it, for
 * 32-bit counts and int32 masks and indices; any other value for full 64-bit counts and int64 masks and indices.
 *   PackI    y[i] = a[i * inca]        UnpackI  y[i * incy] = a[i]
 *   PackV    y[i] = a[ia[i]]           UnpackV  y[iy[i]] = a[i]
 *   PackM    y[k++] = a[i] where mask[i] is not zero
 *   UnpackM  y[i] = a[k++] where mask[i] is not zero, other elements of y are left
 */
#define ORIN_KOR_PACK_FUNCTION(t, F, LA, EP, ENTRY, KERNEL) \
  ORIN_KOR_ENTRIES(t, F, LA, EP, ENTRY)                     \
  ORIN_DATA void(ORIN_CALL * orin_kor_kernel_##t##F##_ttab[3]) KERNEL;
#define ORIN_KOR_PACK(t, T, LA, EP)                                                              \
  ORIN_KOR_PACK_FUNCTION(t, PackI, LA, EP, (int64_t n, const T* a, int64_t inca, T* y),          \
                         (int64_t n, const T* a, int64_t inca, T* y, int32_t indexing))          \
  ORIN_KOR_PACK_FUNCTION(t, PackM, LA, EP, (int64_t n, const T* a, const int32_t* mask, T* y),   \
                         (int64_t n, const T* a, const void* mask, T* y, int32_t indexing))      \
  ORIN_KOR_PACK_FUNCTION(t, PackV, LA, EP, (int64_t n, const T* a, const int32_t* ia, T* y),     \
                         (int64_t n, const T* a, const void* ia, T* y, int32_t indexing))        \
  ORIN_KOR_PACK_FUNCTION(t, UnpackI, LA, EP, (int64_t n, const T* a, T* y, int64_t incy),        \
                         (int64_t n, const T* a, T* y, int64_t incy, int32_t indexing))          \
  ORIN_KOR_PACK_FUNCTION(t, UnpackM, LA, EP, (int64_t n, const T* a, T* y, const int32_t* mask), \
                         (int64_t n, const T* a, T* y, const void* mask, int32_t indexing))      \
  ORIN_KOR_PACK_FUNCTION(t, UnpackV, LA, EP, (int64_t n, const T* a, T* y, const int32_t* iy),   \
                         (int64_t n, const T* a, T* y, const void* iy, int32_t indexing))

ORIN_KOR_PACK(s, float, _21, _11)
ORIN_KOR_PACK(d, double, _50, _26)
ORIN_KOR_PACK(c, KorComplex8, _21, _11)
ORIN_KOR_PACK(z, KorComplex16, _50, _26)

ORIN_END_DECLS

#endif
