// engine.h: the full linear convolution of two contiguous sequences.
// SPDX-License-Identifier: MIT
//
// Plan      long and short are the operands by length, F = na + nb - 1 the length of the result.
//             F < 512 or short < 64   direct sums; a long operand above 4095 in pieces of 4096
//             long < 3 short          one transform of length 2^k >= F, k >= 2
//             otherwise               overlap-add: transforms of length T = 2^(k+1), 2^k >= 2 short, over blocks of
//                                     T - short + 1 elements, the short operand transformed once
//           Small problems never pay for a transform, and in blocks its length follows the short operand.
// Memory    two operands in the transform's layout and its factors, one allocation per call, nothing kept.
#ifndef ORIN_CONV_ENGINE_H
#define ORIN_CONV_ENGINE_H

#include <cstddef>
#include <cstdint>

namespace orin::conv {

constexpr std::int32_t engine_bad_length = -6;
constexpr std::int32_t engine_null_pointer = -8;
constexpr std::int32_t engine_no_memory = -9;

// out[0 .. na + nb - 2] = a * b; elements of Parts scalars (1 real, 2 complex). `out` overlaps neither operand. Returns
// 0, engine_null_pointer, engine_bad_length or engine_no_memory.
template <class T, std::size_t Parts>
std::int32_t full_convolution(const T* a, std::size_t na, const T* b, std::size_t nb, T* out);

extern template std::int32_t full_convolution<float, 1>(const float*, std::size_t, const float*, std::size_t, float*);
extern template std::int32_t full_convolution<float, 2>(const float*, std::size_t, const float*, std::size_t, float*);
extern template std::int32_t full_convolution<double, 1>(const double*, std::size_t, const double*, std::size_t,
                                                         double*);
extern template std::int32_t full_convolution<double, 2>(const double*, std::size_t, const double*, std::size_t,
                                                         double*);

// Problems that direct sums serve better: a result of `full` elements, a shorter operand of `shorter`.
constexpr std::size_t least_full_length = 512;
constexpr std::size_t least_short_length = 64;
constexpr bool too_small_for_transforms(std::size_t full, std::size_t shorter) {
  return full < least_full_length || shorter < least_short_length;
}

}  // namespace orin::conv

#endif
