// aligned_memory: blocks of any power-of-two alignment over the C allocator.
// SPDX-License-Identifier: MIT
//
// Layout    [ slack ][ address that malloc gave ][ block, aligned ... ]: the word before a block leads back to malloc's
// Failure   null for an alignment that is no power of two and for a size whose bookkeeping would wrap around
// Cost      one malloc; less than the alignment and one word of slack
#ifndef ORIN_COMPANIONS_CORE_ALIGNED_MEMORY_H
#define ORIN_COMPANIONS_CORE_ALIGNED_MEMORY_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace orin::core {

// Smaller alignments, 0 and 1 among them, are raised to this one: a block then suits every type and every SSE2 load.
inline constexpr std::size_t least_alignment = 16;

[[nodiscard]] inline void* allocate_aligned(std::size_t size, std::size_t alignment) noexcept {
  if ((alignment & (alignment - 1)) != 0) return nullptr;
  if (alignment < least_alignment) alignment = least_alignment;

  // A block is the last aligned address that leaves `size` bytes, so the link always has room before it.
  const std::size_t overhead = sizeof(void*) + (alignment - 1);
  if (size > SIZE_MAX - overhead) return nullptr;
  void* const origin = std::malloc(size + overhead);
  if (origin == nullptr) return nullptr;
  const std::uintptr_t last = reinterpret_cast<std::uintptr_t>(origin) + overhead;
  auto* const block = reinterpret_cast<void**>(last & ~static_cast<std::uintptr_t>(alignment - 1));
  block[-1] = origin;
  return block;
}

inline void release_aligned(void* block) noexcept {
  if (block != nullptr) std::free(static_cast<void**>(block)[-1]);
}

}  // namespace orin::core

#endif
