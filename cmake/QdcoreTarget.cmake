# Settings common to all targets of the project: language standard, warnings, strict Qt macros.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTORCC ON)

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

# Sanitizer options for tests. Leaks in programs that a test starts fail it as well.
set(qdcore_sanitizer_environment
  "ASAN_OPTIONS=detect_stack_use_after_return=1"
  "UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1"
  "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0"
  "TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/tsan.supp")

# qdcore_target(NAME): applies these settings to a target.
function(qdcore_target name)
  target_compile_definitions(${name} PRIVATE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_NO_URL_CAST_FROM_STRING
    QT_NO_KEYWORDS QT_DEPRECATED_WARNINGS)
  if(WIN32)
    target_compile_definitions(${name} PRIVATE UNICODE _UNICODE NOMINMAX)
  endif()
  if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(${name} PRIVATE -Wall -Wextra -Wpedantic -Wconversion)
    if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
      # Qt's metatypes destroy a value as exactly the type that it is; QuendraInfo has virtual functions, but no virtual
      # destructor, which its interface fixes.
      target_compile_options(${name} PRIVATE -Wno-delete-non-abstract-non-virtual-dtor)
    endif()
    if(QDCORE_WERROR)
      target_compile_options(${name} PRIVATE -Werror)
    endif()
  endif()
  if(QDCORE_SANITIZE)
    target_compile_options(${name} PRIVATE -fsanitize=${QDCORE_SANITIZE} -fno-omit-frame-pointer)
    target_link_options(${name} PRIVATE -fsanitize=${QDCORE_SANITIZE})
  endif()
endfunction()
