/* summary_stats.h: summary statistics of p variables over n observations, driven through a task record.
 * SPDX-License-Identifier: MIT
 *
 * A task binds the caller's data set (p, n, storage, observations, optional weights and variable subset) to the
 * caller's result arrays. It holds pointers only: what they point at must live as long as the task and is read anew
 * by every call. Arrays of either precision need an alignment of 4 bytes only.
 *
 *   __jundSSNewTask -> editors (one slot, or a group of slots) -> kernels -> __junSSDeleteTask
 *
 * Names with `d` take double tasks and arrays, names with `s` single ones. Every function returns 0 or one of the
 * negative statuses below. A task has no lock: one thread at a time; different tasks are independent.
 *
 * Storage of observations and of order statistics:
 *   65536   one variable per row: its n values are contiguous
 *   131072  one observation per row: its p values are contiguous
 * Result vectors hold one value per variable, covariance and correlation a full p by p matrix (symmetric, so both
 * storages are the same). Places of variables outside the subset are left untouched.
 *
 * Integers behind pointers are 32-bit, or 64-bit (low word first) when the task was created with the width flag.
 */
#ifndef ORIN_SUMMARY_STATS_H
#define ORIN_SUMMARY_STATS_H

#include "orin/abi.h"

ORIN_BEGIN_DECLS

/* ---- Statuses ---------------------------------------------------------------------------------------------------- */

enum {
  ORIN_SS_OK = 0,
  ORIN_SS_BAD_PARAMETER = -3,            /* no such slot number, or a slot of the other kind */
  ORIN_SS_NO_MEMORY = -4000,             /* the allocator refused; nothing is leaked */
  ORIN_SS_BAD_DIMENSION = -4001,         /* p is null or not positive */
  ORIN_SS_BAD_OBSERVATION_COUNT = -4002, /* n is null or not positive */
  ORIN_SS_BAD_STORAGE = -4003,           /* a storage is neither 65536 nor 131072 */
  ORIN_SS_BAD_METHOD = -4029,            /* neither of the two low bits of the method word is set */
  ORIN_SS_NULL_TASK = -4031,

  /* A slot that is needed is null, by slot number. -4022, -4069 and -4065 also refuse bad values, see the kernels. */
  ORIN_SS_NO_SUBSET = -4004,
  ORIN_SS_NO_WEIGHTS = -4005,
  ORIN_SS_NO_MEAN = -4006,
  ORIN_SS_NO_RAW_MOMENT_2 = -4007,
  ORIN_SS_NO_RAW_MOMENT_3 = -4008,
  ORIN_SS_NO_RAW_MOMENT_4 = -4009,
  ORIN_SS_NO_CENTRAL_MOMENT_2 = -4010,
  ORIN_SS_NO_CENTRAL_MOMENT_3 = -4011,
  ORIN_SS_NO_CENTRAL_MOMENT_4 = -4012,
  ORIN_SS_NO_KURTOSIS = -4013,
  ORIN_SS_NO_SKEWNESS = -4014,
  ORIN_SS_NO_MINIMUM = -4015,
  ORIN_SS_NO_MAXIMUM = -4016,
  ORIN_SS_NO_VARIATION = -4017,
  ORIN_SS_NO_COVARIANCE = -4018,
  ORIN_SS_NO_CORRELATION = -4019,
  ORIN_SS_NO_ACCUMULATED_WEIGHTS = -4020,
  ORIN_SS_NO_QUANTILE_ORDERS = -4021,
  ORIN_SS_BAD_QUANTILE_ORDERS = -4022,
  ORIN_SS_NO_QUANTILES = -4023,
  ORIN_SS_NO_ORDER_STATISTICS = -4024,
  ORIN_SS_NO_SLOT_40 = -4027,
  ORIN_SS_NO_SLOT_39 = -4028,
  ORIN_SS_NO_OBSERVATIONS = -4032,
  ORIN_SS_NO_SLOT_31 = -4034,
  ORIN_SS_NO_SLOT_30 = -4035,
  ORIN_SS_NO_SLOT_35 = -4036,
  ORIN_SS_NO_SLOT_33 = -4037,
  ORIN_SS_NO_SLOT_28_OR_32 = -4038,
  ORIN_SS_NO_SLOT_42 = -4039,
  ORIN_SS_NO_SLOT_41 = -4040,
  ORIN_SS_NO_SLOT_43 = -4041,
  ORIN_SS_NO_SLOT_38 = -4042,
  ORIN_SS_NO_SLOT_37 = -4043,
  ORIN_SS_NO_STORAGE = -4044,
  ORIN_SS_NO_SLOT_45 = -4045,
  ORIN_SS_NO_SLOT_46 = -4046,
  ORIN_SS_NO_SLOT_48 = -4047,
  ORIN_SS_NO_SLOT_51 = -4048,
  ORIN_SS_NO_SLOT_50 = -4049,
  ORIN_SS_NO_SLOT_52 = -4052,
  ORIN_SS_NO_SLOT_53 = -4053,
  ORIN_SS_NO_SLOT_55 = -4054,
  ORIN_SS_NO_SLOT_54 = -4055,
  ORIN_SS_NO_SLOT_56 = -4056,
  ORIN_SS_NO_SLOT_57 = -4057,
  ORIN_SS_NO_SLOT_58 = -4061,
  ORIN_SS_NO_SLOT_59 = -4062,
  ORIN_SS_BAD_STREAM_EPSILON = -4065,
  ORIN_SS_BAD_STREAM_PARAMETER_COUNT = -4066,
  ORIN_SS_NO_STREAM_ORDERS = -4068,
  ORIN_SS_BAD_STREAM_ORDERS = -4069,
  ORIN_SS_NO_STREAM_QUANTILES = -4070,
  ORIN_SS_NO_SLOT_60 = -4071
};

