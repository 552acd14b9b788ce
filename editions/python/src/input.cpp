#include "arrays.h"
#include "core.h"
#include "files.h"

namespace core {

namespace {

using gw::element_type;
using gw::operation;
using types_read = qel::dense1D<int>;
using typed_blocks = std::vector<std::pair<int, cells>>;

/// The matrix of each type, out of the one matrix that a reader returns.
typed_blocks split(const cells& connectivity, const indices& offsets, const types_read& types) {
  typed_blocks all;
  for (std::uint64_t k = 0; k < types.size(); ++k) {
    const unsigned nodes = gw::nbr_nodes(static_cast<element_type>(types[k]));
    all.emplace_back(types[k], copied(connectivity.sub_matrix(0, offsets[k], nodes, offsets[k + 1] - offsets[k])));
  }
  return all;
}

std::pair<matrix, cells> stl_input(const std::string& path) {
  std::pair<matrix, cells> mesh;
  read(operation::STL_input, path, [&] { return gw::STL_input(path.c_str(), mesh.first, mesh.second); });
  return {shaped(std::move(mesh.first), 3), shaped(std::move(mesh.second), 3)};
}

std::tuple<matrix, matrix, matrix, cells, cells> wavefront_obj_input(const std::string& path) {
  matrix coords;
  matrix normals;
  matrix uvs;
  cells triangles;
  cells quads;
  read(operation::WavefrontOBJ_input, path,
       [&] { return gw::WavefrontOBJ_input(path.c_str(), coords, normals, uvs, triangles, quads); });
  return {shaped(std::move(coords), 3), shaped(std::move(normals), 3), shaped(std::move(uvs), 2),
          shaped(std::move(triangles), 3), shaped(std::move(quads), 4)};
}

/// Of a file without nodes, 3 columns.
matrix points(matrix coords) { return coords.empty() ? shaped(std::move(coords), 3) : coords; }

std::tuple<matrix, typed_blocks, indices, int> vtk_input(const std::string& path) {
  matrix coords;
  cells connectivity;
  indices offsets;
  types_read types;
  indices cell_ids;
  const int skipped = read(operation::vtk_input, path,
                           [&] { return gw::vtk_input(path.c_str(), coords, connectivity, offsets, types, cell_ids); });
  return {points(std::move(coords)), split(connectivity, offsets, types), std::move(cell_ids), skipped};
}

std::tuple<matrix, typed_blocks, indices, indices, int> medit_input(const std::string& path) {
  matrix coords;
  cells connectivity;
  indices offsets;
  types_read types;
  indices references;
  indices node_references;
  const int skipped = read(operation::medit_input, path, [&] {
    return gw::medit_input(path.c_str(), coords, connectivity, offsets, types, references, node_references);
  });
  return {points(std::move(coords)), split(connectivity, offsets, types), std::move(references),
          std::move(node_references), skipped};
}

std::tuple<unsigned, matrix, std::vector<int>> medit_solution_input(const std::string& path) {
  unsigned dim = 0;
  matrix fields;
  types_read kinds;
  read(operation::medit_solution_input, path,
       [&] { return gw::medit_solution_input(path.c_str(), dim, fields, kinds); });
  return {dim, std::move(fields), std::vector<int>(kinds.begin(), kinds.end())};
}

using deck = std::tuple<matrix, typed_blocks, indices, indices, indices, int>;

/// NASTRAN_input() or FEMAP_input().
template <class Reader>
deck read_deck(operation call, const std::string& path, Reader reader) {
  matrix coords;
  cells connectivity;
  indices offsets;
  types_read types;
  indices properties;
  indices elements;
  indices nodes;
  const int skipped = read(call, path, [&] {
    return reader(path.c_str(), coords, connectivity, offsets, types, properties, elements, nodes);
  });
  return {points(std::move(coords)), split(connectivity, offsets, types),
          std::move(properties),     std::move(elements),
          std::move(nodes),          skipped};
}

deck nastran_input(const std::string& path) {
  return read_deck(operation::NASTRAN_input, path, [](auto&&... all) { return gw::NASTRAN_input(all...); });
}

deck femap_input(const std::string& path) {
  return read_deck(operation::FEMAP_input, path, [](auto&&... all) { return gw::FEMAP_input(all...); });
}

/// The elements of one type alone.
template <class Reader>
std::pair<matrix, cells> read_type(operation call, const std::string& path, element_type type, Reader reader) {
  std::pair<matrix, cells> mesh;
  read(call, path, [&] { return reader(path.c_str(), mesh.first, mesh.second, type); });
  return {points(std::move(mesh.first)), shaped(std::move(mesh.second), gw::nbr_nodes(type))};
}

std::pair<matrix, cells> vtk_input_type(const std::string& path, element_type type) {
  return read_type(operation::vtk_input, path, type, [](auto&&... all) { return gw::vtk_input(all...); });
}

std::pair<matrix, cells> medit_input_type(const std::string& path, element_type type) {
  return read_type(operation::medit_input, path, type, [](auto&&... all) { return gw::medit_input(all...); });
}

std::pair<matrix, cells> nastran_input_type(const std::string& path, element_type type) {
  return read_type(operation::NASTRAN_input, path, type, [](auto&&... all) { return gw::NASTRAN_input(all...); });
}

std::pair<matrix, cells> femap_input_type(const std::string& path, element_type type) {
  return read_type(operation::FEMAP_input, path, type, [](auto&&... all) { return gw::FEMAP_input(all...); });
}

}  // namespace

void bind_input(py::module_& m) {
  def(m, "stl_input", stl_input);
  def(m, "wavefront_obj_input", wavefront_obj_input);
  def(m, "vtk_input", vtk_input);
  def(m, "vtk_input", vtk_input_type);
  def(m, "medit_input", medit_input);
  def(m, "medit_input", medit_input_type);
  def(m, "medit_solution_input", medit_solution_input);
  def(m, "nastran_input", nastran_input);
  def(m, "nastran_input", nastran_input_type);
  def(m, "femap_input", femap_input);
  def(m, "femap_input", femap_input_type);
}

}  // namespace core
