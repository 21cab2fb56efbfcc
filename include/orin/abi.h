/* abi.h: export attribute, calling convention and linkage of every ORIN interface.
 * SPDX-License-Identifier: MIT
 *
 * ORIN_API    stands before the return type of an exported function
 * ORIN_DATA   stands before the type of an exported variable
 * ORIN_CALL   the calling convention (cdecl), stands before the function's name
 */
#ifndef ORIN_ABI_H
#define ORIN_ABI_H

#include <stdint.h>

#if defined(_WIN32)
#define ORIN_CALL __cdecl
#if defined(ORIN_BUILDING)
#define ORIN_API __declspec(dllexport)
#define ORIN_DATA extern __declspec(dllexport)
#else
#define ORIN_API
#define ORIN_DATA extern __declspec(dllimport)
#endif
#else
#define ORIN_CALL
#if defined(ORIN_BUILDING)
#define ORIN_API __attribute__((visibility("default")))
#define ORIN_DATA extern __attribute__((visibility("default")))
#else
#define ORIN_API
#define ORIN_DATA extern
#endif
#endif

#if defined(__cplusplus)
#define ORIN_BEGIN_DECLS extern "C" {
#define ORIN_END_DECLS }
#else
#define ORIN_BEGIN_DECLS
#define ORIN_END_DECLS
#endif

#endif
