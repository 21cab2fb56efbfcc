/* conv.h: convolution and correlation of real and complex sequences in one to seven dimensions.
 * SPDX-License-Identifier: MIT
 *
 * Results      for x of shape N, y of shape M, and output position j[i] = start + i * decimation, in every dimension:
 *                convolution   z[i] = sum over k of x[k] y[j - k]     all positions: 0 .. N + M - 2
 *                correlation   z[i] = sum over k of x[k] y[j + k]     all positions: 1 - N .. M - 1; no conjugation
 *              over those k that lie inside both operands.
 * Shapes       the first dimension runs fastest; z has the caller's shape L, so any part of the result can be asked for.
 * Strides      in elements, per dimension. Element k of n stands at k * s for s > 0, at (k - (n - 1)) * s for s < 0 (the
 *              address given is that of the last element), and s = 0 repeats one element. z strides are not 0.
 * Overlap      z must not overlap x or y.
 * Methods      direct: the sums as written; every |error| <= n u sum |x y|, n terms, u the unit roundoff of the
 *              arithmetic (2^-24 single, 2^-53 double), plus the final rounding of SD and CZ.
 *              FFT: by power-of-two transforms, in the same arithmetic; the error relative to the norm of the whole
 *              result is below 10 log2(length) u. Small problems are summed directly by either method.
 * Threads      every function may be called from any thread; one task belongs to one thread at a time.
 * Sources      docs/conv.md.
 */
#ifndef ORIN_CONV_H
#define ORIN_CONV_H

#include "orin/abi.h"

ORIN_BEGIN_DECLS

/* --- Statuses ----------------------------------------------------------------------------------------------------- */
enum {
  ORIN_CONV_OK = 0,
  ORIN_CONV_NO_TASK_MEMORY = -4,     /* a task record could not be allocated */
  ORIN_CONV_NULL_POINTER = -5,       /* null task, or null value of an edit */
  ORIN_CONV_NOT_IMPLEMENTED = -2000, /* no such kernel; dimensions outside 1..7; a null list given to a kernel */
  ORIN_CONV_NO_MEMORY = -2001,       /* a work array could not be allocated */
  ORIN_CONV_BAD_EDIT = -2211,        /* unknown edit parameter */
  ORIN_CONV_FIXED_PARAMETER = -2212, /* parameter that is settled at creation */
  ORIN_CONV_COPY_FAILED = -2230,     /* the copy hook failed or is missing */
  ORIN_CONV_RELEASE_FAILED = -2240,  /* the release hook failed or is missing */
  ORIN_CONV_BAD_START = -2302,       /* start outside the positions of the result */
  ORIN_CONV_BAD_EXTENT = -2303,      /* decimation < 1, or z reaches past the last position */
  ORIN_CONV_BAD_XSHAPE = -2311,      /* a length below 1 */
  ORIN_CONV_BAD_YSHAPE = -2312,
  ORIN_CONV_BAD_ZSHAPE = -2313,
  ORIN_CONV_BAD_ZSTRIDE = -2323, /* a z stride of 0 */
  ORIN_CONV_NULL_X = -2331,
  ORIN_CONV_NULL_Y = -2332,
  ORIN_CONV_NULL_Z = -2333,
  ORIN_CONV_TRANSFORM_FAILED = -2800 /* FFT kernels: the engine could not get its work memory */
};

/* --- Tasks -------------------------------------------------------------------------------------------------------- */
enum { ORIN_CONV_KIND_CONVOLUTION = 1, ORIN_CONV_KIND_CORRELATION = 2 };
enum { ORIN_CONV_MODE_AUTO = 0, ORIN_CONV_MODE_DIRECT = 1, ORIN_CONV_MODE_FFT = 2 }; /* AUTO means FFT */
enum { ORIN_CONV_VALUE_REAL = 1, ORIN_CONV_VALUE_COMPLEX = 2 };
enum { ORIN_CONV_PRECISION_SINGLE = 1, ORIN_CONV_PRECISION_DOUBLE = 2 };
enum { ORIN_CONV_MAX_DIMS = 7 };

