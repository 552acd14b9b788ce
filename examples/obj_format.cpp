// OBJ files: what is in them, and in words what is wrong with a damaged one.
#include <qel/gridwork.h>

#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>

#include "mesh_format.h"

namespace {

namespace gw = qel::gridwork;
using gw::operation;

constexpr int no_such_node = -3;  // beside the codes of the library's reader

survey look_at_obj(const std::string& path) {
  survey file = look_at_text(path);
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) {
    std::istringstream words(line);
    std::string word;
    if (!(words >> word)) continue;
    if (word == "v") ++file.nodes;
    if (word != "f") continue;
    unsigned corners = 0;
    while (words >> word) ++corners;
    if (corners == 3) ++file.triangles;
    if (corners == 4) file.triangles += 2;
  }
  return file;
}

double squared_length(const qel::dense2D<double>& coords, unsigned a, unsigned b) {
  double sum = 0;
  for (unsigned k = 0; k < 3; ++k) sum += (coords(k, a) - coords(k, b)) * (coords(k, a) - coords(k, b));
  return sum;
}

// Appends the two triangles of each quadrangle on the sides of its shorter diagonal.
bool append_halves(const qel::dense2D<double>& coords, const qel::dense2D<unsigned>& quads,
                   qel::dense2D<unsigned>& triangles) {
  for (std::uint64_t e = 0; e < quads.cols(); ++e) {
    const unsigned* q = quads.column(e);
    const unsigned first = squared_length(coords, q[0], q[2]) <= squared_length(coords, q[1], q[3]) ? 0 : 1;
    const auto corner = [&](unsigned k) { return q[(first + k) % 4]; };
    if (!triangles.push_back_column({corner(0), corner(1), corner(2)})) return false;
    if (!triangles.push_back_column({corner(0), corner(2), corner(3)})) return false;
  }
  return true;
}

int read_obj(const std::string& path, mesh& m) {
  qel::dense2D<double> normals, uvs;
  qel::dense2D<unsigned> quads;
  const int code = gw::WavefrontOBJ_input(path.c_str(), m.coords, normals, uvs, m.connectivity, quads);
  if (code != 0) return code;
  const auto n = static_cast<unsigned>(m.coords.cols());
  if (!gw::check_IDs(m.connectivity, gw::ELT_TRIA3, n) || !gw::check_IDs(quads, gw::ELT_QUAD4, n)) return no_such_node;
  if (!append_halves(m.coords, quads, m.connectivity)) return -199;
  for (const int result : {gw::merge(m.coords, m.connectivity, 0.0, 0), gw::remove_degenerated(m.connectivity, true),
                           gw::simplify(m.coords, m.connectivity, 0)}) {
    if (result < 0) return result;
  }
  return 0;
}

int write_obj(const std::string& path, const mesh& m, bool /*text*/) {
  return gw::WavefrontOBJ_output(path.c_str(), m.coords, m.connectivity, gw::ELT_TRIA3);
}

bool obj_is_complete(const survey& file, const mesh& m) {
  return file.nodes == m.coords.cols() && file.triangles == m.connectivity.cols() && file.whole_lines;
}

std::string explain_obj(int code, const std::string& /*path*/, const survey& file) {
  if (code == -1) return message(operation::WavefrontOBJ_input, code);
  if (code == -2) return "a line that starts with v, vn, vt or f breaks the OBJ grammar";
  if (code == no_such_node) return "a face has a corner at a node that is not there, or counts back from the last one";
  if (code == -199) return "there is not enough memory for its " + number(file.triangles) + " triangles";
  return code == 0 ? "no triangle is left" : message(operation::merge_elements, code);
}

}  // namespace

const format obj_format = {
    "OBJ", {".obj"}, look_at_obj, read_obj, explain_obj, operation::WavefrontOBJ_output, write_obj, obj_is_complete};
