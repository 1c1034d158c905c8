# Run by CPack on the finished packages. Where a package has a shared library, CPack adds maintainer scripts that call
# ldconfig, and has no option against it. The package's trigger does that; there are no other maintainer scripts.
foreach(package ${CPACK_PACKAGE_FILES})
  set(content ${CPACK_TEMPORARY_DIRECTORY}/content)
  file(REMOVE_RECURSE ${content})
  execute_process(COMMAND dpkg-deb --raw-extract ${package} ${content} COMMAND_ERROR_IS_FATAL ANY)
  if(EXISTS ${content}/DEBIAN/postinst)
    file(REMOVE ${content}/DEBIAN/postinst ${content}/DEBIAN/postrm)
    execute_process(COMMAND dpkg-deb --root-owner-group --build ${content} ${package}
      OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  endif()
endforeach()
