# OrinTargets: the flags that fix the arithmetic, and one function per kind of target.
# SPDX-License-Identifier: MIT

# Diagnostics, common to every target of the project.
add_library(orin_warnings INTERFACE)
target_compile_options(orin_warnings INTERFACE -Wall -Wextra $<$<COMPILE_LANGUAGE:CXX>:-Wshadow -Wconversion>
  $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion>) # as GCC understands -Wconversion
if(ORIN_WERROR)
  target_compile_options(orin_warnings INTERFACE -Werror)
endif()

# Arithmetic: SSE2 registers, each operation rounded once and where the source has it, nothing wider than SSE2.
add_library(orin_arithmetic INTERFACE)
target_compile_options(orin_arithmetic INTERFACE -msse2 -mfpmath=sse -ffp-contract=off
  $<$<CXX_COMPILER_ID:Clang>:-ffp-exception-behavior=maytrap>) # no operation ahead of its condition, as in GCC
if(WIN32)
  target_compile_options(orin_arithmetic INTERFACE -march=pentium4 -mtune=generic)
endif()
if(ORIN_SANITIZE)
  target_compile_options(orin_arithmetic INTERFACE -fsanitize=${ORIN_SANITIZE} -fno-omit-frame-pointer -O1 -g1)
  target_link_options(orin_arithmetic INTERFACE -fsanitize=${ORIN_SANITIZE})
  if(ORIN_SANITIZE MATCHES undefined)
    # Arrays need an alignment of 4 bytes only, arrays of doubles too: that is not a fault. A null pointer faults by itself,
    # and its checks take a third of the time to compile.
    target_compile_options(orin_arithmetic INTERFACE -fno-sanitize-recover=all -fno-sanitize=alignment,null)
  endif()
endif()
if(WIN32)
  target_link_options(orin_arithmetic INTERFACE -static)
endif()

# The module's own code: no C++ runtime behind it, and callers may arrive with a stack aligned to 4 bytes only.
add_library(orin_module_code INTERFACE)
target_compile_options(orin_module_code INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti
  -fno-threadsafe-statics> -fvisibility=hidden -fno-math-errno)
if(WIN32)
  target_compile_options(orin_module_code INTERFACE -mincoming-stack-boundary=2 -mstackrealign)
endif()
target_compile_definitions(orin_module_code INTERFACE ORIN_BUILDING)
target_include_directories(orin_module_code INTERFACE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR})
target_link_libraries(orin_module_code INTERFACE orin_warnings orin_arithmetic)

# orin_shared_module(<target>): a self-contained shared library named NAME.dll or libNAME.so, without a thread runtime.
function(orin_shared_module target)
  target_link_libraries(${target} PRIVATE orin_module_code ${CMAKE_DL_LIBS})
  if(WIN32)
    set_target_properties(${target} PROPERTIES PREFIX "" RULE_LAUNCH_LINK
      ${PROJECT_SOURCE_DIR}/cmake/link-without-threads.sh)
  else()
    if(NOT ORIN_SANITIZE)
      target_link_options(${target} PRIVATE -static-libgcc -static-libstdc++ -Wl,--no-undefined)
    endif()
    set_target_properties(${target} PROPERTIES BUILD_RPATH "$ORIGIN" INSTALL_RPATH "$ORIGIN")
  endif()
endfunction()

# orin_add_family(<name> <source>...): one object library per family, linked into the module and into the tests.
function(orin_add_family name)
  add_library(orin_${name} OBJECT ${ARGN})
  set_target_properties(orin_${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  target_link_libraries(orin_${name} PRIVATE orin_module_code)
  set_property(GLOBAL APPEND PROPERTY ORIN_FAMILIES ${name})
endfunction()

# orin_add_program(<name> SOURCES ... [FAMILIES ...] [LIBRARIES ...]): an executable around objects of the module.
function(orin_add_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;FAMILIES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  foreach(family IN LISTS ARG_FAMILIES)
    target_sources(${name} PRIVATE $<TARGET_OBJECTS:orin_${family}>)
  endforeach()
  if(WIN32 AND ARG_FAMILIES)
    target_compile_definitions(${name} PRIVATE ORIN_BUILDING) # the tables are its own, not imported
  endif()
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE orin_warnings orin_arithmetic ${ARG_LIBRARIES} ${CMAKE_DL_LIBS})
endfunction()

# orin_add_test(<name> SOURCES ... [FAMILIES ...] [LIBRARIES ...] [LABELS ...]): a GoogleTest program <name>_test.
function(orin_add_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;FAMILIES;LIBRARIES;LABELS" ${ARGN})
  orin_add_program(${name}_test SOURCES ${ARG_SOURCES} FAMILIES ${ARG_FAMILIES}
    LIBRARIES orin_test_support ${ARG_LIBRARIES})
  add_test(NAME ${name} COMMAND ${name}_test WORKING_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
  set_tests_properties(${name} PROPERTIES TIMEOUT 600 LABELS "${name};${ARG_LABELS}")
endfunction()

# orin_add_bench(<name> SOURCES ... [FAMILIES ...] [LIBRARIES ...]): a benchmark program <name>_bench.
function(orin_add_bench name)
  cmake_parse_arguments(ARG "" "" "SOURCES;FAMILIES;LIBRARIES" ${ARGN})
  orin_add_program(${name}_bench SOURCES ${ARG_SOURCES} FAMILIES ${ARG_FAMILIES} LIBRARIES ${ARG_LIBRARIES})
endfunction()
