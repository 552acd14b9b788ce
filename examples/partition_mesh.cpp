// Splits the nodes of a mesh into parts of equal size with few edges between them, by METIS.
//
// usage: partition_mesh PARTS [FILE.stl [PREFIX]]
//
// Without a file, a block of tetrahedra is split. With a prefix, each part is written as PREFIX-0.vtk, PREFIX-1.vtk ...
#include <metis.h>
#include <qel/gridwork.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace gridwork = qel::gridwork;
using qel::dense1D;
using qel::dense2D;

struct mesh {
  dense2D<double> coords;
  dense2D<unsigned> connectivity;
  gridwork::element_type type = gridwork::ELT_TRIA3;
};

struct partition {
  std::vector<idx_t> part_of_node;
  idx_t cut_edges = 0;
};

[[noreturn]] void fail(const std::string& message) { throw std::runtime_error(message); }

void check(int result, const std::string& step) {
  if (result < 0) fail(step + ": result code " + std::to_string(result));
}

mesh read_surface(const char* path) {
  mesh m;
  check(gridwork::STL_input(path, m.coords, m.connectivity), path);
  if (m.connectivity.empty()) fail(std::string(path) + ": there are no triangles");
  return m;
}

// A block of n x n x n cubes, six tetrahedra in each: one for every way from corner 0 to corner 7 along three edges.
// Bit k of a corner's number tells its side along axis k.
mesh block(unsigned n) {
  constexpr unsigned ways[6][2] = {{3, 1}, {1, 5}, {2, 3}, {6, 2}, {5, 4}, {4, 6}};
  const unsigned row = n + 1;
  mesh m{dense2D<double>(3, std::uint64_t{row} * row * row), dense2D<unsigned>(4, std::uint64_t{6} * n * n * n),
         gridwork::ELT_TETRA4};
  if (m.coords.empty() || m.connectivity.empty()) fail("there is not enough memory");
  for (unsigned node = 0; node < m.coords.cols(); ++node) {
    const unsigned position[3] = {node % row, node / row % row, node / row / row};
    for (unsigned axis = 0; axis < 3; ++axis) m.coords(axis, node) = position[axis];
  }
  for (unsigned e = 0; e < m.connectivity.cols(); ++e) {
    const unsigned cell = e / 6;
    const unsigned first = (cell / n / n * row + cell / n % n) * row + cell % n;
    const unsigned corners[4] = {0, ways[e % 6][0], ways[e % 6][1], 7};
    for (unsigned i = 0; i < 4; ++i) {
      m.connectivity(i, e) = first + (corners[i] & 1) + (corners[i] >> 1 & 1) * row + (corners[i] >> 2) * row * row;
    }
  }
  return m;
}

// The compressed rows of the node graph are METIS's xadj and adjncy.
partition split(const mesh& m, idx_t parts) {
  dense1D<unsigned> offsets, adjacency;
  check(gridwork::get_node_graph(m.connectivity, offsets, adjacency), "get_node_graph");
  std::vector<idx_t> xadj(offsets.begin(), offsets.end());
  std::vector<idx_t> adjncy(adjacency.begin(), adjacency.end());
  idx_t nodes = static_cast<idx_t>(offsets.size() - 1);
  idx_t weights = 1;
  partition result{std::vector<idx_t>(offsets.size() - 1)};
  if (parts == 1) return result;  // METIS wants two or more
  const int code = METIS_PartGraphKway(&nodes, &weights, xadj.data(), adjncy.data(), nullptr, nullptr, nullptr, &parts,
                                       nullptr, nullptr, nullptr, &result.cut_edges, result.part_of_node.data());
  if (code != METIS_OK) fail("METIS_PartGraphKway: code " + std::to_string(code));
  return result;
}

// The part that most nodes of an element are in; the lowest of several.
idx_t part_of_element(const mesh& m, const partition& p, std::uint64_t e) {
  idx_t best = 0;
  std::ptrdiff_t most = 0;
  for (const unsigned* node = m.connectivity.begin_column(e); node != m.connectivity.end_column(e); ++node) {
    const idx_t part = p.part_of_node[*node];
    const std::ptrdiff_t votes = std::count_if(m.connectivity.begin_column(e), m.connectivity.end_column(e),
                                               [&](unsigned other) { return p.part_of_node[other] == part; });
    if (votes < most || (votes == most && part > best)) continue;
    most = votes;
    best = part;
  }
  return best;
}

std::vector<std::vector<unsigned>> elements_of_parts(const mesh& m, const partition& p, idx_t parts) {
  std::vector<std::vector<unsigned>> elements(static_cast<std::size_t>(parts));
  for (unsigned e = 0; e < m.connectivity.cols(); ++e) {
    elements[static_cast<std::size_t>(part_of_element(m, p, e))].push_back(e);
  }
  return elements;
}

// Writes some elements with the nodes that they use.
void write(const mesh& m, const std::vector<unsigned>& elements, const std::string& path) {
  mesh part{{}, dense2D<unsigned>(m.connectivity.rows(), elements.size()), m.type};
  if (!part.coords.copy(m.coords) || part.connectivity.cols() != elements.size()) fail("there is not enough memory");
  for (std::size_t i = 0; i < elements.size(); ++i) {
    std::copy_n(m.connectivity.column(elements[i]), m.connectivity.rows(), part.connectivity.column(i));
  }
  check(gridwork::simplify(part.coords, part.connectivity, 0), "simplify");
  check(gridwork::vtk_output(path.c_str(), part.coords, part.connectivity, part.type), path);
}

void run(idx_t parts, const char* path, const std::string& prefix) {
  const mesh m = path != nullptr ? read_surface(path) : block(20);
  const partition p = split(m, parts);
  const auto elements = elements_of_parts(m, p, parts);
  std::printf("%llu nodes, %llu elements\n", static_cast<unsigned long long>(m.coords.cols()),
              static_cast<unsigned long long>(m.connectivity.cols()));
  for (std::size_t i = 0; i < elements.size(); ++i) {
    const auto nodes = std::count(p.part_of_node.begin(), p.part_of_node.end(), static_cast<idx_t>(i));
    std::printf("part %zu: %td nodes, %zu elements\n", i, nodes, elements[i].size());
    if (!prefix.empty()) write(m, elements[i], prefix + "-" + std::to_string(i) + ".vtk");
  }
  std::printf("%lld edges between parts\n", static_cast<long long>(p.cut_edges));
}

}  // namespace

int main(int argc, char** argv) {
  const long parts = argc >= 2 ? std::strtol(argv[1], nullptr, 10) : 0;
  if (argc > 4 || parts < 1 || parts > 100000) {
    std::fprintf(stderr, "usage: partition_mesh PARTS [FILE.stl [PREFIX]]\n");
    return 2;
  }
  try {
    run(static_cast<idx_t>(parts), argc > 2 ? argv[2] : nullptr, argc > 3 ? argv[3] : "");
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "partition_mesh: %s\n", problem.what());
    return 1;
  }
  return 0;
}
