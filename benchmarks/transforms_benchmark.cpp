// Copies in a pattern, beside the loops that do nothing but write them, transforms of many nodes, and clipped meshes.
#include <array>
#include <cstdlib>
#include <limits>
#include <utility>
#include <vector>

#include "compare.h"
#include "inputs.h"

#ifdef QEL_HAVE_VTK
#include <vtkClipDataSet.h>
#include <vtkExtractGeometry.h>
#include <vtkPlane.h>
#include <vtkTableBasedClipDataSet.h>

#include "vtk_grid.h"
#endif

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

/// Across the middle of a lattice, through no node.
struct oblique_plane {
  space point, normal;

  explicit oblique_plane(unsigned cells) : point{0.503 * cells, 0.501 * cells, 0.497 * cells}, normal{1, 0.3, 0.2} {}
};

std::uint64_t clip_whole(const part& mesh, const oblique_plane& at) {
  dense2D<unsigned> out;
  qel::dense1D<unsigned> elements;
  qel::gridwork::clip(mesh.coords, out, at.point, at.normal, mesh.connectivity, 0, 1e-9, elements);
  return out.cols();
}

/// With a copy of the nodes, to which new ones are appended.
std::uint64_t clip_exactly(const part& mesh, const oblique_plane& at) {
  dense2D<double> coords;
  dense2D<unsigned> out, edges;
  qel::dense1D<unsigned> elements;
  qel::dense1D<double> weights;
  if (!coords.copy(mesh.coords)) return 0;
  qel::gridwork::clip(coords, out, at.point, at.normal, mesh.connectivity, qel::gridwork::ELT_TETRA4, 1e-9, elements,
                      edges, weights);
  return out.cols();
}

#ifdef QEL_HAVE_VTK
template <class Filter, class Prepare>
vtkIdType cells_beyond(vtkUnstructuredGrid* grid, const oblique_plane& at, Prepare prepare) {
  vtkNew<vtkPlane> plane;
  plane->SetOrigin(at.point[0], at.point[1], at.point[2]);
  plane->SetNormal(at.normal[0], at.normal[1], at.normal[2]);
  vtkNew<Filter> filter;
  prepare(filter.Get(), plane.Get());
  filter->SetInputData(grid);
  filter->Update();
  return filter->GetOutput()->GetNumberOfCells();
}

/// Like ours, with the part on the side of the normal.
template <class Filter>
vtkIdType cells_clipped_by(vtkUnstructuredGrid* grid, const oblique_plane& at) {
  return cells_beyond<Filter>(grid, at, [](Filter* filter, vtkPlane* plane) { filter->SetClipFunction(plane); });
}

vtkIdType cells_extracted(vtkUnstructuredGrid* grid, const oblique_plane& at) {
  return cells_beyond<vtkExtractGeometry>(grid, at, [](vtkExtractGeometry* filter, vtkPlane* plane) {
    filter->SetImplicitFunction(plane);
    filter->ExtractInsideOff();
  });
}
#endif

void add_clip_benchmarks(const std::string& kind, unsigned cells, bool shuffled) {
  const part mesh{inputs::lattice(cells, shuffled), inputs::tetrahedra(cells, shuffled)};
  const oblique_plane at(cells);
  const std::string whole = "clip, whole elements, " + kind, exact = "clip, exact, " + kind;
  add_benchmark(whole, "ours", [=] { return clip_whole(mesh, at); });
  add_benchmark(exact, "ours", [=] { return clip_exactly(mesh, at); });
#ifdef QEL_HAVE_VTK
  if (cells > 55) return;
  const auto grid = vtk_grid(mesh.coords, mesh.connectivity, VTK_TETRA);
  add_benchmark(whole, "vtkExtractGeometry", [=] { return cells_extracted(grid, at); });
  add_benchmark(exact, "vtkTableBasedClipDataSet",
                [=] { return cells_clipped_by<vtkTableBasedClipDataSet>(grid, at); });
  add_benchmark(exact, "vtkClipDataSet", [=] { return cells_clipped_by<vtkClipDataSet>(grid, at); });
#endif
}

}  // namespace

int main(int argc, char** argv) {
  part source;
  inputs::surface(32, source.coords, source.connectivity);  // 1056 nodes, 2048 triangles
  for (const unsigned copies : {2500U, 5000U, 10000U}) add_copy_benchmarks(source, copies);
  add_transform_benchmarks(inputs::uniform_points(1000000, 1));
  setenv("VTK_SMP_BACKEND_IN_USE", "Sequential", 1);  // all of us run in one thread
  for (const auto& [size, cells] : {std::pair{"0.1 M", 26U}, std::pair{"1 M", 55U}, std::pair{"10 M", 118U}}) {
    for (const bool shuffled : {false, true}) {
      const std::string order = shuffled ? "shuffled" : "natural";
      add_clip_benchmarks(std::string(size) + " tetrahedra, " + order, cells, shuffled);
    }
  }
  return run_benchmarks(argc, argv);
}
