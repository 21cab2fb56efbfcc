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

// ORIN_TABLES(name): what a record's declarator ends with. ORIN_EXPORT_KERNELS(name, record) and ORIN_EXPORT_COSTS(name,
// kernels, record) export its two parts. On Linux the record bears the exported name of the kernels with its full size:
// where a linked program gets a copy of the tables, the entries work with that copy, and both parts are in it.
#if defined(_WIN32)
#define ORIN_KERNELS_SIZE 12
#define ORIN_TABLES(name)
#define ORIN_EXPORT_DATA(name, record, offset)                                                                        \
  asm(".globl _" #name "\n.set _" #name ", _" #record "+" #offset "\n.section .drectve\n.ascii \" -export:\\\"" #name \
      "\\\",data\"\n.text\n");
#define ORIN_EXPORT_DATA_(name, record, offset) ORIN_EXPORT_DATA(name, record, offset)
#define ORIN_EXPORT_KERNELS(name, record) ORIN_EXPORT_DATA(name, record, 0)
#define ORIN_EXPORT_COSTS(name, kernels, record) ORIN_EXPORT_DATA_(name, record, ORIN_KERNELS_SIZE)
#else
#define ORIN_KERNELS_SIZE 24
#define ORIN_TABLES(name) asm(#name) __attribute__((visibility("default")))
#define ORIN_EXPORT_KERNELS(name, record)
#define ORIN_EXPORT_COSTS(name, kernels, record) \
  asm(".globl " #name "\n.type " #name ", @object\n.size " #name ", 12\n.set " #name ", " #kernels "+24\n");
#endif
static_assert(3 * sizeof(void*) == ORIN_KERNELS_SIZE);

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
  extern FunctionTables<void ORIN_CALL ORIN_KERNEL_##SHAPE(t)> orin_##t##F##_tables ORIN_TABLES(           \
      orin_kor_kernel_##t##F##_ttab);                                                                      \
  FunctionTables<void ORIN_CALL ORIN_KERNEL_##SHAPE(t)> orin_##t##F##_tables{{&LA, &HA, &EP},              \
                                                                             {cost_la, cost_ha, cost_ep}}; \
  ORIN_EXPORT_KERNELS(orin_kor_kernel_##t##F##_ttab, orin_##t##F##_tables)                                 \
  ORIN_EXPORT_COSTS(orin_kor_kernel_##t##F##_ctab, orin_kor_kernel_##t##F##_ttab, orin_##t##F##_tables)    \
  ORIN_ENTRY(ORIN_PASTE(_kor##t##F, ORIN_LA_##t), orin_##t##F##_tables, 0, t, SHAPE)                       \
  ORIN_ENTRY(_kor##t##F##_HA, orin_##t##F##_tables, 1, t, SHAPE)                                           \
  ORIN_ENTRY(ORIN_PASTE(_kor##t##F, ORIN_EP_##t), orin_##t##F##_tables, 2, t, SHAPE)                       \
  ORIN_API void ORIN_CALL _kor##t##F ORIN_ENTRY_##SHAPE(t) __attribute__((alias(ORIN_NAME_(_kor##t##F##_HA))));
#include "vector_math/functions.def"
#undef ORIN_FUNCTION
}
