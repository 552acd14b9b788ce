#include "boundary.h"

#include "cleaning.h"
#include "turning.h"

namespace report {

namespace {

// Columns of a mixed face matrix become blocks of triangles and quadrangles; `fits` tells which.
template <class Test>
outcome add_columns(const qel::dense2D<unsigned>& all, gw::element_type type, Test fits, mesh& m) {
  block b{type, {}};
  for (std::uint64_t e = 0; e < all.cols(); ++e) {
    if (fits(all.column(e)) && !append_element(all.column(e), b)) return outcome::of_memory(false);
  }
  if (!b.connectivity.empty()) m.blocks.push_back(b);
  return {};
}

outcome set_blocks(const qel::dense2D<unsigned>& sides, mesh& m) {
  m.blocks.clear();
  if (sides.empty()) return {};
  if (sides.rows() < 4) {
    m.blocks.push_back({sides.rows() == 2 ? gw::ELT_EDGE2 : gw::ELT_TRIA3, sides});
    return {};
  }
  const outcome done = add_columns(
      sides, gw::ELT_TRIA3, [](const unsigned* s) { return s[3] == ~0U; }, m);
  return done.failed() ? done
                       : add_columns(
                             sides, gw::ELT_QUAD4, [](const unsigned* s) { return s[3] != ~0U; }, m);
}

// Six times the volume of the tetrahedron of three nodes and the first node of the mesh.
double volume(const mesh& m, unsigned a, unsigned b, unsigned c) {
  double d[3][3];
  const unsigned nodes[] = {a, b, c};
  for (unsigned i = 0; i < 3; ++i) {
    for (unsigned k = 0; k < 3; ++k) d[i][k] = m.coords(k, nodes[i]) - m.coords(k, 0);
  }
  return d[0][0] * (d[1][1] * d[2][2] - d[1][2] * d[2][1]) - d[0][1] * (d[1][0] * d[2][2] - d[1][2] * d[2][0]) +
         d[0][2] * (d[1][0] * d[2][1] - d[1][1] * d[2][0]);
}

double volume_within(const mesh& m) {
  double sum = 0;
  for (const block& b : m.blocks) {
    for (std::uint64_t e = 0; e < b.connectivity.cols(); ++e) {
      const unsigned* nodes = b.connectivity.column(e);
      for (std::uint64_t k = 2; k < b.connectivity.rows(); ++k) sum += volume(m, nodes[0], nodes[k - 1], nodes[k]);
    }
  }
  return sum;
}

outcome turn_outwards(mesh& m) {
  if (m.coords.rows() != 3 || volume_within(m) >= 0) return {};
  for (block& b : m.blocks) {
    const outcome done = turn_over(b);
    if (done.failed()) return done;
  }
  return {};
}

}  // namespace

outcome take_boundary(mesh& m) {
  const unsigned dim = mesh_dim(m);
  block all;
  qel::dense2D<unsigned> neighbors, sides;
  if (dim >= 2 && !linear_elements(m, dim, all)) return outcome::of_memory(false);
  const outcome found{gw::operation::get_neighbors, get_neighbors(all.connectivity, all.type, true, neighbors)};
  if (dim < 2 || found.failed()) return dim < 2 ? set_blocks(sides, m) : found;
  const outcome listed{gw::operation::get_mesh_boundaries,
                       get_mesh_boundaries(all.connectivity, neighbors, all.type, sides)};
  const outcome set = listed.failed() ? listed : set_blocks(sides, m);
  const outcome turned = set.failed() || dim < 3 ? set : turn_outwards(m);
  if (!turned.failed() && m.blocks.empty()) m.coords.clear();
  return turned.failed() || m.blocks.empty() ? turned : remove_unused_nodes(m);
}

}  // namespace report
