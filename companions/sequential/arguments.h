// arguments: what the flags and sizes of a Fortran argument list mean, and the first one that is wrong.
// SPDX-License-Identifier: MIT
#ifndef ORIN_COMPANIONS_SEQUENTIAL_ARGUMENTS_H
#define ORIN_COMPANIONS_SEQUENTIAL_ARGUMENTS_H

#include <algorithm>
#include <cstdint>
#include <initializer_list>

namespace orin::sequential {

// True if the flag is this letter (given in upper case) in either case; only bit 5 tells the two cases apart.
inline bool is(const char* flag, char letter) noexcept { return (*flag & ~0x20) == letter; }
inline bool is_one_of(const char* flag, char one, char other) noexcept { return is(flag, one) || is(flag, other); }

inline bool is_triangle(const char* uplo) noexcept { return is_one_of(uplo, 'U', 'L'); }
inline bool is_transpose(const char* trans) noexcept { return is_one_of(trans, 'T', 'C'); }
inline bool is_operation(const char* trans) noexcept { return is(trans, 'N') || is_transpose(trans); }

inline bool holds(std::int32_t leading, std::int32_t rows) noexcept {
  return leading >= std::max(std::int32_t(1), rows);
}

// One requirement of an argument list: the argument's place in it, counted from 1.
struct Requirement {
  std::int32_t place;
  bool met;
};

// The place of the first argument that breaks its requirement, 0 if none does.
inline std::int32_t first_bad(std::initializer_list<Requirement> requirements) noexcept {
  for (const Requirement& requirement : requirements)
    if (!requirement.met) return requirement.place;
  return 0;
}

}  // namespace orin::sequential

#endif
