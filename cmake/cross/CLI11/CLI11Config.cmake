# CLI11 for a cross build: see ../header-only.cmake.
include(${CMAKE_CURRENT_LIST_DIR}/../header-only.cmake)
icp_cross_header_only(PACKAGE CLI11 TARGETS CLI11::CLI11 HEADER_DIRS CLI)
