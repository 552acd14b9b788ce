# What of the library's inside this edition may include, headers and what they include in turn. tests/arrows_test.sh
# reads this list.
set(qel_gridwork_mpi_internal_headers
  core/coordinates.h
  core/elements.h
  core/identity_map.h
  core/index_flags.h
  core/limits.h
  core/position_table.h
  core/result.h
  core/shapes.h
  io/little_endian.h
  io/stl_binary.h
  io/stl_geometry.h
  io/stl_text_parser.h
  io/text/file.h
  io/text/text.h
  io/triangle_soup.h
  search/geometry.h
  search/merging/cell_grid.h
  search/merging/coincident_nodes.h
  search/merging/near_nodes.h
  topology/boundary_key.h
  topology/boundary_slots.h)

# The sources behind them. They are compiled in once more, hidden: the shared library does not export them.
set(qel_gridwork_mpi_internal_sources
  core/elements.cpp
  io/stl_geometry.cpp
  io/text/number_scan.cpp
  io/triangle_soup.cpp
  search/merging/near_nodes.cpp
  search/merging/proximity_merge.cpp)

set(qel_gridwork_mpi_sources
  adjacency/boundaries.cpp
  adjacency/edges.cpp
  adjacency/neighbors.cpp
  adjacency/node_elements.cpp
  adjacency/subdomains.cpp
  communication/team.cpp
  measures/measures.cpp
  merging/cell_directory.cpp
  merging/chains.cpp
  merging/handled_nodes.cpp
  merging/survivors.cpp
  parts/checks.cpp
  parts/cleaning.cpp
  parts/curve.cpp
  parts/graph.cpp
  parts/migration.cpp
  parts/sharing.cpp
  parts/shipping.cpp
  stl/binary_input.cpp
  stl/input.cpp
  stl/join_pieces.cpp
  stl/output.cpp
  stl/text_input.cpp)
