// abstract: streams over a buffer that a callback of the caller refills with words, doubles or floats.
// SPDX-License-Identifier: MIT
//
// State     n, the place of the next unread value, the addresses of buffer and callback, how many values are unread,
//           and for the floating-point ones the interval of the values. Addresses have 48 bits on both systems; the
//           other bits of their fields hold the count.
// Buffer    circular: the unread values stand from the next one on. When none is left a refill is asked for from there
//           on, at least what the call still needs, as far as the buffer can hold it, at most a full buffer.
// Mapping   from [a0, b0) to [a, b): a + (v - a0) (b - a) / (b0 - a0); values stay as they are on their own interval
// Modes     the callback runs under the caller's floating-point modes, the mapping under the default ones
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "rng/generators/entries.h"
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
using Refill = int32_t(ORIN_CALL*)(void*, int32_t, T*, int32_t, int32_t, int32_t);

// An address in the low 48 bits, half a count above it.
class AddressAndHalf {
 public:
  static bool can_hold(uintptr_t address) { return uint64_t{address} >> address_bits == 0; }
  void set_address(uintptr_t address) { bits_ = bits_ >> address_bits << address_bits | address; }
  void set_half(uint32_t half) { bits_ = uint64_t{half} << address_bits | address(); }
  uintptr_t address() const { return static_cast<uintptr_t>(bits_ & ((uint64_t{1} << address_bits) - 1)); }
  uint32_t half() const { return static_cast<uint32_t>(bits_ >> address_bits); }

 private:
  static constexpr int address_bits = 48;
  uint64_t bits_;
};

template <class T>
struct AbstractState {
  int32_t n;
  int32_t next;
  AddressAndHalf buffer_and_low, refill_and_high;
  [[no_unique_address]] Range<T> interval;

  T* buffer() const { return reinterpret_cast<T*>(buffer_and_low.address()); }
  Refill<T> refill() const { return reinterpret_cast<Refill<T>>(refill_and_high.address()); }
  int32_t unread() const { return static_cast<int32_t>(buffer_and_low.half() | refill_and_high.half() << 16); }
  void set_unread(int32_t count) {
    buffer_and_low.set_half(static_cast<uint32_t>(count) & 0xffff);
    refill_and_high.set_half(static_cast<uint32_t>(count) >> 16);
  }
};
static_assert(sizeof(AbstractState<uint32_t>) == 24);
static_assert(sizeof(AbstractState<double>) == 40);
static_assert(sizeof(AbstractState<float>) == 32);

// Hands the next n values to `take` (values, count) in runs as they lie in the buffer. What a refill that falls short
// has brought is delivered by the next call.
template <class T, class Take>
int32_t deliver(void* stream, int32_t n, const T* r, Take take) {
  if (n <= 0) return JUN_RNG_OK;
  if (stream == nullptr || r == nullptr) return JUN_RNG_NULL_POINTER;
  auto& state = state_of<AbstractState<T>>(stream);
  while (n > 0) {
    if (state.unread() == 0) {
      const int32_t least = std::min(n, state.n);
      const int32_t count = state.refill()(stream, state.n, state.buffer(), least, state.n, state.next);
      state.set_unread(std::clamp(count, 0, state.n));
      if (count < least) return JUN_RNG_SHORT_REFILL;
    }
    const int32_t run = std::min({n, state.unread(), state.n - state.next});
    take(state.buffer() + state.next, run);
    state.next = (state.next + run) % state.n;
    state.set_unread(state.unread() - run);
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
  const auto buffer_address = reinterpret_cast<uintptr_t>(buffer),
             refill_address = reinterpret_cast<uintptr_t>(callback);
  if (!AddressAndHalf::can_hold(buffer_address | refill_address)) return JUN_RNG_NO_MEMORY;
  int32_t row = 0, sub_stream = 0;
  const JunBrngProperties* table = __junGetBrngBaseOffset(brng, &row, &sub_stream);
  const int32_t status = __junAllocateStream(stream, brng, table, row, sub_stream);
  if (status != JUN_RNG_OK) return status;
  auto& state = state_of<AbstractState<T>>(*stream);
  state.n = n;
  state.buffer_and_low.set_address(buffer_address);
  state.refill_and_high.set_address(refill_address);
  state.set_unread(n);
  state.interval = interval;
  return JUN_RNG_OK;
}

// Abstract streams take no seeds: their creation functions have written the state.
struct Abstract {
  static int32_t seed(void*, int32_t, const uint32_t*) { return JUN_RNG_OK; }
};

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

ORIN_RNG_INIT(iAbstract, init_stream<Abstract>)
ORIN_RNG_INIT(dAbstract, init_stream<Abstract>)
ORIN_RNG_INIT(sAbstract, init_stream<Abstract>)

ORIN_RNG_RAW(iAbstract, words)
ORIN_RNG_UNIFORMS(d, dAbstract, double, uniform)
ORIN_RNG_UNIFORMS(s, sAbstract, float, uniform)

int32_t ORIN_CALL __junBRngAbstractNotSupported(void) { return JUN_RNG_WRONG_ABSTRACT; }

ORIN_END_DECLS
