include(${CMAKE_CURRENT_LIST_DIR}/../header-only.cmake)
icp_cross_version_from(/usr/share/cmake/nlohmann_json/nlohmann_jsonConfigVersion.cmake)