/* ---- Words of the kernels ---------------------------------------------------------------------------------------- */

enum { ORIN_SS_VARIABLE_ROWS = 65536, ORIN_SS_OBSERVATION_ROWS = 131072 };

enum {
  ORIN_SS_MEAN = 1,
  ORIN_SS_RAW_MOMENT_2 = 2,
  ORIN_SS_RAW_MOMENT_3 = 4,
  ORIN_SS_RAW_MOMENT_4 = 8,
  ORIN_SS_CENTRAL_MOMENT_2 = 16,
  ORIN_SS_CENTRAL_MOMENT_3 = 32,
  ORIN_SS_CENTRAL_MOMENT_4 = 64,
  ORIN_SS_KURTOSIS = 128,
  ORIN_SS_SKEWNESS = 256,
  ORIN_SS_VARIATION = 512,
  ORIN_SS_MINIMUM = 1024,
  ORIN_SS_MAXIMUM = 2048,
  ORIN_SS_COVARIANCE = 4096,
  ORIN_SS_CORRELATION = 8192,
  ORIN_SS_QUANTILES = 65536,
  ORIN_SS_ORDER_STATISTICS = 131072,
  ORIN_SS_STREAM_QUANTILES = 16777216
};

/* ---- The record -------------------------------------------------------------------------------------------------- */

enum { ORIN_SS_MAX_RELEASE = 4 };

/* One block aligned to 128 bytes, zero-filled at creation. The number in a comment is the slot's parameter number;
 * integer slots point at int32 (int64) values, all others at arrays of the task's precision. */
