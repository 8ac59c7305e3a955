# The API reference, made by Doxygen from the public headers and the documents.
find_package(Doxygen 1.9 REQUIRED)
set(VOMSG_DOC_INPUT "")
foreach(header IN LISTS VOMSG_PUBLIC_HEADERS)
  string(APPEND VOMSG_DOC_INPUT " \\\n  ${header}")
endforeach()
configure_file(docs/Doxyfile.in Doxyfile @ONLY)
file(GLOB documents CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.md)
add_custom_command(OUTPUT ${CMAKE_BINARY_DIR}/reference/html/index.html
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/reference
  COMMAND Doxygen::doxygen ${CMAKE_BINARY_DIR}/Doxyfile
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
  DEPENDS ${VOMSG_PUBLIC_HEADERS} ${documents} ${CMAKE_BINARY_DIR}/Doxyfile
  VERBATIM)
list(TRANSFORM VOMSG_PUBLIC_HEADERS PREPEND ${PROJECT_SOURCE_DIR}/ OUTPUT_VARIABLE headers)
add_custom_target(vomsg_reference ALL DEPENDS ${CMAKE_BINARY_DIR}/reference/html/index.html)
install(DIRECTORY ${CMAKE_BINARY_DIR}/reference/html DESTINATION ${CMAKE_INSTALL_DOCDIR})
