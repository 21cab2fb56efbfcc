# OrinVersionResource: what the properties page of a Windows DLL shows.
# SPDX-License-Identifier: MIT
set(ORIN_VERSION_TEMPLATE ${CMAKE_CURRENT_LIST_DIR}/version.rc.in)

# orin_version_resource(<target> <description>): compiles a version resource into the DLL; nothing on other systems.
function(orin_version_resource target description)
  if(NOT WIN32)
    return()
  endif()
  set(file_name ${target}.dll)
  string(REPLACE "." "," version_words ${PROJECT_VERSION})
  set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
  configure_file(${ORIN_VERSION_TEMPLATE} ${resource} @ONLY)
  target_sources(${target} PRIVATE ${resource})
endfunction()
