// late_binding: finding the sibling modules and the functions in them.
// SPDX-License-Identifier: MIT
#include "service/late_binding.h"

#include <initializer_list>

#include "service/messages.h"
#include "service/spin_lock.h"

namespace orin::service {
namespace {

using platform::Module;

[[noreturn]] void fatal(int message, const char* text) noexcept {
  PrintOrinMessage(0, message, 1, text);
  platform::terminate(1);
}

// A front end has normally loaded the core module; otherwise it stands beside this one or on the system's path.
Module load_core() noexcept {
  constexpr const char* name = "orin_core.dll";
  if (Module loaded = platform::find_loaded_module(name)) return loaded;
  if (Module beside = platform::load_module_beside_this(name)) return beside;
  return platform::load_module(name);
}

// The loader call runs under the lock, so that threads that come first together load once.
Module core() noexcept {
  constinit static std::atomic<Module> handle{nullptr};
  constinit static SpinLock loading;
  Module module = handle.load(std::memory_order_acquire);
  if (module == nullptr) {
    const SpinGuard guard(loading);
    module = handle.load(std::memory_order_acquire);
    if (module == nullptr) {
      module = load_core();
      handle.store(module, std::memory_order_release);
    }
  }
  return module;
}

// Layers that the application has loaded win over the sequential one, which is loaded on demand.
Module load_threading_layer() noexcept {
  for (const char* name : {"orin_ostar_thread.dll", "orin_sequential.dll", "orin_pgi_thread.dll"}) {
    if (Module loaded = platform::find_loaded_module(name)) return loaded;
  }
  return platform::load_module("orin_sequential.dll");
}

Module threading_layer() noexcept {
  constinit static std::atomic<Module> handle{nullptr};
  Module module = handle.load(std::memory_order_acquire);
  if (module == nullptr) {
    module = load_threading_layer();
    if (module == nullptr) fatal(message_cannot_load, "<orin-thread-layer>");
    handle.store(module, std::memory_order_release);
  }
  return module;
}

}  // namespace

platform::Symbol resolve(Sibling sibling, const char* name) noexcept {
  const Module module = sibling == Sibling::core ? core() : threading_layer();
  const platform::Symbol symbol = module != nullptr ? platform::find_symbol(module, name) : nullptr;
  if (symbol == nullptr) fatal(message_cannot_load_function, name);
  return symbol;
}

constinit LateBound<void*(std::uint32_t, std::uint32_t)> orin_serv_allocate{Sibling::core, "orin_serv_allocate"};
constinit LateBound<void(void*)> orin_serv_deallocate{Sibling::core, "orin_serv_deallocate"};
constinit LateBound<void*(std::uint32_t, std::uint32_t)> orin_serv_orin_malloc{Sibling::core, "orin_serv_orin_malloc"};

namespace blas {

#define ORIN_SIBLING_ROUTINE(name, symbol, ...) \
  constinit LateBound<void(__VA_ARGS__)> name{Sibling::threading_layer, symbol};
#include "service/threading_layer.def"
#undef ORIN_SIBLING_ROUTINE

}  // namespace blas
}  // namespace orin::service
