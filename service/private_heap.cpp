// private_heap: small blocks for the per-thread records, from a heap of the module's own.
// SPDX-License-Identifier: MIT
#include "service/private_heap.h"

#include <atomic>
#include <utility>

#include "service/platform/platform.h"
#include "service/spin_lock.h"

namespace orin::service {
namespace {

constinit std::atomic<platform::Heap> private_heap{nullptr};
constinit SpinLock creating;

platform::Heap heap() noexcept {
  platform::Heap existing = private_heap.load(std::memory_order_acquire);
  if (existing != nullptr) return existing;
  const SpinGuard guard(creating);
  existing = private_heap.load(std::memory_order_acquire);
  if (existing == nullptr) {
    existing = platform::heap_create(private_block_bytes);
    private_heap.store(existing, std::memory_order_release);
  }
  return existing;
}

}  // namespace

void* AllocPrivateBlock() noexcept {
  const platform::Heap from = heap();
  return from != nullptr ? platform::heap_allocate(from, private_block_bytes) : nullptr;
}

void FreePrivateBlock(void* block) noexcept {
  const platform::Heap from = private_heap.load(std::memory_order_acquire);
  if (from != nullptr) platform::heap_free(from, block);
}

bool DestroyPrivateHeap() noexcept {
  const platform::Heap destroyed = private_heap.exchange(nullptr, std::memory_order_acq_rel);
  return destroyed == nullptr || platform::heap_destroy(destroyed);
}

}  // namespace orin::service
