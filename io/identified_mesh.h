// What the readers of files with identifiers make, and how they return it.
#ifndef QEL_GRIDWORK_IO_IDENTIFIED_MESH_H
#define QEL_GRIDWORK_IO_IDENTIFIED_MESH_H

#include <cstdint>
#include <utility>

#include "core/result.h"
#include "io/identified_nodes.h"
#include "io/input_mesh.h"

namespace qel::gridwork::detail::io {

/// The labels of an element are its property and its identifier.
struct identified_mesh : input_mesh {
  dense1D<unsigned> node_IDs;
};

/// Has a parser read a file, then make the mesh.
template <class Parser>
int read_identified(const char* filename, element_type only, identified_mesh& mesh) noexcept {
  return read_file(filename, [&](block_reader& blocks, std::uint64_t size) {
    Parser parser(blocks, size, only);
    const int result = parser.parse();
    return result != 0 ? result : parser.finish(mesh);
  });
}

/// Makes the mesh of nodes whose collection has ended. `left_out` parts of the file are not in it.
inline int make_mesh(identified_nodes& nodes, element_collector& elements, std::uint64_t left_out,
                     identified_mesh& mesh) noexcept {
  const auto to_column = [&nodes](unsigned& node) { return (node = nodes.find(node)) != none; };
  if (!elements.change_nodes(to_column)) return unknown_node;
  if (!elements.deliver(mesh.elements)) return out_of_memory;
  nodes.deliver(mesh.coords, mesh.node_IDs);
  return result_of_left_out(left_out);
}

/// Reads all elements, with what belongs to identifiers.
inline int read_blocks(mesh_reader<identified_mesh> read, const char* filename, dense2D<double>& coords,
                       dense2D<unsigned>& connectivity, dense1D<unsigned>& block_offsets, dense1D<int>& block_types,
                       dense1D<unsigned>& property_IDs, dense1D<unsigned>& element_IDs,
                       dense1D<unsigned>& node_IDs) noexcept {
  identified_mesh mesh;
  const int result = read_blocks(read, filename, mesh, coords, connectivity, block_offsets, block_types);
  property_IDs = std::move(mesh.elements.labels[0]);
  element_IDs = std::move(mesh.elements.labels[1]);
  node_IDs = std::move(mesh.node_IDs);
  return result;
}

}  // namespace qel::gridwork::detail::io

#endif
