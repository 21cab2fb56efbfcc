// orin_core: the allocator that the numerical modules bind to by name.
// SPDX-License-Identifier: MIT
#include "orin/companions.h"

#include "aligned_memory.h"

ORIN_API void* ORIN_CALL orin_serv_allocate(uint32_t size, uint32_t alignment) {
  return orin::core::allocate_aligned(size, alignment);
}

ORIN_API void ORIN_CALL orin_serv_deallocate(void* block) { orin::core::release_aligned(block); }

ORIN_API void* ORIN_CALL orin_serv_orin_malloc(uint32_t size, uint32_t alignment) {
  return orin::core::allocate_aligned(size, alignment);
}
