// mode.h: the mode word of the calling thread.
// SPDX-License-Identifier: MIT
#ifndef ORIN_VECTOR_MATH_MODE_H
#define ORIN_VECTOR_MATH_MODE_H

#include <cstdint>

#include "orin/vector_math.h"
#include "vector_math/thread_state.h"

namespace orin::vector_math {

// The thread's mode word, read from the environment or defaulted on first use.
std::uint32_t mode(KorThreadState& state) noexcept;

// Replaces the settable fields that are non-zero in `wanted`; returns the previous word.
std::uint32_t set_mode(KorThreadState& state, std::uint32_t wanted) noexcept;

}  // namespace orin::vector_math

#endif
