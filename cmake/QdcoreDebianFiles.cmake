# Run by CPack on the staged files: Debian requires manuals and changelogs to be compressed reproducibly.
file(GLOB_RECURSE texts
  "${CPACK_TEMPORARY_DIRECTORY}/qdfax.1" "${CPACK_TEMPORARY_DIRECTORY}/qdsim.1"
  "${CPACK_TEMPORARY_DIRECTORY}/changelog.Debian")
foreach(text ${texts})
  execute_process(COMMAND gzip -9 -n ${text} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
