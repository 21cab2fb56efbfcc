// thread_state: the vector-math record of each thread and its life.
// SPDX-License-Identifier: MIT
#include "vector_math/thread_state.h"

#include <new>

#include "service/messages.h"
#include "service/platform/platform.h"

namespace orin::vector_math {
namespace {

constinit platform::TlsIndex tls_index = platform::no_tls_index;

void print_memory_error() noexcept { service::PrintOrinMessage(1, service::message_memory, 0); }

bool allocate_slot() noexcept {
  tls_index = platform::tls_allocate(&service::FreePrivateBlock);
  if (tls_index == platform::no_tls_index) print_memory_error();
  return tls_index != platform::no_tls_index;
}

KorThreadState* create_record() noexcept {
  void* block = service::AllocPrivateBlock();
  if (block != nullptr && !platform::tls_set(tls_index, block)) {
    service::FreePrivateBlock(block);
    block = nullptr;
  }
  if (block == nullptr) {
    print_memory_error();
    return nullptr;
  }
  return new (block) KorThreadState{};
}

// Null when there is no memory for the record.
KorThreadState* find_or_create_record() noexcept {
  if (tls_index == platform::no_tls_index && !allocate_slot()) return nullptr;
  if (void* record = platform::tls_get(tls_index)) return static_cast<KorThreadState*>(record);
  return create_record();
}

}  // namespace

KorThreadState& thread_state() noexcept {
  KorThreadState* record = find_or_create_record();
  if (record == nullptr) platform::terminate(1);
  return *record;
}

bool process_attach() noexcept { return allocate_slot() && create_record() != nullptr; }

void thread_detach() noexcept {
  if (tls_index == platform::no_tls_index) return;
  if (void* record = platform::tls_get(tls_index)) {
    service::FreePrivateBlock(record);
    platform::tls_set(tls_index, nullptr);
  }
}

void process_detach() noexcept {
  thread_detach();
  const platform::TlsIndex released = tls_index;
  tls_index = platform::no_tls_index;
  if (released != platform::no_tls_index) platform::tls_free(released);
  service::DestroyPrivateHeap();
}

}  // namespace orin::vector_math