typedef struct SSTask {
  int32_t wide_integers;    /* 0: 32-bit integers, else 64-bit */
  uint8_t tag;              /* 2 */
  int32_t double_precision; /* 1: double, 0: single */

  const void* p;                           /*  1 integer: number of variables */
  const void* n;                           /*  2 integer: number of observations */
  const void* subset;                      /*  5 integers: p flags, non-zero takes part; null: all take part */
  const void* x;                           /*  3 observations */
  const void* weights;                     /*  6 n weights, not negative; null: all one */
  void* accumulated_weights;               /* 23 two values: sum of weights, sum of squared weights */
  const void* x_storage;                   /*  4 integer */
  void* parametrized;                      /* 60 */
  const void* parametrized_storage;        /* 61 integer */
  void* mean;                              /*  7 */
  void* raw_moment_2;                      /*  8 */
  void* raw_moment_3;                      /*  9 */
  void* raw_moment_4;                      /* 10 */
  void* central_moment_2;                  /* 11 */
  void* central_moment_3;                  /* 12 */
  void* central_moment_4;                  /* 13 */
  void* kurtosis;                          /* 14 */
  void* skewness;                          /* 15 */
  void* variation;                         /* 18 */
  void* minimum;                           /* 16 */
  void* maximum;                           /* 17 */
  const void* covariance_storage;          /* 20 integer */
  void* covariance;                        /* 19 */
  const void* correlation_storage;         /* 22 integer */
  void* correlation;                       /* 21 */
  const void* pooled_28;                   /* 28 integers */
  const void* pooled_32;                   /* 32 integer */
  void* pooled_33;                         /* 33 */
  void* pooled_35;                         /* 35 */
  const void* pooled_34;                   /* 34 integer */
  void* pooled_30;                         /* 30 */
  void* pooled_31;                         /* 31 */
  const void* pooled_29;                   /* 29 integer */
  const void* quantile_count;              /* 24 integer: number of orders */
  const void* quantile_orders;             /* 25 */
  void* quantiles;                         /* 26 one row of results per variable */
  void* order_statistics;                  /* 27 n values per variable */
  const void* order_statistics_storage;    /* 44 integer */
  const void* stream_count;                /* 64 integer: number of orders */
  const void* stream_orders;               /* 65 */
  void* stream_quantiles;                  /* 66 one row of results per variable */
  const void* stream_parameter_count;      /* 62 integer: 1 */
  const void* stream_parameters;           /* 63 one value: eps */
  const void* robust_37;                   /* 37 integer */
  void* robust_38;                         /* 38 */
  void* robust_39;                         /* 39 */
  void* robust_40;                         /* 40 */
  const void* robust_36;                   /* 36 integer */
  const void* outlier_41;                  /* 41 integer */
  void* outlier_42;                        /* 42 */
  void* outlier_43;                        /* 43 */
  const void* partial_45;                  /* 45 integer */
  void* partial_covariance;                /* 46 */
  const void* partial_covariance_storage;  /* 47 integer */
  void* partial_correlation;               /* 48 */
  const void* partial_correlation_storage; /* 49 integer */
  const void* missing_50;                  /* 50 integer */
  void* missing_51;                        /* 51 */
  const void* missing_52;                  /* 52 integer */
  void* missing_53;                        /* 53 */
  const void* missing_58;                  /* 58 integer */
  void* missing_59;                        /* 59 */
  const void* missing_54;                  /* 54 integer */
  void* missing_55;                        /* 55 */
  const void* missing_56;                  /* 56 integer */
  void* missing_57;                        /* 57 */

  /* Kernels that keep memory between calls register here; deletion calls every function with the task. */
  int32_t release_count;
  int32_t(ORIN_CALL* release[ORIN_SS_MAX_RELEASE])(struct SSTask* task);
  void* stream_state; /* what __junSQuantilesFreeBuffers frees */
} SSTask;

/* ---- Life and editing -------------------------------------------------------------------------------------------- */

/* Creates a task and stores it in *task; on failure *task stays as it was. Checked in this order: task null
 * (-4031), p null or not positive (-4001); with x given also x_storage null (-4044) or bad (-4003), n null or not
 * positive (-4002); memory (-4000). subset and weights may be null. */
ORIN_API int32_t ORIN_CALL __jundSSNewTask(SSTask** task, const void* p, const void* n, const void* x_storage,
                                           const void* x, const void* weights, const void* subset,
                                           int32_t wide_integers);
ORIN_API int32_t ORIN_CALL __junsSSNewTask(SSTask** task, const void* p, const void* n, const void* x_storage,
                                           const void* x, const void* weights, const void* subset,
                                           int32_t wide_integers);

/* Store one pointer in a slot, by parameter number: the first two take the array slots, the third the integer slots.
 * Task null -4031; no such slot or one of the other kind -3; null pointer: the slot's own status, nothing changes. */
ORIN_API int32_t ORIN_CALL __jundSSEditTask(SSTask* task, int64_t parameter, const void* array);
ORIN_API int32_t ORIN_CALL __junsSSEditTask(SSTask* task, int64_t parameter, const void* array);
ORIN_API int32_t ORIN_CALL __juniSSEditTask(SSTask* task, int64_t parameter, const void* integers);

/* Store a group of pointers; a null one leaves its slot as it is. Task null -4031, else 0. The d and s names are one
 * function. A number names a slot that has no other name. */
#define ORIN_SS_DECLARE_EDITOR(group, ...)                                   \
  ORIN_API int32_t ORIN_CALL __jundSSEdit##group(SSTask* task, __VA_ARGS__); \
  ORIN_API int32_t ORIN_CALL __junsSSEdit##group(SSTask* task, __VA_ARGS__);
ORIN_SS_DECLARE_EDITOR(Moments, void* mean, void* raw2, void* raw3, void* raw4, void* central2, void* central3,
                       void* central4)
ORIN_SS_DECLARE_EDITOR(CovCor, void* mean, void* covariance, const void* covariance_storage, void* correlation,
                       const void* correlation_storage)
