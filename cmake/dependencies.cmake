# The three libraries the plug-in is written against, as the targets
#
#   icp::nvmath   the host's value library        (NvMathLib.h)
#   icp::usbio    the vendor's USB I/O SDK         (ICPDAS_USBIO.h)
#   icp::pacsdk   the vendor's PAC SDK             (PACSDK.h)
#
# By default each is the project's stand-in under platform/. Given both its
# include folder and its library (on Windows the import library, .lib or
# .dll.a), the real one is used instead, e.g.
#
#   cmake --preset default -DICP_USBIO_INCLUDE_DIR=C:/SDK/include \
#                          -DICP_USBIO_LIBRARY=C:/SDK/lib/x64/ICPDAS_USBIO.lib
#
# The stand-ins also carry the control APIs that icphost, the tests and the
# benchmarks drive; those are built only while all three are stand-ins
# (ICP_WITH_STANDINS).
#
# Included from the top-level CMakeLists.txt in place of the stand-ins'
# add_subdirectory() calls.
include_guard(GLOBAL)

set(ICP_WITH_STANDINS ON)

# icp_dependency(KEY STANDIN_DIR STANDIN_TARGET HEADER)
function(icp_dependency key standin_dir standin_target header)
  set(ICP_${key}_INCLUDE_DIR "" CACHE PATH
      "Include folder of the real ${standin_target} (with ${header}); empty: the stand-in")
  set(ICP_${key}_LIBRARY "" CACHE FILEPATH
      "Library (import library on Windows) of the real ${standin_target}; empty: the stand-in")
  string(TOLOWER ${key} name)
  set(include_dir "${ICP_${key}_INCLUDE_DIR}")
  set(library "${ICP_${key}_LIBRARY}")

  if(include_dir STREQUAL "" AND library STREQUAL "")
    add_subdirectory(${standin_dir})
    if(NOT TARGET ${standin_target})
      message(FATAL_ERROR "${standin_dir} defines no target ${standin_target}")
    endif()
    add_library(icp::${name} ALIAS ${standin_target})
    message(STATUS "${standin_target}: the stand-in (${standin_dir})")
    return()
  endif()

  if(include_dir STREQUAL "" OR library STREQUAL "")
    message(FATAL_ERROR
      "ICP_${key}_INCLUDE_DIR and ICP_${key}_LIBRARY go together: give both, or neither for the stand-in")
  endif()
  if(NOT EXISTS "${include_dir}/${header}")
    message(FATAL_ERROR "ICP_${key}_INCLUDE_DIR: no ${header} in ${include_dir}")
  endif()
  if(NOT EXISTS "${library}" OR IS_DIRECTORY "${library}")
    message(FATAL_ERROR "ICP_${key}_LIBRARY: no such file: ${library}")
  endif()
  # UNKNOWN: the file is handed to the linker as it is, whether an import
  # library or a shared object.
  add_library(icp::${name} UNKNOWN IMPORTED GLOBAL)
  set_target_properties(icp::${name} PROPERTIES
    IMPORTED_LOCATION "${library}"
    INTERFACE_INCLUDE_DIRECTORIES "${include_dir}")
  set(ICP_WITH_STANDINS OFF PARENT_SCOPE)
  message(STATUS "${standin_target}: ${library}")
endfunction()

# The header-only packages that the stand-ins, icphost and the tests use,
# found once here so that their targets are seen in every folder.
set(_icp_real_given OFF)
foreach(_icp_var IN ITEMS NVMATH_INCLUDE_DIR NVMATH_LIBRARY USBIO_INCLUDE_DIR USBIO_LIBRARY
                          PACSDK_INCLUDE_DIR PACSDK_LIBRARY)
  if(NOT "${ICP_${_icp_var}}" STREQUAL "")
    set(_icp_real_given ON)
  endif()
endforeach()
if(NOT _icp_real_given)
  find_package(nlohmann_json 3.2 REQUIRED)
  find_package(CLI11 2 REQUIRED)
endif()

icp_dependency(NVMATH platform/nvmath NvMathLib NvMathLib.h)
icp_dependency(USBIO platform/usbio ICPDAS_USBIO ICPDAS_USBIO.h)
icp_dependency(PACSDK platform/pacsdk PACSDK PACSDK.h)

if(NOT ICP_WITH_STANDINS)
  message(STATUS "Real libraries in use: icphost, the tests and the benchmarks are not built")
endif()
