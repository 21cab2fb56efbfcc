// late_binding.h: the allocator and the dense linear algebra of the sibling modules, bound by name on first use.
// SPDX-License-Identifier: MIT
//
// A missing sibling or a missing name is fatal: a message on standard output, then the process ends with code 1.
#ifndef ORIN_SERVICE_LATE_BINDING_H
#define ORIN_SERVICE_LATE_BINDING_H

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "orin/abi.h"
#include "service/platform/platform.h"

namespace orin::service {

enum class Sibling { core, threading_layer };

// The address of `name` in a sibling module; does not return without one.
platform::Symbol resolve(Sibling sibling, const char* name) noexcept;

// One function of a sibling: a slot that is filled by the first call and never cleared. Two threads that come first
// together store the same address.
template <class Signature>
class LateBound;

template <class Result, class... Arguments>
class LateBound<Result(Arguments...)> {
 public:
  constexpr LateBound(Sibling sibling, const char* name) noexcept : sibling_(sibling), name_(name) {}

  Result operator()(Arguments... arguments) noexcept {
    Function function = slot_.load(std::memory_order_relaxed);
    if (function == nullptr) {
      function = reinterpret_cast<Function>(resolve(sibling_, name_));
      slot_.store(function, std::memory_order_relaxed);
    }
    return function(arguments...);
  }

 private:
  using Function = Result(ORIN_CALL*)(Arguments...);
  std::atomic<Function> slot_{nullptr};
  Sibling sibling_;
  const char* name_;
};

// --- Core module: the aligned allocator ------------------------------------------------------------------------------

extern LateBound<void*(std::uint32_t, std::uint32_t)> orin_serv_allocate;
extern LateBound<void(void*)> orin_serv_deallocate;
extern LateBound<void*(std::uint32_t, std::uint32_t)> orin_serv_orin_malloc;

// A block aligned to `alignment` (a power of two), null on failure or when `bytes` does not fit in 32 bits.
inline void* allocate(std::size_t bytes, std::size_t alignment) noexcept {
  if (bytes > UINT32_MAX) return nullptr;
  return orin_serv_allocate(static_cast<std::uint32_t>(bytes), static_cast<std::uint32_t>(alignment));
}

// Releases a block of `allocate`; null is accepted.
inline void deallocate(void* block) noexcept {
  if (block != nullptr) orin_serv_deallocate(block);
}

// --- Threading layer: dense linear algebra with the standard Fortran argument lists ----------------------------------

namespace blas {

#define ORIN_SIBLING_ROUTINE(name, symbol, ...) extern LateBound<void(__VA_ARGS__)> name;
#include "service/threading_layer.def"
#undef ORIN_SIBLING_ROUTINE

}  // namespace blas
}  // namespace orin::service

#endif
