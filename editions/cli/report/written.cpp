#include "written.h"

#include <algorithm>

namespace report {

namespace {

// A mesh as the functions take it that write several matrices.
struct matrices {
  std::vector<qel::dense2D<unsigned>> connectivities;
  qel::dense1D<int> types;
};

matrices split(const mesh& m) {
  matrices all;
  for (const block& b : m.blocks) {
    all.connectivities.push_back(b.connectivity);
    require_memory(all.types.push_back(b.type));
  }
  return all;
}

template <class Write>
int write_range(const char* path, const mesh& m, Write write) {
  const matrices all = split(m);
  const qel::dense2D<unsigned>* first = all.connectivities.data();
  return write(path, m.coords, first, first + all.connectivities.size(), all.types);
}

double squared_length(const qel::dense2D<double>& coords, unsigned a, unsigned b) {
  double sum = 0;
  for (unsigned k = 0; k < coords.rows(); ++k) sum += (coords(k, a) - coords(k, b)) * (coords(k, a) - coords(k, b));
  return sum;
}

// Appends the two triangles of each quadrangle on the sides of its shorter diagonal.
void append_halves(const qel::dense2D<double>& coords, const qel::dense2D<unsigned>& quads,
                   qel::dense2D<unsigned>& triangles) {
  for (std::uint64_t e = 0; e < quads.cols(); ++e) {
    const unsigned* q = quads.column(e);
    const unsigned first = squared_length(coords, q[0], q[2]) <= squared_length(coords, q[1], q[3]) ? 0 : 1;
    const auto corner = [&](unsigned k) { return q[(first + k) % 4]; };
    require_memory(triangles.push_back_column({corner(0), corner(1), corner(2)}));
    require_memory(triangles.push_back_column({corner(0), corner(2), corner(3)}));
  }
}

void append(const qel::dense2D<unsigned>& from, qel::dense2D<unsigned>& to) {
  const std::uint64_t before = to.cols();
  require_memory(to.resize(from.rows(), before + from.cols()));
  for (std::uint64_t e = 0; e < from.cols(); ++e) {
    std::copy(from.begin_column(e), from.end_column(e), to.begin_column(before + e));
  }
}

qel::dense2D<unsigned> elements_of(const mesh& m, gw::element_type type) {
  qel::dense2D<unsigned> all;
  for (const block& b : m.blocks) {
    if (b.type == type) append(b.connectivity, all);
  }
  return all;
}

// What has nodes at all and is no mixture.
bool is_plain(gw::element_type type) { return element_dim(type) != 0; }

}  // namespace

bool stl_holds(gw::element_type type) { return type == gw::ELT_TRIA3 || type == gw::ELT_QUAD4; }

int write_stl(const char* path, const mesh& m, bool text) {
  qel::dense2D<unsigned> triangles = elements_of(m, gw::ELT_TRIA3);
  append_halves(m.coords, elements_of(m, gw::ELT_QUAD4), triangles);
  return gw::STL_output(path, m.coords, triangles, text);
}

bool obj_holds(gw::element_type type) { return stl_holds(type); }

int write_obj(const char* path, const mesh& m, bool /*text*/) {
  return gw::WavefrontOBJ_output(path, m.coords, elements_of(m, gw::ELT_TRIA3), elements_of(m, gw::ELT_QUAD4),
                                 gw::ELT_TRIA3, gw::ELT_QUAD4);
}

bool medit_holds(gw::element_type type) {
  return is_plain(type) && type != gw::ELT_PYRAMID13 && type != gw::ELT_WEDGE15;
}

int write_medit(const char* path, const mesh& m, bool /*text*/) {
  return write_range(path, m, [](const auto&... arguments) { return gw::medit_output(arguments...); });
}

bool vtk_holds(gw::element_type type) { return medit_holds(type); }

int write_vtk(const char* path, const mesh& m, bool /*text*/) {
  return write_range(path, m, [](const auto&... arguments) { return gw::vtk_output(arguments...); });
}

bool nastran_holds(gw::element_type type) { return is_plain(type); }

int write_nastran(const char* path, const mesh& m, bool /*text*/) {
  std::uint64_t rows = 0, column = 0;
  for (const block& b : m.blocks) rows = std::max(rows, b.connectivity.rows());
  qel::dense2D<unsigned> all;
  qel::dense1D<unsigned> offsets, properties;
  qel::dense1D<int> types;
  require_memory(all.resize(rows, count_elements(m), ~0U) && offsets.push_back(0U));
  for (const block& b : m.blocks) {
    for (std::uint64_t e = 0; e < b.connectivity.cols(); ++e, ++column) {
      std::copy(b.connectivity.begin_column(e), b.connectivity.end_column(e), all.begin_column(column));
    }
    require_memory(types.push_back(b.type) && offsets.push_back(static_cast<unsigned>(column)) &&
                   properties.resize(column, static_cast<unsigned>(types.size())));
  }
  return gw::NASTRAN_output(path, m.coords, all, offsets, types, properties);
}

bool ensight_holds(gw::element_type type) {
  return is_plain(type) && type != gw::ELT_WEDGE15 && nbr_base_nodes(type) != 5;
}

int write_ensight(const char* path, const mesh& m, bool /*text*/) {
  return write_range(path, m, [](const auto&... arguments) { return gw::ensight_output(arguments...); });
}

}  // namespace report
