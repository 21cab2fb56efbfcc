// spin_lock.h: one 32-bit word, 0 free and 1 held, taken by compare-and-swap.
// SPDX-License-Identifier: MIT
#ifndef ORIN_SERVICE_SPIN_LOCK_H
#define ORIN_SERVICE_SPIN_LOCK_H

#include <atomic>
#include <cstdint>

namespace orin::service {

class SpinLock {
 public:
  void lock() noexcept {
    std::uint32_t free = 0;
    while (!word_.compare_exchange_weak(free, 1, std::memory_order_acquire, std::memory_order_relaxed)) free = 0;
  }
  void unlock() noexcept { word_.store(0, std::memory_order_release); }

 private:
  std::atomic<std::uint32_t> word_{0};
};

class SpinGuard {
 public:
  explicit SpinGuard(SpinLock& lock) noexcept : lock_(lock) { lock_.lock(); }
  ~SpinGuard() { lock_.unlock(); }
  SpinGuard(const SpinGuard&) = delete;
  SpinGuard& operator=(const SpinGuard&) = delete;

 private:
  SpinLock& lock_;
};

}  // namespace orin::service

#endif
