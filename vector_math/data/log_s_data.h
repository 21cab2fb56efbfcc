// log_s_data.h: polynomials of the single-precision logarithm, made by tools/tables/log_s.py.
// SPDX-License-Identifier: MIT
// clang-format off
#ifndef ORIN_VECTOR_MATH_DATA_LOG_S_DATA_H
#define ORIN_VECTOR_MATH_DATA_LOG_S_DATA_H

namespace orin::vector_math::log_s_data {

// log(1 + f) = f - f^2/2 + f^3 (ha_0 + ha_1 f + ..), |f| <= 1/3, relative error below 2^-28.1.
inline constexpr float ha_0 = 0x1.5555560000000p-2f;
inline constexpr float ha_1 = -0x1.ffffb40000000p-3f;
inline constexpr float ha_2 = 0x1.9999220000000p-3f;
inline constexpr float ha_3 = -0x1.5578760000000p-3f;
inline constexpr float ha_4 = 0x1.24bb5e0000000p-3f;
inline constexpr float ha_5 = -0x1.f74f120000000p-4f;
inline constexpr float ha_6 = 0x1.be1aa60000000p-4f;
inline constexpr float ha_7 = -0x1.fd01640000000p-4f;
inline constexpr float ha_8 = 0x1.d4a2ce0000000p-4f;

// log(1 + f) = f + f^2 (la_0 + la_1 f + ..), sqrt 1/2 <= 1 + f <= sqrt 2, relative error below 2^-23.9.
inline constexpr float la_0 = -0x1.fffffe0000000p-2f;
inline constexpr float la_1 = 0x1.5556340000000p-2f;
inline constexpr float la_2 = -0x1.0003aa0000000p-2f;
inline constexpr float la_3 = 0x1.9909ac0000000p-3f;
inline constexpr float la_4 = -0x1.53956c0000000p-3f;
inline constexpr float la_5 = 0x1.2f856a0000000p-3f;
inline constexpr float la_6 = -0x1.2314200000000p-3f;
inline constexpr float la_7 = 0x1.6c9e740000000p-4f;

// The same over ln 10.
inline constexpr float la10_0 = -0x1.bcb7b00000000p-3f;
inline constexpr float la10_1 = 0x1.287b380000000p-3f;
inline constexpr float la10_2 = -0x1.bcbe0e0000000p-4f;
inline constexpr float la10_3 = 0x1.6349240000000p-4f;
inline constexpr float la10_4 = -0x1.26f56a0000000p-4f;
inline constexpr float la10_5 = 0x1.07a2980000000p-4f;
inline constexpr float la10_6 = -0x1.f9a7c40000000p-5f;
inline constexpr float la10_7 = 0x1.3cb43a0000000p-5f;

// log(1 + f) = f^1 (ep_0 + ep_1 f + ..), sqrt 1/2 <= 1 + f <= sqrt 2, relative error below 2^-11.4.
inline constexpr float ep_0 = 0x1.ffd9700000000p-1f;
inline constexpr float ep_1 = -0x1.010bde0000000p-1f;
inline constexpr float ep_2 = 0x1.6ae4f60000000p-2f;
inline constexpr float ep_3 = -0x1.d14ec40000000p-3f;

// The same over ln 10.
inline constexpr float ep10_0 = 0x1.bc96320000000p-2f;
inline constexpr float ep10_1 = -0x1.be89060000000p-3f;
inline constexpr float ep10_2 = 0x1.3b34c00000000p-3f;
inline constexpr float ep10_3 = -0x1.94293e0000000p-4f;

// log(1 + f) = f^1 (part_0 + part_1 f + ..), sqrt 1/2 <= 1 + f <= sqrt 2, relative error below 2^-14.2.
inline constexpr float part_0 = 0x1.fffb920000000p-1f;
inline constexpr float part_1 = -0x1.ff700a0000000p-2f;
inline constexpr float part_2 = 0x1.58761a0000000p-2f;
inline constexpr float part_3 = -0x1.1572d00000000p-2f;
inline constexpr float part_4 = 0x1.69a5ba0000000p-3f;

// The same over ln 10.
inline constexpr float part10_0 = 0x1.bcb3d80000000p-2f;
inline constexpr float part10_1 = -0x1.bc3aa60000000p-3f;
inline constexpr float part10_2 = 0x1.2b32000000000p-3f;
inline constexpr float part10_3 = -0x1.e1fa360000000p-4f;
inline constexpr float part10_4 = 0x1.3a1f780000000p-4f;

// log 2, nearest, and in two parts, the first of 14 bits: its products with k are exact.
inline constexpr float two = 0x1.62e4300000000p-1f;
inline constexpr float two_high = 0x1.62e8000000000p-1f;
inline constexpr float two_low = -0x1.e8082e0000000p-16f;

// log10 2, nearest, and in two parts, the first of 14 bits: its products with k are exact.
inline constexpr float two10 = 0x1.3441360000000p-2f;
inline constexpr float two_high10 = 0x1.3440000000000p-2f;
inline constexpr float two_low10 = 0x1.3509f80000000p-18f;

// 1/ln 10, nearest, and in two parts, the first of 12 bits.
inline constexpr float inverse_ln10 = 0x1.bcb7b20000000p-2f;
inline constexpr float inverse_ln10_high = 0x1.bcc0000000000p-2f;
inline constexpr float inverse_ln10_low = -0x1.09d5b20000000p-15f;

}  // namespace orin::vector_math::log_s_data

#endif
