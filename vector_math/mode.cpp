// mode: the mode word of the calling thread, and the exported entries around it.
// SPDX-License-Identifier: MIT
#include "vector_math/mode.h"

#include <initializer_list>

#include "vector_math/environment_mode.h"

namespace orin::vector_math {

std::uint32_t mode(KorThreadState& state) noexcept {
  if (state.mode == 0) {
    const std::uint64_t wanted = read_environment_mode();
    state.mode = wanted == mode_not_set ? std::uint32_t{KOR_MODE_DEFAULT} : static_cast<std::uint32_t>(wanted);
  }
  return state.mode;
}

std::uint32_t set_mode(KorThreadState& state, std::uint32_t wanted) noexcept {
  const std::uint32_t previous = mode(state);
  std::uint32_t word = previous;
  for (const std::uint32_t field :
       {std::uint32_t{KOR_ACCURACY_MASK}, std::uint32_t{KOR_ERRMODE_MASK}, std::uint32_t{KOR_FTZDAZ_MASK}}) {
    if ((wanted & field) != 0) word = (word & ~field) | (wanted & field);
  }
  state.mode = word;
  return previous;
}

namespace {

int32_t table_index(std::uint32_t mode_word) noexcept {
  return static_cast<int32_t>(mode_word & KOR_ACCURACY_MASK) - 1;
}

}  // namespace
}  // namespace orin::vector_math

using namespace orin::vector_math;

extern "C" {

ORIN_API uint32_t ORIN_CALL orin_kor_kernel_GetMode(void) { return mode(thread_state()); }
ORIN_API uint32_t ORIN_CALL _korGetMode(void) { return orin_kor_kernel_GetMode(); }

ORIN_API uint32_t ORIN_CALL orin_kor_kernel_SetMode(uint32_t newMode) { return set_mode(thread_state(), newMode); }
ORIN_API uint32_t ORIN_CALL _korSetMode(uint32_t newMode) { return orin_kor_kernel_SetMode(newMode); }

ORIN_API int32_t ORIN_CALL orin_kor_kernel_GetTTableIndex(void) { return table_index(mode(thread_state())); }
ORIN_API int32_t ORIN_CALL orin_kor_kernel_GetTTableIndexM(uint32_t, uint32_t mode_word) {
  return table_index(mode_word);
}

ORIN_API const void* ORIN_CALL orin_kor_kernel_SetInterfInputVectorPointer(const void* base) {
  return thread_state().inputVectorBase = base;
}
ORIN_API const void* ORIN_CALL _korSetInterfInputVectorPointer(const void* base) {
  return orin_kor_kernel_SetInterfInputVectorPointer(base);
}
}
