# `cpack -G DEB` makes Debian packages of a build that was configured with the prefix /usr (scripts/package_deb.sh): the
# shared library, what programs are built with, and the command-line tool.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qel-gridwork)
set(CPACK_PACKAGE_VENDOR QEL)
set(CPACK_PACKAGE_CONTACT "QEL Gridwork maintainers <maintainers@gridwork.qel.example>")
set(CPACK_RESOURCE_FILE_LICENSE ${CMAKE_CURRENT_SOURCE_DIR}/LICENSE)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)

set(CPACK_COMPONENTS_ALL qel_gridwork_runtime qel_gridwork_development)
if(TARGET gridwork)
  list(APPEND CPACK_COMPONENTS_ALL qel_gridwork_tools)
endif()
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each component's description starts with its own
set(about "A mesh is a matrix of coordinates and matrices of connectivity. Free
functions find and merge its nodes, clean it, transform it, query its
topology, measure its quality, work on metric tensors, and read and write
mesh files.")

set(CPACK_DEBIAN_QEL_GRIDWORK_RUNTIME_PACKAGE_NAME libqel-gridwork${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_QEL_GRIDWORK_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_QEL_GRIDWORK_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_QEL_GRIDWORK_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/packaging/debian/triggers)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_COMPONENT_QEL_GRIDWORK_RUNTIME_DESCRIPTION
  "finite-element mesh utilities - shared library\n${about}\n\nThis package holds the shared library.")

set(CPACK_DEBIAN_QEL_GRIDWORK_DEVELOPMENT_PACKAGE_NAME libqel-gridwork-dev)
set(CPACK_DEBIAN_QEL_GRIDWORK_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_QEL_GRIDWORK_DEVELOPMENT_PACKAGE_DEPENDS
  "${CPACK_DEBIAN_QEL_GRIDWORK_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(CPACK_COMPONENT_QEL_GRIDWORK_DEVELOPMENT_DESCRIPTION
  "finite-element mesh utilities - development files\n${about}\n\nThis package holds the headers, the files for CMake and pkg-config, and
examples.")

set(CPACK_DEBIAN_QEL_GRIDWORK_TOOLS_PACKAGE_NAME qel-gridwork-tools)
set(CPACK_DEBIAN_QEL_GRIDWORK_TOOLS_PACKAGE_SECTION math)
set(CPACK_DEBIAN_QEL_GRIDWORK_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_CURRENT_BINARY_DIR})
set(CPACK_DEBIAN_QEL_GRIDWORK_TOOLS_PACKAGE_DEPENDS
  "${CPACK_DEBIAN_QEL_GRIDWORK_RUNTIME_PACKAGE_NAME} (>= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_QEL_GRIDWORK_TOOLS_DESCRIPTION
  "finite-element mesh utilities - command-line tool\n${about}\n\nThis package holds the program gridwork, which tells what is in mesh files,
looks for faults, merges nodes, converts, cuts and measures.")

# The component for MPI, where it is built: packages of its own, as it brings MPI with it. Its library finds the other one,
# which is in no package yet, where it was built.
if(QEL_GRIDWORK_BUILD_MPI)
  list(APPEND CPACK_COMPONENTS_ALL qel_gridwork_mpi_runtime qel_gridwork_mpi_development)
  set(same_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
  set(about_mpi "Meshes in parts, on the ranks of an MPI communicator, with the results of
the serial functions on the whole mesh.")
  set(CPACK_DEBIAN_QEL_GRIDWORK_MPI_RUNTIME_PACKAGE_NAME libqel-gridwork-mpi${PROJECT_VERSION_MAJOR})
  set(CPACK_DEBIAN_QEL_GRIDWORK_MPI_RUNTIME_PACKAGE_SECTION libs)
  set(CPACK_DEBIAN_QEL_GRIDWORK_MPI_RUNTIME_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_QEL_GRIDWORK_MPI_RUNTIME_PACKAGE_DEPENDS
    "${CPACK_DEBIAN_QEL_GRIDWORK_RUNTIME_PACKAGE_NAME} ${same_version}")
  set(CPACK_DEBIAN_QEL_GRIDWORK_MPI_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_SOURCE_DIR}/packaging/debian/triggers)
  set(CPACK_COMPONENT_QEL_GRIDWORK_MPI_RUNTIME_DESCRIPTION
    "finite-element mesh utilities - shared library for MPI\n${about_mpi}\n\nThis package holds the shared library.")
  set(CPACK_DEBIAN_QEL_GRIDWORK_MPI_DEVELOPMENT_PACKAGE_NAME libqel-gridwork-mpi-dev)
  set(CPACK_DEBIAN_QEL_GRIDWORK_MPI_DEVELOPMENT_PACKAGE_SECTION libdevel)
  string(JOIN ", " CPACK_DEBIAN_QEL_GRIDWORK_MPI_DEVELOPMENT_PACKAGE_DEPENDS
    "${CPACK_DEBIAN_QEL_GRIDWORK_MPI_RUNTIME_PACKAGE_NAME} ${same_version}"
    "${CPACK_DEBIAN_QEL_GRIDWORK_DEVELOPMENT_PACKAGE_NAME} ${same_version}" "libopenmpi-dev")
  set(CPACK_COMPONENT_QEL_GRIDWORK_MPI_DEVELOPMENT_DESCRIPTION
    "finite-element mesh utilities - development files for MPI\n${about_mpi}\n\nThis package holds the header and the files for CMake.")
endif()

if(QEL_GRIDWORK_BUILD_PYTHON)
  list(APPEND CPACK_COMPONENTS_ALL qel_gridwork_python)
  set(CPACK_DEBIAN_QEL_GRIDWORK_PYTHON_PACKAGE_NAME python3-gridwork)
  set(CPACK_DEBIAN_QEL_GRIDWORK_PYTHON_PACKAGE_SECTION python)
  set(CPACK_DEBIAN_QEL_GRIDWORK_PYTHON_PACKAGE_DEPENDS
    "${CPACK_DEBIAN_QEL_GRIDWORK_RUNTIME_PACKAGE_NAME} (>= ${PROJECT_VERSION}), ${QEL_GRIDWORK_PYTHON_DEPENDS}, python3-numpy")
  set(CPACK_DEBIAN_QEL_GRIDWORK_PYTHON_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_QEL_GRIDWORK_PYTHON_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_SOURCE_DIR}/packaging/debian/python/postinst
    ${CMAKE_CURRENT_SOURCE_DIR}/packaging/debian/python/prerm)
  set(CPACK_COMPONENT_QEL_GRIDWORK_PYTHON_DESCRIPTION
    "finite-element mesh utilities - Python 3 package\n${about}\n\nThis package holds the module gridwork for Python, on arrays of numpy.")
endif()

# What every Debian package carries beside the files that are installed.
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian_documents.cmake)
set(CPACK_QEL_GRIDWORK_SOURCE_DIR ${CMAKE_CURRENT_SOURCE_DIR})

include(CPack)
