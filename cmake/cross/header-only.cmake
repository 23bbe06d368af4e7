# A distribution package that is usable header-only, found for a cross
# build. The distribution's own package files name /usr/include as the
# include directory, which would put the build machine's C library headers
# in front of the target's. Instead, a folder in the build tree gets links
# to the package's own header folders only, and an imported target names
# that folder.
#
#   icp_cross_header_only(PACKAGE name TARGETS t... HEADER_DIRS d...
#                         [DEFINITIONS def...])
#
# HEADER_DIRS are folder names under /usr/include (e.g. nlohmann).
include_guard(GLOBAL)

macro(icp_cross_header_only)
  set(_icp_ho_system_include /usr/include)
  cmake_parse_arguments(_icp_ho "" "PACKAGE" "TARGETS;HEADER_DIRS;DEFINITIONS" ${ARGN})
  set(_icp_ho_missing "")
  foreach(_icp_ho_dir IN LISTS _icp_ho_HEADER_DIRS)
    if(NOT IS_DIRECTORY ${_icp_ho_system_include}/${_icp_ho_dir})
      list(APPEND _icp_ho_missing ${_icp_ho_system_include}/${_icp_ho_dir})
    endif()
  endforeach()
  if(_icp_ho_missing)
    set(${_icp_ho_PACKAGE}_FOUND FALSE)
    set(${_icp_ho_PACKAGE}_NOT_FOUND_MESSAGE
        "headers not installed: ${_icp_ho_missing} (install the distribution's -dev package)")
  else()
    set(_icp_ho_farm ${CMAKE_BINARY_DIR}/cross-include/${_icp_ho_PACKAGE})
    file(MAKE_DIRECTORY ${_icp_ho_farm})
    foreach(_icp_ho_dir IN LISTS _icp_ho_HEADER_DIRS)
      if(NOT EXISTS ${_icp_ho_farm}/${_icp_ho_dir})
        file(CREATE_LINK ${_icp_ho_system_include}/${_icp_ho_dir} ${_icp_ho_farm}/${_icp_ho_dir}
             SYMBOLIC COPY_ON_ERROR)
      endif()
    endforeach()
    foreach(_icp_ho_target IN LISTS _icp_ho_TARGETS)
      if(NOT TARGET ${_icp_ho_target})
        add_library(${_icp_ho_target} INTERFACE IMPORTED)
        set_target_properties(${_icp_ho_target} PROPERTIES
          INTERFACE_INCLUDE_DIRECTORIES ${_icp_ho_farm}
          INTERFACE_COMPILE_DEFINITIONS "${_icp_ho_DEFINITIONS}")
      endif()
    endforeach()
    set(${_icp_ho_PACKAGE}_FOUND TRUE)
  endif()
endmacro()

# The version check of the distribution's package, when it is installed.
macro(icp_cross_version_from pattern)
  file(GLOB _icp_ho_version_files ${pattern})
  if(_icp_ho_version_files)
    list(GET _icp_ho_version_files 0 _icp_ho_version_file)
    include(${_icp_ho_version_file})
  else()
    set(PACKAGE_VERSION "0")
    set(PACKAGE_VERSION_UNSUITABLE TRUE)
  endif()
endmacro()
