// win32: the system layer over the Windows kernel services.
// SPDX-License-Identifier: MIT
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstring>

#include "service/platform/platform.h"

namespace orin::platform {

void terminate(unsigned code) noexcept {
  TerminateProcess(GetCurrentProcess(), code);
  __builtin_unreachable();
}

std::size_t environment(const char* name, char* buffer, std::size_t capacity) noexcept {
  return GetEnvironmentVariableA(name, buffer, static_cast<DWORD>(capacity));
}

// The application's C runtime is one of these; the first that is loaded decides.
int* errno_location() noexcept {
  static const char* const runtimes[] = {"MSVCR100.DLL", "MSVCR90.DLL",  "MSVCR80.DLL",   "MSVCR71.DLL",
                                         "MSVCR70.DLL",  "MSVCRT.DLL",   "MSVCR100D.DLL", "MSVCR90D.DLL",
                                         "MSVCR80D.DLL", "MSVCR71D.DLL", "MSVCR70D.DLL",  "MSVCRTD.DLL"};
  using Accessor = int*(__cdecl*)();
  static Accessor accessor = nullptr;
  static bool searched = false;
  if (!searched) {
    for (const char* runtime : runtimes) {
      if (Module module = find_loaded_module(runtime)) {
        accessor = reinterpret_cast<Accessor>(find_symbol(module, "_errno"));
        break;
      }
    }
    searched = true;
  }
  return accessor != nullptr ? accessor() : nullptr;
}

TlsIndex tls_allocate(void (*)(void*)) noexcept { return static_cast<TlsIndex>(TlsAlloc()); }

void* tls_get(TlsIndex index) noexcept { return TlsGetValue(static_cast<DWORD>(index)); }

bool tls_set(TlsIndex index, void* value) noexcept { return TlsSetValue(static_cast<DWORD>(index), value) != 0; }

void tls_free(TlsIndex index) noexcept { TlsFree(static_cast<DWORD>(index)); }

Heap heap_create(std::size_t initial_bytes) noexcept { return HeapCreate(0, initial_bytes, 0); }

void* heap_allocate(Heap heap, std::size_t bytes) noexcept { return HeapAlloc(heap, 0, bytes); }

void heap_free(Heap heap, void* block) noexcept { HeapFree(heap, 0, block); }

bool heap_destroy(Heap heap) noexcept { return HeapDestroy(heap) != 0; }

Module find_loaded_module(const char* name) noexcept { return GetModuleHandleA(name); }

Module load_module(const char* name) noexcept { return LoadLibraryA(name); }

Module load_module_beside_this(const char* name) noexcept {
  HMODULE self = nullptr;
  if (!GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                          reinterpret_cast<LPCSTR>(&load_module_beside_this), &self)) {
    return nullptr;
  }
  wchar_t path[1024];
  const DWORD length = GetModuleFileNameW(self, path, 1024);
  if (length == 0 || length >= 1024) return nullptr;
  std::size_t end = length;
  while (end > 0 && path[end - 1] != L'\\' && path[end - 1] != L'/') --end;
  const std::size_t name_length = std::strlen(name);
  if (end + name_length >= 1024) return nullptr;
  for (std::size_t i = 0; i <= name_length; ++i) path[end + i] = static_cast<wchar_t>(name[i]);
  return LoadLibraryW(path);
}

Symbol find_symbol(Module module, const char* name) noexcept {
  return reinterpret_cast<Symbol>(GetProcAddress(static_cast<HMODULE>(module), name));
}

unsigned long thread_locale() noexcept { return GetThreadLocale(); }

char* message_allocate(Module module, std::uint32_t id) noexcept {
  constexpr DWORD language = 0x409;
  constexpr DWORD flags = 0x900;  // allocate the buffer, take the text from the module's message table
  char* text = nullptr;
  const DWORD length = FormatMessageA(flags, module, id, language, reinterpret_cast<LPSTR>(&text), 0, nullptr);
  return length != 0 ? text : nullptr;
}

void message_free(char* text) noexcept { LocalFree(text); }

}  // namespace orin::platform
