// environment_mode.h: the initial mode word as the environment asks for it.
// SPDX-License-Identifier: MIT
#ifndef ORIN_VECTOR_MATH_ENVIRONMENT_MODE_H
#define ORIN_VECTOR_MATH_ENVIRONMENT_MODE_H

#include <cstddef>
#include <cstdint>

namespace orin::vector_math {

// Bits of all keywords OR-ed, the mode in the low half; all bits set when the variable is absent, empty, too long or
// not a list of keywords.
constexpr std::uint64_t mode_not_set = ~std::uint64_t{0};
constexpr std::size_t environment_capacity = 256;

std::uint64_t read_environment_mode() noexcept;

// The same of a text that stands in a buffer of environment_capacity bytes and ends with a NUL.
std::uint64_t parse_mode(const char* text) noexcept;

}  // namespace orin::vector_math

#endif
