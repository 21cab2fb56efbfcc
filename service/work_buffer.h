// work_buffer.h: a move-only array of work memory over the late-bound allocator.
// SPDX-License-Identifier: MIT
#ifndef ORIN_SERVICE_WORK_BUFFER_H
#define ORIN_SERVICE_WORK_BUFFER_H

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "service/late_binding.h"

namespace orin::service {

// Elements are not initialised. An allocation fails quietly: the caller turns `false` into its own status.
template <class T, std::size_t Alignment = 64>
class WorkBuffer {
  static_assert(std::is_trivially_copyable_v<T> && Alignment >= alignof(T));

 public:
  WorkBuffer() = default;
  WorkBuffer(WorkBuffer&& other) noexcept { swap(other); }
  WorkBuffer& operator=(WorkBuffer&& other) noexcept {
    WorkBuffer taken(std::move(other));
    swap(taken);
    return *this;
  }
  ~WorkBuffer() { deallocate(data_); }

  // Replaces the content by `count` elements; false when they cannot be had, the buffer is empty then.
  [[nodiscard]] bool allocate(std::size_t count) noexcept {
    deallocate(data_);
    data_ = nullptr;
    size_ = 0;
    if (count > max_count) return false;
    data_ = static_cast<T*>(service::allocate(count * sizeof(T), Alignment));
    if (data_ == nullptr) return false;
    size_ = count;
    return true;
  }

  // Gives the block up to the caller, who frees it with service::deallocate.
  [[nodiscard]] T* release() noexcept {
    size_ = 0;
    return std::exchange(data_, nullptr);
  }

  T* data() noexcept { return data_; }
  const T* data() const noexcept { return data_; }
  std::size_t size() const noexcept { return size_; }
  T& operator[](std::size_t i) noexcept { return data_[i]; }
  const T& operator[](std::size_t i) const noexcept { return data_[i]; }

 private:
  // The allocator takes a 32-bit size.
  static constexpr std::size_t max_count = UINT32_MAX / sizeof(T);

  void swap(WorkBuffer& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
  }

  T* data_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace orin::service

#endif
