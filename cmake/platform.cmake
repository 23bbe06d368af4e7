# Shared-library naming: the stand-ins are named like the libraries they
# stand in for (NvMathLib.dll, ICPDAS_USBIO.dll, PACSDK.dll on Windows).
if(WIN32)
  set(CMAKE_SHARED_LIBRARY_PREFIX "")
  set(CMAKE_IMPORT_LIBRARY_PREFIX "")
endif()

if(MINGW)
  # A user's machine has no MinGW runtime DLLs (libgcc_s_seh-1, libstdc++-6,
  # libwinpthread-1): every DLL and EXE carries its own copy of the runtime
  # and imports only Windows system DLLs and the project's own DLLs.
  # -static makes the linker take the static archive of every library given
  # by name (winpthread, which the posix libstdc++ needs, included); the
  # project's own import libraries are given by path and stay DLL imports.
  add_link_options(-static -static-libgcc -static-libstdc++)
  # Nothing is exported unless the source marks it __declspec(dllexport):
  # without this, ld exports every global symbol of a DLL that has no marked
  # symbol, and the static runtime's symbols with it.
  add_link_options($<$<OR:$<STREQUAL:$<TARGET_PROPERTY:TYPE>,SHARED_LIBRARY>,$<STREQUAL:$<TARGET_PROPERTY:TYPE>,MODULE_LIBRARY>>:LINKER:--exclude-all-symbols>)
endif()
