# Warnings as errors for our own targets only.
add_library(vomsg_warnings INTERFACE)
target_compile_options(vomsg_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Werror)
# GCC 12 sees overlapping copies in plain std::string concatenations once it optimises; there are none.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(vomsg_warnings INTERFACE -Wno-restrict)
endif()
