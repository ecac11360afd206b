# Cross-compiling for 64-bit Windows with Debian's MinGW-w64 (g++-mingw-w64-x86-64-posix:
# the POSIX thread model, which std::thread and std::mutex need).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(MERIDEX_MINGW_TRIPLET x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${MERIDEX_MINGW_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${MERIDEX_MINGW_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${MERIDEX_MINGW_TRIPLET}-windres)

# The dependencies built for Windows by scripts/windows-deps live under one prefix.
if(NOT MERIDEX_WINDOWS_DEPS)
  set(MERIDEX_WINDOWS_DEPS "${CMAKE_CURRENT_LIST_DIR}/../build/windows-deps/prefix")
endif()
get_filename_component(MERIDEX_WINDOWS_DEPS "${MERIDEX_WINDOWS_DEPS}" ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH /usr/${MERIDEX_MINGW_TRIPLET} ${MERIDEX_WINDOWS_DEPS})
set(CMAKE_PREFIX_PATH ${MERIDEX_WINDOWS_DEPS})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# pkg-config must see the Windows prefix only, never the build machine's libraries.
set(ENV{PKG_CONFIG_LIBDIR} "${MERIDEX_WINDOWS_DEPS}/lib/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")
set(ENV{PKG_CONFIG_SYSROOT_DIR} "")

# Self-contained executables: no MinGW runtime DLLs to carry beside them.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")

# The libraries are static: their headers must not ask for DLL imports.
set(CMAKE_C_FLAGS_INIT "-DLIBXML_STATIC")
set(CMAKE_CXX_FLAGS_INIT "-DLIBXML_STATIC")

# Test programs run under Wine (Debian's wine64 keeps its loader out of PATH).
if(EXISTS /usr/lib/wine/wine64)
  set(CMAKE_CROSSCOMPILING_EMULATOR /usr/lib/wine/wine64)
else()
  set(CMAKE_CROSSCOMPILING_EMULATOR wine64)
endif()
