// private_heap.h: small blocks for the per-thread records, from a heap of the module's own.
// SPDX-License-Identifier: MIT
#ifndef ORIN_SERVICE_PRIVATE_HEAP_H
#define ORIN_SERVICE_PRIVATE_HEAP_H

#include <cstddef>

namespace orin::service {

// Six machine words: 24 bytes on the 32-bit target.
constexpr std::size_t private_block_bytes = 6 * sizeof(void*);

// A block whose content is undefined; null when the heap cannot be created or has no memory. Creates the heap first.
void* AllocPrivateBlock() noexcept;
void FreePrivateBlock(void* block) noexcept;

// Destroys the heap with everything in it; true also when there was none.
bool DestroyPrivateHeap() noexcept;

}  // namespace orin::service

#endif
