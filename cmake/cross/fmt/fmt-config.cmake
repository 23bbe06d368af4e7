# fmt for a cross build, in its header-only mode (the distribution has no
# Windows library of it): see ../header-only.cmake.
include(${CMAKE_CURRENT_LIST_DIR}/../header-only.cmake)
icp_cross_header_only(PACKAGE fmt TARGETS fmt::fmt fmt::fmt-header-only HEADER_DIRS fmt
                      DEFINITIONS FMT_HEADER_ONLY=1)
