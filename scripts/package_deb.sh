#!/usr/bin/env bash
# Builds the Debian packages libqel-gridwork4, libqel-gridwork-dev, libqel-gridwork-mpi4, libqel-gridwork-mpi-dev,
# qel-gridwork-tools and python3-gridwork into build/deb/packages/, holds them against lintian, unpacks them into an empty
# root, builds and runs users' projects against that, and uses the tool and the Python package.
# With --quick, for a check of the packages only, at -O1.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

level=-O3
if [[ ${1:-} == --quick ]]; then level=-O1; fi

need_packages g++ cmake ninja-build dpkg-dev file lintian pkg-config libcli11-dev \
  pybind11-dev python3-dev python3-numpy libopenmpi-dev openmpi-bin libptscotch-dev

# Debian's flags, but for debug information, which would be stripped anyway.
export DEB_CXXFLAGS_MAINT_STRIP=-g DEB_BUILD_MAINT_OPTIONS=hardening=+all
CXXFLAGS=$(dpkg-buildflags --get CXXFLAGS) CPPFLAGS=$(dpkg-buildflags --get CPPFLAGS)
LDFLAGS=$(dpkg-buildflags --get LDFLAGS)

rm -rf build/deb/packages
cmake --preset release -B build/deb -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_INSTALL_DOCDIR=share/doc/libqel-gridwork-dev \
  -DQEL_GRIDWORK_DEVELOPER=OFF -DQEL_GRIDWORK_BUILD_TESTS=OFF -DQEL_GRIDWORK_BUILD_EXAMPLES=OFF \
  -DCMAKE_CXX_FLAGS="$CPPFLAGS $CXXFLAGS" -DCMAKE_CXX_FLAGS_RELEASE="$level -DNDEBUG" \
  -DCMAKE_SHARED_LINKER_FLAGS="$LDFLAGS" -DCMAKE_EXE_LINKER_FLAGS="$LDFLAGS -pie" \
  -DCMAKE_MODULE_LINKER_FLAGS="$LDFLAGS" -DQEL_GRIDWORK_BUILD_PYTHON=ON -DPython_EXECUTABLE=/usr/bin/python3 \
  -DQEL_GRIDWORK_BUILD_MPI=ON -DCMAKE_SKIP_INSTALL_RPATH=ON -DQEL_GRIDWORK_ZSH_DIR=share/zsh/vendor-completions > /dev/null
cmake --build build/deb
(cd build/deb && cpack -G DEB -B packages > cpack.log) || { cat build/deb/cpack.log >&2; exit 1; }
rm -rf build/deb/packages/_CPack_Packages

echo "--- lintian"
# The script that calls ldconfig is CPack's.
lintian --allow-root --fail-on error,warning --suppress-tags maintscript-calls-ldconfig,initial-upload-closes-no-bugs \
  build/deb/packages/*.deb

root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
for package in build/deb/packages/*.deb; do dpkg -x "$package" "$root"; done
libraries=$root/usr/lib/$(dpkg-architecture -q DEB_HOST_MULTIARCH)
tests/consumer/installed.sh "$root/usr" "${libraries#"$root/usr/"}" c++

echo "--- find_package with the component for MPI"
# A container's only user may be root.
LD_LIBRARY_PATH=$libraries OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1 \
  editions/parallel/tests/consumer/run.sh "$root/usr" c++ mpiexec.openmpi -n 2 --oversubscribe

echo "--- the tool"
LD_LIBRARY_PATH=$libraries "$root/usr/bin/gridwork" info examples/data/bracket.stl

echo "--- the Python package"
LD_LIBRARY_PATH=$libraries PYTHONPATH=$root/usr/lib/python3/dist-packages \
  PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 -c "import gridwork as gw
coords, triangles = gw.stl_input('examples/data/bracket.stl')
assert len(gw.get_mesh_boundaries(triangles, 'TRIA3')) == 0 and gw.__file__.startswith('$root')"
ls build/deb/packages/*.deb
