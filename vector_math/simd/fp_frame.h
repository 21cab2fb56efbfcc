// fp_frame.h: the floating-point state a kernel runs under, set on entry and put back on exit.
// SPDX-License-Identifier: MIT
//
// Three fields of MXCSR are the kernel's: rounding to nearest always, flush-to-zero and denormals-are-zero as the
// thread's mode word asks. Everything else, exception masks and flags above all, stays the caller's. MXCSR is loaded
// only where it differs, on both ways. No kernel touches the x87 unit, so its control word needs no frame.
#ifndef ORIN_VECTOR_MATH_SIMD_FP_FRAME_H
#define ORIN_VECTOR_MATH_SIMD_FP_FRAME_H

#include <xmmintrin.h>

#include <cstdint>

namespace orin::vector_math::simd {

class FpFrame {
 public:
  explicit FpFrame(std::uint32_t mode) noexcept : saved_(_mm_getcsr()) {
    const std::uint32_t wanted = (mode & mode_field) == mode_flush ? csr_flush : 0;
    changed_ = (saved_ & csr_fields) != wanted;
    if (changed_) [[unlikely]]
      _mm_setcsr((saved_ & ~csr_fields) | wanted);
  }
  ~FpFrame() {
    if (changed_) [[unlikely]]
      _mm_setcsr(saved_);
  }
  FpFrame(const FpFrame&) = delete;
  FpFrame& operator=(const FpFrame&) = delete;

 private:
  static constexpr std::uint32_t mode_field = 0x3C0000;
  static constexpr std::uint32_t mode_flush = 0x280000;
  static constexpr std::uint32_t csr_fields = 0xE040;  // flush-to-zero, rounding, denormals-are-zero
  static constexpr std::uint32_t csr_flush = 0x8040;

  std::uint32_t saved_;
  bool changed_;
};

}  // namespace orin::vector_math::simd

#endif
