/* data_fitting.h: one-dimensional data fitting: task, splines, cell search, interpolation, integration.
 * SPDX-License-Identifier: MIT
 *
 * Use          NewTask1D, EditPPSpline1D, a constructor, then searches, interpolation and integration any number of
 *              times, then DeleteTask.
 * Names        orin_df_kernel_<t><Name>; <t> is d for double and s for float arrays, i for integers.
 * Integers     64-bit, also in the 32-bit build, unless an argument says otherwise.
 * Arrays       belong to the caller and are never copied at creation: partition, values, conditions and coefficient
 *              storage must live as long as the task uses them. The partition must be strictly ascending.
 * Cell         of a site s: the number of partition points not greater than s. 0 below the partition, i where
 *              x[i-1] <= s < x[i], nx at its right end and beyond.
 * Returns      a status: 0 or one of the negative codes below. Nothing is printed.
 * Threads      a task is used by one thread at a time; several tasks may be used in parallel.
 */
#ifndef ORIN_DATA_FITTING_H
#define ORIN_DATA_FITTING_H

#include "orin/abi.h"

ORIN_BEGIN_DECLS

/* --- Status codes --------------------------------------------------------------------------------------------------
 */
enum {
  ORIN_DF_OK = 0,
  ORIN_DF_NULL_TASK = -1000,
  ORIN_DF_NO_MEMORY = -1001,
  ORIN_DF_BAD_METHOD = -1002, /* a constructor's method argument or quadratic type */
  ORIN_DF_BAD_NX = -1004,     /* fewer partition points than the task or the spline needs */
  ORIN_DF_BAD_X = -1005,      /* null partition or sites */
  ORIN_DF_BAD_XHINT = -1006,
  ORIN_DF_BAD_NY = -1007,    /* no functions while values or coefficients are given */
  ORIN_DF_BAD_Y = -1008,     /* null function values or results */
  ORIN_DF_BAD_YHINT = -1009, /* bad storage hint of values or results */
  ORIN_DF_BAD_ORDER = -1010, /* negative spline order, or one that cannot be evaluated */
  ORIN_DF_BAD_TYPE = -1011,
  ORIN_DF_BAD_IC_TYPE = -1012,
  ORIN_DF_BAD_IC = -1013, /* internal conditions asked for without values */
  ORIN_DF_BAD_BC_TYPE = -1014,
  ORIN_DF_BAD_BC = -1015,     /* boundary conditions that need values without values */
  ORIN_DF_BAD_SCOEFF = -1016, /* null coefficient storage */
  ORIN_DF_BAD_SCOEFFHINT = -1017,
  ORIN_DF_BAD_ATTRIBUTE = -1019, /* unknown attribute id */
  ORIN_DF_BAD_INDEX = -1020      /* function index not below ny */
};

/* --- Hints, types and attribute ids --------------------------------------------------------------------------------
 */
enum {
  ORIN_DF_NO_HINT = 0,

  ORIN_DF_NON_UNIFORM = 1, /* partition: general, the same as no hint */
  ORIN_DF_QUASI_UNIFORM = 2,
  ORIN_DF_UNIFORM = 4,

  ORIN_DF_BY_FUNCTION = 16, /* storage: function after function, the same as no hint */
  ORIN_DF_BY_POINT = 32,    /* the ny values of a point contiguous */
  ORIN_DF_SEPARATE = 128,   /* an array of its own for every function, given one by one with EditIdxPtr */

  ORIN_DF_SORTED_SITES = 64, /* sites: ascending */

  ORIN_DF_LINEAR = 2, /* spline order: coefficients of a cell */
  ORIN_DF_QUADRATIC = 3,
  ORIN_DF_CUBIC = 4,

  ORIN_DF_DEFAULT = 0, /* spline type */
  ORIN_DF_SUBBOTIN = 1,
  ORIN_DF_NATURAL = 2,
  ORIN_DF_HERMITE = 3,
  ORIN_DF_BESSEL = 4,
  ORIN_DF_AKIMA = 5,

  ORIN_DF_NO_IC = 0, /* internal conditions */
  ORIN_DF_IC_FIRST_DERIVATIVE = 1,
  ORIN_DF_IC_SECOND_DERIVATIVE = 2,
  ORIN_DF_IC_KNOTS = 8, /* the nx + 1 knots of the Subbotin spline */

