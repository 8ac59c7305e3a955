# GoogleTest, from its packaged library or, where the build is of another kind than the package (32 bits,
# sanitizers), from its packaged sources.
if(VOMSG_32BIT OR VOMSG_SANITIZE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  if(NOT TARGET GTest::gtest_main)
    add_library(GTest::gtest_main ALIAS gtest_main)
  endif()
else()
  find_package(GTest REQUIRED)
endif()
include(GoogleTest)

# vomsg_add_test(NAME source...): one test program, linked against the library's objects so that it reaches what the
# shared library hides.
function(vomsg_add_test name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE vomsg_test_support vomsg_warnings GTest::gtest_main)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 600)
endfunction()
