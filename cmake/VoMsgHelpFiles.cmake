# vomsg_help_files(TARGET NAME SECTION): manual pages and shell completion of a program, made from its --help when it is
# built, and installed with it.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
find_program(VOMSG_HELP2MAN help2man REQUIRED)

function(vomsg_help_files target name section)
  set(out ${CMAKE_BINARY_DIR}/help/${name})
  file(GLOB extra CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tools/man/${name}*.h2m)
  add_custom_command(OUTPUT ${out}/stamp
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${out}
    COMMAND ${Python3_EXECUTABLE} -B ${PROJECT_SOURCE_DIR}/tools/make_help_files.py $<TARGET_FILE:${target}> ${name}
      ${section} ${PROJECT_VERSION} ${out} ${PROJECT_SOURCE_DIR}/tools/man
    COMMAND ${CMAKE_COMMAND} -E touch ${out}/stamp
    DEPENDS ${target} ${PROJECT_SOURCE_DIR}/tools/make_help_files.py ${extra}
    VERBATIM)
  add_custom_target(${name}_help ALL DEPENDS ${out}/stamp)
  install(DIRECTORY ${out}/man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
  install(FILES ${out}/completion/${name} DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES ${out}/completion/_${name} DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
endfunction()
