// A program of a user's own: two triangles that share an edge are written, read back and found merged.
#include <qel/gridwork.h>

#include <cstdio>
#include <string>

int main() {
  using namespace qel;

  dense2D<double> const coords(3, 6, {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0});
  dense2D<unsigned> const triangles(3, 2, {0, 1, 2, 3, 4, 5});
  if (gridwork::STL_output("consumer.stl", coords, triangles, true) != 0) {
    std::puts("consumer.stl cannot be written");
    return 1;
  }

  dense2D<double> merged_coords;
  dense2D<unsigned> merged_triangles;
  int const result = gridwork::STL_input("consumer.stl", merged_coords, merged_triangles);
  std::printf("gridwork %s: result %d, %u nodes, %u triangles\n", QEL_GRIDWORK_VERSION_STRING, result,
              static_cast<unsigned>(merged_coords.cols()), static_cast<unsigned>(merged_triangles.cols()));
  bool const same_version = gridwork::version() == QEL_GRIDWORK_VERSION_STRING + std::string(".0");
  return same_version && result == 0 && merged_coords.cols() == 4 && merged_triangles.cols() == 2 ? 0 : 1;
}
