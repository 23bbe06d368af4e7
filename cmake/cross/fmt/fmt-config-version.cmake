include(${CMAKE_CURRENT_LIST_DIR}/../header-only.cmake)
icp_cross_version_from(/usr/lib/*/cmake/fmt/fmt-config-version.cmake)
