// STL files of a million triangles, beside admesh and meshoptimizer.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "compare.h"
#include "inputs.h"

#ifdef QEL_HAVE_ADMESH
#include <admesh/stl.h>
#endif
#ifdef QEL_HAVE_MESHOPTIMIZER
#include <meshoptimizer.h>
#endif

namespace {

using qel::dense2D;

std::size_t read_by_ours(const std::string& path) {
  dense2D<double> coords;
  dense2D<unsigned> connectivity;
  qel::gridwork::STL_input(path.c_str(), coords, connectivity);
  return coords.cols() + connectivity.cols();
}

#ifdef QEL_HAVE_ADMESH
std::size_t read_by_admesh(std::string path) {
  stl_file stl;
  stl_open(&stl, path.data());
  stl_check_facets_exact(&stl);
  stl_generate_shared_vertices(&stl);
  const auto count = static_cast<std::size_t>(stl.stats.shared_vertices);
  stl_close(&stl);
  return count;
}
#endif

#ifdef QEL_HAVE_MESHOPTIMIZER
std::size_t read_by_meshoptimizer(const std::string& path) {
  std::vector<char> bytes(std::filesystem::file_size(path));
  std::FILE* file = std::fopen(path.c_str(), "rb");
  const bool complete = std::fread(bytes.data(), 1, bytes.size(), file) == bytes.size();
  std::fclose(file);
  if (!complete) return 0;
  const std::size_t count = (bytes.size() - 84) / 50;
  std::vector<float> corners(9 * count);
  for (std::size_t i = 0; i < count; ++i) std::memcpy(&corners[9 * i], &bytes[84 + 50 * i + 12], 36);
  std::vector<unsigned> map(3 * count);
  return meshopt_generateVertexRemap(map.data(), nullptr, map.size(), corners.data(), map.size(), 12);
}
#endif

}  // namespace

int main(int argc, char** argv) {
  dense2D<double> coords;
  dense2D<unsigned> connectivity;
  inputs::surface(707, coords, connectivity);
  const std::filesystem::path folder = inputs::working_folder();
  std::filesystem::create_directories(folder);
  const std::string text = folder / "text.stl";
  const std::string binary = folder / "binary.stl";
  const std::string sphere = folder / "sphere.stl";
  const std::string written = folder / "written.stl";
  qel::gridwork::STL_output(text.c_str(), coords, connectivity, true);
  qel::gridwork::STL_output(binary.c_str(), coords, connectivity, false);
  dense2D<double> sphere_coords;
  dense2D<unsigned> sphere_connectivity;
  inputs::uniform_sphere(289, sphere_coords, sphere_connectivity);
  qel::gridwork::STL_output(sphere.c_str(), sphere_coords, sphere_connectivity, false);

  add_benchmark("STL binary: read and merge", "ours", [=] { return read_by_ours(binary); });
  add_benchmark("STL binary of a uniform sphere: read and merge", "ours", [=] { return read_by_ours(sphere); });
  add_benchmark("STL text: read and merge", "ours", [=] { return read_by_ours(text); });
  for (const bool ascii : {true, false}) {
    add_benchmark(ascii ? "STL text: write" : "STL binary: write", "ours",
                  [=] { return qel::gridwork::STL_output(written.c_str(), coords, connectivity, ascii); });
  }
#ifdef QEL_HAVE_ADMESH
  add_benchmark("STL binary: read and merge", "admesh", [=] { return read_by_admesh(binary); });
  add_benchmark("STL text: read and merge", "admesh", [=] { return read_by_admesh(text); });
  stl_file stl;
  std::string path = binary;
  stl_open(&stl, path.data());
  add_benchmark("STL text: write", "admesh", [&] {
    stl_write_ascii(&stl, written.c_str(), "benchmark");
    return 0;
  });
  add_benchmark("STL binary: write", "admesh", [&] {
    stl_write_binary(&stl, written.c_str(), "benchmark");
    return 0;
  });
#endif
#ifdef QEL_HAVE_MESHOPTIMIZER
  add_benchmark("STL binary: read and merge", "meshoptimizer", [=] { return read_by_meshoptimizer(binary); });
  add_benchmark("STL binary of a uniform sphere: read and merge", "meshoptimizer",
                [=] { return read_by_meshoptimizer(sphere); });
#endif
  const int result = run_benchmarks(argc, argv);
  std::filesystem::remove_all(folder);
  return result;
}
