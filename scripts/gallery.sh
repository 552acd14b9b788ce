#!/usr/bin/env bash
# Makes the pictures of docs/gallery.md in docs/images: programs of the library write VTK files into build/gallery, VTK
# renders them. Whoever changes what is shown runs this, looks at the pictures and commits them.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

need_packages g++ cmake ninja-build libmetis-dev libopenmpi-dev openmpi-bin python3-vtk9 xvfb pngquant

build=build/gallery/release data=build/gallery/data
mkdir -p "$data"
cmake --preset release -B "$build" -DQEL_GRIDWORK_BUILD_TESTS=OFF -DQEL_GRIDWORK_BUILD_DOCS=ON \
  -DQEL_GRIDWORK_BUILD_MPI=ON > /dev/null
cmake --build "$build" --target gallery_data partition_mesh pattern_part check_surface

"$build/examples/pattern_part" "$data/gear.stl"
"$build/docs/gallery_data" examples/data/bracket.stl "$data/gear.stl" "$data"
"$build/examples/partition_mesh" 8 -o "$data/block_parts.vtk"
"$build/examples/partition_mesh" 8 -i examples/data/bracket.stl -o "$data/bracket_parts.vtk"
OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1 \
  mpiexec.openmpi -n 4 --oversubscribe "$build/editions/parallel/example/check_surface" examples/data/bracket.stl "$data/rank"

xvfb-run -a /usr/bin/python3 scripts/gallery.py "$data" docs/images
pngquant --force --ext .png --speed 1 --quality 70-98 --strip docs/images/*.png
ls -l docs/images
