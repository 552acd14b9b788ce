// Splits the nodes of a mesh into parts of equal size with few edges between them, by METIS.
//
// usage: partition_mesh PARTS [-i FILE.stl] [-o FILE.vtk]
//
// Without a file to read, a block of tetrahedra is split. The file written holds the mesh with the part of each element
// and of each node as data, by which a viewer colours it.
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

std::vector<idx_t> parts_of_elements(const mesh& m, const partition& p) {
  std::vector<idx_t> parts(m.connectivity.cols());
  for (std::uint64_t e = 0; e < parts.size(); ++e) parts[e] = part_of_element(m, p, e);
  return parts;
}

// A section of a VTK file: one number for each cell or point.
void write_data(std::FILE* file, const char* section, const std::vector<idx_t>& values) {
  std::fprintf(file, "%s %zu\nSCALARS part int 1\nLOOKUP_TABLE default\n", section, values.size());
  for (const idx_t value : values) std::fprintf(file, "%lld\n", static_cast<long long>(value));
}

// The library writes the mesh to a stream that stays open, so that data can follow.
void write(const mesh& m, const std::vector<idx_t>& element_parts, const std::vector<idx_t>& node_parts,
           const std::string& path) {
  unsigned count = 0;
  dense1D<unsigned> cells, types;
  check(gridwork::vtk_convert(m.connectivity, m.type, count, cells, types), "vtk_convert");
  std::FILE* file = std::fopen(path.c_str(), "w");
  if (file == nullptr) fail(path + ": cannot be opened");
  const int result = gridwork::vtk_output(file, m.coords, count, cells, types);
  write_data(file, "CELL_DATA", element_parts);
  write_data(file, "POINT_DATA", node_parts);
  const bool complete = std::ferror(file) == 0;
  if (std::fclose(file) != 0 || !complete) fail(path + ": cannot be written");
  check(result, path);
}

void run(idx_t parts, const char* input, const char* output) {
  const mesh m = input != nullptr ? read_surface(input) : block(20);
  const partition p = split(m, parts);
  const std::vector<idx_t> part_of_element = parts_of_elements(m, p);
  std::printf("%llu nodes, %llu elements\n", static_cast<unsigned long long>(m.coords.cols()),
              static_cast<unsigned long long>(m.connectivity.cols()));
  for (idx_t part = 0; part < parts; ++part) {
    std::printf("part %lld: %td nodes, %td elements\n", static_cast<long long>(part),
                std::count(p.part_of_node.begin(), p.part_of_node.end(), part),
                std::count(part_of_element.begin(), part_of_element.end(), part));
  }
  std::printf("%lld edges between parts\n", static_cast<long long>(p.cut_edges));
  if (output != nullptr) write(m, part_of_element, p.part_of_node, output);
}

struct options {
  long parts = 0;
  const char* input = nullptr;
  const char* output = nullptr;
};

// Leaves `parts` at 0 where the arguments are wrong.
options parse(int argc, char** argv) {
  options o;
  const long parts = argc >= 2 ? std::strtol(argv[1], nullptr, 10) : 0;
  for (int i = 2; i < argc; i += 2) {
    const std::string name = argv[i];
    if (i + 1 == argc || (name != "-i" && name != "-o")) return o;
    (name == "-i" ? o.input : o.output) = argv[i + 1];
  }
  if (parts <= 100000) o.parts = parts;
  return o;
}

}  // namespace

int main(int argc, char** argv) {
  const options o = parse(argc, argv);
  if (o.parts < 1) {
    std::fprintf(stderr, "usage: partition_mesh PARTS [-i FILE.stl] [-o FILE.vtk]\n");
    return 2;
  }
  try {
    run(static_cast<idx_t>(o.parts), o.input, o.output);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "partition_mesh: %s\n", problem.what());
    return 1;
  }
  return 0;
}
