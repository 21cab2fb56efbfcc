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
std::atomic<long> live_byte_count{0}, peak_byte_count{0};

// Kept right before the aligned block: where malloc's block starts and what was asked for.
struct Head {
  void* start;
  std::uintptr_t bytes;
};

}  // namespace

// Memory is filled with a pattern, so that code that counts on zeros is found out.
EXPORT void* orin_serv_allocate(std::uint32_t bytes, std::uint32_t alignment) {
  ++allocation_count;
  if (until_failure.load() >= 0 && until_failure.fetch_sub(1) == 0) return nullptr;
  const std::uintptr_t step = alignment < sizeof(void*) ? sizeof(void*) : alignment;
  if (bytes > UINTPTR_MAX - step - sizeof(Head)) return nullptr;
  void* start = std::malloc(bytes + step + sizeof(Head));
  if (start == nullptr) return nullptr;
  ++live_block_count;
  const long live = live_byte_count += static_cast<long>(bytes);
  for (long peak = peak_byte_count; peak < live && !peak_byte_count.compare_exchange_weak(peak, live);) {
  }
  const std::uintptr_t aligned = (reinterpret_cast<std::uintptr_t>(start) + sizeof(Head) + step - 1) & ~(step - 1);
  reinterpret_cast<Head*>(aligned)[-1] = {start, bytes};
  std::memset(reinterpret_cast<void*>(aligned), 0xA5, bytes);
  return reinterpret_cast<void*>(aligned);
}

EXPORT void orin_serv_deallocate(void* block) {
  if (block == nullptr) return;
  --live_block_count;
  const Head head = static_cast<Head*>(block)[-1];
  live_byte_count -= static_cast<long>(head.bytes);
  std::free(head.start);
}

EXPORT void* orin_serv_orin_malloc(std::uint32_t bytes, std::uint32_t alignment) {
  return orin_serv_allocate(bytes, alignment);
}

EXPORT void faulty_core_fail_at(long allocation) {
  until_failure = allocation;
  allocation_count = 0;
  peak_byte_count = live_byte_count.load();
}

EXPORT long faulty_core_allocations() { return allocation_count; }
EXPORT long faulty_core_live_blocks() { return live_block_count; }
EXPORT long faulty_core_peak_bytes() { return peak_byte_count; }