ORIN_SS_DECLARE_EDITOR(Quantiles, const void* count, const void* orders, void* quantiles, void* order_statistics,
                       const void* order_statistics_storage)
ORIN_SS_DECLARE_EDITOR(StreamQuantiles, const void* count, const void* orders, void* quantiles,
                       const void* parameter_count, const void* parameters)
ORIN_SS_DECLARE_EDITOR(OutDetect, const void* slot41, void* slot42, void* slot43)
ORIN_SS_DECLARE_EDITOR(PooledCovariance, const void* slot28, void* slot30, void* slot31, const void* slot32,
                       void* slot33, void* slot35)
ORIN_SS_DECLARE_EDITOR(PartialCovCor, const void* slot45, void* covariance, const void* covariance_storage,
                       void* correlation, const void* correlation_storage, void* partial_covariance,
                       const void* partial_covariance_storage, void* partial_correlation,
                       const void* partial_correlation_storage)
ORIN_SS_DECLARE_EDITOR(MissingVals, const void* slot50, void* slot51, const void* slot52, void* slot53,
                       const void* slot58, void* slot59, const void* slot54, void* slot55, const void* slot56,
                       void* slot57)
ORIN_SS_DECLARE_EDITOR(RCov, const void* slot36, const void* slot37, void* slot38, void* slot39, void* slot40)
ORIN_SS_DECLARE_EDITOR(MtxParametrz, void* correlation, const void* correlation_storage, void* parametrized,
                       const void* parametrized_storage)
#undef ORIN_SS_DECLARE_EDITOR

/* Calls the registered release functions, frees the record and sets *task to null. Null or *task null: -4031. */
ORIN_API int32_t ORIN_CALL __junSSDeleteTask(SSTask** task);

/* ---- Minimum and maximum, moments, covariance -------------------------------------------------------------------- */

/* Both take the bits of `estimates` they know and ignore the others. Checked in this order: task null (-4031), method
 * (-4029: bit 1 or bit 2 must be set; both name the method described here), a needed result slot null (the slot's
 * status, first in slot order), x storage null (-4044) or bad (-4003), covariance and correlation storages likewise
 * where those results are needed, x null (-4032), n (-4002), p (-4001), memory (-4000). */

/* Minimum and maximum of each variable. NaN observations are passed over; the result is NaN where all are NaN. Of zeros
 * of both signs the result is the one observed first. */
ORIN_API int32_t ORIN_CALL _jundSSMinmax(SSTask* task, uint64_t estimates, int32_t method);
ORIN_API int32_t ORIN_CALL _junsSSMinmax(SSTask* task, uint64_t estimates, int32_t method);

/* Mean, moments and what follows from them. With weights w (all one by default), W = sum w, m = mean:
 *   mean               sum w x / W
 *   raw moment k       sum w x^k / W
 *   central moment 2   sum w (x-m)^2 / (W - sum w^2/W), the unbiased variance, n - 1 without weights
 *   central moment 3   sum w (x-m)^3 / W
 *   central moment 4   sum w (x-m)^4 / W
 *   kurtosis           m4 / m2^2 - 3     with the central moments above
 *   skewness           m3 / m2^1.5
 *   variation          sqrt(m2) / mean
 *   covariance         sum w (x_i-m_i)(x_j-m_j) / (W - sum w^2/W)
 *   correlation        cov_ij / sqrt(cov_ii cov_jj), held in [-1, 1], exactly 1 on the diagonal
 * An estimate makes those it is computed from results too: the central moments and the covariance need the mean,
 * kurtosis mean, m2 and m4, skewness mean, m2 and m3, variation mean and m2, correlation mean and covariance. A
 * non-null slot 23 receives W and sum w^2.
 *
 * Method: blocks of 512 observations, power sums about the running mean, exact pairwise update between blocks carried
 * in two words; all of it in double for both precisions. Raw moments come from the central ones.
 * Error: each result is within 1e-13 of the exact value for the given observations, relative to the same expression
 * taken over |x| (raw) or |x-m| (central), then rounded to the precision of the task.
 * A single observation has variance 0/0 = NaN; a constant variable has variance 0 exactly. NaN observations make the
 * results of their variable NaN; infinite ones give the mean and raw moments of IEEE sums and NaN central moments.
 * Source: Chan, Golub, LeVeque, The American Statistician 37 (1983); Pebay, SAND2008-6212 (2008). */
