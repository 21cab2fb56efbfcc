/* localised_catalogue: a library that holds nothing but its message table.
 * SPDX-License-Identifier: MIT */
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
  (void)instance, (void)reason, (void)reserved;
  return TRUE;
}
