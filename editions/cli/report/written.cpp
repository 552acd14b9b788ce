#include "written.h"

#include <algorithm>

namespace report {

namespace {

// A mesh as the functions take it that write several matrices.
struct matrices {
  std::vector<qel::dense2D<unsigned>> connectivities;
  qel::dense1D<int> types;
};

bool split(const mesh& m, matrices& all) {
  for (const block& b : m.blocks) {
    all.connectivities.push_back(b.connectivity);
    if (!all.types.push_back(b.type)) return false;
  }
  return true;
}

template <class Write>
int write_range(const char* path, const mesh& m, Write write) {
  matrices all;
  if (!split(m, all)) return out_of_memory;
  const qel::dense2D<unsigned>* first = all.connectivities.data();
  return write(path, m.coords, first, first + all.connectivities.size(), all.types);
}

double squared_length(const qel::dense2D<double>& coords, unsigned a, unsigned b) {
  double sum = 0;
  for (unsigned k = 0; k < coords.rows(); ++k) sum += (coords(k, a) - coords(k, b)) * (coords(k, a) - coords(k, b));
  return sum;
}

// Appends the two triangles of each quadrangle on the sides of its shorter diagonal.
bool append_halves(const qel::dense2D<double>& coords, const qel::dense2D<unsigned>& quads,
                   qel::dense2D<unsigned>& triangles) {
  for (std::uint64_t e = 0; e < quads.cols(); ++e) {
    const unsigned* q = quads.column(e);
    const unsigned first = squared_length(coords, q[0], q[2]) <= squared_length(coords, q[1], q[3]) ? 0 : 1;
    const auto corner = [&](unsigned k) { return q[(first + k) % 4]; };
    if (!triangles.push_back_column({corner(0), corner(1), corner(2)}) ||
        !triangles.push_back_column({corner(0), corner(2), corner(3)})) {
      return false;
    }
  }
  return true;
}

bool append(const qel::dense2D<unsigned>& from, qel::dense2D<unsigned>& to) {
  const std::uint64_t before = to.cols();
  if (!to.resize(from.rows(), before + from.cols())) return false;
  for (std::uint64_t e = 0; e < from.cols(); ++e) {
    std::copy(from.begin_column(e), from.end_column(e), to.begin_column(before + e));
  }
  return true;
}

bool elements_of(const mesh& m, gw::element_type type, qel::dense2D<unsigned>& all) {
  return std::all_of(m.blocks.begin(), m.blocks.end(),
                     [&](const block& b) { return b.type != type || append(b.connectivity, all); });
}

// A mesh as the functions take it that write one matrix of blocks.
struct joined {
  qel::dense2D<unsigned> connectivity;
  qel::dense1D<unsigned> offsets, properties;
  qel::dense1D<int> types;
};

constexpr unsigned last_ID = 0x7FFFFFFF;

// Properties are IDs.
bool is_property(unsigned reference) { return 1 <= reference && reference <= last_ID; }

// 0 where no element has a property.
unsigned largest_property(const mesh& m) {
  unsigned largest = 0;
  for (const block& b : m.blocks) {
    for (const unsigned r : b.references) largest = is_property(r) ? std::max(largest, r) : largest;
  }
  return largest;
}

// The property of an element is its reference, if that can be one; else the number of its block from 1 on, behind the
// largest reference that is one.
bool append(const block& b, unsigned largest, joined& all) {
  const std::uint64_t before = all.properties.size();
  const std::uint64_t after = before + b.connectivity.cols();
  if (!all.types.push_back(b.type) || !all.offsets.push_back(static_cast<unsigned>(after))) return false;
  const auto number = static_cast<unsigned>(all.types.size());
  const unsigned other = largest <= last_ID - number ? largest + number : number;
  if (!all.properties.resize(after, other)) return false;
  for (std::uint64_t e = 0; e < b.connectivity.cols(); ++e) {
    std::copy(b.connectivity.begin_column(e), b.connectivity.end_column(e), all.connectivity.begin_column(before + e));
  }
  for (std::uint64_t e = 0; e < b.references.size(); ++e) {
    if (is_property(b.references[e])) all.properties[before + e] = b.references[e];
  }
  return true;
}

bool join(const mesh& m, joined& all) {
  std::uint64_t rows = 0;
  for (const block& b : m.blocks) rows = std::max(rows, b.connectivity.rows());
  const unsigned largest = largest_property(m);
  return all.connectivity.resize(rows, count_elements(m), ~0U) && all.offsets.push_back(0U) &&
         std::all_of(m.blocks.begin(), m.blocks.end(), [&](const block& b) { return append(b, largest, all); });
}

// Elements of one dimension, with their references.
bool join_linear(const mesh& m, block& all) {
  if (m.blocks.size() == 1) {
    all = m.blocks.front();
    return true;
  }
  if (!linear_elements(m, mesh_dim(m), all)) return false;
  for (const block& b : m.blocks) {
    const std::uint64_t before = all.references.size();
    if (!all.references.resize(before + b.references.size())) return false;
    std::copy_n(b.references.data(), b.references.size(), all.references.data() + before);
  }
  return true;
}

// What has nodes at all and is no mixture.
bool is_plain(gw::element_type type) { return element_dim(type) != 0; }

}  // namespace

bool stl_holds(gw::element_type type) { return type == gw::ELT_TRIA3 || type == gw::ELT_QUAD4; }

int write_stl(const char* path, const mesh& m, bool text) {
  qel::dense2D<unsigned> triangles, quads;
  const bool granted = elements_of(m, gw::ELT_TRIA3, triangles) && elements_of(m, gw::ELT_QUAD4, quads) &&
                       append_halves(m.coords, quads, triangles);
  return granted ? gw::STL_output(path, m.coords, triangles, text) : out_of_memory;
}

bool obj_holds(gw::element_type type) { return stl_holds(type); }

int write_obj(const char* path, const mesh& m, bool /*text*/) {
  qel::dense2D<unsigned> triangles, quads;
  if (!elements_of(m, gw::ELT_TRIA3, triangles) || !elements_of(m, gw::ELT_QUAD4, quads)) return out_of_memory;
  return gw::WavefrontOBJ_output(path, m.coords, triangles, quads, gw::ELT_TRIA3, gw::ELT_QUAD4);
}

bool medit_holds(gw::element_type type) {
  return is_plain(type) && type != gw::ELT_PYRAMID13 && type != gw::ELT_WEDGE15;
}

// The library's writer takes references for one matrix only, which may be a mixed one, and leaves out what has the last
// of all.
int write_medit(const char* path, const mesh& m, bool /*text*/) {
  const auto all_blocks = [&](auto test) { return std::all_of(m.blocks.begin(), m.blocks.end(), test); };
  if (all_blocks([](const block& b) { return b.references.empty(); }))
    return write_range(path, m, [](const auto&... arguments) { return gw::medit_output(arguments...); });
  const bool is_one_matrix = all_blocks([&](const block& b) {
    const unsigned* const first = b.references.data();
    const bool all_written = std::all_of(first, first + b.references.size(), [](unsigned r) { return r != ~0U; });
    return !b.references.empty() && all_written && element_dim(b.type) == mesh_dim(m);
  });
  if (!is_one_matrix) return write_medit_sections(path, m);
  block all;
  if (!join_linear(m, all)) return out_of_memory;
  return gw::medit_output(path, m.coords, all.connectivity, all.type, all.references);
}

bool vtk_holds(gw::element_type type) { return medit_holds(type); }

int write_vtk(const char* path, const mesh& m, bool /*text*/) {
  return write_range(path, m, [](const auto&... arguments) { return gw::vtk_output(arguments...); });
}

bool nastran_holds(gw::element_type type) { return is_plain(type); }

int write_nastran(const char* path, const mesh& m, bool /*text*/) {
  joined all;
  if (!join(m, all)) return out_of_memory;
  return gw::NASTRAN_output(path, m.coords, all.connectivity, all.offsets, all.types, all.properties);
}

int write_femap(const char* path, const mesh& m, bool /*text*/) {
  joined all;
  if (!join(m, all)) return out_of_memory;
  return gw::FEMAP_output(path, m.coords, all.connectivity, all.offsets, all.types, all.properties);
}

bool ensight_holds(gw::element_type type) {
  return is_plain(type) && type != gw::ELT_WEDGE15 && nbr_base_nodes(type) != 5;
}

int write_ensight(const char* path, const mesh& m, bool /*text*/) {
  return write_range(path, m, [](const auto&... arguments) { return gw::ensight_output(arguments...); });
}

}  // namespace report
