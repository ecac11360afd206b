# Debian packages: `cpack -G DEB` in a build configured with the `package` preset
# makes meridex_<version>_<arch>.deb (library, tool, companion) and
# meridex-dev_<version>_<arch>.deb (headers, CMake package, pkg-config) and
# python3-meridex_<version>_<arch>.deb (the Python module) and, when the dialogs are
# built, meridex-ui_<version>_<arch>.deb (the Qt dialog library and meridex-dialogs), so that
# the core package never pulls in Qt.
set(CPACK_PACKAGE_NAME meridex)
set(CPACK_PACKAGE_VENDOR "Meridex developers")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_CONTACT "Meridex developers <meridex@localhost>")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENTS_ALL runtime development)
if(MERIDEX_BUILD_PYTHON)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
if(MERIDEX_BUILD_UI)
  list(APPEND CPACK_COMPONENTS_ALL ui)
endif()

set(CPACK_COMPONENT_RUNTIME_DISPLAY_NAME "Meridex library and tools")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME meridex)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "Settings, user profiles, address book, communications map and scheme synchronisation for\n data logger host software, with the meridex command-line tool and the SerialPortInfoDump companion.")

set(CPACK_COMPONENT_DEVELOPMENT_DISPLAY_NAME "Meridex development files")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME meridex-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "Headers, the CMake package (find_package(meridex)) and the pkg-config file of Meridex.")

set(CPACK_COMPONENT_PYTHON_DISPLAY_NAME "Meridex for Python 3")
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-meridex)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_COMPONENT_PYTHON_DEPENDS runtime)
# The module links libmeridex from the meridex package (a dependency of its own),
# which dpkg-shlibdeps cannot see from here; the interpreter is the one it was built for.
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
math(EXPR _meridex_python_next "${Python3_VERSION_MINOR} + 1")
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
  "python3 (>= ${Python3_VERSION_MAJOR}.${Python3_VERSION_MINOR}), python3 (<< ${Python3_VERSION_MAJOR}.${_meridex_python_next})")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION
  "The Python module meridex: settings and user profiles, the address book, the communications map,\n scheme import and synchronisation from Python scripts.")

set(CPACK_COMPONENT_UI_DISPLAY_NAME "Meridex dialogs")
set(CPACK_DEBIAN_UI_PACKAGE_NAME meridex-ui)
set(CPACK_COMPONENT_UI_DEPENDS runtime)
set(CPACK_COMPONENT_UI_DESCRIPTION
  "The Qt 6 dialog library of Meridex (profile editor, address book, device and map dialogs, firmware\n upgrade) and the meridex-dialogs program that opens any of them on the files it is given.")

include(CPack)
