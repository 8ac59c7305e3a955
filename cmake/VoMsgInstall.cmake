# What callers get: the shared library, the headers that vomsg/vomsg.h and vomsg/mail.h reach and no others, a CMake package
# (vomsg::vomsg) and a pkg-config file.
include(CMakePackageConfigHelpers)

# Sets `out` to every header that vomsg/vomsg.h or vomsg/mail.h includes, directly or not, named from the project's root.
function(vomsg_public_headers out)
  set(seen vomsg/vomsg.h vomsg/mail.h)
  set(todo ${seen})
  while(todo)
    list(POP_FRONT todo header)
    file(STRINGS ${PROJECT_SOURCE_DIR}/${header} includes REGEX "^#include \"vomsg/")
    foreach(line IN LISTS includes)
      string(REGEX REPLACE "^#include \"([^\"]+)\".*" "\\1" name "${line}")
      if(NOT name IN_LIST seen)
        list(APPEND seen ${name})
        list(APPEND todo ${name})
      endif()
    endforeach()
  endwhile()
  list(SORT seen)
  set(${out} ${seen} PARENT_SCOPE)
endfunction()

vomsg_public_headers(VOMSG_PUBLIC_HEADERS)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/vomsg/vomsg.h ${PROJECT_SOURCE_DIR}/vomsg/mail.h)
foreach(header IN LISTS VOMSG_PUBLIC_HEADERS)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder})
endforeach()

install(TARGETS vomsg EXPORT vomsg LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/vomsg)
install(EXPORT vomsg FILE vomsgConfig.cmake NAMESPACE vomsg:: DESTINATION ${package})
write_basic_package_version_file(vomsgConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vomsgConfigVersion.cmake DESTINATION ${package})

file(RELATIVE_PATH VOMSG_PC_TO_PREFIX /p/${CMAKE_INSTALL_LIBDIR}/pkgconfig /p)
configure_file(cmake/vomsg.pc.in vomsg.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vomsg.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(TARGET vomsg_program)
  install(TARGETS vomsg_program RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES docs/json.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/vomsg)
endif()
# Where the links of the README lead, and whole programs to start from.
install(FILES LICENSE NOTICE README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs FILES_MATCHING PATTERN "*.md")
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples FILES_MATCHING PATTERN "*.cpp")
