// Copies in a pattern, beside the loops that do nothing but write them, and transforms of many nodes.
#include <array>
#include <limits>
#include <vector>

#include "compare.h"
#include "inputs.h"

namespace {

using qel::dense2D;
using space = qel::vector_fixed<double, 3>;

constexpr space origin = {0, 0, 0};
constexpr space lift = {0, 0, 0.25};

struct part {
  dense2D<double> coords;
  dense2D<unsigned> connectivity;
};

/// Copies of one part by loops over plain vectors of known size.
std::size_t copy_by_loops(const part& source, unsigned copies) {
  const std::uint64_t nodes = source.coords.cols();
  std::vector<std::array<double, 3>> coords(nodes * (copies + 1));
  std::vector<unsigned> elements(source.connectivity.size() * copies);
  for (std::uint64_t j = 0; j < nodes; ++j) std::copy_n(source.coords.column(j), 3, coords[j].begin());
  for (unsigned k = 1; k <= copies; ++k) {
    const double c = std::cos(k * 0.01), s = std::sin(k * 0.01);
    for (std::uint64_t j = 0; j < nodes; ++j) {
      const auto& [x, y, z] = coords[j];
      coords[k * nodes + j] = {c * x - s * y, s * x + c * y, z + k * lift[2]};
    }
    const auto first = static_cast<unsigned>(k * nodes);
    unsigned* out = elements.data() + (k - 1) * source.connectivity.size();
    for (std::uint64_t i = 0; i < source.connectivity.size(); ++i) out[i] = source.connectivity.data()[i] + first;
  }
  return coords.size() + elements.size();
}

void add_copy_benchmarks(const part& source, unsigned copies) {
  const std::string group = "copy_mesh " + std::to_string(copies) + " copies";
  add_benchmark(group, "ours", [=] {
    dense2D<double> coords;
    dense2D<unsigned> out;
    if (!coords.copy(source.coords)) return std::uint64_t{0};
    qel::gridwork::copy_mesh(coords, out, lift, origin, space{0, 0, 0.01}, copies, source.connectivity);
    return coords.size() + out.size();
  });
  add_benchmark(group, "loops", [=] { return copy_by_loops(source, copies); });
}

void add_transform_benchmarks(const dense2D<double>& nodes) {
  add_benchmark("rotate 1 M nodes", "ours", [=] {
    dense2D<double> view = nodes;
    return qel::gridwork::rotate(view, origin, space{0.1, 0.2, 0.3});
  });
  add_benchmark("inc_bounding_box 1 M nodes", "ours", [=] {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    space low = {infinity, infinity, infinity}, high = {-infinity, -infinity, -infinity};
    qel::gridwork::inc_bounding_box(nodes, low, high);
    return high[0] - low[0];
  });
}

}  // namespace

int main(int argc, char** argv) {
  part source;
  inputs::surface(32, source.coords, source.connectivity);  // 1056 nodes, 2048 triangles
  for (const unsigned copies : {2500U, 5000U, 10000U}) add_copy_benchmarks(source, copies);
  add_transform_benchmarks(inputs::uniform_points(1000000, 1));
  return run_benchmarks(argc, argv);
}
