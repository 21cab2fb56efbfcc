# OrinSibling: the shared libraries that stand beside the module.
# SPDX-License-Identifier: MIT

# orin_read_exports(<file> <variable>): the names of a file with one line ORIN_EXPORT(name) each.
function(orin_read_exports file variable)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  file(STRINGS ${file} lines REGEX "^ORIN_EXPORT\\(")
  list(TRANSFORM lines REPLACE "^ORIN_EXPORT\\((.*)\\)$" "\\1")
  set(${variable} ${lines} PARENT_SCOPE)
endfunction()

# orin_add_sibling(<name> SOURCES <source>... EXPORTS <file> DESCRIPTION <text>): NAME.dll or libNAME.so, self-contained,
# showing the names of the list and nothing else. On Windows ORIN_API exports them; elsewhere a version script hides
# whatever the compiler's runtime brings along.
function(orin_add_sibling name)
  cmake_parse_arguments(ARG "" "EXPORTS;DESCRIPTION" "SOURCES" ${ARGN})
  add_library(${name} SHARED ${ARG_SOURCES})
  orin_shared_module(${name})
  orin_version_resource(${name} ${ARG_DESCRIPTION})
  if(NOT WIN32)
    orin_read_exports(${CMAKE_CURRENT_SOURCE_DIR}/${ARG_EXPORTS} names)
    list(JOIN names "; " names)
    set(map ${CMAKE_CURRENT_BINARY_DIR}/${name}.map)
    file(CONFIGURE OUTPUT ${map} CONTENT "{ global: @names@; local: *; };\n")
    target_link_options(${name} PRIVATE -Wl,--version-script=${map})
    set_target_properties(${name} PROPERTIES LINK_DEPENDS ${map})
  endif()
endfunction()
