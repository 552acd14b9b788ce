// Neighbours, boundaries, sub-domains, node lists and edges, beside the standard containers, VTK and CGAL.
#include <array>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "compare.h"
#include "inputs.h"

#ifdef QEL_HAVE_VTK
#include <vtkCellData.h>
#include <vtkConnectivityFilter.h>
#include <vtkDataSetRegionSurfaceFilter.h>
#include <vtkDataSetSurfaceFilter.h>
#include <vtkExtractEdges.h>
#include <vtkIdList.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkPolyData.h>
#include <vtkSmartPointer.h>
#include <vtkUnstructuredGrid.h>

#include "vtk_grid.h"
#endif
#ifdef QEL_HAVE_CGAL
#include <CGAL/Polygon_mesh_processing/connected_components.h>
#include <CGAL/Polygon_mesh_processing/polygon_soup_to_polygon_mesh.h>
#include <CGAL/Simple_cartesian.h>
#include <CGAL/Surface_mesh.h>
#endif

namespace {

using qel::dense1D;
using qel::dense2D;
namespace gw = qel::gridwork;

/// What the peers have to know of an element type.
template <unsigned Boundaries, unsigned Nodes>
struct shape {
  gw::element_type type;
  int vtk_type;
  unsigned boundaries[Boundaries][Nodes];
};

constexpr shape<3, 2> triangle = {gw::ELT_TRIA3, 5, {{1, 2}, {2, 0}, {0, 1}}};
constexpr shape<4, 3> tetrahedron = {gw::ELT_TETRA4, 10, {{1, 2, 3}, {2, 0, 3}, {1, 3, 0}, {2, 1, 0}}};
constexpr shape<6, 4> hexahedron = {
    gw::ELT_HEXA8, 12, {{0, 3, 7, 4}, {1, 5, 6, 2}, {0, 4, 5, 1}, {3, 2, 6, 7}, {0, 1, 2, 3}, {4, 7, 6, 5}}};

struct hash_nodes {
  template <std::size_t N>
  std::size_t operator()(const std::array<unsigned, N>& nodes) const {
    std::size_t hash = 0;
    for (unsigned node : nodes) hash = (hash ^ node) * 0x9e3779b97f4a7c15U;
    return hash ^ hash >> 32;
  }
};

/// Each boundary looks up its sorted nodes and finds the one that came first.
template <unsigned B, unsigned N>
std::vector<unsigned> neighbors_by_map(const dense2D<unsigned>& m, const shape<B, N>& s) {
  std::unordered_map<std::array<unsigned, N>, std::size_t, hash_nodes> slots;
  slots.reserve(B * m.cols());
  std::vector<unsigned> neighbors(B * m.cols(), ~0U);
  for (std::uint64_t e = 0; e < m.cols(); ++e) {
    for (unsigned k = 0; k < B; ++k) {
      std::array<unsigned, N> nodes;
      for (unsigned i = 0; i < N; ++i) nodes[i] = m(s.boundaries[k][i], e);
      std::sort(nodes.begin(), nodes.end());
      const auto [other, is_first] = slots.try_emplace(nodes, B * e + k);
      if (is_first) continue;
      neighbors[other->second] = static_cast<unsigned>(e);
      neighbors[B * e + k] = static_cast<unsigned>(other->second / B);
    }
  }
  return neighbors;
}

std::size_t lists_by_vectors(const dense2D<unsigned>& m, unsigned nodes) {
  std::vector<std::vector<unsigned>> lists(nodes);
  for (unsigned e = 0; e < m.cols(); ++e) {
    for (const unsigned* p = m.begin_column(e); p != m.end_column(e); ++p) lists[*p].push_back(e);
  }
  return lists[nodes / 2].size();
}

std::size_t graph_by_sets(const dense2D<unsigned>& m, unsigned nodes) {
  std::vector<std::unordered_set<unsigned>> graph(nodes);
  for (std::uint64_t e = 0; e < m.cols(); ++e) {
    for (const unsigned* a = m.begin_column(e); a != m.end_column(e); ++a) {
      for (const unsigned* b = m.begin_column(e); b != m.end_column(e); ++b) {
        if (*a != *b) graph[*a].insert(*b);
      }
    }
  }
  return graph[nodes / 2].size();
}

/// Edges of tetrahedra: every pair of nodes.
std::size_t edges_by_sorting(const dense2D<unsigned>& m) {
  std::vector<std::pair<unsigned, unsigned>> edges;
  edges.reserve(6 * m.cols());
  for (std::uint64_t e = 0; e < m.cols(); ++e) {
    for (unsigned i = 0; i < 4; ++i) {
      for (unsigned k = i + 1; k < 4; ++k) edges.emplace_back(std::minmax(m(i, e), m(k, e)));
    }
  }
  std::sort(edges.begin(), edges.end());
  edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
  return edges.size();
}

#ifdef QEL_HAVE_VTK
/// Where the nodes lie does not matter here.
vtkSmartPointer<vtkUnstructuredGrid> vtk_grid(const dense2D<unsigned>& m, int cell_type) {
  dense2D<double> coords(3, gw::max_ID(m) + std::uint64_t{1});
  for (std::uint64_t i = 0; i < coords.cols(); ++i) {
    coords(0, i) = static_cast<double>(i % 1000);
    coords(1, i) = static_cast<double>(i / 1000);
  }
  return ::vtk_grid(coords, m, cell_type);
}

vtkSmartPointer<vtkUnstructuredGrid> without_links(vtkUnstructuredGrid* grid) {
  auto fresh = vtkSmartPointer<vtkUnstructuredGrid>::New();
  fresh->SetPoints(grid->GetPoints());
  fresh->SetCells(grid->GetCellType(0), grid->GetCells());
  return fresh;
}

template <unsigned B, unsigned N>
vtkIdType neighbors_by_vtk(vtkUnstructuredGrid* grid, const dense2D<unsigned>& m, const shape<B, N>& s) {
  const auto fresh = without_links(grid);
  fresh->BuildLinks();
  vtkNew<vtkIdList> nodes, across;
  nodes->SetNumberOfIds(N);
  vtkIdType found = 0;
  for (std::uint64_t e = 0; e < m.cols(); ++e) {
    for (const auto& boundary : s.boundaries) {
      for (unsigned i = 0; i < N; ++i) nodes->SetId(i, m(boundary[i], e));
      fresh->GetCellNeighbors(static_cast<vtkIdType>(e), nodes, across);
      found += across->GetNumberOfIds();
    }
  }
  return found;
}

template <class Filter>
vtkIdType cells_of_filter(vtkUnstructuredGrid* grid, void (*prepare)(Filter*)) {
  vtkNew<Filter> filter;
  prepare(filter);
  filter->SetInputData(grid);
  filter->Update();
  return filter->GetOutput()->GetNumberOfCells();
}

vtkIdType lists_by_vtk(vtkUnstructuredGrid* grid) {
  vtkNew<vtkIdList> cells;
  const auto fresh = without_links(grid);
  fresh->GetPointCells(grid->GetNumberOfPoints() / 2, cells);  // makes the links
  return cells->GetNumberOfIds();
}
#endif

#ifdef QEL_HAVE_CGAL
using cgal_mesh = CGAL::Surface_mesh<CGAL::Simple_cartesian<double>::Point_3>;

cgal_mesh mesh_of_cgal(const dense2D<unsigned>& m) {
  std::vector<CGAL::Simple_cartesian<double>::Point_3> points(gw::max_ID(m) + 1, CGAL::ORIGIN);
  std::vector<std::array<std::size_t, 3>> triangles(m.cols());
  for (std::uint64_t e = 0; e < m.cols(); ++e) std::copy_n(m.column(e), 3, triangles[e].begin());
  cgal_mesh result;
  CGAL::Polygon_mesh_processing::polygon_soup_to_polygon_mesh(points, triangles, result);
  return result;
}

std::size_t components_by_cgal(cgal_mesh& mesh) {
  const auto colors = mesh.add_property_map<cgal_mesh::Face_index, std::size_t>("f:component").first;
  return CGAL::Polygon_mesh_processing::connected_components(mesh, colors);
}
#endif

dense2D<unsigned> neighbors_of(const dense2D<unsigned>& m, gw::element_type type) {
  dense2D<unsigned> neighbors;
  gw::get_neighbors(m, type, false, neighbors);
  return neighbors;
}

std::size_t count_subdomains(const dense2D<unsigned>& neighbors) {
  dense1D<unsigned> colors;
  return static_cast<std::size_t>(gw::get_subdomains(neighbors, colors));
}

/// Slots of boundaries between colours, and outer ones.
dense1D<unsigned> slots_between(const dense2D<unsigned>& m, const dense2D<unsigned>& neighbors,
                                const dense1D<unsigned>& colors) {
  dense1D<unsigned> slots;
  dense2D<unsigned> pairs;
  gw::get_colors_boundaries(m, neighbors, gw::ELT_TETRA4, colors, 1, slots, pairs);
  return slots;
}

std::size_t groups_of(const dense2D<unsigned>& neighbors, const dense1D<unsigned>& colors,
                      const dense1D<unsigned>& given) {
  dense1D<unsigned> slots, order, offsets;
  dense2D<unsigned> pairs;
  if (!slots.copy(given)) return 0;
  return static_cast<std::size_t>(gw::sort_elfes(neighbors, colors, slots, order, pairs, offsets));
}

/// Pairs of colours with their slots, sorted.
std::size_t groups_by_sorting(const dense2D<unsigned>& neighbors, const dense1D<unsigned>& colors,
                              const dense1D<unsigned>& slots) {
  std::vector<std::pair<std::uint64_t, unsigned>> keys;
  keys.reserve(slots.size());
  for (const unsigned slot : slots) {
    const unsigned across = neighbors(slot % 4, slot / 4);
    keys.emplace_back(std::uint64_t{colors[slot / 4]} << 32 | (across == ~0U ? ~0U : colors[across]), slot);
  }
  std::stable_sort(keys.begin(), keys.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  std::size_t groups = 0;
  for (std::size_t i = 0; i < keys.size(); ++i) groups += i == 0 || keys[i].first != keys[i - 1].first;
  return groups;
}

dense2D<unsigned> free_boundary(const dense2D<unsigned>& m, gw::element_type type) {
  dense2D<unsigned> boundaries;
  gw::get_mesh_boundaries(m, neighbors_of(m, type), type, boundaries);
  return boundaries;
}

template <unsigned B, unsigned N>
void add_neighbor_benchmarks(const std::string& kind, const dense2D<unsigned>& m, const shape<B, N>& s) {
  const std::string group = "get_neighbors, " + kind;
  add_benchmark(group, "ours", [=] { return neighbors_of(m, s.type).size(); });
  add_benchmark(group, "std::unordered_map", [=] { return neighbors_by_map(m, s).size(); });
#ifdef QEL_HAVE_VTK
  const auto grid = vtk_grid(m, s.vtk_type);
  add_benchmark(group, "VTK", [=] { return neighbors_by_vtk(grid, m, s); });
#endif
}

/// Everything else, on tetrahedra.
void add_list_benchmarks(const std::string& kind, const dense2D<unsigned>& m) {
  const unsigned nodes = gw::max_ID(m) + 1;
  const auto list = [=](auto get) {
    dense1D<unsigned> offsets, entries;
    get(m, offsets, entries);
    return entries.size();
  };
  const std::string boundary = "free boundary, " + kind, lists = "get_connected_elements, " + kind,
                    graph = "get_node_graph, " + kind, edges = "copy_edges, " + kind;
  add_benchmark(boundary, "ours", [=] { return free_boundary(m, gw::ELT_TETRA4).cols(); });
  add_benchmark(lists, "ours", [=] { return list(gw::get_connected_elements); });
  add_benchmark(lists, "std::vector", [=] { return lists_by_vectors(m, nodes); });
  add_benchmark(graph, "ours", [=] { return list(gw::get_node_graph); });
  add_benchmark(graph, "std::unordered_set", [=] { return graph_by_sets(m, nodes); });
  add_benchmark(edges, "ours", [=] {
    dense2D<unsigned> found;
    gw::copy_edges(m, gw::ELT_TETRA4, found);
    return found.cols();
  });
  add_benchmark(edges, "std::sort", [=] { return edges_by_sorting(m); });
#ifdef QEL_HAVE_VTK
  const auto grid = vtk_grid(m, tetrahedron.vtk_type);
  add_benchmark(boundary, "VTK", [=] { return cells_of_filter<vtkDataSetSurfaceFilter>(grid, [](auto*) {}); });
  add_benchmark(lists, "VTK", [=] { return lists_by_vtk(grid); });
  add_benchmark(edges, "VTK", [=] {
    return cells_of_filter<vtkExtractEdges>(grid, [](vtkExtractEdges* filter) { filter->UseAllPointsOn(); });
  });
#endif
}

/// Parts, blocks and groups of tetrahedra.
void add_color_benchmarks(const std::string& order, const dense2D<unsigned>& m, const dense1D<unsigned>& blocks) {
  const dense2D<unsigned> neighbors = neighbors_of(m, gw::ELT_TETRA4);
  dense1D<unsigned> sixteen(m.cols());
  for (unsigned e = 0; e < sixteen.size(); ++e) sixteen[e] = static_cast<unsigned>(e * 0x9e3779b97f4a7c15U >> 60);
  const dense1D<unsigned> slots = slots_between(m, neighbors, sixteen);
  const std::string parts = "get_subdomains, 1 M tetrahedra, " + order,
                    surfaces = "get_neighbors + get_colors_boundaries, 64 blocks, " + order,
                    groups = "sort_elfes, 1.9 M slots, 136 groups, " + order;
  add_benchmark(parts, "ours", [=] { return count_subdomains(neighbors); });
  add_benchmark(surfaces, "ours", [=] { return slots_between(m, neighbors_of(m, gw::ELT_TETRA4), blocks).size(); });
  add_benchmark(groups, "ours", [=] { return groups_of(neighbors, sixteen, slots); });
  add_benchmark(groups, "std::stable_sort", [=] { return groups_by_sorting(neighbors, sixteen, slots); });
#ifdef QEL_HAVE_VTK
  const auto grid = vtk_grid(m, tetrahedron.vtk_type);
  vtkNew<vtkIntArray> materials;
  materials->SetName("material");
  for (const unsigned block : blocks) materials->InsertNextValue(static_cast<int>(block));
  const auto colored = without_links(grid);
  colored->GetCellData()->AddArray(materials);
  add_benchmark(parts, "VTK", [=] {
    return cells_of_filter<vtkConnectivityFilter>(without_links(grid), [](vtkConnectivityFilter* filter) {
      filter->SetExtractionModeToAllRegions();
      filter->ColorRegionsOn();
    });
  });
  add_benchmark(surfaces, "VTK", [=] {
    return cells_of_filter<vtkDataSetRegionSurfaceFilter>(
        colored, [](vtkDataSetRegionSurfaceFilter* filter) { filter->SetRegionArrayName("material"); });
  });
#endif
}

void add_part_benchmarks(const std::string& order, const dense2D<unsigned>& triangles) {
  const dense2D<unsigned> neighbors = neighbors_of(triangles, gw::ELT_TRIA3);
  const std::string parts = "get_subdomains, 1 M triangles, " + order;
  add_benchmark(parts, "ours", [=] { return count_subdomains(neighbors); });
#ifdef QEL_HAVE_CGAL
  const auto mesh = std::make_shared<cgal_mesh>(mesh_of_cgal(triangles));
  add_benchmark(parts, "CGAL", [=] { return components_by_cgal(*mesh); });
#endif
}

}  // namespace

int main(int argc, char** argv) {
  setenv("VTK_SMP_BACKEND_IN_USE", "Sequential", 1);  // all of us run in one thread
  for (const bool shuffled : {false, true}) {
    const std::string order = shuffled ? "shuffled" : "natural";
    const dense2D<unsigned> tetrahedra = inputs::tetrahedra(55, shuffled);
    const dense2D<unsigned> triangles = inputs::triangles(707, shuffled);
    add_neighbor_benchmarks("1 M tetrahedra, " + order, tetrahedra, tetrahedron);
    add_neighbor_benchmarks("1 M triangles, " + order, triangles, triangle);
    add_neighbor_benchmarks("0.5 M hexahedra, " + order, inputs::hexahedra(79, shuffled), hexahedron);
    add_list_benchmarks("1 M tetrahedra, " + order, tetrahedra);
    dense1D<unsigned> blocks = inputs::blocks(55);
    add_color_benchmarks(
        order, shuffled ? inputs::without_locality(inputs::tetrahedra(55, false), &blocks) : tetrahedra, blocks);
    add_part_benchmarks(order, triangles);
#ifdef QEL_HAVE_CGAL
    add_benchmark("get_neighbors, 1 M triangles, " + order, "CGAL",
                  [=] { return mesh_of_cgal(triangles).number_of_halfedges(); });
#endif
    for (const auto& [size, cells] : {std::pair{"0.1 M", 26U}, std::pair{"10 M", 118U}}) {
      const dense2D<unsigned> m = inputs::tetrahedra(cells, shuffled);
      add_benchmark("get_neighbors, " + std::string(size) + " tetrahedra, " + order, "ours",
                    [=] { return neighbors_of(m, gw::ELT_TETRA4).size(); });
    }
  }
  return run_benchmarks(argc, argv);
}
