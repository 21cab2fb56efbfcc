// sincos_s_data.h: parts of pi and polynomials of the single-precision sine, cosine and tangent, made by tools/tables/sincos_s.py.
// SPDX-License-Identifier: MIT
// clang-format off
#ifndef ORIN_VECTOR_MATH_DATA_SINCOS_S_DATA_H
#define ORIN_VECTOR_MATH_DATA_SINCOS_S_DATA_H

namespace orin::vector_math::sincos_s_data {

// pi in parts of 12 and 14 bits, whose products with n are exact, and what remains after each, all but the first
// negative: 0 times one of them is -0, and +0 with that +0.
inline constexpr float pi_0 = 0x1.9220000000000p+1f;
inline constexpr float rest_0 = -0x1.2aeef40000000p-17f;
inline constexpr float pi_1 = -0x1.2ae8000000000p-17f;
inline constexpr float rest_1 = -0x1.bd2e7c0000000p-31f;
inline constexpr float inverse = 0x1.45f3060000000p-2f;

// pi in two doubles, the first of 33 bits.
inline constexpr double wide_high = 0x1.921fb54400000p+1;
inline constexpr double wide_low = 0x1.0b4611a626331p-33;
inline constexpr double wide_inverse = 0x1.45f306dc9c883p-2;

// The second over pi.
inline constexpr float low_per_x = 0x1.544db00000000p-35f;

// (sin r)/r = 1 + r^2 (la_half_s0 + la_half_s1 r^2 + ..), |r| <= pi/2, relative error below 2^-26.2.
inline constexpr float la_half_s0 = -0x1.55554c0000000p-3f;
inline constexpr float la_half_s1 = 0x1.110ed00000000p-7f;
inline constexpr float la_half_s2 = -0x1.9f6f5c0000000p-13f;
inline constexpr float la_half_s3 = 0x1.5db5ac0000000p-19f;

// (sin r)/r = 1 + r^2 (ep_half_s0 + ep_half_s1 r^2 + ..), |r| <= pi/2, relative error below 2^-12.3.
inline constexpr float ep_half_s0 = -0x1.5428880000000p-3f;
inline constexpr float ep_half_s1 = 0x1.f3e2ca0000000p-8f;

// (sin r)/r = 1 + r^2 (la_s0 + la_s1 r^2 + ..), |r| <= pi/4, relative error below 2^-26.8.
inline constexpr float la_s0 = -0x1.5555460000000p-3f;
inline constexpr float la_s1 = 0x1.1107320000000p-7f;
inline constexpr float la_s2 = -0x1.99406e0000000p-13f;

// cos r = 1 + r^2 (la_c0 + la_c1 r^2 + ..), |r| <= pi/4, relative error below 2^-24.5.
inline constexpr float la_c0 = -0x1.ffffb20000000p-2f;
inline constexpr float la_c1 = 0x1.553e6a0000000p-5f;
inline constexpr float la_c2 = -0x1.6449c60000000p-10f;

// (sin r)/r = 1 + r^2 (ep_s0 + ep_s1 r^2 + ..), |r| <= pi/4, relative error below 2^-19.0.
inline constexpr float ep_s0 = -0x1.5544160000000p-3f;
inline constexpr float ep_s1 = 0x1.0b7bac0000000p-7f;

// cos r = 1 + r^2 (ep_c0 + ep_c1 r^2 + ..), |r| <= pi/4, relative error below 2^-16.0.
inline constexpr float ep_c0 = -0x1.ffc0fe0000000p-2f;
inline constexpr float ep_c1 = 0x1.4b6a9a0000000p-5f;

// (tan r)/r = (1 + la_tp r^2)/(1 + la_tq0 r^2 + la_tq1 r^4), |r| <= pi/4, relative error below 2^-25.5.
inline constexpr float la_tp = -0x1.8851bc0000000p-4f;
inline constexpr float la_tq0 = -0x1.b769e60000000p-2f;
inline constexpr float la_tq1 = 0x1.3e28680000000p-7f;

// (tan r)/r = 1/(1 + ep_tq0 r^2 + ep_tq1 r^4), |r| <= pi/4, relative error below 2^-15.3.
inline constexpr float ep_tq0 = -0x1.54eb340000000p-2f;
inline constexpr float ep_tq1 = -0x1.8cd5da0000000p-6f;

}  // namespace orin::vector_math::sincos_s_data

#endif
