# The API reference: `cmake --build <dir> --target docs` (or `make docs`) runs
# Doxygen over the installed headers only (the dialog library's too), the generated ones included, and
# fails on any warning, so an undocumented public member cannot slip in.
find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
  return()
endif()

set(MERIDEX_INCLUDE_ROOT ${PROJECT_BINARY_DIR}/include)
set(MERIDEX_GENERATED_ROOT ${PROJECT_BINARY_DIR}/generated)
set(MERIDEX_DOCS_INPUT "")
foreach(header ${MERIDEX_PUBLIC_HEADERS})
  string(APPEND MERIDEX_DOCS_INPUT " \"${MERIDEX_INCLUDE_ROOT}/meridex/${header}\"")
endforeach()
foreach(header Export.h Version.h)
  string(APPEND MERIDEX_DOCS_INPUT " \"${MERIDEX_GENERATED_ROOT}/meridex/${header}\"")
endforeach()
# The dialog library's installed headers, when it is built.
foreach(header ${MERIDEX_UI_PUBLIC_HEADERS})
  string(APPEND MERIDEX_DOCS_INPUT " \"${MERIDEX_INCLUDE_ROOT}/meridex/ui/${header}\"")
endforeach()
if(MERIDEX_UI_PUBLIC_HEADERS)
  string(APPEND MERIDEX_DOCS_INPUT " \"${MERIDEX_GENERATED_ROOT}/meridex/ui/Export.h\"")
endif()
string(APPEND MERIDEX_DOCS_INPUT " \"${PROJECT_SOURCE_DIR}/docs/mainpage.md\"")

configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
add_custom_target(docs
  COMMAND ${CMAKE_COMMAND} -E remove_directory ${PROJECT_BINARY_DIR}/html
  COMMAND Doxygen::doxygen ${PROJECT_BINARY_DIR}/Doxyfile
  WORKING_DIRECTORY ${PROJECT_BINARY_DIR}
  COMMENT "API reference in ${PROJECT_BINARY_DIR}/html"
  VERBATIM)
