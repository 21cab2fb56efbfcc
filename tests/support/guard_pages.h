// guard_pages.h: arrays that end or begin at an inaccessible page.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TESTS_SUPPORT_GUARD_PAGES_H
#define ORIN_TESTS_SUPPORT_GUARD_PAGES_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace guard_pages {

// Bytes between two inaccessible pages; `bytes` is rounded up to whole pages.
class Region {
 public:
  explicit Region(std::size_t bytes);
  ~Region();
  Region(const Region&) = delete;
  Region& operator=(const Region&) = delete;

  unsigned char* begin() const { return begin_; }
  unsigned char* end() const { return end_; }

 private:
  void* mapping_;
  std::size_t mapping_bytes_;
  unsigned char* begin_;
  unsigned char* end_;
};

}  // namespace guard_pages

// An array of n elements that touches the guard page behind it or before it. `byte_offset` moves it away from the page
// by so many bytes, for other alignments; the bytes between are canaries.
template <class T>
class GuardedArray {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  enum Side { at_end, at_start };

  explicit GuardedArray(std::size_t n, Side side = at_end, std::size_t byte_offset = 0)
      : region_(n * sizeof(T) + byte_offset + 1), count_(n) {
    std::memset(region_.begin(), canary, static_cast<std::size_t>(region_.end() - region_.begin()));
    unsigned char* start = side == at_end ? region_.end() - byte_offset - n * sizeof(T) : region_.begin() + byte_offset;
    data_ = reinterpret_cast<T*>(start);
  }

  T* data() { return data_; }
  const T* data() const { return data_; }
  std::size_t size() const { return count_; }
  T& operator[](std::size_t i) { return data_[i]; }
  const T& operator[](std::size_t i) const { return data_[i]; }
  T* begin() { return data_; }
  T* end() { return data_ + count_; }

  // Whether every byte of the region outside the array is as it was.
  bool surroundings_intact() const {
    const auto* first = reinterpret_cast<const unsigned char*>(data_);
    const unsigned char* last = first + count_ * sizeof(T);
    for (const unsigned char* p = region_.begin(); p != first; ++p) {
      if (*p != canary) return false;
    }
    for (const unsigned char* p = last; p != region_.end(); ++p) {
      if (*p != canary) return false;
    }
    return true;
  }

 private:
  static constexpr unsigned char canary = 0xC7;

  guard_pages::Region region_;
  std::size_t count_;
  T* data_;
};

#endif
