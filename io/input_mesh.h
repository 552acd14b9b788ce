// What the readers of elements in blocks have in common: how they open a file, and how they return what it holds.
#ifndef QEL_GRIDWORK_IO_INPUT_MESH_H
#define QEL_GRIDWORK_IO_INPUT_MESH_H

#include <cstdint>
#include <utility>

#include "core/result.h"
#include "io/bytes/block_reader.h"
#include "io/bytes/file.h"
#include "io/element_collector.h"
#include "io/input_result.h"
#include "qel/dense.h"
#include "qel/gridwork/elements.h"

namespace qel::gridwork::detail::io {

/// Opens a file and calls read(blocks, size), with a size of 0 where it is not known. Returns what that does, or why it
/// was not called.
template <class Read>
int read_file(const char* filename, Read read) noexcept {
  const file input(filename, access::read);
  if (!input.is_open()) return not_opened;
  const std::uint64_t size = input.size();
  block_reader blocks(input.stream());
  return blocks.prepare() ? read(blocks, size) : out_of_memory;
}

/// A mesh, whose formats add what they have beside it.
struct input_mesh {
  dense2D<double> coords;
  element_blocks elements;
};

/// Reads the elements of one type, or of all for ELT_UNKNOWN.
template <class Mesh>
using mesh_reader = int (*)(const char* filename, element_type only, Mesh& mesh);

/// Reads all elements. What is not among the outputs is left in `mesh`; all is empty when the result is negative.
template <class Mesh>
int read_blocks(mesh_reader<Mesh> read, const char* filename, Mesh& mesh, dense2D<double>& coords,
                dense2D<unsigned>& connectivity, dense1D<unsigned>& block_offsets, dense1D<int>& block_types) noexcept {
  const int result = read(filename, ELT_UNKNOWN, mesh);
  if (result < 0) mesh = Mesh();
  coords = std::move(mesh.coords);
  connectivity = std::move(mesh.elements.connectivity);
  block_offsets = std::move(mesh.elements.offsets);
  block_types = std::move(mesh.elements.types);
  return result;
}

/// True for a type that can be read alone.
constexpr bool is_readable(element_type type) noexcept { return type > ELT_EDGE_MIX && type <= ELT_HEXA27; }

/// Reads the elements of one type. The outputs are empty when the result is negative.
template <class Mesh>
int read_type(mesh_reader<Mesh> read, const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
              element_type type) noexcept {
  Mesh mesh;
  const int result = is_readable(type) ? read(filename, type, mesh) : no_type_to_read;
  if (result < 0) mesh = Mesh();
  coords = std::move(mesh.coords);
  connectivity = std::move(mesh.elements.connectivity);
  return result;
}

}  // namespace qel::gridwork::detail::io

#endif
