// A mesh, and everything that writes it to a file.
#ifndef QEL_TESTS_MESH_FILES_H
#define QEL_TESTS_MESH_FILES_H

#include <cstdio>
#include <cstdlib>
#include <string>

#include "faults.h"
#include "qel/gridwork.h"

namespace mesh_files {

using namespace qel::gridwork;
using qel::dense1D;
using qel::dense2D;
using matrix = dense2D<unsigned>;

/// A strip of n elements; the last triangle is degenerate.
struct mesh {
  dense2D<double> coords;
  matrix triangles, quads, both[2];
  dense1D<double> sizes;
  dense1D<int> codes{ELT_TRIA3, ELT_QUAD4};
  dense1D<unsigned> references, offsets, cells, cell_types;
  unsigned nbr_cells = 0;

  explicit mesh(unsigned n) : coords(3, n + 2), triangles(3, n), quads(4, n), sizes(n, 0.1), references(n, 2) {
    for (unsigned j = 0; j < n + 2; ++j) coords(0, j) = j, coords(1, j) = j % 2, coords(2, j) = 0.125 * (j % 7);
    for (unsigned k = 0; k < 3 * n; ++k) triangles(k % 3, k / 3) = k / 3 + k % 3;
    for (unsigned k = 0; k < 4 * n; ++k) quads(k % 4, k / 4) = (k / 4 + k % 4) % (n + 2);
    triangles(2, n - 1) = triangles(1, n - 1);
    both[0] = triangles, both[1] = quads, offsets = {0, n};
    if (vtk_convert(triangles, ELT_TRIA3, nbr_cells, cells, cell_types) != 0) std::abort();
  }
};

inline int write_to_stream(const char* path, const mesh& m) {
  std::FILE* stream = path != nullptr ? std::fopen(path, "wb") : nullptr;
  const int code = vtk_output(stream, m.coords, m.nbr_cells, m.cells, m.cell_types);
  if (stream != nullptr) std::fclose(stream);
  return code;
}

struct writer {
  const char* name;
  int (*write)(const char* path, const mesh& m);
  bool reports;  ///< what the stream does not take

  writer(const char* call, int (*f)(const char*, const mesh&), bool does_report = false)
      : name(call), write(f), reports(does_report) {}
};

#define WRITER(call, ...) writer(#call, [](const char* path, const mesh& m) { return call; } __VA_OPT__(, ) __VA_ARGS__)

inline const writer writers[] = {
    WRITER(STL_output(path, m.coords, m.triangles, true), true),
    WRITER(STL_output(path, m.coords, m.triangles, false), true),
    WRITER(WavefrontOBJ_output(path, m.coords, m.coords, {}, m.triangles, m.quads)),
    WRITER(WavefrontOBJ_output(path, m.coords, m.triangles, ELT_TRIA3)),
    WRITER(WavefrontOBJ_output(path, m.coords, m.quads, m.triangles, ELT_QUAD4, ELT_TRIA3)),
    WRITER(write_to_stream(path, m)),
    WRITER(vtk_output(path, m.coords, m.triangles, ELT_TRIA3)),
    WRITER(vtk_output(path, m.coords, m.triangles, m.quads, ELT_TRIA3, ELT_QUAD4)),
    WRITER(vtk_output(path, m.coords, m.both, m.both + 2, m.codes)),
    WRITER(medit_output(path, m.coords, m.triangles, ELT_TRIA3)),
    WRITER(medit_output(path, m.coords, m.triangles, m.quads, ELT_TRIA3, ELT_QUAD4)),
    WRITER(medit_output(path, m.coords, m.both, m.both + 2, m.codes)),
    WRITER(medit_output(path, m.coords, m.quads, ELT_QUAD4, m.references)),
    WRITER(medit_scalar(path, 3, m.sizes)),
    WRITER(medit_vector(path, 3, m.coords)),
    WRITER(medit_tensor(path, m.coords)),
    WRITER(NASTRAN_output(path, m.coords, m.triangles, ELT_TRIA3)),
    WRITER(NASTRAN_output(path, m.coords, m.triangles, m.quads, ELT_TRIA3, ELT_QUAD4)),
    WRITER(NASTRAN_output(path, m.coords, m.triangles, m.offsets, m.codes.sub_vector(0, 1), m.references)),
    WRITER(FEMAP_output(path, m.coords, m.triangles, ELT_TRIA3)),
    WRITER(FEMAP_output(path, m.coords, m.triangles, m.quads, ELT_TRIA3, ELT_QUAD4)),
    WRITER(FEMAP_output(path, m.coords, m.triangles, m.offsets, m.codes.sub_vector(0, 1), m.references)),
    WRITER(ensight_output(path, m.coords, m.triangles, ELT_TRIA3)),
    WRITER(ensight_output(path, m.coords, m.triangles, m.quads, ELT_TRIA3, ELT_QUAD4)),
    WRITER(ensight_output(path, m.coords, m.both, m.both + 2, m.codes))};

#undef WRITER

/// The file that a writer makes.
inline std::string written(const writer& w, const mesh& m) {
  const memory_file file;
  if (w.write(file.path(), m) != 0) std::abort();
  return file.content();
}

}  // namespace mesh_files

#endif
