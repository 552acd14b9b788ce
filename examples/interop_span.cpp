// Hands memory over in both directions without a copy: std::span on the library's arrays, and the library's arrays on a
// program's own vertices.
//
// A matrix is a pointer, rows, columns and a leading dimension. Column-major with 3 rows is what C, NumPy and most
// graphics code call an array of n points: xyz xyz xyz ...
#include <qel/gridwork.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <span>
#include <vector>

namespace {

namespace gridwork = qel::gridwork;
using qel::dense1D;
using qel::dense2D;

// Spans on our arrays. All entries of a matrix lie one after another when it is compact().
template <class T>
std::span<T> all_entries(dense2D<T>& m) {
  return {m.data(), m.size()};
}

std::span<const unsigned> nodes_of(const dense2D<unsigned>& connectivity, std::uint64_t element) {
  return {connectivity.column(element), connectivity.rows()};
}

// A program's own vertex: position, then what the library knows nothing about.
struct vertex {
  double position[3];
  double temperature;
};

// The positions of vertices as nodes: from one to the next it is a whole vertex.
dense2D<double> positions(std::span<vertex> vertices) {
  static_assert(sizeof(vertex) % sizeof(double) == 0);
  return {3, vertices.size(), sizeof(vertex) / sizeof(double), vertices.front().position};
}

bool holds(bool fact, const char* what) {
  std::printf("%-78s %s\n", what, fact ? "yes" : "NO");
  return fact;
}

bool spans_on_our_arrays() {
  dense2D<double> coords(3, 3, {0, 0, 0, 4, 0, 0, 0, 3, 0});
  const dense2D<unsigned> triangles(3, 2, {0, 1, 2, 2, 1, 0});
  for (double& x : all_entries(coords)) x *= 2;
  dense1D<double> twice_areas;
  const int result = gridwork::jacobians(coords, triangles, gridwork::ELT_TRIA3, twice_areas);
  const std::span<const double> areas(twice_areas);  // an array is a contiguous range
  return holds(result == 0 && coords(0, 1) == 8 && nodes_of(triangles, 1)[0] == 2,
               "a span reads and writes the entries of a dense2D") &&
         holds(areas.size() == 2 && std::ranges::count(areas, 48.0) == 2, "a span shows the result of jacobians()");
}

bool library_on_vertices() {
  std::vector<vertex> vertices = {{{0, 0, 0}, 20}, {{1, 0, 0}, 21}, {{0, 1, 0}, 22}, {{0, 0, 1}, 23}, {{1, 0, 0}, 24}};
  dense2D<double> coords = positions(vertices);
  const int moved = gridwork::translate(coords, {10, 0, 0});
  const bool only_moved = std::ranges::is_sorted(vertices, {}, &vertex::temperature);
  const unsigned closest = gridwork::node_detector(coords).find_closest(qel::vector_fixed<double, 3>{10, 0.9, 0});
  const dense1D<unsigned> all = {0, 1, 2, 3, 4};
  dense1D<unsigned> new_ids;
  const int merged = gridwork::merge(coords, all, new_ids, 0.0);  // reads; merge(coords, new_ids, tol) would detach
  return holds(moved == 5 && vertices[4].position[0] == 11 && only_moved,
               "the library moves interleaved vertices and leaves their temperatures alone") &&
         holds(closest == 2, "it finds the closest of them") &&
         holds(merged == 1 && new_ids[4] == 1, "it tells which of them coincide");
}

bool library_on_plain_arrays() {
  std::vector<std::array<double, 3>> points = {{0, 0, 0}, {2, 0, 0}, {0, 2, 0}, {0, 0, 2}};
  unsigned corners[] = {0, 1, 2, 3};
  const dense2D<double> coords(3, points.size(), points.front().data());
  const dense2D<unsigned> tetrahedron(4, 1, corners);
  dense1D<double> volumes;
  const int result = gridwork::jacobians(coords, tetrahedron, gridwork::ELT_TETRA4, volumes);
  points[3] = {0, 0, 4};  // seen through the view: six times the volume doubles
  dense1D<double> taller;
  const int again = gridwork::jacobians(coords, tetrahedron, gridwork::ELT_TETRA4, taller);
  return holds(result == 0 && again == 0 && taller[0] == 2 * volumes[0], "the library reads a std::vector of points");
}

}  // namespace

int main() {
  const bool results[] = {spans_on_our_arrays(), library_on_vertices(), library_on_plain_arrays()};
  return std::ranges::count(results, true) == std::ssize(results) ? 0 : 1;
}
