// roots_data.h: seeds and polynomials of inverse square and cube roots, made by tools/tables/roots.py.
// SPDX-License-Identifier: MIT
// clang-format off
#ifndef ORIN_VECTOR_MATH_DATA_ROOTS_DATA_H
#define ORIN_VECTOR_MATH_DATA_ROOTS_DATA_H

namespace orin::vector_math::roots_data {

// bits y = seed - (bits x)/2: then e = 1 - x y^2 lies in [-0.0688, 0.0688].
inline constexpr int square_seed_s = 0x5f374714;
inline constexpr long long square_seed_d = 0x5fe6e8e277816c7c;

// (1 - e)^(-1/2) there, relative error 2^-15.2.
inline constexpr double square_1_0 = 0x1.ffffe9df785a0p-1;
inline constexpr double square_1_1 = 0x1.0091e16e2b0edp-1;
inline constexpr double square_1_2 = 0x1.81485f2455940p-2;

// bits y = seed - (bits x)/3: then e = 1 - x y^3 lies in [-0.1030, 0.1030].
inline constexpr int cube_seed_s = 0x54a1f597;
inline constexpr long long cube_seed_d = 0x553ee95d80bd9723;

// (1 - e)^(-1/3) there, relative error 2^-14.3.
inline constexpr double cube_1_0 = 0x1.ffffad7b9fa79p-1;
inline constexpr double cube_1_1 = 0x1.56c08cf2863cep-2;
inline constexpr double cube_1_2 = 0x1.ca6cf93aa52e7p-3;

// (1 - e)^(-2/3) there, relative error 2^-12.8.
inline constexpr double cube_2_0 = 0x1.ffff8a126c6e2p-1;
inline constexpr double cube_2_1 = 0x1.575c956117860p-1;
inline constexpr double cube_2_2 = 0x1.1ea4a9ffaa09ep-1;

}  // namespace orin::vector_math::roots_data

#endif
