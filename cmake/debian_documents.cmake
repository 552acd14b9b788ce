# Run by CPack between installing and packing: puts licence and changelogs into each Debian package, and what lintian
# shall bear with; compresses man pages.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(debian ${CPACK_QEL_GRIDWORK_SOURCE_DIR}/packaging/debian)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(share ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share)
  set(documents ${share}/doc/${package})
  file(COPY ${debian}/copyright DESTINATION ${documents})
  configure_file(${CPACK_QEL_GRIDWORK_SOURCE_DIR}/CHANGELOG.md ${documents}/changelog COPYONLY)
  configure_file(${debian}/changelog.in ${documents}/changelog.Debian @ONLY)
  execute_process(
    COMMAND gzip -9nf ${documents}/changelog ${documents}/changelog.Debian
    COMMAND_ERROR_IS_FATAL ANY)
  set(changed ${documents})
  if(EXISTS ${debian}/overrides/${package})
    file(COPY ${debian}/overrides/${package} DESTINATION ${share}/lintian/overrides)
    list(APPEND changed ${share}/lintian)
  endif()
  file(CHMOD_RECURSE ${changed}
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ
    DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
endforeach()
file(GLOB_RECURSE pages ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/*.1)
if(pages)
  execute_process(COMMAND gzip -9nf ${pages} COMMAND_ERROR_IS_FATAL ANY)
endif()
