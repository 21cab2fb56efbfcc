// pack: copies between a contiguous vector and a strided, masked or indexed one.
// SPDX-License-Identifier: MIT
//
// Elements are copied as bits, so a signalling NaN stays one. Arrays need an alignment of 4 bytes only.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "vector_math/kernels.h"

namespace orin::vector_math {
namespace {

constexpr std::int32_t low_halves = 1;  // indexing switch: 32-bit counts, masks and indices

template <class T>
void copy_element(const T* from, T* to) noexcept {
  std::memcpy(static_cast<void*>(to), static_cast<const void*>(from), sizeof(T));
}

template <class T, class Index>
void pack_i(Index n, const T* a, Index increment, T* y) noexcept {
  const auto step = static_cast<std::ptrdiff_t>(increment);
  for (Index i = 0; i < n; ++i, a += step) copy_element(a, y + i);
}

template <class T, class Index>
void unpack_i(Index n, const T* a, T* y, Index increment) noexcept {
  const auto step = static_cast<std::ptrdiff_t>(increment);
  for (Index i = 0; i < n; ++i, y += step) copy_element(a + i, y);
}

template <class T, class Index>
void pack_m(Index n, const T* a, const Index* mask, T* y) noexcept {
  for (Index i = 0; i < n; ++i) {
    if (mask[i] != 0) copy_element(a + i, y++);
  }
}

template <class T, class Index>
void unpack_m(Index n, const T* a, T* y, const Index* mask) noexcept {
  for (Index i = 0; i < n; ++i) {
    if (mask[i] != 0) copy_element(a++, y + i);
  }
}

template <class T, class Index>
void pack_v(Index n, const T* a, const Index* index, T* y) noexcept {
  for (Index i = 0; i < n; ++i) copy_element(a + static_cast<std::ptrdiff_t>(index[i]), y + i);
}

template <class T, class Index>
void unpack_v(Index n, const T* a, T* y, const Index* index) noexcept {
  for (Index i = 0; i < n; ++i) copy_element(a + i, y + static_cast<std::ptrdiff_t>(index[i]));
}

}  // namespace

#define ORIN_PACK_STRIDE(name, t)                                                     \
  void ORIN_CALL name##_##t ORIN_KERNEL_PACK_STRIDE(t) {                              \
    if (indexing == low_halves) {                                                     \
      name(static_cast<std::int32_t>(n), a, static_cast<std::int32_t>(increment), y); \
    } else {                                                                          \
      name(n, a, increment, y);                                                       \
    }                                                                                 \
  }
#define ORIN_PACK_ARRAY(name, t)                                                            \
  void ORIN_CALL name##_##t ORIN_KERNEL_PACK_ARRAY(t) {                                     \
    if (indexing == low_halves) {                                                           \
      name(static_cast<std::int32_t>(n), a, static_cast<const std::int32_t*>(selector), y); \
    } else {                                                                                \
      name(n, a, static_cast<const std::int64_t*>(selector), y);                            \
    }                                                                                       \
  }
#define ORIN_UNPACK_STRIDE(name, t)                                                   \
  void ORIN_CALL name##_##t ORIN_KERNEL_UNPACK_STRIDE(t) {                            \
    if (indexing == low_halves) {                                                     \
      name(static_cast<std::int32_t>(n), a, y, static_cast<std::int32_t>(increment)); \
    } else {                                                                          \
      name(n, a, y, increment);                                                       \
    }                                                                                 \
  }
#define ORIN_UNPACK_ARRAY(name, t)                                                          \
  void ORIN_CALL name##_##t ORIN_KERNEL_UNPACK_ARRAY(t) {                                   \
    if (indexing == low_halves) {                                                           \
      name(static_cast<std::int32_t>(n), a, y, static_cast<const std::int32_t*>(selector)); \
    } else {                                                                                \
      name(n, a, y, static_cast<const std::int64_t*>(selector));                            \
    }                                                                                       \
  }
#define ORIN_ALL_PACK(t)          \
  ORIN_PACK_STRIDE(pack_i, t)     \
  ORIN_PACK_ARRAY(pack_m, t)      \
  ORIN_PACK_ARRAY(pack_v, t)      \
  ORIN_UNPACK_STRIDE(unpack_i, t) \
  ORIN_UNPACK_ARRAY(unpack_m, t)  \
  ORIN_UNPACK_ARRAY(unpack_v, t)

ORIN_ALL_PACK(s)
ORIN_ALL_PACK(d)
ORIN_ALL_PACK(c)
ORIN_ALL_PACK(z)

}  // namespace orin::vector_math
