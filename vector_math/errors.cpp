// errors: error status, error modes and callback of the calling thread.
// SPDX-License-Identifier: MIT
#include "vector_math/errors.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "service/messages.h"
#include "service/platform/platform.h"
#include "vector_math/mode.h"

static_assert(offsetof(KorErrorContext, status) == 0 && offsetof(KorErrorContext, index) == 4);
static_assert(offsetof(KorErrorContext, a1) == 8 && offsetof(KorErrorContext, a2) == 16);
static_assert(offsetof(KorErrorContext, r1) == 24 && offsetof(KorErrorContext, r2) == 32);
static_assert(offsetof(KorErrorContext, funcName) == 40 && offsetof(KorErrorContext, funcNameLen) == 104);
static_assert(offsetof(KorErrorContext, a1Im) == 112 && offsetof(KorErrorContext, a2Im) == 120);
static_assert(offsetof(KorErrorContext, r1Im) == 128 && offsetof(KorErrorContext, r2Im) == 136);
static_assert(sizeof(KorErrorContext) == 144);

namespace orin::vector_math {
namespace {

bool names_an_element(std::int32_t status) noexcept {
  return status != KOR_STATUS_BADSIZE && status != KOR_STATUS_BADMEM;
}

// --- One element, widened to double and narrowed back ----------------------------------------------------------------

template <class T>
constexpr bool is_complex = std::is_same_v<T, KorComplex8> || std::is_same_v<T, KorComplex16>;

template <class T>
void widen(const T& element, double& re, double& im) noexcept {
  if constexpr (is_complex<T>) {
    re = element.re;
    im = element.im;
  } else {
    re = element;
  }
}

template <class T>
void narrow(double re, double im, T& element) noexcept {
  if constexpr (is_complex<T>) {
    element.re = static_cast<decltype(element.re)>(re);
    element.im = static_cast<decltype(element.im)>(im);
  } else {
    element = static_cast<T>(re);
  }
}

// --- Actions ---------------------------------------------------------------------------------------------------------

int errno_value(std::int32_t status) noexcept {
  switch (status) {
    case KOR_STATUS_OK:
      return 0;
    case KOR_STATUS_BADSIZE:
      return 22;
    case KOR_STATUS_BADMEM:
      return 13;
    case KOR_STATUS_ERRDOM:
      return 33;
    case KOR_STATUS_SING:
    case KOR_STATUS_OVERFLOW:
    case KOR_STATUS_UNDERFLOW:
      return 34;
    default:
      return 14;
  }
}

void set_errno(std::int32_t status) noexcept {
  if (int* location = platform::errno_location()) *location = errno_value(status);
}

void print_line(int message, std::int32_t index, double value) noexcept {
  service::PrintOrinMessage(1, message, 2, index, value);
}

// How many arguments and results there are is guessed from the real parts: a second one that equals the first, or 0,
// counts as absent.
bool second_exists(double first, double second) noexcept { return second != first && second != 0.0; }

void print_elements(const KorErrorContext& context) noexcept {
  const bool two_arguments = second_exists(context.a1, context.a2);
  const bool two_results = second_exists(context.r1, context.r2);
  int message =
      two_arguments
          ? (two_results ? service::message_two_arguments_two_results : service::message_two_arguments_one_result)
          : (two_results ? service::message_one_argument_two_results : service::message_one_argument_one_result);
  print_line(message++, context.index, context.a1);
  if (two_arguments) print_line(message++, context.index, context.a2);
  print_line(message++, context.index, context.r1);
  if (two_results) print_line(message, context.index, context.r2);
}

void print_report(const KorErrorContext& context) noexcept {
  switch (context.status) {
    case KOR_STATUS_OK:
      return;
    case KOR_STATUS_BADMEM:
      service::PrintOrinMessage(1, service::message_bad_memory, 1, context.funcName);
      return;
    case KOR_STATUS_BADSIZE:
      service::PrintOrinMessage(1, service::message_bad_size, 2, context.funcName, context.index);
      return;
    case KOR_STATUS_ERRDOM:
      service::PrintOrinMessage(1, service::message_domain, 1, context.funcName);
      break;
    case KOR_STATUS_SING:
      service::PrintOrinMessage(1, service::message_singularity, 1, context.funcName);
      break;
    case KOR_STATUS_OVERFLOW:
      service::PrintOrinMessage(1, service::message_overflow, 1, context.funcName);
      break;
    case KOR_STATUS_UNDERFLOW:
      service::PrintOrinMessage(1, service::message_underflow, 1, context.funcName);
      break;
    default:
      service::PrintOrinMessage(1, service::message_unknown_error, 1, context.funcName);
      break;
  }
  print_elements(context);
}

// On the x87 unit: the flag is raised there, and the wait lets an unmasked exception trap here and not later. Overflow
// and underflow happen in the store, since the unit's registers have a wider exponent.
void divide_on_x87(long double dividend, long double divisor) noexcept {
  const volatile long double run_time_divisor = divisor;
  [[maybe_unused]] volatile double discarded = static_cast<double>(dividend / run_time_divisor);
  asm volatile("fwait");
}

void square_on_x87(long double x) noexcept {
  const volatile long double run_time_x = x;
  [[maybe_unused]] volatile double discarded = static_cast<double>(run_time_x * run_time_x);
  asm volatile("fwait");
}

void raise_exception(std::int32_t status) noexcept {
  switch (status) {
    case KOR_STATUS_ERRDOM:
      divide_on_x87(0.0L, 0.0L);
      break;
    case KOR_STATUS_SING:
      divide_on_x87(1.0L, 0.0L);
      break;
    case KOR_STATUS_OVERFLOW:
      square_on_x87(1.7976931348623157e+308L);
      break;
    case KOR_STATUS_UNDERFLOW:
      square_on_x87(2.2250738585072014e-308L);
      break;
    default:
      break;
  }
}

}  // namespace

// --- Report ----------------------------------------------------------------------------------------------------------

template <class A, class R>
void report_error(std::int32_t status, std::int32_t index, const A* a1, const A* a2, R* r1, R* r2,
                  const char* name) noexcept {
  KorThreadState& state = thread_state();
  state.errStatus = status;
  const std::uint32_t mode_word = mode(state);
  if ((mode_word & KOR_ERRMODE_MASK) == KOR_ERRMODE_IGNORE) return;

  KorErrorContext context{};
  context.status = status;
  context.index = index;
  context.funcNameLen = static_cast<std::int32_t>(std::min(std::strlen(name), sizeof context.funcName - 1));
  std::memcpy(context.funcName, name, static_cast<std::size_t>(context.funcNameLen));
  const bool has_element = names_an_element(status);
  if (has_element) {
    if (state.inputVectorBase != nullptr) {
      const auto distance = static_cast<std::intptr_t>(reinterpret_cast<std::uintptr_t>(a1) -
                                                       reinterpret_cast<std::uintptr_t>(state.inputVectorBase));
      constexpr int element_shift = sizeof(A) == 4 ? 2 : sizeof(A) == 8 ? 3 : 4;
      context.index = static_cast<std::int32_t>(index + (distance >> element_shift));
    }
    widen(a1[index], context.a1, context.a1Im);
    widen(a2[index], context.a2, context.a2Im);
    widen(r1[index], context.r1, context.r1Im);
    widen(r2[index], context.r2, context.r2Im);
  }

  constexpr std::uint32_t callback_bits = 0xF000;
  if ((mode_word & callback_bits) != 0 && state.errCallback != nullptr && state.errCallback(&context) != 0) return;

  if ((mode_word & KOR_ERRMODE_ERRNO) != 0) set_errno(status);
  if ((mode_word & KOR_ERRMODE_STDERR) != 0) print_report(context);
  if ((mode_word & KOR_ERRMODE_EXCEPT) != 0) raise_exception(status);

  if (has_element) {
    narrow(context.r2, context.r2Im, r2[index]);
    narrow(context.r1, context.r1Im, r1[index]);
  }
}

#define ORIN_REPORT_ERROR(A, R) \
  template void report_error(std::int32_t, std::int32_t, const A*, const A*, R*, R*, const char*) noexcept;
ORIN_REPORT_ERROR(float, float)
ORIN_REPORT_ERROR(float, KorComplex8)
ORIN_REPORT_ERROR(double, double)
ORIN_REPORT_ERROR(double, KorComplex16)
ORIN_REPORT_ERROR(KorComplex8, KorComplex8)
ORIN_REPORT_ERROR(KorComplex8, float)
ORIN_REPORT_ERROR(KorComplex16, KorComplex16)
ORIN_REPORT_ERROR(KorComplex16, double)
#undef ORIN_REPORT_ERROR

void ReportKorError_s(std::int32_t status, std::int32_t index, const float* a1, const float* a2, float* r1, float* r2,
                      const char* name) noexcept {
  report_error(status, index, a1, a2, r1, r2, name);
}

void ReportKorError_d(std::int32_t status, std::int32_t index, const double* a1, const double* a2, double* r1,
                      double* r2, const char* name) noexcept {
  report_error(status, index, a1, a2, r1, r2, name);
}

void ReportKorError_c(std::int32_t status, std::int32_t index, const KorComplex8* a1, const KorComplex8* a2,
                      KorComplex8* r1, KorComplex8* r2, const char* name) noexcept {
  report_error(status, index, a1, a2, r1, r2, name);
}

void ReportKorError_z(std::int32_t status, std::int32_t index, const KorComplex16* a1, const KorComplex16* a2,
                      KorComplex16* r1, KorComplex16* r2, const char* name) noexcept {
  report_error(status, index, a1, a2, r1, r2, name);
}

}  // namespace orin::vector_math

