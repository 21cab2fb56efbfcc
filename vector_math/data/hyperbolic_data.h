// hyperbolic_data.h: polynomials of sinh, cosh and e^x - 1, made by tools/tables/hyperbolic.py.
// SPDX-License-Identifier: MIT
// clang-format off
#ifndef ORIN_VECTOR_MATH_DATA_HYPERBOLIC_DATA_H
#define ORIN_VECTOR_MATH_DATA_HYPERBOLIC_DATA_H

namespace orin::vector_math::hyperbolic_data {

// sinh r = r + sinh_d_0 r^3 + sinh_d_1 r^5, |r| <= 0.001355, relative error below 2^-74.1.
inline constexpr double sinh_d_0 = 0x1.555555555554bp-3;
inline constexpr double sinh_d_1 = 0x1.11111227fbcb5p-7;

// cosh r = 1 + cosh_d_0 r^2 + cosh_d_1 r^4, |r| <= 0.001355, relative error below 2^-71.2.
inline constexpr double cosh_d_0 = 0x1.fffffffffffdcp-2;
inline constexpr double cosh_d_1 = 0x1.5555573d701a0p-5;

// e^r - 1, r = r + expm1_d_0 r^2 + expm1_d_1 r^3 + .. + expm1_d_3 r^5, -0.001355 <= r <= 0.001355, relative error below 2^-60.0.
inline constexpr double expm1_d_0 = 0x1.ffffffffffff5p-2;
inline constexpr double expm1_d_1 = 0x1.5555555555549p-3;
inline constexpr double expm1_d_2 = 0x1.555556b3df5e4p-5;
inline constexpr double expm1_d_3 = 0x1.1111123b8e279p-7;

// sinh r = r + sinh_ep_d_0 r^3, |r| <= 0.001355, relative error below 2^-47.5.
inline constexpr double sinh_ep_d_0 = 0x1.555557090ba79p-3;

// e^r - 1, r = r + expm1_ep_d_0 r^2 + expm1_ep_d_1 r^3, -0.001355 <= r <= 0.001355, relative error below 2^-34.1.
inline constexpr double expm1_ep_d_0 = 0x1.00000148a168fp-1;
inline constexpr double expm1_ep_d_1 = 0x1.555557614abc8p-3;

// log 2 in two parts, the first of 15 bits: its products with n below 2^9 are exact.
inline constexpr float ln2_high = 0x1.62e4000000000p-1f;
inline constexpr float ln2_low = 0x1.7f7d1c0000000p-20f;

// sinh r = r + sinh_la_s_0 r^3 + sinh_la_s_1 r^5, |r| <= 0.3469, relative error below 2^-26.1.
inline constexpr float sinh_la_s_0 = 0x1.5554b00000000p-3f;
inline constexpr float sinh_la_s_1 = 0x1.12281a0000000p-7f;

// cosh r = 1 + cosh_la_s_0 r^2 + cosh_la_s_1 r^4, |r| <= 0.3469, relative error below 2^-23.3.
inline constexpr float cosh_la_s_0 = 0x1.fffdc00000000p-2f;
inline constexpr float cosh_la_s_1 = 0x1.573c720000000p-5f;

// e^r - 1, r = r + expm1_la_s_0 r^2 + expm1_la_s_1 r^3 + .. + expm1_la_s_4 r^6, -0.3469 <= r <= 0.3469, relative error below 2^-25.2.
inline constexpr float expm1_la_s_0 = 0x1p-1f;
inline constexpr float expm1_la_s_1 = 0x1.5554dc0000000p-3f;
inline constexpr float expm1_la_s_2 = 0x1.5554b80000000p-5f;
inline constexpr float expm1_la_s_3 = 0x1.120bea0000000p-7f;
inline constexpr float expm1_la_s_4 = 0x1.6d75e40000000p-10f;

// sinh ln2 r = sinh_ep_s_0 r + sinh_ep_s_1 r^3, |r| <= 0.5005, relative error below 2^-16.0.
inline constexpr float sinh_ep_s_0 = 0x1.62e2d40000000p-1f;
inline constexpr float sinh_ep_s_1 = 0x1.c96d3c0000000p-5f;

// cosh ln2 r = 1 + cosh_ep_s_0 r^2, |r| <= 0.5005, relative error below 2^-13.2.
inline constexpr float cosh_ep_s_0 = 0x1.f010e40000000p-3f;

// 2^r - 1, r = expm1_ep_s_0 r + expm1_ep_s_1 r^2 + .. + expm1_ep_s_3 r^4, -0.5005 <= r <= 0.5005, relative error below 2^-15.7.
inline constexpr float expm1_ep_s_0 = 0x1.62e2d00000000p-1f;
inline constexpr float expm1_ep_s_1 = 0x1.ebf9560000000p-3f;
inline constexpr float expm1_ep_s_2 = 0x1.c96efe0000000p-5f;
inline constexpr float expm1_ep_s_3 = 0x1.3d116c0000000p-7f;

}  // namespace orin::vector_math::hyperbolic_data

#endif
