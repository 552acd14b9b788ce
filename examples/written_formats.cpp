// Formats that the library only writes. Its writers do not report a full disk, so the lines of a file are counted.
#include <qel/gridwork.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "mesh_format.h"

namespace {

namespace gw = qel::gridwork;
namespace fs = std::filesystem;
using gw::operation;

template <int (*Write)(const char*, const qel::dense2D<double>&, const qel::dense2D<unsigned>&, gw::element_type)>
int write(const std::string& path, const mesh& m, bool /*text*/) {
  return Write(path.c_str(), m.coords, m.connectivity, gw::ELT_TRIA3);
}

// The lines of a file: so many in any case, and for each node, for each triangle, and where there is a triangle.
template <unsigned Always, unsigned Node, unsigned Triangle, unsigned Triangles>
bool has_all_lines(const survey& file, const mesh& m) {
  const std::uint64_t n = m.coords.cols(), e = m.connectivity.cols();
  return file.whole_lines && file.lines == Always + Node * n + Triangle * e + (e == 0 ? 0 : Triangles);
}

std::string geometry_beside(const std::string& path) { return fs::path(path).replace_extension(".geo").string(); }

// What viewers open: a file that names the geometry, which lies beside it.
int write_case(const std::string& path, const mesh& m, bool text) {
  const std::string geometry = geometry_beside(path);
  std::ofstream out(path);
  out << "FORMAT\ntype: ensight\nGEOMETRY\nmodel: " << fs::path(geometry).filename().string() << "\n";
  return out.flush() ? write<gw::ensight_output>(geometry, m, text) : -1;
}

survey look_at_case(const std::string& path) {
  survey file = look_at_text(geometry_beside(path));
  file.whole_lines = file.whole_lines && look_at_text(path).lines == 4;
  return file;
}

format only_written(const char* name, std::vector<std::string> extensions, operation writer,
                    decltype(format::write) write, decltype(format::complete) complete,
                    decltype(format::look) look = look_at_text) {
  return {name, std::move(extensions), look, nullptr, nullptr, writer, write, complete};
}

}  // namespace

const format vtk_format =
    only_written("VTK", {".vtk"}, operation::vtk_output, write<gw::vtk_output>, has_all_lines<10, 1, 2, 0>);
const format medit_format =
    only_written("MEDIT", {".mesh"}, operation::medit_output, write<gw::medit_output>, has_all_lines<8, 1, 1, 3>);
const format nastran_format = only_written("NASTRAN", {".nas", ".bdf"}, operation::NASTRAN_output,
                                           write<gw::NASTRAN_output>, has_all_lines<14, 2, 1, 0>);
const format ensight_format =
    only_written("EnSight", {".geo"}, operation::ensight_output, write<gw::ensight_output>, has_all_lines<6, 1, 1, 4>);
const format ensight_case_format =
    only_written("EnSight", {".case"}, operation::ensight_output, write_case, has_all_lines<6, 1, 1, 4>, look_at_case);
