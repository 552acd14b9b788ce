#include "arrays.h"
#include "core.h"
#include "files.h"

namespace core {

namespace {

using gw::element_type;
using gw::operation;

void stl_output(const std::string& path, const matrix& coords, const cells& triangles, bool ascii) {
  write(operation::STL_output, path, [&] { return gw::STL_output(path.c_str(), coords, triangles, ascii); });
}

void wavefront_obj_output(const std::string& path, const matrix& coords, const matrix& normals, const matrix& uvs,
                          const cells& triangles, const cells& quads) {
  write(operation::WavefrontOBJ_output, path,
        [&] { return gw::WavefrontOBJ_output(path.c_str(), coords, normals, uvs, triangles, quads); });
}

std::tuple<unsigned, indices, indices> vtk_convert(const blocks& all, const std::vector<int>& types) {
  std::tuple<unsigned, indices, indices> result = {0, {}, {}};
  for (std::size_t k = 0; k < all.size(); ++k) {
    checked(operation::vtk_convert, gw::vtk_convert(all[k], static_cast<element_type>(types[k]), std::get<0>(result),
                                                    std::get<1>(result), std::get<2>(result)));
  }
  return result;
}

void vtk_output(const std::string& path, const matrix& coords, const blocks& all, const std::vector<int>& types) {
  write(operation::vtk_output, path,
        [&] { return gw::vtk_output(path.c_str(), coords, all.data(), all.data() + all.size(), type_list(types)); });
}

void medit_output(const std::string& path, const matrix& coords, const blocks& all, const std::vector<int>& types) {
  write(operation::medit_output, path,
        [&] { return gw::medit_output(path.c_str(), coords, all.data(), all.data() + all.size(), type_list(types)); });
}

void medit_output_references(const std::string& path, const matrix& coords, const cells& connectivity,
                             element_type type, const indices& references) {
  write(operation::medit_output_references, path,
        [&] { return gw::medit_output(path.c_str(), coords, connectivity, type, references); });
}

void ensight_output(const std::string& path, const matrix& coords, const blocks& all, const std::vector<int>& types) {
  write(operation::ensight_output, path, [&] {
    return gw::ensight_output(path.c_str(), coords, all.data(), all.data() + all.size(), type_list(types));
  });
}

void medit_scalar(const std::string& path, unsigned dim, const values& field) {
  write(operation::medit_scalar, path, [&] { return gw::medit_scalar(path.c_str(), dim, field); });
}

void medit_vector(const std::string& path, unsigned dim, const matrix& field) {
  write(operation::medit_vector, path, [&] { return gw::medit_vector(path.c_str(), dim, field); });
}

void medit_tensor(const std::string& path, const matrix& metrics) {
  write(operation::medit_tensor, path, [&] { return gw::medit_tensor(path.c_str(), metrics); });
}

/// All matrices in one, as NASTRAN_output() and FEMAP_output() take blocks; offsets of these.
std::pair<cells, indices> joined(const blocks& all) {
  std::uint64_t rows = 0;
  std::uint64_t cols = 0;
  indices offsets(1, 0);
  for (const cells& block : all) {
    rows = std::max(rows, block.rows());
    cols += block.cols();
    if (!offsets.push_back(static_cast<unsigned>(cols))) throw std::bad_alloc();
  }
  cells connectivity(rows, cols, ~0U);
  if (connectivity.cols() != cols || cols > ~0U) throw std::bad_alloc();
  for (std::size_t k = 0; k < all.size(); ++k) {
    for (std::uint64_t j = 0; j < all[k].cols(); ++j) {
      std::copy_n(all[k].column(j), all[k].rows(), connectivity.column(offsets[k] + j));
    }
  }
  return {std::move(connectivity), std::move(offsets)};
}

void nastran_output(const std::string& path, const matrix& coords, const blocks& all, const std::vector<int>& types,
                    const indices& property_ids) {
  const auto [connectivity, offsets] = joined(all);
  write(operation::NASTRAN_output, path, [&, &connectivity = connectivity, &offsets = offsets] {
    return gw::NASTRAN_output(path.c_str(), coords, connectivity, offsets, type_list(types), property_ids);
  });
}

void femap_output(const std::string& path, const matrix& coords, const blocks& all, const std::vector<int>& types,
                  const indices& property_ids) {
  const auto [connectivity, offsets] = joined(all);
  write(operation::FEMAP_output, path, [&, &connectivity = connectivity, &offsets = offsets] {
    return gw::FEMAP_output(path.c_str(), coords, connectivity, offsets, type_list(types), property_ids);
  });
}

void nastran_output_type(const std::string& path, const matrix& coords, const cells& connectivity, element_type type) {
  write(operation::NASTRAN_output, path, [&] { return gw::NASTRAN_output(path.c_str(), coords, connectivity, type); });
}

void femap_output_type(const std::string& path, const matrix& coords, const cells& connectivity, element_type type) {
  write(operation::FEMAP_output, path, [&] { return gw::FEMAP_output(path.c_str(), coords, connectivity, type); });
}

}  // namespace

void bind_output(py::module_& m) {
  def(m, "stl_output", stl_output);
  def(m, "wavefront_obj_output", wavefront_obj_output);
  def(m, "vtk_convert", vtk_convert);
  def(m, "vtk_output", vtk_output);
  def(m, "medit_output", medit_output);
  def(m, "medit_output", medit_output_references);
  def(m, "ensight_output", ensight_output);
  def(m, "medit_scalar", medit_scalar);
  def(m, "medit_vector", medit_vector);
  def(m, "medit_tensor", medit_tensor);
  def(m, "nastran_output", nastran_output);
  def(m, "nastran_output", nastran_output_type);
  def(m, "femap_output", femap_output);
  def(m, "femap_output", femap_output_type);
}

}  // namespace core
