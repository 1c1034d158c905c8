# Debian packages, one per component: libqdcore1, libqdcore-dev, and qdfax with qdsim. scripts/package.sh makes them.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qdcore)
set(CPACK_PACKAGE_VENDOR "The qdcore developers")
set(CPACK_PACKAGE_CONTACT "The qdcore developers <developers@qdcore.invalid>")
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/QdcoreDebianFiles.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/QdcoreDebianScripts.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/lib)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF)

set(library libqdcore${PROJECT_VERSION_MAJOR})
set(same_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# plugins that Qt loads at run time: the database driver for contacts, and the icons
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libqt5sql5-sqlite, libqt5svg5")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "client library for network fax servers
 Finds fax servers, submits and follows faxes, reads logs, and keeps the user's
 contacts in a local database that background threads synchronise.")

# has ldconfig run, without maintainer scripts
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/triggers "activate-noawait ldconfig\n")
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/shlibs
  "libqdcore ${PROJECT_VERSION_MAJOR} ${library} (>= ${PROJECT_VERSION})\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_BINARY_DIR}/triggers ${CMAKE_CURRENT_BINARY_DIR}/shlibs)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqdcore-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library} ${same_version}, qtbase5-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "client library for network fax servers - development files
 Headers, the CMake package and the pkg-config file of qdcore.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME qdfax)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${library} ${same_version}")
# Qt's own texts in the languages of qdfax
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "qttranslations5-l10n")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "command-line client for a network fax server
 Sends and follows faxes, reads logs, downloads documents and keeps contact
 books. With qdsim, a simulated server to try and to develop clients against.")

foreach(component runtime development tools)
  string(TOUPPER ${component} upper)
  set(documents ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  install(FILES packaging/copyright packaging/changelog.Debian
    DESTINATION ${documents} COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
