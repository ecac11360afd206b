# meridex_man_page(TARGET NAME "WHAT IT DOES" COMPONENT [DEPENDS files...] [OPTIONS help2man options...]):
# the man page NAME.1, made by help2man from the program's own --help when it is built (no display
# needed), and installed with the program. Not for a cross-compiled build, whose programs cannot run here.
function(meridex_man_page target name summary component)
  if(CMAKE_CROSSCOMPILING)
    return()
  endif()
  cmake_parse_arguments(PARSE_ARGV 4 arg "" "" "DEPENDS;OPTIONS")
  find_program(MERIDEX_HELP2MAN help2man REQUIRED)
  set(page ${CMAKE_CURRENT_BINARY_DIR}/${name}.1)
  add_custom_command(OUTPUT ${page}
    COMMAND ${CMAKE_COMMAND} -E env ASAN_OPTIONS=detect_leaks=0
            ${MERIDEX_HELP2MAN} --no-info --section=1 --name=${summary} --output=${page} ${arg_OPTIONS}
            $<TARGET_FILE:${target}>
    DEPENDS ${target} ${arg_DEPENDS}
    COMMENT "Generating the ${name} man page"
    VERBATIM)
  add_custom_target(${target}_man ALL DEPENDS ${page})
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component})
endfunction()
