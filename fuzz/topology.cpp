// Neighbours, boundaries, sub-domains, node lists and edges of any mesh beside what the definitions make of it.
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

/// A boundary from another node on, perhaps in the other direction, now and then with a node changed.
id_list turned(input& in, id_list b) {
  const auto end = b.end() - (b.size() == 4 && b[3] == none ? 1 : 0);
  std::rotate(b.begin(), b.begin() + in.below(static_cast<unsigned>(end - b.begin())), end);
  if (in.flag()) std::reverse(b.begin(), end);
  if (in.below(8) == 0) std::swap(b[0], b[b.size() / 2]);
  if (in.below(8) == 0) b[in.below(static_cast<unsigned>(b.size()))] = in.below(24);
  return b;
}

/// Boundaries, turned, some of them changed; neighbours and ancestors that may contradict the mesh.
void look_up(input& in, const mesh_model& mesh, const dense2D<unsigned>& m, id_lists neighbors) {
  const bool contradictory = in.flag();
  const auto n = static_cast<unsigned>(m.cols());
  const id_list ancestors = contradictory ? in.list(30, n) : mesh.ancestors(id_list(max_ID(m) + 1, none));
  for (id_list& of_one : neighbors) of_one = contradictory ? in.list(mesh.B, n) : of_one;
  id_lists wanted = mesh.list_boundaries(nullptr);
  id_list expected;
  for (id_list& b : wanted) {
    b = turned(in, b);
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

/// Slots of the mesh, some of them twice, and `~0U`.
id_list slots_of(input& in, const mesh_model& mesh, unsigned most) {
  id_list slots(in.below(most));
  const auto bound = static_cast<unsigned>(mesh.B * mesh.elements.size());
  for (unsigned& slot : slots) slot = bound == 0 || in.below(16) == 0 ? none : in.raw<std::uint16_t>() % bound;
  return slots;
}

void check_subdomains(input& in, const mesh_model& mesh, const dense2D<unsigned>& m, element_type type,
                      const id_lists& neighbors) {
  const id_list slots = slots_of(in, mesh, 12);
  id_lists of_slots, given = mesh.list_boundaries(nullptr), of_nodes;
  for (const unsigned slot : slots) {
    if (slot != none && slot % mesh.B < mesh.boundaries[slot / mesh.B].size())
      of_slots.push_back(mesh.boundaries[slot / mesh.B][slot % mesh.B]);
  }
  given.resize(std::min<std::size_t>(given.size(), in.below(24)));
  for (id_list& wall : given) of_nodes.push_back(without_padding(wall = turned(in, wall)));
  const dense2D<unsigned> adjacent = in.view(to_matrix(neighbors, mesh.B)),
                          walls = in.view(to_matrix(given, boundary_rows[mesh.type]));
  const auto check = [&](int count, const dense1D<unsigned>& colors, const id_lists& closed) {
    const id_list expected = mesh.subdomains(neighbors, closed);
    CHECK(to_list(colors) == expected);
    CHECK(count == (expected.empty() ? 0 : int(*std::max_element(expected.begin(), expected.end())) + 1));
  };
  dense1D<unsigned> colors{7}, between_slots(to_array(slots)), between_nodes{7};
  check(get_subdomains(adjacent, colors), colors, {});
  check(get_subdomains(m, adjacent, type, between_slots, between_slots), between_slots, of_slots);
  check(get_subdomains(m, adjacent, type, walls, between_nodes), between_nodes, of_nodes);
}

void check_elfes(const mesh_model& mesh, const id_list& given, const id_lists& neighbors, const id_list& colors,
                 const dense2D<unsigned>& adjacent) {
  const id_list expected = order_of(given, mesh.B, neighbors, colors);
  dense1D<unsigned> slots = to_array(given), order{7}, offsets;
  dense2D<unsigned> pairs(1, 1);
  const int groups = sort_elfes(adjacent, to_array(colors), slots, order, pairs, offsets);
  CHECK(groups >= 0 && to_list(order) == expected && slots.size() == given.size());
  CHECK(pairs.rows() == 2 && int(pairs.cols()) == groups && int(offsets.size()) == groups + 1 && offsets[0] == 0);
  for (unsigned g = 0; g < unsigned(groups); ++g) {
    CHECK(offsets[g] < offsets[g + 1]);
    CHECK(g == 0 || columns(pairs)[g - 1] < columns(pairs)[g]);
    for (unsigned i = offsets[g]; i < offsets[g + 1]; ++i) {
      const unsigned across = slots[i] == none ? none : adjacent(slots[i] % mesh.B, slots[i] / mesh.B);
      CHECK(slots[i] != none && slots[i] == given[expected[i]] && pairs(0, g) == colors[slots[i] / mesh.B]);
      CHECK(pairs(1, g) == (across == none ? none : colors[across]));
    }
  }
  for (unsigned i = offsets[unsigned(groups)]; i < slots.size(); ++i) CHECK(slots[i] == none);
}

void check_colors(input& in, const mesh_model& mesh, const dense2D<unsigned>& m, element_type type,
                  const id_lists& neighbors) {
  const unsigned mode = in.below(3);
  id_list colors = in.list(static_cast<unsigned>(mesh.elements.size()), 1 + in.below(4)), expected_slots = {9};
  for (unsigned& color : colors) color = color == 2 ? 4000000000U : color;
  id_lists expected_nodes = {id_list(boundary_rows[mesh.type], 6)}, expected_pairs = {{5, 4}};
  for (const color_boundary& b : mesh.color_boundaries(neighbors, colors, mode)) {
    expected_slots.push_back(b.slot);
    expected_nodes.push_back(b.nodes);
    expected_pairs.push_back(b.colors);
  }
  const dense2D<unsigned> adjacent = in.view(to_matrix(neighbors, mesh.B));
  dense1D<unsigned> slots{9};
  dense2D<unsigned> nodes = in.view(dense2D<unsigned>(boundary_rows[mesh.type], 1, 6U)), pairs(2, 1, {5, 4}),
                    pairs_of_nodes = in.view(dense2D<unsigned>(2, 1, {5, 4}));
  CHECK(get_colors_boundaries(m, adjacent, type, to_array(colors), mode, slots, pairs) == 0);
  CHECK(get_colors_boundaries(m, adjacent, type, to_array(colors), mode, nodes, pairs_of_nodes) == 0);
  CHECK(to_list(slots) == expected_slots && columns(pairs) == expected_pairs);
  CHECK(columns(nodes) == expected_nodes && columns(pairs_of_nodes) == expected_pairs);
  expected_slots.erase(expected_slots.begin());
  check_elfes(mesh, in.flag() ? expected_slots : slots_of(in, mesh, 80), neighbors, colors, adjacent);
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
  if (linear) {
    id_lists neighbors = mesh.neighbors(in.flag());
    const bool contradictory = in.below(4) == 0;
    for (id_list& of_one : neighbors) of_one = contradictory ? in.list(mesh.B, unsigned(m.cols())) : of_one;
    check_subdomains(in, mesh, m, given, neighbors);
    check_colors(in, mesh, m, given, neighbors);
  }
  if (few_nodes) check_node_lists(mesh, m);
  // Where a mixed solid must not have `~0U`, what its edges are is left open.
  if (well_formed || given != ELT_SOLID_MIX) check_edges(mesh, m, given);
  return 0;
}
