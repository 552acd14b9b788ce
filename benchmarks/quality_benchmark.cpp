// Shape qualities and edge qualities, beside VTK's filter for mesh quality.
#include "compare.h"
#include "inputs.h"

#ifdef QEL_HAVE_VERDICT
#include <vtkCellType.h>
#include <vtkMeshQuality.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkUnstructuredGrid.h>
#endif

namespace {

using namespace qel::gridwork;
using qel::dense1D;
using qel::dense2D;

struct mesh {
  std::string name;
  dense2D<double> coords;
  dense2D<unsigned> connectivity;
  element_type type;
};

/// The nodes of a lattice, moved a little; numbered as by inputs::tetrahedra().
dense2D<double> lattice_nodes(unsigned cells) {
  std::mt19937_64 random(3);
  std::uniform_real_distribution<double> shift(-0.15, 0.15);
  const unsigned n = cells + 1;
  dense2D<double> coords(3, std::uint64_t{n} * n * n);
  for (std::uint64_t j = 0; j < coords.cols(); ++j) {
    const double position[] = {double(j % n), double(j / n % n), double(j / n / n)};
    for (unsigned k = 0; k < 3; ++k) coords(k, j) = position[k] + shift(random);
  }
  return coords;
}

#ifdef QEL_HAVE_VERDICT
vtkSmartPointer<vtkUnstructuredGrid> to_vtk(const mesh& m) {
  auto grid = vtkSmartPointer<vtkUnstructuredGrid>::New();
  vtkNew<vtkPoints> nodes;
  nodes->SetDataTypeToDouble();
  for (std::uint64_t j = 0; j < m.coords.cols(); ++j) nodes->InsertNextPoint(m.coords.column(j));
  grid->SetPoints(nodes);
  const int cell = m.type == ELT_TRIA3 ? VTK_TRIANGLE : m.type == ELT_TETRA4 ? VTK_TETRA : VTK_HEXAHEDRON;
  for (std::uint64_t j = 0; j < m.connectivity.cols(); ++j) {
    std::vector<vtkIdType> ids(m.connectivity.begin_column(j), m.connectivity.end_column(j));
    grid->InsertNextCell(cell, static_cast<vtkIdType>(ids.size()), ids.data());
  }
  return grid;
}

void add_vtk(const mesh& m) {
  auto grid = to_vtk(m);
  add_benchmark("shape_qualities, " + m.name, "VTK", [grid] {
    vtkNew<vtkMeshQuality> filter;
    filter->SetInputData(grid);
    filter->SetTriangleQualityMeasureToAspectRatio();
    filter->SetTetQualityMeasureToAspectRatio();
    filter->SetHexQualityMeasureToScaledJacobian();
    filter->Update();
    return filter->GetOutput()->GetNumberOfCells();
  });
}
#endif

void add_shapes(const mesh& m) {
  add_benchmark("shape_qualities, " + m.name, "ours", [m] {
    dense1D<double> Q;
    return shape_qualities(m.coords, m.connectivity, m.type, Q) + Q[0];
  });
#ifdef QEL_HAVE_VERDICT
  add_vtk(m);
#endif
}

double distance(const double* p, const double* q) {
  const double e[] = {q[0] - p[0], q[1] - p[1], q[2] - p[2]};
  return std::sqrt(e[0] * e[0] + e[1] * e[1] + e[2] * e[2]);
}

/// All pairs of nodes of all tetrahedra in one list.
std::size_t edge_qualities_by_sorting(const mesh& m, const dense1D<double>& sizes) {
  std::vector<std::pair<unsigned, unsigned>> edges;
  edges.reserve(6 * m.connectivity.cols());
  for (std::uint64_t e = 0; e < m.connectivity.cols(); ++e) {
    const unsigned* nodes = m.connectivity.column(e);
    for (unsigned i = 0; i < 4; ++i) {
      for (unsigned k = i + 1; k < 4; ++k) edges.emplace_back(std::minmax(nodes[i], nodes[k]));
    }
  }
  std::sort(edges.begin(), edges.end());
  edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
  histogram H;
  for (const auto& [a, b] : edges) {
    double q = 0;
    if (edge_quality(distance(m.coords.column(a), m.coords.column(b)), sizes[a], sizes[b], q) == 0) H.process(q);
  }
  return H.count();
}

/// Sizes between 0.5 and 2.
dense1D<double> random_sizes(std::uint64_t n) {
  std::mt19937_64 random(9);
  std::uniform_real_distribution<double> size(0.5, 2);
  dense1D<double> sizes(n);
  for (double& h : sizes) h = size(random);
  return sizes;
}

void add_edges(const mesh& m) {
  const dense1D<double> sizes = random_sizes(m.coords.cols());
  dense2D<double> tensors(6, m.coords.cols());
  if (metrics_iso_to_aniso3d(sizes, tensors) != 0) return;
  add_benchmark("edge_qualities of sizes, " + m.name, "ours", [=] {
    histogram H;
    return edge_qualities(m.coords, m.connectivity, m.type, sizes, H, {});
  });
  add_benchmark("edge_qualities of sizes, " + m.name, "std::sort", [=] { return edge_qualities_by_sorting(m, sizes); });
  add_benchmark("edge_qualities of tensors, " + m.name, "ours", [=] {
    histogram H;
    return edge_qualities(m.coords, m.connectivity, m.type, tensors, H, {});
  });
}

}  // namespace

int main(int argc, char** argv) {
  mesh surface{"2 M triangles", {}, {}, ELT_TRIA3};
  inputs::surface(1000, surface.coords, surface.connectivity);
  const mesh tetrahedra{"1 M tetrahedra", lattice_nodes(55), inputs::tetrahedra(55, false), ELT_TETRA4};
  const mesh shuffled{"1 M tetrahedra, shuffled", lattice_nodes(55), inputs::tetrahedra(55, true), ELT_TETRA4};
  const mesh blocks{"1 M hexahedra", lattice_nodes(100), inputs::hexahedra(100, false), ELT_HEXA8};
  for (const mesh& m : {surface, tetrahedra, shuffled, blocks}) add_shapes(m);
  add_edges(tetrahedra);
  return run_benchmarks(argc, argv);
}