  ORIN_DF_NO_BC = 0, /* boundary conditions; 4 or 16 together with 8 or 32 makes a two-sided type */
  ORIN_DF_BC_NOT_A_KNOT = 1,
  ORIN_DF_BC_FREE_ENDS = 2,
  ORIN_DF_BC_LEFT_FIRST = 4,
  ORIN_DF_BC_RIGHT_FIRST = 8,
  ORIN_DF_BC_LEFT_SECOND = 16,
  ORIN_DF_BC_RIGHT_SECOND = 32,
  ORIN_DF_BC_PERIODIC = 64,
  ORIN_DF_BC_MID_CELL = 128, /* the value in the middle of the first cell, for the default quadratic spline */

  ORIN_DF_X = 1, /* attributes: pointers */
  ORIN_DF_Y = 2,
  ORIN_DF_IC = 3,
  ORIN_DF_BC = 4,
  ORIN_DF_SCOEFF = 5,
  ORIN_DF_NX = 14, /* and integers */
  ORIN_DF_XHINT = 15,
  ORIN_DF_NY = 16,
  ORIN_DF_YHINT = 17,
  ORIN_DF_ORDER = 18,
  ORIN_DF_TYPE = 19,
  ORIN_DF_IC_TYPE = 20,
  ORIN_DF_BC_TYPE = 21,
  ORIN_DF_SCOEFFHINT = 22,

  ORIN_DF_WIDE_CELLS = 3 /* search flags: both bits set, cells are int64_t; otherwise int32_t */
};

/* --- Task -----------------------------------------------------------------------------------------------------------
 * Made by NewTask1D and changed by the editors; the layout is fixed and may be read.
 */
typedef struct DfTask1D {
  int32_t caller_word;
  int8_t kind_tag;       /* 4 */
  int32_t precision_tag; /* 1 double, 0 float */
  int32_t editable;      /* 1; EditPtr, EditIdxPtr and iEditVal do nothing and return 0 otherwise */
  int64_t nx;
  const void* x;
  int64_t xhint;
  int64_t ny;
  const void** y; /* a pointer per function, or one for all of them with storage hint 32 */
  int64_t yhint;
  int64_t s_order;
  int64_t s_type;
  int64_t ic_type;
  const void* ic;
  int64_t bc_type;
  const void* bc;
  void** scoeff; /* a pointer per function */
  int64_t scoeffhint;
} DfTask1D;

/* A task over nx >= 2 partition points and ny functions (ny = 0 and y null: none yet). Checked in the order of the
 * arguments; -1001 when memory runs out. If only the table of values cannot be had, *task_out is set nevertheless and
 * must be deleted. */
ORIN_API int32_t ORIN_CALL orin_df_kernel_dNewTask1D(DfTask1D** task_out, int64_t nx, const double* x, int64_t xhint,
                                                     int64_t ny, const double* y, int64_t yhint, int32_t caller_word);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sNewTask1D(DfTask1D** task_out, int64_t nx, const float* x, int64_t xhint,
                                                     int64_t ny, const float* y, int64_t yhint, int32_t caller_word);

/* The whole spline description: order, type, boundary and internal conditions, and coefficient storage (may be null:
 * the earlier one stays). Function i gets the storage from scoeff + i * stride on, stride = s_order * nx for type 1 and
 * s_order * (nx - 1) otherwise. What was stored before a failing check stays stored. */
ORIN_API int32_t ORIN_CALL orin_df_kernel_dEditPPSpline1D(DfTask1D* task, int64_t s_order, int64_t s_type,
                                                          int64_t bc_type, const double* bc, int64_t ic_type,
                                                          const double* ic, double* scoeff, int64_t scoeffhint);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sEditPPSpline1D(DfTask1D* task, int64_t s_order, int64_t s_type,
                                                          int64_t bc_type, const float* bc, int64_t ic_type,
                                                          const float* ic, float* scoeff, int64_t scoeffhint);

