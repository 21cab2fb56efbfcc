# orinConfig: find_package(orin) gives the imported targets orin::sse2, orin::core and orin::sequential.
# SPDX-License-Identifier: MIT
#
# The folder that holds bin/, lib/ and include/ may be moved as a whole. The DLLs are for 32-bit Windows; a program finds
# them beside itself: copy $<TARGET_FILE:orin::sse2> and its siblings there, or add bin/ to PATH.
if(NOT WIN32 OR NOT CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(orin_FOUND FALSE)
  set(orin_NOT_FOUND_MESSAGE "this package holds 32-bit Windows DLLs: configure for 32-bit Windows (mingw i686 or MSVC Win32)")
  return()
endif()

get_filename_component(_orin_root "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
foreach(_orin_part sse2 core sequential)
  if(NOT TARGET orin::${_orin_part})
    add_library(orin::${_orin_part} SHARED IMPORTED)
    set_target_properties(orin::${_orin_part} PROPERTIES
      IMPORTED_LOCATION "${_orin_root}/bin/orin_${_orin_part}.dll"
      INTERFACE_INCLUDE_DIRECTORIES "${_orin_root}/include")
    if(MSVC)
      set_target_properties(orin::${_orin_part} PROPERTIES IMPORTED_IMPLIB "${_orin_root}/lib/orin_${_orin_part}.lib")
    else()
      set_target_properties(orin::${_orin_part} PROPERTIES IMPORTED_IMPLIB "${_orin_root}/lib/liborin_${_orin_part}.dll.a")
    endif()
  endif()
endforeach()
unset(_orin_part)
unset(_orin_root)
