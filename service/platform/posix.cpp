// posix: the system layer over POSIX threads and the dynamic loader.
// SPDX-License-Identifier: MIT
#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "service/platform/platform.h"

namespace orin::platform {
namespace {

// "NAME.dll" is "libNAME.so" here. A name with a folder has no counterpart: the loader would take it relative to the
// current folder.
bool system_name(const char* name, char* out, std::size_t capacity) noexcept {
  const std::size_t length = std::strlen(name);
  const char* suffix = ".dll";
  if (length < 4 || std::strcmp(name + length - 4, suffix) != 0 || std::strchr(name, '/') != nullptr) return false;
  const int written = std::snprintf(out, capacity, "lib%.*s.so", static_cast<int>(length - 4), name);
  return written > 0 && static_cast<std::size_t>(written) < capacity;
}

Module open_by_name(const char* name, int flags) noexcept {
  char file[256];
  return system_name(name, file, sizeof file) ? dlopen(file, flags) : nullptr;
}

// A heap is a list of malloc blocks under a lock, so that destroying it frees what its users left.
struct HeapBlock {
  HeapBlock* next;
  HeapBlock* previous;
};

struct HeapHead {
  pthread_mutex_t lock;
  HeapBlock ring;  // sentinel of a circular list
};

}  // namespace

void terminate(unsigned code) noexcept { _exit(static_cast<int>(code)); }

std::size_t environment(const char* name, char* buffer, std::size_t capacity) noexcept {
  const char* value = std::getenv(name);
  if (value == nullptr) return 0;
  const std::size_t length = std::strlen(value);
  if (length < capacity) std::memcpy(buffer, value, length + 1);
  return length;
}

int* errno_location() noexcept { return &errno; }

TlsIndex tls_allocate(void (*at_thread_exit)(void*)) noexcept {
  pthread_key_t key;
  return pthread_key_create(&key, at_thread_exit) == 0 ? static_cast<TlsIndex>(key) : no_tls_index;
}

void* tls_get(TlsIndex index) noexcept { return pthread_getspecific(static_cast<pthread_key_t>(index)); }

bool tls_set(TlsIndex index, void* value) noexcept {
  return pthread_setspecific(static_cast<pthread_key_t>(index), value) == 0;
}

void tls_free(TlsIndex index) noexcept { pthread_key_delete(static_cast<pthread_key_t>(index)); }

Heap heap_create(std::size_t) noexcept {
  auto* heap = static_cast<HeapHead*>(std::malloc(sizeof(HeapHead)));
  if (heap == nullptr) return nullptr;
  pthread_mutex_init(&heap->lock, nullptr);
  heap->ring.next = heap->ring.previous = &heap->ring;
  return heap;
}

void* heap_allocate(Heap heap, std::size_t bytes) noexcept {
  auto* head = static_cast<HeapHead*>(heap);
  auto* block = static_cast<HeapBlock*>(std::malloc(sizeof(HeapBlock) + bytes));
  if (block == nullptr) return nullptr;
  pthread_mutex_lock(&head->lock);
  block->next = head->ring.next;
  block->previous = &head->ring;
  head->ring.next->previous = block;
  head->ring.next = block;
  pthread_mutex_unlock(&head->lock);
  return block + 1;
}

void heap_free(Heap heap, void* memory) noexcept {
  if (memory == nullptr) return;
  auto* head = static_cast<HeapHead*>(heap);
  HeapBlock* block = static_cast<HeapBlock*>(memory) - 1;
  pthread_mutex_lock(&head->lock);
  block->next->previous = block->previous;
  block->previous->next = block->next;
  pthread_mutex_unlock(&head->lock);
  std::free(block);
}

bool heap_destroy(Heap heap) noexcept {
  auto* head = static_cast<HeapHead*>(heap);
  for (HeapBlock* block = head->ring.next; block != &head->ring;) {
    HeapBlock* next = block->next;
    std::free(block);
    block = next;
  }
  pthread_mutex_destroy(&head->lock);
  std::free(head);
  return true;
}

Module find_loaded_module(const char* name) noexcept { return open_by_name(name, RTLD_NOW | RTLD_NOLOAD); }

Module load_module(const char* name) noexcept { return open_by_name(name, RTLD_NOW); }

Module load_module_beside_this(const char* name) noexcept {
  Dl_info self;
  char file[256];
  char path[4096];
  if (dladdr(reinterpret_cast<const void*>(&load_module_beside_this), &self) == 0 ||
      !system_name(name, file, sizeof file)) {
    return nullptr;
  }
  const char* slash = std::strrchr(self.dli_fname, '/');
  const int folder = slash != nullptr ? static_cast<int>(slash - self.dli_fname + 1) : 0;
  const int written = std::snprintf(path, sizeof path, "%.*s%s", folder, self.dli_fname, file);
  return written > 0 && static_cast<std::size_t>(written) < sizeof path ? dlopen(path, RTLD_NOW) : nullptr;
}

Symbol find_symbol(Module module, const char* name) noexcept { return reinterpret_cast<Symbol>(dlsym(module, name)); }

// There is no numbered locale and no message table here: the built-in texts are used.
unsigned long thread_locale() noexcept { return 0; }

char* message_allocate(Module, std::uint32_t) noexcept { return nullptr; }

void message_free(char*) noexcept {}

}  // namespace orin::platform
