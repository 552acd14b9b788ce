// Reads a surface from an STL file, merges its near nodes, removes what degenerates, tells whether it is closed, and
// writes it for VTK.
//
// usage: clean_surface FILE.stl TOLERANCE OUT.vtk
//
// Programs that take other formats, too, and tell what is wrong with a file: editions/cli.
#include <qel/gridwork.h>
#include <qel/gridwork/messages.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace {

namespace gw = qel::gridwork;

// Fails in words where a function of the library did; else its result, often a count.
int require(gw::operation call, int result) {
  if (result < 0) throw std::runtime_error(gw::message(call, result));
  return result;
}

void clean(const char* in, double tolerance, const char* out) {
  qel::dense2D<double> coords;
  qel::dense2D<unsigned> triangles, neighbors, open_edges;
  require(gw::operation::STL_input, gw::STL_input(in, coords, triangles));

  const int merged = require(gw::operation::merge_elements, gw::merge(coords, triangles, tolerance, 0));
  const int removed = require(gw::operation::remove_degenerated, gw::remove_degenerated(triangles, false));
  require(gw::operation::simplify, gw::simplify(coords, triangles, 0));
  std::printf("merged nodes %d, removed triangles %d\n", merged, removed);

  require(gw::operation::get_neighbors, get_neighbors(triangles, gw::ELT_TRIA3, true, neighbors));
  require(gw::operation::get_mesh_boundaries, get_mesh_boundaries(triangles, neighbors, gw::ELT_TRIA3, open_edges));
  std::printf("nodes %llu, triangles %llu, open edges %llu\n", static_cast<unsigned long long>(coords.cols()),
              static_cast<unsigned long long>(triangles.cols()), static_cast<unsigned long long>(open_edges.cols()));

  double worst = 1;
  unsigned element = ~0U;
  require(gw::operation::min_quality, min_quality(coords, triangles, gw::ELT_TRIA3, worst, element));
  std::printf("smallest shape quality %.4f, of triangle %u\n", worst, element);
  require(gw::operation::vtk_output, gw::vtk_output(out, coords, triangles, gw::ELT_TRIA3));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: clean_surface FILE.stl TOLERANCE OUT.vtk\n");
    return 2;
  }
  try {
    clean(argv[1], std::atof(argv[2]), argv[3]);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "clean_surface: %s\n", problem.what());
    return 1;
  }
}
