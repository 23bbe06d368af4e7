# Warnings are errors, for every target of the project.
if(MSVC)
  # MSVC and clang-cl. Sources are UTF-8 and strings keep their bytes as
  # written (/utf-8, as GCC and Clang do by default); __cplusplus tells the
  # real language version.
  add_compile_options(/W4 /WX /permissive- /utf-8 /Zc:__cplusplus)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "MSVC")
    # The standard preprocessor: __VA_ARGS__ is forwarded as the list it is.
    add_compile_options(/Zc:preprocessor)
  endif()
else()
  add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Werror)
endif()

# GCC 12, optimising, inlines std::string's operator+(const char*, string&&)
# and then reports a -Wrestrict overlap that cannot happen (a known false
# positive of that release). Only that diagnostic is silenced, and only there.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 12
   AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  add_compile_options(-Wno-restrict)
endif()
