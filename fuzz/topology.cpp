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
  const unsigned first = well_formed && in.below(8) == 0 ? 3999999990U : in.below(4);
  dense2D<unsigned> m = in.nodes(nbr_nodes(type), in.below(50), 1 + in.below(24));
  const auto shapes = members(type);
  for (unsigned j = 0; well_formed && j < m.cols(); ++j) {
    const unsigned used = nbr_nodes(shapes[in.below(static_cast<unsigned>(shapes.size()))]);
    for (unsigned i = 0; i < m.rows(); ++i) m(i, j) = i >= used ? none : first + (m(i, j) == none ? 0 : m(i, j));
  }
  return m;
}

id_lists lists(const dense1D<unsigned>& offsets, const dense1D<unsigned>& list) {
  id_lists all;
  CHECK(offsets[0] == 0 && offsets[offsets.size() - 1] == list.size());
  for (unsigned n = 1; n < offsets.size(); ++n) {
    all.emplace_back(list.begin() + offsets[n - 1], list.begin() + offsets[n]);
  }
  return all;
}

template <class Entry>
std::vector<Entry> behind(const Entry& first, std::vector<Entry> others) {
  others.insert(others.begin(), first);
  return others;
}

/// Boundaries, turned and reversed, some of them changed; neighbours and ancestors that may contradict the mesh.
void look_up(input& in, const mesh_model& mesh, const dense2D<unsigned>& m, id_lists neighbors) {
  const bool contradictory = in.flag();
  const auto n = static_cast<unsigned>(m.cols());
  const id_list ancestors = contradictory ? in.list(30, n) : mesh.ancestors(id_list(max_ID(m) + 1, none));
  for (id_list& of_one : neighbors) of_one = contradictory ? in.list(mesh.B, n) : of_one;
  id_lists wanted = mesh.list_boundaries(nullptr);
  id_list expected;
  for (id_list& b : wanted) {
    const auto end = b.end() - (b.size() == 4 && b[3] == none ? 1 : 0);
    std::rotate(b.begin(), b.begin() + in.below(static_cast<unsigned>(end - b.begin())), end);
    if (in.flag()) std::reverse(b.begin(), end);
    if (in.below(8) == 0) std::swap(b[0], b[b.size() / 2]);
    if (in.below(8) == 0) b[in.below(static_cast<unsigned>(b.size()))] = in.below(24);
    expected.push_back(mesh.slot_of(b, neighbors, ancestors));
  }
  dense1D<unsigned> slots{7};
  unsigned B = 77;
  CHECK(get_elements_on_boundaries(in.view(to_matrix(wanted, boundary_rows[mesh.type])), m,
                                   in.view(to_matrix(neighbors, mesh.B)), to_array(ancestors), mesh.type, slots,
                                   B) == 0);
  CHECK(to_list(slots) == expected && B == (wanted.empty() ? 0 : mesh.B));
}

void check_boundaries(input& in, const mesh_model& mesh, const dense2D<unsigned>& m, element_type type) {
  const bool pair_non_manifold = in.flag();
  const id_lists expected = mesh.neighbors(pair_non_manifold);
  dense2D<unsigned> neighbors(2, 2, 5U), all = in.view(dense2D<unsigned>(boundary_rows[mesh.type], 1, 6U)), free;
  CHECK(free.copy(all));
  dense1D<unsigned> slots{9};
  unsigned B = 77;
  const id_list old(all.rows(), 6);
  CHECK(get_neighbors(m, type, pair_non_manifold, neighbors) == 0 && columns(neighbors) == expected);
  CHECK(get_element_boundaries(m, type, all) == 0);
  CHECK(columns(all) == behind(old, mesh.list_boundaries(nullptr)));
  CHECK(get_mesh_boundaries(m, in.view(neighbors), type, free) == 0);
  CHECK(columns(free) == behind(old, mesh.list_boundaries(&expected)));
  CHECK(get_mesh_bounding_elements(m, in.view(neighbors), type, slots, B) == 0);
  CHECK(to_list(slots) == behind(9U, mesh.free_slots(expected)) && B == (m.empty() ? 0 : mesh.B));
}

void check_node_lists(const mesh_model& mesh, const dense2D<unsigned>& m) {
  const id_list used = unique({m});
  const std::uint64_t n = m.empty() ? 0 : std::uint64_t{max_ID(m)} + 1;
  dense1D<unsigned> ancestors, part(n / 2 + 1, 3U), offsets{4, 4}, list{4};
  CHECK(get_ancestors(m, ancestors) == 0 && to_list(ancestors) == mesh.ancestors(id_list(n, none)));
  CHECK(get_ancestors(m, part) == 0 && to_list(part) == mesh.ancestors(id_list(n / 2 + 1, 3)));
  CHECK(get_connected_elements(m, offsets, list) == 0 && lists(offsets, list) == mesh.node_lists(n));
  CHECK(get_node_graph(m, offsets, list) == 0 && lists(offsets, list) == mesh.graph(n));
}

void check_edges(const mesh_model& mesh, const dense2D<unsigned>& m, element_type type) {
  const auto expected = mesh.edges();
  const id_lists appended = behind({8, 7}, id_lists(expected.begin(), expected.end()));
  const std::vector<dense2D<unsigned>> range = {m, dense2D<unsigned>(), m.sub_matrix(0, 0, m.rows(), m.cols() / 2)};
  dense2D<unsigned> edges(2, 1, {8, 7}), edges_of_range(2, 1, {8, 7});
  CHECK(copy_edges(m, type, edges) == 0 && columns(edges) == appended);
  CHECK(copy_edges(range.data(), range.data() + 3, {type, ELT_HEXA8, type}, edges_of_range) == 0);
  CHECK(columns(edges_of_range) == appended);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  input in(data, size);
  const unsigned kind = in.below(5);  // a lattice, well formed elements (two of five), any entries, any type
  const bool linear = kind != 4, well_formed = kind < 3;
  const element_type type = linear ? accepted[in.below(9)] : static_cast<element_type>(1 + in.below(22));
  random_meshes::generator random(in.raw<std::uint16_t>());
  const dense2D<unsigned> m =
      kind == 0 ? in.view(grid(type, 1 + in.below(3), random)) : elements(in, type, well_formed);
  const bool solid = type == ELT_TETRA4 || type == ELT_PYRAMID5 || type == ELT_WEDGE6, face = type == ELT_TRIA3;
  const element_type given = !in.flag() || m.empty() ? type : solid ? ELT_SOLID_MIX : face ? ELT_FACE_MIX : type;
  const mesh_model mesh(m, given);
  // What a list of nothing but `~0U` holds is left open.
  const bool few_nodes = m.empty() || (!unique({m}).empty() && max_ID(m) < 100000);
  if (linear) check_boundaries(in, mesh, m, given);
  if (well_formed && few_nodes) look_up(in, mesh, m, mesh.neighbors(in.flag()));
  if (few_nodes) check_node_lists(mesh, m);
  // Where a mixed solid must not have `~0U`, what its edges are is left open.
  if (well_formed || given != ELT_SOLID_MIX) check_edges(mesh, m, given);
  return 0;
}
