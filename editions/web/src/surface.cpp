#include "surface.h"

#include <algorithm>

namespace web {

namespace {

using report::outcome;

// Faces, and the element that each of them belongs to.
struct faces {
  qel::dense2D<unsigned> nodes;
  std::vector<unsigned> owners;
};

unsigned count_nodes(const qel::dense2D<unsigned>& matrix, std::uint64_t column) {
  const unsigned* first = matrix.begin_column(column);
  return static_cast<unsigned>(std::find(first, matrix.end_column(column), ~0U) - first);
}

// By the number of its nodes.
unsigned count_sides(unsigned nodes) { return nodes == 4 ? 4 : nodes == 8 ? 6 : 5; }

void find_owners(const report::block& solids, const qel::dense2D<unsigned>& neighbors, std::vector<unsigned>& owners) {
  for (unsigned e = 0; e < neighbors.cols(); ++e) {
    const unsigned* const first = neighbors.begin_column(e);
    const auto open = std::count(first, first + count_sides(count_nodes(solids.connectivity, e)), ~0U);
    owners.insert(owners.end(), static_cast<std::size_t>(open), e);
  }
}

outcome find_boundary(const report::block& solids, faces& found) {
  qel::dense2D<unsigned> neighbors;
  const int paired = get_neighbors(solids.connectivity, solids.type, false, neighbors);
  if (paired < 0) return {report::gw::operation::get_neighbors, paired};
  find_owners(solids, neighbors, found.owners);
  return {report::gw::operation::get_mesh_boundaries,
          get_mesh_boundaries(solids.connectivity, neighbors, solids.type, found.nodes)};
}

outcome find_faces(const report::mesh& m, unsigned dim, faces& found) {
  report::block all;
  if (!linear_elements(m, dim, all)) return outcome::of_memory(false);
  if (dim == 3) return find_boundary(all, found);
  found.nodes = all.connectivity;
  for (unsigned e = 0; e < found.nodes.cols(); ++e) found.owners.push_back(e);
  return {};
}

// Of all elements of a dimension, block after block.
outcome find_qualities(const report::mesh& m, unsigned dim, std::vector<double>& qualities) {
  for (const report::block& b : m.blocks) {
    if (element_dim(b.type) != dim) continue;
    qel::dense1D<double> its;
    bool turned = false;
    const outcome done = block_qualities(m, b, its, turned);
    if (done.failed()) return done;
    qualities.insert(qualities.end(), its.begin(), its.end());
  }
  return {};
}

// The number of each piece, at its first node.
std::vector<unsigned> number_pieces(const std::vector<unsigned>& piece) {
  std::vector<unsigned> numbers(piece.size(), ~0U);
  unsigned count = 0;
  for (unsigned n = 0; n < piece.size(); ++n) {
    if (piece[n] == n) numbers[n] = count++;
  }
  return numbers;
}

void add_positions(const report::mesh& m, const report::box& bounds, std::vector<float>& positions) {
  positions.reserve(3 * m.coords.cols());
  for (std::uint64_t n = 0; n < m.coords.cols(); ++n) {
    for (unsigned k = 0; k < 3; ++k) {
      const double x = k < m.coords.rows() ? m.coords(k, n) : 0;
      positions.push_back(static_cast<float>(x - (bounds.lower[k] / 2 + bounds.upper[k] / 2)));
    }
  }
}

// Of triangle k - 2 of the fan round the first of so many nodes.
unsigned char outline(unsigned k, unsigned nodes) {
  const unsigned char last = k + 1 == nodes ? 2 : 0, first = k == 2 ? 4 : 0;
  return 1 | last | first;
}

void add_triangles(const faces& all, const std::vector<double>& qualities, const report::summary& known,
                   surface& drawn) {
  const std::vector<unsigned> numbers = number_pieces(known.use.piece);
  for (std::uint64_t f = 0; f < all.nodes.cols(); ++f) {
    const unsigned* const node = all.nodes.begin_column(f);
    const unsigned nodes = count_nodes(all.nodes, f);
    for (unsigned k = 2; k < nodes; ++k) {
      drawn.triangles.insert(drawn.triangles.end(), {node[0], node[k - 1], node[k]});
      drawn.qualities.push_back(all.owners[f] < qualities.size() ? static_cast<float>(qualities[all.owners[f]]) : 0);
      drawn.pieces.push_back(numbers[known.use.piece[node[0]]]);
      drawn.outlines.push_back(outline(k, nodes));
    }
  }
}

}  // namespace

outcome make_surface(const report::mesh& m, const report::summary& known, surface& drawn) {
  add_positions(m, known.bounds, drawn.positions);
  const unsigned dim = mesh_dim(m);
  if (dim < 2 || !known.valid) return {};
  faces all;
  const outcome found = find_faces(m, dim, all);
  if (found.failed()) return found;
  std::vector<double> qualities;
  const outcome measured = m.coords.rows() < 2 ? outcome{} : find_qualities(m, dim, qualities);
  if (!measured.failed()) add_triangles(all, qualities, known, drawn);
  return measured;
}

}  // namespace web
