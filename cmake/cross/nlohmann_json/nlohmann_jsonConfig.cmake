# nlohmann-json for a cross build: see ../header-only.cmake.
include(${CMAKE_CURRENT_LIST_DIR}/../header-only.cmake)
icp_cross_header_only(PACKAGE nlohmann_json TARGETS nlohmann_json::nlohmann_json HEADER_DIRS nlohmann)