/* Parameters that __junEditTask accepts. */
enum {
  ORIN_CONV_EDIT_MODE = 3,
  ORIN_CONV_EDIT_EXTRA = 4,
  ORIN_CONV_EDIT_START = 5,             /* dims integers */
  ORIN_CONV_EDIT_DECIMATION = 6,        /* dims integers */
  ORIN_CONV_EDIT_INTERNAL_PRECISION = 9 /* arithmetic of the sums */
};

typedef struct ConvTask ConvTask;

/* Called when a task with attached data is deleted; 0 means success. */
typedef int32_t(ORIN_CALL* ConvReleaseHook)(ConvTask* task, void* attached);
/* Called when a task with attached data is copied, to make *copy_of_attached the new task's own; 0 means success. */
typedef int32_t(ORIN_CALL* ConvCopyHook)(ConvTask* new_task, void** copy_of_attached, void* attached);

struct ConvTask {
  int32_t status; /* sticky: while it is not 0, edit, commit, copy and exec return it and do nothing */
  int32_t kind;
  int32_t job;
  int32_t mode;
  int32_t extra;
  int32_t* start;      /* null, or start_values */
  int32_t* decimation; /* null, or decimation_values; the other pointers likewise */
  int32_t value_class;
  int32_t precision;
  int32_t internal_precision;
  int32_t dims;
  int32_t* xshape;
  int32_t* yshape;
  int32_t* zshape;
  int32_t* fixed_xstride;
  const void* fixed_x; /* the caller's data */
  int32_t start_values[ORIN_CONV_MAX_DIMS];
  int32_t decimation_values[ORIN_CONV_MAX_DIMS];
  int32_t xshape_values[ORIN_CONV_MAX_DIMS];
  int32_t yshape_values[ORIN_CONV_MAX_DIMS];
  int32_t zshape_values[ORIN_CONV_MAX_DIMS];
  int32_t fixed_xstride_values[ORIN_CONV_MAX_DIMS];
  int32_t committed;
  void* attached; /* a block of the core module's allocator, freed with the task */
  ConvReleaseHook release_hook;
  ConvCopyHook copy_hook;
};

/* Creates a task; null shapes are allowed here and refused by the execution. On failure *task stays as it is.
 * NULL_POINTER, NO_TASK_MEMORY. */
ORIN_API int32_t ORIN_CALL __junNewTask(ConvTask** task, int32_t kind, int32_t job, int32_t mode, int32_t value_class,
                                        int32_t precision, int32_t dims, const int32_t* xshape, const int32_t* yshape,
                                        const int32_t* zshape);

/* The same with a fixed operand x for __junExecX: the data are kept by reference, the strides (may be null) copied. */
ORIN_API int32_t ORIN_CALL __junNewTaskX(ConvTask** task, int32_t kind, int32_t job, int32_t mode, int32_t value_class,
                                         int32_t precision, int32_t dims, const int32_t* xshape, const int32_t* yshape,
                                         const int32_t* zshape, const void* x, const int32_t* xstride);

/* Changes one parameter and takes the commitment back. Its result becomes the task's status, so that a task with a
 * refused edit does not run. NULL_POINTER, BAD_EDIT, FIXED_PARAMETER. */
ORIN_API int32_t ORIN_CALL __junEditTask(ConvTask* task, int32_t parameter, const int32_t* value);

/* Declares a task complete; the first execution does it otherwise. */
ORIN_API int32_t ORIN_CALL __junCommitTask(ConvTask* task);

/* Makes an independent copy. NULL_POINTER, the source's status, NO_TASK_MEMORY, COPY_FAILED; *copy stays as it is then. */
ORIN_API int32_t ORIN_CALL __junCopyTask(ConvTask** copy, const ConvTask* source);

/* Frees a task in any state and sets *task to null; a null *task is a success. NULL_POINTER, RELEASE_FAILED (the task is
 * freed all the same). */
