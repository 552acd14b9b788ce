// What large meshes take: CPU time and peak memory of one step, each in a process of its own.
// usage: scale stl SIDE       reads and merges a binary STL file of 2 * SIDE * SIDE triangles
//        scale tetra CELLS    neighbours, boundaries, parts and interfaces of 6 * CELLS^3 tetrahedra
//        scale gradation CELLS    sizes and tensors of as many, bounded from one layer of nodes on, which changes all
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>
#include <string_view>

#include "inputs.h"

namespace {

using qel::dense1D;
using qel::dense2D;

double cpu_seconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

long peak_kilobytes() {
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

/// The peak is that of the whole process, inputs and outputs included.
void report(const char* step, std::uint64_t count, double seconds) {
  std::printf("%-28s %12llu elements %8.2f s %8.0f ns each, peak %7.1f MB\n", step,
              static_cast<unsigned long long>(count), seconds, 1e9 * seconds / static_cast<double>(count),
              static_cast<double>(peak_kilobytes()) / 1024);
}

/// Written by a process of its own, so that the peak is that of reading.
int write_surface(const std::string& path, unsigned side) {
  dense2D<double> coords;
  dense2D<unsigned> connectivity;
  inputs::surface(side, coords, connectivity);
  return qel::gridwork::STL_output(path.c_str(), coords, connectivity, false);
}

/// The second reading takes memory that the machine has given the process before; on virtual machines this matters.
int read_surface(const std::string& path) {
  for (const char* step : {"STL_input, binary", "STL_input, binary, again"}) {
    dense2D<double> coords;
    dense2D<unsigned> connectivity;
    const double start = cpu_seconds();
    const int result = qel::gridwork::STL_input(path.c_str(), coords, connectivity);
    if (result != 0) return result;
    report(step, connectivity.cols(), cpu_seconds() - start);
  }
  return 0;
}

/// Runs a step that returns a result, and reports it.
template <class Run>
bool measure(const char* step, std::uint64_t count, Run run) {
  const double start = cpu_seconds();
  const int result = run();
  report(step, count, cpu_seconds() - start);
  return result >= 0;
}

bool connect(unsigned cells) {
  namespace gw = qel::gridwork;
  const dense2D<unsigned> m = inputs::tetrahedra(cells, false);
  dense2D<unsigned> neighbors, boundaries, pairs, group_pairs;
  dense1D<unsigned> parts, slots, order, offsets, blocks = inputs::blocks(cells);
  const std::uint64_t n = m.cols();
  return measure("get_neighbors", n, [&] { return gw::get_neighbors(m, gw::ELT_TETRA4, false, neighbors); }) &&
         measure("get_mesh_boundaries", n,
                 [&] { return gw::get_mesh_boundaries(m, neighbors, gw::ELT_TETRA4, boundaries); }) &&
         measure("get_subdomains", n, [&] { return gw::get_subdomains(neighbors, parts); }) &&
         measure("get_colors_boundaries", n,
                 [&] { return gw::get_colors_boundaries(m, neighbors, gw::ELT_TETRA4, blocks, 2, slots, pairs); }) &&
         measure("get_subdomains, walls", n,
                 [&] { return gw::get_subdomains(m, neighbors, gw::ELT_TETRA4, slots, parts); }) &&
         measure("sort_elfes", slots.size(),
                 [&] { return gw::sort_elfes(neighbors, blocks, slots, order, group_pairs, offsets); });
}

int bound(unsigned cells) {
  const dense2D<unsigned> connectivity = inputs::tetrahedra(cells, false);
  const unsigned n = cells + 1;
  dense2D<double> coords(3, std::uint64_t{n} * n * n);
  dense2D<double> tensors(6, coords.cols());
  qel::dense1D<double> sizes(coords.cols(), 10.0 * cells);
  for (unsigned j = 0; j < coords.cols(); ++j) {
    const unsigned at[3] = {j % n, j / n % n, j / n / n};
    std::copy_n(at, 3, coords.column(j));
    if (at[2] == 0) sizes[j] = 0.1;
  }
  if (qel::gridwork::metrics_iso_to_aniso3d(sizes, tensors) != 0) return -1;
  const double start = cpu_seconds();
  int result = qel::gridwork::bound_metric_gradations(coords, connectivity, qel::gridwork::ELT_TETRA4, sizes, 1.3);
  report("bound_metric_gradations", connectivity.cols(), cpu_seconds() - start);
  const double between = cpu_seconds();
  if (result > 0) {
    result = qel::gridwork::bound_metric_gradations(coords, connectivity, qel::gridwork::ELT_TETRA4, tensors, 1.3);
  }
  report("the same, of tensors", connectivity.cols(), cpu_seconds() - between);
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view step = argc == 3 ? argv[1] : "";
  const std::string path = inputs::working_folder().string() + "_scale.stl";
  const unsigned size = argc == 3 ? static_cast<unsigned>(std::atoi(argv[2])) : 0;
  if (step == "write") return write_surface(path, size) == 0 ? 0 : 1;
  if (step == "tetra") return connect(size) ? 0 : 1;
  if (step == "gradation") return bound(size) >= 0 ? 0 : 1;
  if (step != "stl") {
    std::fprintf(stderr, "usage: scale stl SIDE | scale tetra CELLS | scale gradation CELLS\n");
    return 2;
  }
  const std::string write = std::string(argv[0]) + " write " + argv[2];
  const bool read = std::system(write.c_str()) == 0 && read_surface(path) == 0;
  std::filesystem::remove(path);
  return read ? 0 : 1;
}
