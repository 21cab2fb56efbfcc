// table.h: lookups by the low bits of each lane.
// SPDX-License-Identifier: MIT
//
// The indices travel through memory: one store and one narrow load per lane. A lane extraction occupies two of the
// execution ports that the arithmetic needs, a load none of them.
#ifndef ORIN_VECTOR_MATH_SIMD_TABLE_H
#define ORIN_VECTOR_MATH_SIMD_TABLE_H

#include <cstddef>

#include "vector_math/simd/registers.h"

namespace orin::vector_math::simd {

// The low `count` bits of each lane (at most 16, or 32) as array indices. Take 32 where the other bits of the
// lane's low word are clear and 8 do not suffice: loads of half words came out a third slower in the benchmark.
template <int count, int lanes>
struct LaneIndices {
  static_assert(count <= 16 || count == 32);
  mutable std::size_t of[lanes];  // as addresses take them

  LaneIndices() = default;
  ORIN_INLINE LaneIndices(std::size_t first, std::size_t second) : of{first, second} {}
  // The same indices.
  template <int fewer>
  ORIN_INLINE LaneIndices(const LaneIndices<fewer, lanes>& other) {
    static_assert(fewer < count);
#pragma GCC unroll 4
    for (int lane = 0; lane < lanes; ++lane) of[lane] = other.of[lane];
  }
  explicit ORIN_INLINE LaneIndices(__m128i register_of_integers) {
    constexpr int stride = 16 / lanes;
    alignas(16) unsigned char memory[16];
    _mm_store_si128(reinterpret_cast<__m128i*>(memory), register_of_integers);
    asm("" : "+m"(memory));  // keeps the compiler from turning the loads below into lane extractions
#pragma GCC unroll 4
    for (int lane = 0; lane < lanes; ++lane) {
      if constexpr (count == 8) {
        of[lane] = memory[lane * stride];
      } else if constexpr (count == 32) {
        std::uint32_t word;
        std::memcpy(&word, memory + lane * stride, sizeof word);
        of[lane] = word;
      } else {
        std::uint16_t low;
        std::memcpy(&low, memory + lane * stride, sizeof low);
        of[lane] = low & ((1u << count) - 1);
      }
    }
  }
};

template <int count>
ORIN_INLINE LaneIndices<count, 2> low_bits(Vec2l v) {
  return LaneIndices<count, 2>(v.raw);
}
template <int count>
ORIN_INLINE LaneIndices<count, 4> low_bits(Vec4i v) {
  return LaneIndices<count, 4>(v.raw);
}

// The bits of each lane from `shift` on as array indices, `first` being 0; of positive numbers. The integer unit
// takes the work.
template <int shift, std::uint32_t first, class V>
ORIN_INLINE LaneIndices<32, V::lanes> top_bits(V v) {
  constexpr int size = sizeof(typename V::Element), skipped = size - 4, shift_in_word = shift - 8 * skipped;
  alignas(16) unsigned char memory[16];
  std::memcpy(memory, &v.raw, sizeof memory);
  asm("" : "+m"(memory));  // as above
  LaneIndices<32, V::lanes> result;
#pragma GCC unroll 4
  for (int lane = 0; lane < V::lanes; ++lane) {
    std::uint32_t word;
    std::memcpy(&word, memory + lane * size + skipped, sizeof word);
    result.of[lane] = std::size_t{word >> shift_in_word} - first;
  }
  return result;
}

// Lane k is table[stride * index k].
template <int stride = 1, int count>
ORIN_INLINE Vec2d look_up(const double* table, LaneIndices<count, 2> index) {
  return _mm_loadh_pd(_mm_load_sd(table + stride * index.of[0]), table + stride * index.of[1]);
}
template <int count>
ORIN_INLINE Vec4f look_up(const float* table, LaneIndices<count, 4> index) {
  const auto pair = [&](int i, int j) __attribute__((always_inline)) {
    return _mm_unpacklo_ps(_mm_load_ss(table + index.of[i]), _mm_load_ss(table + index.of[j]));
  };
  return _mm_movelh_ps(pair(0, 1), pair(2, 3));
}
template <int count>
ORIN_INLINE Vec2l look_up(const long long* table, LaneIndices<count, 2> index) {
  const __m128i low = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(table + index.of[0]));
  return _mm_castps_si128(_mm_loadh_pi(_mm_castsi128_ps(low), reinterpret_cast<const __m64*>(table + index.of[1])));
}
// From a table of pairs: the first of each, and the second of each.
struct PairsOfVec2d {
  Vec2d first, second;
};
template <int stride = 2, int count>
ORIN_INLINE PairsOfVec2d look_up_pairs(const double* table, LaneIndices<count, 2> index) {
  const __m128d low = _mm_load_pd(table + stride * index.of[0]);
  const __m128d high = _mm_load_pd(table + stride * index.of[1]);
  return {_mm_unpacklo_pd(low, high), _mm_unpackhi_pd(low, high)};
}
struct TwoVec4f {
  Vec4f first, second;
};
template <int count>
ORIN_INLINE TwoVec4f look_up_pairs(const float* table, LaneIndices<count, 4> index) {
  const auto* pairs = reinterpret_cast<const __m64*>(table);
  const auto two = [&](int i, int j) __attribute__((always_inline)) {
    return _mm_loadh_pi(_mm_loadl_pi(_mm_setzero_ps(), pairs + index.of[i]), pairs + index.of[j]);
  };
  const __m128 low = two(0, 1);
  const __m128 high = two(2, 3);
  return {_mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)), _mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1))};
}

// 2^(j/size) for all j, as bits less j/size in the exponent field: adding n/size there, in one shift and one addition,
// completes 2^(n/size) for any n. A factor common to all entries is carried along.
template <class V, int log2_size>
class PowersOfTwo {
  using T = typename V::Element;
  using Bits = typename V::Integer::Element;
  static constexpr int fraction_bits = sizeof(T) == 8 ? 52 : 23;

 public:
  static constexpr int size = 1 << log2_size;

  explicit constexpr PowersOfTwo(const T (&powers)[size]) : entries_() {
    for (int j = 0; j < size; ++j)
      entries_[j] = __builtin_bit_cast(
          T, static_cast<Bits>(__builtin_bit_cast(Bits, powers[j]) - (Bits{j} << (fraction_bits - log2_size))));
  }
  // 2^(n/size), n in the low bits of each lane. With extra: 2^(n/size + extra).
  template <int extra = 0>
  ORIN_INLINE V of(typename V::Integer n) const {
    auto exponent = shift_left<fraction_bits - log2_size>(n);
    if constexpr (extra != 0) exponent = exponent + typename V::Integer(Bits{extra} * (Bits{1} << fraction_bits));
    return from_bits(bits(look_up(entries_, low_bits<log2_size>(n))) + exponent);
  }

 private:
  alignas(64) T entries_[size];
};

}  // namespace orin::vector_math::simd

#endif
