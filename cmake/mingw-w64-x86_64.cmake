# Cross build for 64-bit Windows with MinGW-w64 (Debian's mingw-w64 and
# g++-mingw-w64-x86-64-posix packages). The outputs run on Windows without
# any MinGW runtime DLL beside them (see platform.cmake) and, on the build
# machine, under Wine: CMAKE_CROSSCOMPILING_EMULATOR runs every test
# executable through cmake/wine-run.sh.
#
#   cmake --preset windows && cmake --build --preset windows && ctest --preset windows

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)

set(ICP_MINGW_TRIPLE x86_64-w64-mingw32)
# The posix thread model: std::thread, std::mutex and thread_local work.
find_program(CMAKE_C_COMPILER NAMES ${ICP_MINGW_TRIPLE}-gcc-posix REQUIRED)
find_program(CMAKE_CXX_COMPILER NAMES ${ICP_MINGW_TRIPLE}-g++-posix REQUIRED)
find_program(CMAKE_RC_COMPILER NAMES ${ICP_MINGW_TRIPLE}-windres REQUIRED)
find_program(CMAKE_AR NAMES ${ICP_MINGW_TRIPLE}-ar REQUIRED)
find_program(CMAKE_RANLIB NAMES ${ICP_MINGW_TRIPLE}-ranlib REQUIRED)

# Libraries and headers come from the MinGW tree only, never from the build
# machine's /usr. Programs (code generators, the emulator) are the host's.
set(CMAKE_FIND_ROOT_PATH /usr/${ICP_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The distribution's header-only packages (nlohmann-json, CLI11, and fmt in
# its header-only mode) serve the cross build too, through package files of
# our own that put only those packages' headers on the include path: the
# distribution's own package files would add all of /usr/include, whose C
# library headers would shadow MinGW's. An explicit <Package>_DIR is
# searched before any root path.
set(nlohmann_json_DIR ${CMAKE_CURRENT_LIST_DIR}/cross/nlohmann_json)
set(CLI11_DIR ${CMAKE_CURRENT_LIST_DIR}/cross/CLI11)
set(fmt_DIR ${CMAKE_CURRENT_LIST_DIR}/cross/fmt)

# Tests run under Wine in a throw-away prefix inside the build tree.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine-run.sh)
