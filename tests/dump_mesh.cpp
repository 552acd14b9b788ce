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

double bound(const mesh& m, unsigned i, double sign) {
  double largest = -1e300;
  for (unsigned j = 0; j < m.coords.cols(); ++j) largest = std::max(largest, sign * m.coords(i, j));
  return sign * largest;
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
  const auto rows = unsigned(m.coords.rows()), nodes = unsigned(m.coords.cols());
  std::printf(", \"box\": ");
  print_list("[]", 2,
             [&](unsigned end) { print_vector(rows, [&](unsigned i) { return bound(m, i, end == 0 ? -1 : 1); }); });
  std::printf(", \"first_node\": ");
  print_vector(rows, [&](unsigned i) { return m.coords(i, 0); });
  std::printf(", \"last_node\": ");
  print_vector(rows, [&](unsigned i) { return m.coords(i, nodes - 1); });
  if (m.node_IDs.empty()) return;
  long long sum = 0;
  for (const unsigned ID : m.node_IDs) sum += ID;
  std::printf(", \"node_IDs\": {\"first\": %u, \"last\": %u, \"sum\": %lld}", m.node_IDs[0], m.node_IDs[nodes - 1],
              sum);
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
  if (!is_nastran) return false;
  m.result = NASTRAN_input(path.c_str(), m.coords, m.connectivity, m.offsets, m.types, m.references, m.element_IDs,
                           m.node_IDs);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const std::filesystem::path folder = argc > 1 ? argv[1] : ".";
  const char* separator = "{";
  for (const auto& entry : std::set<std::filesystem::path>(std::filesystem::directory_iterator(folder), {})) {
    mesh m;
    if (!read(entry, m)) continue;
    std::printf("%s\"%s\": ", separator, entry.filename().c_str());
    print_mesh(m);
    separator = ",\n";
  }
  std::puts("}");
}