/* One pointer: ids ORIN_DF_X to ORIN_DF_SCOEFF. Values and storage rebuild their table by the hints of the moment. */
ORIN_API int32_t ORIN_CALL orin_df_kernel_dEditPtr(DfTask1D* task, int64_t id, const double* pointer);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sEditPtr(DfTask1D* task, int64_t id, const float* pointer);

/* The values (ORIN_DF_Y) or coefficient storage (ORIN_DF_SCOEFF) of function idx < ny. The table must be there. */
ORIN_API int32_t ORIN_CALL orin_df_kernel_dEditIdxPtr(DfTask1D* task, int64_t id, int64_t idx, const double* pointer);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sEditIdxPtr(DfTask1D* task, int64_t id, int64_t idx, const float* pointer);

/* One integer: ids ORIN_DF_NX to ORIN_DF_SCOEFFHINT. Tables are rebuilt only by the next EditPtr or EditPPSpline1D. */
ORIN_API int32_t ORIN_CALL orin_df_kernel_iEditVal(DfTask1D* task, int64_t id, int64_t value);

/* Frees the task and sets the handle to null; -1000 for a handle that is null already. */
ORIN_API int32_t ORIN_CALL orin_df_kernel_DeleteTask(DfTask1D** task);

/* --- Construction ---------------------------------------------------------------------------------------------------
 * Each computes the coefficients of every function of the task: per cell s_order of them, lowest power first, in powers
 * of t - x[i]. Everything is computed in double precision, linear splines excepted, and rounded once. The coefficient
 * storage may overlap the values or the partition. `unused` is not read; `passed_on` is for later use.
 *
 *   Linear         nx >= 2, method 0
 *   Quadratic      type 0: C1, one boundary value: the spline's in the middle of its first cell (bc_type 128)
 *                  type 1: C1 with nx cells between nx + 1 knots (Subbotin), powers of t - left knot. The knots are
 *                  internal conditions, one between each two partition points and one at or outside each end, or else
 *                  the ends of the partition and the midpoints of its cells. End conditions hold at x[0], x[nx-1].
 *   NaturalCubic   nx >= 3, method 0; twice continuously differentiable
 *   DefaultCubic, HermiteCubic   nx >= 3; with internal conditions the given first (or second) derivatives at the inner
 *                  points, without any the twice continuously differentiable spline
 *   BesselCubic    nx >= 4; inner slopes are those of the parabola through three neighbours
 *   AkimaCubic     nx >= 5; inner slopes weighted by the change of the difference quotients beside them
 *
 * Ends (type 1 quadratic and the cubics; bc holds one value per end, left first, and serves every function):
 *   1              not-a-knot: highest derivative continuous at the first and last inner point; one parabola at nx = 3
 *   12 36 24 48    first or second derivative given at each end
 *   64             periodic: first and second derivatives agree at both ends
 *   any other      free: second derivative zero; for Bessel and Akima the family's own end slopes
 *
 * Statuses in order: -1000; -1004; -1002 (method, or a quadratic type other than 0 and 1); -1015; 0 for a task without
 * functions; -1008, -1016 where it lacks values or storage; -1012, -1013 for internal conditions; -1001.
 * Sources: de Boor, A Practical Guide to Splines, chapters IV and VI; Akima, JACM 17 (1970) 589-602; Stechkin and
 * Subbotin, Splines in Computational Mathematics (1976). */
ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFLinearSpline1D(DfTask1D* task, int64_t unused, int64_t method,
                                                            int64_t passed_on);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFLinearSpline1D(DfTask1D* task, int64_t unused, int64_t method,
                                                            int64_t passed_on);
ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFQuadraticSpline1D(DfTask1D* task, int64_t unused, int64_t method,
                                                               int64_t passed_on);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFQuadraticSpline1D(DfTask1D* task, int64_t unused, int64_t method,
                                                               int64_t passed_on);
ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFNaturalCubicSpline1D(DfTask1D* task, int64_t unused, int64_t method,
                                                                  int64_t passed_on);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFNaturalCubicSpline1D(DfTask1D* task, int64_t unused, int64_t method,
                                                                  int64_t passed_on);
ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFDefaultCubicSpline1D(DfTask1D* task, int64_t unused, int64_t method,
                                                                  int64_t passed_on);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFDefaultCubicSpline1D(DfTask1D* task, int64_t unused, int64_t method,
                                                                  int64_t passed_on);
ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFHermiteCubicSpline1D(DfTask1D* task, int64_t unused, int64_t method,
                                                                  int64_t passed_on);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFHermiteCubicSpline1D(DfTask1D* task, int64_t unused, int64_t method,
                                                                  int64_t passed_on);
ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFBesselCubicSpline1D(DfTask1D* task, int64_t unused, int64_t method,
                                                                 int64_t passed_on);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFBesselCubicSpline1D(DfTask1D* task, int64_t unused, int64_t method,
                                                                 int64_t passed_on);
ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFAkimaCubicSpline1D(DfTask1D* task, int64_t unused, int64_t method,
                                                                int64_t passed_on);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFAkimaCubicSpline1D(DfTask1D* task, int64_t unused, int64_t method,
                                                                int64_t passed_on);