using namespace orin::vector_math;

extern "C" {

ORIN_API int32_t ORIN_CALL orin_kor_kernel_SetErrStatus(int32_t status) {
  KorThreadState& state = thread_state();
  const int32_t previous = state.errStatus;
  state.errStatus = status;
  return previous;
}
ORIN_API int32_t ORIN_CALL orin_kor_kernel_GetErrStatus(void) { return thread_state().errStatus; }
ORIN_API int32_t ORIN_CALL orin_kor_kernel_ClearErrStatus(void) { return orin_kor_kernel_SetErrStatus(KOR_STATUS_OK); }

ORIN_API KorErrorCallBack ORIN_CALL orin_kor_kernel_SetErrorCallBack(KorErrorCallBack callback) {
  KorThreadState& state = thread_state();
  const KorErrorCallBack previous = state.errCallback;
  const uint32_t word = mode(state);
  constexpr uint32_t bit = KOR_ERRMODE_CALLBACK;
  state.errCallback = callback;
  set_mode(state, callback != nullptr ? word | bit : word & ~bit);
  return previous;
}
ORIN_API KorErrorCallBack ORIN_CALL orin_kor_kernel_GetErrorCallBack(void) { return thread_state().errCallback; }
ORIN_API KorErrorCallBack ORIN_CALL orin_kor_kernel_ClearErrorCallBack(void) {
  return orin_kor_kernel_SetErrorCallBack(nullptr);
}

ORIN_API int32_t ORIN_CALL _korSetErrStatus(int32_t status) { return orin_kor_kernel_SetErrStatus(status); }
ORIN_API int32_t ORIN_CALL _korGetErrStatus(void) { return orin_kor_kernel_GetErrStatus(); }
ORIN_API int32_t ORIN_CALL _korClearErrStatus(void) { return orin_kor_kernel_ClearErrStatus(); }
ORIN_API KorErrorCallBack ORIN_CALL _korSetErrorCallBack(KorErrorCallBack callback) {
  return orin_kor_kernel_SetErrorCallBack(callback);
}
ORIN_API KorErrorCallBack ORIN_CALL _korGetErrorCallBack(void) { return orin_kor_kernel_GetErrorCallBack(); }
ORIN_API KorErrorCallBack ORIN_CALL _korClearErrorCallBack(void) { return orin_kor_kernel_ClearErrorCallBack(); }
}
