# Run by CPack between installing and packing: puts licence and changelogs into each Debian package, and
# compresses man pages.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(debian ${CPACK_QEL_GRIDWORK_SOURCE_DIR}/packaging/debian)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(documents ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  file(COPY ${debian}/copyright DESTINATION ${documents})
  configure_file(${CPACK_QEL_GRIDWORK_SOURCE_DIR}/CHANGELOG.md ${documents}/changelog COPYONLY)
  configure_file(${debian}/changelog.in ${documents}/changelog.Debian @ONLY)
  execute_process(
    COMMAND gzip -9nf ${documents}/changelog ${documents}/changelog.Debian
    COMMAND_ERROR_IS_FATAL ANY)
  file(CHMOD_RECURSE ${documents}
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ
    DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
endforeach()
file(GLOB_RECURSE pages ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/*.1)
if(pages)
  execute_process(COMMAND gzip -9nf ${pages} COMMAND_ERROR_IS_FATAL ANY)
endif()
