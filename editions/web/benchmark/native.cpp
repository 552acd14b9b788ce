// Reads a mesh file several times: the least CPU time of it in milliseconds.
#include <qel/gridwork.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace {

int read(const char* path) {
  qel::dense2D<double> coords, normals, uvs;
  qel::dense2D<unsigned> triangles, quads;
  if (std::strstr(path, ".obj") != nullptr)
    return qel::gridwork::WavefrontOBJ_input(path, coords, normals, uvs, triangles, quads);
  return qel::gridwork::STL_input(path, coords, triangles);
}

}  // namespace

int main(int, char** arguments) {
  constexpr int rounds = 7;
  std::clock_t least = 1000 * CLOCKS_PER_SEC;
  for (int k = 0; k < rounds; ++k) {
    const std::clock_t begin = std::clock();
    if (read(arguments[1]) < 0) return 1;
    least = std::min(least, std::clock() - begin);
  }
  std::printf("%.1f\n", 1000.0 * static_cast<double>(least) / CLOCKS_PER_SEC);
}
