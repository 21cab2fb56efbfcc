// abstract: streams over a buffer that a callback of the caller refills with words, doubles or floats.
// SPDX-License-Identifier: MIT
//
// State     n, the position of the next unread value, the addresses of buffer and callback in 64-bit fields, and for
//           the floating-point ones the interval of the values
// Buffer    the unread values always reach to its end. A refill is asked for when none is left, from index 0 on; when
//           it brings less than n values they are moved to the end, which keeps one position enough.
// Mapping   from [a0, b0) to [a, b): a + (v - a0) (b - a) / (b0 - a0); values stay as they are on their own interval
// Modes     the callback runs under the caller's floating-point modes, the mapping under the default ones
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "rng/generators/generators.h"
#include "rng/generators/sinks.h"
#include "rng/half_open.h"

namespace orin::rng {
namespace {

template <class T>
struct Range {
  T a, b;
};
template <>
struct Range<uint32_t> {};

template <class T>
struct AbstractState {
  int32_t n;
  int32_t next;
  uint64_t buffer;
  uint64_t refill;
  [[no_unique_address]] Range<T> interval;
};
static_assert(sizeof(AbstractState<uint32_t>) == 24);
static_assert(sizeof(AbstractState<double>) == 40);
static_assert(sizeof(AbstractState<float>) == 32);

template <class T>
using Refill = int32_t(ORIN_CALL*)(void*, int32_t, T*, int32_t, int32_t, int32_t);

// Asks for as much of `wanted` values as the buffer can hold, at most for a full buffer.
template <class T>
int32_t refill(void* stream, int32_t wanted) {
  auto& state = state_of<AbstractState<T>>(stream);
  const int32_t n = state.n;
  T* buffer = reinterpret_cast<T*>(static_cast<uintptr_t>(state.buffer));
  const int32_t least = std::min(wanted, n);
  const auto callback = reinterpret_cast<Refill<T>>(static_cast<uintptr_t>(state.refill));
  const int32_t count = std::clamp(callback(stream, n, buffer, least, n, 0), 0, n);
  if (count < n) std::memmove(buffer + (n - count), buffer, static_cast<std::size_t>(count) * sizeof(T));
  state.next = n - count;
  return count >= least ? JUN_RNG_OK : JUN_RNG_SHORT_REFILL;
}

// Hands the next n values to `take` (values, count) in runs as they lie in the buffer.
template <class T, class Take>
int32_t deliver(void* stream, int32_t n, const T* r, Take take) {
  if (n <= 0) return JUN_RNG_OK;
  if (stream == nullptr || r == nullptr) return JUN_RNG_NULL_POINTER;
  auto& state = state_of<AbstractState<T>>(stream);
  while (n > 0) {
    if (state.next < 0 || state.next >= state.n) {
      const int32_t status = refill<T>(stream, n);
      if (status != JUN_RNG_OK) return status;
    }
    const int32_t run = std::min(n, state.n - state.next);
    take(reinterpret_cast<const T*>(static_cast<uintptr_t>(state.buffer)) + state.next, run);
    state.next += run;
    n -= run;
  }
  return JUN_RNG_OK;
}

int32_t words(void* stream, int32_t n, uint32_t* r) {
  return deliver<uint32_t>(stream, n, r,
                           [&](const uint32_t* values, int32_t count) { r = std::copy_n(values, count, r); });
}

template <class T>
int32_t uniform(void* stream, int32_t n, T* r, T a, T b) {
  const Range<T> from = stream != nullptr ? state_of<AbstractState<T>>(stream).interval : Range<T>{a, b};
  if (a == from.a && b == from.b) {
    return deliver<T>(stream, n, r, [&](const T* values, int32_t count) { r = std::copy_n(values, count, r); });
  }
  return deliver<T>(stream, n, r, [&](const T* values, int32_t count) {
    const FloatingPointFrame frame;
    const T scale = from.a != from.b ? (b - a) / (from.b - from.a) : T{0};
    const T last = a < b ? value_below(b) : b;
    r = std::transform(values, values + count, r, [=](T v) {
      const T u = a + (v - from.a) * scale;
      return a < b ? std::clamp(u, a, last) : u;
    });
  });
}

template <class T>
int32_t create(void** stream, int32_t brng, int32_t n, T* buffer, Range<T> interval, Refill<T> callback) {
  if (stream == nullptr) return JUN_RNG_NULL_POINTER;
  *stream = nullptr;
  if (n <= 0 || buffer == nullptr || callback == nullptr) return JUN_RNG_NULL_POINTER;
  int32_t row = 0, sub_stream = 0;
  const JunBrngProperties* table = __junGetBrngBaseOffset(brng, &row, &sub_stream);
  const int32_t status = __junAllocateStream(stream, brng, table, row, sub_stream);
  if (status != JUN_RNG_OK) return status;
  state_of<AbstractState<T>>(*stream) = {n, 0, reinterpret_cast<uintptr_t>(buffer),
                                         reinterpret_cast<uintptr_t>(callback), interval};
  return JUN_RNG_OK;
}

// Abstract streams take no seeds: their creation functions have written the state.
int32_t init(int32_t method) { return method == JUN_RNG_SEED ? JUN_RNG_OK : refuse_partition(method); }

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_BEGIN_DECLS

ORIN_API int32_t ORIN_CALL __juniNewAbstractStream(void** stream, int32_t n, uint32_t* buffer, JunRefillI callback) {
  return create<uint32_t>(stream, JUN_BRNG_IABSTRACT, n, buffer, {}, callback);
}
ORIN_API int32_t ORIN_CALL __jundNewAbstractStream(void** stream, int32_t n, double* buffer, double a, double b,
                                                   JunRefillD callback) {
  return create<double>(stream, JUN_BRNG_DABSTRACT, n, buffer, {a, b}, callback);
}
ORIN_API int32_t ORIN_CALL __junsNewAbstractStream(void** stream, int32_t n, float* buffer, float a, float b,
                                                   JunRefillS callback) {
  return create<float>(stream, JUN_BRNG_SABSTRACT, n, buffer, {a, b}, callback);
}

ORIN_API int32_t ORIN_CALL __junBRngiAbstractInitStream(int32_t method, void*, int32_t, const uint32_t*) {
  return init(method);
}
ORIN_API int32_t ORIN_CALL __junBRngdAbstractInitStream(int32_t method, void*, int32_t, const uint32_t*) {
  return init(method);
}
ORIN_API int32_t ORIN_CALL __junBRngsAbstractInitStream(int32_t method, void*, int32_t, const uint32_t*) {
  return init(method);
}

ORIN_API int32_t ORIN_CALL __juniBRngiAbstract(void* stream, int32_t n, uint32_t* r) { return words(stream, n, r); }
ORIN_API int32_t ORIN_CALL __jundBRngdAbstract(void* stream, int32_t n, double* r, double a, double b) {
  return uniform(stream, n, r, a, b);
}
ORIN_API int32_t ORIN_CALL __junsBRngsAbstract(void* stream, int32_t n, float* r, float a, float b) {
  return uniform(stream, n, r, a, b);
}

int32_t ORIN_CALL __junBRngAbstractNotSupported(void) { return JUN_RNG_WRONG_ABSTRACT; }

ORIN_END_DECLS
