// faulty_core_module: a core module whose allocator fails on request and counts what is alive.
// SPDX-License-Identifier: MIT
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#if defined(_WIN32)
#define EXPORT extern "C" __declspec(dllexport)
#else
#define EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

std::atomic<long> until_failure{-1};
std::atomic<long> allocation_count{0};
std::atomic<long> live_block_count{0};

}  // namespace

// Memory is filled with a pattern, so that code that counts on zeros is found out. The start of malloc's block is kept
// right before the aligned one.
EXPORT void* orin_serv_allocate(std::uint32_t bytes, std::uint32_t alignment) {
  ++allocation_count;
  if (until_failure.load() >= 0 && until_failure.fetch_sub(1) == 0) return nullptr;
  const std::uintptr_t step = alignment < sizeof(void*) ? sizeof(void*) : alignment;
  if (bytes > UINTPTR_MAX - step - sizeof(void*)) return nullptr;
  void* start = std::malloc(bytes + step + sizeof(void*));
  if (start == nullptr) return nullptr;
  ++live_block_count;
  const std::uintptr_t aligned = (reinterpret_cast<std::uintptr_t>(start) + sizeof(void*) + step - 1) & ~(step - 1);
  reinterpret_cast<void**>(aligned)[-1] = start;
  std::memset(reinterpret_cast<void*>(aligned), 0xA5, bytes);
  return reinterpret_cast<void*>(aligned);
}

EXPORT void orin_serv_deallocate(void* block) {
  if (block == nullptr) return;
  --live_block_count;
  std::free(static_cast<void**>(block)[-1]);
}

EXPORT void* orin_serv_orin_malloc(std::uint32_t bytes, std::uint32_t alignment) {
  return orin_serv_allocate(bytes, alignment);
}

EXPORT void faulty_core_fail_at(long allocation) {
  until_failure = allocation;
  allocation_count = 0;
}

EXPORT long faulty_core_allocations() { return allocation_count; }
EXPORT long faulty_core_live_blocks() { return live_block_count; }
