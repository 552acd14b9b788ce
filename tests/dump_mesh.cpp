// Prints what the readers make of the mesh files of a folder, as a JSON object with one entry a file.
#include <cstdio>
#include <filesystem>
#include <set>
#include <string>

#include "qel/gridwork.h"

namespace {

using namespace qel::gridwork;
using qel::dense1D;
using qel::dense2D;
using std::string;

constexpr const char* type_names[] = {"UNKNOWN", "NODE",    "EDGE_MIX", "EDGE2",     "EDGE3",     "FACE_MIX",
                                      "TRIA3",   "QUAD4",   "TRIA6",    "QUAD8",     "QUAD9",     "SOLID_MIX",
                                      "TETRA4",  "TETRA10", "PYRAMID5", "PYRAMID13", "PYRAMID14", "WEDGE6",
                                      "WEDGE15", "WEDGE18", "HEXA8",    "HEXA20",    "HEXA27"};

struct mesh {
  int result = 0;
  dense2D<double> coords;
  dense2D<unsigned> connectivity;
  dense1D<unsigned> offsets, references, element_IDs, node_IDs;
  dense1D<int> types;
};

/// Prints a list of what `print` prints for 0 .. n - 1.
template <class Print>
void print_list(const char* brackets, unsigned n, Print print) {
  std::putchar(brackets[0]);
  for (unsigned k = 0; k < n; ++k) {
    std::fputs(k == 0 ? "" : ", ", stdout);
    print(k);
  }
  std::putchar(brackets[1]);
}

template <class Value>
void print_vector(unsigned n, Value value) {
  print_list("[]", n, [&](unsigned k) { std::printf("%.17g", value(k)); });
}

/// Prints an entry for each block: its type, and what `print` prints for it.
template <class Print>
void print_blocks(const char* key, const mesh& m, Print print) {
  std::printf(", \"%s\": ", key);
  print_list("{}", unsigned(m.types.size()), [&](unsigned b) {
    std::printf("\"%s\": ", type_names[m.types[b]]);
    print(m.offsets[b], m.offsets[b + 1], nbr_nodes(element_type(m.types[b])));
  });
}

double bound(const dense2D<double>& columns, unsigned i, double sign) {
  double largest = -1e300;
  for (unsigned j = 0; j < columns.cols(); ++j) largest = std::max(largest, sign * columns(i, j));
  return sign * largest;
}

/// Prints the box of some columns, and the first and the last of them.
void print_columns(const dense2D<double>& columns, const char* first, const char* last) {
  const auto rows = unsigned(columns.rows());
  std::printf(", \"box\": ");
  print_list("[]", 2, [&](unsigned end) {
    print_vector(rows, [&](unsigned i) { return bound(columns, i, end == 0 ? -1 : 1); });
  });
  std::printf(", \"%s\": ", first);
  print_vector(rows, [&](unsigned i) { return columns(i, 0); });
  std::printf(", \"%s\": ", last);
  print_vector(rows, [&](unsigned i) { return columns(i, columns.cols() - 1); });
}

void print_sums(const char* key, const mesh& m, const dense1D<unsigned>& labels) {
  if (labels.empty()) return;
  print_blocks(key, m, [&](unsigned first, unsigned last, unsigned) {
    long long sum = 0;
    for (unsigned j = first; j < last; ++j) sum += labels[j];
    std::printf("%lld", sum);
  });
}

void print_nodes(const mesh& m) {
  print_columns(m.coords, "first_node", "last_node");
  if (m.node_IDs.empty()) return;
  long long sum = 0;
  for (const unsigned ID : m.node_IDs) sum += ID;
  std::printf(", \"node_IDs\": {\"first\": %u, \"last\": %u, \"sum\": %lld}", m.node_IDs[0],
              m.node_IDs[m.node_IDs.size() - 1], sum);
}

/// The sum over the elements and their nodes of (k + 1) times the place of node k.
double moment(const mesh& m, unsigned first, unsigned last, unsigned nodes, unsigned i) {
  double sum = 0;
  for (unsigned j = first; j < last; ++j) {
    for (unsigned k = 0; k < nodes; ++k) sum += (k + 1) * m.coords(i, m.connectivity(k, j));
  }
  return sum;
}

void print_mesh(const mesh& m) {
  std::printf("{\"result\": %d, \"nodes\": %u, \"rows\": %u", m.result, unsigned(m.coords.cols()),
              unsigned(m.coords.rows()));
  print_blocks("elements", m, [](unsigned first, unsigned last, unsigned) { std::printf("%u", last - first); });
  if (!m.coords.empty()) print_nodes(m);
  print_blocks("moments", m, [&](unsigned first, unsigned last, unsigned nodes) {
    print_vector(unsigned(m.coords.rows()), [&](unsigned i) { return moment(m, first, last, nodes, i); });
  });
  print_sums("element_IDs", m, m.element_IDs);
  print_sums("references", m, m.references);
  std::printf("}");
}

/// Reads a file by the end of its name; false for one that no reader here takes.
bool read(const std::filesystem::path& file, mesh& m) {
  const string path = file.string(), end = file.extension().string();
  const bool is_nastran = end == ".bdf" || end == ".dat" || end == ".nas";
  dense1D<unsigned> node_references;
  if (is_nastran) {
    m.result = NASTRAN_input(path.c_str(), m.coords, m.connectivity, m.offsets, m.types, m.references, m.element_IDs,
                             m.node_IDs);
  }
  if (end == ".neu") {
    m.result = FEMAP_input(path.c_str(), m.coords, m.connectivity, m.offsets, m.types, m.references, m.element_IDs,
                           m.node_IDs);
  }
  if (end == ".mesh") {
    m.result = medit_input(path.c_str(), m.coords, m.connectivity, m.offsets, m.types, m.references, node_references);
  }
  if (end == ".vtk") {
    m.result = vtk_input(path.c_str(), m.coords, m.connectivity, m.offsets, m.types, m.element_IDs);
  }
  return is_nastran || end == ".neu" || end == ".mesh" || end == ".vtk";
}

/// Prints the fields of a file with solutions, which may be a mesh.
void print_solution(const string& path) {
  unsigned dim = 0;
  dense2D<double> values;
  dense1D<int> kinds;
  std::printf("{\"result\": %d", medit_solution_input(path.c_str(), dim, values, kinds));
  std::printf(", \"dim\": %u, \"nodes\": %u, \"rows\": %u, \"kinds\": ", dim, unsigned(values.cols()),
              unsigned(values.rows()));
  print_vector(unsigned(kinds.size()), [&](unsigned k) { return double(kinds[k]); });
  if (!values.empty()) print_columns(values, "first", "last");
  std::printf("}");
}

}  // namespace

int main(int argc, char** argv) {
  const std::filesystem::path folder = argc > 1 ? argv[1] : ".";
  const char* separator = "{";
  const auto print_name = [&separator](const string& name) {
    std::printf("%s\"%s\": ", separator, name.c_str());
    separator = ",\n";
  };
  for (const auto& entry : std::set<std::filesystem::path>(std::filesystem::directory_iterator(folder), {})) {
    const string name = entry.filename(), end = entry.extension();
    mesh m;
    if (read(entry, m)) print_name(name), print_mesh(m);
    if (end == ".mesh") print_name(name + "#solution"), print_solution(entry);
    if (end == ".sol") print_name(name), print_solution(entry);
  }
  std::puts("}");
}