/* --- Cell search ----------------------------------------------------------------------------------------------------
 * nsite cells are written to `cell`, as int64_t when both bits of ORIN_DF_WIDE_CELLS are set in flags, else as int32_t.
 * nsite < 1 writes nothing. Nothing is checked but the task, and no point beyond x[0..nx-1] is ever read.
 * Infinite sites lie in cell 0 or nx. Cells of NaN sites: Uniform and QuasiUniform 0; Peak the peak cell; Hybrid the
 * cell where its bisection ends when no point compares greater; Sorted the position, moved on to less than 17 points
 * before the right end.
 */

/* A search of the caller's own: writes the cells of n sites in the width that the flags ask for; user is null. A
 * negative result is returned as the status, any other means success. */
typedef int32_t(ORIN_CALL* OrinDfSearchD)(int64_t n, const int64_t* user, const double* site, void* cell,
                                          void* parameters);
typedef int32_t(ORIN_CALL* OrinDfSearchS)(int64_t n, const int64_t* user, const float* site, void* cell,
                                          void* parameters);

/* The method is chosen by the first that applies: callback given; uniform, then quasi-uniform partition; sorted sites;
 * data_hint[1] = 1: outward from cell data_hint[0], the same cells as in general; general. */
ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFSearch1D(const DfTask1D* task, int64_t nsite, const double* site,
                                                      int64_t sitehint, const double* data_hint, void* cell,
                                                      int64_t flags, OrinDfSearchD search, void* parameters);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFSearch1D(const DfTask1D* task, int64_t nsite, const float* site,
                                                      int64_t sitehint, const float* data_hint, void* cell,
                                                      int64_t flags, OrinDfSearchS search, void* parameters);

/* Uniform partition: cell 0 below x[0], else trunc((s - x[0]) * multiplier) + 1, limited to 0..nx. Reads x[0] alone.
 * multiplier: (nx - 1) / (x[nx-1] - x[0]). */
ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFUniformSearch1D(int64_t nx, const double* x, int64_t nsite,
                                                             const double* site, double multiplier, void* cell,
                                                             int64_t flags);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFUniformSearch1D(int64_t nx, const float* x, int64_t nsite,
                                                             const float* site, float multiplier, void* cell,
                                                             int64_t flags);

/* The uniform cell as a first guess, then a walk to the right one. A site equal to a partition point may be given the
 * cell on either side of it. */
ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFQuasiUniformSearch1D(int64_t nx, const double* x, int64_t nsite,
                                                                  const double* site, double multiplier, void* cell,
                                                                  int64_t flags);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFQuasiUniformSearch1D(int64_t nx, const float* x, int64_t nsite,
                                                                  const float* site, float multiplier, void* cell,
                                                                  int64_t flags);

/* Ascending sites. *position is the cell to start from, 0 at first, and afterwards the last cell found: cells never go
 * down, within a call and from one call to the next. */
ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFSortedSearch1D(int64_t nx, const double* x, int64_t nsite,
                                                            const double* site, int32_t* position, void* cell,
                                                            int64_t flags);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFSortedSearch1D(int64_t nx, const float* x, int64_t nsite,
                                                            const float* site, int32_t* position, void* cell,
                                                            int64_t flags);

/* Any sites, any partition. */
ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFHybridSearch1D(int64_t nx, const double* x, int64_t nsite,
                                                            const double* site, void* cell, int64_t flags);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFHybridSearch1D(int64_t nx, const float* x, int64_t nsite,
                                                            const float* site, void* cell, int64_t flags);

