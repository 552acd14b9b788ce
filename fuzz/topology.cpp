// Neighbours, boundaries, node lists and edges of any mesh beside what the definitions make of it.
#include "fuzz/input.h"
#include "tests/topology_reference.h"

namespace {

using namespace fuzz;
using namespace reference;

constexpr element_type accepted[] = {ELT_EDGE2,  ELT_FACE_MIX, ELT_TRIA3,  ELT_QUAD4, ELT_SOLID_MIX,
                                     ELT_TETRA4, ELT_PYRAMID5, ELT_WEDGE6, ELT_HEXA8};

/// Elements on few nodes, so that they meet; if they are to be well formed, of a member of the type each.
dense2D<unsigned> elements(input& in, element_type type, bool well_formed) {
  dense2D<unsigned> m = in.nodes(nbr_nodes(type), in.below(20), 1 + in.below(24));
  const auto shapes = members(type);
  for (unsigned j = 0; well_formed && j < m.cols(); ++j) {
    const unsigned used = nbr_nodes(shapes[in.below(static_cast<unsigned>(shapes.size()))]);
    for (unsigned i = 0; i < m.rows(); ++i) m(i, j) = i >= used ? none : m(i, j) == none ? 0 : m(i, j);
  }
  return m;
}

id_lists lists(const dense1D<unsigned>& offsets, const dense1D<unsigned>& list) {
  id_lists all;
  for (unsigned n = 1; n < offsets.size(); ++n) {
    all.emplace_back(list.begin() + offsets[n - 1], list.begin() + offsets[n]);
  }
  return all;
}

void look_up(input& in, const mesh_model& mesh, const dense2D<unsigned>& m, id_lists neighbors) {
  const bool contradictory = in.flag();
  id_list ancestors = contradictory ? in.list(30, static_cast<unsigned>(m.cols())) : mesh.ancestors(id_list(24, none));
  for (id_list& of_one : neighbors) of_one = contradictory ? in.list(mesh.B, static_cast<unsigned>(m.cols())) : of_one;
  id_lists wanted = mesh.list_boundaries(nullptr);
  for (id_list& b : wanted) {
    if (in.flag()) std::reverse(b.begin(), b.end() - (b.size() == 4 && b[3] == none ? 1 : 0));
    if (in.below(8) == 0) b[in.below(static_cast<unsigned>(b.size()))] = in.below(24);
  }
  dense1D<unsigned> slots;
  unsigned B = 77;
  CHECK(get_elements_on_boundaries(to_matrix(wanted, boundary_rows[mesh.type]), m, to_matrix(neighbors, mesh.B),
                                   to_array(ancestors), mesh.type, slots, B) == 0);
  CHECK(slots.size() == wanted.size() && (wanted.empty() || B == mesh.B));
  for (unsigned j = 0; j < wanted.size(); ++j) CHECK(slots[j] == mesh.slot_of(wanted[j], neighbors, ancestors));
}

void check_boundaries(input& in, const mesh_model& mesh, const dense2D<unsigned>& m, bool well_formed) {
  const bool pair_non_manifold = in.flag();
  const id_lists expected = mesh.neighbors(pair_non_manifold);
  dense2D<unsigned> neighbors, all, free;
  dense1D<unsigned> slots;
  unsigned B;
  CHECK(get_neighbors(m, mesh.type, pair_non_manifold, neighbors) == 0 && columns(neighbors) == expected);
  CHECK(get_element_boundaries(m, mesh.type, all) == 0 && columns(all) == mesh.list_boundaries(nullptr));
  CHECK(get_mesh_boundaries(m, neighbors, mesh.type, free) == 0 && columns(free) == mesh.list_boundaries(&expected));
  CHECK(get_mesh_bounding_elements(m, neighbors, mesh.type, slots, B) == 0);
  CHECK(to_list(slots) == mesh.free_slots(expected) && B == (m.empty() ? 0 : mesh.B));
  if (well_formed) look_up(in, mesh, m, expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  input in(data, size);
  const bool linear = in.below(4) != 0, well_formed = linear && in.below(4) != 0;
  const element_type type = linear ? accepted[in.below(9)] : static_cast<element_type>(1 + in.below(22));
  const dense2D<unsigned> m = elements(in, type, well_formed);
  const mesh_model mesh(m, type);
  if (linear) check_boundaries(in, mesh, m, well_formed);
  const id_list used = unique({m});
  const std::uint64_t n = used.empty() ? 0 : *std::max_element(used.begin(), used.end()) + 1;
  dense1D<unsigned> ancestors, offsets, list;
  dense2D<unsigned> edges;
  CHECK(get_ancestors(m, ancestors) == 0 && (n == 0 || to_list(ancestors) == mesh.ancestors(id_list(n, none))));
  CHECK(get_connected_elements(m, offsets, list) == 0 && lists(offsets, list) == mesh.node_lists(n));
  CHECK(get_node_graph(m, offsets, list) == 0 && lists(offsets, list) == mesh.graph(n));
  const auto expected = mesh.edges();
  CHECK(copy_edges(m, type, edges) == 0);
  CHECK((type == ELT_SOLID_MIX && !well_formed) || columns(edges) == id_lists(expected.begin(), expected.end()));
  return 0;
}