ORIN_API int32_t ORIN_CALL __junDeleteTask(ConvTask** task);

/* Runs the task; null strides mean dense arrays, an unset start the first position, an unset decimation 1. The kernel's
 * result becomes the task's status. */
ORIN_API int32_t ORIN_CALL __junExec(ConvTask* task, const void* x, const int32_t* xstride, const void* y,
                                     const int32_t* ystride, void* z, const int32_t* zstride);

/* The same with the operand x of __junNewTaskX. */
ORIN_API int32_t ORIN_CALL __junExecX(ConvTask* task, const void* y, const int32_t* ystride, void* z,
                                      const int32_t* zstride);

/* Sets the status and returns the previous one; returns the status. */
ORIN_API int32_t ORIN_CALL __junccSetStatus(ConvTask* task, int32_t status);
ORIN_API int32_t ORIN_CALL __junccGetStatus(const ConvTask* task);

/* --- Kernels ------------------------------------------------------------------------------------------------------
 * _jun<Conv|Corr><pair><Direct|Fft><1D|All>_<dec|nodec>, what the tasks call, open to direct use.
 *
 * pair   SS DD   real single, real double          CC ZZ   complex (re, im pairs) single, double
 *        SD CZ   real and complex single, summed in double
 * 1D     x, y, z with one stride and one length each; start and decimation by value
 * All    dims in 1..7 and lists of dims entries
 * nodec  decimation 1: exists for SS, direct, 1D alone; every other one returns NOT_IMPLEMENTED
 *
 * Tests, the first that fails decides, and nothing is written: (All: dims and lists, NOT_IMPLEMENTED); x null, x length;
 * y null, y length; z null, z length; z stride; start; decimation and extent. After them NO_MEMORY, and TRANSFORM_FAILED
 * from the FFT kernels.
 */
#define ORIN_CONV_KERNEL_SET(prefix)                                                                                   \
  ORIN_API int32_t ORIN_CALL prefix##1D_dec(const void* x, int32_t xstride, const void* y, int32_t ystride, void* z,   \
                                            int32_t zstride, int32_t xlength, int32_t ylength, int32_t start,          \
                                            int32_t zlength, int32_t decimation);                                      \
  ORIN_API int32_t ORIN_CALL prefix##1D_nodec(const void* x, int32_t xstride, const void* y, int32_t ystride, void* z, \
                                              int32_t zstride, int32_t xlength, int32_t ylength, int32_t start,        \
                                              int32_t zlength);                                                        \
  ORIN_API int32_t ORIN_CALL prefix##All_dec(int32_t dims, const void* x, const int32_t* xshape,                       \
                                             const int32_t* xstride, const void* y, const int32_t* yshape,             \
                                             const int32_t* ystride, void* z, const int32_t* zshape,                   \
                                             const int32_t* zstride, const int32_t* start, const int32_t* decimation); \
  ORIN_API int32_t ORIN_CALL prefix##All_nodec(int32_t dims, const void* x, const int32_t* xshape,                     \
                                               const int32_t* xstride, const void* y, const int32_t* yshape,           \
                                               const int32_t* ystride, void* z, const int32_t* zshape,                 \
                                               const int32_t* zstride, const int32_t* start);

#define ORIN_CONV_KERNELS(pair)                \
  ORIN_CONV_KERNEL_SET(_junConv##pair##Direct) \
  ORIN_CONV_KERNEL_SET(_junConv##pair##Fft)    \
  ORIN_CONV_KERNEL_SET(_junCorr##pair##Direct) \
  ORIN_CONV_KERNEL_SET(_junCorr##pair##Fft)

ORIN_CONV_KERNELS(SS)
ORIN_CONV_KERNELS(SD)
ORIN_CONV_KERNELS(DD)
ORIN_CONV_KERNELS(CC)
ORIN_CONV_KERNELS(CZ)
ORIN_CONV_KERNELS(ZZ)

#undef ORIN_CONV_KERNELS
#undef ORIN_CONV_KERNEL_SET

ORIN_END_DECLS

#endif
