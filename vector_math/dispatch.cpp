// dispatch: the kernel tables, the cost tables and the exported entries, all from the function list.
// SPDX-License-Identifier: MIT
//
// A function's two tables are one record, exported under two names: the cost figures follow the kernels in memory. The
// second name is set by the assembler. Tables are writable: an entry reads its kernel at each call.
#include "orin/vector_math.h"
#include "vector_math/kernels.h"

namespace orin::vector_math {

template <class Kernel>
struct FunctionTables {
  Kernel* kernels[3];  // LA, HA, EP
  float costs[3];
};

}  // namespace orin::vector_math

// ORIN_EXPORT_AT(name, record, offset, bytes): exports `bytes` bytes that begin `offset` bytes into a record as `name`.
// On Linux the names are protected: no program gets copies of its own, which the entries would not see.
#if defined(_WIN32)
#define ORIN_EXPORT_AT(name, record, offset, bytes)                                                                   \
  asm(".globl _" #name "\n.set _" #name ", _" #record "+" #offset "\n.section .drectve\n.ascii \" -export:\\\"" #name \
      "\\\",data\"\n.text\n");
#define ORIN_KERNELS_SIZE 12
#else
#define ORIN_EXPORT_AT(name, record, offset, bytes)                                                                \
  asm(".globl " #name "\n.protected " #name "\n.type " #name ", @object\n.size " #name ", " #bytes "\n.set " #name \
      ", " #record "+" #offset "\n");
#define ORIN_KERNELS_SIZE 24
#endif
static_assert(3 * sizeof(void*) == ORIN_KERNELS_SIZE);

#define ORIN_EXPORT_AT_(name, record, offset, bytes) ORIN_EXPORT_AT(name, record, offset, bytes)
#define ORIN_NAME_(name) #name
#define ORIN_PASTE_(a, b) a##b
#define ORIN_PASTE(a, b) ORIN_PASTE_(a, b)

// Suffixes of the low-accuracy and enhanced-performance entries: the correct bits.
#define ORIN_LA_s _21
#define ORIN_LA_c _21
#define ORIN_LA_d _50
#define ORIN_LA_z _50
#define ORIN_EP_s _11
#define ORIN_EP_c _11
#define ORIN_EP_d _26
#define ORIN_EP_z _26

using namespace orin::vector_math;

extern "C" {

#define ORIN_ENTRY(name, record, grade, t, SHAPE) \
  ORIN_API void ORIN_CALL name ORIN_ENTRY_##SHAPE(t) { record.kernels[grade] ORIN_PASS_##SHAPE; }

#define ORIN_FUNCTION(t, F, SHAPE, LA, HA, EP, cost_la, cost_ha, cost_ep)                                  \
  FunctionTables<void ORIN_CALL ORIN_KERNEL_##SHAPE(t)> orin_##t##F##_tables{{&LA, &HA, &EP},              \
                                                                             {cost_la, cost_ha, cost_ep}}; \
  ORIN_EXPORT_AT_(orin_kor_kernel_##t##F##_ttab, orin_##t##F##_tables, 0, ORIN_KERNELS_SIZE)               \
  ORIN_EXPORT_AT_(orin_kor_kernel_##t##F##_ctab, orin_##t##F##_tables, ORIN_KERNELS_SIZE, 12)              \
  ORIN_ENTRY(ORIN_PASTE(_kor##t##F, ORIN_LA_##t), orin_##t##F##_tables, 0, t, SHAPE)                       \
  ORIN_ENTRY(_kor##t##F##_HA, orin_##t##F##_tables, 1, t, SHAPE)                                           \
  ORIN_ENTRY(ORIN_PASTE(_kor##t##F, ORIN_EP_##t), orin_##t##F##_tables, 2, t, SHAPE)                       \
  ORIN_API void ORIN_CALL _kor##t##F ORIN_ENTRY_##SHAPE(t) __attribute__((alias(ORIN_NAME_(_kor##t##F##_HA))));
#include "vector_math/functions.def"
#undef ORIN_FUNCTION
}
