# An overlay port that builds the tree it lies in:
#   vcpkg install qel-gridwork --overlay-ports=packaging/vcpkg
get_filename_component(SOURCE_PATH "${CURRENT_PORT_DIR}/../.." ABSOLUTE)

vcpkg_cmake_configure(
  SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS
    -DQEL_GRIDWORK_BUILD_TESTS=OFF
    -DQEL_GRIDWORK_BUILD_EXAMPLES=OFF
    -DQEL_GRIDWORK_BUILD_BENCHMARKS=OFF)
vcpkg_cmake_install()
vcpkg_copy_pdbs()
vcpkg_cmake_config_fixup(PACKAGE_NAME qel_gridwork CONFIG_PATH lib/cmake/qel_gridwork)
vcpkg_fixup_pkgconfig()

file(REMOVE_RECURSE
  "${CURRENT_PACKAGES_DIR}/debug/include"
  "${CURRENT_PACKAGES_DIR}/debug/share"
  "${CURRENT_PACKAGES_DIR}/share/doc")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