/* Sites near a most probable cell: a walk outward from trunc(peak), 0 <= peak <= nx. */
ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFPeakSearch1D(int64_t nx, const double* x, int64_t nsite,
                                                          const double* site, double peak, void* cell, int64_t flags);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFPeakSearch1D(int64_t nx, const float* x, int64_t nsite, const float* site,
                                                          float peak, void* cell, int64_t flags);

/* The caller's own search. The two names differ in the partition the callback is meant for. */
ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFUserDefSearch1D(int64_t nx, const double* x, int64_t nsite,
                                                             const double* site, OrinDfSearchD search, void* parameters,
                                                             void* cell, int64_t flags);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFUserDefSearch1D(int64_t nx, const float* x, int64_t nsite,
                                                             const float* site, OrinDfSearchS search, void* parameters,
                                                             void* cell, int64_t flags);
ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFUniUserDefSearch1D(int64_t nx, const double* x, int64_t nsite,
                                                                const double* site, OrinDfSearchD search,
                                                                void* parameters, void* cell, int64_t flags);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFUniUserDefSearch1D(int64_t nx, const float* x, int64_t nsite,
                                                                const float* site, OrinDfSearchS search,
                                                                void* parameters, void* cell, int64_t flags);

/* --- Use ------------------------------------------------------------------------------------------------------------
 * Both read the coefficients that a constructor wrote, with the task's order and type, and extend the outer cells'
 * polynomials beyond the partition. At the partition points the values are the functions' own to the bit, type 1
 * quadratics excepted; at the last point too, where its polynomial leads to the task's value. A NaN site gives a value of
 * NaN, a NaN limit an integral of NaN. Derivatives from the order on are 0.
 */

/* Derivatives of every function at nsite sites: dorder[k] != 0, k < ndorder, asks for the k-th (0: the value). Results:
 * function by function, the asked derivatives of a site contiguous (rhint 0 or 16), or site by site, the derivatives of
 * a function contiguous (rhint 32). sitehint 64: sites ascending. data_hint as in DFSearch1D, or null. cell: the cells
 * of the sites (clamped to 0..nx) when they are known, else null. No memory is allocated.
 * -1000; -1010 order other than 2, 3, 4; -1016; -1005 null sites; -1008 null results; -1009 another rhint; -1013 for a
 * type 1 quadratic whose own knots are missing. nsite < 1, or nothing asked for: 0. */
ORIN_API int32_t ORIN_CALL orin_df_kernel_dInterpolate1D(const DfTask1D* task, int64_t nsite, const double* site,
                                                         int64_t sitehint, int64_t ndorder, const int32_t* dorder,
                                                         const double* data_hint, double* r, int64_t rhint,
                                                         const int64_t* cell);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sInterpolate1D(const DfTask1D* task, int64_t nsite, const float* site,
                                                         int64_t sitehint, int64_t ndorder, const int32_t* dorder,
                                                         const float* data_hint, float* r, int64_t rhint,
                                                         const int64_t* cell);

/* Integrals of every function from left[k] to right[k], k < nlim; reversed limits give the negative. Results: function
 * by function (rhint 0 or 16) or the functions of a pair of limits contiguous (rhint 32). Hints 64: limits ascending.
 * Whole cells between two limits come from prefix sums in twice the working precision.
 * -1000; -1011 for an order and type that no constructor makes; -1016; -1005 null limits; -1008 null results; -1009
 * another rhint; -1013 for a type 1 quadratic whose own knots are missing; -1001. nlim < 1, or no functions: 0. */
ORIN_API int32_t ORIN_CALL orin_df_kernel_dIntegrate1D(const DfTask1D* task, int64_t nlim, const double* left,
                                                       int64_t lefthint, const double* right, int64_t righthint,
                                                       double* r, int64_t rhint);
ORIN_API int32_t ORIN_CALL orin_df_kernel_sIntegrate1D(const DfTask1D* task, int64_t nlim, const float* left,
                                                       int64_t lefthint, const float* right, int64_t righthint,
                                                       float* r, int64_t rhint);

ORIN_END_DECLS

#endif
