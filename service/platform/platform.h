// platform.h: the few system calls that the module needs. Nothing outside this folder knows the operating system.
// SPDX-License-Identifier: MIT
#ifndef ORIN_SERVICE_PLATFORM_PLATFORM_H
#define ORIN_SERVICE_PLATFORM_PLATFORM_H

#include <cstddef>
#include <cstdint>

namespace orin::platform {

// --- Process -------------------------------------------------------------------------------------------------------

// Ends the process at once with `code`; no clean-up code of the process runs.
[[noreturn]] void terminate(unsigned code) noexcept;

// Copies the value of an environment variable into `buffer` and returns its length. A value that does not fit with its
// NUL returns a length of at least `capacity`; an unset variable returns 0.
std::size_t environment(const char* name, char* buffer, std::size_t capacity) noexcept;

// The calling thread's address of the C runtime's errno as the application sees it; null where no such runtime is
// loaded. Looked for once per process.
int* errno_location() noexcept;

// --- Thread-local slot -----------------------------------------------------------------------------------------------

using TlsIndex = std::int32_t;
constexpr TlsIndex no_tls_index = -1;

// Takes a slot whose value starts as null in every thread. `at_thread_exit` frees a thread's value when the thread ends
// on systems that call it through the slot; elsewhere the module entry is told of the thread's end.
TlsIndex tls_allocate(void (*at_thread_exit)(void*)) noexcept;
void* tls_get(TlsIndex index) noexcept;
bool tls_set(TlsIndex index, void* value) noexcept;
void tls_free(TlsIndex index) noexcept;

// --- Private heap ----------------------------------------------------------------------------------------------------

using Heap = void*;

// A growable heap of its own; allocation and freeing are safe from several threads. Destroying it frees what is left.
Heap heap_create(std::size_t initial_bytes) noexcept;
void* heap_allocate(Heap heap, std::size_t bytes) noexcept;
void heap_free(Heap heap, void* block) noexcept;
bool heap_destroy(Heap heap) noexcept;

// --- Modules ---------------------------------------------------------------------------------------------------------

using Module = void*;
using Symbol = void (*)();

// All take the plain module name, "NAME.dll", and map it to the system's form. Null where there is none.
Module find_loaded_module(const char* name) noexcept;
Module load_module(const char* name) noexcept;
Module load_module_beside_this(const char* name) noexcept;  // from the folder of the module that this code is in
Symbol find_symbol(Module module, const char* name) noexcept;

// --- Localised messages ----------------------------------------------------------------------------------------------

unsigned long thread_locale() noexcept;
// The text of message `id` in the message catalogue of `module`, null if absent. Freed with message_free.
char* message_allocate(Module module, std::uint32_t id) noexcept;
void message_free(char* text) noexcept;

}  // namespace orin::platform

#endif
