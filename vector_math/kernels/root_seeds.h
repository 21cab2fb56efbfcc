// root_seeds.h: inverse square and cube roots to begin with, by integer arithmetic.
// SPDX-License-Identifier: MIT
//
// Method    the bits of a positive normal x are a piecewise linear log2 x: bits y = seed - (bits x)/n
// Bounds    relative 2^-4.8; of e = 1 - x y^n in data/roots_data.h
// Data      data/roots_data.h from tools/tables/roots.py
// Source    C. Lomont, Fast inverse square root (2003), for n = 2
#ifndef ORIN_VECTOR_MATH_KERNELS_ROOT_SEEDS_H
#define ORIN_VECTOR_MATH_KERNELS_ROOT_SEEDS_H

#include "vector_math/data/roots_data.h"
#include "vector_math/simd/registers.h"

namespace orin::vector_math::root_seeds {

using namespace simd;

inline constexpr struct {
  Constant<std::int64_t> square = roots_data::square_seed_d, cube = roots_data::cube_seed_d;
  Constant<std::int64_t> monic = roots_data::monic_seed_d;
  Constant<std::int64_t> third = 0x55555556;  // of 2^32
} seeds_d{};
inline constexpr struct {
  Constant<std::int32_t> square = roots_data::square_seed_s, monic = roots_data::monic_seed_s;
  Constant<float> cube = static_cast<float>(roots_data::cube_seed_s), third = 1.0f / 3;
} seeds_s{};

ORIN_INLINE Vec2d inverse_square_root(Vec2d x) {
  return from_bits(in_memory(seeds_d).square - shift_right<1>(bits(x)));
}
ORIN_INLINE Vec4f inverse_square_root(Vec4f x) {
  return from_bits(in_memory(seeds_s).square - shift_right<1>(bits(x)));
}
// Some way off, where the polynomial that improves them has the leading coefficient 1.
ORIN_INLINE Vec2d monic_inverse_square_root(Vec2d x) {
  return from_bits(in_memory(seeds_d).monic - shift_right<1>(bits(x)));
}
ORIN_INLINE Vec4f monic_inverse_square_root(Vec4f x) {
  return from_bits(in_memory(seeds_s).monic - shift_right<1>(bits(x)));
}
// The product of the high word with 2^32/3 has its third as the high word.
ORIN_INLINE Vec2d inverse_cube_root(Vec2d x) {
  const auto& c = in_memory(seeds_d);
  return from_bits(c.cube - multiply_low_words(shift_right<32>(bits(x)), c.third));
}
ORIN_INLINE Vec4f inverse_cube_root(Vec4f x) {
  const auto& c = in_memory(seeds_s);
  return from_bits(to_int(c.cube - to_float(bits(x)) * c.third));
}

}  // namespace orin::vector_math::root_seeds

#endif
