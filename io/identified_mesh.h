// What the readers of files with identifiers make, and how they return it.
#ifndef QEL_GRIDWORK_IO_IDENTIFIED_MESH_H
#define QEL_GRIDWORK_IO_IDENTIFIED_MESH_H

#include <utility>

#include "io/element_collector.h"
#include "io/input_result.h"
#include "qel/dense.h"
#include "qel/gridwork/elements.h"

namespace qel::gridwork::detail::io {

/// The labels of an element are its property and its identifier.
struct identified_mesh {
  dense2D<double> coords;
  element_blocks elements;
  dense1D<unsigned> node_IDs;
};

/// Reads the elements of one type, or of all for ELT_UNKNOWN.
using identified_mesh_reader = int (*)(const char* filename, element_type only, identified_mesh& mesh);

/// Has the mesh of a file read, in blocks. The outputs are empty when the result is negative.
inline int read_blocks(identified_mesh_reader read, const char* filename, dense2D<double>& coords,
                       dense2D<unsigned>& connectivity, dense1D<unsigned>& block_offsets, dense1D<int>& block_types,
                       dense1D<unsigned>& property_IDs, dense1D<unsigned>& element_IDs,
                       dense1D<unsigned>& node_IDs) noexcept {
  identified_mesh mesh;
  const int result = read(filename, ELT_UNKNOWN, mesh);
  if (result < 0) mesh = identified_mesh();
  coords = std::move(mesh.coords);
  connectivity = std::move(mesh.elements.connectivity);
  block_offsets = std::move(mesh.elements.offsets);
  block_types = std::move(mesh.elements.types);
  property_IDs = std::move(mesh.elements.labels[0]);
  element_IDs = std::move(mesh.elements.labels[1]);
  node_IDs = std::move(mesh.node_IDs);
  return result;
}

/// Has the elements of one type read.
inline int read_type(identified_mesh_reader read, const char* filename, dense2D<double>& coords,
                     dense2D<unsigned>& connectivity, element_type type) noexcept {
  identified_mesh mesh;
  const int result = is_readable(type) ? read(filename, type, mesh) : no_type_to_read;
  if (result < 0) mesh = identified_mesh();
  coords = std::move(mesh.coords);
  connectivity = std::move(mesh.elements.connectivity);
  return result;
}

}  // namespace qel::gridwork::detail::io

#endif
