# Files installed by "cmake --install". Components: runtime (the shared library, and its texts in other languages by
# translations/CMakeLists.txt), development (headers, CMake package, pkg-config file) and tools (qdfax and qdsim with
# their manuals and completion). Headers and qdfax need runtime in the same prefix.

include(CMakePackageConfigHelpers)

set(QDCORE_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qdcore)
set(QDCORE_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/qdcore)

install(TARGETS qdcore EXPORT qdcoreTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  FILE_SET HEADERS DESTINATION ${QDCORE_INCLUDE_DIR} COMPONENT development
  FILE_SET tasks DESTINATION ${QDCORE_INCLUDE_DIR} COMPONENT development
  FILE_SET generated DESTINATION ${QDCORE_INCLUDE_DIR} COMPONENT development)
# the classes of the widgets are in the same library, so their headers lie beside its own
get_target_property(widget_headers qdwidgets HEADER_SET)
install(FILES ${widget_headers} DESTINATION ${QDCORE_INCLUDE_DIR} COMPONENT development)
install(EXPORT qdcoreTargets
  NAMESPACE qdcore:: DESTINATION ${QDCORE_CMAKE_DIR} COMPONENT development)

configure_package_config_file(cmake/qdcoreConfig.cmake.in qdcoreConfig.cmake
  INSTALL_DESTINATION ${QDCORE_CMAKE_DIR} PATH_VARS QDCORE_TRANSLATIONS_DIR)
write_basic_package_version_file(qdcoreConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qdcoreConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/qdcoreConfigVersion.cmake
  DESTINATION ${QDCORE_CMAKE_DIR} COMPONENT development)

# relative, so that it holds wherever "cmake --install --prefix" puts it
file(RELATIVE_PATH pc_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" pc_prefix ${pc_prefix})
configure_file(cmake/qdcore.pc.in qdcore.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qdcore.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

if(QDCORE_BUILD_TOOLS)
  # where the system would not look by itself
  if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    file(RELATIVE_PATH to_library /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
    set_target_properties(qdfax PROPERTIES INSTALL_RPATH $ORIGIN/${to_library})
  endif()
  install(TARGETS qdfax RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(FILES docs/man/qdfax.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  install(FILES packaging/qdfax.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME qdfax COMPONENT tools)
endif()
if(QDCORE_BUILD_SIMULATOR)
  install(TARGETS qdsim RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(FILES docs/man/qdsim.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endif()
