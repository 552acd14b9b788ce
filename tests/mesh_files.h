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
  std::FILE* stream = path != nullptr ? std::fopen(path, "w") : nullptr;
  const int code = vtk_output(stream, m.coords, m.nbr_cells, m.cells, m.cell_types);
  if (stream != nullptr) std::fclose(stream);
  return code;
}

struct writer {
  const char* name;
  int (*write)(const char* path, const mesh& m);
  bool reports = false;  ///< what the stream does not take
};

inline const writer writers[] = {
    {"STL_output, text", [](const char* p, const mesh& m) { return STL_output(p, m.coords, m.triangles, true); }, true},
    {"STL_output", [](const char* p, const mesh& m) { return STL_output(p, m.coords, m.triangles, false); }, true},
    {"WavefrontOBJ_output, all",
     [](const char* p, const mesh& m) { return WavefrontOBJ_output(p, m.coords, m.coords, {}, m.triangles, m.quads); }},
    {"WavefrontOBJ_output",
     [](const char* p, const mesh& m) { return WavefrontOBJ_output(p, m.coords, m.triangles, ELT_TRIA3); }},
    {"WavefrontOBJ_output, two",
     [](const char* p, const mesh& m) {
       return WavefrontOBJ_output(p, m.coords, m.quads, m.triangles, ELT_QUAD4, ELT_TRIA3);
     }},
    {"vtk_output, stream", write_to_stream},
    {"vtk_output", [](const char* p, const mesh& m) { return vtk_output(p, m.coords, m.triangles, ELT_TRIA3); }},
    {"vtk_output, two",
     [](const char* p, const mesh& m) { return vtk_output(p, m.coords, m.triangles, m.quads, ELT_TRIA3, ELT_QUAD4); }},
    {"vtk_output, range",
     [](const char* p, const mesh& m) { return vtk_output(p, m.coords, m.both, m.both + 2, m.codes); }},
    {"medit_output", [](const char* p, const mesh& m) { return medit_output(p, m.coords, m.triangles, ELT_TRIA3); }},
    {"medit_output, two",
     [](const char* p, const mesh& m) {
       return medit_output(p, m.coords, m.triangles, m.quads, ELT_TRIA3, ELT_QUAD4);
     }},
    {"medit_output, range",
     [](const char* p, const mesh& m) { return medit_output(p, m.coords, m.both, m.both + 2, m.codes); }},
    {"medit_output, references",
     [](const char* p, const mesh& m) { return medit_output(p, m.coords, m.quads, ELT_QUAD4, m.references); }},
    {"medit_scalar", [](const char* p, const mesh& m) { return medit_scalar(p, 3, m.sizes); }},
    {"medit_vector", [](const char* p, const mesh& m) { return medit_vector(p, 3, m.coords); }},
    {"medit_tensor", [](const char* p, const mesh& m) { return medit_tensor(p, m.coords); }},
    {"NASTRAN_output",
     [](const char* p, const mesh& m) { return NASTRAN_output(p, m.coords, m.triangles, ELT_TRIA3); }},
    {"NASTRAN_output, two",
     [](const char* p, const mesh& m) {
       return NASTRAN_output(p, m.coords, m.triangles, m.quads, ELT_TRIA3, ELT_QUAD4);
     }},
    {"NASTRAN_output, blocks",
     [](const char* p, const mesh& m) {
       return NASTRAN_output(p, m.coords, m.triangles, m.offsets, m.codes.sub_vector(0, 1), m.references);
     }},
    {"ensight_output",
     [](const char* p, const mesh& m) { return ensight_output(p, m.coords, m.triangles, ELT_TRIA3); }},
    {"ensight_output, two",
     [](const char* p, const mesh& m) {
       return ensight_output(p, m.coords, m.triangles, m.quads, ELT_TRIA3, ELT_QUAD4);
     }},
    {"ensight_output, range",
     [](const char* p, const mesh& m) { return ensight_output(p, m.coords, m.both, m.both + 2, m.codes); }},
};

/// The file that a writer makes.
inline std::string written(const writer& w, const mesh& m) {
  const memory_file file;
  if (w.write(file.path(), m) != 0) std::abort();
  return file.content();
}

}  // namespace mesh_files

#endif
