# Cross-compiling for 64-bit Windows by mingw-w64, against the Qt that scripts/windows.sh builds.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

# The threads of the posix variant are those of the C++ library, which the sources use.
set(triple x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER ${triple}-g++-posix)
set(CMAKE_RC_COMPILER ${triple}-windres)

# Where Qt and the libraries for Windows are installed: what the environment says now, or what it said last.
if(DEFINED ENV{QDCORE_WINDOWS_PREFIX})
  set(QDCORE_WINDOWS_PREFIX $ENV{QDCORE_WINDOWS_PREFIX} CACHE PATH "Prefix of Qt for Windows" FORCE)
endif()
if(NOT QDCORE_WINDOWS_PREFIX)
  message(FATAL_ERROR "scripts/windows.sh builds Qt for Windows, and the project with it.")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QDCORE_WINDOWS_PREFIX)
set(CMAKE_FIND_ROOT_PATH ${QDCORE_WINDOWS_PREFIX} /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} ${QDCORE_WINDOWS_PREFIX}/lib/pkgconfig) # nothing of this system

# Tests run under Wine.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine.sh)
