// grade.h: the accuracy grades, in the order of the exported tables.
// SPDX-License-Identifier: MIT
#ifndef ORIN_VECTOR_MATH_GRADE_H
#define ORIN_VECTOR_MATH_GRADE_H

namespace orin::vector_math {

enum class Grade { la, ha, ep };

inline constexpr int grades = 3;
inline constexpr const char* grade_names[grades] = {"LA", "HA", "EP"};

}  // namespace orin::vector_math

#endif
