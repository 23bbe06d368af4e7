# Shared-library naming: the stand-ins are named like the libraries they
# stand in for (NvMathLib.dll, ICPDAS_USBIO.dll, PACSDK.dll on Windows).
if(WIN32)
  set(CMAKE_SHARED_LIBRARY_PREFIX "")
  set(CMAKE_IMPORT_LIBRARY_PREFIX "")
endif()
if(MINGW)
  # A user's machine has no MinGW runtime DLLs: link the runtime in.
  add_link_options(-static-libgcc -static-libstdc++ -Wl,-Bstatic,--whole-archive -lwinpthread -Wl,--no-whole-archive,-Bdynamic)
endif()