ORIN_API int32_t ORIN_CALL _jundSSBasic(SSTask* task, uint64_t estimates, int32_t method);
ORIN_API int32_t ORIN_CALL _junsSSBasic(SSTask* task, uint64_t estimates, int32_t method);

/* ---- Quantiles and order statistics ------------------------------------------------------------------------------ */

/* Quantiles (bit 65536) and order statistics (bit 131072, ascending) of each variable; the method word is not read.
 * For the order b, with h = b (n - 1), j = trunc(h), f = h - j and x(k) the k-th smallest observation from 0:
 *   quantile = (1 - f) x(j) + f x(min(j + 1, n - 1))
 * Checked in this order: task null (-4031), x storage null (-4044) or bad (-4003); for quantiles results null (-4023),
 * orders null (-4021), count null or negative (-4022), an order outside [0, 1] or NaN (-4022); for order statistics
 * results null (-4024), their storage null (-4044) or bad (-4003); x null (-4032), n (-4002), p (-4001),
 * memory (-4000). NaN observations count as larger than every number: they end the order statistics, and a quantile
 * whose ranks reach them is NaN. The time is about that of a partition for each doubling of the number of orders, n log
 * n at worst. */
ORIN_API int32_t ORIN_CALL _jundSSQuantiles(SSTask* task, uint64_t estimates, int32_t method);
ORIN_API int32_t ORIN_CALL _junsSSQuantiles(SSTask* task, uint64_t estimates, int32_t method);

/* Ascending sort in place; NaN go to the end. Returns 0. */
ORIN_API int32_t ORIN_CALL __jundQSort(int32_t count, double* a);
ORIN_API int32_t ORIN_CALL __junsQSort(int32_t count, float* a);

/* Hoare's selection with a median-of-three pivot: returns the value of rank k (from 0) and leaves it at a[k], none
 * larger before it, none smaller behind it. With NaN in the array the call stays inside it and ends, the result is
 * some element. NaN is returned for k outside 0..count-1. */
ORIN_API double ORIN_CALL __jundQSortSelect(int32_t count, double* a, int32_t k);
ORIN_API float ORIN_CALL __junsQSortSelect(int32_t count, float* a, int32_t k);

/* One step of it on a[l..r]: middle element to l + 1, a[l], a[l+1], a[r] put in order, the rest partitioned around
 * a[l+1], which ends up at the final position *down of the downward scan; *up is that of the upward scan. Then
 * a[l..*down-1] <= a[*down] <= a[*up..r]. A range of fewer than three elements is put in order with *down = l,
 * *up = r + 1. Returns 0. */
ORIN_API int32_t ORIN_CALL __jundQSortStep(int32_t l, int32_t r, double* a, int32_t* up, int32_t* down);
ORIN_API int32_t ORIN_CALL __junsQSortStep(int32_t l, int32_t r, float* a, int32_t* up, int32_t* down);

/* Quantiles of a stream (bit 16777216; the method word is not read): each call takes in the task's current n
 * observations of every selected variable and writes the quantiles of all observations taken in so far. With N of
 * them, the value reported for the order b is one of them and its rank is within eps N of b (N - 1); while eps N < 1/2
 * it is the quantile defined above. Memory grows with log(eps N) / eps, not with N: below 100 kB for 10^6 numbers in the
 * usual orders at eps = 1/1000.
 * Checked in this order: task null (-4031), x storage null (-4044) or bad (-4003), results null (-4070), orders null
 * (-4068), count null or negative or an order outside [0, 1] (-4069), parameter count null or not 1 (-4066),
 * parameters null or eps not between 0 and 1 or other than in the calls before (-4065), x null (-4032), n (-4002), p
 * not positive or other than in the calls before (-4001), memory (-4000; the stream is forgotten as a whole). NaN
 * observations count as larger than every number.
 * Source: Greenwald, Khanna, Space-efficient online computation of quantile summaries, SIGMOD 2001. */
ORIN_API int32_t ORIN_CALL _jundSSStreamQuantiles(SSTask* task, uint64_t estimates, int32_t method);
ORIN_API int32_t ORIN_CALL _junsSSStreamQuantiles(SSTask* task, uint64_t estimates, int32_t method);

/* Forgets the stream and frees its memory, so that the next call begins a new one; deletion of the task does the
 * same. Task null: -4031. */
ORIN_API int32_t ORIN_CALL __junSQuantilesFreeBuffers(SSTask* task);

ORIN_END_DECLS

#endif
