// thread_state.h: the vector-math record of each thread and its life.
// SPDX-License-Identifier: MIT
#ifndef ORIN_VECTOR_MATH_THREAD_STATE_H
#define ORIN_VECTOR_MATH_THREAD_STATE_H

#include <cstddef>
#include <cstdint>

#include "orin/vector_math.h"
#include "service/private_heap.h"

namespace orin::vector_math {

struct KorThreadState {
  std::uint32_t mode;  // 0: not yet initialised
  std::int32_t errStatus;
  KorErrorCallBack errCallback;
  std::uint32_t unused[2];
  const void* inputVectorBase;
};

static_assert(sizeof(KorThreadState) <= service::private_block_bytes);
static_assert(sizeof(void*) != 4 || (sizeof(KorThreadState) == 24 && offsetof(KorThreadState, errCallback) == 8 &&
                                     offsetof(KorThreadState, inputVectorBase) == 20));

// The calling thread's record, created on first use. Ends the process with code 1 when it cannot be had.
KorThreadState& thread_state() noexcept;

// Module entry. The attach takes the slot and creates the calling thread's record; false when it cannot.
bool process_attach() noexcept;
void thread_detach() noexcept;
void process_detach() noexcept;

}  // namespace orin::vector_math

#endif
